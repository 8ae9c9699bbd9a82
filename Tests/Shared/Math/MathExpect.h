#pragma once

#include <cmath>
#include <initializer_list>

#include <gtest/gtest.h>

#include "Math/Affine.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"

namespace Quillmere::Velmira {

// Element-wise comparison that names the first element that differed. Equal values
// (infinities included) match at tolerance 0; NaN never matches.
inline ::testing::AssertionResult elementsNear(const double* actual, const double* expected, int count,
                                               double tolerance) {
  for (int i = 0; i < count; ++i) {
    if (!(actual[i] == expected[i] || std::fabs(actual[i] - expected[i]) <= tolerance)) {
      return ::testing::AssertionFailure()
             << "element [" << i << "] is " << actual[i] << ", expected " << expected[i] << " within " << tolerance;
    }
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult near(std::initializer_list<double> actual, std::initializer_list<double> expected,
                                       double tolerance) {
  return elementsNear(actual.begin(), expected.begin(), static_cast<int>(actual.size()), tolerance);
}

using Expectation = ::testing::AssertionResult;
inline Expectation near(const Mat4& a, const Mat4& e, double t) { return elementsNear(a.m, e.m, 16, t); }
inline Expectation near(const Affine& a, const Affine& e, double t) { return elementsNear(a.m, e.m, 6, t); }
inline Expectation near(const Vec2& a, const Vec2& e, double t) { return near({a.x, a.y}, {e.x, e.y}, t); }
inline Expectation near(const Vec3& a, const Vec3& e, double t) { return near({a.x, a.y, a.z}, {e.x, e.y, e.z}, t); }
inline Expectation near(const Quaternion& a, const Quaternion& e, double t) {
  return near({a.x, a.y, a.z, a.w}, {e.x, e.y, e.z, e.w}, t);
}

}  // namespace Quillmere::Velmira
