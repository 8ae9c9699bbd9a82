#include "Math/Float.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace Quillmere::Velmira {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Float, DegreeConstantIsTheShortLiteralNotPiOver180)
{
    EXPECT_EQ(kDegToRad, 0.017453292519943);
    EXPECT_NE(kDegToRad, M_PI / 180.0) << "kDegToRad must keep its shortened literal";
    EXPECT_EQ(kRadToDeg, 180.0 / M_PI);
    EXPECT_EQ(kTolerance, 1e-12);
}

struct EqualCase {
    double a;
    double b;
    double tolerance;
    bool expected;
};

TEST(Float, EqualIsInclusiveAtTheToleranceAndFalseForNaN)
{
    const EqualCase cases[] = {
        {0.5, 0.25, 0.25, true},        // difference exactly the tolerance
        {0.0, 1e-12, 1e-12, true},      // default tolerance, at the bound
        {0.0, -1e-12, 1e-12, true},
        {0.0, 1.1e-12, 1e-12, false},
        {1.0, 1.0 + 1e-12, 1e-12, false},  // 1 + 1e-12 rounds to 1 + 1.0000889e-12
        {1e9, 1e9 + 1e-6, 1e-12, false},   // absolute, never scaled by the operands
        {kNaN, kNaN, 1.0, false},
        {kNaN, 0.0, 1.0, false},
        {3.0, 3.0, 0.0, true},
    };
    for (const EqualCase& c : cases) {
        EXPECT_EQ(floatEqual(c.a, c.b, c.tolerance), c.expected)
            << "floatEqual(" << c.a << ", " << c.b << ", " << c.tolerance << ")";
    }
}

TEST(Float, NegligibleIsStrictAtBothEnds)
{
    const struct {
        double v;
        bool expected;
    } cases[] = {
        {0.0, true}, {9.9e-13, true}, {-9.9e-13, true}, {1e-12, false}, {-1e-12, false}, {kNaN, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(floatNegligible(c.v), c.expected) << "floatNegligible(" << c.v << ")";
    }
}

TEST(Float, SignAndAbsHandleZeroAndNaN)
{
    const struct {
        double v;
        int sign;
    } cases[] = {{-0.5, -1}, {2.0, 1}, {0.0, 0}, {-0.0, 0}, {kNaN, 0}, {-1e-300, -1}};
    for (const auto& c : cases) {
        EXPECT_EQ(floatSign(c.v), c.sign) << "floatSign(" << c.v << ")";
    }
    EXPECT_EQ(floatAbs(-2.5), 2.5);
    EXPECT_EQ(floatAbs(2.5), 2.5);
}

}  // namespace
}  // namespace Quillmere::Velmira
