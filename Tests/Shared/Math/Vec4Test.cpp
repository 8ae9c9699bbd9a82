#include "Math/Vec4.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "MathPrinters.h"

namespace Quillmere::Velmira {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Compares components: Vec4's own == would hide a near miss.
void expectComponents(const Vec4& actual, const Vec4& expected, double tolerance, const char* what) {
  EXPECT_NEAR(actual.x, expected.x, tolerance) << what << " x";
  EXPECT_NEAR(actual.y, expected.y, tolerance) << what << " y";
  EXPECT_NEAR(actual.z, expected.z, tolerance) << what << " z";
  EXPECT_NEAR(actual.w, expected.w, tolerance) << what << " w";
}

TEST(Vec4, StartsAtZeroIncludingW) {
  EXPECT_TRUE(Vec4().isZero());
  Vec4 n;
  n.normalize();
  expectComponents(n, Vec4(1, 0, 0, 0), 0.0, "normalize of zero");
  EXPECT_EQ(Vec4(1, 2, 3, 4).getVec3(), Vec3(1, 2, 3)) << "w is dropped, not divided by";
}

TEST(Vec4, EqualityIsByEuclideanDistanceAndStrict) {
  const struct {
    const char* name;
    Vec4 a, b;
    bool equal;
  } cases[] = {
      {"2e-12 apart", {1, 0, 0, 0}, {1 + 2e-12, 0, 0, 0}, false},
      {"9e-13 in one", {0, 0, 0, 0}, {9e-13, 0, 0, 0}, true},
      {"9e-13 in all four: 3.24e-24", {0, 0, 0, 0}, {9e-13, 9e-13, 9e-13, 9e-13}, false},
      {"NaN", {kNaN, 0, 0, 0}, {kNaN, 0, 0, 0}, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.a == c.b, c.equal) << c.name;
    EXPECT_EQ(c.a != c.b, !c.equal) << c.name;
  }
  EXPECT_FALSE(Vec4(0, 0, 0, 0).equal(Vec4(0.5, 0, 0, 0), 0.5)) << "strict at the tolerance";
  EXPECT_TRUE(Vec4(0, 0, 0, 0).equal(Vec4(0.3, 0.3, 0, 0), 0.5)) << "distance 0.424";
}

TEST(Vec4, LerpIsSphericalInSinglePrecisionWithExactEnds) {
  const Vec4 a(2, 0, 0, 0), b(0, 3, 0, 0);
  expectComponents(Vec4::lerp(a, b, 0.0), a, 0.0, "t 0");
  expectComponents(Vec4::lerp(a, b, 1.0), b, 0.0, "t 1");
  expectComponents(Vec4::lerp(a, a, 0.5), Vec4(1, 0, 0, 0), 1e-15, "same direction, normalised");
  // acosf, sinf and a float reciprocal carry ~1e-7 relative error: 1e-6.
  expectComponents(Vec4::lerp(Vec4(1, 0, 0, 0), Vec4(0, 1, 0, 0), 0.25),
                   Vec4(0.9238795325112867, 0.3826834323650898, 0, 0), 1e-6, "quarter of a right angle");
  // b is negated onto the short arc, (1, -0.1); then c = 1/sqrt(1.01), so 1 - c = 0.00496 < 0.01:
  // weights 0.75 and 0.25 give (1, -0.025) normalised. Spherical weights would give y/x = -0.025015.
  expectComponents(Vec4::lerp(Vec4(1, 0, 0, 0), Vec4(-1, 0.1, 0, 0), 0.25),
                   Vec4(1, -0.025, 0, 0) * (1 / std::sqrt(1.000625)), 1e-15, "short arc, linear branch");
  EXPECT_TRUE(std::isnan(Vec4::lerp(Vec4(), Vec4(1, 0, 0, 0), 0.5).x)) << "a zero end gives NaN";
}

RC_GTEST_PROP(Vec4Property, LerpBetweenTheEndsHasUnitLength, ()) {
  const auto coordinate = rc::gen::map(rc::gen::inRange(-1000000, 1000001), [](int v) { return v / 1000.0; });
  const Vec4 a(*coordinate, *coordinate, *coordinate, *coordinate);
  const Vec4 b(*coordinate, *coordinate, *coordinate, *coordinate);
  RC_PRE(!a.isZero() && !b.isZero());
  const double t = *rc::gen::inRange(1, 1000) / 1000.0;
  // Normalised in double precision at the end: ~4 ulp, 1e-15.
  RC_ASSERT(std::fabs(Vec4::lerp(a, b, t).length() - 1.0) <= 1e-15);
}

}  // namespace
}  // namespace Quillmere::Velmira
