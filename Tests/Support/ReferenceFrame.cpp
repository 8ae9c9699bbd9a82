#include "Support/ReferenceFrame.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace Quillmere::Velmira {

std::string FrameDeviation::describe() const {
  static const char* const kChannels[] = {"alpha", "red", "green", "blue"};
  std::ostringstream text;
  text << "max deviation " << maximum << " at (" << x << ", " << y << ") " << kChannels[channel] << ": got " << got
       << ", accepted " << low << ".." << high << "; mean " << mean << ", " << channelsOutside
       << " channels outside their band";
  return text.str();
}

ReferenceFrame::ReferenceFrame(int width, int height)
    : mWidth(width),
      mHeight(height),
      mExpected(static_cast<std::size_t>(width) * height * 4),
      mLow(mExpected.size()),
      mHigh(mExpected.size()) {}

void ReferenceFrame::set(int x, int y, const std::uint8_t expected[4], const std::uint8_t low[4],
                         const std::uint8_t high[4]) {
  const std::size_t at = (static_cast<std::size_t>(y) * mWidth + x) * 4;
  std::copy(expected, expected + 4, mExpected.begin() + static_cast<std::ptrdiff_t>(at));
  std::copy(low, low + 4, mLow.begin() + static_cast<std::ptrdiff_t>(at));
  std::copy(high, high + 4, mHigh.begin() + static_cast<std::ptrdiff_t>(at));
}

FrameDeviation ReferenceFrame::compare(const std::uint8_t* argb, std::size_t rowbytes) const {
  FrameDeviation deviation;
  double sum = 0.0;
  for (int y = 0; y < mHeight; ++y) {
    const std::uint8_t* row = argb + static_cast<std::size_t>(y) * rowbytes;
    for (int x = 0; x < mWidth; ++x) {
      for (int c = 0; c < 4; ++c) {
        const std::size_t at = (static_cast<std::size_t>(y) * mWidth + x) * 4 + c;
        const int got = row[x * 4 + c];
        const int outside = std::max({0, mLow[at] - got, got - mHigh[at]});
        sum += outside;
        if (outside > 0) ++deviation.channelsOutside;
        if (outside > deviation.maximum) {
          deviation.maximum = outside;
          deviation.x = x;
          deviation.y = y;
          deviation.channel = c;
          deviation.got = got;
          deviation.low = mLow[at];
          deviation.high = mHigh[at];
        }
      }
    }
  }
  const double channels = static_cast<double>(mWidth) * mHeight * 4;
  deviation.mean = channels > 0 ? sum / channels : 0.0;
  return deviation;
}

}  // namespace Quillmere::Velmira
