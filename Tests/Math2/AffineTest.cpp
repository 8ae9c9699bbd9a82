#include <cmath>

#include <gtest/gtest.h>

#include "Math/Affine.h"
#include "Math/Float.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

// Degrees go through kDegToRad = 0.017453292519943, a little short of pi/180: 90
// degrees come out 2.7e-14 radians short, and so does the cosine of a "quarter turn".
const double kDegreeTolerance = 1e-13;

Affine scaled(double x, double y)
{
    Affine a(true);
    a.setScale(x, y);
    return a;
}

TEST(AffineTest, ConstructorArgumentsRunDownTheColumns)
{
    const Affine a(1, 2, 3, 4, 5, 6);
    const double rows[6] = {1, 3, 5, 2, 4, 6};
    EXPECT_TRUE(elementsAre(a.m, rows, 6, 0.0));
    EXPECT_TRUE(vectorsNear(a.getTransform(Vec2(0, 0)), Vec2(5, 6), 0.0));
    EXPECT_TRUE(vectorsNear(a.getTransform(Vec2(1, 0)), Vec2(6, 8), 0.0));

    Affine viaSet(false);
    viaSet.set(1, 2, 3, 4, 5, 6);
    EXPECT_TRUE(elementsAre(viaSet.m, rows, 6, 0.0));

    const double identity[6] = {1, 0, 0, 0, 1, 0};
    const double zeros[6] = {};
    EXPECT_TRUE(elementsAre(Affine(true).m, identity, 6, 0.0));
    EXPECT_TRUE(elementsAre(Affine(false).m, zeros, 6, 0.0));
}

TEST(AffineTest, TransformOverloadsAgreeAndUseTheOldCoordinates)
{
    // Swaps the axes: (px, py) -> (py, px).
    const Affine swap(0, 1, 1, 0, 0, 0);
    double x = 1, y = 2;
    swap.transform(x, y);
    EXPECT_EQ(x, 2.0);
    EXPECT_EQ(y, 1.0) << "y must come from the old x";

    const Affine a(2, 0.5, -1, 3, 7, -4);
    Vec2 p(1.5, -2);
    double outX = 0, outY = 0;
    a.transform(1.5, -2, &outX, &outY);
    a.transform(p);
    EXPECT_TRUE(vectorsNear(p, Vec2(outX, outY), 0.0));
    EXPECT_TRUE(vectorsNear(p, Vec2(2 * 1.5 - 1 * -2 + 7, 0.5 * 1.5 + 3 * -2 - 4), 0.0));
}

TEST(AffineTest, MultiplyAppliesTheArgumentAfterAndPremultiplyBefore)
{
    const Affine a(2, 0, 0, 3, 1, 1);   // scale (2, 3), then move (1, 1)
    const Affine b(0, 1, -1, 0, 5, 0);  // quarter turn, then move (5, 0)
    const Vec2 p(1, 2);

    Affine multiplied = a;
    multiplied.multiply(b);
    EXPECT_TRUE(vectorsNear(multiplied.getTransform(p), b.getTransform(a.getTransform(p)), 0.0));

    Affine premultiplied = a;
    premultiplied.premultiply(b);
    EXPECT_TRUE(vectorsNear(premultiplied.getTransform(p), a.getTransform(b.getTransform(p)), 0.0));

    // The extenders act first, in local coordinates.
    Affine extended = scaled(2, 2);
    extended.translate(1, 0);
    Affine moved(true);
    moved.setTranslate(1, 0);
    moved.multiply(scaled(2, 2));
    EXPECT_TRUE(vectorsNear(extended.getTransform(Vec2()), Vec2(2, 0), 0.0));
    EXPECT_TRUE(extended == moved);
}

TEST(AffineTest, SetFromLayerPropertiesLandsTheAnchorOnThePosition)
{
    Affine layer(true);
    layer.set(Vec2(10, 20), Vec2(100, 200), Vec2(2, 3), 30);
    EXPECT_TRUE(vectorsNear(layer.getTransform(Vec2(10, 20)), Vec2(100, 200), 1e-13));
    const double radians = 30 * kDegToRad;
    EXPECT_TRUE(vectorsNear(layer.getTransform(Vec2(11, 20)),
                            Vec2(100 + 2 * std::cos(radians), 200 + 2 * std::sin(radians)), 1e-13));
    // One unit along local Y is scaled by 3 and turned with X: towards -X.
    EXPECT_TRUE(vectorsNear(layer.getTransform(Vec2(10, 21)),
                            Vec2(100 - 3 * std::sin(radians), 200 + 3 * std::cos(radians)), 1e-13));
}

struct ElementaryCase {
    const char* name;
    void (Affine::*setter)(double);
    double angle;
    Vec2 from;
    Vec2 to;
};

TEST(AffineTest, AnglesAreInDegrees)
{
    const ElementaryCase cases[] = {
        {"setRotate(90)", &Affine::setRotate, 90, Vec2(1, 0), Vec2(0, 1)},
        {"setRotate(-90)", &Affine::setRotate, -90, Vec2(1, 0), Vec2(0, -1)},
        {"setSkewX(45)", &Affine::setSkewX, 45, Vec2(0, 1), Vec2(1, 1)},
        {"setSkewY(45)", &Affine::setSkewY, 45, Vec2(1, 0), Vec2(1, 1)},
    };
    for (const ElementaryCase& test : cases) {
        Affine a(false);
        (a.*test.setter)(test.angle);
        EXPECT_TRUE(vectorsNear(a.getTransform(test.from), test.to, kDegreeTolerance)) << test.name;
    }
}

struct InverseCase {
    const char* name;
    Affine matrix;
    bool invertible;
};

TEST(AffineTest, InverseTreatsDeterminantsBelowOneMillionthAsSingular)
{
    const InverseCase cases[] = {
        {"zero matrix", Affine(false), false},
        {"scale 0.0001: det 1e-08", scaled(0.0001, 0.0001), false},
        {"det just under 1e-06", scaled(0.999e-06, 1), false},
        {"det exactly 1e-06", scaled(1e-06, 1), true},
        {"det exactly -1e-06", scaled(-1e-06, 1), true},
        {"scale 0.01: det 1e-04", scaled(0.01, 0.01), true},
    };
    const Affine untouched(1, 2, 3, 4, 5, 6);
    for (const InverseCase& test : cases) {
        Affine out = untouched;
        EXPECT_EQ(test.matrix.inverse(out), test.invertible) << test.name;
        if (!test.invertible) {
            EXPECT_TRUE(elementsAre(out.m, untouched.m, 6, 0.0)) << test.name << ": out untouched";
            EXPECT_TRUE(test.matrix.getInverse() == Affine(true)) << test.name << ": identity";
        }
    }
}

TEST(AffineTest, InverseOfAKnownTransform)
{
    // Scale (2, 4) then move (6, 8): the inverse moves back and halves / quarters.
    const Affine a(2, 0, 0, 4, 6, 8);
    Affine out(false);
    ASSERT_TRUE(a.inverse(out));
    const double expected[6] = {0.5, 0, -3, 0, 0.25, -2};
    EXPECT_TRUE(elementsAre(out.m, expected, 6, 0.0));
    EXPECT_TRUE(a.getInverse() == out);
}

TEST(AffineTest, AverageScaleIsRoundedToFourDecimalsInSinglePrecision)
{
    Affine rotation(true);
    rotation.setRotate(33);
    const struct {
        const char* name;
        Affine matrix;
        double expected;
    } cases[] = {
        {"identity", Affine(true), 1.0},
        {"scale (1, 3)", scaled(1, 3), 2.0},
        {"scale 1/3", scaled(1.0 / 3, 1.0 / 3), 0.33329999446868896},
        {"rotation alone", rotation, 1.0},
        {"rows, not columns", Affine(3, 4, 0, 0, 0, 0), 3.5},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(test.matrix.averageScale(), test.expected) << test.name;
    }
}

TEST(AffineTest, EqualityIsInclusiveAtTheTolerance)
{
    const Affine a(true);
    Affine b(true);
    b.m[5] = 1e-12;
    EXPECT_TRUE(a == b);
    b.m[5] = 1.5e-12;
    EXPECT_FALSE(a == b);
}

} // namespace
} // namespace Quillmere::Velmira
