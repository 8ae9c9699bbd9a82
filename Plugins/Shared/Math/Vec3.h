#pragma once

#include "Math/Vec2.h"

namespace Quillmere::Velmira {

class Mat4;
class Quaternion;

// 3D vector or point. Operations that change the object, compound operators
// included, return nothing; angleBetween is in radians, unlike Vec2's.
class Vec3 {
public:
  double x;
  double y;
  double z;

  Vec3() : x(0.0), y(0.0), z(0.0) {}
  // Explicit so that a stray double never becomes a vector in an expression.
  explicit Vec3(double v) : x(v), y(v), z(v) {}
  Vec3(Vec2 xy, double newZ) : x(xy.x), y(xy.y), z(newZ) {}
  Vec3(double newX, double newY, double newZ) : x(newX), y(newY), z(newZ) {}
  Vec3(const Vec3&) = default;
  Vec3& operator=(const Vec3&) = default;

  void add(const Vec3& o);
  void add(double v);
  void sub(const Vec3& o);
  void sub(double v);
  void mult(const Vec3& o);
  void mult(double v);
  void divide(const Vec3& o);
  void divide(double v);
  void operator+=(const Vec3& o);
  void operator+=(double v);
  void operator-=(const Vec3& o);
  void operator-=(double v);
  void operator*=(const Vec3& o);
  void operator*=(double v);
  void operator/=(const Vec3& o);
  void operator/=(double v);
  Vec3 operator+(const Vec3& o) const;
  Vec3 operator+(double v) const;
  Vec3 operator-(const Vec3& o) const;
  Vec3 operator-(double v) const;
  Vec3 operator*(const Vec3& o) const;
  Vec3 operator*(double v) const;
  Vec3 operator/(const Vec3& o) const;
  Vec3 operator/(double v) const;
  void setNegate();
  Vec3 negate() const;
  void setInvert();
  Vec3 invert() const;

  bool operator==(const Vec3& o) const;
  bool operator!=(const Vec3& o) const;
  bool equal(const Vec3& other, double tolerance) const;
  bool isZero() const;
  int largestAbsComponent() const;

  void set(double newX, double newY, double newZ);
  void set(Vec2 xy, double newZ);
  void set(int index, double value);
  void setZero();

  double dot(const Vec3& o) const;
  Vec3 cross(const Vec3& o) const;
  double length() const;
  double lengthSquare() const;
  double distance(const Vec3& o) const;
  double distanceSquare(const Vec3& o) const;
  static Vec3 lerp(Vec3 a, Vec3 b, double t);
  void getMin(Vec3 o);
  void getMax(Vec3 o);
  void clamp(Vec3 low, Vec3 high);
  Vec3 floor() const;

  void fromArray(const double* array, int offset);
  void toArray(double* array, int offset) const;
  Vec2 getVec2() const;
  void setFromMatrixPosition(const Mat4& m);
  void setFromMatrixColumn(const Mat4& m, int index);

  void setLength(double l);
  void normalize();
  void ortho(const Vec3& v);
  double angleBetween(const Vec3& o) const;
  Vec3 rotationalDifference(const Vec3& o) const;

  void applyMatrix4(const Mat4& m);
  void applyProjection(const Mat4& m);
  void transformDirection(const Mat4& m);
  void applyQuaternion(const Quaternion& q);
};

// a - b wrapped once into [-period/2, period/2]; exactly half a period stays.
double cyclicDifference(double a, double b, double period);

}  // namespace Quillmere::Velmira
