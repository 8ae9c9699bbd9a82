#include "Math/Vec2.h"

#include <cmath>

#include "Math/Float.h"

namespace Quillmere::Velmira {

void Vec2::add(const Vec2& o) {
  x += o.x;
  y += o.y;
}

void Vec2::add(double v) {
  x += v;
  y += v;
}

void Vec2::sub(const Vec2& o) {
  x -= o.x;
  y -= o.y;
}

void Vec2::sub(double v) {
  x -= v;
  y -= v;
}

void Vec2::mult(const Vec2& o) {
  x *= o.x;
  y *= o.y;
}

void Vec2::mult(double v) {
  x *= v;
  y *= v;
}

void Vec2::divide(const Vec2& o) {
  x /= o.x;
  y /= o.y;
}

void Vec2::divide(double v) {
  x /= v;
  y /= v;
}

void Vec2::operator+=(const Vec2& o) { add(o); }
void Vec2::operator+=(double v) { add(v); }
void Vec2::operator-=(const Vec2& o) { sub(o); }
void Vec2::operator-=(double v) { sub(v); }
void Vec2::operator*=(const Vec2& o) { mult(o); }
void Vec2::operator*=(double v) { mult(v); }
void Vec2::operator/=(const Vec2& o) { divide(o); }
void Vec2::operator/=(double v) { divide(v); }

Vec2 Vec2::operator+(const Vec2& o) const { return Vec2(x + o.x, y + o.y); }
Vec2 Vec2::operator+(double v) const { return Vec2(x + v, y + v); }
Vec2 Vec2::operator-(const Vec2& o) const { return Vec2(x - o.x, y - o.y); }
Vec2 Vec2::operator-(double v) const { return Vec2(x - v, y - v); }
Vec2 Vec2::operator*(const Vec2& o) const { return Vec2(x * o.x, y * o.y); }
Vec2 Vec2::operator*(double v) const { return Vec2(x * v, y * v); }
Vec2 Vec2::operator/(const Vec2& o) const { return Vec2(x / o.x, y / o.y); }
Vec2 Vec2::operator/(double v) const { return Vec2(x / v, y / v); }

bool Vec2::operator==(const Vec2& o) const { return floatEqual(x, o.x) && floatEqual(y, o.y); }

bool Vec2::operator!=(const Vec2& o) const { return !(*this == o); }

bool Vec2::equal(const Vec2& other, double tolerance) const {
  return floatEqual(x, other.x, tolerance) && floatEqual(y, other.y, tolerance);
}

bool Vec2::isZero() const { return x == 0.0 && y == 0.0; }

void Vec2::set(double newX, double newY) {
  x = newX;
  y = newY;
}

void Vec2::set(const Vec2& o) {
  x = o.x;
  y = o.y;
}

void Vec2::setZero() {
  x = 0.0;
  y = 0.0;
}

void Vec2::fromArray(double* array, int offset) {
  if (array == nullptr) {
    return;
  }
  x = array[offset];
  y = array[offset + 1];
}

Vec2 Vec2::modulo(const Vec2& other) const { return Vec2(std::fmod(x, other.x), std::fmod(y, other.y)); }

Vec2 Vec2::operator%(const Vec2& other) const { return modulo(other); }

Vec2 Vec2::negate() const { return Vec2(-x, -y); }

double Vec2::dot(const Vec2& o) const { return x * o.x + y * o.y; }

Vec2 Vec2::dotProduction(const Vec2& o) const { return *this * o; }

double Vec2::cross(const Vec2& o) const { return x * o.y - y * o.x; }

double Vec2::cross(double a, double b, double c, double d) { return a * d - b * c; }

double Vec2::length() const { return std::sqrt(lengthSquare()); }

double Vec2::lengthSquare() const { return x * x + y * y; }

double Vec2::distance(const Vec2& o) const { return (*this - o).length(); }

double Vec2::distanceSquared(const Vec2& a, const Vec2& b) { return (a - b).lengthSquare(); }

Vec2 Vec2::normal() const { return Vec2(-y, x); }

Vec2 Vec2::perpindicularLeft() const { return Vec2(-y, x); }

Vec2 Vec2::perpindicularRight() const { return Vec2(y, -x); }

void Vec2::prepen() { set(-y, x); }

double Vec2::slope() const { return y / x; }

Vec2 Vec2::lerp(Vec2 a, Vec2 b, double t) { return a * (1.0 - t) + b * t; }

void Vec2::getMin(const Vec2& o) {
  x = o.x < x ? o.x : x;
  y = o.y < y ? o.y : y;
}

void Vec2::getMax(const Vec2& o) {
  x = o.x > x ? o.x : x;
  y = o.y > y ? o.y : y;
}

void Vec2::clamp(const Vec2& low, const Vec2& high) {
  x = floatClamp(x, low.x, high.x);
  y = floatClamp(y, low.y, high.y);
}

bool Vec2::isCollinear(const Vec2& o) const {
  // Scaled by both lengths, so the test does not depend on the units.
  return std::fabs(cross(o)) <= 1e-12 * std::sqrt(lengthSquare() * o.lengthSquare());
}

bool Vec2::isOrthogonal(const Vec2& o) const {
  return std::fabs(dot(o)) <= 1e-12 * std::sqrt(lengthSquare() * o.lengthSquare());
}

bool Vec2::negligible() const { return floatNegligible(x) && floatNegligible(y); }

bool Vec2::negligible(double v) { return floatNegligible(v); }

bool Vec2::nonNegligible() const { return !negligible(); }

bool Vec2::isDuplicate(const Vec2& a, const Vec2& b) {
  // A quarter of a unit: points closer than that are one point on screen.
  return std::fabs(b.x - a.x) < 0.25 && std::fabs(b.y - a.y) < 0.25;
}

bool Vec2::equalWithTolerance(double x1, double y1, double x2, double y2, double tolerance) {
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  return dx * dx + dy * dy < tolerance * tolerance;
}

bool Vec2::equalWithTolerance(Vec2 a, Vec2 b, double tolerance) {
  return equalWithTolerance(a.x, a.y, b.x, b.y, tolerance);
}

namespace {

Vec2 rotated(const Vec2& v, double degrees) {
  const double radians = degrees * kDegToRad;
  const double c = std::cos(radians);
  const double s = std::sin(radians);
  return Vec2(v.x * c - v.y * s, v.x * s + v.y * c);
}

}  // namespace

// An angle of exactly 0 skips the trigonometry, so the bits stay unchanged.
void Vec2::rotate(double degrees) {
  if (degrees == 0.0) {
    return;
  }
  set(rotated(*this, degrees));
}

Vec2 Vec2::rotateRound(double degrees, const Vec2& center) const {
  if (degrees == 0.0) {
    return *this;
  }
  return center + rotated(*this - center, degrees);
}

void Vec2::rotateAround(double degrees, const Vec2& center) { set(rotateRound(degrees, center)); }

double Vec2::getAngle() const {
  if (isZero()) {
    return 0.0;
  }
  return std::atan2(y, x) * kRadToDeg;
}

void Vec2::setAngle(double degrees) {
  const double len = length();
  const double radians = degrees * kDegToRad;
  set(len * std::cos(radians), len * std::sin(radians));
}

double Vec2::angleBetween(const Vec2& o) const { return std::atan2(cross(o), dot(o)) * kRadToDeg; }

void Vec2::setLength(double l) {
  if (isZero()) {
    set(l, 0.0);
    return;
  }
  mult(l / length());
}

void Vec2::normalize() {
  if (isZero()) {
    set(1.0, 0.0);
    return;
  }
  mult(1.0 / length());
}

void Vec2::normalize(double* px, double* py) {
  const double len = std::sqrt(*px * *px + *py * *py);
  if (len > 1e-12) {
    *px /= len;
    *py /= len;
  }
}

Vec2 Vec2::project(const Vec2& onto) const {
  if (onto.isZero()) {
    return Vec2();
  }
  return onto * (dot(onto) / onto.dot(onto));
}

namespace {

// The foot of the perpendicular from p on the unbounded line through a and b.
Vec2 footOnLine(const Vec2& p, const Vec2& a, const Vec2& b) {
  const Vec2 d = b - a;
  const double t = (p - a).dot(d) / d.dot(d);
  return a + d * t;
}

}  // namespace

double Vec2::distanceToLine(const Vec2& a, const Vec2& b) const { return distance(footOnLine(*this, a, b)); }

double Vec2::lineProjectionLength(const Vec2& a, const Vec2& b) const { return a.distance(footOnLine(*this, a, b)); }

int Vec2::getQuadrant() const {
  if (x >= 0.0) {
    return y >= 0.0 ? 1 : 4;
  }
  return y >= 0.0 ? 2 : 3;
}

bool Vec2::oppositeQuadrant(const Vec2& a, const Vec2& b) {
  const int ax = floatSign(a.x);
  const int bx = floatSign(b.x);
  const int ay = floatSign(a.y);
  const int by = floatSign(b.y);
  if (ax == bx && ay == by) {
    return false;
  }
  if (ax != bx && ay != by) {
    return true;
  }
  // One axis differs; the other must sit on zero for both points.
  if (ax != bx) {
    return ay == 0;
  }
  return ax == 0;
}

void Vec2::followSigns(const Vec2& other) {
  if ((x > 0.0) != (other.x > 0.0)) {
    x = -x;
  }
  if ((y > 0.0) != (other.y > 0.0)) {
    y = -y;
  }
}

double Vec2::signedArea(const Vec2& a, const Vec2& b, const Vec2& c) {
  return (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
}

bool Vec2::intersecting(const Vec2& a, const Vec2& b, const Vec2& c, const Vec2& d) {
  return (signedArea(a, b, c) > 0.0) != (signedArea(a, b, d) > 0.0);
}

int Vec2::intersect(const Vec2& p1, const Vec2& p2, const Vec2& p3, const Vec2& p4, Vec2& point, double* u1,
                    double* u2) {
  const double denominator = (p2.x - p1.x) * (p4.y - p3.y) - (p2.y - p1.y) * (p4.x - p3.x);
  const double numerator1 = (p1.y - p3.y) * (p4.x - p3.x) - (p1.x - p3.x) * (p4.y - p3.y);
  const double numerator2 = (p1.y - p3.y) * (p2.x - p1.x) - (p1.x - p3.x) * (p2.y - p1.y);

  if (floatNegligible(denominator) && floatNegligible(numerator1) && floatNegligible(numerator2)) {
    point = (p1 + p2) * 0.5;
    return 2;
  }
  if (floatNegligible(denominator)) {
    point.setZero();
    return 0;
  }

  const double first = numerator1 / denominator;
  const double second = numerator2 / denominator;
  if (u1 != nullptr) {
    *u1 = first;
  }
  if (u2 != nullptr) {
    *u2 = second;
  }
  point = p1 + (p2 - p1) * first;

  const bool onFirst = 0.0 <= first && first <= 1.0;
  const bool onSecond = 0.0 <= second && second <= 1.0;
  if (onFirst && onSecond) {
    return 1;
  }
  if (onFirst) {
    return 4;
  }
  return onSecond ? 3 : 5;
}

bool Vec2::anchorOutwardD(Vec2& vector, const Vec2& anchor, const Vec2& reference) {
  return vector.dot(anchor - reference) > 0.0;
}

bool Vec2::anchorOutward(Vec2& vector, const Vec2& anchor, const Vec2& reference, bool inward) {
  const bool positive = anchorOutwardD(vector, anchor, reference);
  if (positive != inward) {
    return false;
  }
  vector = vector.negate();
  return true;
}

bool Vec2::anchorInward(Vec2& vector, const Vec2& anchor, const Vec2& reference) {
  return anchorOutward(vector, anchor, reference, true);
}

Vec2 Vec2::centerToTopLefetPoint(const Vec2& point, const Vec2& size) {
  return Vec2(point.x + size.x * 0.5, size.y * 0.5 - point.y);
}

Vec2 Vec2::topLeftToCenterPoint(const Vec2& point, const Vec2& size) {
  return Vec2(point.x - size.x * 0.5, size.y * 0.5 - point.y);
}

}  // namespace Quillmere::Velmira
