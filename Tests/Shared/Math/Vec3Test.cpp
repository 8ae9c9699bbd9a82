#include "Math/Vec3.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "MathPrinters.h"

namespace Quillmere::Velmira {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

rc::Gen<double> coordinate() {
  return rc::gen::map(rc::gen::inRange(-1000000, 1000001), [](int v) { return v / 1000.0; });
}

Vec3 anyVec3() { return Vec3(*coordinate(), *coordinate(), *coordinate()); }

TEST(Vec3, ZeroLengthGoesAlongXAndAnglesAreRadians) {
  Vec3 v, w;
  v.normalize();
  w.setLength(3);
  EXPECT_EQ(v, Vec3(1, 0, 0));
  EXPECT_EQ(w, Vec3(3, 0, 0));
  Vec3 d(5, 6, 7);
  d.transformDirection(Mat4(false));
  EXPECT_EQ(d, Vec3(1, 0, 0)) << "a zero direction normalises to x";
  EXPECT_TRUE(std::isnan(Vec3().angleBetween(Vec3(1, 0, 0))));
  EXPECT_EQ(Vec3(1, 0, 0).angleBetween(Vec3(0, 1, 0)), 1.5707963267948966) << "radians, unlike Vec2";
}

TEST(Vec3, IndexedSetAndLargestComponentFavourZ) {
  // Any index but 0 and 1 lands on z.
  const struct {
    int index;
    Vec3 expected;
  } sets[] = {{0, {9, 0, 0}}, {1, {0, 9, 0}}, {2, {0, 0, 9}}, {5, {0, 0, 9}}, {-1, {0, 0, 9}}};
  for (const auto& c : sets) {
    Vec3 v;
    v.set(c.index, 9.0);
    EXPECT_EQ(v, c.expected) << "index " << c.index;
  }
  // Ties go to the later component.
  const struct {
    Vec3 v;
    int index;
  } largest[] = {{{-3, 2, 1}, 0}, {{1, 1, 0}, 1}, {{1, 0, 1}, 2}, {{0, 1, 1}, 2}, {{0, -5, 1}, 1}};
  for (const auto& c : largest) {
    EXPECT_EQ(c.v.largestAbsComponent(), c.index) << c.v;
  }
}

TEST(Vec3, OrthoPicksTheAxisFromTheObjectNotFromV) {
  const struct {
    Vec3 object, v, expected;
  } cases[] = {
      {{1, 0, 0}, {0, 1, 0}, {1, 0, 0}},  // largest x: axis z, (0,1,0) x (0,0,1)
      {{0, 5, 0}, {0, 0, 1}, {0, 1, 0}},  // largest y: axis x
      {{0, 0, 3}, {1, 0, 0}, {0, 0, 1}},  // largest z: axis y
      {{1, 0, 0}, {0, 0, 2}, {1, 0, 0}},  // v along the axis: zero cross, falls back to x
  };
  for (const auto& c : cases) {
    Vec3 o = c.object;
    o.ortho(c.v);
    EXPECT_EQ(o, c.expected) << "object " << c.object;
  }
}

TEST(Vec3, EqualityIsPerComponentAndCyclicDifferencesWrapOnce) {
  // One wrap at most, and exactly half a period stays.
  const struct {
    double a, b, period, expected;
  } cases[] = {{350, 10, 360, -20}, {10, 350, 360, 20},   {190, 10, 360, 180}, {10, 190, 360, -180},
               {730, 0, 360, 370},  {-730, 0, 360, -370}, {5, 1, 0, 4}};
  for (const auto& c : cases) {
    EXPECT_EQ(cyclicDifference(c.a, c.b, c.period), c.expected)
        << "cyclicDifference(" << c.a << ", " << c.b << ", " << c.period << ")";
  }
  EXPECT_EQ(Vec3(350, 0, 0).rotationalDifference(Vec3(10, 0, 0)), Vec3(340, 0, 0)) << "period 0: no wrap";
  EXPECT_TRUE(Vec3(0, 0, 0) == Vec3(9e-13, 9e-13, 9e-13)) << "per component, unlike Vec4";
  EXPECT_TRUE(Vec3(0, 0, 0).equal(Vec3(0.5, -0.5, 0.5), 0.5)) << "inclusive";
}

TEST(Vec3, MatricesApplyThroughColumnMajorElements) {
  // m[4] is row 0, column 1: it feeds y into x; m[12] to m[14] translate.
  const Mat4 m(1, 0, 0, 0, 5, 1, 0, 0, 0, 0, 1, 0, 10, 20, 30, 1, true);
  Vec3 p(1, 2, 3), dir(0, 0, 2), column;
  p.applyMatrix4(m);
  EXPECT_EQ(p, Vec3(21, 22, 33));
  dir.transformDirection(m);
  EXPECT_EQ(dir, Vec3(0, 0, 1)) << "a direction is not moved, and comes out normalised";
  column.setFromMatrixColumn(m, 1);
  EXPECT_EQ(column, Vec3(5, 1, 0));

  // Bottom row (0, 0, 0.5, 0): w = z / 2 = 2.
  Vec3 halved(2, 4, 4), infinite(1, 2, 3);
  halved.applyProjection(Mat4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0.5, 0, 0, 0, 0, true));
  EXPECT_EQ(halved, Vec3(1, 2, 2));
  infinite.applyProjection(Mat4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, true));
  EXPECT_EQ(infinite.x, kInf) << "no guard against a zero denominator";

  Vec3 turned(1, 0, 0), scaled(1, 2, 3);
  turned.applyQuaternion(Quaternion(0, 0, std::sqrt(0.5), std::sqrt(0.5)));
  EXPECT_EQ(turned, Vec3(0, 1, 0)) << "a quarter turn about z";
  scaled.applyQuaternion(Quaternion(0, 0, 0, 2));
  EXPECT_EQ(scaled, Vec3(4, 8, 12)) << "q v q* scales by |q|^2: the quaternion is not normalised";
}

RC_GTEST_PROP(Vec3Property, NormalizedNonZeroVectorHasUnitLength, ()) {
  Vec3 v = anyVec3();
  RC_PRE(!v.isZero());
  v.normalize();
  // A few roundings in the sum, the root and the scaling: 1e-15 is ~4 ulp.
  RC_ASSERT(std::fabs(v.length() - 1.0) <= 1e-15);
}

RC_GTEST_PROP(Vec3Property, UnitQuaternionAndItsConjugateReturnTheVector, ()) {
  const Vec3 original = anyVec3();
  Vec3 axis = anyVec3();
  RC_PRE(!axis.isZero());
  axis.normalize();
  const double half = *coordinate() * 0.5, s = std::sin(half);
  Vec3 v = original;
  v.applyQuaternion(Quaternion(axis.x * s, axis.y * s, axis.z * s, std::cos(half)));
  const double length = v.length();
  v.applyQuaternion(Quaternion(-axis.x * s, -axis.y * s, -axis.z * s, std::cos(half)));
  // Vectors up to length 1733 through two rotations of a few roundings each.
  RC_ASSERT(std::fabs(length - original.length()) <= 1e-9);
  RC_ASSERT(v.equal(original, 1e-9));
}

}  // namespace
}  // namespace Quillmere::Velmira
