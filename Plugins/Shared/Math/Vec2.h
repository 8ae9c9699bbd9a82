#pragma once

namespace Quillmere::Velmira {

// 2D vector, point or size (x width, y height). Angles are in degrees; a
// positive angle turns from +x towards +y. Operations that change the object,
// compound operators included, return nothing.
class Vec2 {
public:
  double x;
  double y;

  Vec2() : x(0.0), y(0.0) {}
  Vec2(double newX, double newY) : x(newX), y(newY) {}
  Vec2(const Vec2&) = default;
  Vec2& operator=(const Vec2&) = default;

  void add(const Vec2& o);
  void add(double v);
  void sub(const Vec2& o);
  void sub(double v);
  void mult(const Vec2& o);
  void mult(double v);
  void divide(const Vec2& o);
  void divide(double v);
  void operator+=(const Vec2& o);
  void operator+=(double v);
  void operator-=(const Vec2& o);
  void operator-=(double v);
  void operator*=(const Vec2& o);
  void operator*=(double v);
  void operator/=(const Vec2& o);
  void operator/=(double v);
  Vec2 operator+(const Vec2& o) const;
  Vec2 operator+(double v) const;
  Vec2 operator-(const Vec2& o) const;
  Vec2 operator-(double v) const;
  Vec2 operator*(const Vec2& o) const;
  Vec2 operator*(double v) const;
  Vec2 operator/(const Vec2& o) const;
  Vec2 operator/(double v) const;

  bool operator==(const Vec2& o) const;
  bool operator!=(const Vec2& o) const;
  bool equal(const Vec2& other, double tolerance) const;
  bool isZero() const;

  void set(double newX, double newY);
  void set(const Vec2& o);
  void setZero();
  void fromArray(double* array, int offset);

  Vec2 modulo(const Vec2& other) const;
  Vec2 operator%(const Vec2& other) const;
  Vec2 negate() const;
  double dot(const Vec2& o) const;
  Vec2 dotProduction(const Vec2& o) const;
  double cross(const Vec2& o) const;
  static double cross(double a, double b, double c, double d);
  double length() const;
  double lengthSquare() const;
  double distance(const Vec2& o) const;
  static double distanceSquared(const Vec2& a, const Vec2& b);
  Vec2 normal() const;
  Vec2 perpindicularLeft() const;
  Vec2 perpindicularRight() const;
  void prepen();
  double slope() const;
  static Vec2 lerp(Vec2 a, Vec2 b, double t);
  void getMin(const Vec2& o);
  void getMax(const Vec2& o);
  void clamp(const Vec2& low, const Vec2& high);

  bool isCollinear(const Vec2& o) const;
  bool isOrthogonal(const Vec2& o) const;
  bool negligible() const;
  static bool negligible(double v);
  bool nonNegligible() const;
  static bool isDuplicate(const Vec2& a, const Vec2& b);
  static bool equalWithTolerance(double x1, double y1, double x2, double y2, double tolerance);
  static bool equalWithTolerance(Vec2 a, Vec2 b, double tolerance);

  void rotate(double degrees);
  Vec2 rotateRound(double degrees, const Vec2& center) const;
  void rotateAround(double degrees, const Vec2& center);
  double getAngle() const;
  void setAngle(double degrees);
  double angleBetween(const Vec2& o) const;

  void setLength(double l);
  void normalize();
  static void normalize(double* px, double* py);

  Vec2 project(const Vec2& onto) const;
  double distanceToLine(const Vec2& a, const Vec2& b) const;
  double lineProjectionLength(const Vec2& a, const Vec2& b) const;

  int getQuadrant() const;
  static bool oppositeQuadrant(const Vec2& a, const Vec2& b);
  void followSigns(const Vec2& other);

  static double signedArea(const Vec2& a, const Vec2& b, const Vec2& c);
  static bool intersecting(const Vec2& a, const Vec2& b, const Vec2& c, const Vec2& d);
  static int intersect(const Vec2& p1, const Vec2& p2, const Vec2& p3, const Vec2& p4, Vec2& point, double* u1,
                       double* u2);

  static bool anchorOutwardD(Vec2& vector, const Vec2& anchor, const Vec2& reference);
  static bool anchorOutward(Vec2& vector, const Vec2& anchor, const Vec2& reference, bool inward);
  static bool anchorInward(Vec2& vector, const Vec2& anchor, const Vec2& reference);

  static Vec2 centerToTopLefetPoint(const Vec2& point, const Vec2& size);
  static Vec2 topLeftToCenterPoint(const Vec2& point, const Vec2& size);
};

}  // namespace Quillmere::Velmira
