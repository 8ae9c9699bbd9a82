// The frames of one file, image or video, through libavformat and libavcodec.
#pragma once

#include <string>

#include "Media/FfmpegHandles.h"
#include "Media/FrameSource.h"
#include "Media/MediaInfo.h"
#include "Media/PixelConverter.h"

namespace Quillmere::Velmira {

class FileFrameSource : public FrameSource {
public:
  // Opens the file and fills what it can tell of `info` (size, rate, time base, counts, colour, rotation).
  // Frame indexes count from 0; those outside `range` are decoded and dropped.
  FileFrameSource(const std::string& path, FrameRange range, MediaInfo& info);

  bool next(ArgbFrame& frame) override;
  void seek(std::int64_t index) override;

  // A whole still image read in one call, for the files of a sequence.
  static void readImage(const std::string& path, ArgbFrame& frame, MediaInfo& info);

private:
  void open();
  void openDecoder();
  void describe(MediaInfo& info);
  bool decodeNext();
  void deliver(ArgbFrame& frame);
  std::int64_t indexOfDecoded() const;
  void checkComplete() const;
  [[noreturn]] void fail(const std::string& problem) const;

  std::string mPath;
  FrameRange mRange;
  InputFormatPtr mFormat;
  CodecContextPtr mDecoder;
  FramePtr mDecoded = FramePtr(av_frame_alloc());
  PacketPtr mPacket = PacketPtr(av_packet_alloc());
  PixelConverter mConverter;
  int mStream = -1;
  std::int64_t mStartPts = 0;
  std::int64_t mNextIndex = 0;
  std::int64_t mStatedFrames = 0;  // what the container says of the video's length; 0 when it does not
  int mMatrix = AVCOL_SPC_UNSPECIFIED;
  bool mFullRange = false;
  bool mStill = false;
  bool mDraining = false;
  bool mDone = false;
  bool mSeeking = false;  // the next decoded frame's number comes from its time, not from counting
};

}  // namespace Quillmere::Velmira
