#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Core/ArgbFrame.h"
#include "Support/FrameDeviation.h"

namespace Quillmere::Velmira {

// What the host should get back for one frame: the expected ARGB bytes, and for every channel the band of values
// that a GPU may give where the maths sits on a rounding edge (8-bit storage between passes, a skin decision right
// at the range, the division by alpha). Pixels are packed, alpha, red, green, blue.
class ReferenceFrame {
public:
  ReferenceFrame(int width, int height);

  int width() const { return mWidth; }
  int height() const { return mHeight; }
  const std::vector<std::uint8_t>& expected() const { return mExpected; }
  const std::vector<std::uint8_t>& low() const { return mLow; }
  const std::vector<std::uint8_t>& high() const { return mHigh; }
  long eitherWayPixels() const { return mEitherWayPixels; }
  long undefinedChannels() const { return mUndefinedChannels; }

  void set(int x, int y, const std::uint8_t expected[4], const std::uint8_t low[4], const std::uint8_t high[4]);
  void countEitherWay() { ++mEitherWayPixels; }
  void countUndefined() { ++mUndefinedChannels; }

  // A rendered frame in host layout (rows rowbytes apart) against the bands.
  FrameDeviation compare(const std::uint8_t* argb, std::size_t rowbytes) const;
  FrameDeviation compare(const ArgbFrame& frame) const { return compare(frame.row(0), frame.rowBytes()); }

private:
  int mWidth;
  int mHeight;
  std::vector<std::uint8_t> mExpected;
  std::vector<std::uint8_t> mLow;
  std::vector<std::uint8_t> mHigh;
  long mEitherWayPixels = 0;
  long mUndefinedChannels = 0;
};

}  // namespace Quillmere::Velmira
