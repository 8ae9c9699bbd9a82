#include "Math/Mat4.h"

#include <algorithm>
#include <cmath>

#include "Math/Affine.h"
#include "Math/Float.h"
#include "Math/Quaternion.h"

namespace Quillmere::Velmira {

namespace {

// Cofactors of a 4 by 4 array through its 2 by 2 minors. The array is read as if
// it were row-major; the inverse of a transpose is the transpose of the inverse,
// so the same formulas hold for the column-major storage. adjugate receives the
// adjugate, and the determinant is returned.
double adjugateAndDeterminant(const double* a, double* adjugate) {
  const double s0 = a[0] * a[5] - a[4] * a[1];
  const double s1 = a[0] * a[6] - a[4] * a[2];
  const double s2 = a[0] * a[7] - a[4] * a[3];
  const double s3 = a[1] * a[6] - a[5] * a[2];
  const double s4 = a[1] * a[7] - a[5] * a[3];
  const double s5 = a[2] * a[7] - a[6] * a[3];
  const double c5 = a[10] * a[15] - a[14] * a[11];
  const double c4 = a[9] * a[15] - a[13] * a[11];
  const double c3 = a[9] * a[14] - a[13] * a[10];
  const double c2 = a[8] * a[15] - a[12] * a[11];
  const double c1 = a[8] * a[14] - a[12] * a[10];
  const double c0 = a[8] * a[13] - a[12] * a[9];

  adjugate[0] = a[5] * c5 - a[6] * c4 + a[7] * c3;
  adjugate[1] = -a[1] * c5 + a[2] * c4 - a[3] * c3;
  adjugate[2] = a[13] * s5 - a[14] * s4 + a[15] * s3;
  adjugate[3] = -a[9] * s5 + a[10] * s4 - a[11] * s3;
  adjugate[4] = -a[4] * c5 + a[6] * c2 - a[7] * c1;
  adjugate[5] = a[0] * c5 - a[2] * c2 + a[3] * c1;
  adjugate[6] = -a[12] * s5 + a[14] * s2 - a[15] * s1;
  adjugate[7] = a[8] * s5 - a[10] * s2 + a[11] * s1;
  adjugate[8] = a[4] * c4 - a[5] * c2 + a[7] * c0;
  adjugate[9] = -a[0] * c4 + a[1] * c2 - a[3] * c0;
  adjugate[10] = a[12] * s4 - a[13] * s2 + a[15] * s0;
  adjugate[11] = -a[8] * s4 + a[9] * s2 - a[11] * s0;
  adjugate[12] = -a[4] * c3 + a[5] * c1 - a[6] * c0;
  adjugate[13] = a[0] * c3 - a[1] * c1 + a[2] * c0;
  adjugate[14] = -a[12] * s3 + a[13] * s1 - a[14] * s0;
  adjugate[15] = a[8] * s3 - a[9] * s1 + a[10] * s0;

  return s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
}

}  // namespace

Mat4::Mat4(bool identity) : m{} {
  if (identity) {
    setIdentity();
  }
}

Mat4::Mat4(double a0, double a1, double a2, double a3, double a4, double a5, double a6, double a7, double a8, double a9,
           double a10, double a11, double a12, double a13, double a14, double a15, bool columnMajor) {
  const double elements[16] = {a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, a13, a14, a15};
  *this = Mat4(elements, columnMajor);
}

Mat4::Mat4(const double* elements, bool columnMajor) {
  for (int i = 0; i < 16; ++i) {
    m[i] = elements[i];
  }
  if (!columnMajor) {
    setTranspose();
  }
}

Mat4::Mat4(const Vec4& a, const Vec4& b, const Vec4& c, const Vec4& d, bool rows) : m{} {
  const Vec4* vectors[4] = {&a, &b, &c, &d};
  for (int i = 0; i < 4; ++i) {
    if (rows) {
      setRow(i, *vectors[i]);
    } else {
      setColumn(i, *vectors[i]);
    }
  }
}

bool Mat4::operator==(const Mat4& o) const {
  for (int i = 0; i < 16; ++i) {
    if (!floatEqual(m[i], o.m[i])) {
      return false;
    }
  }
  return true;
}

Mat4 Mat4::operator+(const Mat4& o) const {
  Mat4 result(false);
  add(*this, o, result);
  return result;
}

Mat4 Mat4::operator-(const Mat4& o) const {
  Mat4 result(false);
  subtract(*this, o, result);
  return result;
}

Mat4 Mat4::operator*(double s) const {
  Mat4 result(*this);
  for (double& element : result.m) {
    element *= s;
  }
  return result;
}

Mat4 Mat4::operator*(const Mat4& o) const {
  Mat4 result(*this);
  result.mult(o);
  return result;
}

Vec3 Mat4::operator*(const Vec3& v) const { return mult(v); }

Vec4 Mat4::operator*(const Vec4& v) const { return mult(v); }

void Mat4::add(const Mat4& o) { add(*this, o, *this); }

void Mat4::subtract(const Mat4& o) { subtract(*this, o, *this); }

void Mat4::mult(const Mat4& o) { mult(*this, o, *this); }

Vec4 Mat4::mult(const Vec4& v) const {
  double r[4];
  for (int i = 0; i < 4; ++i) {
    r[i] = ((m[i] * v.x + m[i + 4] * v.y) + m[i + 8] * v.z) + m[i + 12] * v.w;
  }
  return Vec4(r[0], r[1], r[2], r[3]);
}

Vec3 Mat4::mult(const Vec3& v) const { return mult(Vec4(v, 1.0)).getVec3(); }

Vec3 Mat4::multWithoutTranslate(const Vec3& v) const { return mult(Vec4(v, 0.0)).getVec3(); }

Vec3 Mat4::multAndProject(const Vec3& v) const {
  const Vec4 r = mult(Vec4(v, 1.0));
  const double inverseW = 1.0 / r.w;
  return Vec3(r.x * inverseW, r.y * inverseW, r.z * inverseW);
}

void Mat4::setZero() {
  for (double& element : m) {
    element = 0.0;
  }
}

void Mat4::setIdentity() {
  setZero();
  m[0] = m[5] = m[10] = m[15] = 1.0;
}

void Mat4::setTranspose() {
  for (int r = 0; r < 4; ++r) {
    for (int c = r + 1; c < 4; ++c) {
      std::swap(m[4 * c + r], m[4 * r + c]);
    }
  }
}

void Mat4::transpose(Mat4& out) const {
  out = *this;
  out.setTranspose();
}

void Mat4::set(double a0, double a1, double a2, double a3, double a4, double a5, double a6, double a7, double a8,
               double a9, double a10, double a11, double a12, double a13, double a14, double a15) {
  *this = Mat4(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, a13, a14, a15, false);
}

double Mat4::determinant() const {
  double adjugate[16];
  return adjugateAndDeterminant(m, adjugate);
}

bool Mat4::getInverse(Mat4& out) const {
  double adjugate[16];
  const double det = adjugateAndDeterminant(m, adjugate);
  // Exactly zero only: a tiny determinant is still inverted, and what counts as
  // too small is left to the caller, who knows the scale of its matrices.
  if (det == 0.0) {
    out.setIdentity();
    return false;
  }
  const double r = 1.0 / det;
  for (int i = 0; i < 16; ++i) {
    out.m[i] = adjugate[i] * r;
  }
  return true;
}

Vec4 Mat4::getRow(int i) const { return Vec4(m[i], m[i + 4], m[i + 8], m[i + 12]); }

Vec4 Mat4::getColumn(int i) const { return Vec4(m[4 * i], m[4 * i + 1], m[4 * i + 2], m[4 * i + 3]); }

void Mat4::setRow(int i, const Vec4& v) {
  m[i] = v.x;
  m[i + 4] = v.y;
  m[i + 8] = v.z;
  m[i + 12] = v.w;
}

void Mat4::setColumn(int i, const Vec4& v) {
  m[4 * i] = v.x;
  m[4 * i + 1] = v.y;
  m[4 * i + 2] = v.z;
  m[4 * i + 3] = v.w;
}

double Mat4::getMaxScaleOnAxis() const {
  const double x = m[0] * m[0] + m[1] * m[1] + m[2] * m[2];
  const double y = m[4] * m[4] + m[5] * m[5] + m[6] * m[6];
  const double z = m[8] * m[8] + m[9] * m[9] + m[10] * m[10];
  return std::sqrt(std::max(std::max(x, y), z));
}

void Mat4::add(const Mat4& a, const Mat4& b, Mat4& out) {
  for (int i = 0; i < 16; ++i) {
    out.m[i] = a.m[i] + b.m[i];
  }
}

void Mat4::subtract(const Mat4& a, const Mat4& b, Mat4& out) {
  for (int i = 0; i < 16; ++i) {
    out.m[i] = a.m[i] - b.m[i];
  }
}

void Mat4::mult(const Mat4& a, const Mat4& b, Mat4& out) {
  // Copies first, so that out may be a or b.
  const Mat4 left(a);
  const Mat4 right(b);
  for (int j = 0; j < 4; ++j) {
    const double* column = right.m + 4 * j;
    for (int r = 0; r < 4; ++r) {
      out.m[4 * j + r] = ((left.m[r] * column[0] + left.m[r + 4] * column[1]) + left.m[r + 8] * column[2]) +
                         left.m[r + 12] * column[3];
    }
  }
}

Mat4 Mat4::identity() { return Mat4(true); }

// Transforms that replace the matrix.

void Mat4::setTranslate(const Vec3& t) { setTranslate(t.x, t.y, t.z); }

void Mat4::setTranslate(double x, double y, double z) {
  setIdentity();
  m[12] = x;
  m[13] = y;
  m[14] = z;
}

void Mat4::setScale(const Vec3& s) { setScale(s.x, s.y, s.z); }

void Mat4::setScale(double x, double y, double z) {
  setIdentity();
  m[0] = x;
  m[5] = y;
  m[10] = z;
}

void Mat4::setRotation(double angle, const Vec3& axis) { setRotation(angle, axis.x, axis.y, axis.z); }

void Mat4::setRotation(double angle, double x, double y, double z) {
  // Vec3::normalize turns a zero axis into X, so a missing axis still rotates.
  Vec3 axis(x, y, z);
  axis.normalize();
  const double s = std::sin(angle);
  const double c = std::cos(angle);
  const double t = 1.0 - c;
  const double ax = axis.x;
  const double ay = axis.y;
  const double az = axis.z;
  setIdentity();
  m[0] = t * ax * ax + c;
  m[4] = t * ax * ay - s * az;
  m[8] = t * ax * az + s * ay;
  m[1] = t * ax * ay + s * az;
  m[5] = t * ay * ay + c;
  m[9] = t * ay * az - s * ax;
  m[2] = t * ax * az - s * ay;
  m[6] = t * ay * az + s * ax;
  m[10] = t * az * az + c;
}

void Mat4::setXRotation(double angle) {
  const double s = std::sin(angle);
  const double c = std::cos(angle);
  setIdentity();
  m[5] = c;
  m[9] = -s;
  m[6] = s;
  m[10] = c;
}

void Mat4::setYRotation(double angle) {
  const double s = std::sin(angle);
  const double c = std::cos(angle);
  setIdentity();
  m[0] = c;
  m[8] = s;
  m[2] = -s;
  m[10] = c;
}

void Mat4::setZRotation(double angle) {
  const double s = std::sin(angle);
  const double c = std::cos(angle);
  setIdentity();
  m[0] = c;
  m[4] = -s;
  m[1] = s;
  m[5] = c;
}

void Mat4::setPerspective(double fovY, double aspect, double near, double far) {
  const double f = 1.0 / std::tan(fovY * 0.5);
  setZero();
  m[0] = f / aspect;
  m[5] = f;
  m[10] = (near + far) / (near - far);
  m[14] = 2.0 * far * near / (near - far);
  m[11] = -1.0;
}

void Mat4::setFrustum(double left, double right, double bottom, double top, double near, double far) {
  setZero();
  m[0] = 2.0 * near / (right - left);
  m[8] = (right + left) / (right - left);
  m[5] = 2.0 * near / (top - bottom);
  m[9] = (top + bottom) / (top - bottom);
  m[10] = -(near + far) / (far - near);
  m[14] = -2.0 * far * near / (far - near);
  m[11] = -1.0;
}

void Mat4::setOrtho(double left, double right, double top, double bottom, double near, double far) {
  setIdentity();
  m[0] = 2.0 / (right - left);
  m[12] = -(right + left) / (right - left);
  m[5] = 2.0 / (top - bottom);
  m[13] = -(top + bottom) / (top - bottom);
  m[10] = -2.0 / (far - near);
  m[14] = -(near + far) / (far - near);
}

void Mat4::setLookAt(Vec3 eye, Vec3 target, Vec3 up) {
  Vec3 z = eye - target;
  if (z.isZero()) {
    z = Vec3(0.0, 0.0, 1.0);
  } else {
    z.normalize();
  }
  Vec3 x = up.cross(z);
  if (x.isZero()) {
    // up is zero or parallel to the view direction: tilt the view a little so
    // that the cross product has a direction. The nudge is 0.0001 in single precision.
    z.z += static_cast<double>(0.0001f);
    x = up.cross(z);
  }
  x.normalize();
  const Vec3 y = z.cross(x);
  setRotationPart(x, y, z);
}

void Mat4::setLookAt(double eyeX, double eyeY, double eyeZ, double targetX, double targetY, double targetZ, double upX,
                     double upY, double upZ) {
  setLookAt(Vec3(eyeX, eyeY, eyeZ), Vec3(targetX, targetY, targetZ), Vec3(upX, upY, upZ));
}

void Mat4::setRotationPart(const Vec3& x, const Vec3& y, const Vec3& z) {
  m[0] = x.x;
  m[1] = x.y;
  m[2] = x.z;
  m[4] = y.x;
  m[5] = y.y;
  m[6] = y.z;
  m[8] = z.x;
  m[9] = z.y;
  m[10] = z.z;
}

void Mat4::setWithQuaternion(const Quaternion& q) {
  // The components are taken as they are: a quaternion that is not of unit
  // length gives a matrix with scale, which is the caller's to avoid.
  const double x = q.x;
  const double y = q.y;
  const double z = q.z;
  const double w = q.w;
  const double x2 = x + x;
  const double y2 = y + y;
  const double z2 = z + z;
  setIdentity();
  m[0] = 1.0 - (y * y2 + z * z2);
  m[4] = x * y2 - z2 * w;
  m[8] = x * z2 + y2 * w;
  m[1] = x * y2 + z2 * w;
  m[5] = 1.0 - (z * z2 + x * x2);
  m[9] = y * z2 - x2 * w;
  m[2] = x * z2 - y2 * w;
  m[6] = y * z2 + x2 * w;
  m[10] = 1.0 - (y * y2 + x * x2);
}

void Mat4::setWithAffine(const Affine& a) {
  setIdentity();
  m[0] = a.m[0];
  m[4] = a.m[1];
  m[12] = a.m[2];
  m[1] = a.m[3];
  m[5] = a.m[4];
  m[13] = a.m[5];
}

void Mat4::compose(const Vec3& position, const Quaternion& rotation, const Vec3& scale) {
  setWithQuaternion(rotation);
  this->scale(scale.x, scale.y, scale.z);
  this->position(position);
}

void Mat4::compose(const Vec3& anchor, const Vec3& position, const Quaternion& rotation, const Vec3& scale) {
  const Vec3 t(anchor.x * scale.x, anchor.y * scale.y, anchor.z * scale.z);

  setWithQuaternion(rotation);
  Mat4 placement(false);
  placement.setTranslate(position);
  mult(placement, *this, *this);

  // Take off the scaled anchor turned by the rotation, using the columns as they
  // stand before the scale is applied.
  for (int r = 0; r < 4; ++r) {
    m[12 + r] = ((m[12 + r] - t.x * m[r]) - t.y * m[4 + r]) - t.z * m[8 + r];
  }

  const double factors[3] = {scale.x, scale.y, scale.z};
  for (int c = 0; c < 3; ++c) {
    if (factors[c] == 1.0) {
      continue;
    }
    for (int r = 0; r < 3; ++r) {
      m[4 * c + r] *= factors[c];
    }
  }
}

// Transforms that extend the matrix.

void Mat4::extend(const Mat4& t) { mult(*this, t, *this); }

void Mat4::translate(double x, double y, double z) {
  for (int r = 0; r < 4; ++r) {
    m[12 + r] = ((m[r] * x + m[4 + r] * y) + m[8 + r] * z) + m[12 + r];
  }
}

void Mat4::translate(const Vec3& t) { translate(t.x, t.y, t.z); }

void Mat4::translate(const Vec4& t) { translate(t.x, t.y, t.z); }

void Mat4::scale(double x, double y, double z) {
  for (int r = 0; r < 4; ++r) {
    m[r] *= x;
    m[4 + r] *= y;
    m[8 + r] *= z;
  }
}

void Mat4::scale(const Vec3& s) { scale(s.x, s.y, s.z); }

void Mat4::scale(const Vec4& s) { scale(s.x, s.y, s.z); }

void Mat4::rotate(double angle, double x, double y, double z) {
  Mat4 t(false);
  t.setRotation(angle, x, y, z);
  extend(t);
}

void Mat4::rotate(double angle, const Vec3& axis) { rotate(angle, axis.x, axis.y, axis.z); }

void Mat4::rotate(double angle, const Vec4& axis) { rotate(angle, axis.x, axis.y, axis.z); }

void Mat4::rotateX(double angle) {
  Mat4 t(false);
  t.setXRotation(angle);
  extend(t);
}

void Mat4::rotateY(double angle) {
  Mat4 t(false);
  t.setYRotation(angle);
  extend(t);
}

void Mat4::rotateZ(double angle) {
  Mat4 t(false);
  t.setZRotation(angle);
  extend(t);
}

// Others.

void Mat4::position(const Vec3& p) {
  m[12] = p.x;
  m[13] = p.y;
  m[14] = p.z;
}

Affine Mat4::getAffine() const { return Affine(m[0], m[1], m[4], m[5], m[12], m[13]); }

void Mat4::decompose(const Vec3& anchor, Vec3& position, Quaternion& rotation, Vec3& scale) const {
  // The matrix does not hold its anchor: the caller must give the one it was composed with.
  const Vec3 anchorOffset = multWithoutTranslate(anchor);
  decompose(position, rotation, scale);
  position += anchorOffset;
}

void Mat4::decompose(Vec3& position, Quaternion& rotation, Vec3& scale) const {
  double sx = Vec3(m[0], m[1], m[2]).length();
  double sy = Vec3(m[4], m[5], m[6]).length();
  double sz = Vec3(m[8], m[9], m[10]).length();
  const double d = determinant();

  position = Vec3(m[12], m[13], m[14]);

  // A mirror cannot be told apart from which axis it flipped: it is always
  // reported on X, and the rotation makes up for the rest.
  if (d < 0) {
    sx = -sx;
  }
  // A flat axis keeps a tiny scale so that the rotation below divides by
  // something; the caller gets 1e-06 back rather than 0.
  if (sx == 0.0) {
    sx = 1e-06;
  }
  if (sy == 0.0) {
    sy = 1e-06;
  }
  if (sz == 0.0) {
    sz = 1e-06;
  }

  Mat4 unscaled(*this);
  const double inverses[3] = {1.0 / sx, 1.0 / sy, 1.0 / sz};
  for (int c = 0; c < 3; ++c) {
    for (int r = 0; r < 3; ++r) {
      unscaled.m[4 * c + r] *= inverses[c];
    }
  }
  rotation.setWithMat4(unscaled);
  scale = Vec3(sx, sy, sz);
}

Mat4 Mat4::getAEToGLConversionMatrix(double width, double height) {
  Mat4 result(true);
  result.m[12] = width * -0.5;
  result.m[13] = height * 0.5;
  result.m[5] = -1.0;
  result.m[10] = -1.0;
  return result;
}

}  // namespace Quillmere::Velmira
