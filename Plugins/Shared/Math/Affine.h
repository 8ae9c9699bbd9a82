#pragma once

#include "Math/Vec2.h"

namespace Quillmere::Velmira {

// A 2D transform: a 2 by 3 matrix stored row by row, with the implied third row
// (0, 0, 1). A point (px, py) maps to (m[0] px + m[1] py + m[2], m[3] px + m[4] py + m[5]).
// Angles are in degrees. In a product A x B, B acts on a point first.
class Affine {
public:
  double m[6];

  // Defaults to the identity, the value a fresh transform is almost always meant to start from.
  explicit Affine(bool identity = true);
  // The arguments run down the columns while the storage runs along the rows:
  // the map is (a px + c py + e, b px + d py + f).
  Affine(double a, double b, double c, double d, double e, double f);

  bool operator==(const Affine& o) const;

  // Setters: each replaces all six elements.
  void set(double a, double b, double c, double d, double e, double f);
  // A layer's transform: sends p to position + R S (p - anchor).
  void set(Vec2 anchor, Vec2 position, Vec2 scale, double rotation);
  void setTranslate(double x, double y);
  void setScale(double x, double y);
  void setSkewX(double angle);
  void setSkewY(double angle);
  void setRotate(double angle);

  // Extenders: this = this x T, so T acts first, in the object's local coordinates.
  void translate(double x, double y);
  void scale(double x, double y);
  void skewX(double angle);
  void skewY(double angle);
  void rotate(double angle);

  // this = o x this: o acts after the object. o must not be this object.
  void multiply(const Affine& o);
  // this = this x o: o acts before the object.
  void premultiply(const Affine& o);

  // False, with out untouched, when |det| < 1e-06. out must not be this object.
  bool inverse(Affine& out) const;
  // The identity for a singular matrix.
  Affine getInverse() const;
  double averageScale() const;

  void transform(Vec2& p) const;
  Vec2 getTransform(const Vec2& p) const;
  void transform(double x, double y, double* outX, double* outY) const;
  void transform(double& x, double& y) const;
};

}  // namespace Quillmere::Velmira
