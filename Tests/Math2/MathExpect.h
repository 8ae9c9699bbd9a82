#pragma once

#include <gtest/gtest.h>

#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "Math/Vec2.h"
#include "Math/Vec3.h"

namespace Quillmere::Velmira {

// Comparisons that name the element that differed, for EXPECT_TRUE.
::testing::AssertionResult matricesNear(const Mat4& actual, const Mat4& expected, double tolerance);
::testing::AssertionResult elementsAre(const double* actual, const double* expected, int count,
                                       double tolerance);
::testing::AssertionResult vectorsNear(const Vec3& actual, const Vec3& expected, double tolerance);
::testing::AssertionResult vectorsNear(const Vec2& actual, const Vec2& expected, double tolerance);
::testing::AssertionResult quaternionsNear(const Quaternion& actual, const Quaternion& expected,
                                           double tolerance);

// Largest element-wise difference, for property checks that report a single number.
double maxDifference(const Mat4& a, const Mat4& b);

} // namespace Quillmere::Velmira
