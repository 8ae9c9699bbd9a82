#include "Math/Float.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace Quillmere::Velmira {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Float, DegreeConstantIsTheShortLiteralNotPiOver180) {
  EXPECT_EQ(kDegToRad, 0.017453292519943);
  EXPECT_EQ(kRadToDeg, 180.0 / M_PI);
  EXPECT_EQ(kTolerance, 1e-12);
}

TEST(Float, EqualIsInclusiveAndAbsoluteNegligibleIsStrict) {
  const struct {
    double a, b, tolerance;
    bool expected;
  } equal[] = {
      {0.5, 0.25, 0.25, true},         {0.0, -1e-12, 1e-12, true},
      {0.0, 1.1e-12, 1e-12, false},    {1.0, 1.0 + 1e-12, 1e-12, false},  // 1 + 1e-12 rounds to 1 + 1.0000889e-12
      {1e9, 1e9 + 1e-6, 1e-12, false},                                    // absolute, never scaled by the operands
      {kNaN, kNaN, 1.0, false},        {kNaN, 0.0, 1.0, false},
  };
  for (const auto& c : equal) {
    EXPECT_EQ(floatEqual(c.a, c.b, c.tolerance), c.expected)
        << "floatEqual(" << c.a << ", " << c.b << ", " << c.tolerance << ")";
  }
  EXPECT_TRUE(floatEqual(0.0, 1e-12)) << "the default tolerance is inclusive too";
  const struct {
    double v;
    bool negligible;
    int sign;
  } single[] = {{0.0, true, 0},    {-0.0, true, 0},     {9.9e-13, true, 1}, {-9.9e-13, true, -1},
                {1e-12, false, 1}, {-1e-12, false, -1}, {kNaN, false, 0}};
  for (const auto& c : single) {
    EXPECT_EQ(floatNegligible(c.v), c.negligible) << "floatNegligible(" << c.v << ")";
    EXPECT_EQ(floatSign(c.v), c.sign) << "floatSign(" << c.v << ")";
  }
  EXPECT_EQ(floatAbs(-2.5), 2.5);
}

}  // namespace
}  // namespace Quillmere::Velmira
