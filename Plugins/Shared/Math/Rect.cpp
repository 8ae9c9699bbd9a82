#include "Math/Rect.h"

#include "Math/Float.h"

namespace Quillmere::Velmira {

namespace {

double smaller(double a, double b) { return b < a ? b : a; }
double greater(double a, double b) { return b > a ? b : a; }

// A rectangle from its four edges.
Rect fromEdges(double left, double top, double right, double bottom) {
  return Rect(left, top, right - left, bottom - top);
}

}  // namespace

bool Rect::operator==(const Rect& o) const {
  return floatEqual(x, o.x) && floatEqual(y, o.y) && floatEqual(z, o.z) && floatEqual(w, o.w);
}

bool Rect::operator!=(const Rect& o) const { return !(*this == o); }

Vec2 Rect::getPoint() const { return Vec2(x, y); }

void Rect::setPoint(Vec2 p) {
  x = p.x;
  y = p.y;
}

Vec2 Rect::getSize() const { return Vec2(z, w); }

void Rect::setSize(Vec2 s) {
  z = s.x;
  w = s.y;
}

double Rect::getLeft() const { return x; }
void Rect::setLeft(double v) { x = v; }
double Rect::getTop() const { return y; }
void Rect::setTop(double v) { y = v; }
double Rect::getRight() const { return x + z; }
void Rect::setRight(double v) { z = v - x; }
double Rect::getBottom() const { return y + w; }
void Rect::setBottom(float v) { w = static_cast<double>(v) - y; }

double Rect::getCenterX() const { return x + z * 0.5; }
double Rect::getCenterY() const { return y + w * 0.5; }
void Rect::setCenterX(double v) { x = v - z * 0.5; }
void Rect::setCenterY(double v) { y = v - w * 0.5; }
Vec2 Rect::getCenter() const { return Vec2(getCenterX(), getCenterY()); }

void Rect::setCenter(Vec2 c) {
  setCenterX(c.x);
  setCenterY(c.y);
}

Vec2 Rect::getTopLeft() const { return Vec2(getLeft(), getTop()); }
Vec2 Rect::getTopRight() const { return Vec2(getRight(), getTop()); }
Vec2 Rect::getBottomLeft() const { return Vec2(getLeft(), getBottom()); }
Vec2 Rect::getBottomRight() const { return Vec2(getRight(), getBottom()); }

double Rect::getArea() const { return z * w; }

bool Rect::isEmpty() const { return z == 0.0 && w == 0.0; }

bool Rect::containsRect(Rect o) const {
  return o.x >= x && o.y >= y && o.getRight() <= getRight() && o.getBottom() <= getBottom();
}

bool Rect::containsPoint(Vec2 p) const { return p.x >= x && p.y >= y && p.x <= getRight() && p.y <= getBottom(); }

// Strict: sharing an edge is touching, not intersecting.
bool Rect::intersects(Rect o) const {
  return o.getRight() > x && o.getBottom() > y && getRight() > o.x && getBottom() > o.y;
}

bool Rect::touches(Rect o) const {
  return o.getRight() >= x && o.getBottom() >= y && getRight() >= o.x && getBottom() >= o.y;
}

// Disjoint rectangles give a negative size rather than an empty one, so the
// caller can tell how far apart they are.
Rect Rect::intersect(Rect o) const {
  return fromEdges(greater(x, o.x), greater(y, o.y), smaller(getRight(), o.getRight()),
                   smaller(getBottom(), o.getBottom()));
}

Rect Rect::unite(Rect o) const {
  return fromEdges(smaller(x, o.x), smaller(y, o.y), greater(getRight(), o.getRight()),
                   greater(getBottom(), o.getBottom()));
}

void Rect::include(Vec2 p) {
  *this = fromEdges(smaller(x, p.x), smaller(y, p.y), greater(getRight(), p.x), greater(getBottom(), p.y));
}

Rect Rect::getInclude(Vec2 p) const {
  Rect result = *this;
  result.include(p);
  return result;
}

Rect Rect::expand(Vec2 margin) const {
  return Rect(x - margin.x, y - margin.y, z + 2.0 * margin.x, w + 2.0 * margin.y);
}

Rect Rect::expand(float margin) const {
  const double m = static_cast<double>(margin);
  return expand(Vec2(m, m));
}

// The whole growth goes to each side, so the centre stays and the width
// becomes (2*sx - 1) times the old one.
Rect Rect::scale(float sx, float sy) const {
  return expand(Vec2(static_cast<double>(sx) * z - z, static_cast<double>(sy) * w - w));
}

}  // namespace Quillmere::Velmira
