#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Quillmere::Velmira {

// Frames A to B, both included, counted from 0: "--frames 100-199" lets a render farm
// split one job into pieces. "N" alone is the one frame N.
struct FrameSelection {
  int64_t first = 0;
  int64_t last = 0;

  // Throws std::invalid_argument naming what is wrong with the text.
  static FrameSelection parse(const std::string& text);
  int64_t count() const { return last - first + 1; }
  bool contains(int64_t frame) const { return frame >= first && frame <= last; }
};

}  // namespace Quillmere::Velmira
