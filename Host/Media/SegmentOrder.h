// The rule every join goes by, whatever the segments hold: in the order given, each segment starts on the frame
// after the one before it ends, and together they cover exactly the frames wanted.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Media/FrameRange.h"

namespace Quillmere::Velmira {

class SegmentOrder {
public:
  struct Span {
    std::string path;
    std::int64_t first = 0;
    std::int64_t last = -1;
  };

  // Throws MediaError naming the segment at fault: a gap, an overlap, or frames of `wanted` in no segment.
  static void check(const std::vector<Span>& segments, FrameRange wanted, const std::string& source);
};

}  // namespace Quillmere::Velmira
