// Properties of Mat4, Quaternion, Euler and Affine over random transforms.

#include <string>

#include "MathExpect.h"

namespace Quillmere::Velmira {

Vec3 anyVec3(double limit) { return Vec3(uniform(-limit, limit), uniform(-limit, limit), uniform(-limit, limit)); }

Quaternion anyRotation() {
  return after(Quaternion(), [](Quaternion& q) { q.set(anyVec3(1.0), uniform(-M_PI, M_PI)); });
}

// Angles for any of the six orders, the middle one (between the other two in the order's
// product) at least margin away from a quarter turn, or at one when locked.
Euler anyAngles(double margin, bool locked = false) {
  Euler e(uniform(-M_PI, M_PI), uniform(-M_PI, M_PI), uniform(-M_PI, M_PI),
          static_cast<Euler::RotationOrder>(*rc::gen::inRange(1, 7)));
  double& middle = e.mOrder == Euler::XYZ || e.mOrder == Euler::ZYX   ? e.y
                   : e.mOrder == Euler::YZX || e.mOrder == Euler::XZY ? e.z
                                                                      : e.x;
  middle = locked ? *rc::gen::element(-M_PI / 2, M_PI / 2) : uniform(-M_PI / 2 + margin, M_PI / 2 - margin);
  return e;
}

// The product of single-axis matrices in the order of the letters, independent of the
// extraction table and of the quaternion formula.
Mat4 productInOrder(const Euler& e) {
  const std::string letters[] = {"", "XYZ", "YZX", "ZXY", "XZY", "YXZ", "ZYX"};
  Mat4 m;
  for (char axis : letters[e.mOrder]) axis == 'X' ? m.rotateX(e.x) : axis == 'Y' ? m.rotateY(e.y) : m.rotateZ(e.z);
  return m;
}

bool anglesWithin(const Euler& a, const Euler& b, double tolerance) {
  return Vec3(a.x, a.y, a.z).equal(Vec3(b.x, b.y, b.z), tolerance);
}

// Diagonally dominant entries keep the condition number below about 10, so the product
// with the inverse stays within some hundreds of ulps of the identity.
RC_GTEST_PROP(Mat4Property, ProductWithInverseIsTheIdentity, ()) {
  Mat4 m(false), inverse(false);
  for (int i = 0; i < 16; ++i) m.m[i] = uniform(-1, 1) + (i % 5 == 0 ? 5.0 : 0.0);
  RC_ASSERT(m.getInverse(inverse));
  RC_ASSERT(near(m * inverse, Mat4(true), 1e-13) && near(inverse * m, Mat4(true), 1e-13));
}

// Positions and anchors up to 100, scales up to 10: 1e-10 is a few hundred ulps of the
// largest values that decompose takes square roots of and divides by.
RC_GTEST_PROP(Mat4Property, DecomposeReturnsWhatComposeTookIn, ()) {
  const Vec3 position = anyVec3(100), anchor = anyVec3(100),
             scale(uniform(0.1, 10), uniform(0.1, 10), uniform(0.1, 10));
  const Quaternion rotation = anyRotation();
  Vec3 p, s;
  Quaternion q;
  Mat4 m;
  m.compose(position, rotation, scale);
  m.decompose(p, q, s);
  RC_ASSERT(p.equal(position, 1e-10) && s.equal(scale, 1e-10));
  RC_ASSERT(std::fabs(std::fabs(q.dot(rotation)) - 1.0) <= 1e-10);  // q or -q
  m.compose(anchor, position, rotation, scale);
  m.decompose(anchor, p, q, s);
  RC_ASSERT(m.mult(anchor).equal(position, 1e-10) && p.equal(position, 1e-10) && s.equal(scale, 1e-10));
}

// Unit rotations and vectors up to 10: a handful of products, well within 1e-13.
RC_GTEST_PROP(QuaternionProperty, QuaternionFromAMatrixRotatesAsTheMatrix, ()) {
  const Mat4 rotation = after(Mat4(), [](Mat4& m) { m.setRotation(uniform(-M_PI, M_PI), anyVec3(1.0)); });
  const Quaternion q = after(Quaternion(), &Quaternion::setWithMat4, rotation);
  const Vec3 v = anyVec3(10);
  RC_ASSERT(Quaternion::quaternionMulVec3(q, v).equal(rotation.mult(v), 1e-13));
  RC_ASSERT(near(after(Mat4(), &Mat4::setWithQuaternion, q), rotation, 1e-14));
}

RC_GTEST_PROP(QuaternionProperty, SlerpStartsAndEndsExactly, ()) {
  const Quaternion p = anyRotation(), q = anyRotation();
  RC_ASSERT(after(p, &Quaternion::slerp, q, 0.0) == p && after(p, &Quaternion::slerp, q, 1.0) == q);
}

// Double trigonometry throughout: 1e-9 allows for asin's loss of digits with the middle angle
// 0.01 from a quarter turn. At a quarter turn the outer two are told apart no longer, yet the
// angles must rebuild the same matrix; asin next to 1 keeps only half the digits (about
// 1.5e-8 rad), hence 1e-7 there.
RC_GTEST_PROP(EulerProperty, AnglesFromAMatrixGiveTheMatrixBack, (bool locked)) {
  const Euler angles = anyAngles(0.01, locked);
  const Mat4 rotation = productInOrder(angles);
  const Euler e = after(Euler(0, 0, 0, Euler::Unspecified), &Euler::setWithMat4, rotation, angles.mOrder);
  RC_ASSERT(e.mOrder == angles.mOrder && (locked || anglesWithin(e, angles, 1e-9)));
  RC_ASSERT(near(productInOrder(e), rotation, locked ? 1e-7 : 1e-14));
}

// setWithEuler carries about seven digits: 1e-6 on matrix elements of size 1. The outer
// angles lose more as the middle one nears a quarter turn (as 1/cos of it), so it keeps 0.1
// away, where 1e-5 holds.
RC_GTEST_PROP(EulerProperty, QuaternionOfAnglesMatchesTheMatrixProduct, ()) {
  const Euler angles = anyAngles(0.1);
  const Quaternion q = after(Quaternion(), &Quaternion::setWithEuler, angles);
  const Euler back = after(Euler(0, 0, 0, Euler::Unspecified), &Euler::setWithQuaternion, q, angles.mOrder);
  RC_ASSERT(near(after(Mat4(), &Mat4::setWithQuaternion, q), productInOrder(angles), 1e-6));
  RC_ASSERT(anglesWithin(back, angles, 1e-5));
}

// Determinants of at least 0.01 and coordinates up to 100: 1e-9 is far above the rounding of
// a 2 by 2 inverse at those sizes.
RC_GTEST_PROP(AffineProperty, InverseMapsPointsThereAndBack, ()) {
  const Affine a = after(Affine(), [](Affine& t) {
    t.set(Vec2(uniform(-50, 50), uniform(-50, 50)), Vec2(uniform(-50, 50), uniform(-50, 50)),
          Vec2(uniform(0.1, 10), uniform(0.1, 10)), uniform(-360, 360));
    t.skewX(uniform(-30, 30));
  });
  Affine inverse(false);
  const Vec2 p(uniform(-100, 100), uniform(-100, 100));
  RC_ASSERT(a.inverse(inverse) && inverse.getTransform(a.getTransform(p)).equal(p, 1e-9) &&
            a.getTransform(inverse.getTransform(p)).equal(p, 1e-9));
}

}  // namespace Quillmere::Velmira
