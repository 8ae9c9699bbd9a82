#include <cmath>

#include <gtest/gtest.h>

#include "Math/Euler.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

const double kPi = 3.141592653589793;

// Rx(x) Ry(y) Rz(z) by matrix products, independent of the extraction table.
Mat4 xyzRotation(double x, double y, double z)
{
    Mat4 m(true);
    m.rotateX(x);
    m.rotateY(y);
    m.rotateZ(z);
    return m;
}

TEST(EulerTest, OrderValuesAndDefaults)
{
    // Stored values are part of saved data: XZY is fourth, not second.
    const int values[] = {Euler::Unspecified, Euler::XYZ, Euler::YZX, Euler::ZXY,
                          Euler::XZY, Euler::YXZ, Euler::ZYX};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(values[i], i) << "order number " << i;
    }
    EXPECT_EQ(sizeof(Euler::RotationOrder), 4u);
    EXPECT_EQ(Euler::mDefaultOrder, Euler::XYZ);

    const Euler e;
    EXPECT_EQ(e.mOrder, Euler::XYZ);
    EXPECT_TRUE(e == Euler(0, 0, 0, Euler::XYZ));
}

TEST(EulerTest, UnspecifiedOrderKeepsTheHeldOne)
{
    Euler e;
    e.set(1, 2, 3, Euler::Unspecified);
    EXPECT_TRUE(e == Euler(1, 2, 3, Euler::XYZ));
    e.set(4, 5, 6, Euler::ZYX);
    EXPECT_TRUE(e == Euler(4, 5, 6, Euler::ZYX));
    EXPECT_FALSE(e == Euler(4, 5, 6, Euler::XYZ)) << "orders must match exactly";

    // Extracted for the held YXZ: Ry(0.2) Rx(0.3) Rz(0.4).
    Mat4 yxz(true);
    yxz.rotateY(0.2);
    yxz.rotateX(0.3);
    yxz.rotateZ(0.4);
    Euler held(0, 0, 0, Euler::YXZ);
    held.setWithMat4(yxz, Euler::Unspecified);
    EXPECT_EQ(held.mOrder, Euler::YXZ);
    EXPECT_NEAR(held.x, 0.3, 1e-15);
    EXPECT_NEAR(held.y, 0.2, 1e-15);
    EXPECT_NEAR(held.z, 0.4, 1e-15);

    held.setWithMat4(yxz, Euler::ZXY);
    EXPECT_EQ(held.mOrder, Euler::ZXY);

    // An object that holds no order has nothing to extract for.
    Euler none(7, 8, 9, Euler::Unspecified);
    none.setWithMat4(yxz, Euler::Unspecified);
    EXPECT_TRUE(none == Euler(7, 8, 9, Euler::Unspecified));
}

TEST(EulerTest, GimbalLockPutsTheWholeTurnOnX)
{
    const Mat4 locked = xyzRotation(0.3, kPi / 2, 0.2);
    Euler e;
    e.setWithMat4(locked, Euler::XYZ);
    EXPECT_EQ(e.z, 0.0);
    EXPECT_NEAR(e.y, kPi / 2, 1e-7);
    // The angles differ from those that went in, but the rotation is the same.
    EXPECT_NEAR(e.x, 0.5, 1e-7);
    EXPECT_TRUE(matricesNear(xyzRotation(e.x, e.y, e.z), locked, 1e-7));
}

TEST(EulerTest, ElementRoundedPastOneGivesAQuarterTurnNotNaN)
{
    Mat4 m(true);
    m.m[8] = 1.0000000000000002;
    Euler e;
    e.setWithMat4(m, Euler::XYZ);
    EXPECT_EQ(e.y, std::asin(1.0));
}

TEST(EulerTest, IdentityGivesZeroAnglesForEveryOrder)
{
    for (int order = Euler::XYZ; order <= Euler::ZYX; ++order) {
        Euler e(1, 1, 1, Euler::XYZ);
        e.setWithQuaternion(Quaternion(), static_cast<Euler::RotationOrder>(order));
        EXPECT_TRUE(e == Euler(0, 0, 0, static_cast<Euler::RotationOrder>(order)))
            << "order " << order << " gave " << e.x << ", " << e.y << ", " << e.z;
    }
}

} // namespace
} // namespace Quillmere::Velmira
