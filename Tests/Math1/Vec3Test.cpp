#include "Math/Vec3.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "MathPrinters.h"

namespace Quillmere::Velmira {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// Every element written here, so the test depends on no Mat4 operation.
Mat4 matrixOf(const double (&elements)[16])
{
    Mat4 m(false);
    for (int i = 0; i < 16; ++i) {
        m.m[i] = elements[i];
    }
    return m;
}

Mat4 translation(double tx, double ty, double tz)
{
    return matrixOf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, tx, ty, tz, 1});
}

Quaternion quaternionOf(double x, double y, double z, double w)
{
    Quaternion q;
    q.x = x;
    q.y = y;
    q.z = z;
    q.w = w;
    return q;
}

rc::Gen<double> coordinate()
{
    return rc::gen::map(rc::gen::inRange(-1000000, 1000001), [](int v) { return v / 1000.0; });
}

TEST(Vec3, ZeroLengthGoesAlongX)
{
    Vec3 v;
    v.normalize();
    EXPECT_EQ(v, Vec3(1, 0, 0));
    Vec3 w;
    w.setLength(3);
    EXPECT_EQ(w, Vec3(3, 0, 0));
    Vec3 d(5, 6, 7);
    d.transformDirection(matrixOf({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 1}));
    EXPECT_EQ(d, Vec3(1, 0, 0)) << "a zero direction normalises to x";
    EXPECT_TRUE(std::isnan(Vec3().angleBetween(Vec3(1, 0, 0))));
    EXPECT_EQ(Vec3(1, 0, 0).angleBetween(Vec3(0, 1, 0)), 1.5707963267948966) << "radians, unlike Vec2";
}

TEST(Vec3, IndexedSetSendsEveryOtherIndexToZ)
{
    const struct {
        int index;
        Vec3 expected;
    } cases[] = {{0, {9, 0, 0}}, {1, {0, 9, 0}}, {2, {0, 0, 9}}, {5, {0, 0, 9}}, {-1, {0, 0, 9}}};
    for (const auto& c : cases) {
        Vec3 v;
        v.set(c.index, 9.0);
        EXPECT_EQ(v, c.expected) << "index " << c.index;
    }
}

TEST(Vec3, LargestAbsComponentGivesTiesToTheLater)
{
    const struct {
        Vec3 v;
        int index;
    } cases[] = {{{-3, 2, 1}, 0}, {{1, 1, 0}, 1}, {{1, 0, 1}, 2}, {{0, 1, 1}, 2},
                 {{0, 0, 0}, 2},  {{0, -5, 1}, 1}, {{1, 2, -3}, 2}};
    for (const auto& c : cases) {
        EXPECT_EQ(c.v.largestAbsComponent(), c.index) << "(" << c.v.x << ", " << c.v.y << ", " << c.v.z << ")";
    }
}

TEST(Vec3, OrthoPicksTheAxisFromTheObjectNotFromV)
{
    const struct {
        Vec3 object;
        Vec3 v;
        Vec3 expected;
    } cases[] = {
        {{1, 0, 0}, {0, 1, 0}, {1, 0, 0}},  // largest x: axis z, (0,1,0) x (0,0,1)
        {{0, 5, 0}, {0, 0, 1}, {0, 1, 0}},  // largest y: axis x
        {{0, 0, 3}, {1, 0, 0}, {0, 0, 1}},  // largest z: axis y
        {{1, 0, 0}, {0, 0, 2}, {1, 0, 0}},  // v along the axis: zero cross, falls back to x
    };
    for (const auto& c : cases) {
        Vec3 o = c.object;
        o.ortho(c.v);
        EXPECT_EQ(o, c.expected) << "object (" << c.object.x << ", " << c.object.y << ", " << c.object.z << ")";
    }
}

TEST(Vec3, CyclicDifferenceWrapsOnceAndKeepsHalfAPeriod)
{
    const struct {
        double a;
        double b;
        double period;
        double expected;
    } cases[] = {
        {350, 10, 360, -20}, {10, 350, 360, 20}, {190, 10, 360, 180}, {10, 190, 360, -180},
        {730, 0, 360, 370},  {-730, 0, 360, -370}, {5, 1, 0, 4},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(cyclicDifference(c.a, c.b, c.period), c.expected)
            << "cyclicDifference(" << c.a << ", " << c.b << ", " << c.period << ")";
    }
    EXPECT_EQ(Vec3(350, 0, 0).rotationalDifference(Vec3(10, 0, 0)), Vec3(340, 0, 0)) << "period 0: no wrap";
}

TEST(Vec3, ArithmeticIsByComponentAndEqualityPerComponent)
{
    Vec3 v(1, 2, 3);
    v *= Vec3(2, 3, 4);
    EXPECT_EQ(v, Vec3(2, 6, 12)) << "operator*= is by component, not a dot product";
    const Vec3 inverted = Vec3(2, 0, -4).invert();
    EXPECT_EQ(inverted.y, kInf) << "invert is 1/c, unguarded";
    EXPECT_EQ(inverted.z, -0.25);
    EXPECT_TRUE(Vec3(0, 0, 0) == Vec3(9e-13, 9e-13, 9e-13)) << "per component, unlike Vec4";
    EXPECT_TRUE(Vec3(0, 0, 0).equal(Vec3(0.5, -0.5, 0.5), 0.5)) << "inclusive";
}

TEST(Vec3, MatrixApplicationUsesColumnMajorElements)
{
    Vec3 p(1, 2, 3);
    p.applyMatrix4(translation(10, 20, 30));
    EXPECT_EQ(p, Vec3(11, 22, 33));

    Vec3 dir(0, 0.6, 0.8);
    dir.transformDirection(translation(10, 20, 30));
    EXPECT_EQ(dir, Vec3(0, 0.6, 0.8)) << "translation does not move a direction";

    // m[4] is row 0, column 1: it feeds y into x.
    Vec3 sheared(1, 2, 3);
    sheared.applyMatrix4(matrixOf({1, 0, 0, 0, 5, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(sheared, Vec3(11, 2, 3));

    Vec3 column;
    column.setFromMatrixColumn(matrixOf({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}), 2);
    EXPECT_EQ(column, Vec3(9, 10, 11));
}

TEST(Vec3, ProjectionDividesByTheBottomRow)
{
    Vec3 same(1, 2, 3);
    same.applyProjection(translation(0, 0, 0));
    EXPECT_EQ(same, Vec3(1, 2, 3));

    // Bottom row (0, 0, 0.5, 0): w = z / 2 = 2.
    Vec3 halved(2, 4, 4);
    halved.applyProjection(matrixOf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0.5, 0, 0, 0, 0}));
    EXPECT_EQ(halved, Vec3(1, 2, 2));

    Vec3 infinite(1, 2, 3);
    infinite.applyProjection(matrixOf({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(infinite.x, kInf) << "no guard against a zero denominator";
}

TEST(Vec3, QuaternionIsAppliedWithoutNormalising)
{
    const double h = std::sqrt(0.5);
    Vec3 v(1, 0, 0);
    v.applyQuaternion(quaternionOf(0, 0, h, h));  // a quarter turn about z
    EXPECT_EQ(v, Vec3(0, 1, 0));

    // q = 2: q v q* scales by |q|^2 = 4.
    Vec3 scaled(1, 2, 3);
    scaled.applyQuaternion(quaternionOf(0, 0, 0, 2));
    EXPECT_EQ(scaled, Vec3(4, 8, 12));
}

RC_GTEST_PROP(Vec3Property, NormalizedNonZeroVectorHasUnitLength, ())
{
    Vec3 v(*coordinate(), *coordinate(), *coordinate());
    RC_PRE(!v.isZero());
    v.normalize();
    // A few roundings in the sum, the root and the scaling: 1e-15 is ~4 ulp.
    RC_ASSERT(std::fabs(v.length() - 1.0) <= 1e-15);
}

RC_GTEST_PROP(Vec3Property, UnitQuaternionAndItsConjugateReturnTheVector, ())
{
    const Vec3 original(*coordinate(), *coordinate(), *coordinate());
    Vec3 axis(*coordinate(), *coordinate(), *coordinate());
    RC_PRE(!axis.isZero());
    axis.normalize();
    const double half = *coordinate() * 0.5;
    const double s = std::sin(half);
    Vec3 v = original;
    v.applyQuaternion(quaternionOf(axis.x * s, axis.y * s, axis.z * s, std::cos(half)));
    const double length = v.length();
    v.applyQuaternion(quaternionOf(-axis.x * s, -axis.y * s, -axis.z * s, std::cos(half)));
    // Vectors up to length 1733 through two rotations of a few roundings each.
    RC_ASSERT(std::fabs(length - original.length()) <= 1e-9);
    RC_ASSERT(v.equal(original, 1e-9));
}

}  // namespace
}  // namespace Quillmere::Velmira
