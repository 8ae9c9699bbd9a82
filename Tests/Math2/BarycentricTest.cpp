#include <cmath>

#include <gtest/gtest.h>

#include "Math/Barycentric.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

::testing::AssertionResult weightsAre(const Barycentric& actual, double u, double v, double w)
{
    const double a[3] = {actual.u, actual.v, actual.w};
    const double e[3] = {u, v, w};
    return elementsAre(a, e, 3, 0.0) << " (weights u, v, w)";
}

struct PlanarCase {
    const char* name;
    Vec2 point;
    double u, v, w;
    bool inside;
};

TEST(BarycentricTest, WeightsInTheUnitTriangle)
{
    const Vec2 a(0, 0), b(1, 0), c(0, 1);
    const PlanarCase cases[] = {
        {"first vertex", Vec2(0, 0), 1, 0, 0, true},
        {"second vertex", Vec2(1, 0), 0, 1, 0, true},
        {"third vertex", Vec2(0, 1), 0, 0, 1, true},
        {"middle of an edge", Vec2(0.5, 0.5), 0, 0.5, 0.5, true},
        {"beyond the long edge", Vec2(1, 1), -1, 1, 1, false},
    };
    for (const PlanarCase& test : cases) {
        const Barycentric weights(a, b, c, test.point);
        EXPECT_TRUE(weightsAre(weights, test.u, test.v, test.w)) << test.name;
        EXPECT_EQ(weights.isInside(), test.inside) << test.name;
    }
}

TEST(BarycentricTest, HigherDimensionsProjectOntoThePlane)
{
    const Barycentric lifted(Vec3(0, 0, 0), Vec3(2, 0, 0), Vec3(0, 2, 0), Vec3(1, 1, 5));
    EXPECT_TRUE(weightsAre(lifted, 0, 0.5, 0.5));
    EXPECT_TRUE(lifted.isInside());

    // w is a coordinate like the others in four dimensions.
    const Barycentric inW(Vec4(0, 0, 0, 0), Vec4(0, 0, 0, 2), Vec4(2, 0, 0, 0), Vec4(0.5, 0, 0, 1));
    EXPECT_TRUE(weightsAre(inW, 0.25, 0.5, 0.25));

    // Alpha counts like any channel.
    const Barycentric colours(Color(0, 0, 0, 0), Color(0, 0, 0, 1), Color(1, 0, 0, 0),
                              Color(0, 0, 0, 0.5));
    EXPECT_TRUE(weightsAre(colours, 0.5, 0.5, 0));
}

TEST(BarycentricTest, DegenerateTriangleIsNeverInside)
{
    const Barycentric collinear(Vec2(0, 0), Vec2(1, 1), Vec2(2, 2), Vec2(1, 1));
    EXPECT_TRUE(std::isnan(collinear.u) || std::isinf(collinear.u)) << "u is " << collinear.u;
    EXPECT_FALSE(collinear.isInside());
    const Barycentric offLine(Vec2(0, 0), Vec2(1, 1), Vec2(2, 2), Vec2(0, 1));
    EXPECT_FALSE(offLine.isInside());
}

TEST(BarycentricTest, InsideBoundsAreInclusiveAndWHasNoUpperBound)
{
    const struct {
        Barycentric weights;
        bool inside;
    } cases[] = {
        {Barycentric(0, 0, 2), true},     {Barycentric(1, 1, 0), true},
        {Barycentric(-0.5, 1.5, 0), false}, {Barycentric(1.5, 0, 0), false},
        {Barycentric(0, 0, -1e-300), false},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(test.weights.isInside(), test.inside)
            << test.weights.u << ", " << test.weights.v << ", " << test.weights.w;
    }
}

TEST(BarycentricTest, InterpolateBlendsEachType)
{
    const Barycentric weights(0.5, 0.5, 0);
    EXPECT_TRUE(vectorsNear(weights.interpolate(Vec2(0, 0), Vec2(2, 2), Vec2(9, 9)), Vec2(1, 1), 0.0));

    const Barycentric thirds(0.25, 0.25, 0.5);
    EXPECT_TRUE(vectorsNear(thirds.interpolate(Vec3(4, 0, 0), Vec3(0, 4, 0), Vec3(0, 0, 4)),
                            Vec3(1, 1, 2), 0.0));
    EXPECT_EQ(thirds.interpolate(Vec4(4, 0, 0, 0), Vec4(0, 0, 0, 4), Vec4(0, 2, 0, 0)),
              Vec4(1, 1, 0, 1));
    // Colours are not clamped: weights beyond 1 push channels past the scale.
    const Color blended = Barycentric(2, -1, 0).interpolate(Color(1, 1, 1, 1), Color(0, 0, 0, 1),
                                                            Color(0, 0, 0, 0));
    EXPECT_EQ(blended.mRed, 2.0);
    EXPECT_EQ(blended.mAlpha, 1.0);
}

} // namespace
} // namespace Quillmere::Velmira
