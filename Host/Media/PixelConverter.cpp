#include "Media/PixelConverter.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace Quillmere::Velmira {

namespace {

// The deprecated "J" formats are full-range YUV whatever the frame says.
bool isJpegFormat(AVPixelFormat f) {
  return f == AV_PIX_FMT_YUVJ420P || f == AV_PIX_FMT_YUVJ422P || f == AV_PIX_FMT_YUVJ444P || f == AV_PIX_FMT_YUVJ440P ||
         f == AV_PIX_FMT_YUVJ411P;
}

// 16-bit RGB(A): swscale would take it through its YUV pipeline and be off by one here and there, where the
// exact answer is one rounding per channel.
bool convertDeepRgb(const AVFrame& source, ArgbFrame& target) {
  auto format = static_cast<AVPixelFormat>(source.format);
  bool alpha = format == AV_PIX_FMT_RGBA64BE || format == AV_PIX_FMT_RGBA64LE;
  bool bigEndian = format == AV_PIX_FMT_RGBA64BE || format == AV_PIX_FMT_RGB48BE;
  if (!alpha && format != AV_PIX_FMT_RGB48BE && format != AV_PIX_FMT_RGB48LE) return false;
  int channels = alpha ? 4 : 3;
  for (int y = 0; y < source.height; ++y) {
    const uint8_t* in = source.data[0] + static_cast<std::ptrdiff_t>(y) * source.linesize[0];
    uint8_t* out = target.row(y);
    for (int x = 0; x < source.width; ++x, out += 4) {
      uint8_t values[4] = {0, 0, 0, 255};
      for (int c = 0; c < channels; ++c, in += 2) {
        unsigned v = bigEndian ? (in[0] << 8 | in[1]) : (in[1] << 8 | in[0]);
        values[c] = static_cast<uint8_t>((v * 255u + 32767u) / 65535u);
      }
      out[0] = values[3];
      out[1] = values[0];
      out[2] = values[1];
      out[3] = values[2];
    }
  }
  return true;
}

}  // namespace

int PixelConverter::effectiveMatrix(int matrix, int height) {
  if (matrix == AVCOL_SPC_UNSPECIFIED || matrix == AVCOL_SPC_RESERVED || matrix == AVCOL_SPC_RGB)
    return height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
  return matrix;
}

SwsContext* PixelConverter::prepare(int srcW, int srcH, AVPixelFormat srcFormat, AVPixelFormat dstFormat, int matrix,
                                    bool srcFull, bool dstFull) {
  Key key{srcW, srcH, srcFormat, dstFormat, matrix, srcFull, dstFull};
  if (mContext && key == mKey) return mContext.get();
  mContext.reset(sws_alloc_context());
  SwsContext* context = mContext.get();
  if (!context) return nullptr;
  // Exact rounding and full chroma interpolation: the output is graded by eye, and known colours must come
  // back within a unit or two. No dithering: deep channels brought to 8 bits must stay the same picture in
  // every frame, not gain noise that an encoder then spends bits on.
  av_opt_set_int(context, "sws_flags", SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP, 0);
  av_opt_set_int(context, "srcw", srcW, 0);
  av_opt_set_int(context, "srch", srcH, 0);
  av_opt_set_int(context, "dstw", srcW, 0);
  av_opt_set_int(context, "dsth", srcH, 0);
  av_opt_set_pixel_fmt(context, "src_format", srcFormat, 0);
  av_opt_set_pixel_fmt(context, "dst_format", dstFormat, 0);
  av_opt_set(context, "sws_dither", "none", 0);
  if (sws_init_context(context, nullptr, nullptr) < 0) {
    mContext.reset();
    return nullptr;
  }
  const int* coefficients = sws_getCoefficients(matrix);
  sws_setColorspaceDetails(context, coefficients, srcFull ? 1 : 0, coefficients, dstFull ? 1 : 0, 0, 1 << 16, 1 << 16);
  mKey = key;
  return context;
}

bool PixelConverter::toArgb(const AVFrame& source, int matrix, bool fullRange, ArgbFrame& target) {
  auto format = static_cast<AVPixelFormat>(source.format);
  target.allocate(source.width, source.height);
  if (convertDeepRgb(source, target)) return true;
  bool srcFull = fullRange || isJpegFormat(format);
  SwsContext* context = prepare(source.width, source.height, format, AV_PIX_FMT_ARGB,
                                effectiveMatrix(matrix, source.height), srcFull, true);
  if (!context) return false;
  uint8_t* planes[4] = {target.row(0), nullptr, nullptr, nullptr};
  int strides[4] = {static_cast<int>(target.rowBytes()), 0, 0, 0};
  sws_scale(context, source.data, source.linesize, 0, source.height, planes, strides);
  return true;
}

bool PixelConverter::fromArgb(const ArgbFrame& source, int matrix, bool fullRange, AVFrame& target) {
  auto format = static_cast<AVPixelFormat>(target.format);
  bool dstFull = fullRange || isJpegFormat(format);
  SwsContext* context = prepare(source.width(), source.height(), AV_PIX_FMT_ARGB, format,
                                effectiveMatrix(matrix, source.height()), true, dstFull);
  if (!context) return false;
  const uint8_t* planes[4] = {source.row(0), nullptr, nullptr, nullptr};
  int strides[4] = {static_cast<int>(source.rowBytes()), 0, 0, 0};
  sws_scale(context, planes, strides, 0, source.height(), target.data, target.linesize);
  return true;
}

}  // namespace Quillmere::Velmira
