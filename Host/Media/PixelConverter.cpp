#include "Media/PixelConverter.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace Quillmere::Velmira {

namespace {

// The deprecated "J" formats are full-range YUV whatever the frame says.
bool isJpegFormat(AVPixelFormat f) {
    return f == AV_PIX_FMT_YUVJ420P || f == AV_PIX_FMT_YUVJ422P || f == AV_PIX_FMT_YUVJ444P ||
           f == AV_PIX_FMT_YUVJ440P || f == AV_PIX_FMT_YUVJ411P;
}

}  // namespace

int PixelConverter::effectiveMatrix(int matrix, int height) {
    if (matrix == AVCOL_SPC_UNSPECIFIED || matrix == AVCOL_SPC_RESERVED || matrix == AVCOL_SPC_RGB)
        return height >= 720 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    return matrix;
}

SwsContext* PixelConverter::prepare(int srcW, int srcH, AVPixelFormat srcFormat, AVPixelFormat dstFormat,
                                    int matrix, bool srcFull, bool dstFull) {
    // Exact rounding and full chroma interpolation: the output is graded by eye, and known colours must come
    // back within a unit or two.
    const int flags = SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP;
    SwsContext* previous = mContext.release();
    SwsContext* context = sws_getCachedContext(previous, srcW, srcH, srcFormat, srcW, srcH, dstFormat, flags,
                                               nullptr, nullptr, nullptr);
    if (context != previous) mMatrix = -1;
    mContext.reset(context);
    if (!context) return nullptr;
    if (matrix != mMatrix || srcFull != mSrcFull || dstFull != mDstFull) {
        const int* coefficients = sws_getCoefficients(matrix);
        sws_setColorspaceDetails(context, coefficients, srcFull ? 1 : 0, coefficients, dstFull ? 1 : 0, 0,
                                 1 << 16, 1 << 16);
        mMatrix = matrix;
        mSrcFull = srcFull;
        mDstFull = dstFull;
    }
    return context;
}

bool PixelConverter::toArgb(const AVFrame& source, int matrix, bool fullRange, ArgbFrame& target) {
    auto format = static_cast<AVPixelFormat>(source.format);
    if (target.width != source.width || target.height != source.height || target.pixels.empty())
        target.allocate(source.width, source.height);
    bool srcFull = fullRange || isJpegFormat(format);
    SwsContext* context = prepare(source.width, source.height, format, AV_PIX_FMT_ARGB,
                                  effectiveMatrix(matrix, source.height), srcFull, true);
    if (!context) return false;
    uint8_t* planes[4] = {target.pixels.data(), nullptr, nullptr, nullptr};
    int strides[4] = {static_cast<int>(target.rowBytes), 0, 0, 0};
    sws_scale(context, source.data, source.linesize, 0, source.height, planes, strides);
    return true;
}

bool PixelConverter::fromArgb(const ArgbFrame& source, int matrix, bool fullRange, AVFrame& target) {
    auto format = static_cast<AVPixelFormat>(target.format);
    bool dstFull = fullRange || isJpegFormat(format);
    SwsContext* context = prepare(source.width, source.height, AV_PIX_FMT_ARGB, format,
                                  effectiveMatrix(matrix, source.height), true, dstFull);
    if (!context) return false;
    const uint8_t* planes[4] = {source.pixels.data(), nullptr, nullptr, nullptr};
    int strides[4] = {static_cast<int>(source.rowBytes), 0, 0, 0};
    sws_scale(context, planes, strides, 0, source.height, target.data, target.linesize);
    return true;
}

}  // namespace Quillmere::Velmira
