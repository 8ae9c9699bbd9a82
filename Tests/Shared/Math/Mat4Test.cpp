#include <cmath>

#include <gtest/gtest.h>

#include "Math/Affine.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

const double kPi = 3.141592653589793;
// Sines and cosines of quarter turns are off by about 6e-17; a few ulps of 1 cover them.
const double kTrigTolerance = 1e-15;

Mat4 made(void (Mat4::*setter)(double), double angle) {
  Mat4 m(true);
  (m.*setter)(angle);
  return m;
}

TEST(Mat4Test, ConstructorsStoreInTheirStatedOrder) {
  const double byColumns[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  // The same sequence read row by row: m[4c + r] = 4r + c.
  const double byRows[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
  const double identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  Mat4 viaSet(false);
  viaSet.set(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  const Vec4 a(0, 1, 2, 3), b(4, 5, 6, 7), c(8, 9, 10, 11), d(12, 13, 14, 15);
  const struct {
    const char* name;
    Mat4 matrix;
    const double* expected;
  } cases[] = {
      {"doubles, columnMajor true", Mat4(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, true), byColumns},
      {"doubles, columnMajor false", Mat4(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, false), byRows},
      {"array, columnMajor true", Mat4(byColumns, true), byColumns},
      {"array, columnMajor false", Mat4(byColumns, false), byRows},
      // For vectors true means rows: the opposite storage of columnMajor true.
      {"Vec4s, rows true", Mat4(a, b, c, d, true), byRows},
      {"Vec4s, rows false", Mat4(a, b, c, d, false), byColumns},
      {"set reads rows", viaSet, byRows},
      {"identity", Mat4(true), identity},
  };
  for (const auto& test : cases) {
    EXPECT_TRUE(elementsNear(test.matrix.m, test.expected, 16, 0.0)) << test.name;
  }
  EXPECT_EQ(Mat4(a, b, c, d, false).getRow(1), Vec4(1, 5, 9, 13));
}

TEST(Mat4Test, ProductsApplyTheRightOperandFirstAndDivideOnlyWhenProjecting) {
  const Mat4 p(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, false);
  const Mat4 q(2, 0, 1, 0, 0, 3, 0, 1, 1, 0, 4, 0, 5, 6, 7, 1, false);
  Mat4 separate(false), intoP = p, intoQ = q;
  Mat4::mult(p, q, separate);
  Mat4::mult(intoP, q, intoP);
  Mat4::mult(p, intoQ, intoQ);
  EXPECT_EQ(separate.m[0], 25.0);  // row 0 of p by column 0 of q: 2 + 0 + 3 + 20
  EXPECT_TRUE(near(intoP, separate, 0.0)) << "writing into the left operand";
  EXPECT_TRUE(near(intoQ, separate, 0.0)) << "writing into the right operand";
  EXPECT_TRUE(near(p * q, separate, 0.0)) << "operator* and the member mult keep the order";

  // Row 3 is (0, 0, 1, 1): w = z + 1.
  const Mat4 m(1, 0, 0, 5, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 1, false);
  EXPECT_TRUE(near(m.mult(Vec3(1, 2, 3)), Vec3(6, 2, 3), 0.0));
  EXPECT_TRUE(near(m.multAndProject(Vec3(1, 2, 3)), Vec3(1.5, 0.5, 0.75), 0.0));
  EXPECT_TRUE(near(m.multWithoutTranslate(Vec3(1, 2, 3)), Vec3(1, 2, 3), 0.0));
}

TEST(Mat4Test, InverseMayWriteInPlaceAndTreatsOnlyAZeroDeterminantAsSingular) {
  // The random-matrix property checks the values; here out may be the object itself.
  Mat4 m(1, 2, 0, 1, 3, 4, 0, 1, 0, 0, 1, 1, 0, 0, 0, 1, false), out(false);
  EXPECT_TRUE(m.getInverse(out));
  EXPECT_TRUE(m.getInverse(m));
  EXPECT_TRUE(near(m, out, 0.0)) << "inverting in place";
  EXPECT_FALSE(Mat4(false).getInverse(out));
  EXPECT_TRUE(near(out, Mat4(true), 0.0)) << "a singular matrix leaves the identity";
  Mat4 tiny(true);
  tiny.setScale(1e-100, 1e-100, 1e-100);  // determinant 1e-300: still inverted
  EXPECT_TRUE(tiny.getInverse(out));
  EXPECT_DOUBLE_EQ(out.m[0], 1e100);
}

TEST(Mat4Test, RotationsAreRightHandedInRadiansAndExtendersActFirst) {
  const double q = kPi / 2;
  Mat4 aboutFiveZ(true), aboutNothing(true);
  aboutFiveZ.setRotation(q, 0, 0, 5);
  aboutNothing.setRotation(q, 0, 0, 0);
  const struct {
    const char* name;
    Mat4 rotation;
    Vec3 from, to;
  } cases[] = {
      {"setXRotation", made(&Mat4::setXRotation, q), Vec3(0, 1, 0), Vec3(0, 0, 1)},
      {"setYRotation", made(&Mat4::setYRotation, q), Vec3(0, 0, 1), Vec3(1, 0, 0)},
      {"setZRotation", made(&Mat4::setZRotation, q), Vec3(1, 0, 0), Vec3(0, 1, 0)},
      {"setRotation about 5 Z", aboutFiveZ, Vec3(1, 0, 0), Vec3(0, 1, 0)},
      {"setRotation about no axis turns about X", aboutNothing, Vec3(0, 1, 0), Vec3(0, 0, 1)},
  };
  for (const auto& test : cases) {
    EXPECT_TRUE(near(test.rotation.mult(test.from), test.to, kTrigTolerance)) << test.name;
  }
  // The move follows the turned X axis.
  Mat4 m(true);
  m.rotateZ(q);
  m.translate(1, 0, 0);
  EXPECT_TRUE(near(m.mult(Vec3()), Vec3(0, 1, 0), kTrigTolerance));
}

TEST(Mat4Test, ProjectionsFollowTheirArgumentOrders) {
  // Expected matrices worked by hand from the projection formulas, rows as written.
  Mat4 ortho(true), frustum(true), perspective(true);
  ortho.setOrtho(0, 100, 0, 50, -1, 1);  // top 0, bottom 50: Y flips
  EXPECT_TRUE(near(ortho, Mat4(0.02, 0, 0, -1, 0, -0.04, 0, 1, 0, 0, -1, 0, 0, 0, 0, 1, false), 1e-17));
  frustum.setFrustum(0, 100, 0, 50, 1, 3);  // the same places read as bottom, top
  EXPECT_TRUE(near(frustum, Mat4(0.02, 0, 1, 0, 0, 0.04, 1, 0, 0, 0, -2, -3, 0, 0, -1, 0, false), 1e-17));
  perspective.setPerspective(kPi / 2, 1, 1, 3);
  EXPECT_TRUE(near(perspective, Mat4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -3, 0, 0, -1, 0, false), kTrigTolerance));
}

TEST(Mat4Test, LookAtWritesOnlyTheRotationPartAndCopesWithDegenerateInput) {
  Mat4 m(true);
  m.setTranslate(1, 2, 3);
  m.m[3] = 7;
  m.setLookAt(Vec3(5, 0, 0), Vec3(0, 0, 0), Vec3(0, 1, 0));
  // z = (1, 0, 0), x = up x z = (0, 0, -1), y = z x x = (0, 1, 0); the rest stays.
  EXPECT_TRUE(near(m, Mat4(0, 0, 1, 1, 0, 1, 0, 2, -1, 0, 0, 3, 7, 0, 0, 1, false), 0.0));

  // up along the view: z.z is nudged by 0.0001 as a float and not normalised again;
  // up x z stays zero and normalises to X; y = z x x is not normalised either.
  m.setLookAt(0, 0, 5, 0, 0, 0, 0, 0, 1);
  const double nudged = 1.0 + static_cast<double>(0.0001f);
  EXPECT_TRUE(near(m, Mat4(1, 0, 0, 1, 0, nudged, 0, 2, 0, 0, nudged, 3, 7, 0, 0, 1, false), 0.0));
}

TEST(Mat4Test, DecomposeReportsMirrorsOnXAndFlatAxesAsTiny) {
  Mat4 mirroredY(true);
  mirroredY.setScale(1, -1, 1);
  const struct {
    const char* name;
    Mat4 matrix;
    Vec3 scale;
    Quaternion rotation;
  } cases[] = {
      // diag(1, -1, 1) = diag(-1, 1, 1) x a half turn about Z.
      {"mirror in Y", mirroredY, Vec3(-1, 1, 1), Quaternion(0, 0, 1, 0)},
      // A zero determinant does not negate sx; the zero copy takes the last branch.
      {"zero matrix", Mat4(false), Vec3(1e-06, 1e-06, 1e-06), Quaternion(0, 0, 0.5, 0)},
  };
  for (const auto& test : cases) {
    Vec3 position(9, 9, 9), scale;
    Quaternion rotation;
    test.matrix.decompose(position, rotation, scale);
    EXPECT_TRUE(near(scale, test.scale, 0.0)) << test.name;
    EXPECT_TRUE(near(rotation, test.rotation, 0.0)) << test.name;
    EXPECT_TRUE(near(position, Vec3(), 0.0)) << test.name;
  }
}

TEST(Mat4Test, ConversionsFromAffineAndHostCoordinates) {
  Mat4 m(true);
  // Affine(1, ..., 6) holds rows (1, 3, 5) and (2, 4, 6).
  m.setWithAffine(Affine(1, 2, 3, 4, 5, 6));
  EXPECT_TRUE(near(m, Mat4(1, 3, 0, 5, 2, 4, 0, 6, 0, 0, 1, 0, 0, 0, 0, 1, false), 0.0));
  EXPECT_TRUE(near(m.getAffine(), Affine(1, 2, 3, 4, 5, 6), 0.0));
  const Mat4 toGL = Mat4::getAEToGLConversionMatrix(1920, 1080);
  EXPECT_TRUE(near(toGL, Mat4(1, 0, 0, -960, 0, -1, 0, 540, 0, 0, -1, 0, 0, 0, 0, 1, false), 0.0));
}

TEST(Mat4Test, EqualityIsInclusivePerElementForMatricesAndExactForQuaternions) {
  Mat4 m(true);
  m.m[14] = 1e-12;
  EXPECT_TRUE(m == Mat4(true)) << "a 1e-12 difference in one element is equal";
  m.m[14] = 2e-12;
  EXPECT_FALSE(m == Mat4(true));
  EXPECT_TRUE(Affine(1, 0, 0, 1, 1e-12, 0) == Affine(true));
  EXPECT_FALSE(Affine(1, 0, 0, 1, 0, 2e-12) == Affine(true));
  EXPECT_FALSE(Quaternion(0, 0, 0, 1 - 1e-16) == Quaternion()) << "no tolerance at all";
  EXPECT_TRUE(Quaternion(0, 0, 0, 1 - 1e-16) != Quaternion());
}

}  // namespace
}  // namespace Quillmere::Velmira
