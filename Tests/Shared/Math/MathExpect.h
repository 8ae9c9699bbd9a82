#pragma once

// What the maths tests share: every header of the library, the test frameworks, a
// field-by-field comparison for the records of doubles and a generator helper for
// the property tests. NAN, INFINITY and M_PI come from <cmath>.

#include <cmath>
#include <cstring>
#include <functional>
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

using Ints = std::vector<int>;
using Doubles = std::vector<double>;

// Inside a property: a value drawn evenly from low to high in 2^30 steps.
inline double uniform(double low, double high) {
  return low + (high - low) * *rc::gen::inRange(0, (1 << 30) + 1) / (1 << 30);
}

// A copy of value after change has run on it with args. change is a changing member, or a lambda where
// the member is overloaded: after(Vec2(), &Vec2::setLength, 5), after(Mat4(), [](Mat4& m) { m.setScale(2, 2, 2); }).
template <typename T, typename Change, typename... Args>
T after(T value, Change change, Args... args) {
  std::invoke(change, value, args...);
  return value;
}

// Compares the fields of a record made only of doubles (every maths type but Euler and
// Range) one by one, not through the type's own ==, whose tolerance rule is under test,
// and names the first that differs. Equal values, infinities too, match at tolerance 0,
// the default; NaN never matches.
template <typename T>
::testing::AssertionResult near(const T& actual, const T& expected, double tolerance = 0.0) {
  double a[sizeof(T) / sizeof(double)], e[sizeof(T) / sizeof(double)];
  std::memcpy(a, &actual, sizeof a);
  std::memcpy(e, &expected, sizeof e);
  for (size_t i = 0; i < std::size(a); ++i) {
    if (!(a[i] == e[i] || std::fabs(a[i] - e[i]) <= tolerance)) {
      return ::testing::AssertionFailure()
             << "field " << i << " is " << a[i] << ", not " << e[i] << " within " << tolerance;
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace Quillmere::Velmira
