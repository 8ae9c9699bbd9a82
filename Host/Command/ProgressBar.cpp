#include "Command/ProgressBar.h"

#include <unistd.h>

#include <algorithm>
#include <string>

#include <fmt/format.h>

namespace Quillmere::Velmira {

namespace {

constexpr int kBarWidth = 30;
// Drawing is throttled: a terminal redrawn for every frame of a fast render slows it down.
constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

std::string clock(double seconds) {
  auto whole = static_cast<long long>(seconds + 0.5);
  return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

}  // namespace

ProgressBar::ProgressBar(std::int64_t total, bool wanted)
    : mTotal(total), mDrawing(wanted && ::isatty(STDERR_FILENO)) {}

ProgressBar::~ProgressBar() { finish(); }

double ProgressBar::elapsedSeconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count();
}

void ProgressBar::advance(std::int64_t framesDone) {
  mDone = framesDone;
  if (!mDrawing) return;
  auto now = std::chrono::steady_clock::now();
  if (framesDone < mTotal && now - mLastDraw < kRedrawInterval) return;
  mLastDraw = now;
  draw(framesDone);
}

void ProgressBar::draw(std::int64_t framesDone) {
  double elapsed = elapsedSeconds();
  double rate = elapsed > 0.0 ? framesDone / elapsed : 0.0;
  std::int64_t total = std::max(mTotal, framesDone);
  int filled = total > 0 ? static_cast<int>(kBarWidth * framesDone / total) : 0;
  std::string left = rate > 0.0 && total > framesDone ? clock((total - framesDone) / rate) + " left" : "";
  std::string line = fmt::format("\r[{}{}] {}/{} frames  {:.1f} fps  {}", std::string(filled, '#'),
                                 std::string(kBarWidth - filled, '.'), framesDone, total, rate, left);
  std::fprintf(stderr, "%s\033[K", line.c_str());
  std::fflush(stderr);
}

void ProgressBar::finish() {
  if (!mDrawing || mFinished) return;
  mFinished = true;
  draw(mDone);
  std::fputc('\n', stderr);
}

}  // namespace Quillmere::Velmira
