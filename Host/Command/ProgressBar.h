#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>

namespace Quillmere::Velmira {

// Frames done of total, frames per second and time left, redrawn in place on stderr. Drawn
// only when stderr is a terminal and the user did not ask for quiet; a log file gets no
// carriage-return litter.
class ProgressBar {
public:
  ProgressBar(std::int64_t total, bool wanted);
  ~ProgressBar();

  void advance(std::int64_t framesDone);
  // Leaves the last state on its own line.
  void finish();

  double elapsedSeconds() const;

private:
  void draw(std::int64_t framesDone);

  std::int64_t mTotal;
  bool mDrawing;
  bool mFinished = false;
  std::int64_t mDone = 0;
  std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point mLastDraw{};
};

}  // namespace Quillmere::Velmira
