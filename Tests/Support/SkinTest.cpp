#include "Support/SkinTest.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Velmira {

namespace {
constexpr double kSkinHue = 0.05;
}

double SkinTest::hue(double red, double green, double blue) {
  const double maximum = std::max({red, green, blue});
  const double minimum = std::min({red, green, blue});
  const double chroma = maximum - minimum;
  if (chroma <= 0.0) return 0.0;
  // The hexcone model: each sixth of the circle is spanned between two primaries.
  double sixths = 0.0;
  if (maximum == red) {
    sixths = (green - blue) / chroma;
    if (sixths < 0.0) sixths += 6.0;
  } else if (maximum == green) {
    sixths = 2.0 + (blue - red) / chroma;
  } else {
    sixths = 4.0 + (red - green) / chroma;
  }
  return sixths / 6.0;
}

double SkinTest::scaledHueDistance(double red, double green, double blue) {
  double distance = hue(red, green, blue) - kSkinHue;
  if (distance > 0.5) distance -= 1.0;
  if (distance < -0.5) distance += 1.0;
  return std::fabs(distance) / 0.5;
}

SkinDecision SkinTest::decide(std::uint8_t red, std::uint8_t green, std::uint8_t blue, double rangePercent) {
  // The effect divides in single precision, so the GPU compares against this float.
  const double range = static_cast<double>(static_cast<float>(rangePercent) / 100.0f);
  if (range <= 0.0) {
    // A distance is never below 0, so nothing is skin, also a pixel right on the skin hue.
    return SkinDecision::NotBlurred;
  }
  const double distance = scaledHueDistance(red / 255.0, green / 255.0, blue / 255.0);
  if (std::fabs(distance - range) <= kBoundaryWindow) return SkinDecision::EitherWay;
  return distance < range ? SkinDecision::Blurred : SkinDecision::NotBlurred;
}

}  // namespace Quillmere::Velmira
