// Copies the packets of a source's other streams (audio, subtitles, data) into an output container, unchanged
// but for their timestamps, in step with the video written beside them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Media/FfmpegHandles.h"
#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

class PacketCopier {
public:
  // Opens `source.path` a second time and adds an output stream to `output` for each stream the output
  // format can hold. Call before avformat_write_header.
  PacketCopier(const MediaInfo& source, AVFormatContext* output, const std::string& outputPath);

  // Every later limit is in the source video's time base. Packets before `start` are dropped, and all copied
  // timestamps move back by `shift`.
  void setSpan(std::int64_t start, std::int64_t shift);

  // Writes every copied packet that starts before `limit`.
  void copyUntil(std::int64_t limit);

  // Writes the rest, up to `end` (or to the end of the source when `toEnd`).
  void finish(std::int64_t end, bool toEnd);

  // How many of the source's streams have a copy in the output.
  int copiedStreams() const;

private:
  bool readPending();
  std::int64_t pendingTime() const;
  void writePending();

  std::string mOutputPath;
  InputFormatPtr mInput;
  AVFormatContext* mOutput;
  AVRational mVideoTimeBase;
  std::vector<int> mOutputIndex;  // by input stream, -1 for streams not copied
  PacketPtr mPending = PacketPtr(av_packet_alloc());
  bool mHasPending = false;
  bool mEnded = false;
  std::int64_t mStart = INT64_MIN;
  std::int64_t mShift = 0;
};

}  // namespace Quillmere::Velmira
