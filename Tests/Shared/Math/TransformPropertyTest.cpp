#include <cmath>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "Math/Affine.h"
#include "Math/Euler.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"

namespace Quillmere::Velmira {
namespace {

const double kPi = 3.141592653589793;

double uniform(double low, double high) {
  const int steps = 1 << 30;
  return low + (high - low) * (*rc::gen::inRange(0, steps + 1)) / steps;
}

Vec3 anyVec3(double limit) { return Vec3(uniform(-limit, limit), uniform(-limit, limit), uniform(-limit, limit)); }

Quaternion anyRotation() {
  Quaternion q;
  q.set(anyVec3(1.0), uniform(-kPi, kPi));
  return q;
}

// Largest element-wise difference, for property checks that report one number.
double maxDifference(const Mat4& a, const Mat4& b) {
  double worst = 0.0;
  for (int i = 0; i < 16; ++i) {
    worst = std::fmax(worst, std::fabs(a.m[i] - b.m[i]));
  }
  return worst;
}

// The angle between the other two in the order's product.
double& middleAngle(Euler& e) {
  const bool middleIsY = e.mOrder == Euler::XYZ || e.mOrder == Euler::ZYX;
  const bool middleIsZ = e.mOrder == Euler::YZX || e.mOrder == Euler::XZY;
  return middleIsY ? e.y : middleIsZ ? e.z : e.x;
}

// Angles for any of the six orders, the middle one at least margin away from a quarter turn.
Euler anyAngles(double margin) {
  Euler e(uniform(-kPi, kPi), uniform(-kPi, kPi), uniform(-kPi, kPi),
          static_cast<Euler::RotationOrder>(*rc::gen::inRange(1, 7)));
  middleAngle(e) = uniform(-kPi / 2 + margin, kPi / 2 - margin);
  return e;
}

// The product of single-axis matrices in the order of the letters, independent of
// the extraction table and of the quaternion formula.
Mat4 productInOrder(const Euler& e) {
  const std::string letters[] = {"", "XYZ", "YZX", "ZXY", "XZY", "YXZ", "ZYX"};
  Mat4 m(true);
  for (char axis : letters[e.mOrder]) {
    axis == 'X' ? m.rotateX(e.x) : axis == 'Y' ? m.rotateY(e.y) : m.rotateZ(e.z);
  }
  return m;
}

double angleDifference(const Euler& a, const Euler& b) {
  return std::fmax(std::fabs(a.x - b.x), std::fmax(std::fabs(a.y - b.y), std::fabs(a.z - b.z)));
}

// Diagonally dominant entries keep the condition number below about 10, so the
// product with the inverse stays within some hundreds of ulps of the identity.
RC_GTEST_PROP(Mat4Property, ProductWithInverseIsTheIdentity, ()) {
  Mat4 m(false), inverse(false);
  for (int i = 0; i < 16; ++i) {
    m.m[i] = uniform(-1, 1) + (i % 5 == 0 ? 5.0 : 0.0);
  }
  RC_ASSERT(m.getInverse(inverse));
  RC_ASSERT(maxDifference(m * inverse, Mat4(true)) <= 1e-13);
  RC_ASSERT(maxDifference(inverse * m, Mat4(true)) <= 1e-13);
}

// Positions and anchors up to 100, scales up to 10: 1e-10 is a few hundred ulps of
// the largest values that decompose takes square roots of and divides by.
RC_GTEST_PROP(Mat4Property, DecomposeReturnsWhatComposeTookIn, ()) {
  const Vec3 position = anyVec3(100), anchor = anyVec3(100);
  const Vec3 scale(uniform(0.1, 10), uniform(0.1, 10), uniform(0.1, 10));
  const Quaternion rotation = anyRotation();
  Vec3 p, s;
  Quaternion q;
  Mat4 m(true);
  m.compose(position, rotation, scale);
  m.decompose(p, q, s);
  RC_ASSERT(p.equal(position, 1e-10));
  RC_ASSERT(s.equal(scale, 1e-10));
  RC_ASSERT(std::fabs(std::fabs(q.dot(rotation)) - 1.0) <= 1e-10);  // q or -q

  m.compose(anchor, position, rotation, scale);
  RC_ASSERT(m.mult(anchor).equal(position, 1e-10));
  m.decompose(anchor, p, q, s);
  RC_ASSERT(p.equal(position, 1e-10));
  RC_ASSERT(s.equal(scale, 1e-10));
}

// Unit rotations and vectors up to 10: a handful of products, well within 1e-13.
RC_GTEST_PROP(QuaternionProperty, QuaternionFromAMatrixRotatesAsTheMatrix, ()) {
  Mat4 rotation(true), back(false);
  rotation.setRotation(uniform(-kPi, kPi), anyVec3(1.0));
  Quaternion q;
  q.setWithMat4(rotation);
  const Vec3 v = anyVec3(10);
  RC_ASSERT(Quaternion::quaternionMulVec3(q, v).equal(rotation.mult(v), 1e-13));
  back.setWithQuaternion(q);
  RC_ASSERT(maxDifference(back, rotation) <= 1e-14);
}

RC_GTEST_PROP(QuaternionProperty, SlerpStartsAndEndsExactly, ()) {
  const Quaternion p = anyRotation(), q = anyRotation();
  Quaternion atStart = p, atEnd = p;
  atStart.slerp(q, 0.0);
  atEnd.slerp(q, 1.0);
  RC_ASSERT(atStart == p);
  RC_ASSERT(atEnd == q);
}

// Double trigonometry throughout: 1e-9 allows for asin's loss of digits with the
// middle angle 0.01 from a quarter turn. At a quarter turn the outer two are told
// apart no longer, yet the angles must rebuild the same matrix; asin next to 1 keeps
// only half the digits (about 1.5e-8 rad), hence 1e-7 there.
RC_GTEST_PROP(EulerProperty, AnglesFromAMatrixGiveTheMatrixBack, (bool locked)) {
  Euler angles = anyAngles(0.01);
  if (locked) {
    middleAngle(angles) = *rc::gen::element(-kPi / 2, kPi / 2);
  }
  const Mat4 rotation = productInOrder(angles);
  Euler e(0, 0, 0, Euler::Unspecified);
  e.setWithMat4(rotation, angles.mOrder);
  RC_ASSERT(e.mOrder == angles.mOrder);
  RC_ASSERT(locked || angleDifference(e, angles) <= 1e-9);
  RC_ASSERT(maxDifference(productInOrder(e), rotation) <= (locked ? 1e-7 : 1e-14));
}

// setWithEuler carries about seven digits: 1e-6 on matrix elements of size 1. The
// outer angles lose more as the middle one nears a quarter turn (as 1/cos of it),
// so it keeps 0.1 away, where 1e-5 holds.
RC_GTEST_PROP(EulerProperty, QuaternionOfAnglesMatchesTheMatrixProduct, ()) {
  const Euler angles = anyAngles(0.1);
  Quaternion q;
  q.setWithEuler(angles);
  Mat4 fromQuaternion(false);
  fromQuaternion.setWithQuaternion(q);
  RC_ASSERT(maxDifference(fromQuaternion, productInOrder(angles)) <= 1e-6);
  Euler back(0, 0, 0, Euler::Unspecified);
  back.setWithQuaternion(q, angles.mOrder);
  RC_ASSERT(angleDifference(back, angles) <= 1e-5);
}

// Determinants of at least 0.01 and coordinates up to 100: 1e-9 is far above the
// rounding of a 2 by 2 inverse at those sizes.
RC_GTEST_PROP(AffineProperty, InverseMapsPointsThereAndBack, ()) {
  Affine a(true), inverse(false);
  a.set(Vec2(uniform(-50, 50), uniform(-50, 50)), Vec2(uniform(-50, 50), uniform(-50, 50)),
        Vec2(uniform(0.1, 10), uniform(0.1, 10)), uniform(-360, 360));
  a.skewX(uniform(-30, 30));
  RC_ASSERT(a.inverse(inverse));
  const Vec2 p(uniform(-100, 100), uniform(-100, 100));
  RC_ASSERT(inverse.getTransform(a.getTransform(p)).equal(p, 1e-9));
  RC_ASSERT(a.getTransform(inverse.getTransform(p)).equal(p, 1e-9));
}

}  // namespace
}  // namespace Quillmere::Velmira
