#pragma once

#include <string>

namespace Quillmere::Velmira {

// RGBA on the scale 0 to 1, never clamped. A colour with any channel below 0
// is nil: it stands for "no colour".
class Color {
public:
  double mRed;
  double mGreen;
  double mBlue;
  double mAlpha;

  Color() : mRed(1.0), mGreen(1.0), mBlue(1.0), mAlpha(1.0) {}
  Color(double r, double g, double b, double a) : mRed(r), mGreen(g), mBlue(b), mAlpha(a) {}
  // Explicit: a text or an integer is parsed, which should never happen
  // behind the reader's back.
  explicit Color(const std::string& text);
  explicit Color(unsigned int packed);
  Color(const Color&) = default;
  Color& operator=(const Color&) = default;

  bool equal(const Color& other) const;
  bool operator==(const Color& other) const;
  bool operator!=(const Color& other) const;
  bool isNil() const;
  void setNil();

  double r() const { return mRed; }
  double g() const { return mGreen; }
  double b() const { return mBlue; }
  double a() const { return mAlpha; }
  void set(double r, double g, double b, double a);

  Color operator+(const Color& o) const;
  Color operator-(const Color& o) const;
  Color operator*(const Color& o) const;
  Color operator*(const double& factor) const;
  static Color lerp(const Color& a, const Color& b, double t);

  std::string toHexString() const;
};

}  // namespace Quillmere::Velmira
