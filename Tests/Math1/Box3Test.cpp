#include "Math/Box3.h"

#include <gtest/gtest.h>

#include "MathPrinters.h"

namespace Quillmere::Velmira {
namespace {

constexpr double kLargest = 1.7976931348623157e+308;
constexpr double kSmallestNormal = 2.2250738585072014e-308;

void expectCorners(const Box3& box, const Vec3& min, const Vec3& max, const char* what)
{
    EXPECT_EQ(box.min.x, min.x) << what << " min.x";
    EXPECT_EQ(box.min.y, min.y) << what << " min.y";
    EXPECT_EQ(box.min.z, min.z) << what << " min.z";
    EXPECT_EQ(box.max.x, max.x) << what << " max.x";
    EXPECT_EQ(box.max.y, max.y) << what << " max.y";
    EXPECT_EQ(box.max.z, max.z) << what << " max.z";
}

void expectEmptyState(const Box3& box, const char* what)
{
    expectCorners(box, Vec3(kLargest), Vec3(kSmallestNormal), what);
    EXPECT_TRUE(box.isEmpty()) << what;
}

const Box3 kUnit(Vec3(0, 0, 0), Vec3(1, 1, 1));

TEST(Box3, EmptyStateHasTheSmallestPositiveNormalAsMax)
{
    expectEmptyState(Box3(), "Box3()");
    Box3 box = kUnit;
    box.makeEmpty();
    expectEmptyState(box, "makeEmpty");
    EXPECT_EQ(Box3().getSize().x, -kLargest) << "no test for the empty state";
}

TEST(Box3, EmptinessIsInvertedCornersOrTheOrigin)
{
    const struct {
        const char* name;
        Box3 box;
        bool empty;
    } cases[] = {
        {"point at (1,1,1)", {Vec3(1, 1, 1), Vec3(1, 1, 1)}, false},
        {"point at the origin", {Vec3(0, 0, 0), Vec3(0, 0, 0)}, true},
        {"flat box from the origin", {Vec3(0, 0, 0), Vec3(1, 0, 1)}, false},
        {"inverted z", {Vec3(0, 0, 2), Vec3(1, 1, 1)}, true},
        {"unit", kUnit, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.box.isEmpty(), c.empty) << c.name;
    }
}

TEST(Box3, GrowingFromEmptyKeepsTheMaxFloorButSetFromPointsDoesNot)
{
    Vec3 points[] = {Vec3(-1, -2, -3), Vec3(-4, -5, -6)};
    Box3 fromPoints;
    fromPoints.setFromPoints(points, 2);
    expectCorners(fromPoints, Vec3(-4, -5, -6), Vec3(-1, -2, -3), "setFromPoints");

    float floats[] = {-1, -2, -3};
    Box3 fromArray;
    fromArray.setFromArray(floats, 3);
    expectCorners(fromArray, Vec3(-1, -2, -3), Vec3(kSmallestNormal), "setFromArray");

    Box3 grown;
    grown.expandByPoint(Vec3(-1, -2, -3));
    expectCorners(grown, Vec3(-1, -2, -3), Vec3(kSmallestNormal), "expandByPoint");

    Box3 united(Vec3(-2, -2, -2), Vec3(-1, -1, -1));
    united.unionBox(Box3());
    expectCorners(united, Vec3(-2, -2, -2), Vec3(kSmallestNormal), "unionBox with an empty box");
}

TEST(Box3, SetFromArrayCountsFloatsAndWidensThem)
{
    float floats[] = {0.1f, 5, -1, 2, -3, 4};
    Box3 box;
    box.setFromArray(floats, 6);
    expectCorners(box, Vec3(0.10000000149011612, -3, -1), Vec3(2, 5, 4), "two points");
    box.setFromArray(floats, 0);
    expectEmptyState(box, "count 0");
    Box3 none(kUnit);
    none.setFromPoints(nullptr, 3);
    expectEmptyState(none, "null points");
    Vec3 ignored[] = {Vec3(5, 5, 5)};
    none = kUnit;
    none.setFromPoints(ignored, 0);
    expectEmptyState(none, "zero points");
}

TEST(Box3, ContainmentAndOverlapIncludeTheFaces)
{
    EXPECT_TRUE(kUnit.containsPoint(Vec3(1, 1, 1))) << "corner";
    EXPECT_TRUE(kUnit.containsPoint(Vec3(0, 0.5, 1)));
    EXPECT_FALSE(kUnit.containsPoint(Vec3(0.5, 1.0000001, 0.5)));
    EXPECT_TRUE(kUnit.containsBox(kUnit));
    EXPECT_FALSE(kUnit.containsBox(Box3(Vec3(0.5, 0.5, 0.5), Vec3(1.5, 1, 1))));
    EXPECT_TRUE(kUnit.intersectsBox(Box3(Vec3(1, 0, 0), Vec3(2, 1, 1)))) << "shared face";
    EXPECT_FALSE(kUnit.intersectsBox(Box3(Vec3(1.1, 0, 0), Vec3(2, 1, 1))));
}

TEST(Box3, IntersectsChangesTheObjectAndEmptiesDisjointBoxes)
{
    Box3 overlap = kUnit;
    overlap.intersects(Box3(Vec3(0.5, -1, 0.25), Vec3(2, 0.5, 0.75)));
    expectCorners(overlap, Vec3(0.5, 0, 0.25), Vec3(1, 0.5, 0.75), "overlap");

    Box3 apart = kUnit;
    apart.intersects(Box3(Vec3(2, 2, 2), Vec3(3, 3, 3)));
    expectEmptyState(apart, "disjoint");

    Box3 origin(Vec3(-1, -1, -1), Vec3(0, 0, 0));
    origin.intersects(kUnit);
    expectEmptyState(origin, "meeting only at the origin");
}

TEST(Box3, DistancesParametersAndGrowth)
{
    EXPECT_EQ(kUnit.distanceToPoint(Vec3(2, 0, 0)), 1.0);
    EXPECT_EQ(kUnit.distanceToPoint(Vec3(0.5, 0.5, 0.5)), 0.0);
    const Box3 tall(Vec3(0, 0, 0), Vec3(1, 2, 4));
    EXPECT_EQ(tall.getParameter(Vec3(0.25, 1, 4)), Vec3(0.25, 0.5, 1));

    Box3 grown = kUnit;
    grown.expandByScalar(1);
    expectCorners(grown, Vec3(-1, -1, -1), Vec3(2, 2, 2), "expandByScalar(1)");
    grown = kUnit;
    grown.expandByScalar(0.1f);
    EXPECT_EQ(grown.max.x, 1.10000000149011612) << "the scalar is single precision, widened";

    Box3 centred;
    centred.setFromCenterAndSize(Vec3(1, 1, 1), Vec3(2, 4, 6));
    expectCorners(centred, Vec3(0, -1, -2), Vec3(2, 3, 4), "setFromCenterAndSize");
}

TEST(Box3, EqualityUsesTheVectorTolerance)
{
    EXPECT_TRUE(kUnit == Box3(Vec3(1e-12, 0, 0), Vec3(1, 1, 1 - 1e-12)));
    EXPECT_FALSE(kUnit == Box3(Vec3(0, 0, 0), Vec3(1, 1, 1 + 2e-12)));
}

}  // namespace
}  // namespace Quillmere::Velmira
