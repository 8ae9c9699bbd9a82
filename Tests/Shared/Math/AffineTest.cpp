#include <cmath>

#include <gtest/gtest.h>

#include "Math/Affine.h"
#include "Math/Float.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

Affine scaled(double x, double y) {
  Affine a(true);
  a.setScale(x, y);
  return a;
}

TEST(AffineTest, ConstructorArgumentsRunDownTheColumns) {
  const Affine a(1, 2, 3, 4, 5, 6);
  EXPECT_TRUE(near({a.m[0], a.m[1], a.m[2], a.m[3], a.m[4], a.m[5]}, {1, 3, 5, 2, 4, 6}, 0.0));
  EXPECT_TRUE(near(a.getTransform(Vec2(1, 0)), Vec2(6, 8), 0.0));
  EXPECT_TRUE(near(Affine(true), Affine(1, 0, 0, 1, 0, 0), 0.0));

  const Affine swap(0, 1, 1, 0, 0, 0);  // (px, py) -> (py, px)
  double x = 1, y = 2;
  swap.transform(x, y);
  EXPECT_TRUE(near({x, y}, {2, 1}, 0.0)) << "y must come from the old x";
}

TEST(AffineTest, MultiplyAppliesTheArgumentAfterAndPremultiplyBefore) {
  const Affine a(2, 0, 0, 3, 1, 1);   // scale (2, 3), then move (1, 1)
  const Affine b(0, 1, -1, 0, 5, 0);  // quarter turn, then move (5, 0)
  const Vec2 p(1, 2);
  Affine ab = a, ba = a;
  ab.multiply(b);
  ba.premultiply(b);
  EXPECT_TRUE(near(ab.getTransform(p), b.getTransform(a.getTransform(p)), 0.0));
  EXPECT_TRUE(near(ba.getTransform(p), a.getTransform(b.getTransform(p)), 0.0));
  // Extenders act first: the move by 1 is doubled by the scale that follows it.
  Affine extended = scaled(2, 2);
  extended.translate(1, 0);
  EXPECT_TRUE(near(extended.getTransform(Vec2()), Vec2(2, 0), 0.0));
}

TEST(AffineTest, AnglesAreInDegreesAndLayerPropertiesLandTheAnchorOnThePosition) {
  // kDegToRad = 0.017453292519943 falls short of pi/180: 90 degrees come out
  // 2.7e-14 radians short, and so does the cosine of the quarter turn.
  const struct {
    const char* name;
    void (Affine::*setter)(double);
    double angle;
    Vec2 from, to;
  } cases[] = {
      {"setRotate(90)", &Affine::setRotate, 90, Vec2(1, 0), Vec2(0, 1)},
      {"setSkewX(45)", &Affine::setSkewX, 45, Vec2(0, 1), Vec2(1, 1)},
      {"setSkewY(45)", &Affine::setSkewY, 45, Vec2(1, 0), Vec2(1, 1)},
  };
  for (const auto& test : cases) {
    Affine a(false);
    (a.*test.setter)(test.angle);
    EXPECT_TRUE(near(a.getTransform(test.from), test.to, 1e-13)) << test.name;
  }
  Affine layer(true);
  layer.set(Vec2(10, 20), Vec2(100, 200), Vec2(2, 3), 30);
  const double c = std::cos(30 * kDegToRad), s = std::sin(30 * kDegToRad);
  EXPECT_TRUE(near(layer.getTransform(Vec2(10, 20)), Vec2(100, 200), 1e-13));
  EXPECT_TRUE(near(layer.getTransform(Vec2(11, 20)), Vec2(100 + 2 * c, 200 + 2 * s), 1e-13));
  EXPECT_TRUE(near(layer.getTransform(Vec2(10, 21)), Vec2(100 - 3 * s, 200 + 3 * c), 1e-13));
}

TEST(AffineTest, InverseTreatsDeterminantsBelowOneMillionthAsSingular) {
  const struct {
    const char* name;
    Affine matrix;
    bool invertible;
  } cases[] = {
      {"zero", Affine(false), false},
      {"scale 0.0001: det 1e-08", scaled(0.0001, 0.0001), false},
      {"det 9.99e-07", scaled(0.999e-06, 1), false},
      {"det exactly 1e-06", scaled(1e-06, 1), true},
      {"det exactly -1e-06", scaled(-1e-06, 1), true},
  };
  const Affine untouched(1, 2, 3, 4, 5, 6);
  for (const auto& test : cases) {
    Affine out = untouched;
    EXPECT_EQ(test.matrix.inverse(out), test.invertible) << test.name;
    if (!test.invertible) {
      EXPECT_TRUE(near(out, untouched, 0.0)) << test.name << ": out untouched";
      EXPECT_TRUE(near(test.matrix.getInverse(), Affine(true), 0.0)) << test.name;
    }
  }
  // Scale (2, 4) then move (6, 8), undone by hand.
  EXPECT_TRUE(near(Affine(2, 0, 0, 4, 6, 8).getInverse(), Affine(0.5, 0, 0, 0.25, -3, -2), 0.0));
}

TEST(AffineTest, AverageScaleIsRoundedToFourDecimalsInSinglePrecision) {
  Affine rotation(true);
  rotation.setRotate(33);
  const struct {
    const char* name;
    Affine matrix;
    double expected;
  } cases[] = {
      {"identity", Affine(true), 1.0},
      {"scale (1, 3)", scaled(1, 3), 2.0},
      {"scale 1/3: the float 0.3333", scaled(1.0 / 3, 1.0 / 3), 0.33329999446868896},
      {"rotation alone", rotation, 1.0},
      {"rows (3, 0) and (4, 0), not columns", Affine(3, 4, 0, 0, 0, 0), 3.5},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(test.matrix.averageScale(), test.expected) << test.name;
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
