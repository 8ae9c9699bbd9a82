#pragma once

#include <string>

#include "HostWorld.h"
#include "Support/DecodedImage.h"

namespace Quillmere::Velmira {

// Synthetic frames that put the effect's conventions under strain, written into a host world (padding untouched).
class TestFrames {
public:
  enum class Kind {
    HueSweep,   // hue across the skin band left to right, brightness top to bottom, with grain
    AlphaRamp,  // skin-coloured grain, alpha from 0 at the left edge to 255 at the right
    TopBottom,  // a top half and a bottom half of different colours
    SkinGrain,  // skin tones with grain and a few hard edges, opaque
  };

  static void fill(HostWorld& world, Kind kind);
  static void copy(const DecodedImage& image, HostWorld& world);
  static std::string name(Kind kind);
};

}  // namespace Quillmere::Velmira
