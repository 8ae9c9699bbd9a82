#include "Media/VideoSink.h"

#include <cstring>

extern "C" {
#include <libavutil/opt.h>
}

#include "Media/MediaError.h"
#include "Media/MediaPath.h"

namespace Quillmere::Velmira {

bool VideoSink::writes(const std::string& extension) {
  return extension == ".mp4" || extension == ".m4v" || extension == ".mov" || extension == ".mkv";
}

VideoSink::VideoSink(const std::string& path, const MediaInfo& source, int crf)
    : mPath(path), mSource(source), mFile(path) {
  std::string ext = MediaPath::extension(path);
  if (!writes(ext)) fail("unknown video format '" + ext + "' (write .mp4, .mov or .mkv)");
  AVFormatContext* raw = nullptr;
  // The format follows the final name; the bytes go to the temporary file.
  if (avformat_alloc_output_context2(&raw, nullptr, nullptr, path.c_str()) < 0 || !raw)
    fail("unknown video format '" + ext + "'");
  mOutput.reset(raw);
  // Where the frames sit in their source, so that `velmira join` can place a range rendered on its own.
  av_dict_set_int(&mOutput->metadata, kFirstFrameTag, source.frames().first, 0);
  mTimeBase = AVRational{source.timeBase.num, source.timeBase.den};
  if (mTimeBase.num <= 0 || mTimeBase.den <= 0) mTimeBase = AVRational{source.frameRate.den, source.frameRate.num};
  mFrameDuration =
      std::max<std::int64_t>(1, av_rescale_q(1, AVRational{source.frameRate.den, source.frameRate.num}, mTimeBase));
  openEncoder(crf);
  addVideoStream();
  if (source.kind == MediaKind::Video && source.otherStreamCount > 0)
    mCopier = std::make_unique<PacketCopier>(source, mOutput.get(), path);
  openOutput();
}

VideoSink::~VideoSink() = default;

void VideoSink::fail(const std::string& problem) const { throw MediaError(mPath, problem); }

void VideoSink::openEncoder(int crf) {
  bool alpha = mSource.hasAlpha && MediaPath::extension(mPath) == ".mov";
  // QuickTime Animation for alpha: lossless 8-bit ARGB, exactly the frames' own layout, and read by every
  // QuickTime-based tool. ProRes 4444 would also carry alpha, but lossy and at 10 bits.
  const AVCodec* codec = alpha ? avcodec_find_encoder(AV_CODEC_ID_QTRLE) : avcodec_find_encoder_by_name("libx264");
  if (!codec) codec = avcodec_find_encoder(AV_CODEC_ID_MPEG4);
  if (!codec) fail("no video encoder available");
  mEncoder.reset(avcodec_alloc_context3(codec));
  AVCodecContext* c = mEncoder.get();
  c->width = mSource.width;
  c->height = mSource.height;
  c->time_base = mTimeBase;
  c->framerate = AVRational{mSource.frameRate.num, mSource.frameRate.den};
  if (alpha) {
    c->pix_fmt = AV_PIX_FMT_ARGB;
  } else {
    // 4:2:0 needs even sizes; an odd-sized source keeps every pixel in 4:4:4 instead of being cropped.
    bool even = mSource.width % 2 == 0 && mSource.height % 2 == 0;
    c->pix_fmt = even ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV444P;
    int matrix = PixelConverter::effectiveMatrix(mSource.colourMatrix, mSource.height);
    c->colorspace = static_cast<AVColorSpace>(matrix);
    c->color_range = mSource.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    if (matrix == AVCOL_SPC_BT709) {
      c->color_primaries = AVCOL_PRI_BT709;
      c->color_trc = AVCOL_TRC_BT709;
    }
  }
  if (mOutput->oformat->flags & AVFMT_GLOBALHEADER) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  AVDictionary* options = nullptr;
  if (std::strcmp(codec->name, "libx264") == 0) {
    av_dict_set_int(&options, "crf", crf, 0);
  } else if (codec->id == AV_CODEC_ID_MPEG4) {
    c->flags |= AV_CODEC_FLAG_QSCALE;
    c->global_quality = FF_QP2LAMBDA * 3;
  }
  int err = avcodec_open2(c, codec, &options);
  av_dict_free(&options);
  if (err < 0) fail(std::string("cannot open the ") + codec->name + " encoder: " + ffmpegErrorText(err));
}

void VideoSink::addVideoStream() {
  mStream = avformat_new_stream(mOutput.get(), nullptr);
  if (!mStream || avcodec_parameters_from_context(mStream->codecpar, mEncoder.get()) < 0)
    fail("cannot add the video stream");
  mStream->time_base = mTimeBase;
  mStream->avg_frame_rate = mEncoder->framerate;
  if (mSource.displayMatrix) {
    uint8_t* data = av_stream_new_side_data(mStream, AV_PKT_DATA_DISPLAYMATRIX, sizeof(*mSource.displayMatrix));
    if (!data) fail("cannot keep the rotation");
    std::memcpy(data, mSource.displayMatrix->data(), sizeof(*mSource.displayMatrix));
  }
}

void VideoSink::openOutput() {
  int err = avio_open(&mOutput->pb, mFile.path().c_str(), AVIO_FLAG_WRITE);
  if (err < 0) fail("cannot be written: " + ffmpegErrorText(err));
  // MP4 and MOV keep a tag of our own only when asked to; Matroska always does.
  AVDictionary* options = nullptr;
  av_dict_set(&options, "movflags", "use_metadata_tags", 0);
  err = avformat_write_header(mOutput.get(), &options);
  av_dict_free(&options);
  if (err < 0) fail("cannot start the file: " + ffmpegErrorText(err));
  mHeaderWritten = true;
}

void VideoSink::drainEncoder(bool flushing) {
  for (;;) {
    int err = avcodec_receive_packet(mEncoder.get(), mPacket.get());
    if (err == AVERROR(EAGAIN) || err == AVERROR_EOF) return;
    if (err < 0) fail("cannot encode: " + ffmpegErrorText(err));
    if (mPacket->duration <= 0) mPacket->duration = mFrameDuration;
    // Other streams go in up to this packet's time, so the muxer interleaves without holding everything.
    if (mCopier && !flushing && mPacket->dts != AV_NOPTS_VALUE) mCopier->copyUntil(mPacket->dts + mShift);
    av_packet_rescale_ts(mPacket.get(), mTimeBase, mStream->time_base);
    mPacket->stream_index = mStream->index;
    err = av_interleaved_write_frame(mOutput.get(), mPacket.get());
    if (err < 0) fail("cannot write: " + ffmpegErrorText(err));
  }
}

void VideoSink::write(const ArgbFrame& frame) {
  if (frame.width() != mSource.width || frame.height() != mSource.height)
    fail("frame is " + std::to_string(frame.width()) + "x" + std::to_string(frame.height()) + ", the video " +
         std::to_string(mSource.width) + "x" + std::to_string(mSource.height));
  if (mFirst) {
    // A whole source keeps its timestamps as they are; a range starts at zero, like the part of the source
    // it is, with the other streams moved back by the same amount.
    mShift = mSource.range.first > 0 ? frame.pts : 0;
    if (mCopier) mCopier->setSpan(mSource.range.first > 0 ? frame.pts : INT64_MIN, mShift);
    mFirst = false;
  }
  av_frame_unref(mFrame.get());
  mFrame->format = mEncoder->pix_fmt;
  mFrame->width = frame.width();
  mFrame->height = frame.height();
  if (av_frame_get_buffer(mFrame.get(), 0) < 0) fail("out of memory for a frame");
  if (!mConverter.fromArgb(frame, mEncoder->colorspace, mEncoder->color_range == AVCOL_RANGE_JPEG, *mFrame))
    fail("cannot convert the frame for the encoder");
  std::int64_t pts = frame.pts - mShift;
  // Frames made without timestamps still need rising ones.
  if (mLastPts != INT64_MIN && pts <= mLastPts) pts = mLastPts + mFrameDuration;
  mFrame->pts = pts;
  mLastPts = pts;
  int err = avcodec_send_frame(mEncoder.get(), mFrame.get());
  if (err < 0) fail("cannot encode: " + ffmpegErrorText(err));
  drainEncoder(false);
}

void VideoSink::finish() {
  if (mFirst) fail("no frame was written");
  int err = avcodec_send_frame(mEncoder.get(), nullptr);
  if (err < 0) fail("cannot flush the encoder: " + ffmpegErrorText(err));
  drainEncoder(true);
  if (mCopier) mCopier->finish(mLastPts + mFrameDuration + mShift, mSource.range.last < 0);
  err = av_write_trailer(mOutput.get());
  if (err < 0) fail("cannot finish the file: " + ffmpegErrorText(err));
  err = avio_closep(&mOutput->pb);
  if (err < 0) fail("cannot be written completely: " + ffmpegErrorText(err));
  mFile.commit();
}

}  // namespace Quillmere::Velmira
