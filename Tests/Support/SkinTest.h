#pragma once

#include <cstdint>

namespace Quillmere::Velmira {

// Whether the effect blurs a pixel: its hue, measured on the colour circle from the skin hue 0.05 and scaled by 0.5
// to lie in 0..1, must be below the "Skin Blur Range". A pixel whose scaled distance equals the range within float
// rounding may go either way on a GPU (every grey pixel at 10 %, where 0.05 / 0.5 and 10 / 100 are the same float),
// so the answer there is EitherWay.
enum class SkinDecision { NotBlurred, Blurred, EitherWay };

class SkinTest {
public:
  // Colour channels in 0..1. Grey has hue 0.
  static double hue(double red, double green, double blue);
  static double scaledHueDistance(double red, double green, double blue);

  // rangePercent is the slider value; the effect hands it to the GPU as the float rangePercent / 100.
  static SkinDecision decide(std::uint8_t red, std::uint8_t green, std::uint8_t blue, double rangePercent);

  // The window around the range inside which a GPU's float hue may land on either side.
  static constexpr double kBoundaryWindow = 1e-5;
};

}  // namespace Quillmere::Velmira
