#pragma once

#include "Math/Vec2.h"
#include "Math/Vec4.h"

namespace Quillmere::Velmira {

// Origin and size on top of Vec4: x left, y top, z width, w height, y growing
// downwards. All four edges belong to the rectangle.
class Rect : public Vec4 {
public:
  Rect() = default;
  Rect(Vec2 origin, Vec2 size) : Vec4(origin.x, origin.y, size.x, size.y) {}
  Rect(double newX, double newY, double width, double height) : Vec4(newX, newY, width, height) {}
  Rect(const Rect&) = default;
  Rect& operator=(const Rect&) = default;

  // Per component, unlike the distance rule of the base.
  bool operator==(const Rect& o) const;
  bool operator!=(const Rect& o) const;

  Vec2 getPoint() const;
  void setPoint(Vec2 p);
  Vec2 getSize() const;
  void setSize(Vec2 s);
  double getLeft() const;
  void setLeft(double v);
  double getTop() const;
  void setTop(double v);
  double getRight() const;
  void setRight(double v);
  double getBottom() const;
  void setBottom(float v);
  double getCenterX() const;
  double getCenterY() const;
  void setCenterX(double v);
  void setCenterY(double v);
  Vec2 getCenter() const;
  void setCenter(Vec2 c);
  Vec2 getTopLeft() const;
  Vec2 getTopRight() const;
  Vec2 getBottomLeft() const;
  Vec2 getBottomRight() const;

  double getArea() const;
  bool isEmpty() const;
  bool containsRect(Rect o) const;
  bool containsPoint(Vec2 p) const;
  bool intersects(Rect o) const;
  bool touches(Rect o) const;

  Rect intersect(Rect o) const;
  Rect unite(Rect o) const;
  void include(Vec2 p);
  Rect getInclude(Vec2 p) const;
  Rect expand(Vec2 margin) const;
  Rect expand(float margin) const;
  Rect scale(float sx, float sy) const;
};

}  // namespace Quillmere::Velmira
