#include "Support/TestFrames.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Quillmere::Velmira {

namespace {

// A small deterministic grain, the same on every run.
int grain(int x, int y, int amplitude) {
  std::uint32_t h = static_cast<std::uint32_t>(x) * 73856093u ^ static_cast<std::uint32_t>(y) * 19349663u;
  h ^= h >> 13;
  h *= 0x5bd1e995u;
  h ^= h >> 15;
  return static_cast<int>(h % static_cast<std::uint32_t>(2 * amplitude + 1)) - amplitude;
}

A_u_char byte(double v) { return static_cast<A_u_char>(std::clamp(static_cast<int>(std::lround(v)), 0, 255)); }

// Hue in 0..1 (wrapping), saturation and value in 0..1, to 8-bit red, green, blue.
PF_Pixel8 fromHsv(double hue, double saturation, double value, A_u_char alpha) {
  auto channel = [&](double n) {
    const double k = std::fmod(n + (hue - std::floor(hue)) * 6.0, 6.0);
    return byte(255.0 * value * (1.0 - saturation * std::clamp(std::min(k, 4.0 - k), 0.0, 1.0)));
  };
  return PF_Pixel8{alpha, channel(5.0), channel(3.0), channel(1.0)};
}

PF_Pixel8 withGrain(PF_Pixel8 pixel, int x, int y, int amplitude) {
  pixel.red = byte(pixel.red + grain(x, y, amplitude));
  pixel.green = byte(pixel.green + grain(x + 7, y, amplitude));
  pixel.blue = byte(pixel.blue + grain(x, y + 11, amplitude));
  return pixel;
}

PF_Pixel8 hueSweep(const ArgbFrame& world, int x, int y) {
  const double across = world.width() > 1 ? static_cast<double>(x) / (world.width() - 1) : 0.0;
  const double down = world.height() > 1 ? static_cast<double>(y) / (world.height() - 1) : 0.0;
  // From hue -0.15 to 0.25: the skin hue 0.05 sits in the middle, and the band wraps past red.
  return withGrain(fromHsv(-0.15 + 0.4 * across, 0.55, 0.35 + 0.6 * down, 255), x, y, 6);
}

PF_Pixel8 alphaRamp(const ArgbFrame& world, int x, int y) {
  const int alpha = world.width() > 1 ? (x * 255) / (world.width() - 1) : 255;
  return withGrain(fromHsv(0.06, 0.45, 0.8, static_cast<A_u_char>(alpha)), x, y, 10);
}

PF_Pixel8 topBottom(const ArgbFrame& world, int, int y) {
  // Moderate colours: full reddening extrapolates saturation, and a pure colour would leave the range where the
  // effect's maths is defined.
  return y < world.height() / 2 ? PF_Pixel8{255, 230, 150, 120} : PF_Pixel8{255, 60, 90, 200};
}

PF_Pixel8 skinGrain(const ArgbFrame& world, int x, int y) {
  const bool edge = (x / 9 + y / 13) % 4 == 0;
  const double hue = edge ? 0.6 : 0.04 + 0.03 * std::sin(x * 0.11) * std::cos(y * 0.07);
  (void)world;
  return withGrain(fromHsv(hue, 0.4, 0.75, 255), x, y, 12);
}

}  // namespace

void TestFrames::make(ArgbFrame& frame, Kind kind, int width, int height, std::size_t alignment) {
  frame.allocate(width, height, alignment);
  for (int y = 0; y < height; ++y) {
    auto* row = reinterpret_cast<PF_Pixel8*>(frame.row(y));
    for (int x = 0; x < width; ++x) {
      switch (kind) {
        case Kind::HueSweep: row[x] = hueSweep(frame, x, y); break;
        case Kind::AlphaRamp: row[x] = alphaRamp(frame, x, y); break;
        case Kind::TopBottom: row[x] = topBottom(frame, x, y); break;
        case Kind::SkinGrain: row[x] = skinGrain(frame, x, y); break;
      }
    }
  }
}

}  // namespace Quillmere::Velmira
