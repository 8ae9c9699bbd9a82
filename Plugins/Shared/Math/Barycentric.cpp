#include "Math/Barycentric.h"

namespace Quillmere::Velmira {

namespace {

double dotOf(const Vec2& a, const Vec2& b) { return a.dot(b); }
double dotOf(const Vec3& a, const Vec3& b) { return a.dot(b); }
double dotOf(const Vec4& a, const Vec4& b) { return a.dot(b); }

// Colours are points of a four-dimensional space: alpha counts like any channel.
double dotOf(const Color& a, const Color& b) { return a.r() * b.r() + a.g() * b.g() + a.b() * b.b() + a.a() * b.a(); }

// The third vertex is the origin: e0 = b - c, e1 = a - c, e2 = p - c. A zero
// denominator (a degenerate triangle) is left to IEEE division on purpose, so the
// weights come out infinite or NaN and isInside() rejects them.
template <typename Point>
Barycentric weightsOf(const Point& e0, const Point& e1, const Point& e2) {
  const double d00 = dotOf(e0, e0);
  const double d01 = dotOf(e0, e1);
  const double d11 = dotOf(e1, e1);
  const double d20 = dotOf(e2, e0);
  const double d21 = dotOf(e2, e1);
  const double denominator = d00 * d11 - d01 * d01;
  const double u = (d00 * d21 - d01 * d20) / denominator;
  const double v = (d11 * d20 - d01 * d21) / denominator;
  return Barycentric(u, v, 1 - u - v);
}

}  // namespace

Barycentric::Barycentric(double weightU, double weightV, double weightW) : u(weightU), v(weightV), w(weightW) {}

Barycentric::Barycentric(const Vec2& a, const Vec2& b, const Vec2& c, const Vec2& p)
    : Barycentric(weightsOf(b - c, a - c, p - c)) {}

Barycentric::Barycentric(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& p)
    : Barycentric(weightsOf(b - c, a - c, p - c)) {}

Barycentric::Barycentric(const Vec4& a, const Vec4& b, const Vec4& c, const Vec4& p)
    : Barycentric(weightsOf(b - c, a - c, p - c)) {}

Barycentric::Barycentric(const Color& a, const Color& b, const Color& c, const Color& p)
    : Barycentric(weightsOf(b - c, a - c, p - c)) {}

bool Barycentric::isInside() const { return u >= 0 && u <= 1 && v >= 0 && v <= 1 && w >= 0; }

Vec2 Barycentric::interpolate(const Vec2& a, const Vec2& b, const Vec2& c) const { return a * u + b * v + c * w; }

Vec3 Barycentric::interpolate(const Vec3& a, const Vec3& b, const Vec3& c) const { return a * u + b * v + c * w; }

Vec4 Barycentric::interpolate(const Vec4& a, const Vec4& b, const Vec4& c) const { return a * u + b * v + c * w; }

Color Barycentric::interpolate(const Color& a, const Color& b, const Color& c) const { return a * u + b * v + c * w; }

}  // namespace Quillmere::Velmira
