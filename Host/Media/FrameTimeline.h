// The frames a source holds, by number, and when each is shown: what cutting a job into ranges and putting the
// ranges back together both go by.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Media/FrameRange.h"
#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

class FrameTimeline {
public:
  // A video's frames are counted from its packets, which is exact for every container (a Matroska file only
  // estimates its count) and needs no decoding; a sequence's are its file numbers. Throws MediaError for a picture.
  explicit FrameTimeline(const MediaInfo& source);

  // Every frame number of the source, both included.
  FrameRange all() const { return {mFirst, mFirst + static_cast<std::int64_t>(mPts.size()) - 1}; }
  // The frames of `wanted` the source has (all of them when wanted.last is -1). Throws MediaError when it has none.
  FrameRange resolve(FrameRange wanted, const std::string& path) const;
  // The source's timestamp of frame `number`, in its time base; `number` must be one of all().
  std::int64_t ptsOf(std::int64_t number) const { return mPts.at(static_cast<std::size_t>(number - mFirst)); }
  // The timestamps a range rendered on its own was moved back by: a range from frame 0 keeps its source's.
  std::int64_t shiftOf(std::int64_t first) const { return first > 0 ? ptsOf(first) : 0; }

private:
  void readPackets(const MediaInfo& source);

  std::int64_t mFirst = 0;
  std::vector<std::int64_t> mPts;  // by frame number from mFirst, in showing order
};

}  // namespace Quillmere::Velmira
