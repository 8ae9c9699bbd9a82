// Float.h, Vec2, Vec3 and Vec4.

#include "MathExpect.h"

namespace Quillmere::Velmira {

// The rest of Float.h is pinned where the types use it: the degree constant by a quarter turn of a Vec2, equality
// and negligibility by the types' tolerance rules, the sign of 0 by oppositeQuadrant.
TEST(Float, ClampLetsTheLowBoundWinOverTheHigh) { EXPECT_EQ(floatClamp(0.5, 1.0, 0.0), 1.0); }

TEST(Vec2, ZeroLengthAnswersDifferByOperationAndAnglesAreSignedDegrees) {
  double px = 1e-13, py = 0;
  Vec2::normalize(&px, &py);  // the static form leaves a pair of length 1e-12 or less as it is
  const Vec2 far(1, INFINITY);
  EXPECT_TRUE(near(after(Vec2(), [](Vec2& v) { v.normalize(); }), {1, 0}) && near(Vec2(px, py), {1e-13, 0}));
  // 90 * kDegToRad falls 2.66e-14 short of pi/2, which stays in x; pi/180 would leave 6e-17.
  EXPECT_TRUE(near(after(Vec2(1, 0), &Vec2::rotate, 90), {2.65e-14, 1}, 1e-15));
  // At 0 there is no trigonometry, whose inf * 0 would give NaN.
  EXPECT_TRUE(near(after(far, &Vec2::rotate, 0), far) && near(far.rotateRound(0, {5, 5}), far));
  EXPECT_TRUE(near(after(Vec2(2, 1), &Vec2::rotateAround, 90, Vec2(1, 1)), {1, 2}, 1e-12)) << "about the centre";
  EXPECT_TRUE(near(after(Vec2(2, 0), &Vec2::setAngle, 90), {0, 2}, 1e-12)) << "the length stays";
  EXPECT_NEAR(Vec2(-1, 0).getAngle(), 180.0, 1e-12);
  EXPECT_NEAR(Vec2(0, 3).angleBetween(Vec2(1, 0)), -90.0, 1e-12) << "positive towards +y";
}

TEST(Vec2, ToleranceRulesDifferByTest) {
  EXPECT_FALSE(Vec2::equalWithTolerance(Vec2(1, 0), Vec2(1.5, 0), 0.5)) << "strict, on the distance";
  EXPECT_TRUE(Vec2(1, 2) == Vec2(1 + 9e-13, 2 - 9e-13)) << "per component, unlike Vec4";
  EXPECT_TRUE(Vec2::isDuplicate(Vec2(1, 1), Vec2(0.76, 1.24)) && !Vec2::isDuplicate(Vec2(), Vec2(0.25, 0)));
  // Collinear and orthogonal scale their tolerance by both lengths.
  EXPECT_TRUE(Vec2(1e6, 0).isCollinear(Vec2(1e6, 1e-7)) && Vec2(1e6, 0).isOrthogonal(Vec2(1e-7, 1e6)));
  EXPECT_FALSE(Vec2(1, 0).isCollinear(Vec2(1, 1e-11)));
  EXPECT_TRUE(Vec2(9e-13, -9e-13).negligible() && Vec2(1e-12, 0).nonNegligible() && !Vec2(1e-300, 0).isZero());
}

TEST(Vec2, RemaindersProjectionsAndSignsKeepTheirOddConventions) {
  EXPECT_TRUE(near(Vec2(-7, 7) % Vec2(3, -3), {-1, 1})) << "fmod: the dividend's sign";
  // dotProduction is a vector, not a dot product; getMin changes the object.
  EXPECT_TRUE(near(Vec2(1, 2).dotProduction({3, 4}), {3, 8}) &&
              near(after(Vec2(3, -1), &Vec2::getMin, Vec2(1, 5)), {1, -1}));
  // Signs follow, not magnitudes, and 0 counts with the negatives.
  const Vec2 zeroX = after(Vec2(0, -2), &Vec2::followSigns, Vec2(1, 0));
  EXPECT_TRUE(std::signbit(zeroX.x) && zeroX.y == -2.0 &&
              near(after(Vec2(5, -5), &Vec2::followSigns, Vec2(-1, 7)), {-5, 5}));
  // The projection length runs from a to the foot, positive behind a too; the distance from the point.
  EXPECT_TRUE(Vec2(-3, 5).lineProjectionLength({}, {10, 0}) == 3.0 && Vec2(-3, 5).distanceToLine({}, {10, 0}) == 5.0);
  const auto quadrant = [](double x, double y) { return Vec2(x, y).getQuadrant(); };
  EXPECT_EQ(Ints({quadrant(0, 0), quadrant(-1, 0), quadrant(-1, -1), quadrant(0, -1)}), Ints({1, 2, 3, 4}));
  // Opposite when both signs differ, or one does and the other axis is 0 for both points.
  EXPECT_TRUE(Vec2::oppositeQuadrant({1, 0}, {-1, 0}) && Vec2::oppositeQuadrant({0, 1}, {0, -1}));
  EXPECT_FALSE(Vec2::oppositeQuadrant({1, 1}, {-1, 1}) || Vec2::oppositeQuadrant({0, 0}, {0, 0}));
}

TEST(Vec2, IntersectClassifiesEveryCaseAndAnchoringFlipsVectorsOnTheWrongSide) {
  // u: the two line parameters, left unwritten (-7) for parallel (0) and coinciding (2) lines. The
  // first case has both at a segment's end, which counts as on it.
  // clang-format off
  const struct { Vec2 p1, p2, p3, p4, point, u; int result; } cases[] = {
      {{0, 0}, {1, 0}, {1, 0}, {1, 1}, {1, 0}, {1, 0}, 1},
      {{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 0}, {-7, -7}, 0},
      {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {0.5, 0}, {-7, -7}, 2},
      {{1, 1}, {1, 2}, {0, 0}, {2, 0}, {1, 0}, {-1, 0.5}, 3},
      {{0, 0}, {2, 0}, {1, 1}, {1, 2}, {1, 0}, {0.5, -1}, 4},
      {{0, 0}, {1, 0}, {3, 1}, {3, 2}, {3, 0}, {3, -1}, 5}};
  // clang-format on
  for (const auto& c : cases) {
    Vec2 point(99, 99), u(-7, -7);
    EXPECT_EQ(Vec2::intersect(c.p1, c.p2, c.p3, c.p4, point, &u.x, &u.y), c.result);
    EXPECT_TRUE(near(point, c.point) && near(u, c.u)) << "result " << c.result;
  }
  const Vec2 a(0, 0), b(1, 0);
  EXPECT_EQ(Vec2::signedArea(a, b, Vec2(0, 1)), 1.0) << "twice the area, positive for a positive turn";
  Vec2 away(1, 0), across(0, 1), back(-1, 0);  // a - b is (-1, 0); across has a dot product of 0, not positive
  EXPECT_TRUE(!Vec2::anchorOutward(away, a, b, true) && Vec2::anchorOutward(across, a, b, false) &&
              Vec2::anchorInward(back, a, b));
  EXPECT_TRUE(near(away, {1, 0}) && near(across, {0, -1}) && near(back, {1, 0}));
  EXPECT_TRUE(near(Vec2::centerToTopLefetPoint({10, 20}, {100, 50}), {60, 5})) << "y flips";
}

RC_GTEST_PROP(Vec2Property, RotationsUndoAndNormalizeGivesUnitLength, ()) {
  const Vec2 v(uniform(-1000, 1000), uniform(-1000, 1000));
  const double degrees = uniform(-1000, 1000);
  // Two rotations of a vector up to 1415 long lose a few ulps of it.
  RC_ASSERT(after(after(v, &Vec2::rotate, degrees), &Vec2::rotate, -degrees).equal(v, 1e-9));
  RC_ASSERT(std::fabs(after(v, [](Vec2& u) { u.normalize(); }).length() - 1.0) <= 1e-15);  // about 4 ulp
}

TEST(Vec3, ZeroLengthGoesAlongXAnglesAreRadiansAndTiesFavourTheLaterComponent) {
  EXPECT_TRUE(near(after(Vec3(), &Vec3::normalize), {1, 0, 0}) && near(after(Vec3(), &Vec3::setLength, 3), {3, 0, 0}));
  Vec3 indexed;
  for (int index : {0, 1, 5, -1}) indexed.set(index, 10.0 + index);  // any index but 0 and 1 sets z
  EXPECT_TRUE(near(indexed, {10, 11, 9}));
  EXPECT_EQ(Vec3(1, 0, 0).angleBetween(Vec3(0, 1, 0)), 1.5707963267948966) << "radians, unlike Vec2";
  EXPECT_TRUE(std::isnan(Vec3().angleBetween(Vec3(1, 0, 0)))) << "no guard for a zero vector";
  const auto largest = [](double x, double y, double z) { return Vec3(x, y, z).largestAbsComponent(); };
  EXPECT_EQ(Ints({largest(-3, 2, 1), largest(1, 1, 0), largest(1, 0, 1), largest(0, 1, 1)}), Ints({0, 1, 2, 2}));
  // ortho takes the axis before the object's own largest component, and crosses v with it.
  EXPECT_TRUE(near(after(Vec3(1, 0, 0), &Vec3::ortho, Vec3(0, 1, 0)), {1, 0, 0}) &&
              near(after(Vec3(0, 5, 0), &Vec3::ortho, Vec3(0, 0, 1)), {0, 1, 0}) &&
              near(after(Vec3(0, 0, 3), &Vec3::ortho, Vec3(1, 0, 0)), {0, 0, 1}));
  EXPECT_TRUE(Vec3() == Vec3(9e-13, 9e-13, 9e-13) && Vec3().equal(Vec3(0.5, -0.5, 0.5), 0.5)) << "inclusive";
  // Half a period is not wrapped, nothing is wrapped twice, and rotationalDifference's period is 0.
  const auto wrap = [](double a, double b) { return cyclicDifference(a, b, 360); };
  EXPECT_EQ(Doubles({wrap(350, 10), wrap(190, 10), wrap(10, 190), wrap(730, 0)}), Doubles({-20, 180, -180, 370}));
  EXPECT_TRUE(near(Vec3(350, 0, 0).rotationalDifference(Vec3(10, 0, 0)), {340, 0, 0}));
}

TEST(Vec3, MatricesApplyThroughColumnMajorElements) {
  const Mat4 m(1, 0, 0, 0, 5, 1, 0, 0, 0, 0, 1, 0, 10, 20, 30, 1, true);     // m[4] feeds y into x
  const Mat4 halfZ(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0.5, 0, 0, 0, 0, true);  // w = z / 2
  EXPECT_TRUE(near(after(Vec3(1, 2, 3), &Vec3::applyMatrix4, m), {21, 22, 33}) &&
              near(after(Vec3(0, 0, 2), &Vec3::transformDirection, m), {0, 0, 1}) &&
              near(after(Vec3(2, 4, 4), &Vec3::applyProjection, halfZ), {1, 2, 2}) &&
              near(after(Vec3(), &Vec3::setFromMatrixColumn, m, 1), {5, 1, 0}));
  EXPECT_EQ(after(Vec3(1, 2, 0), &Vec3::applyProjection, halfZ).x, INFINITY) << "no guard for w = 0";
}

TEST(Vec4, EqualityIsByEuclideanDistanceAndLerpIsSphericalInSinglePrecision) {
  const Vec4 zero, nan(NAN, 0, 0, 0), allOff(9e-13, 9e-13, 9e-13, 9e-13);
  EXPECT_TRUE(near(after(zero, &Vec4::normalize), {1, 0, 0, 0})) << "Vec4() has w 0";
  // allOff is 1.8e-12 away, though each component is within 1e-12.
  EXPECT_TRUE(zero == Vec4(9e-13, 0, 0, 0) && !(zero == allOff) && zero != allOff && nan != nan && !(nan == nan));
  EXPECT_TRUE(!zero.equal(Vec4(0.5, 0, 0, 0), 0.5) && zero.equal(Vec4(0.3, 0.3, 0, 0), 0.5)) << "strict";
  const Vec4 a(2, 0, 0, 0), b(0, 3, 0, 0), x(1, 0, 0, 0);
  EXPECT_TRUE(near(Vec4::lerp(a, b, 0.0), a) && near(Vec4::lerp(a, b, 1.0), b)) << "the ends as given";
  // acosf, sinf and a float reciprocal carry about 1e-7.
  EXPECT_TRUE(near(Vec4::lerp(x, Vec4(0, 1, 0, 0), 0.25), {0.9238795325112867, 0.3826834323650898, 0, 0}, 1e-6));
  // -b on the short arc is (1, -0.1): 1 - c = 0.00496 is below float(0.01), so the weights are 0.75
  // and 0.25, giving (1, -0.025) normalised; spherical weights would give y/x = -0.025015.
  const Vec4 linear = Vec4(1, -0.025, 0, 0) * (1 / std::sqrt(1.000625));
  EXPECT_TRUE(near(Vec4::lerp(x, Vec4(-1, 0.1, 0, 0), 0.25), linear, 1e-15));
}

}  // namespace Quillmere::Velmira
