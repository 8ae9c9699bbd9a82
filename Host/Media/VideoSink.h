// Frames as a video file that keeps its source's timing, rotation and other streams.
#pragma once

#include <memory>
#include <string>

#include "Media/FfmpegHandles.h"
#include "Media/FrameSink.h"
#include "Media/MediaInfo.h"
#include "Media/PacketCopier.h"
#include "Media/PixelConverter.h"
#include "Media/TempFile.h"

namespace Quillmere::Velmira {

class VideoSink : public FrameSink {
public:
  VideoSink(const std::string& path, const MediaInfo& source, int crf);
  ~VideoSink() override;

  // The container tag holding the number of the first frame written, as the source counts it.
  static constexpr const char* kFirstFrameTag = "velmira_first_frame";

  // True for the extensions the sink writes.
  static bool writes(const std::string& extension);

  void write(const ArgbFrame& frame) override;
  void finish() override;

private:
  void openEncoder(int crf);
  void addVideoStream();
  void openOutput();
  void drainEncoder(bool flushing);
  [[noreturn]] void fail(const std::string& problem) const;

  std::string mPath;
  MediaInfo mSource;
  TempFile mFile;
  OutputFormatPtr mOutput;
  CodecContextPtr mEncoder;
  AVStream* mStream = nullptr;
  std::unique_ptr<PacketCopier> mCopier;
  PixelConverter mConverter;
  FramePtr mFrame = FramePtr(av_frame_alloc());
  PacketPtr mPacket = PacketPtr(av_packet_alloc());
  AVRational mTimeBase{1, 25};
  std::int64_t mFrameDuration = 1;
  std::int64_t mShift = 0;  // subtracted from every source pts
  std::int64_t mLastPts = INT64_MIN;
  bool mHeaderWritten = false;
  bool mFirst = true;
};

}  // namespace Quillmere::Velmira
