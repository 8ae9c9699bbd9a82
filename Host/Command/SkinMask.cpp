#include "Command/SkinMask.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Velmira {

namespace {

constexpr float kSkinHue = 0.05f;

}  // namespace

float SkinMask::hue(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  float r = red / 255.0f, g = green / 255.0f, b = blue / 255.0f;
  float high = std::max({r, g, b});
  float spread = high - std::min({r, g, b});
  if (spread == 0.0f) return 0.0f;  // a grey has no hue; the effect's conversion gives 0
  float sixths;
  if (high == r) {
    sixths = (g - b) / spread;
    if (sixths < 0.0f) sixths += 6.0f;
  } else if (high == g) {
    sixths = (b - r) / spread + 2.0f;
  } else {
    sixths = (r - g) / spread + 4.0f;
  }
  return sixths / 6.0f;
}

float SkinMask::scaledHueDistance(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  float distance = hue(red, green, blue) - kSkinHue;
  if (distance > 0.5f) distance -= 1.0f;
  if (distance < -0.5f) distance += 1.0f;
  return std::fabs(distance) / 0.5f;
}

bool SkinMask::blurs(std::uint8_t red, std::uint8_t green, std::uint8_t blue, float range) {
  // 1 - smoothstep(range - 0.01, range, d) is above zero exactly when d < range, and the
  // effect blurs in full whenever it is above zero.
  return scaledHueDistance(red, green, blue) < range;
}

void SkinMask::paint(const ArgbFrame& input, ArgbFrame& mask, float range) {
  for (A_long y = 0; y < input.height(); ++y) {
    const std::uint8_t* in = input.row(y);
    std::uint8_t* out = mask.row(y);
    for (A_long x = 0; x < input.width(); ++x, in += 4, out += 4) {
      std::uint8_t level = blurs(in[1], in[2], in[3], range) ? 255 : 0;
      out[0] = 255;
      out[1] = out[2] = out[3] = level;
    }
  }
}

}  // namespace Quillmere::Velmira
