// Frames A to B of a source, both included, counted from 0 (for a sequence: its file numbers). A render farm node is
// given one such range of a job.
#pragma once

#include <cstdint>
#include <string>

namespace Quillmere::Velmira {

struct FrameRange {
  std::int64_t first = 0;
  std::int64_t last = -1;  // -1: to the end

  // "A-B", both included; "N" alone is the one frame N. Throws std::invalid_argument quoting the text when it is no
  // such range or ends before it starts.
  static FrameRange parse(const std::string& text);

  bool contains(std::int64_t index) const { return index >= first && (last < 0 || index <= last); }
  bool endsBefore(std::int64_t index) const { return last >= 0 && index > last; }
};

}  // namespace Quillmere::Velmira
