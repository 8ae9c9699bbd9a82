#include "Media/FrameTimeline.h"

#include <algorithm>

#include "Media/FfmpegHandles.h"
#include "Media/MediaError.h"

namespace Quillmere::Velmira {

FrameTimeline::FrameTimeline(const MediaInfo& source) {
  if (source.kind == MediaKind::Image) throw MediaError(source.path, "is one picture, not a video or a sequence");
  if (source.kind == MediaKind::Video) {
    readPackets(source);
    return;
  }
  // A sequence's frames are one time base apart from its first file, as SequenceFrameSource stamps them.
  mFirst = source.firstNumber;
  for (std::int64_t n = source.firstNumber; n <= source.lastNumber; ++n) mPts.push_back(n - source.firstNumber);
}

// As `render --frames` does, a range is cut to the frames the source has.
FrameRange FrameTimeline::resolve(FrameRange wanted, const std::string& path) const {
  const FrameRange every = all();
  FrameRange frames{std::max(wanted.first, every.first),
                    wanted.last < 0 ? every.last : std::min(wanted.last, every.last)};
  if (frames.last < frames.first) {
    throw MediaError(path, "has frames " + std::to_string(every.first) + "-" + std::to_string(every.last) +
                               ", none of " + std::to_string(wanted.first) + "-" + std::to_string(wanted.last));
  }
  return frames;
}

void FrameTimeline::readPackets(const MediaInfo& source) {
  AVFormatContext* raw = nullptr;
  if (avformat_open_input(&raw, source.path.c_str(), nullptr, nullptr) < 0)
    throw MediaError(source.path, "cannot be opened to count its frames");
  InputFormatPtr input(raw);
  if (avformat_find_stream_info(input.get(), nullptr) < 0)
    throw MediaError(source.path, "corrupt or truncated: its streams cannot be read");
  int video = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (video < 0) throw MediaError(source.path, "holds no video stream");
  PacketPtr packet(av_packet_alloc());
  std::int64_t next = 0;
  while (av_read_frame(input.get(), packet.get()) >= 0) {
    // Packets an edit list hides are never decoded into frames, so they are no frames of the source either.
    bool frame = packet->stream_index == video && !(packet->flags & AV_PKT_FLAG_DISCARD);
    if (frame) mPts.push_back(packet->pts != AV_NOPTS_VALUE ? packet->pts : next);
    next = mPts.empty() ? 0 : mPts.back() + 1;
    av_packet_unref(packet.get());
  }
  if (mPts.empty()) throw MediaError(source.path, "holds no video frame");
  std::sort(mPts.begin(), mPts.end());
}

}  // namespace Quillmere::Velmira
