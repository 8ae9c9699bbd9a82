#include "MathExpect.h"

#include <cmath>

namespace Quillmere::Velmira {

namespace {

bool near(double actual, double expected, double tolerance)
{
    // Bitwise-equal values (infinities included) match; NaN never does.
    return actual == expected || std::fabs(actual - expected) <= tolerance;
}

} // namespace

::testing::AssertionResult elementsAre(const double* actual, const double* expected, int count,
                                       double tolerance)
{
    for (int i = 0; i < count; ++i) {
        if (!near(actual[i], expected[i], tolerance)) {
            return ::testing::AssertionFailure()
                   << "element [" << i << "] is " << actual[i] << ", expected " << expected[i]
                   << " within " << tolerance;
        }
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult matricesNear(const Mat4& actual, const Mat4& expected, double tolerance)
{
    return elementsAre(actual.m, expected.m, 16, tolerance);
}

::testing::AssertionResult vectorsNear(const Vec3& actual, const Vec3& expected, double tolerance)
{
    const double a[3] = {actual.x, actual.y, actual.z};
    const double e[3] = {expected.x, expected.y, expected.z};
    return elementsAre(a, e, 3, tolerance) << " (components x, y, z)";
}

::testing::AssertionResult vectorsNear(const Vec2& actual, const Vec2& expected, double tolerance)
{
    const double a[2] = {actual.x, actual.y};
    const double e[2] = {expected.x, expected.y};
    return elementsAre(a, e, 2, tolerance) << " (components x, y)";
}

::testing::AssertionResult quaternionsNear(const Quaternion& actual, const Quaternion& expected,
                                           double tolerance)
{
    const double a[4] = {actual.x, actual.y, actual.z, actual.w};
    const double e[4] = {expected.x, expected.y, expected.z, expected.w};
    return elementsAre(a, e, 4, tolerance) << " (components x, y, z, w)";
}

double maxDifference(const Mat4& a, const Mat4& b)
{
    double worst = 0.0;
    for (int i = 0; i < 16; ++i) {
        worst = std::fmax(worst, std::fabs(a.m[i] - b.m[i]));
    }
    return worst;
}

} // namespace Quillmere::Velmira
