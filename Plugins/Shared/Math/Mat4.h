#pragma once

#include "Math/Vec3.h"
#include "Math/Vec4.h"

namespace Quillmere::Velmira {

class Affine;
class Quaternion;

// A 4 by 4 matrix stored column by column: row r, column c is m[4*c + r], and the
// translation stands in m[12], m[13], m[14]. Vectors are columns multiplied from the
// right, so in A x B, B acts first. Angles are in radians.
class Mat4 {
public:
  double m[16];

  // Defaults to the identity, the value a fresh transform is almost always meant to start from.
  explicit Mat4(bool identity = true);
  // columnMajor true: m[i] = a_i. False: the arguments are read row by row.
  // The flag has no default on purpose: the sense of the order must be visible at the call.
  Mat4(double a0, double a1, double a2, double a3, double a4, double a5, double a6, double a7, double a8, double a9,
       double a10, double a11, double a12, double a13, double a14, double a15, bool columnMajor);
  // Sixteen elements, read as the constructor above reads its arguments.
  Mat4(const double* elements, bool columnMajor);
  // rows true: a to d are rows. False: columns. Note that true here is the opposite
  // storage sense of columnMajor true above.
  Mat4(const Vec4& a, const Vec4& b, const Vec4& c, const Vec4& d, bool rows);

  bool operator==(const Mat4& o) const;

  // Arithmetic giving new values.
  Mat4 operator+(const Mat4& o) const;
  Mat4 operator-(const Mat4& o) const;
  Mat4 operator*(double s) const;
  Mat4 operator*(const Mat4& o) const;
  Vec3 operator*(const Vec3& v) const;
  Vec4 operator*(const Vec4& v) const;

  // In place.
  void add(const Mat4& o);
  void subtract(const Mat4& o);
  // this = this x o: o acts first.
  void mult(const Mat4& o);

  Vec4 mult(const Vec4& v) const;
  // M (x, y, z, 1) with the fourth component dropped, not divided by.
  Vec3 mult(const Vec3& v) const;
  // M (x, y, z, 0): the translation has no effect.
  Vec3 multWithoutTranslate(const Vec3& v) const;
  // M (x, y, z, 1), divided by its w.
  Vec3 multAndProject(const Vec3& v) const;

  void setZero();
  void setIdentity();
  void setTranspose();
  void transpose(Mat4& out) const;
  // Always read row by row, as Mat4(a0, ..., a15, false).
  void set(double a0, double a1, double a2, double a3, double a4, double a5, double a6, double a7, double a8, double a9,
           double a10, double a11, double a12, double a13, double a14, double a15);

  double determinant() const;
  // False, with the identity in out, when the determinant is exactly 0. out may be this object.
  bool getInverse(Mat4& out) const;

  Vec4 getRow(int i) const;
  Vec4 getColumn(int i) const;
  void setRow(int i, const Vec4& v);
  void setColumn(int i, const Vec4& v);
  double getMaxScaleOnAxis() const;

  // out may be a or b.
  static void add(const Mat4& a, const Mat4& b, Mat4& out);
  static void subtract(const Mat4& a, const Mat4& b, Mat4& out);
  static void mult(const Mat4& a, const Mat4& b, Mat4& out);
  static Mat4 identity();

  // Transforms that replace the matrix.
  void setTranslate(const Vec3& t);
  void setTranslate(double x, double y, double z);
  void setScale(const Vec3& s);
  void setScale(double x, double y, double z);
  void setRotation(double angle, const Vec3& axis);
  void setRotation(double angle, double x, double y, double z);
  void setXRotation(double angle);
  void setYRotation(double angle);
  void setZRotation(double angle);
  void setPerspective(double fovY, double aspect, double near, double far);
  void setFrustum(double left, double right, double bottom, double top, double near, double far);
  // Top comes before bottom here, unlike setFrustum.
  void setOrtho(double left, double right, double top, double bottom, double near, double far);
  // Writes only the 3 by 3 part: column 2 points from target to eye.
  void setLookAt(Vec3 eye, Vec3 target, Vec3 up);
  void setLookAt(double eyeX, double eyeY, double eyeZ, double targetX, double targetY, double targetZ, double upX,
                 double upY, double upZ);
  void setWithQuaternion(const Quaternion& q);
  void setWithAffine(const Affine& a);
  // T(position) R S.
  void compose(const Vec3& position, const Quaternion& rotation, const Vec3& scale);
  // Sends p to position + R S (p - anchor).
  void compose(const Vec3& anchor, const Vec3& position, const Quaternion& rotation, const Vec3& scale);

  // Transforms that extend the matrix: this = this x T, T acting first.
  void translate(double x, double y, double z);
  void translate(const Vec3& t);
  void translate(const Vec4& t);
  void scale(double x, double y, double z);
  void scale(const Vec3& s);
  void scale(const Vec4& s);
  void rotate(double angle, double x, double y, double z);
  void rotate(double angle, const Vec3& axis);
  void rotate(double angle, const Vec4& axis);
  void rotateX(double angle);
  void rotateY(double angle);
  void rotateZ(double angle);

  // Writes the translation only.
  void position(const Vec3& p);
  Affine getAffine() const;
  // Inverse of compose. Leaves the matrix unchanged.
  void decompose(Vec3& position, Quaternion& rotation, Vec3& scale) const;
  void decompose(const Vec3& anchor, Vec3& position, Quaternion& rotation, Vec3& scale) const;

  // Host layer coordinates (origin top left, Y down) to GL's (origin at the centre, Y up, Z turned over).
  static Mat4 getAEToGLConversionMatrix(double width, double height);

private:
  void extend(const Mat4& t);
  void setRotationPart(const Vec3& x, const Vec3& y, const Vec3& z);
};

}  // namespace Quillmere::Velmira
