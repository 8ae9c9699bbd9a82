// Rendered ranges of one video put back together as one video, packet for packet: nothing is decoded or encoded
// again, so the joined video holds the frames each segment holds, at the timestamps a render of the whole range
// would have given them, with the source's audio and other streams for that range.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Media/FfmpegHandles.h"
#include "Media/FrameRange.h"
#include "Media/FrameTimeline.h"
#include "Media/MediaInfo.h"
#include "Media/SegmentOrder.h"

namespace Quillmere::Velmira {

class PacketCopier;

class SegmentJoiner {
public:
  // `source` is what the segments were rendered from; `wanted` the frames they must cover (the whole source when
  // `wanted.last` is -1).
  SegmentJoiner(const MediaInfo& source, FrameRange wanted);
  ~SegmentJoiner();

  // Checks every segment before writing anything, then writes `output` under a temporary name and puts it in place.
  // Throws MediaError naming the segment at fault: one not written by `velmira render`, of another codec, size or
  // codec setup than the first, or out of order (SegmentOrder). Returns the number of frames written.
  std::int64_t join(const std::vector<std::string>& segments, const std::string& output);

private:
  struct Segment {
    SegmentOrder::Span span;
    InputFormatPtr input;
    int stream = -1;
  };

  static Segment open(const std::string& path);
  void checkAlike(const Segment& first, const Segment& segment) const;
  void place(Segment& segment);
  void openOutput(const Segment& first, const std::string& output, const std::string& temporary);
  void copyVideo(Segment& segment);
  void finish(const std::string& output);

  MediaInfo mSource;
  FrameTimeline mTimeline;
  FrameRange mWanted;
  OutputFormatPtr mOutput;
  AVStream* mStream = nullptr;
  std::unique_ptr<PacketCopier> mCopier;
  PacketPtr mPacket = PacketPtr(av_packet_alloc());
  AVRational mTimeBase{1, 25};
  std::int64_t mFrameDuration = 1;
  std::int64_t mOutputShift = 0;  // what a render of the whole range moved the source's timestamps back by
  std::int64_t mEnd = INT64_MIN;  // the end of the last frame written, in the source's timeline
};

}  // namespace Quillmere::Velmira
