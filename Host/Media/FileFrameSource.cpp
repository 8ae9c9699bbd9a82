#include "Media/FileFrameSource.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <fmt/format.h>

extern "C" {
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include "Media/MediaError.h"
#include "Media/MediaPath.h"
#include "Media/Orientation.h"

namespace Quillmere::Velmira {

namespace {

void checkReadable(const std::string& path) {
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) throw MediaError(path, "no such file");
  if (std::filesystem::is_directory(path, ec)) throw MediaError(path, "is a folder, not a media file");
  std::ifstream probe(path, std::ios::binary);
  if (!probe) throw MediaError(path, "cannot be opened for reading (permission denied?)");
  if (std::filesystem::file_size(path, ec) == 0) throw MediaError(path, "is empty");
}

Rational toRational(AVRational r) { return Rational{r.num, r.den}; }

AVRational frameRateOf(const AVStream& stream) {
  return stream.avg_frame_rate.num > 0 ? stream.avg_frame_rate : stream.r_frame_rate;
}

// The demuxers of single pictures: image2 and the "<codec>_pipe" family.
bool isImageDemuxer(const char* name) {
  std::string n(name);
  return n == "image2" || (n.size() > 5 && n.compare(n.size() - 5, 5, "_pipe") == 0);
}

// The video stream's own duration where the container states one, else 0. Matroska keeps it only as a
// "DURATION" tag (HH:MM:SS.fraction), which counts from zero, not from the stream's start.
double ownDuration(const AVStream& stream) {
  if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0)
    return static_cast<double>(stream.duration) * av_q2d(stream.time_base);
  if (const AVDictionaryEntry* tag = av_dict_get(stream.metadata, "DURATION", nullptr, 0)) {
    int hours = 0, minutes = 0;
    double seconds = 0.0;
    if (std::sscanf(tag->value, "%d:%d:%lf", &hours, &minutes, &seconds) == 3) {
      double start =
          stream.start_time == AV_NOPTS_VALUE ? 0.0 : static_cast<double>(stream.start_time) * av_q2d(stream.time_base);
      return std::max(0.0, hours * 3600.0 + minutes * 60.0 + seconds - start);
    }
  }
  return 0.0;
}

// The frames an edit list hides: the container counts them, and the demuxer marks them to be decoded and dropped.
std::int64_t hiddenFrames(AVStream& stream) {
  std::int64_t hidden = 0;
  for (int i = 0, n = avformat_index_get_entries_count(&stream); i < n; ++i)
    if (avformat_index_get_entry(&stream, i)->flags & AVINDEX_DISCARD_FRAME) ++hidden;
  return hidden;
}

// What the decoder's flags say of a frame it gave, in words.
void addFlagReasons(const AVFrame& frame, std::vector<std::string>& reasons) {
  const int flags = frame.decode_error_flags;
  if (flags & FF_DECODE_ERROR_INVALID_BITSTREAM) reasons.emplace_back("invalid bitstream");
  if (flags & FF_DECODE_ERROR_MISSING_REFERENCE) reasons.emplace_back("a frame it refers to is missing");
  if (flags & FF_DECODE_ERROR_CONCEALMENT_ACTIVE) reasons.emplace_back("errors concealed");
  if (flags & FF_DECODE_ERROR_DECODE_SLICES) reasons.emplace_back("slices lost");
  if (frame.flags & AV_FRAME_FLAG_CORRUPT) reasons.emplace_back("marked corrupt by the decoder");
}

// The whole frames a stated duration holds. Containers round durations to their clock (Matroska's millisecond) and
// some stretch them by the audio's end, so what falls short of a whole frame by under a twentieth is one, and a part
// of a frame beyond whole ones is none.
std::int64_t framesIn(double seconds, Rational rate) {
  return static_cast<std::int64_t>(std::floor(seconds * rate.value() + 0.05));
}

}  // namespace

FileFrameSource::FileFrameSource(const std::string& path, FrameRange range, MediaInfo& info, OnDamage onDamage)
    : mPath(path), mRange(range), mOnDamage(onDamage) {
  checkReadable(path);
  open();
  // The content decides, not the name: a clip named .png is still a clip.
  mStill = isImageDemuxer(mFormat->iformat->name);
  openDecoder();
  if (mStill) holdPicture();
  if (info.kind != MediaKind::Sequence) info.kind = mStill ? MediaKind::Image : MediaKind::Video;
  describe(info);
  // A range that starts late is read from the key frame before it, not decoded from the start: the last chunk of a
  // long film on a farm would otherwise decode nearly all of it to drop it. Frame numbers then come from timestamps,
  // which count frames exactly only at a constant rate; elsewhere every frame is still counted from the first.
  const AVStream& stream = *mFormat->streams[mStream];
  const bool constantRate = av_cmp_q(stream.avg_frame_rate, stream.r_frame_rate) == 0 && stream.r_frame_rate.num > 0;
  if (!mStill && mRange.first > 0 && constantRate) seekVideo(mRange.first);
}

void FileFrameSource::fail(const std::string& problem) const { throw MediaError(mPath, problem); }

void FileFrameSource::open() {
  AVFormatContext* raw = nullptr;
  AVDictionary* options = nullptr;
  // A plain file name may hold a '%'; only MediaReader decides what is a sequence.
  av_dict_set(&options, "pattern_type", "none", 0);
  int err = avformat_open_input(&raw, mPath.c_str(), nullptr, &options);
  av_dict_free(&options);
  if (err == AVERROR_INVALIDDATA) fail("unknown or corrupt format (" + ffmpegErrorText(err) + ")");
  if (err < 0) fail("cannot be opened: " + ffmpegErrorText(err));
  mFormat.reset(raw);
  err = avformat_find_stream_info(mFormat.get(), nullptr);
  if (err < 0) fail("corrupt or truncated: " + ffmpegErrorText(err));
  mStream = av_find_best_stream(mFormat.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (mStream < 0) fail("holds no picture or video stream");
}

void FileFrameSource::openDecoder() {
  AVStream* stream = mFormat->streams[mStream];
  const AVCodec* codec = avcodec_find_decoder(stream->codecpar->codec_id);
  if (!codec) fail("no decoder for codec '" + std::string(avcodec_get_name(stream->codecpar->codec_id)) + "'");
  mDecoder.reset(avcodec_alloc_context3(codec));
  if (!mDecoder || avcodec_parameters_to_context(mDecoder.get(), stream->codecpar) < 0)
    fail("cannot set up the decoder");
  mDecoder->pkt_timebase = stream->time_base;
  // One decoding thread: the host decodes, renders and encodes on three threads of a small machine already.
  mDecoder->thread_count = 1;
  mLog = std::make_unique<DecoderLog>(*mDecoder);
  int err = avcodec_open2(mDecoder.get(), codec, nullptr);
  if (err < 0) fail("cannot open the decoder: " + ffmpegErrorText(err));
  // A picture that FFmpeg could not size while probing (cut short, or too large for it) says why once decoded.
  if (!mStill && (mDecoder->width <= 0 || mDecoder->height <= 0))
    fail("truncated or corrupt: FFmpeg finds no frame size in it");
  mMatrix = stream->codecpar->color_space;
  mFullRange = stream->codecpar->color_range == AVCOL_RANGE_JPEG;
  mStartPts = stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time;
}

// A picture is decoded on opening: its size and orientation are the decoded frame's.
void FileFrameSource::holdPicture() {
  if (!decodeNext()) fail(mDamage.empty() ? "no frame could be decoded (truncated or corrupt)" : mDamage[0].describe());
  mOrientation = Orientation::of(*mDecoded);
  mHeld = true;
}

void FileFrameSource::describe(MediaInfo& info) {
  AVStream* stream = mFormat->streams[mStream];
  const AVCodecParameters* par = stream->codecpar;
  info.codecName = avcodec_get_name(par->codec_id);
  const bool turned = Orientation::swapsSides(mOrientation);
  info.width = mStill ? (turned ? mDecoded->height : mDecoded->width) : par->width;
  info.height = mStill ? (turned ? mDecoded->width : mDecoded->height) : par->height;
  AVRational rate = frameRateOf(*stream);
  bool still = mStill;
  if (!still && rate.num > 0 && rate.den > 0) info.frameRate = toRational(rate);
  info.timeBase = still ? Rational{info.frameRate.den, info.frameRate.num} : toRational(stream->time_base);
  info.startPts = still ? 0 : mStartPts;

  std::int64_t total = 1;
  if (!still) {
    // The container's duration comes last, as it spans the audio too, which often runs a little longer.
    // A stated count includes the frames an edit list hides; the durations do not.
    const std::int64_t counted = stream->nb_frames > 0 ? stream->nb_frames - hiddenFrames(*stream) : 0;
    double duration = ownDuration(*stream);
    if (duration <= 0.0 && mFormat->duration > 0) duration = static_cast<double>(mFormat->duration) / AV_TIME_BASE;
    total = counted > 0 ? counted : framesIn(duration, info.frameRate);
    info.frameCountExact = counted > 0;
    info.durationSeconds = duration;
    mStatedFrames = counted > 0 ? counted : framesIn(ownDuration(*stream), info.frameRate);
  } else {
    info.durationSeconds = 1.0 / info.frameRate.value();
  }
  std::int64_t last = mRange.last >= 0 ? std::min(mRange.last, total - 1) : total - 1;
  info.frameCount = std::max<std::int64_t>(0, last - mRange.first + 1);
  info.range = mRange;

  const AVPixFmtDescriptor* desc =
      av_pix_fmt_desc_get(static_cast<AVPixelFormat>(mStill ? mDecoded->format : par->format));
  if (desc) {
    info.hasAlpha = (desc->flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL)) != 0;
    info.reducedToEightBits = desc->comp[0].depth > 8;
  }
  info.colourMatrix = par->color_space;
  info.fullRange = par->color_range == AVCOL_RANGE_JPEG;

  size_t size = 0;
  const uint8_t* matrix = av_stream_get_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
  if (matrix && size >= 9 * sizeof(std::int32_t)) {
    std::array<std::int32_t, 9> values{};
    std::memcpy(values.data(), matrix, sizeof values);
    info.displayMatrix = values;
    double rotation = av_display_rotation_get(values.data());
    info.rotationDegrees = std::isnan(rotation) ? 0.0 : rotation;
  }
  info.otherStreamCount = 0;
  if (!still)
    for (unsigned i = 0; i < mFormat->nb_streams; ++i)
      if (static_cast<int>(i) != mStream && !(mFormat->streams[i]->disposition & AV_DISPOSITION_ATTACHED_PIC))
        ++info.otherStreamCount;
}

bool FileFrameSource::decodeNext() {
  for (;;) {
    int err = 0;
    {
      DecoderLog::Call call(*mLog);
      err = avcodec_receive_frame(mDecoder.get(), mDecoded.get());
    }
    if (err == 0) {
      checkDecoded();
      return true;
    }
    if (err == AVERROR_EOF) return false;
    if (err != AVERROR(EAGAIN)) fail("corrupt video data: " + ffmpegErrorText(err));
    if (mDraining) return false;
    err = av_read_frame(mFormat.get(), mPacket.get());
    if (err == AVERROR_EOF) {
      mDraining = true;
      avcodec_send_packet(mDecoder.get(), nullptr);
      continue;
    }
    if (err < 0) fail("truncated or corrupt: " + ffmpegErrorText(err));
    if (mPacket->stream_index == mStream) sendPacket();
    av_packet_unref(mPacket.get());
  }
}

// A packet the decoder refuses loses its frame: the one due next, for decoders that do not reorder (pictures, and
// video with no B-frames); later frames keep their numbers.
void FileFrameSource::sendPacket() {
  int err = 0;
  {
    DecoderLog::Call call(*mLog);
    err = avcodec_send_packet(mDecoder.get(), mPacket.get());
  }
  if (err >= 0 || err == AVERROR(EAGAIN)) return;
  const bool tooLarge = mLog->refusedSize();
  const std::vector<std::string> said = mLog->take();
  const std::string why = said.empty() ? ffmpegErrorText(err) : fmt::format("{}", fmt::join(said, "; "));
  if (tooLarge) fail("FFmpeg refused to decode it for its size: " + why);
  const std::int64_t lost = mNextIndex++;
  if (mRange.contains(lost))
    damaged({lost, lost, true,
             fmt::format("truncated or corrupt: FFmpeg's {} decoder refused it: {}", mDecoder->codec->name, why)});
}

void FileFrameSource::checkDecoded() {
  ++mDecodedCount;
  std::vector<std::string> reasons = mLog->take();
  addFlagReasons(*mDecoded, reasons);
  if (!reasons.empty() && mRange.contains(mNextIndex))
    damaged({mNextIndex, mNextIndex, false, fmt::format("{}", fmt::join(reasons, "; "))});
}

// Failing at the first damaged frame rather than after the whole input: the render is lost either way, and a long
// video need not be decoded to the end to say so. --accept-damaged is there to see them all.
void FileFrameSource::damaged(FrameDamage damage) {
  if (mOnDamage == OnDamage::Fail) fail(damage.describe());
  mDamage.push_back(std::move(damage));
}

void FileFrameSource::deliver(ArgbFrame& frame) {
  if (mDecoded->width <= 0 || mDecoded->height <= 0) fail("truncated or corrupt: a frame has no size");
  int matrix = mDecoded->colorspace != AVCOL_SPC_UNSPECIFIED ? mDecoded->colorspace : mMatrix;
  bool full = mDecoded->color_range == AVCOL_RANGE_JPEG || mFullRange;
  // Turned upright here, once: the pixels then stand as shown and no writer keeps the tag.
  ArgbFrame& converted = mOrientation == 1 ? frame : mStored;
  if (!mConverter.toArgb(*mDecoded, matrix, full, converted))
    fail("pixel format '" + std::string(av_get_pix_fmt_name(static_cast<AVPixelFormat>(mDecoded->format))) +
         "' cannot be converted");
  if (mOrientation != 1) Orientation::apply(mOrientation, mStored, frame);
  frame.index = mNextIndex;
  std::int64_t pts = mDecoded->best_effort_timestamp;
  frame.pts = pts == AV_NOPTS_VALUE ? mStartPts + mNextIndex : pts;
  frame.timeSeconds = static_cast<double>(frame.pts - mStartPts) * av_q2d(mFormat->streams[mStream]->time_base);
  if (mStill) {
    frame.pts = mNextIndex;
    frame.timeSeconds = 0.0;
  }
}

bool FileFrameSource::next(ArgbFrame& frame) {
  while (!mDone) {
    if (mRange.endsBefore(mNextIndex) || !(mHeld || decodeNext())) {
      mDone = true;
      break;
    }
    if (mSeeking) mNextIndex = indexOfDecoded();
    mSeeking = false;
    mHeld = false;
    bool wanted = mRange.contains(mNextIndex);
    if (wanted) deliver(frame);
    av_frame_unref(mDecoded.get());
    ++mNextIndex;
    if (wanted) return true;
  }
  if (mDecodedCount == 0)
    fail(mDamage.empty() ? "no frame could be decoded (truncated or corrupt)" : mDamage[0].describe());
  checkComplete();
  return false;
}

// A picture is read again from the start. A video goes back to the key frame at or before the frame's time; the
// frames from there to the one asked for are decoded and dropped, as next() drops those before its range.
void FileFrameSource::seek(std::int64_t index) {
  mRange = FrameRange{index, -1};
  mDone = mDraining = false;
  if (mStill) {
    // The decoder's log goes first: a new decoder may be made where the old one was, and a log unregistered after
    // the new one registered would take the new one's place with it.
    mLog.reset();
    open();
    openDecoder();
    holdPicture();
    mNextIndex = 0;
    return;
  }
  seekVideo(index);
}

void FileFrameSource::seekVideo(std::int64_t index) {
  const AVStream* stream = mFormat->streams[mStream];
  std::int64_t target = mStartPts + av_rescale_q(index, av_inv_q(frameRateOf(*stream)), stream->time_base);
  int err = av_seek_frame(mFormat.get(), mStream, target, AVSEEK_FLAG_BACKWARD);
  if (err < 0) fail("cannot seek to frame " + std::to_string(index) + ": " + ffmpegErrorText(err));
  avcodec_flush_buffers(mDecoder.get());
  mSeeking = true;
}

std::int64_t FileFrameSource::indexOfDecoded() const {
  const AVStream* stream = mFormat->streams[mStream];
  std::int64_t pts = mDecoded->best_effort_timestamp;
  if (pts == AV_NOPTS_VALUE) fail("its frames carry no time, so it cannot be read from the middle");
  return av_rescale_q(pts - mStartPts, stream->time_base, av_inv_q(frameRateOf(*stream)));
}

void FileFrameSource::checkComplete() {
  // A file cut short still demuxes cleanly up to the cut in some containers (Matroska); what it states of its own
  // length tells. No slack: the frames an edit list hides are already taken from the stated count, and nothing else
  // explains a frame stated and not there.
  if (mStill || mRange.endsBefore(mNextIndex) || mNextIndex >= mStatedFrames) return;
  const std::int64_t first = std::max(mNextIndex, mRange.first);
  const std::int64_t last = mRange.last >= 0 ? std::min(mRange.last, mStatedFrames - 1) : mStatedFrames - 1;
  if (first <= last)
    damaged({first, last, true,
             fmt::format("truncated: the container states {} frames, the stream holds {}", mStatedFrames, mNextIndex)});
}

std::vector<FrameDamage> FileFrameSource::readImage(const std::string& path, ArgbFrame& frame, MediaInfo& info,
                                                    OnDamage onDamage) {
  MediaInfo own = info;
  own.kind = MediaKind::Image;
  FileFrameSource source(path, FrameRange{}, own, onDamage);
  if (!source.next(frame)) throw MediaError(path, "no frame could be decoded (truncated or corrupt)");
  info.width = own.width;
  info.height = own.height;
  info.hasAlpha = own.hasAlpha;
  info.reducedToEightBits = own.reducedToEightBits;
  info.codecName = own.codecName;
  return source.damage();
}

}  // namespace Quillmere::Velmira
