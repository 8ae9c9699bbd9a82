#include "Math/Color.h"

#include <cstdint>
#include <cstdio>

#include "Math/Float.h"

namespace Quillmere::Velmira {

namespace {

// The channel is stored as the single-precision quotient, widened: colours
// saved by earlier versions compare equal only with exactly these values.
double channel(unsigned long long value, float divisor) {
  return static_cast<double>(static_cast<float>(value) / divisor);
}

}  // namespace

Color::Color(const std::string& text) : Color() {
  if (text.empty() || text.find('#') != 0) {
    return;
  }
  const std::string digits = text.substr(1);
  // Throws std::invalid_argument or std::out_of_range on purpose: a text that
  // claims to be a colour but is not one is the caller's error to see.
  const unsigned long long v = std::stoull(digits, nullptr, 16);
  // The layout follows the length of the text, not the number of digits read.
  switch (digits.size()) {
    case 3: set(channel((v >> 8) & 0xF, 15.0f), channel((v >> 4) & 0xF, 15.0f), channel(v & 0xF, 15.0f), 1.0); break;
    case 4:
      set(channel((v >> 8) & 0xF, 15.0f), channel((v >> 4) & 0xF, 15.0f), channel(v & 0xF, 15.0f),
          channel((v >> 12) & 0xF, 15.0f));
      break;
    case 6:
      set(channel((v >> 16) & 0xFF, 255.0f), channel((v >> 8) & 0xFF, 255.0f), channel(v & 0xFF, 255.0f), 1.0);
      break;
    case 8:
      set(channel((v >> 16) & 0xFF, 255.0f), channel((v >> 8) & 0xFF, 255.0f), channel(v & 0xFF, 255.0f),
          channel((v >> 24) & 0xFF, 255.0f));
      break;
    default: break;
  }
}

Color::Color(unsigned int packed)
    : mRed(channel((packed >> 16) & 0xFFu, 255.0f)),
      mGreen(channel((packed >> 8) & 0xFFu, 255.0f)),
      mBlue(channel(packed & 0xFFu, 255.0f)),
      mAlpha(channel((packed >> 24) & 0xFFu, 255.0f)) {}

// Nil colours are all the same "no colour", whatever their channels hold.
bool Color::equal(const Color& other) const {
  if (isNil() && other.isNil()) {
    return true;
  }
  return floatEqual(mRed, other.mRed) && floatEqual(mGreen, other.mGreen) && floatEqual(mBlue, other.mBlue) &&
         floatEqual(mAlpha, other.mAlpha);
}

bool Color::operator==(const Color& other) const { return equal(other); }

bool Color::operator!=(const Color& other) const { return !equal(other); }

bool Color::isNil() const { return mRed < 0.0 || mGreen < 0.0 || mBlue < 0.0 || mAlpha < 0.0; }

void Color::setNil() { set(-1.0, -1.0, -1.0, -1.0); }

void Color::set(double r, double g, double b, double a) {
  mRed = r;
  mGreen = g;
  mBlue = b;
  mAlpha = a;
}

Color Color::operator+(const Color& o) const {
  return Color(mRed + o.mRed, mGreen + o.mGreen, mBlue + o.mBlue, mAlpha + o.mAlpha);
}

Color Color::operator-(const Color& o) const {
  return Color(mRed - o.mRed, mGreen - o.mGreen, mBlue - o.mBlue, mAlpha - o.mAlpha);
}

Color Color::operator*(const Color& o) const {
  return Color(mRed * o.mRed, mGreen * o.mGreen, mBlue * o.mBlue, mAlpha * o.mAlpha);
}

Color Color::operator*(const double& factor) const {
  return Color(mRed * factor, mGreen * factor, mBlue * factor, mAlpha * factor);
}

// t is clamped, unlike the vector lerps; the weight of a is rounded to single
// precision, as stored blends were made.
Color Color::lerp(const Color& a, const Color& b, double t) {
  if (t < 0.0) {
    t = 0.0;
  } else if (t > 1.0) {
    t = 1.0;
  }
  const double s = static_cast<double>(static_cast<float>(1.0 - t));
  return Color(a.mRed * s + b.mRed * t, a.mGreen * s + b.mGreen * t, a.mBlue * s + b.mBlue * t,
               a.mAlpha * s + b.mAlpha * t);
}

namespace {

// Truncated towards zero, not rounded: 0.5 gives 127. A channel off the scale
// prints as the 32-bit integer it truncates to, in two's complement for a
// negative one (nil's -1 gives FFFFFF01); values beyond the 32-bit range
// saturate and NaN prints 0, so the conversion is always defined.
std::uint32_t toByte(double value) {
  const double scaled = value * 255.0;
  if (!(scaled == scaled)) {
    return 0;
  }
  if (scaled >= 2147483647.0) {
    return 0x7FFFFFFFu;
  }
  if (scaled <= -2147483648.0) {
    return 0x80000000u;
  }
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(scaled));
}

// Eight digits at most, so the buffer always fits.
std::string hexDigits(std::uint32_t value) {
  char buffer[12];
  std::snprintf(buffer, sizeof buffer, "%X", static_cast<unsigned int>(value));
  return buffer;
}

}  // namespace

// No zero padding: a channel below 16 prints one digit, so not every text
// parses back to the colour it came from.
std::string Color::toHexString() const {
  std::string text = "#";
  if (mAlpha != 1.0) {
    text += hexDigits(toByte(mAlpha));
  }
  text += hexDigits(toByte(mRed));
  text += hexDigits(toByte(mGreen));
  text += hexDigits(toByte(mBlue));
  return text;
}

}  // namespace Quillmere::Velmira
