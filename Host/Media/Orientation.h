// A photo's EXIF orientation: how its stored pixels turn and flip to stand upright.
#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include "Core/ArgbFrame.h"

namespace Quillmere::Velmira {

class Orientation {
public:
  // The EXIF value (1 upright, 2-8 the seven turns and flips) that FFmpeg's decoder put in the frame's metadata as
  // "Orientation"; 1 when it put none or one out of range.
  static int of(const AVFrame& frame);
  // Whether the upright picture is the stored one on its side: width and height trade places.
  static bool swapsSides(int orientation) { return orientation >= 5 && orientation <= 8; }
  // Writes `stored` upright into `upright`, which is sized to fit.
  static void apply(int orientation, const ArgbFrame& stored, ArgbFrame& upright);
};

}  // namespace Quillmere::Velmira
