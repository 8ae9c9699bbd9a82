#pragma once

#include "Math/Vec3.h"

namespace Quillmere::Velmira {

// Axis-aligned box of two corners. The empty state has min at the largest
// double and max at the smallest positive normal double (not -max), so a box
// grown from it never has a max component below that floor.
class Box3 {
public:
  Vec3 min;
  Vec3 max;

  Box3();
  Box3(Vec3 newMin, Vec3 newMax) : min(newMin), max(newMax) {}
  Box3(const Box3&) = default;
  Box3& operator=(const Box3&) = default;

  bool operator==(const Box3& o) const;

  void set(Vec3 newMin, Vec3 newMax);
  void setFromArray(float* array, int count);
  void setFromPoints(Vec3* points, int count);
  void setFromCenterAndSize(Vec3 center, Vec3 size);
  void makeEmpty();
  bool isEmpty() const;
  Vec3 getCenter() const;
  Vec3 getSize() const;

  void expandByPoint(Vec3 p);
  void expandByVector(Vec3 v);
  void expandByScalar(float s);

  bool containsPoint(const Vec3& p) const;
  bool containsBox(const Box3& o) const;
  Vec3 getParameter(const Vec3& p) const;
  bool intersectsBox(const Box3& o) const;
  Vec3 clampPoint(Vec3 p) const;
  double distanceToPoint(Vec3 p) const;

  void intersects(Box3 o);
  void unionBox(Box3 o);
  void translate(Vec3 offset);
};

}  // namespace Quillmere::Velmira
