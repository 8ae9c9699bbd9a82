#include "Support/ReferenceRender.h"

#include <algorithm>
#include <cmath>

#include "Support/SkinTest.h"

namespace Quillmere::Velmira {

namespace {

constexpr double kSpatialSigma = 10.0;
constexpr double kRangeSigma = 0.1;
constexpr double kGaussScale = 0.39894;  // the effect's own rounding of 1 / sqrt(2 pi)

double gaussian(double squaredDistance, double sigma) {
  return std::exp(-0.5 * squaredDistance / (sigma * sigma)) * kGaussScale / sigma;
}

double luma(const ReferenceRender::Colour& c) { return 0.299 * c[0] + 0.587 * c[1] + 0.114 * c[2]; }

double mix(double a, double b, double t) { return a * (1.0 - t) + b * t; }

ReferenceRender::Colour mix(const ReferenceRender::Colour& a, const ReferenceRender::Colour& b, double t) {
  return {mix(a[0], b[0], t), mix(a[1], b[1], t), mix(a[2], b[2], t)};
}

ReferenceRender::Colour clamp01(const ReferenceRender::Colour& c) {
  // NaN stays NaN here: it marks a channel whose value the GPU does not define.
  auto one = [](double v) { return std::isnan(v) ? v : std::min(1.0, std::max(0.0, v)); };
  return {one(c[0]), one(c[1]), one(c[2])};
}

// The "screen" curve 1 - (1 - c)^2 that whitening and reddening mix in.
ReferenceRender::Colour screen(const ReferenceRender::Colour& c) {
  return {1.0 - (1.0 - c[0]) * (1.0 - c[0]), 1.0 - (1.0 - c[1]) * (1.0 - c[1]), 1.0 - (1.0 - c[2]) * (1.0 - c[2])};
}

// Storage in an 8-bit normalised render buffer: clamped, rounded to the nearest level. -1 for NaN.
int store8(double v) {
  if (std::isnan(v)) return -1;
  return static_cast<int>(std::floor(std::min(1.0, std::max(0.0, v)) * 255.0 + 0.5));
}

}  // namespace

const ReferenceRender::Slots& ReferenceRender::Texture::at(int x, int y) const {
  // Taps beyond the frame read its edge.
  x = std::min(width - 1, std::max(0, x));
  y = std::min(height - 1, std::max(0, y));
  return texels[static_cast<std::size_t>(y) * width + x];
}

ReferenceRender::ReferenceRender(const ReferenceSliders& sliders)
    : mBlurSize(static_cast<float>(sliders.blur)),
      mRangePercent(sliders.range),
      mWhitening(static_cast<float>(sliders.whiten) / 100.0f),
      mRedden(static_cast<float>(sliders.redden) / 100.0f),
      mPinking(static_cast<float>(sliders.pinking) / 100.0f),
      mHalfWidth(-1) {
  // The blur's size counts taps across; an even size acts like the odd one below it, and below 1 there is none.
  const int size = static_cast<int>(mBlurSize);
  if (size >= 1) {
    mHalfWidth = (size - 1) / 2;
    for (int d = 0; d <= mHalfWidth; ++d) {
      mSpatialWeights.push_back(gaussian(static_cast<double>(d) * d, kSpatialSigma));
    }
  }
}

ReferenceRender::Texture ReferenceRender::upload(const std::uint8_t* argb, int width, int height,
                                                 std::size_t rowbytes) const {
  Texture texture{width, height, std::vector<Slots>(static_cast<std::size_t>(width) * height)};
  for (int y = 0; y < height; ++y) {
    const std::uint8_t* row = argb + static_cast<std::size_t>(y) * rowbytes;
    for (int x = 0; x < width; ++x) {
      Slots& texel = texture.texels[static_cast<std::size_t>(y) * width + x];
      for (int c = 0; c < 4; ++c) texel[c] = row[x * 4 + c] / 255.0;
    }
  }
  return texture;
}

ReferenceRender::Slots ReferenceRender::blur(const Texture& texture, int x, int y) const {
  const Slots centre = texture.at(x, y);
  if (mHalfWidth < 0) return centre;
  // Alpha, red and green are filtered together: a tap's weight falls with its distance in those three and in
  // space. Blue is not part of the filter and keeps the centre's value.
  double sum[3] = {0.0, 0.0, 0.0};
  double weights = 0.0;
  for (int i = -mHalfWidth; i <= mHalfWidth; ++i) {
    for (int j = -mHalfWidth; j <= mHalfWidth; ++j) {
      const Slots& tap = texture.at(x + i, y + j);
      double squared = 0.0;
      for (int c = 0; c < 3; ++c) squared += (tap[c] - centre[c]) * (tap[c] - centre[c]);
      const double rangeWeight = gaussian(squared, kRangeSigma) / gaussian(0.0, kRangeSigma);
      const double weight = rangeWeight * mSpatialWeights[std::abs(i)] * mSpatialWeights[std::abs(j)];
      weights += weight;
      for (int c = 0; c < 3; ++c) sum[c] += weight * tap[c];
    }
  }
  return {sum[0] / weights, sum[1] / weights, sum[2] / weights, centre[3]};
}

ReferenceRender::Colour ReferenceRender::adjustColour(Colour colour) const {
  if (mWhitening != 0.0f) colour = clamp01(mix(colour, screen(colour), mWhitening * luma(colour)));
  if (mRedden != 0.0f) {
    const Colour redColour = mix(colour, screen(colour), 0.2 * mRedden);
    const double grey = luma(redColour);
    const Colour saturated = mix(Colour{grey, grey, grey}, redColour, 1.0 + mRedden);
    const Colour averaged = mix(Colour{saturated[0], saturated[1], saturated[1]}, saturated, 0.5);
    const double averagedLuma = luma(averaged);
    // A negative channel has no square root; the GPU's answer there is undefined and shows as NaN.
    const Colour root = {std::sqrt(averaged[0]), std::sqrt(averaged[1]), std::sqrt(averaged[2])};
    colour = clamp01(mix(saturated, mix(averaged, root, averagedLuma), mRedden * averagedLuma));
  }
  if (mPinking != 0.0f) {
    const Colour pink = {std::sqrt(colour[0]) * 0.41 + 0.59 * colour[0],
                         std::sqrt(colour[1]) * 0.568 + 0.432 * colour[1],
                         std::sqrt(colour[2]) * 0.7640001 + 0.2359999 * colour[2]};
    colour = clamp01(mix(colour, pink, mPinking * luma(colour)));
  }
  return colour;
}

// From the sample (host slots) to what the skin pass stores: red, green, blue, alpha, premultiplied.
ReferenceRender::Slots ReferenceRender::premultipliedOutput(Slots sample) const {
  const double alpha = sample[0];
  const Colour colour = adjustColour({sample[1], sample[2], sample[3]});
  return {colour[0] * alpha, colour[1] * alpha, colour[2] * alpha, alpha};
}

// The skin pass's result is stored in 8 bits, then divided by alpha into 8 bits again in the host's order. Each
// candidate (a pixel on the skin edge has two) is stored with the storage window on both sides, so that a value a
// hair from a rounding edge may round either way; the division by alpha then widens such a step.
void ReferenceRender::storeAndReturn(const std::vector<Slots>& candidates, std::uint8_t expected[4],
                                     std::uint8_t low[4], std::uint8_t high[4], ReferenceFrame& frame) const {
  int lo[4] = {255, 255, 255, 255};
  int hi[4] = {0, 0, 0, 0};
  bool undefined[4] = {false, false, false, false};
  auto unpremultiply = [](int stored, int storedAlpha, double nudge) {
    const double quotient = (stored / 255.0) / (storedAlpha / 255.0) + nudge;
    return store8(quotient);
  };
  for (std::size_t k = 0; k < candidates.size(); ++k) {
    const Slots& v = candidates[k];
    for (double da : {-kStorageWindow, 0.0, kStorageWindow}) {
      const int storedAlpha = store8(v[3] + da);
      for (int c = 0; c < 3; ++c) {
        for (double dc : {-kStorageWindow, 0.0, kStorageWindow}) {
          const int stored = store8(v[c] + dc);
          if (stored < 0 || storedAlpha < 0) {
            undefined[c + 1] = true;
            continue;
          }
          // A texel with alpha 0 comes back all zero, its colour lost.
          const bool nominal = k == 0 && da == 0.0 && dc == 0.0;
          for (double dq : {-1e-5, 0.0, 1e-5}) {
            const int out = storedAlpha == 0 ? 0 : unpremultiply(stored, storedAlpha, dq);
            lo[c + 1] = std::min(lo[c + 1], out);
            hi[c + 1] = std::max(hi[c + 1], out);
            if (nominal && dq == 0.0) expected[c + 1] = static_cast<std::uint8_t>(out);
          }
        }
      }
      if (storedAlpha < 0) {
        undefined[0] = true;
        continue;
      }
      lo[0] = std::min(lo[0], storedAlpha);
      hi[0] = std::max(hi[0], storedAlpha);
      if (k == 0 && da == 0.0) expected[0] = static_cast<std::uint8_t>(storedAlpha);
    }
  }
  for (int c = 0; c < 4; ++c) {
    if (undefined[c]) {
      lo[c] = 0;
      hi[c] = 255;
      expected[c] = 0;
      frame.countUndefined();
    }
    low[c] = static_cast<std::uint8_t>(lo[c]);
    high[c] = static_cast<std::uint8_t>(hi[c]);
  }
}

ReferenceFrame ReferenceRender::render(const std::uint8_t* argb, int width, int height, std::size_t rowbytes) const {
  const Texture texture = upload(argb, width, height, rowbytes);
  ReferenceFrame frame(width, height);
  std::vector<Slots> candidates;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const std::uint8_t* pixel = argb + static_cast<std::size_t>(y) * rowbytes + x * 4;
      const Slots& sample = texture.at(x, y);
      candidates.clear();
      // The nominal answer first; the other side of a skin edge second.
      switch (SkinTest::decide(pixel[1], pixel[2], pixel[3], mRangePercent)) {
        case SkinDecision::Blurred: candidates.push_back(premultipliedOutput(blur(texture, x, y))); break;
        case SkinDecision::NotBlurred: candidates.push_back(premultipliedOutput(sample)); break;
        case SkinDecision::EitherWay:
          candidates.push_back(premultipliedOutput(sample));
          candidates.push_back(premultipliedOutput(blur(texture, x, y)));
          frame.countEitherWay();
          break;
      }
      std::uint8_t expected[4];
      std::uint8_t low[4];
      std::uint8_t high[4];
      storeAndReturn(candidates, expected, low, high, frame);
      frame.set(x, y, expected, low, high);
    }
  }
  return frame;
}

}  // namespace Quillmere::Velmira
