#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

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

// The tolerance of every comparison of a rendered frame with the reference. The reference already gives, for every
// channel, the band of values a GPU may land on where the maths sits on a rounding edge: the 8-bit storage of the
// premultiplied colour between the passes (with a window of 1/40 of a level for float error, which the division by
// alpha then widens at low alpha), and a skin decision right at the range. Outside that band at most 1 level is
// allowed: a GPU computes exp, sqrt and the sums of up to 841 taps in single precision and may round a value that lies
// more than 1/40 of a level from an edge the other way (a wrong skin decision, a lost channel or a flipped row would be
// tens of levels off). The mean distance outside the band must stay below 0.01 levels over all channels: such
// roundings are rare, and a systematic slip of one level on a tenth of the pixels would exceed it. On llvmpipe every
// test frame lies inside its band (maximum 0), and the same frames with their rows flipped lie 25 to 255 levels out.
constexpr int kMaxLevelsOutsideBand = 1;
constexpr double kMeanLevelsOutsideBand = 0.01;

// Whether `output` is what the effect should make of `input` at these sliders, within that tolerance; the failure
// names the worst channel. A frame with a channel the effect leaves undefined (a square root of a negative number
// under full reddening of a saturated colour) tests nothing there, and fails too.
inline ::testing::AssertionResult matchesReference(const ArgbFrame& input, const ArgbFrame& output,
                                                   const ReferenceSliders& sliders) {
  if (output.width() != input.width() || output.height() != input.height()) {
    return ::testing::AssertionFailure() << "the output is " << output.width() << "x" << output.height();
  }
  const ReferenceFrame reference = ReferenceRender(sliders).render(input);
  const FrameDeviation deviation = reference.compare(output);
  if (deviation.maximum > kMaxLevelsOutsideBand || deviation.mean >= kMeanLevelsOutsideBand ||
      reference.undefinedChannels() > 0) {
    return ::testing::AssertionFailure() << deviation.describe() << "; " << reference.undefinedChannels()
                                         << " channels undefined";
  }
  return ::testing::AssertionSuccess();
}

}  // namespace Quillmere::Velmira
