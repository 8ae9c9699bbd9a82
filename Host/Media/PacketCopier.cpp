#include "Media/PacketCopier.h"

#include "Media/MediaError.h"

namespace Quillmere::Velmira {

PacketCopier::PacketCopier(const MediaInfo& source, AVFormatContext* output, const std::string& outputPath)
    : mOutputPath(outputPath), mOutput(output), mVideoTimeBase{source.timeBase.num, source.timeBase.den} {
  AVFormatContext* raw = nullptr;
  if (avformat_open_input(&raw, source.path.c_str(), nullptr, nullptr) < 0)
    throw MediaError(source.path, "cannot be opened again to copy its other streams");
  mInput.reset(raw);
  if (avformat_find_stream_info(mInput.get(), nullptr) < 0)
    throw MediaError(source.path, "corrupt or truncated: its streams cannot be read");
  int video = av_find_best_stream(mInput.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  mOutputIndex.assign(mInput->nb_streams, -1);
  for (unsigned i = 0; i < mInput->nb_streams; ++i) {
    AVStream* in = mInput->streams[i];
    if (static_cast<int>(i) == video || (in->disposition & AV_DISPOSITION_ATTACHED_PIC)) continue;
    // A stream the container cannot hold (a QuickTime timecode track in Matroska, say) is left out rather
    // than failing the whole render; everything the container can hold is kept.
    if (avformat_query_codec(output->oformat, in->codecpar->codec_id, FF_COMPLIANCE_NORMAL) == 0) continue;
    AVStream* out = avformat_new_stream(output, nullptr);
    if (!out || avcodec_parameters_copy(out->codecpar, in->codecpar) < 0)
      throw MediaError(outputPath, "cannot add a copied stream");
    // The tag belongs to the source container; the output's muxer picks its own.
    out->codecpar->codec_tag = 0;
    out->time_base = in->time_base;
    out->disposition = in->disposition;
    av_dict_copy(&out->metadata, in->metadata, 0);
    mOutputIndex[i] = out->index;
  }
}

int PacketCopier::copiedStreams() const {
  int n = 0;
  for (int index : mOutputIndex) n += index >= 0 ? 1 : 0;
  return n;
}

void PacketCopier::setSpan(std::int64_t start, std::int64_t shift) {
  mStart = start;
  mShift = shift;
}

bool PacketCopier::readPending() {
  while (!mHasPending && !mEnded) {
    int err = av_read_frame(mInput.get(), mPending.get());
    if (err == AVERROR_EOF) {
      mEnded = true;
      break;
    }
    // A damaged tail of the source ends the copy; the video decides whether the render failed.
    if (err < 0) {
      mEnded = true;
      break;
    }
    if (mOutputIndex[mPending->stream_index] < 0 || mPending->pts == AV_NOPTS_VALUE || pendingTime() < mStart) {
      av_packet_unref(mPending.get());
      continue;
    }
    mHasPending = true;
  }
  return mHasPending;
}

std::int64_t PacketCopier::pendingTime() const {
  AVRational tb = mInput->streams[mPending->stream_index]->time_base;
  return av_rescale_q(mPending->pts, tb, mVideoTimeBase);
}

void PacketCopier::writePending() {
  AVStream* in = mInput->streams[mPending->stream_index];
  AVStream* out = mOutput->streams[mOutputIndex[mPending->stream_index]];
  std::int64_t shift = av_rescale_q(mShift, mVideoTimeBase, in->time_base);
  if (mPending->pts != AV_NOPTS_VALUE) mPending->pts -= shift;
  if (mPending->dts != AV_NOPTS_VALUE) mPending->dts -= shift;
  av_packet_rescale_ts(mPending.get(), in->time_base, out->time_base);
  mPending->stream_index = out->index;
  mPending->pos = -1;
  int err = av_interleaved_write_frame(mOutput, mPending.get());
  mHasPending = false;
  av_packet_unref(mPending.get());
  if (err < 0) throw MediaError(mOutputPath, "cannot write a copied packet: " + ffmpegErrorText(err));
}

void PacketCopier::copyUntil(std::int64_t limit) {
  while (readPending() && pendingTime() < limit) writePending();
}

void PacketCopier::finish(std::int64_t end, bool toEnd) {
  while (readPending() && (toEnd || pendingTime() < end)) writePending();
  if (mHasPending) av_packet_unref(mPending.get());
  mHasPending = false;
}

}  // namespace Quillmere::Velmira
