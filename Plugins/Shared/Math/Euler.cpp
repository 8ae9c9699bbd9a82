#include "Math/Euler.h"

#include <algorithm>
#include <cmath>

#include "Math/Float.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"

namespace Quillmere::Velmira {

namespace {

// Where the middle angle is this close to a quarter turn, the outer two turn
// about the same axis and only their sum can be recovered. The threshold is
// 0.999999 as a float, widened: it is not the double 0.999999.
const double kGimbalThreshold = static_cast<double>(0.999999f);

// Rounding can carry a unit element just past 1; asin must not see it.
double clampUnit(double e) { return e < -1.0 ? -1.0 : std::min(1.0, e); }

bool isGimbalLocked(double e) { return !(floatAbs(e) < kGimbalThreshold); }

} // namespace

Euler::Euler() : x(0.0), y(0.0), z(0.0), mOrder(mDefaultOrder) {}

Euler::Euler(double ax, double ay, double az, RotationOrder order)
    : x(ax), y(ay), z(az), mOrder(order)
{
}

bool Euler::operator==(const Euler& e) const
{
    return floatEqual(x, e.x) && floatEqual(y, e.y) && floatEqual(z, e.z) && mOrder == e.mOrder;
}

void Euler::set(double ax, double ay, double az, RotationOrder order)
{
    x = ax;
    y = ay;
    z = az;
    if (order != Unspecified) {
        mOrder = order;
    }
}

void Euler::setWithMat4(const Mat4& matrix, RotationOrder order)
{
    if (order != Unspecified) {
        mOrder = order;
    }
    const double* m = matrix.m;
    switch (mOrder) {
    case XYZ: {
        const double e = m[8];
        y = std::asin(clampUnit(e));
        if (!isGimbalLocked(e)) {
            x = std::atan2(-m[9], m[10]);
            z = std::atan2(-m[4], m[0]);
        } else {
            x = std::atan2(m[6], m[5]);
            z = 0.0;
        }
        break;
    }
    case YZX: {
        const double e = m[1];
        z = std::asin(clampUnit(e));
        if (!isGimbalLocked(e)) {
            x = std::atan2(-m[9], m[5]);
            y = std::atan2(-m[2], m[0]);
        } else {
            x = 0.0;
            y = std::atan2(m[8], m[10]);
        }
        break;
    }
    case ZXY: {
        const double e = m[6];
        x = std::asin(clampUnit(e));
        if (!isGimbalLocked(e)) {
            y = std::atan2(-m[2], m[10]);
            z = std::atan2(-m[4], m[5]);
        } else {
            y = 0.0;
            z = std::atan2(m[1], m[0]);
        }
        break;
    }
    case XZY: {
        const double e = m[4];
        z = std::asin(-clampUnit(e));
        if (!isGimbalLocked(e)) {
            x = std::atan2(m[6], m[5]);
            y = std::atan2(m[8], m[0]);
        } else {
            x = std::atan2(-m[9], m[10]);
            y = 0.0;
        }
        break;
    }
    case YXZ: {
        const double e = m[9];
        x = std::asin(-clampUnit(e));
        if (!isGimbalLocked(e)) {
            y = std::atan2(m[8], m[10]);
            z = std::atan2(m[1], m[5]);
        } else {
            y = std::atan2(-m[2], m[0]);
            z = 0.0;
        }
        break;
    }
    case ZYX: {
        const double e = m[2];
        y = std::asin(-clampUnit(e));
        if (!isGimbalLocked(e)) {
            x = std::atan2(m[6], m[10]);
            z = std::atan2(m[1], m[0]);
        } else {
            x = 0.0;
            z = std::atan2(-m[4], m[5]);
        }
        break;
    }
    default:
        // No order to extract for: the angles stay as they were.
        break;
    }
}

void Euler::setWithQuaternion(const Quaternion& q, RotationOrder order)
{
    Mat4 rotation(false);
    rotation.setWithQuaternion(q);
    setWithMat4(rotation, order);
}

} // namespace Quillmere::Velmira
