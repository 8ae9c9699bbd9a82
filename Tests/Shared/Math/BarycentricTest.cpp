#include <gtest/gtest.h>

#include "Math/Barycentric.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

TEST(BarycentricTest, WeightsFollowTheVerticesInEveryDimension) {
  const struct {
    Vec2 point;
    double u, v, w;
    bool inside;
  } cases[] = {
      {Vec2(1, 0), 0, 1, 0, true},
      {Vec2(0, 1), 0, 0, 1, true},
      {Vec2(0.5, 0.5), 0, 0.5, 0.5, true},
      {Vec2(1, 1), -1, 1, 1, false},
  };
  for (const auto& test : cases) {
    const Barycentric weights(Vec2(0, 0), Vec2(1, 0), Vec2(0, 1), test.point);
    EXPECT_TRUE(near({weights.u, weights.v, weights.w}, {test.u, test.v, test.w}, 0.0))
        << "point " << test.point.x << ", " << test.point.y;
    EXPECT_EQ(weights.isInside(), test.inside) << "point " << test.point.x << ", " << test.point.y;
  }
  EXPECT_FALSE(Barycentric(Vec2(0, 0), Vec2(1, 1), Vec2(2, 2), Vec2(1, 1)).isInside())
      << "a degenerate triangle gives NaN weights";
  // Projected onto the triangle's plane; a colour's alpha counts like any channel.
  const Barycentric lifted(Vec3(0, 0, 0), Vec3(2, 0, 0), Vec3(0, 2, 0), Vec3(1, 1, 5));
  EXPECT_TRUE(near({lifted.u, lifted.v, lifted.w}, {0, 0.5, 0.5}, 0.0));
  const Barycentric colours(Color(0, 0, 0, 0), Color(0, 0, 0, 1), Color(1, 0, 0, 0), Color(0, 0, 0, 0.5));
  EXPECT_TRUE(near({colours.u, colours.v, colours.w}, {0.5, 0.5, 0}, 0.0));
}

TEST(BarycentricTest, InsideBoundsAreInclusiveAndInterpolateBlendsUnclamped) {
  EXPECT_TRUE(Barycentric(0, 0, 2).isInside()) << "w has no upper bound";
  EXPECT_TRUE(Barycentric(1, 1, 0).isInside());
  EXPECT_FALSE(Barycentric(-0.5, 1.5, 0).isInside());
  EXPECT_FALSE(Barycentric(0, 0, -1e-300).isInside());
  // Weights beyond 1 carry a channel past the scale.
  const Color blended = Barycentric(2, -1, 0).interpolate(Color(1, 1, 1, 1), Color(0, 0, 0, 1), Color());
  EXPECT_TRUE(near({blended.mRed, blended.mAlpha}, {2, 1}, 0.0));
}

}  // namespace
}  // namespace Quillmere::Velmira
