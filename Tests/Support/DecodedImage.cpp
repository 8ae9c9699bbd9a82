#include "Support/DecodedImage.h"

#include <memory>
#include <stdexcept>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace Quillmere::Velmira {

namespace {

struct FormatCloser {
  void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
struct CodecFreer {
  void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
};
struct FrameFreer {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFreer {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ScalerFreer {
  void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw std::runtime_error(path + ": " + what);
}

}  // namespace

DecodedImage DecodedImage::load(const std::string& path) {
  AVFormatContext* rawFormat = nullptr;
  if (avformat_open_input(&rawFormat, path.c_str(), nullptr, nullptr) < 0) {
    fail(path, "cannot be opened");
  }
  std::unique_ptr<AVFormatContext, FormatCloser> format(rawFormat);
  const AVCodec* decoder = nullptr;
  const int stream = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
  if (stream < 0 || decoder == nullptr) {
    fail(path, "has no picture");
  }
  std::unique_ptr<AVCodecContext, CodecFreer> codec(avcodec_alloc_context3(decoder));
  avcodec_parameters_to_context(codec.get(), format->streams[stream]->codecpar);
  if (avcodec_open2(codec.get(), decoder, nullptr) < 0) {
    fail(path, "cannot be decoded");
  }
  std::unique_ptr<AVPacket, PacketFreer> packet(av_packet_alloc());
  std::unique_ptr<AVFrame, FrameFreer> frame(av_frame_alloc());
  bool decoded = false;
  while (!decoded && av_read_frame(format.get(), packet.get()) >= 0) {
    if (packet->stream_index == stream && avcodec_send_packet(codec.get(), packet.get()) >= 0) {
      decoded = avcodec_receive_frame(codec.get(), frame.get()) >= 0;
    }
    av_packet_unref(packet.get());
  }
  if (!decoded) {
    avcodec_send_packet(codec.get(), nullptr);
    decoded = avcodec_receive_frame(codec.get(), frame.get()) >= 0;
  }
  if (!decoded) {
    fail(path, "holds no decodable frame");
  }
  DecodedImage image;
  image.width = frame->width;
  image.height = frame->height;
  image.argb.resize(static_cast<std::size_t>(image.width) * image.height * 4);
  std::unique_ptr<SwsContext, ScalerFreer> scaler(
      sws_getContext(image.width, image.height, static_cast<AVPixelFormat>(frame->format), image.width, image.height,
                     AV_PIX_FMT_ARGB, SWS_POINT, nullptr, nullptr, nullptr));
  std::uint8_t* planes[4] = {image.argb.data(), nullptr, nullptr, nullptr};
  int strides[4] = {image.width * 4, 0, 0, 0};
  sws_scale(scaler.get(), frame->data, frame->linesize, 0, image.height, planes, strides);
  return image;
}

}  // namespace Quillmere::Velmira
