#include "Media/SegmentOrder.h"

#include <fmt/format.h>

#include "Media/MediaError.h"

namespace Quillmere::Velmira {

namespace {

std::string frames(std::int64_t first, std::int64_t last) {
  return first == last ? fmt::format("frame {}", first) : fmt::format("frames {}-{}", first, last);
}

void checkFollows(const SegmentOrder::Span& before, const SegmentOrder::Span& segment) {
  if (segment.first > before.last + 1) {
    throw MediaError(segment.path,
                     fmt::format("starts at frame {}, but {} ends at frame {}: {} are in no segment", segment.first,
                                 before.path, before.last, frames(before.last + 1, segment.first - 1)));
  }
  if (segment.first <= before.last) {
    throw MediaError(segment.path, fmt::format("starts at frame {}, inside {} ({}): segments must not overlap",
                                               segment.first, before.path, frames(before.first, before.last)));
  }
}

}  // namespace

void SegmentOrder::check(const std::vector<Span>& segments, FrameRange wanted, const std::string& source) {
  if (segments.empty()) throw MediaError(source, "no segment to join");
  const Span& first = segments.front();
  if (first.first != wanted.first) {
    throw MediaError(first.path, fmt::format("starts at frame {}, where the frames to join ({} of {}) start at {}",
                                             first.first, frames(wanted.first, wanted.last), source, wanted.first));
  }
  for (std::size_t i = 1; i < segments.size(); ++i) checkFollows(segments[i - 1], segments[i]);
  const Span& last = segments.back();
  if (last.last != wanted.last) {
    throw MediaError(last.path, fmt::format("ends at frame {}, where the frames to join ({} of {}) end at {}",
                                            last.last, frames(wanted.first, wanted.last), source, wanted.last));
  }
}

}  // namespace Quillmere::Velmira
