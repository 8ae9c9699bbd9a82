#include "Math/Box3.h"

#include <gtest/gtest.h>

#include "MathPrinters.h"

namespace Quillmere::Velmira {
namespace {

constexpr double kLargest = 1.7976931348623157e+308;
constexpr double kSmallestNormal = 2.2250738585072014e-308;
const Vec3 kFloor(kSmallestNormal);
const Box3 kUnit(Vec3(0, 0, 0), Vec3(1, 1, 1));

// Exact corners: Vec3's == would take the empty box's max for 0.
void expectCorners(const Box3& box, const Vec3& min, const Vec3& max, const char* what) {
  const double actual[6] = {box.min.x, box.min.y, box.min.z, box.max.x, box.max.y, box.max.z};
  const double expected[6] = {min.x, min.y, min.z, max.x, max.y, max.z};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(actual[i], expected[i]) << what << (i < 3 ? " min." : " max.") << "xyz"[i % 3];
  }
}

void expectEmptyState(const Box3& box, const char* what) {
  expectCorners(box, Vec3(kLargest), kFloor, what);
  EXPECT_TRUE(box.isEmpty()) << what;
}

TEST(Box3, EmptyStateHasTheSmallestPositiveNormalAsMax) {
  expectEmptyState(Box3(), "Box3()");
  Box3 box = kUnit;
  box.makeEmpty();
  expectEmptyState(box, "makeEmpty");
  EXPECT_EQ(Box3().getSize().x, -kLargest) << "no test for the empty state";
  const struct {
    const char* name;
    Box3 box;
    bool empty;
  } cases[] = {
      {"point at (1,1,1)", {Vec3(1, 1, 1), Vec3(1, 1, 1)}, false},
      {"point at the origin", {Vec3(0, 0, 0), Vec3(0, 0, 0)}, true},
      {"flat box from the origin", {Vec3(0, 0, 0), Vec3(1, 0, 1)}, false},
      {"inverted z", {Vec3(0, 0, 2), Vec3(1, 1, 1)}, true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.box.isEmpty(), c.empty) << c.name;
  }
}

TEST(Box3, GrowingFromEmptyKeepsTheMaxFloorButSetFromPointsDoesNot) {
  Vec3 points[] = {Vec3(-1, -2, -3), Vec3(-4, -5, -6)};
  Box3 box;
  box.setFromPoints(points, 2);
  expectCorners(box, Vec3(-4, -5, -6), Vec3(-1, -2, -3), "setFromPoints");
  box.setFromPoints(nullptr, 3);
  expectEmptyState(box, "null points");
  box = kUnit;
  box.setFromPoints(points, 0);
  expectEmptyState(box, "zero points");

  float floats[] = {0.1f, 5, -1, -1, -3, -4};  // a count of floats, widened
  box.setFromArray(floats, 6);
  expectCorners(box, Vec3(-1, -3, -4), Vec3(0.10000000149011612, 5, kSmallestNormal), "setFromArray");
  box.setFromArray(floats, 0);
  expectEmptyState(box, "count 0");

  box = Box3();
  box.expandByPoint(Vec3(-1, -2, -3));
  expectCorners(box, Vec3(-1, -2, -3), kFloor, "expandByPoint");
  box.set(Vec3(-2, -2, -2), Vec3(-1, -1, -1));
  box.unionBox(Box3());
  expectCorners(box, Vec3(-2, -2, -2), kFloor, "unionBox with an empty box");
}

TEST(Box3, ContainmentAndOverlapIncludeTheFaces) {
  EXPECT_TRUE(kUnit.containsPoint(Vec3(1, 1, 1))) << "corner";
  EXPECT_TRUE(kUnit.containsPoint(Vec3(0, 0.5, 1)));
  EXPECT_FALSE(kUnit.containsPoint(Vec3(0.5, 1.0000001, 0.5)));
  EXPECT_TRUE(kUnit.containsBox(kUnit));
  EXPECT_FALSE(kUnit.containsBox(Box3(Vec3(0.5, 0.5, 0.5), Vec3(1.5, 1, 1))));
  EXPECT_TRUE(kUnit.intersectsBox(Box3(Vec3(1, 0, 0), Vec3(2, 1, 1)))) << "shared face";
  EXPECT_TRUE(Box3(Vec3(1, 0, 0), Vec3(2, 1, 1)).intersectsBox(kUnit)) << "shared face, seen from the other box";
  EXPECT_FALSE(kUnit.intersectsBox(Box3(Vec3(1.1, 0, 0), Vec3(2, 1, 1))));
}

TEST(Box3, IntersectsChangesTheObjectAndEmptiesDisjointBoxes) {
  Box3 box = kUnit;
  box.intersects(Box3(Vec3(0.5, -1, 0.25), Vec3(2, 0.5, 0.75)));
  expectCorners(box, Vec3(0.5, 0, 0.25), Vec3(1, 0.5, 0.75), "overlap");
  box = kUnit;
  box.intersects(Box3(Vec3(2, 2, 2), Vec3(3, 3, 3)));
  expectEmptyState(box, "disjoint");
  box.set(Vec3(-1, -1, -1), Vec3(0, 0, 0));
  box.intersects(kUnit);
  expectEmptyState(box, "meeting only at the origin");
}

TEST(Box3, MeasuresAndGrowthUseTheCorners) {
  EXPECT_EQ(kUnit.distanceToPoint(Vec3(2, 0, 0)), 1.0);
  EXPECT_EQ(Box3(Vec3(0, 0, 0), Vec3(1, 2, 4)).getParameter(Vec3(0.25, 1, 4)), Vec3(0.25, 0.5, 1));
  Box3 grown = kUnit;
  grown.expandByScalar(0.1f);
  expectCorners(grown, Vec3(-0.10000000149011612), Vec3(1.10000000149011612), "expandByScalar, single precision");
  grown.setFromCenterAndSize(Vec3(1, 1, 1), Vec3(2, 4, 6));
  expectCorners(grown, Vec3(0, -1, -2), Vec3(2, 3, 4), "setFromCenterAndSize");
  EXPECT_TRUE(kUnit == Box3(Vec3(1e-12, 0, 0), Vec3(1, 1, 1 - 1e-12))) << "Vec3's inclusive tolerance";
  EXPECT_FALSE(kUnit == Box3(Vec3(0, 0, 0), Vec3(1, 1, 1 + 2e-12)));
}

}  // namespace
}  // namespace Quillmere::Velmira
