#include "Media/SegmentJoiner.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include "Media/MediaError.h"
#include "Media/PacketCopier.h"
#include "Media/TempFile.h"
#include "Media/VideoSink.h"

namespace Quillmere::Velmira {

namespace {

std::string describe(const AVCodecParameters& p) {
  return fmt::format("{} {}x{}", avcodec_get_name(p.codec_id), p.width, p.height);
}

bool sameSetup(const AVCodecParameters& a, const AVCodecParameters& b) {
  return a.extradata_size == b.extradata_size &&
         (a.extradata_size == 0 || std::memcmp(a.extradata, b.extradata, a.extradata_size) == 0);
}

}  // namespace

SegmentJoiner::SegmentJoiner(const MediaInfo& source, FrameRange wanted)
    : mSource(source), mTimeline(source), mWanted(mTimeline.resolve(wanted, source.path)) {
  mTimeBase = AVRational{source.timeBase.num, source.timeBase.den};
  mFrameDuration =
      std::max<std::int64_t>(1, av_rescale_q(1, AVRational{source.frameRate.den, source.frameRate.num}, mTimeBase));
}

SegmentJoiner::~SegmentJoiner() = default;

SegmentJoiner::Segment SegmentJoiner::open(const std::string& path) {
  Segment segment;
  segment.span.path = path;
  AVFormatContext* raw = nullptr;
  if (avformat_open_input(&raw, path.c_str(), nullptr, nullptr) < 0) throw MediaError(path, "cannot be opened");
  segment.input.reset(raw);
  if (avformat_find_stream_info(raw, nullptr) < 0) throw MediaError(path, "corrupt or truncated");
  segment.stream = av_find_best_stream(raw, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (segment.stream < 0) throw MediaError(path, "holds no video stream");
  return segment;
}

// Where the segment's frames sit in the source: its first from the tag the render wrote, its count from its packets,
// one a frame, which reads the file but decodes nothing.
void SegmentJoiner::place(Segment& segment) {
  const AVDictionaryEntry* tag = av_dict_get(segment.input->metadata, VideoSink::kFirstFrameTag, nullptr, 0);
  if (!tag) throw MediaError(segment.span.path, "states no first frame: it was not written by velmira render");
  segment.span.first = std::stoll(tag->value);
  std::int64_t frames = 0;
  while (av_read_frame(segment.input.get(), mPacket.get()) >= 0) {
    frames += mPacket->stream_index == segment.stream ? 1 : 0;
    av_packet_unref(mPacket.get());
  }
  if (frames == 0) throw MediaError(segment.span.path, "holds no frame");
  segment.span.last = segment.span.first + frames - 1;
}

// One stream of packets must decode with one codec setup: a segment of another codec, size or encoder setting
// (which H.264 keeps in its extradata) would need a re-encode.
void SegmentJoiner::checkAlike(const Segment& first, const Segment& segment) const {
  const AVCodecParameters& a = *first.input->streams[first.stream]->codecpar;
  const AVCodecParameters& b = *segment.input->streams[segment.stream]->codecpar;
  if (a.codec_id != b.codec_id || a.width != b.width || a.height != b.height || a.format != b.format) {
    throw MediaError(segment.span.path, fmt::format("is {}, where {} is {}: segments must be rendered alike",
                                                    describe(b), first.span.path, describe(a)));
  }
  if (!sameSetup(a, b)) {
    throw MediaError(
        segment.span.path,
        fmt::format("was encoded with other settings than {}: segments must be rendered alike", first.span.path));
  }
}

std::int64_t SegmentJoiner::join(const std::vector<std::string>& paths, const std::string& output) {
  std::vector<Segment> segments;
  std::vector<SegmentOrder::Span> spans;
  for (const std::string& path : paths) {
    segments.push_back(open(path));
    place(segments.back());
    if (segments.size() > 1) checkAlike(segments.front(), segments.back());
    spans.push_back(segments.back().span);
  }
  SegmentOrder::check(spans, mWanted, mSource.path);

  TempFile file(output);
  openOutput(segments.front(), output, file.path());
  for (const Segment& segment : segments) {
    Segment again = open(segment.span.path);  // read from its start once more
    again.span = segment.span;
    copyVideo(again);
  }
  finish(output);
  file.commit();
  return mWanted.last - mWanted.first + 1;
}

void SegmentJoiner::openOutput(const Segment& first, const std::string& output, const std::string& temporary) {
  AVFormatContext* raw = nullptr;
  if (avformat_alloc_output_context2(&raw, nullptr, nullptr, output.c_str()) < 0 || !raw)
    throw MediaError(output, "unknown video format");
  mOutput.reset(raw);
  mStream = avformat_new_stream(raw, nullptr);
  if (!mStream || avcodec_parameters_copy(mStream->codecpar, first.input->streams[first.stream]->codecpar) < 0)
    throw MediaError(output, "cannot add the video stream");
  mStream->codecpar->codec_tag = 0;  // the segment container's; the output's muxer picks its own
  mStream->time_base = mTimeBase;
  mStream->avg_frame_rate = AVRational{mSource.frameRate.num, mSource.frameRate.den};
  if (mSource.displayMatrix) {
    uint8_t* data = av_stream_new_side_data(mStream, AV_PKT_DATA_DISPLAYMATRIX, sizeof(*mSource.displayMatrix));
    if (!data) throw MediaError(output, "cannot keep the rotation");
    std::memcpy(data, mSource.displayMatrix->data(), sizeof(*mSource.displayMatrix));
  }
  // The other streams are copied as a render of the whole range copies them: from its first frame, moved back
  // as its video is, and to the source's end when the range runs to the last frame.
  mOutputShift = mTimeline.shiftOf(mWanted.first);
  if (mSource.otherStreamCount > 0) {
    mCopier = std::make_unique<PacketCopier>(mSource, raw, output);
    mCopier->setSpan(mWanted.first > 0 ? mOutputShift : INT64_MIN, mOutputShift);
  }
  int err = avio_open(&raw->pb, temporary.c_str(), AVIO_FLAG_WRITE);
  if (err < 0) throw MediaError(output, "cannot be written: " + ffmpegErrorText(err));
  err = avformat_write_header(raw, nullptr);
  if (err < 0) throw MediaError(output, "cannot start the file: " + ffmpegErrorText(err));
}

// A segment's timestamps were moved back by its first frame's; they move forward by as much, into the source's
// timeline, and back by what the whole range moves.
void SegmentJoiner::copyVideo(Segment& segment) {
  const AVRational segmentBase = segment.input->streams[segment.stream]->time_base;
  const std::int64_t shift = mTimeline.shiftOf(segment.span.first);
  while (av_read_frame(segment.input.get(), mPacket.get()) >= 0) {
    if (mPacket->stream_index != segment.stream) {
      av_packet_unref(mPacket.get());
      continue;
    }
    av_packet_rescale_ts(mPacket.get(), segmentBase, mTimeBase);
    if (mPacket->pts != AV_NOPTS_VALUE) mPacket->pts += shift;
    if (mPacket->dts != AV_NOPTS_VALUE) mPacket->dts += shift;
    if (mPacket->pts != AV_NOPTS_VALUE) mEnd = std::max(mEnd, mPacket->pts + mFrameDuration);
    if (mCopier && mPacket->dts != AV_NOPTS_VALUE) mCopier->copyUntil(mPacket->dts);
    if (mPacket->pts != AV_NOPTS_VALUE) mPacket->pts -= mOutputShift;
    if (mPacket->dts != AV_NOPTS_VALUE) mPacket->dts -= mOutputShift;
    av_packet_rescale_ts(mPacket.get(), mTimeBase, mStream->time_base);
    mPacket->stream_index = mStream->index;
    mPacket->pos = -1;
    int err = av_interleaved_write_frame(mOutput.get(), mPacket.get());
    if (err < 0) throw MediaError(segment.span.path, "cannot be joined: " + ffmpegErrorText(err));
  }
}

void SegmentJoiner::finish(const std::string& output) {
  if (mCopier) mCopier->finish(mEnd, mWanted.last == mTimeline.all().last);
  int err = av_write_trailer(mOutput.get());
  if (err < 0) throw MediaError(output, "cannot finish the file: " + ffmpegErrorText(err));
  err = avio_closep(&mOutput->pb);
  if (err < 0) throw MediaError(output, "cannot be written completely: " + ffmpegErrorText(err));
}

}  // namespace Quillmere::Velmira
