#pragma once

#include "Core/ArgbFrame.h"

namespace Quillmere::Velmira {

// Synthetic frames that put the effect's conventions under strain, written into a frame (padding untouched).
class TestFrames {
public:
  enum class Kind {
    HueSweep,   // hue across the skin band left to right, brightness top to bottom, with grain
    AlphaRamp,  // skin-coloured grain, alpha from 0 at the left edge to 255 at the right
    TopBottom,  // a top half and a bottom half of different colours
    SkinGrain,  // skin tones with grain and a few hard edges, opaque
  };

  // Sizes the frame (rows padded to `alignment`) and fills it.
  static void make(ArgbFrame& frame, Kind kind, int width, int height,
                   std::size_t alignment = ArgbFrame::kRowAlignment);
};

}  // namespace Quillmere::Velmira
