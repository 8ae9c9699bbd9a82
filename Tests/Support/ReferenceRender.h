#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Support/ReferenceFrame.h"
#include "Support/ReferenceSliders.h"

namespace Quillmere::Velmira {

// A CPU model of what the effect does to one 8-bit frame, worked out in doubles from what each step computes:
// skin pixels (by hue) get an edge-keeping bilateral blur of the alpha, red and green slots of the host's layout
// while blue keeps the centre's value; every pixel is whitened, reddened and pinked; the colour is premultiplied
// into 8-bit storage, then divided by alpha again into 8 bits in the host's channel order.
class ReferenceRender {
public:
  explicit ReferenceRender(const ReferenceSliders& sliders);

  // argb: the host's frame, rows rowbytes apart, pixels alpha, red, green, blue.
  ReferenceFrame render(const std::uint8_t* argb, int width, int height, std::size_t rowbytes) const;
  ReferenceFrame render(const ArgbFrame& frame) const {
    return render(frame.row(0), frame.width(), frame.height(), frame.rowBytes());
  }

  // How far a value may move before 8-bit storage and still count as the same maths: float arithmetic on a GPU
  // (sums over up to 841 taps, exp and sqrt of limited precision) stays well inside this, about 1/40 of a level.
  static constexpr double kStorageWindow = 1e-4;

  using Slots = std::array<double, 4>;  // a texel as the GPU samples it: alpha, red, green, blue
  using Colour = std::array<double, 3>;

  // One step of the colour adjustment, in 0..1 red, green, blue; exposed for tests of single pixels.
  Colour adjustColour(Colour colour) const;

private:
  struct Texture {
    int width;
    int height;
    std::vector<Slots> texels;
    const Slots& at(int x, int y) const;
  };

  Texture upload(const std::uint8_t* argb, int width, int height, std::size_t rowbytes) const;
  Slots blur(const Texture& texture, int x, int y) const;
  Slots premultipliedOutput(Slots sample) const;
  void storeAndReturn(const std::vector<Slots>& candidates, std::uint8_t expected[4], std::uint8_t low[4],
                      std::uint8_t high[4], ReferenceFrame& frame) const;

  float mBlurSize;
  double mRangePercent;
  float mWhitening;
  float mRedden;
  float mPinking;
  int mHalfWidth;                       // -1: no blur at all
  std::vector<double> mSpatialWeights;  // by distance from the centre
};

}  // namespace Quillmere::Velmira
