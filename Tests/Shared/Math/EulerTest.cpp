#include <cmath>

#include <gtest/gtest.h>

#include "Math/Euler.h"
#include "Math/Mat4.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

TEST(EulerTest, OrderNumbersAndUnspecifiedKeepingTheHeldOrder) {
  // The numbers are stored: XZY is fourth, not second.
  const int numbers[] = {Euler::Unspecified, Euler::XYZ, Euler::YZX, Euler::ZXY, Euler::XZY, Euler::YXZ, Euler::ZYX};
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(numbers[i], i) << "order number " << i;
  }
  Euler e;
  e.set(1, 2, 3, Euler::Unspecified);
  EXPECT_TRUE(e == Euler(1, 2, 3, Euler::XYZ)) << "Euler() holds XYZ and Unspecified keeps it";
  e.set(0, 5, 6, Euler::ZYX);
  EXPECT_TRUE(e == Euler(1e-12, 5, 6, Euler::ZYX)) << "angles within the inclusive tolerance";
  EXPECT_FALSE(e == Euler(0, 5, 6, Euler::XYZ)) << "the order must be identical";
}

TEST(EulerTest, SetWithMat4ExtractsForTheHeldOrderWhenGivenNone) {
  Mat4 yxz(true);  // Ry(0.2) Rx(0.3) Rz(0.4)
  yxz.rotateY(0.2);
  yxz.rotateX(0.3);
  yxz.rotateZ(0.4);
  Euler e(0, 0, 0, Euler::YXZ);
  e.setWithMat4(yxz, Euler::Unspecified);
  EXPECT_TRUE(near({e.x, e.y, e.z}, {0.3, 0.2, 0.4}, 1e-15));
  EXPECT_EQ(e.mOrder, Euler::YXZ);
  e.setWithMat4(yxz, Euler::ZXY);
  EXPECT_EQ(e.mOrder, Euler::ZXY);
  Euler none(7, 8, 9, Euler::Unspecified);
  none.setWithMat4(yxz, Euler::Unspecified);
  EXPECT_TRUE(none == Euler(7, 8, 9, Euler::Unspecified)) << "nothing to extract for";
}

TEST(EulerTest, GimbalLockPutsTheWholeTurnOnXAndClampsRoundedElements) {
  const double kPi = 3.141592653589793;
  Mat4 locked(true);  // Rx(0.3) Ry(pi/2) Rz(0.2): x and z turn about the same axis
  locked.rotateX(0.3);
  locked.rotateY(kPi / 2);
  locked.rotateZ(0.2);
  Euler e;
  e.setWithMat4(locked, Euler::XYZ);
  // asin keeps half the digits next to 1: 1e-7 covers it.
  EXPECT_TRUE(near({e.x, e.y, e.z}, {0.5, kPi / 2, 0.0}, 1e-7));
  locked.setIdentity();
  locked.m[8] = 1.0000000000000002;
  e.setWithMat4(locked, Euler::XYZ);
  EXPECT_EQ(e.y, kPi / 2) << "an element just past 1 gives a quarter turn, not NaN";
  // 0.99999899 lies between the float 0.999999 (0.99999898672) and the double: locked, so z is 0.
  locked.m[8] = 0.99999899;
  locked.m[4] = -0.5;
  e.setWithMat4(locked, Euler::XYZ);
  EXPECT_EQ(e.z, 0.0) << "the threshold is 0.999999 in single precision";
}

}  // namespace
}  // namespace Quillmere::Velmira
