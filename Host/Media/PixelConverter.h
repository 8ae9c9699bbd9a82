// Converts frames between FFmpeg's pixel formats and the effect's 8-bit ARGB, with the YUV matrix and range the
// stream states.
#pragma once

#include "Core/ArgbFrame.h"
#include "Media/FfmpegHandles.h"

namespace Quillmere::Velmira {

class PixelConverter {
public:
  // `matrix` is an AVColorSpace; unspecified picks BT.709 from 720 rows up and BT.601 below, as players do.
  // Both return false when swscale has no conversion for the format.
  bool toArgb(const AVFrame& source, int matrix, bool fullRange, ArgbFrame& target);
  // `target` must be allocated with its format, width and height set.
  bool fromArgb(const ArgbFrame& source, int matrix, bool fullRange, AVFrame& target);

  static int effectiveMatrix(int matrix, int height);

private:
  SwsContext* prepare(int srcW, int srcH, AVPixelFormat srcFormat, AVPixelFormat dstFormat, int matrix, bool srcFull,
                      bool dstFull);

  // What mContext was made for; a frame that differs in any of it gets a new one.
  struct Key {
    int srcW = 0, srcH = 0;
    AVPixelFormat srcFormat = AV_PIX_FMT_NONE, dstFormat = AV_PIX_FMT_NONE;
    int matrix = -1;
    bool srcFull = false, dstFull = false;
    bool operator==(const Key& o) const {
      return srcW == o.srcW && srcH == o.srcH && srcFormat == o.srcFormat && dstFormat == o.dstFormat &&
             matrix == o.matrix && srcFull == o.srcFull && dstFull == o.dstFull;
    }
  };

  SwsPtr mContext;
  Key mKey;
};

}  // namespace Quillmere::Velmira
