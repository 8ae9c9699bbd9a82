#pragma once

// What the maths tests share: every header of the library, the test frameworks, a
// field-by-field comparison for the records of doubles and a generator helper for
// the property tests.

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "Math/Affine.h"
#include "Math/Barycentric.h"
#include "Math/Box3.h"
#include "Math/Euler.h"
#include "Math/Float.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "Math/Range.h"
#include "Math/Rect.h"

namespace Quillmere::Velmira {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kPi = 3.141592653589793;

// Inside a property: a value drawn evenly from low to high in 2^30 steps.
inline double uniform(double low, double high) {
  const int steps = 1 << 30;
  return low + (high - low) * *rc::gen::inRange(0, steps + 1) / steps;
}

// A copy of value after change has run on it with args. change is a changing member, or a lambda where
// the member is overloaded: after(Vec2(), &Vec2::setLength, 5), after(Mat4(), [](Mat4& m) { m.setScale(2, 2, 2); }).
template <typename T, typename Change, typename... Args>
T after(T value, Change change, Args&&... args) {
  std::invoke(change, value, std::forward<Args>(args)...);
  return value;
}

// Compares the fields of a record made only of doubles (every maths type but Euler and
// Range) one by one, not through the type's own ==, whose tolerance rule is under test,
// and names the first that differs. Equal values, infinities too, match at tolerance 0,
// the default; NaN never matches.
template <typename T>
::testing::AssertionResult near(const T& actual, const T& expected, double tolerance = 0.0) {
  static_assert(std::is_trivially_copyable_v<T> && sizeof(T) % sizeof(double) == 0 && !std::is_same_v<T, Euler> &&
                !std::is_same_v<T, Range>);
  constexpr size_t kCount = sizeof(T) / sizeof(double);
  double a[kCount], e[kCount];
  std::memcpy(a, &actual, sizeof a);
  std::memcpy(e, &expected, sizeof e);
  for (size_t i = 0; i < kCount; ++i) {
    if (!(a[i] == e[i] || std::fabs(a[i] - e[i]) <= tolerance)) {
      return ::testing::AssertionFailure()
             << "field " << i << " is " << a[i] << ", not " << e[i] << " within " << tolerance;
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace Quillmere::Velmira
