#pragma once

#include "Math/Color.h"
#include "Math/Vec2.h"
#include "Math/Vec3.h"
#include "Math/Vec4.h"

namespace Quillmere::Velmira {

// Barycentric weights of a point in a triangle: u, v and w belong to the first,
// second and third vertex. Computed weights sum to 1; stored ones need not.
class Barycentric {
public:
  double u;
  double v;
  double w;

  Barycentric(double weightU, double weightV, double weightW);

  // Weights of p in the triangle a, b, c. Beyond two dimensions p is projected
  // onto the triangle's plane; a degenerate triangle gives IEEE infinities or NaN.
  Barycentric(const Vec2& a, const Vec2& b, const Vec2& c, const Vec2& p);
  Barycentric(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& p);
  Barycentric(const Vec4& a, const Vec4& b, const Vec4& c, const Vec4& p);
  // Colours count as points of red, green, blue and alpha: alpha is a coordinate too.
  Barycentric(const Color& a, const Color& b, const Color& c, const Color& p);

  // Inclusive on every bound, with no tolerance; w has no upper bound.
  bool isInside() const;

  Vec2 interpolate(const Vec2& a, const Vec2& b, const Vec2& c) const;
  Vec3 interpolate(const Vec3& a, const Vec3& b, const Vec3& c) const;
  Vec4 interpolate(const Vec4& a, const Vec4& b, const Vec4& c) const;
  Color interpolate(const Color& a, const Color& b, const Color& c) const;
};

}  // namespace Quillmere::Velmira
