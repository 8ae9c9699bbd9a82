#pragma once

#include <cstdint>

#include "Core/ArgbFrame.h"

namespace Quillmere::Velmira {

// Which pixels the effect blurs: those whose hue lies near the skin hue. The hue's distance
// to 0.05 is taken round the colour circle and scaled by 1 / 0.5 to lie in 0 to 1; a pixel
// is blurred when that distance is below the range ("Skin Blur Range" / 100). Alpha plays
// no part. Computed in single precision, as a GPU does.
class SkinMask {
public:
  static float hue(std::uint8_t red, std::uint8_t green, std::uint8_t blue);
  static float scaledHueDistance(std::uint8_t red, std::uint8_t green, std::uint8_t blue);
  static bool blurs(std::uint8_t red, std::uint8_t green, std::uint8_t blue, float range);

  // White, opaque where a pixel is blurred, opaque black elsewhere.
  static void paint(const ArgbFrame& input, ArgbFrame& mask, float range);
};

}  // namespace Quillmere::Velmira
