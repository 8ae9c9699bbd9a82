#include "Math/Vec4.h"

#include <cmath>

namespace Quillmere::Velmira {

void Vec4::add(const Vec4& o) { set(x + o.x, y + o.y, z + o.z, w + o.w); }
void Vec4::add(double v) { set(x + v, y + v, z + v, w + v); }
void Vec4::sub(const Vec4& o) { set(x - o.x, y - o.y, z - o.z, w - o.w); }
void Vec4::sub(double v) { set(x - v, y - v, z - v, w - v); }
void Vec4::mult(const Vec4& o) { set(x * o.x, y * o.y, z * o.z, w * o.w); }
void Vec4::mult(double v) { set(x * v, y * v, z * v, w * v); }
void Vec4::divide(const Vec4& o) { set(x / o.x, y / o.y, z / o.z, w / o.w); }
void Vec4::divide(double v) { set(x / v, y / v, z / v, w / v); }

void Vec4::operator+=(const Vec4& o) { add(o); }
void Vec4::operator+=(double v) { add(v); }
void Vec4::operator-=(const Vec4& o) { sub(o); }
void Vec4::operator-=(double v) { sub(v); }
void Vec4::operator*=(const Vec4& o) { mult(o); }
void Vec4::operator*=(double v) { mult(v); }
void Vec4::operator/=(const Vec4& o) { divide(o); }
void Vec4::operator/=(double v) { divide(v); }

Vec4 Vec4::operator+(const Vec4& o) const { return Vec4(x + o.x, y + o.y, z + o.z, w + o.w); }
Vec4 Vec4::operator+(double v) const { return Vec4(x + v, y + v, z + v, w + v); }
Vec4 Vec4::operator-(const Vec4& o) const { return Vec4(x - o.x, y - o.y, z - o.z, w - o.w); }
Vec4 Vec4::operator-(double v) const { return Vec4(x - v, y - v, z - v, w - v); }
Vec4 Vec4::operator*(const Vec4& o) const { return Vec4(x * o.x, y * o.y, z * o.z, w * o.w); }
Vec4 Vec4::operator*(double v) const { return Vec4(x * v, y * v, z * v, w * v); }
Vec4 Vec4::operator/(const Vec4& o) const { return Vec4(x / o.x, y / o.y, z / o.z, w / o.w); }
Vec4 Vec4::operator/(double v) const { return Vec4(x / v, y / v, z / v, w / v); }

// By Euclidean distance: closer than kTolerance (1e-12), squared to 1e-24.
bool Vec4::operator==(const Vec4& o) const { return (*this - o).lengthSquare() < 1e-24; }

// Written out rather than negating ==, so that the NaN answer (true) is plain.
bool Vec4::operator!=(const Vec4& o) const { return !((*this - o).lengthSquare() < 1e-24); }

bool Vec4::equal(const Vec4& o, double tolerance) const { return (*this - o).lengthSquare() < tolerance * tolerance; }

bool Vec4::isZero() const { return x == 0.0 && y == 0.0 && z == 0.0 && w == 0.0; }

void Vec4::set(double newX, double newY, double newZ, double newW) {
  x = newX;
  y = newY;
  z = newZ;
  w = newW;
}

void Vec4::setZero() { set(0.0, 0.0, 0.0, 0.0); }

Vec3 Vec4::getVec3() const { return Vec3(x, y, z); }

Vec4 Vec4::negate() const { return Vec4(-x, -y, -z, -w); }

Vec4 Vec4::invert() const { return Vec4(1.0 / x, 1.0 / y, 1.0 / z, 1.0 / w); }

double Vec4::distance(const Vec4& o) const { return (*this - o).length(); }

double Vec4::length() const { return std::sqrt(lengthSquare()); }

double Vec4::lengthSquare() const { return dot(*this); }

double Vec4::lengthManhattan() const { return std::fabs(x) + std::fabs(y) + std::fabs(z) + std::fabs(w); }

double Vec4::dot(const Vec4& o) const { return x * o.x + y * o.y + z * o.z + w * o.w; }

void Vec4::setLength(double l) {
  if (isZero()) {
    set(l, 0.0, 0.0, 0.0);
    return;
  }
  mult(l / length());
}

void Vec4::normalize() { setLength(1.0); }

namespace {

// 0.01 as a float: the threshold was tuned in single precision.
constexpr double kNearlyParallel = static_cast<double>(0.01f);

struct LerpWeights {
  double a;
  double b;
};

// The trigonometry is single precision on purpose: the interpolation is
// defined by this arithmetic, and a double version would differ in digits
// that callers compare.
LerpWeights sphericalWeights(double c, double t) {
  if (1.0 - c < kNearlyParallel) {
    return {1.0 - t, t};
  }
  const float angle = std::acos(static_cast<float>(c));
  const float inverse = 1.0f / std::sin(angle);
  const double wa = static_cast<double>(std::sin(static_cast<float>((1.0 - t) * angle))) * inverse;
  const double wb = static_cast<double>(std::sin(static_cast<float>(angle * t))) * inverse;
  return {wa, wb};
}

}  // namespace

// Spherical: a and b are directions, the result is a unit vector except at
// exactly t 0 or 1, which return the ends unchanged.
Vec4 Vec4::lerp(Vec4 a, Vec4 b, double t) {
  if (t == 0.0) {
    return a;
  }
  if (t == 1.0) {
    return b;
  }
  const double c = a.dot(b) / (a.length() * b.length());
  if (c < 0.0) {
    return lerp(a, b.negate(), t);
  }
  const LerpWeights weights = sphericalWeights(c, t);
  Vec4 r = a * weights.a + b * weights.b;
  r.setLength(1.0);
  return r;
}

}  // namespace Quillmere::Velmira
