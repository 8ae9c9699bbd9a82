#include "Math/Vec2.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "MathPrinters.h"

namespace Quillmere::Velmira {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Coordinates in thousandths up to +-1000: wide enough to mix signs and
// magnitudes, small enough that a round trip loses at most a few ulps.
rc::Gen<double> coordinate() {
  return rc::gen::map(rc::gen::inRange(-1000000, 1000001), [](int v) { return v / 1000.0; });
}

rc::Gen<Vec2> anyVec2() { return rc::gen::construct<Vec2>(coordinate(), coordinate()); }

TEST(Vec2, ZeroLengthAnswersDifferByOperation) {
  Vec2 member(0, 0), tiny(1e-13, 0), sized(0, 0), still(0, 0);
  member.normalize();
  tiny.normalize();
  sized.setLength(5);
  still.setAngle(30);
  EXPECT_EQ(member, Vec2(1, 0)) << "member normalize of the zero vector";
  EXPECT_EQ(tiny, Vec2(1, 0)) << "member normalize scales any non-zero vector";
  EXPECT_EQ(sized, Vec2(5, 0));
  EXPECT_TRUE(still.isZero()) << "setAngle keeps a zero length";
  double px = 1e-13, py = 0;
  Vec2::normalize(&px, &py);
  EXPECT_EQ(px, 1e-13) << "static normalize leaves a pair at or below 1e-12";
  EXPECT_EQ(Vec2(3, 4).project(Vec2(0, 0)), Vec2(0, 0));
  EXPECT_EQ(Vec2(3, 4).project(Vec2(2, 0)), Vec2(3, 0));
  EXPECT_EQ(Vec2(0, 0).getAngle(), 0.0);
  EXPECT_TRUE(std::isnan(Vec2(1, 1).distanceToLine(Vec2(2, 2), Vec2(2, 2)))) << "a line through one point";
}

TEST(Vec2, AnglesAreDegreesThroughTheShortConstant) {
  Vec2 v(1, 0), turned(2, 0);
  v.rotate(90);
  // 90 * 0.017453292519943 falls 2.66e-14 short of pi/2, so cos leaves about
  // that much in x; pi/180 would leave 6e-17.
  EXPECT_NEAR(v.x, 2.65e-14, 1e-15) << "rotate must multiply by kDegToRad";
  EXPECT_DOUBLE_EQ(v.y, 1.0);
  turned.setAngle(90);
  EXPECT_EQ(turned, Vec2(0, 2));
  EXPECT_NEAR(Vec2(-1, 0).getAngle(), 180.0, 1e-12);
  EXPECT_NEAR(Vec2(0, -2).getAngle(), -90.0, 1e-12);
  EXPECT_NEAR(Vec2(0, 3).angleBetween(Vec2(1, 0)), -90.0, 1e-12) << "signed, positive towards +y";

  // A zero angle skips the trigonometry: cos and sin would make 1 - inf * 0 a NaN.
  Vec2 infinite(1, std::numeric_limits<double>::infinity()), point(2, 1);
  infinite.rotate(0);
  EXPECT_EQ(infinite.x, 1.0);
  EXPECT_EQ(infinite.rotateRound(0, Vec2(5, 5)).x, 1.0);
  point.rotateAround(90, Vec2(1, 1));
  EXPECT_EQ(point, Vec2(1, 2)) << "about the centre, not the origin";
}

TEST(Vec2, ToleranceRulesDifferByTest) {
  EXPECT_TRUE(Vec2(1, 0).equal(Vec2(1.5, 0), 0.5)) << "equal is inclusive, by component";
  EXPECT_FALSE(Vec2::equalWithTolerance(Vec2(1, 0), Vec2(1.5, 0), 0.5)) << "strict, on the distance";
  EXPECT_TRUE(Vec2::equalWithTolerance(0, 0, 0.3, 0.3, 0.5)) << "distance 0.424 < 0.5";
  EXPECT_FALSE(Vec2::isDuplicate(Vec2(0, 0), Vec2(0.25, 0))) << "strict at a quarter";
  EXPECT_TRUE(Vec2::isDuplicate(Vec2(1, 1), Vec2(0.76, 1.24)));
  // Scaled by both lengths: an absolute 1e-12 would reject the first two.
  EXPECT_TRUE(Vec2(1e6, 0).isCollinear(Vec2(1e6, 1e-7)));
  EXPECT_TRUE(Vec2(1e6, 0).isOrthogonal(Vec2(1e-7, 1e6)));
  EXPECT_FALSE(Vec2(1, 0).isCollinear(Vec2(1, 1e-11)));
  EXPECT_TRUE(Vec2(0, 0).isCollinear(Vec2(3, 4)) && Vec2(0, 0).isOrthogonal(Vec2(3, 4)));
  EXPECT_TRUE(Vec2(9e-13, -9e-13).negligible());
  EXPECT_TRUE(Vec2(1e-12, 0).nonNegligible()) << "the bound itself is not negligible";
  EXPECT_TRUE(Vec2(1, 2) == Vec2(1 + 9e-13, 2 - 9e-13)) << "== is per component";
  EXPECT_TRUE(Vec2(kNaN, 0) != Vec2(kNaN, 0));
  EXPECT_FALSE(Vec2(1e-300, 0).isZero()) << "isZero has no tolerance";
}

TEST(Vec2, ProductsRemaindersClampsAndLinesKeepTheirOddConventions) {
  EXPECT_EQ(Vec2(1, 2).dotProduction(Vec2(3, 4)), Vec2(3, 8)) << "a vector, not the dot product";
  EXPECT_EQ(Vec2(-7, 7) % Vec2(3, -3), Vec2(-1, 1)) << "the remainder's sign follows the dividend";
  Vec2 v(3, -1), crossed(0, 5);
  v.getMin(Vec2(1, 5));
  EXPECT_EQ(v, Vec2(1, -1)) << "getMin changes the object";
  crossed.clamp(Vec2(1, 1), Vec2(0, 0));
  EXPECT_EQ(crossed, Vec2(1, 0)) << "below low gives low even when low exceeds high";
  EXPECT_DOUBLE_EQ(Vec2(4, 5).distanceToLine(Vec2(0, 0), Vec2(10, 0)), 5.0);
  EXPECT_DOUBLE_EQ(Vec2(-3, 5).lineProjectionLength(Vec2(0, 0), Vec2(10, 0)), 3.0)
      << "a foot behind the first point still gives a positive length";
}

TEST(Vec2, QuadrantsAndSignsTreatZeroByTheirOwnRule) {
  const struct {
    Vec2 v;
    int quadrant;
  } quadrants[] = {{{0, 0}, 1}, {{-1, 0}, 2}, {{-1, -1}, 3}, {{0, -1}, 4}};
  for (const auto& c : quadrants) {
    EXPECT_EQ(c.v.getQuadrant(), c.quadrant) << c.v;
  }
  // Opposite when both axes differ in sign, or one does and the other is 0 for both.
  const struct {
    Vec2 a, b;
    bool opposite;
  } pairs[] = {{{1, 0}, {-1, 0}, true},  {{1, 1}, {-1, 1}, false}, {{0, 0}, {0, 0}, false},
               {{1, 1}, {-1, -1}, true}, {{0, 1}, {0, -1}, true},  {{1, 1}, {1, -1}, false}};
  for (const auto& c : pairs) {
    EXPECT_EQ(Vec2::oppositeQuadrant(c.a, c.b), c.opposite) << c.a << " against " << c.b;
  }
  Vec2 v(0, -2), w(5, -5);
  v.followSigns(Vec2(1, 0));  // zero counts with the negatives
  EXPECT_TRUE(std::signbit(v.x)) << "0 against a positive becomes -0";
  EXPECT_EQ(v.y, -2.0) << "a negative against 0 stays negative";
  w.followSigns(Vec2(-0.1, 7));
  EXPECT_EQ(w, Vec2(-5, 5)) << "only signs follow, not magnitudes";
}

TEST(Vec2, IntersectClassifiesEveryCase) {
  constexpr double kUnset = -7.0;
  const struct {
    const char* name;
    Vec2 p1, p2, p3, p4;
    int result;
    Vec2 point;
    double u1, u2;
  } cases[] = {
      {"cross", {0, 0}, {2, 2}, {0, 2}, {2, 0}, 1, {1, 1}, 0.5, 0.5},
      {"parallel", {0, 0}, {1, 0}, {0, 1}, {1, 1}, 0, {0, 0}, kUnset, kUnset},
      {"coincide", {0, 0}, {1, 0}, {2, 0}, {3, 0}, 2, {0.5, 0}, kUnset, kUnset},
      {"first only", {0, 0}, {2, 0}, {1, 1}, {1, 2}, 4, {1, 0}, 0.5, -1},
      {"second only", {1, 1}, {1, 2}, {0, 0}, {2, 0}, 3, {1, 0}, -1, 0.5},
      {"neither", {0, 0}, {1, 0}, {3, 1}, {3, 2}, 5, {3, 0}, 3, -1},
      {"ends included", {0, 0}, {1, 0}, {1, 0}, {1, 1}, 1, {1, 0}, 1, 0},
  };
  for (const auto& c : cases) {
    Vec2 point(99, 99);
    double u1 = kUnset, u2 = kUnset;
    EXPECT_EQ(Vec2::intersect(c.p1, c.p2, c.p3, c.p4, point, &u1, &u2), c.result) << c.name;
    EXPECT_EQ(point, c.point) << c.name;
    EXPECT_DOUBLE_EQ(u1, c.u1) << c.name;
    EXPECT_DOUBLE_EQ(u2, c.u2) << c.name;
    EXPECT_EQ(Vec2::intersect(c.p1, c.p2, c.p3, c.p4, point, nullptr, nullptr), c.result) << c.name;
  }
}

TEST(Vec2, SideTestsUseTheFirstLineAndAnchoringNegatesTowardsTheAskedSide) {
  const Vec2 a(0, 0), b(1, 0);
  EXPECT_EQ(Vec2::signedArea(a, b, Vec2(0, 1)), 1.0) << "twice the area, positive turn";
  EXPECT_TRUE(Vec2::intersecting(a, b, Vec2(0, 1), Vec2(5, 0))) << "a point on the line counts as negative";
  EXPECT_FALSE(Vec2::intersecting(a, b, Vec2(0, 1), Vec2(3, 2)));
  EXPECT_TRUE(Vec2::intersecting(a, b, Vec2(50, 1), Vec2(50, -1))) << "c-d is not tested against the segment a-b";

  // anchor a - reference b is (-1, 0): (1, 0) points away from it; (0, 1) has a zero dot product, not positive.
  Vec2 away(1, 0), across(0, 1), back(-1, 0);
  EXPECT_FALSE(Vec2::anchorOutward(away, a, b, true));
  EXPECT_TRUE(Vec2::anchorOutward(across, a, b, false));
  EXPECT_TRUE(Vec2::anchorInward(back, a, b));
  EXPECT_EQ(away, Vec2(1, 0)) << "unchanged when already on the asked side";
  EXPECT_EQ(across, Vec2(0, -1));
  EXPECT_EQ(back, Vec2(1, 0));
}

TEST(Vec2, CoordinateConversionsFlipY) {
  EXPECT_EQ(Vec2::centerToTopLefetPoint(Vec2(0, 0), Vec2(100, 50)), Vec2(50, 25));
  EXPECT_EQ(Vec2::topLeftToCenterPoint(Vec2(0, 0), Vec2(100, 50)), Vec2(-50, 25));
}

RC_GTEST_PROP(Vec2Property, NormalizedNonZeroVectorHasUnitLength, ()) {
  Vec2 v = *anyVec2();
  RC_PRE(!v.isZero());
  v.normalize();
  // A few roundings in the sum, the root and the scaling: 1e-15 is ~4 ulp.
  RC_ASSERT(std::fabs(v.length() - 1.0) <= 1e-15);
}

RC_GTEST_PROP(Vec2Property, RotationThereAndBackReturnsTheVector, ()) {
  const Vec2 original = *anyVec2();
  const double degrees = *coordinate();
  Vec2 v = original;
  v.rotate(degrees);
  v.rotate(-degrees);
  // Two rotations of a vector up to length 1415 lose a few ulps of it: 1e-9.
  RC_ASSERT(v.equal(original, 1e-9));
}

RC_GTEST_PROP(Vec2Property, CoordinateConversionsAreInverse, ()) {
  const Vec2 point = *anyVec2(), size = *anyVec2();
  // Additions of numbers below 2000 round by at most 2.3e-13 each.
  RC_ASSERT(Vec2::topLeftToCenterPoint(Vec2::centerToTopLefetPoint(point, size), size).equal(point, 1e-9));
  RC_ASSERT(Vec2::centerToTopLefetPoint(Vec2::topLeftToCenterPoint(point, size), size).equal(point, 1e-9));
}

}  // namespace
}  // namespace Quillmere::Velmira
