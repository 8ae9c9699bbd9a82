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

// atan2(sign * m[numerator], m[denominator]) on a column-major element array.
struct Atan2Term {
  double sign;
  int numerator;
  int denominator;

  double angle(const double* m) const { return std::atan2(sign * m[numerator], m[denominator]); }
};

// How one order's angles are read from a rotation matrix: the middle angle is the
// arc sine of one element; the outer two come from arc tangents, or in gimbal lock
// one of them takes the whole turn and the other is 0.
struct Extraction {
  Euler::RotationOrder order;
  double Euler::*middle;
  int middleElement;
  double middleSign;
  double Euler::*first;
  Atan2Term firstRegular;
  double Euler::*second;
  Atan2Term secondRegular;
  double Euler::*gimbalOuter;
  Atan2Term gimbal;
};

const Extraction* extractionFor(Euler::RotationOrder order) {
  // Each row: order; middle angle, its element and sign; the two outer angles and
  // their regular terms; the outer angle that takes the whole turn in gimbal lock.
  static const Extraction kExtractions[] = {
      {Euler::XYZ, &Euler::y, 8, 1, &Euler::x, {-1, 9, 10}, &Euler::z, {-1, 4, 0}, &Euler::x, {1, 6, 5}},
      {Euler::YZX, &Euler::z, 1, 1, &Euler::x, {-1, 9, 5}, &Euler::y, {-1, 2, 0}, &Euler::y, {1, 8, 10}},
      {Euler::ZXY, &Euler::x, 6, 1, &Euler::y, {-1, 2, 10}, &Euler::z, {-1, 4, 5}, &Euler::z, {1, 1, 0}},
      {Euler::XZY, &Euler::z, 4, -1, &Euler::x, {1, 6, 5}, &Euler::y, {1, 8, 0}, &Euler::x, {-1, 9, 10}},
      {Euler::YXZ, &Euler::x, 9, -1, &Euler::y, {1, 8, 10}, &Euler::z, {1, 1, 5}, &Euler::y, {-1, 2, 0}},
      {Euler::ZYX, &Euler::y, 2, -1, &Euler::x, {1, 6, 10}, &Euler::z, {1, 1, 0}, &Euler::z, {-1, 4, 5}},
  };
  for (const Extraction& extraction : kExtractions) {
    if (extraction.order == order) {
      return &extraction;
    }
  }
  return nullptr;
}

}  // namespace

Euler::Euler() : x(0.0), y(0.0), z(0.0), mOrder(mDefaultOrder) {}

Euler::Euler(double ax, double ay, double az, RotationOrder order) : x(ax), y(ay), z(az), mOrder(order) {}

bool Euler::operator==(const Euler& e) const {
  return floatEqual(x, e.x) && floatEqual(y, e.y) && floatEqual(z, e.z) && mOrder == e.mOrder;
}

void Euler::set(double ax, double ay, double az, RotationOrder order) {
  x = ax;
  y = ay;
  z = az;
  if (order != Unspecified) {
    mOrder = order;
  }
}

void Euler::setWithMat4(const Mat4& matrix, RotationOrder order) {
  if (order != Unspecified) {
    mOrder = order;
  }
  const Extraction* extraction = extractionFor(mOrder);
  if (extraction == nullptr) {
    // No order to extract for: the angles stay as they were.
    return;
  }
  const double* m = matrix.m;
  const double e = m[extraction->middleElement];
  this->*(extraction->middle) = std::asin(extraction->middleSign * clampUnit(e));
  if (floatAbs(e) < kGimbalThreshold) {
    this->*(extraction->first) = extraction->firstRegular.angle(m);
    this->*(extraction->second) = extraction->secondRegular.angle(m);
  } else {
    this->*(extraction->first) = 0.0;
    this->*(extraction->second) = 0.0;
    this->*(extraction->gimbalOuter) = extraction->gimbal.angle(m);
  }
}

void Euler::setWithQuaternion(const Quaternion& q, RotationOrder order) {
  Mat4 rotation(false);
  rotation.setWithQuaternion(q);
  setWithMat4(rotation, order);
}

}  // namespace Quillmere::Velmira
