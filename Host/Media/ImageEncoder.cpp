#include "Media/ImageEncoder.h"

#include "Media/MediaError.h"
#include "Media/MediaPath.h"

namespace Quillmere::Velmira {

bool ImageEncoder::writes(const std::string& extension) {
  return extension == ".png" || extension == ".jpg" || extension == ".jpeg" || extension == ".tif" ||
         extension == ".tiff";
}

ImageEncoder::ImageEncoder(const std::string& path, bool keepAlpha, bool quick) : mQuick(quick) {
  std::string ext = MediaPath::extension(path);
  if (ext == ".png") {
    mCodec = AV_CODEC_ID_PNG;
    mFormat = keepAlpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24;
  } else if (ext == ".tif" || ext == ".tiff") {
    mCodec = AV_CODEC_ID_TIFF;
    mFormat = keepAlpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24;
  } else if (ext == ".jpg" || ext == ".jpeg") {
    // JPEG carries no alpha; full-range 4:2:0 is what every viewer expects of a .jpg.
    mCodec = AV_CODEC_ID_MJPEG;
    mFormat = AV_PIX_FMT_YUVJ420P;
  } else {
    throw MediaError(path, "unknown picture format '" + ext + "' (write .png, .jpg or .tif)");
  }
}

std::vector<std::uint8_t> ImageEncoder::encode(const ArgbFrame& frame, const std::string& path) {
  if (frame.width() <= 0 || frame.height() <= 0) throw MediaError(path, "cannot write a zero-sized frame");
  const AVCodec* codec = avcodec_find_encoder(mCodec);
  if (!codec) throw MediaError(path, std::string("no encoder for ") + avcodec_get_name(mCodec));
  CodecContextPtr context(avcodec_alloc_context3(codec));
  context->width = frame.width();
  context->height = frame.height();
  context->pix_fmt = mFormat;
  context->time_base = AVRational{1, 25};
  context->color_range = mCodec == AV_CODEC_ID_MJPEG ? AVCOL_RANGE_JPEG : AVCOL_RANGE_UNSPECIFIED;
  if (mCodec == AV_CODEC_ID_MJPEG) {
    // Quantiser 2 of 31: close to the look of the source, about quality 95 in other tools.
    context->flags |= AV_CODEC_FLAG_QSCALE;
    context->global_quality = FF_QP2LAMBDA * 2;
  }
  if (mQuick) context->compression_level = 1;  // zlib's fastest level, about twice as fast as its default
  int err = avcodec_open2(context.get(), codec, nullptr);
  if (err < 0) throw MediaError(path, "cannot open the picture encoder: " + ffmpegErrorText(err));

  FramePtr picture(av_frame_alloc());
  picture->format = mFormat;
  picture->width = frame.width();
  picture->height = frame.height();
  picture->quality = context->global_quality;
  if (av_frame_get_buffer(picture.get(), 0) < 0) throw MediaError(path, "out of memory for the frame");
  if (!mConverter.fromArgb(frame, AVCOL_SPC_BT470BG, true, *picture))
    throw MediaError(path, "cannot convert the frame for this format");

  PacketPtr packet(av_packet_alloc());
  err = avcodec_send_frame(context.get(), picture.get());
  if (err >= 0) err = avcodec_send_frame(context.get(), nullptr);
  if (err >= 0) err = avcodec_receive_packet(context.get(), packet.get());
  if (err < 0) throw MediaError(path, "cannot encode the picture: " + ffmpegErrorText(err));
  return std::vector<std::uint8_t>(packet->data, packet->data + packet->size);
}

}  // namespace Quillmere::Velmira
