// Owning handles for FFmpeg's objects: each is freed by the call FFmpeg pairs with its allocation.
#pragma once

#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

namespace Quillmere::Velmira {

struct InputFormatDeleter {
  void operator()(AVFormatContext* c) const { avformat_close_input(&c); }
};
// An output context owns its AVIOContext only once avio_open succeeded; closing it is the writer's part.
struct OutputFormatDeleter {
  void operator()(AVFormatContext* c) const {
    if (c->pb && !(c->oformat->flags & AVFMT_NOFILE)) avio_closep(&c->pb);
    avformat_free_context(c);
  }
};
struct CodecContextDeleter {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameDeleter {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketDeleter {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct SwsDeleter {
  void operator()(SwsContext* s) const { sws_freeContext(s); }
};

using InputFormatPtr = std::unique_ptr<AVFormatContext, InputFormatDeleter>;
using OutputFormatPtr = std::unique_ptr<AVFormatContext, OutputFormatDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using SwsPtr = std::unique_ptr<SwsContext, SwsDeleter>;

// FFmpeg's text for an error code.
inline std::string ffmpegErrorText(int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(code, text, sizeof text);
  return text;
}

}  // namespace Quillmere::Velmira
