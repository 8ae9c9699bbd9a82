#pragma once

#include <cstdint>

namespace Quillmere::Velmira {

class Mat4;
class Quaternion;

// A rotation as three angles in radians and the order they compose in: XYZ is
// Rx(x) Ry(y) Rz(z), so the last letter's axis acts first on a vector.
class Euler {
public:
  enum RotationOrder : std::int32_t {
    // No order given: setters keep the order the object holds.
    Unspecified = 0,
    XYZ = 1,
    YZX = 2,
    ZXY = 3,
    XZY = 4,
    YXZ = 5,
    ZYX = 6,
  };

  static constexpr RotationOrder mDefaultOrder = XYZ;

  double x;
  double y;
  double z;
  RotationOrder mOrder;

  Euler();
  Euler(double ax, double ay, double az, RotationOrder order = mDefaultOrder);

  bool operator==(const Euler& e) const;

  // An omitted order means Unspecified: the object keeps the order it holds.
  void set(double ax, double ay, double az, RotationOrder order = Unspecified);
  // Reads the upper 3 by 3 part, which must be a pure rotation.
  void setWithMat4(const Mat4& m, RotationOrder order = Unspecified);
  void setWithQuaternion(const Quaternion& q, RotationOrder order = Unspecified);
};

}  // namespace Quillmere::Velmira
