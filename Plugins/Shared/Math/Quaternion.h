#pragma once

#include "Math/Vec3.h"

namespace Quillmere::Velmira {

class Euler;
class Mat4;

// A rotation: vector part x, y, z first, scalar part w last. Angles in radians,
// except that getRotationAngle answers in degrees. In a x b, b acts first.
// Nothing keeps the value at unit length; only normalize, setInverse and
// setWithDirection normalise.
class Quaternion {
public:
  double x;
  double y;
  double z;
  double w;

  Quaternion();
  // w is 1.
  Quaternion(double qx, double qy, double qz);
  Quaternion(double qx, double qy, double qz, double qw);
  // The axis is used as it comes, not normalised.
  Quaternion(const Vec3& axis, double angle);
  Quaternion(const Vec3& from, const Vec3& to);

  // Exact: no tolerance.
  bool operator==(const Quaternion& q) const;
  bool operator!=(const Quaternion& q) const;

  // w stays.
  void set(double qx, double qy, double qz);
  void set(double qx, double qy, double qz, double qw);
  // Normalises the axis first, unlike the constructor.
  void set(const Vec3& axis, double angle);
  // The shortest rotation from one unit direction to another.
  void setWithDirection(const Vec3& from, const Vec3& to);
  // From the rotation in the upper 3 by 3 part, which must carry no scale.
  void setWithMat4(const Mat4& m);
  void setWithEuler(const Euler& e);
  void setWithArray(const double* a, int offset);
  void toArray(double* a, int offset) const;

  void normalize();
  void conjugate();
  void setInverse();
  // this = this x q.
  void multiply(const Quaternion& q);
  // this = q x this.
  void premultiply(const Quaternion& q);
  // this = a x b; a and b may be this object.
  void multiplyQuaternions(const Quaternion& a, const Quaternion& b);
  static Vec3 quaternionMulVec3(const Quaternion& q, const Vec3& v);

  double dot(const Quaternion& q) const;
  double lengthSq() const;
  double length() const;
  // In degrees, from 0 to 360.
  double getRotationAngle() const;
  Vec3 getRotationAxis() const;

  // Spherical interpolation from this object to q along the shorter arc.
  void slerp(const Quaternion& q, double t);
  // Spherical, in spite of the name.
  static Quaternion lerp(const Quaternion& a, const Quaternion& b, double t);
};

}  // namespace Quillmere::Velmira
