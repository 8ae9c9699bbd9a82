#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "Math/Euler.h"
#include "Math/Quaternion.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

const double kPi = 3.141592653589793;
const double kHalf = std::sqrt(0.5);
// A few ulps of 1: the rounding of one square root or sine and a product or two.
const double kUlps = 1e-15;

Vec3 rotate(const Quaternion& q, const Vec3& v) { return Quaternion::quaternionMulVec3(q, v); }

TEST(QuaternionTest, StartsAtNoTurnAndOnlySetNormalisesTheAxis) {
  EXPECT_TRUE(near(Quaternion(), Quaternion(0, 0, 0, 1), 0.0));
  const double c = std::cos(kPi / 6);
  EXPECT_TRUE(near(Quaternion(Vec3(0, 0, 2), kPi / 3), Quaternion(0, 0, 1, c), kUlps)) << "axis times sin(pi/6)";
  Quaternion unit;
  unit.set(Vec3(0, 0, 2), kPi / 3);
  EXPECT_TRUE(near(unit, Quaternion(0, 0, 0.5, c), kUlps));
  unit.set(Vec3(), kPi / 3);
  EXPECT_TRUE(near(unit, Quaternion(0.5, 0, 0, c), kUlps)) << "no axis is X";

  const Quaternion quarterZ(0, 0, kHalf, kHalf);
  EXPECT_TRUE(near(rotate(quarterZ, Vec3(1, 0, 0)), Vec3(0, 1, 0), kUlps));
  EXPECT_NEAR(quarterZ.getRotationAngle(), 90.0, 1e-12) << "answers in degrees";
  // 1 - w^2 is about 1e-14, below the tolerance: too little turn for an axis to mean anything.
  EXPECT_TRUE(near(Quaternion(1e-7, 0, 0, 1 - 5e-15).getRotationAxis(), Vec3(0, 0, 1), 0.0));
  EXPECT_TRUE(std::isnan(Quaternion(0, 0, 0, 1.5).getRotationAngle())) << "w is not clamped";
  Quaternion zero(0, 0, 0, 0);
  zero.normalize();
  EXPECT_TRUE(near(zero, Quaternion(), 0.0)) << "a zero quaternion normalises to no rotation";
}

TEST(QuaternionTest, SetWithDirectionPicksAPerpendicularAxisForOppositeVectors) {
  const struct {
    const char* name;
    Vec3 from, to;
    Quaternion expected;
  } cases[] = {
      {"+X to -X, |x| > |z|", Vec3(1, 0, 0), Vec3(-1, 0, 0), Quaternion(0, 1, 0, 0)},
      {"+Z to -Z, otherwise", Vec3(0, 0, 1), Vec3(0, 0, -1), Quaternion(0, -1, 0, 0)},
      {"same vector", Vec3(0, 1, 0), Vec3(0, 1, 0), Quaternion(0, 0, 0, 1)},
      {"X to Y", Vec3(1, 0, 0), Vec3(0, 1, 0), Quaternion(0, 0, kHalf, kHalf)},
  };
  for (const auto& test : cases) {
    EXPECT_TRUE(near(Quaternion(test.from, test.to), test.expected, kUlps)) << test.name;
  }
}

TEST(QuaternionTest, SetWithEulerWorksInSinglePrecision) {
  Quaternion q;
  q.setWithEuler(Euler(1.0, 0, 0, Euler::XYZ));
  const auto single = [](double v) { return static_cast<double>(static_cast<float>(v)); };
  EXPECT_TRUE(near(q, Quaternion(single(std::sin(0.5)), 0, 0, single(std::cos(0.5))), 0.0))
      << "rounded to a float before any product";
  q.setWithEuler(Euler(1, 2, 3, Euler::Unspecified));
  EXPECT_TRUE(near(q, Quaternion(0, 0, 0, 0), 0.0)) << "no order, no rotation";
  q.set(1, 2, 3, 4);
  q.setWithEuler(Euler(1, 2, 3, static_cast<Euler::RotationOrder>(9)));
  EXPECT_TRUE(near(q, Quaternion(1, 2, 3, 4), 0.0)) << "an unknown order changes nothing";
}

TEST(QuaternionTest, MultiplyPutsItsArgumentOnTheRight) {
  const Quaternion aboutX(kHalf, 0, 0, kHalf), aboutY(0, kHalf, 0, kHalf);
  Quaternion xy = aboutX, yx = aboutX;
  xy.multiply(aboutY);
  yx.premultiply(aboutY);
  // X x Y: Y acts first and takes +Z to +X, which X keeps. Y x X: X takes +Z to -Y.
  EXPECT_TRUE(near(rotate(xy, Vec3(0, 0, 1)), Vec3(1, 0, 0), kUlps));
  EXPECT_TRUE(near(rotate(yx, Vec3(0, 0, 1)), Vec3(0, -1, 0), kUlps));
  xy = aboutX;
  xy.multiplyQuaternions(xy, xy);
  EXPECT_TRUE(near(xy, Quaternion(1, 0, 0, 0), kUlps)) << "operands may be the object";
}

TEST(QuaternionTest, SlerpTakesTheShortArcAndAveragesNearlyEqualEnds) {
  const Quaternion quarterZ(0, 0, kHalf, kHalf), farSide(0, 0, -kHalf, -kHalf);
  Quaternion q;
  q.slerp(quarterZ, 0.5);
  EXPECT_TRUE(near(q, Quaternion(0, 0, std::sin(kPi / 8), std::cos(kPi / 8)), kUlps));
  q = Quaternion();
  q.slerp(farSide, 0.999);
  EXPECT_TRUE(near(q, quarterZ, 1e-3)) << "the short arc ends near -q";

  // Half angle 1e-4 apart: below the 0.001 sine limit, t no longer matters.
  const Quaternion close(0, 0, std::sin(1e-4), std::cos(1e-4));
  Quaternion early, late;
  early.slerp(close, 0.1);
  late.slerp(close, 0.9);
  EXPECT_TRUE(near(early, late, 0.0));
  EXPECT_EQ(early.z, std::sin(1e-4) * 0.5);
  EXPECT_TRUE(near(Quaternion::lerp(close, close, std::numeric_limits<double>::quiet_NaN()), close, 0.0));
}

}  // namespace
}  // namespace Quillmere::Velmira
