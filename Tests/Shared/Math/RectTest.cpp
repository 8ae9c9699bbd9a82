#include "Math/Rect.h"

#include <limits>

#include <gtest/gtest.h>

#include "Math/Range.h"
#include "MathPrinters.h"

namespace Quillmere::Velmira {
namespace {

const Rect kTen(0, 0, 10, 10);

TEST(Rect, ContainmentIncludesEveryEdgeIntersectsIsStrictAndTouchesIsNot) {
  const struct {
    Vec2 p;
    bool inside;
  } points[] = {{{10, 10}, true}, {{0, 0}, true}, {{10.0001, 5}, false}, {{5, -1e-9}, false}, {{-1e-9, 5}, false}};
  for (const auto& c : points) {
    EXPECT_EQ(kTen.containsPoint(c.p), c.inside) << "point " << c.p;
  }
  EXPECT_TRUE(kTen.containsRect(kTen)) << "a rectangle contains itself";
  EXPECT_FALSE(kTen.containsRect(Rect(1, 1, 10, 9)));
  EXPECT_FALSE(Rect(std::numeric_limits<double>::quiet_NaN(), 0, 10, 10).containsPoint(Vec2(5, 5)));
  const struct {
    const char* name;
    Rect other;
    bool intersects, touches;
  } others[] = {
      {"shared edge", {10, 0, 10, 10}, false, true},
      {"shared corner", {10, 10, 5, 5}, false, true},
      {"overlap", {5, 5, 10, 10}, true, true},
      {"apart", {11, 0, 1, 1}, false, false},
  };
  for (const auto& c : others) {
    EXPECT_EQ(kTen.intersects(c.other), c.intersects) << c.name;
    EXPECT_EQ(kTen.touches(c.other), c.touches) << c.name;
  }
}

TEST(Rect, IntersectUniteAndIncludeWorkOnEdgesAndKeepNegativeSizes) {
  EXPECT_EQ(kTen.intersect(Rect(20, 20, 5, 5)), Rect(20, 20, -10, -10)) << "disjoint: negative size";
  EXPECT_EQ(kTen.intersect(Rect(5, -5, 10, 10)), Rect(5, 0, 5, 5));
  EXPECT_EQ(Rect(5, 5, 1, 1).unite(Rect()), Rect(0, 0, 6, 6)) << "an empty rectangle pulls to the origin";
  Rect r = kTen.getInclude(Vec2(20, -5));
  EXPECT_EQ(r, Rect(0, -5, 20, 15));
  r.include(Vec2(3, 3));
  EXPECT_EQ(r, Rect(0, -5, 20, 15)) << "a point inside changes nothing";
}

TEST(Rect, EdgeSettersMoveOrResize) {
  const struct {
    const char* name;
    void (*apply)(Rect&);
    Rect expected;
  } cases[] = {
      {"setRight resizes", [](Rect& r) { r.setRight(5); }, {0, 0, 5, 10}},
      {"setBottom resizes", [](Rect& r) { r.setBottom(4.0f); }, {0, 0, 10, 4}},
      {"setCenter moves", [](Rect& r) { r.setCenter(Vec2(1, 2)); }, {-4, -3, 10, 10}},
  };
  for (const auto& c : cases) {
    Rect r = kTen;
    c.apply(r);
    EXPECT_EQ(r, c.expected) << c.name;
  }
  Rect big(0, 1, 1, 1);
  big.setBottom(16777217.0f);  // rounds to 16777216 in single precision
  EXPECT_EQ(big.w, 16777215.0);
}

TEST(Rect, ExpandAndScaleGrowEverySideBySinglePrecisionAmounts) {
  EXPECT_EQ(kTen.expand(1.5f), Rect(-1.5, -1.5, 13, 13));
  EXPECT_EQ(kTen.expand(0.1f).x, -0.10000000149011612) << "the margin is single precision";
  EXPECT_EQ(kTen.scale(2, 2), Rect(-10, -10, 30, 30)) << "width (2*sx - 1) * z";
  EXPECT_EQ(kTen.scale(0, 0), Rect(10, 10, -10, -10));
}

TEST(Rect, OriginAndSizeEmptyOnlyAtZeroSizeAndEqualPerField) {
  EXPECT_EQ(Rect(1, 2, 4, 6).getBottomRight(), Vec2(5, 8)) << "origin and size, not two corners";
  EXPECT_TRUE(Rect(3, 3, 0, 0).isEmpty());
  EXPECT_FALSE(Rect(0, 0, 0, 5).isEmpty());
  EXPECT_FALSE(Rect(0, 0, -1, -1).isEmpty());
  const Rect a(0, 0, 0, 0), b(9e-13, 9e-13, 9e-13, 9e-13);
  EXPECT_TRUE(a == b) << "each field within 1e-12";
  EXPECT_FALSE(static_cast<const Vec4&>(a) == static_cast<const Vec4&>(b)) << "the vector rule differs";
  const Rect n(std::numeric_limits<double>::quiet_NaN(), 0, 1, 1);
  EXPECT_TRUE(n != n);
}

TEST(Range, ConstructorsFillStartAndLength) {
  const struct {
    const char* name;
    Range range;
    int start, length;
  } cases[] = {{"full", Range(true), 0, 2147483647}, {"not full", Range(false), 0, 0}, {"start only", Range(7), 7, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.range.start, c.start) << c.name;
    EXPECT_EQ(c.range.length, c.length) << c.name;
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
