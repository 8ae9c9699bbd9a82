#include "Math/Affine.h"

#include <cmath>

#include "Math/Float.h"

namespace Quillmere::Velmira {

namespace {

// Below this the transform squashes the plane too flat to be worth inverting;
// deliberately far looser than kTolerance.
constexpr double kSingularDeterminant = 1e-06;

bool isSingular(double det) { return -kSingularDeterminant < det && det < kSingularDeterminant; }

Affine elementary(void (Affine::*setter)(double, double), double x, double y) {
  Affine t(true);
  (t.*setter)(x, y);
  return t;
}

Affine elementary(void (Affine::*setter)(double), double angle) {
  Affine t(true);
  (t.*setter)(angle);
  return t;
}

}  // namespace

Affine::Affine(bool identity) : m{} {
  if (identity) {
    m[0] = 1.0;
    m[4] = 1.0;
  }
}

Affine::Affine(double a, double b, double c, double d, double e, double f) : m{} { set(a, b, c, d, e, f); }

bool Affine::operator==(const Affine& o) const {
  for (int i = 0; i < 6; ++i) {
    if (!floatEqual(m[i], o.m[i])) {
      return false;
    }
  }
  return true;
}

void Affine::set(double a, double b, double c, double d, double e, double f) {
  m[0] = a;
  m[3] = b;
  m[1] = c;
  m[4] = d;
  m[2] = e;
  m[5] = f;
}

void Affine::set(Vec2 anchor, Vec2 position, Vec2 scale, double rotation) {
  const double radians = rotation * kDegToRad;
  const double s = std::sin(radians);
  const double c = std::cos(radians);
  m[0] = scale.x * c;
  m[1] = -(s * scale.y);
  m[2] = position.x;
  m[3] = scale.x * s;
  m[4] = c * scale.y;
  m[5] = position.y;

  // The anchor moves to the origin first, so that it is the point that lands on position.
  Affine t(true);
  t.setTranslate(-anchor.x, -anchor.y);
  t.multiply(*this);
  *this = t;
}

void Affine::setTranslate(double x, double y) { set(1.0, 0.0, 0.0, 1.0, x, y); }

void Affine::setScale(double x, double y) { set(x, 0.0, 0.0, y, 0.0, 0.0); }

void Affine::setSkewX(double angle) {
  const double t = std::tan(angle * kDegToRad);
  set(1.0, 0.0, t, 1.0, 0.0, 0.0);
}

void Affine::setSkewY(double angle) {
  const double t = std::tan(angle * kDegToRad);
  set(1.0, t, 0.0, 1.0, 0.0, 0.0);
}

void Affine::setRotate(double angle) {
  const double radians = angle * kDegToRad;
  const double s = std::sin(radians);
  const double c = std::cos(radians);
  set(c, s, -s, c, 0.0, 0.0);
}

void Affine::translate(double x, double y) { premultiply(elementary(&Affine::setTranslate, x, y)); }

void Affine::scale(double x, double y) { premultiply(elementary(&Affine::setScale, x, y)); }

void Affine::skewX(double angle) { premultiply(elementary(&Affine::setSkewX, angle)); }

void Affine::skewY(double angle) { premultiply(elementary(&Affine::setSkewY, angle)); }

void Affine::rotate(double angle) { premultiply(elementary(&Affine::setRotate, angle)); }

void Affine::multiply(const Affine& o) {
  const double t0 = m[0];
  const double t1 = m[1];
  const double t2 = m[2];
  const double t3 = m[3];
  const double t4 = m[4];
  const double t5 = m[5];
  m[0] = o.m[0] * t0 + o.m[1] * t3;
  m[1] = o.m[0] * t1 + o.m[1] * t4;
  m[2] = o.m[0] * t2 + o.m[1] * t5 + o.m[2];
  m[3] = o.m[3] * t0 + o.m[4] * t3;
  m[4] = o.m[3] * t1 + o.m[4] * t4;
  m[5] = o.m[3] * t2 + o.m[4] * t5 + o.m[5];
}

void Affine::premultiply(const Affine& o) {
  Affine result(o);
  result.multiply(*this);
  *this = result;
}

bool Affine::inverse(Affine& out) const {
  const double det = m[0] * m[4] - m[1] * m[3];
  if (isSingular(det)) {
    return false;
  }
  const double r = 1.0 / det;
  out.m[0] = m[4] * r;
  out.m[1] = -(m[1] * r);
  out.m[2] = (m[1] * m[5] - m[4] * m[2]) * r;
  out.m[3] = -(m[3] * r);
  out.m[4] = m[0] * r;
  out.m[5] = (m[3] * m[2] - m[0] * m[5]) * r;
  return true;
}

Affine Affine::getInverse() const {
  // inverse() leaves its out parameter alone when singular, so the identity stays.
  Affine result(true);
  inverse(result);
  return result;
}

double Affine::averageScale() const {
  const double a = std::sqrt(m[0] * m[0] + m[1] * m[1]);
  const double b = std::sqrt(m[3] * m[3] + m[4] * m[4]);
  const double v = (a + b) * 0.5 * 10000.0;
  // Four decimals, worked in single precision: the figure is for display and UI
  // snapping, where a float's seven digits are plenty.
  const float rounded = std::round(static_cast<float>(v));
  return static_cast<double>(rounded / 10000.0f);
}

void Affine::transform(Vec2& p) const { transform(p.x, p.y); }

Vec2 Affine::getTransform(const Vec2& p) const {
  Vec2 result(p);
  transform(result);
  return result;
}

void Affine::transform(double x, double y, double* outX, double* outY) const {
  *outX = m[0] * x + m[1] * y + m[2];
  *outY = m[3] * x + m[4] * y + m[5];
}

void Affine::transform(double& x, double& y) const {
  const double oldX = x;
  const double oldY = y;
  transform(oldX, oldY, &x, &y);
}

}  // namespace Quillmere::Velmira
