#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "Math/Euler.h"
#include "Math/Float.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

const double kPi = 3.141592653589793;

TEST(QuaternionTest, StartValuesAndSettersKeepWWhereStated)
{
    EXPECT_TRUE(quaternionsNear(Quaternion(), Quaternion(0, 0, 0, 1), 0.0));
    EXPECT_TRUE(quaternionsNear(Quaternion(1, 2, 3), Quaternion(1, 2, 3, 1), 0.0));
    Quaternion q(0, 0, 0, 5);
    q.set(1, 2, 3);
    EXPECT_EQ(q.w, 5.0) << "set(x, y, z) leaves w";

    // Identity rotates nothing.
    EXPECT_TRUE(vectorsNear(Quaternion::quaternionMulVec3(Quaternion(), Vec3(1, 2, 3)),
                            Vec3(1, 2, 3), 0.0));
}

TEST(QuaternionTest, AxisAngleConstructorDoesNotNormaliseButSetDoes)
{
    const Quaternion raw(Vec3(0, 0, 2), kPi / 3);
    EXPECT_NEAR(raw.z, 2 * 0.5, 1e-15) << "axis times sin(angle / 2), unnormalised";
    EXPECT_GT(raw.length(), 1.1);

    Quaternion unit;
    unit.set(Vec3(0, 0, 2), kPi / 3);
    EXPECT_NEAR(unit.length(), 1.0, 1e-15);
    EXPECT_TRUE(quaternionsNear(unit, Quaternion(0, 0, 0.5, std::cos(kPi / 6)), 1e-15));

    Quaternion zeroAxis;
    zeroAxis.set(Vec3(), kPi / 3);
    EXPECT_TRUE(quaternionsNear(zeroAxis, Quaternion(0.5, 0, 0, std::cos(kPi / 6)), 1e-15))
        << "a zero axis turns about X";
}

TEST(QuaternionTest, QuarterTurnAboutZTakesXToY)
{
    const double s = std::sqrt(0.5);
    const Quaternion q(0, 0, s, s);
    EXPECT_TRUE(vectorsNear(Quaternion::quaternionMulVec3(q, Vec3(1, 0, 0)), Vec3(0, 1, 0), 1e-15));
    EXPECT_NEAR(q.getRotationAngle(), 90.0, 1e-12) << "degrees, though angles go in as radians";
    EXPECT_TRUE(vectorsNear(q.getRotationAxis(), Vec3(0, 0, 1), 1e-15));
}

struct DirectionCase {
    const char* name;
    Vec3 from;
    Vec3 to;
    Quaternion expected;
};

TEST(QuaternionTest, SetWithDirectionPicksAPerpendicularAxisForOppositeVectors)
{
    const double h = std::sqrt(0.5);
    const DirectionCase cases[] = {
        {"+X to -X: |x| > |z| branch", Vec3(1, 0, 0), Vec3(-1, 0, 0), Quaternion(0, 1, 0, 0)},
        {"+Z to -Z: other branch", Vec3(0, 0, 1), Vec3(0, 0, -1), Quaternion(0, -1, 0, 0)},
        {"same vector", Vec3(0, 1, 0), Vec3(0, 1, 0), Quaternion(0, 0, 0, 1)},
        {"X to Y", Vec3(1, 0, 0), Vec3(0, 1, 0), Quaternion(0, 0, h, h)},
    };
    for (const DirectionCase& test : cases) {
        EXPECT_TRUE(quaternionsNear(Quaternion(test.from, test.to), test.expected, 1e-15))
            << test.name;
    }
}

struct MatrixCase {
    const char* name;
    Mat4 matrix;
    Quaternion expected;
};

Mat4 diagonal(double x, double y, double z)
{
    Mat4 m(true);
    m.setScale(x, y, z);
    return m;
}

TEST(QuaternionTest, SetWithMat4TakesTheBranchOfTheLargestDiagonal)
{
    const MatrixCase cases[] = {
        {"identity: trace branch", Mat4(true), Quaternion(0, 0, 0, 1)},
        {"half turn about X", diagonal(1, -1, -1), Quaternion(1, 0, 0, 0)},
        {"half turn about Y", diagonal(-1, 1, -1), Quaternion(0, 1, 0, 0)},
        {"half turn about Z", diagonal(-1, -1, 1), Quaternion(0, 0, 1, 0)},
    };
    for (const MatrixCase& test : cases) {
        Quaternion q(7, 7, 7, 7);
        q.setWithMat4(test.matrix);
        EXPECT_TRUE(quaternionsNear(q, test.expected, 0.0)) << test.name;
    }
}

TEST(QuaternionTest, SetWithEulerWorksInSinglePrecision)
{
    Quaternion q;
    q.setWithEuler(Euler(1.0, 0, 0, Euler::XYZ));
    // Rounded to float before any product: not the double sine.
    EXPECT_EQ(q.x, static_cast<double>(static_cast<float>(std::sin(0.5))));
    EXPECT_EQ(q.w, static_cast<double>(static_cast<float>(std::cos(0.5))));
    EXPECT_NE(q.x, std::sin(0.5));

    q.setWithEuler(Euler(0, 0, 0, Euler::ZYX));
    EXPECT_TRUE(quaternionsNear(q, Quaternion(0, 0, 0, 1), 0.0));

    q.setWithEuler(Euler(1, 2, 3, Euler::Unspecified));
    EXPECT_TRUE(quaternionsNear(q, Quaternion(0, 0, 0, 0), 0.0)) << "no order, no rotation";

    q.set(1, 2, 3, 4);
    q.setWithEuler(Euler(1, 2, 3, static_cast<Euler::RotationOrder>(9)));
    EXPECT_TRUE(quaternionsNear(q, Quaternion(1, 2, 3, 4), 0.0)) << "unknown order changes nothing";
}

TEST(QuaternionTest, ProductsPutTheirArgumentOnTheStatedSide)
{
    const double h = std::sqrt(0.5);
    const Quaternion aboutX(h, 0, 0, h);
    const Quaternion aboutY(0, h, 0, h);

    Quaternion multiplied = aboutX;
    multiplied.multiply(aboutY);
    Quaternion premultiplied = aboutX;
    premultiplied.premultiply(aboutY);
    EXPECT_NE(multiplied, premultiplied);

    // X x Y: Y acts first, so +Z goes to +X (about Y), which X leaves alone.
    EXPECT_TRUE(vectorsNear(Quaternion::quaternionMulVec3(multiplied, Vec3(0, 0, 1)),
                            Vec3(1, 0, 0), 1e-15));
    // Y x X: +Z goes to -Y (about X), which Y leaves alone.
    EXPECT_TRUE(vectorsNear(Quaternion::quaternionMulVec3(premultiplied, Vec3(0, 0, 1)),
                            Vec3(0, -1, 0), 1e-15));

    Quaternion squared = aboutX;
    squared.multiplyQuaternions(squared, squared);
    EXPECT_TRUE(quaternionsNear(squared, Quaternion(1, 0, 0, 0), 1e-15)) << "operands may alias";
}

TEST(QuaternionTest, ZeroLengthAnswers)
{
    Quaternion zero(0, 0, 0, 0);
    zero.normalize();
    EXPECT_TRUE(quaternionsNear(zero, Quaternion(), 0.0));

    Quaternion inverse(0, 0, 3, 4);
    inverse.setInverse();
    EXPECT_TRUE(quaternionsNear(inverse, Quaternion(0, 0, -0.6, 0.8), 1e-15));

    EXPECT_TRUE(vectorsNear(Quaternion().getRotationAxis(), Vec3(0, 0, 1), 0.0));
    EXPECT_EQ(Quaternion().getRotationAngle(), 0.0);
    EXPECT_NEAR(Quaternion(1, 0, 0, 0).getRotationAngle(), 180.0, 1e-12);
    EXPECT_TRUE(std::isnan(Quaternion(0, 0, 0, 1.5).getRotationAngle())) << "w is not clamped";
}

TEST(QuaternionTest, SlerpEndsAndShortArc)
{
    const double h = std::sqrt(0.5);
    const Quaternion start;
    const Quaternion quarterZ(0, 0, h, h);

    Quaternion half = start;
    half.slerp(quarterZ, 0.5);
    EXPECT_TRUE(quaternionsNear(half, Quaternion(0, 0, std::sin(kPi / 8), std::cos(kPi / 8)), 1e-15));

    // At exactly 1 the far-side q is copied as it is, not negated.
    const Quaternion farSide(0, 0, -h, -h);
    Quaternion end = start;
    end.slerp(farSide, 1.0);
    EXPECT_EQ(end, farSide);
    // Just before 1 the short arc ends near -farSide.
    end = start;
    end.slerp(farSide, 0.999);
    EXPECT_TRUE(quaternionsNear(end, quarterZ, 1e-3));

    Quaternion same = quarterZ;
    same.slerp(quarterZ, 0.3);
    EXPECT_EQ(same, quarterZ);
}

TEST(QuaternionTest, SlerpOfNearlyEqualRotationsAveragesWhateverT)
{
    // The half angle between them is 1e-4: s is below 0.001.
    const Quaternion near(0, 0, std::sin(1e-4), std::cos(1e-4));
    Quaternion early;
    early.slerp(near, 0.1);
    Quaternion late;
    late.slerp(near, 0.9);
    EXPECT_EQ(early, late);
    EXPECT_EQ(early.z, std::sin(1e-4) * 0.5);
}

TEST(QuaternionTest, LerpOfEqualEndsIsACopyEvenForNaN)
{
    const Quaternion a(0.1, 0.2, 0.3, 0.9);
    EXPECT_EQ(Quaternion::lerp(a, a, std::numeric_limits<double>::quiet_NaN()), a);
    const Quaternion b(0, 0, 0, 1);
    EXPECT_EQ(Quaternion::lerp(a, b, 0.0), a);
    EXPECT_EQ(Quaternion::lerp(a, b, 1.0), b);
}

} // namespace
} // namespace Quillmere::Velmira
