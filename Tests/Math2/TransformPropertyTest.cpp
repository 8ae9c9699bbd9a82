#include <cmath>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "Math/Affine.h"
#include "Math/Euler.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

const double kPi = 3.141592653589793;

double uniform(double low, double high)
{
    const int steps = 1 << 30;
    return low + (high - low) * (*rc::gen::inRange(0, steps + 1)) / steps;
}

Vec3 anyVec3(double limit) { return Vec3(uniform(-limit, limit), uniform(-limit, limit), uniform(-limit, limit)); }

Quaternion anyRotation()
{
    Vec3 axis = anyVec3(1.0);
    axis.normalize();
    Quaternion q;
    q.set(axis, uniform(-kPi, kPi));
    return q;
}

Vec3 anyScale()
{
    return Vec3(uniform(0.1, 10), uniform(0.1, 10), uniform(0.1, 10));
}

// Matrices of one order: the six orders compose Rx, Ry, Rz in the order of their letters.
Mat4 rotationInOrder(double x, double y, double z, Euler::RotationOrder order)
{
    const char* letters[] = {"", "XYZ", "YZX", "ZXY", "XZY", "YXZ", "ZYX"};
    Mat4 m(true);
    for (const char* axis = letters[order]; *axis != '\0'; ++axis) {
        switch (*axis) {
        case 'X': m.rotateX(x); break;
        case 'Y': m.rotateY(y); break;
        default: m.rotateZ(z); break;
        }
    }
    return m;
}

// The middle angle of each order, which Euler confines to (-pi/2, pi/2).
double& middleAngle(double& x, double& y, double& z, Euler::RotationOrder order)
{
    switch (order) {
    case Euler::XYZ:
    case Euler::ZYX: return y;
    case Euler::YZX:
    case Euler::XZY: return z;
    default: return x;
    }
}

// Diagonally dominant entries keep the condition number below about 10, so the
// product with the inverse stays within a few hundred ulps of the identity.
RC_GTEST_PROP(Mat4Property, ProductWithInverseIsTheIdentity, ())
{
    Mat4 m(false);
    for (int i = 0; i < 16; ++i) {
        m.m[i] = uniform(-1, 1) + (i % 5 == 0 ? 5.0 : 0.0);
    }
    Mat4 inverse(false);
    RC_ASSERT(m.getInverse(inverse));
    RC_ASSERT(maxDifference(m * inverse, Mat4(true)) <= 1e-13);
    RC_ASSERT(maxDifference(inverse * m, Mat4(true)) <= 1e-13);
}

// Positions up to 100 and scales up to 10: 1e-10 leaves room for the rounding of
// the square roots and divisions in decompose, relative to those sizes.
RC_GTEST_PROP(Mat4Property, DecomposeReturnsWhatComposeTookIn, ())
{
    const Vec3 position = anyVec3(100);
    const Quaternion rotation = anyRotation();
    const Vec3 scale = anyScale();
    Mat4 m(true);
    m.compose(position, rotation, scale);

    Vec3 p, s;
    Quaternion q;
    m.decompose(p, q, s);
    RC_ASSERT(p.equal(position, 1e-10));
    RC_ASSERT(s.equal(scale, 1e-10));
    // q and -q are the same rotation.
    RC_ASSERT(std::fabs(std::fabs(q.dot(rotation)) - 1.0) <= 1e-10);

    const Vec3 anchor = anyVec3(100);
    m.compose(anchor, position, rotation, scale);
    RC_ASSERT(m.mult(anchor).equal(position, 1e-10));
    m.decompose(anchor, p, q, s);
    RC_ASSERT(p.equal(position, 1e-10));
    RC_ASSERT(s.equal(scale, 1e-10));
}

// Unit rotations: both paths are a handful of products of numbers below 1.
RC_GTEST_PROP(QuaternionProperty, QuaternionFromAMatrixRotatesAsTheMatrix, ())
{
    Mat4 rotation(true);
    rotation.setRotation(uniform(-kPi, kPi), anyVec3(1.0));
    Quaternion q;
    q.setWithMat4(rotation);
    const Vec3 v = anyVec3(10);
    RC_ASSERT(Quaternion::quaternionMulVec3(q, v).equal(rotation.mult(v), 1e-13));

    Mat4 back(false);
    back.setWithQuaternion(q);
    RC_ASSERT(maxDifference(back, rotation) <= 1e-14);
}

RC_GTEST_PROP(QuaternionProperty, SlerpStartsAndEndsExactly, ())
{
    const Quaternion p = anyRotation();
    const Quaternion q = anyRotation();
    Quaternion atStart = p;
    atStart.slerp(q, 0.0);
    Quaternion atEnd = p;
    atEnd.slerp(q, 1.0);
    RC_ASSERT(atStart == p);
    RC_ASSERT(atEnd == q);
}

// Extraction is exact trigonometry on a double matrix: 1e-9 covers asin's loss of
// accuracy when the middle angle nears a quarter turn (kept 0.01 away here).
RC_GTEST_PROP(EulerProperty, AnglesFromAMatrixGiveTheMatrixBack, ())
{
    const auto order = static_cast<Euler::RotationOrder>(*rc::gen::inRange(1, 7));
    double x = uniform(-kPi, kPi), y = uniform(-kPi, kPi), z = uniform(-kPi, kPi);
    middleAngle(x, y, z, order) = uniform(-kPi / 2 + 0.01, kPi / 2 - 0.01);
    const Mat4 rotation = rotationInOrder(x, y, z, order);

    Euler e;
    e.setWithMat4(rotation, order);
    RC_ASSERT(e.mOrder == order);
    RC_ASSERT(std::fabs(e.x - x) <= 1e-9);
    RC_ASSERT(std::fabs(e.y - y) <= 1e-9);
    RC_ASSERT(std::fabs(e.z - z) <= 1e-9);
    RC_ASSERT(maxDifference(rotationInOrder(e.x, e.y, e.z, order), rotation) <= 1e-14);
}

// setWithEuler carries about seven digits: 1e-6 on matrix elements of size 1. The
// outer angles lose more as the middle one nears a quarter turn (the error grows as
// 1/cos of it), so the middle angle keeps 0.1 away, where 1e-5 still holds.
RC_GTEST_PROP(EulerProperty, QuaternionOfAnglesMatchesTheMatrixProduct, ())
{
    const auto order = static_cast<Euler::RotationOrder>(*rc::gen::inRange(1, 7));
    double x = uniform(-kPi + 0.01, kPi - 0.01), y = uniform(-kPi + 0.01, kPi - 0.01),
           z = uniform(-kPi + 0.01, kPi - 0.01);
    middleAngle(x, y, z, order) = uniform(-kPi / 2 + 0.1, kPi / 2 - 0.1);

    Quaternion q;
    q.setWithEuler(Euler(x, y, z, order));
    Mat4 fromQuaternion(false);
    fromQuaternion.setWithQuaternion(q);
    RC_ASSERT(maxDifference(fromQuaternion, rotationInOrder(x, y, z, order)) <= 1e-6);

    Euler back(0, 0, 0, Euler::Unspecified);
    back.setWithQuaternion(q, order);
    RC_ASSERT(std::fabs(back.x - x) <= 1e-5);
    RC_ASSERT(std::fabs(back.y - y) <= 1e-5);
    RC_ASSERT(std::fabs(back.z - z) <= 1e-5);
}

// Determinants of at least 0.01 and coordinates up to 100: 1e-9 is far above the
// rounding of a 2 by 2 inverse at those sizes.
RC_GTEST_PROP(AffineProperty, InverseMapsPointsBack, ())
{
    Affine a(true);
    a.set(Vec2(uniform(-50, 50), uniform(-50, 50)), Vec2(uniform(-50, 50), uniform(-50, 50)),
          Vec2(uniform(0.1, 10), uniform(0.1, 10)), uniform(-360, 360));
    a.skewX(uniform(-30, 30));
    Affine inverse(false);
    RC_ASSERT(a.inverse(inverse));

    const Vec2 p(uniform(-100, 100), uniform(-100, 100));
    const Vec2 there = a.getTransform(p);
    RC_ASSERT(inverse.getTransform(there).equal(p, 1e-9));
    RC_ASSERT(a.getTransform(inverse.getTransform(p)).equal(p, 1e-9));
}

} // namespace
} // namespace Quillmere::Velmira
