#include "Math/Box3.h"

#include <limits>

namespace Quillmere::Velmira {

namespace {

// The empty box's max sits at the smallest positive normal double, not at
// -max. Boxes grown from the empty state keep that floor: a box of negative
// points ends with max just above 0, and callers rely on that.
constexpr double kEmptyMin = std::numeric_limits<double>::max();
constexpr double kEmptyMax = std::numeric_limits<double>::min();

}  // namespace

Box3::Box3() : min(kEmptyMin), max(kEmptyMax) {}

bool Box3::operator==(const Box3& o) const { return min == o.min && max == o.max; }

void Box3::set(Vec3 newMin, Vec3 newMax) {
  min = newMin;
  max = newMax;
}

// count is the number of floats, three to a point.
void Box3::setFromArray(float* array, int count) {
  makeEmpty();
  Vec3 low(kEmptyMin);
  Vec3 high(kEmptyMax);
  for (int i = 0; i < count; i += 3) {
    const Vec3 p(static_cast<double>(array[i]), static_cast<double>(array[i + 1]), static_cast<double>(array[i + 2]));
    low.getMin(p);
    high.getMax(p);
  }
  if (count > 0) {
    set(low, high);
  }
}

// The first point is both corners, so unlike the other growers this one has
// no floor on max.
void Box3::setFromPoints(Vec3* points, int count) {
  makeEmpty();
  if (points == nullptr || count == 0) {
    return;
  }
  set(points[0], points[0]);
  for (int i = 1; i < count; ++i) {
    expandByPoint(points[i]);
  }
}

void Box3::setFromCenterAndSize(Vec3 center, Vec3 size) {
  const Vec3 half = size * 0.5;
  set(center - half, center + half);
}

void Box3::makeEmpty() { set(Vec3(kEmptyMin), Vec3(kEmptyMax)); }

// A box collapsed onto the origin counts as empty too; any other single point
// does not.
bool Box3::isEmpty() const {
  if (max.x < min.x || max.y < min.y || max.z < min.z) {
    return true;
  }
  return min.isZero() && max.isZero();
}

Vec3 Box3::getCenter() const { return (min + max) * 0.5; }

Vec3 Box3::getSize() const { return max - min; }

void Box3::expandByPoint(Vec3 p) {
  min.getMin(p);
  max.getMax(p);
}

void Box3::expandByVector(Vec3 v) {
  min -= v;
  max += v;
}

void Box3::expandByScalar(float s) {
  const double d = static_cast<double>(s);
  min -= d;
  max += d;
}

bool Box3::containsPoint(const Vec3& p) const {
  if (p.x < min.x || p.y < min.y || p.z < min.z) {
    return false;
  }
  return !(p.x > max.x || p.y > max.y || p.z > max.z);
}

bool Box3::containsBox(const Box3& o) const {
  return o.min.x >= min.x && o.min.y >= min.y && o.min.z >= min.z && o.max.x <= max.x && o.max.y <= max.y &&
         o.max.z <= max.z;
}

Vec3 Box3::getParameter(const Vec3& p) const { return (p - min) / (max - min); }

// Sharing a face counts as intersecting.
bool Box3::intersectsBox(const Box3& o) const {
  if (min.x > o.max.x || min.y > o.max.y || min.z > o.max.z) {
    return false;
  }
  return !(o.min.x > max.x || o.min.y > max.y || o.min.z > max.z);
}

Vec3 Box3::clampPoint(Vec3 p) const {
  p.clamp(min, max);
  return p;
}

double Box3::distanceToPoint(Vec3 p) const { return (clampPoint(p) - p).length(); }

void Box3::intersects(Box3 o) {
  min.getMax(o.min);
  max.getMin(o.max);
  if (isEmpty()) {
    makeEmpty();
  }
}

void Box3::unionBox(Box3 o) {
  min.getMin(o.min);
  max.getMax(o.max);
}

void Box3::translate(Vec3 offset) {
  min += offset;
  max += offset;
}

}  // namespace Quillmere::Velmira
