#pragma once

#include "Math/Vec3.h"

namespace Quillmere::Velmira {

// 4D vector; w is an ordinary component everywhere. Equality is by Euclidean
// distance, not per component, and lerp is spherical.
class Vec4 {
public:
  double x;
  double y;
  double z;
  double w;

  Vec4() : x(0.0), y(0.0), z(0.0), w(0.0) {}
  Vec4(double newX, double newY, double newZ, double newW) : x(newX), y(newY), z(newZ), w(newW) {}
  Vec4(const Vec3& v, double newW) : x(v.x), y(v.y), z(v.z), w(newW) {}
  Vec4(const Vec4&) = default;
  Vec4& operator=(const Vec4&) = default;

  void add(const Vec4& o);
  void add(double v);
  void sub(const Vec4& o);
  void sub(double v);
  void mult(const Vec4& o);
  void mult(double v);
  void divide(const Vec4& o);
  void divide(double v);
  void operator+=(const Vec4& o);
  void operator+=(double v);
  void operator-=(const Vec4& o);
  void operator-=(double v);
  void operator*=(const Vec4& o);
  void operator*=(double v);
  void operator/=(const Vec4& o);
  void operator/=(double v);
  Vec4 operator+(const Vec4& o) const;
  Vec4 operator+(double v) const;
  Vec4 operator-(const Vec4& o) const;
  Vec4 operator-(double v) const;
  Vec4 operator*(const Vec4& o) const;
  Vec4 operator*(double v) const;
  Vec4 operator/(const Vec4& o) const;
  Vec4 operator/(double v) const;

  bool operator==(const Vec4& o) const;
  bool operator!=(const Vec4& o) const;
  bool equal(const Vec4& o, double tolerance) const;
  bool isZero() const;

  void set(double newX, double newY, double newZ, double newW);
  void setZero();
  Vec3 getVec3() const;
  Vec4 negate() const;
  Vec4 invert() const;

  double distance(const Vec4& o) const;
  double length() const;
  double lengthSquare() const;
  double lengthManhattan() const;
  double dot(const Vec4& o) const;
  void setLength(double l);
  void normalize();
  static Vec4 lerp(Vec4 a, Vec4 b, double t);
};

}  // namespace Quillmere::Velmira
