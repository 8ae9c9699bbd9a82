#include "Math/Quaternion.h"

#include <cmath>

#include "Math/Euler.h"
#include "Math/Float.h"
#include "Math/Mat4.h"

namespace Quillmere::Velmira {

namespace {

// Below this sine of the half angle between two rotations, slerp's division is
// unreliable and the plain average is close enough.
constexpr double kSlerpMinimumSine = 0.001;

}  // namespace

Quaternion::Quaternion() : x(0.0), y(0.0), z(0.0), w(1.0) {}

Quaternion::Quaternion(double qx, double qy, double qz) : x(qx), y(qy), z(qz), w(1.0) {}

Quaternion::Quaternion(double qx, double qy, double qz, double qw) : x(qx), y(qy), z(qz), w(qw) {}

Quaternion::Quaternion(const Vec3& axis, double angle) {
  const double s = std::sin(angle * 0.5);
  const double c = std::cos(angle * 0.5);
  set(axis.x * s, axis.y * s, axis.z * s, c);
}

Quaternion::Quaternion(const Vec3& from, const Vec3& to) : Quaternion() { setWithDirection(from, to); }

bool Quaternion::operator==(const Quaternion& q) const { return x == q.x && y == q.y && z == q.z && w == q.w; }

bool Quaternion::operator!=(const Quaternion& q) const { return !(*this == q); }

void Quaternion::set(double qx, double qy, double qz) {
  x = qx;
  y = qy;
  z = qz;
}

void Quaternion::set(double qx, double qy, double qz, double qw) {
  x = qx;
  y = qy;
  z = qz;
  w = qw;
}

void Quaternion::set(const Vec3& axis, double angle) {
  Vec3 unit(axis);
  unit.normalize();
  *this = Quaternion(unit, angle);
}

void Quaternion::setWithDirection(const Vec3& from, const Vec3& to) {
  double r = from.dot(to) + 1.0;
  Vec3 v;
  if (r < kTolerance) {
    // Opposite directions: their cross product has no direction, so any axis
    // perpendicular to from makes the half turn.
    r = 0.0;
    if (floatAbs(from.x) > floatAbs(from.z)) {
      v = Vec3(-from.y, from.x, 0.0);
    } else {
      v = Vec3(0.0, -from.z, from.y);
    }
  } else {
    v = from.cross(to);
  }
  set(v.x, v.y, v.z, r);
  normalize();
}

void Quaternion::setWithMat4(const Mat4& matrix) {
  const double* m = matrix.m;
  const double trace = m[0] + m[5] + m[10];
  // Working from the trace while it is positive, else from the largest diagonal
  // element, keeps s well away from zero.
  if (trace > 0) {
    const double s = 0.5 / std::sqrt(trace + 1.0);
    set((m[6] - m[9]) * s, (m[8] - m[2]) * s, (m[1] - m[4]) * s, 0.25 / s);
  } else if (m[0] > m[5] && m[0] > m[10]) {
    const double s = 2.0 * std::sqrt(1.0 + m[0] - m[5] - m[10]);
    set(0.25 * s, (m[4] + m[1]) / s, (m[8] + m[2]) / s, (m[6] - m[9]) / s);
  } else if (m[5] > m[10]) {
    const double s = 2.0 * std::sqrt(1.0 + m[5] - m[0] - m[10]);
    set((m[4] + m[1]) / s, 0.25 * s, (m[9] + m[6]) / s, (m[8] - m[2]) / s);
  } else {
    const double s = 2.0 * std::sqrt(1.0 + m[10] - m[0] - m[5]);
    set((m[8] + m[2]) / s, (m[9] + m[6]) / s, 0.25 * s, (m[1] - m[4]) / s);
  }
}

void Quaternion::setWithEuler(const Euler& e) {
  // The signs of the four sums for each order, in the terms
  //   x = (sx cy) cz ? (cx sy) sz,  y = (cx sy) cz ? (sx cy) sz,
  //   z = (cx cy) sz ? (sx sy) cz,  w = (cx cy) cz ? (sx sy) sz.
  struct Signs {
    float x, y, z, w;
  };
  Signs signs{};
  switch (e.mOrder) {
    case Euler::Unspecified:
      // No order is no rotation at all: a zero quaternion, so the mistake shows.
      set(0.0, 0.0, 0.0, 0.0);
      return;
    case Euler::XYZ: signs = {1, -1, 1, -1}; break;
    case Euler::YZX: signs = {1, 1, -1, -1}; break;
    case Euler::ZXY: signs = {-1, 1, 1, -1}; break;
    case Euler::XZY: signs = {-1, -1, 1, 1}; break;
    case Euler::YXZ: signs = {1, -1, -1, 1}; break;
    case Euler::ZYX: signs = {-1, 1, -1, 1}; break;
    default: return;
  }

  // The half-angle terms are worked in single precision: seven digits are all a
  // rotation keeps once it reaches the GPU as a float uniform.
  const float sx = static_cast<float>(std::sin(e.x * 0.5));
  const float cx = static_cast<float>(std::cos(e.x * 0.5));
  const float sy = static_cast<float>(std::sin(e.y * 0.5));
  const float cy = static_cast<float>(std::cos(e.y * 0.5));
  const float sz = static_cast<float>(std::sin(e.z * 0.5));
  const float cz = static_cast<float>(std::cos(e.z * 0.5));

  const float qx = (sx * cy) * cz + signs.x * ((cx * sy) * sz);
  const float qy = (cx * sy) * cz + signs.y * ((sx * cy) * sz);
  const float qz = (cx * cy) * sz + signs.z * ((sx * sy) * cz);
  const float qw = (cx * cy) * cz + signs.w * ((sx * sy) * sz);
  set(qx, qy, qz, qw);
}

void Quaternion::setWithArray(const double* a, int offset) {
  set(a[offset], a[offset + 1], a[offset + 2], a[offset + 3]);
}

void Quaternion::toArray(double* a, int offset) const {
  a[offset] = x;
  a[offset + 1] = y;
  a[offset + 2] = z;
  a[offset + 3] = w;
}

void Quaternion::normalize() {
  const double l = length();
  if (l == 0.0) {
    *this = Quaternion();
    return;
  }
  const double inverse = 1.0 / l;
  set(x * inverse, y * inverse, z * inverse, w * inverse);
}

void Quaternion::conjugate() { set(-x, -y, -z); }

void Quaternion::setInverse() {
  conjugate();
  normalize();
}

void Quaternion::multiply(const Quaternion& q) { multiplyQuaternions(*this, q); }

void Quaternion::premultiply(const Quaternion& q) { multiplyQuaternions(q, *this); }

void Quaternion::multiplyQuaternions(const Quaternion& a, const Quaternion& b) {
  // Read everything first: a or b may be this object.
  const double ax = a.x, ay = a.y, az = a.z, aw = a.w;
  const double bx = b.x, by = b.y, bz = b.z, bw = b.w;
  x = ay * bz + (bx * aw + bw * ax) - az * by;
  y = az * bx + (by * aw + bw * ay) - ax * bz;
  z = ax * by + (bz * aw + az * bw) - ay * bx;
  w = aw * bw - ax * bx - ay * by - az * bz;
}

Vec3 Quaternion::quaternionMulVec3(const Quaternion& q, const Vec3& v) {
  const Vec3 u(q.x, q.y, q.z);
  const Vec3 t = u.cross(v);
  const Vec3 r = u.cross(t);
  const Vec3 half = t * q.w + r;
  return (half + half) + v;
}

double Quaternion::dot(const Quaternion& q) const { return x * q.x + y * q.y + z * q.z + w * q.w; }

double Quaternion::lengthSq() const { return dot(*this); }

double Quaternion::length() const { return std::sqrt(lengthSq()); }

double Quaternion::getRotationAngle() const { return 2.0 * std::acos(w) * kRadToDeg; }

Vec3 Quaternion::getRotationAxis() const {
  const double s = 1.0 - w * w;
  if (s < kTolerance) {
    // Too close to no rotation for an axis to mean anything.
    return Vec3(0.0, 0.0, 1.0);
  }
  const double inverse = 1.0 / std::sqrt(s);
  return Vec3(x * inverse, y * inverse, z * inverse);
}

void Quaternion::slerp(const Quaternion& q, double t) {
  if (t == 1.0) {
    *this = q;
    return;
  }
  if (t == 0.0) {
    return;
  }
  double c = dot(q);
  Quaternion end(q);
  if (c < 0) {
    // q and -q are the same rotation; the one on this side takes the short arc.
    end = Quaternion(-q.x, -q.y, -q.z, -q.w);
    c = -c;
  }
  if (c >= 1.0) {
    return;
  }
  const double s = std::sqrt(1.0 - c * c);
  if (floatAbs(s) < kSlerpMinimumSine) {
    set((x + end.x) * 0.5, (y + end.y) * 0.5, (z + end.z) * 0.5, (w + end.w) * 0.5);
    return;
  }
  const double h = std::atan2(s, c);
  const double a = std::sin((1.0 - t) * h) / s;
  const double b = std::sin(t * h) / s;
  set(x * a + end.x * b, y * a + end.y * b, z * a + end.z * b, w * a + end.w * b);
}

Quaternion Quaternion::lerp(const Quaternion& a, const Quaternion& b, double t) {
  Quaternion result(a);
  if (a != b) {
    result.slerp(b, t);
  }
  return result;
}

}  // namespace Quillmere::Velmira
