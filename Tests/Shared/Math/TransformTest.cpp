// Mat4, Quaternion, Euler and Affine, with properties over random transforms.

#include <string>

#include "MathExpect.h"

namespace Quillmere::Velmira {

// Sines and cosines of quarter turns are off by about 6e-17: a few ulps of 1 cover them.
constexpr double kUlps = 1e-15;

// The product of single-axis matrices in the order of the letters, independent of the
// extraction table and of the quaternion formula.
Mat4 productInOrder(const Euler& e) {
  const std::string letters[] = {"", "XYZ", "YZX", "ZXY", "XZY", "YXZ", "ZYX"};
  Mat4 m;
  for (char axis : letters[e.mOrder]) axis == 'X' ? m.rotateX(e.x) : axis == 'Y' ? m.rotateY(e.y) : m.rotateZ(e.z);
  return m;
}

TEST(Mat4, ConstructorsStoreInTheirStatedOrder) {
  const double sequence[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  const Mat4 columns(sequence, true), rows(sequence, false);  // by rows, m[4c + r] = a_(4r + c)
  const Vec4 a(0, 1, 2, 3), b(4, 5, 6, 7), c(8, 9, 10, 11), d(12, 13, 14, 15);
  EXPECT_TRUE(columns.m[3] == 3 && rows.m[12] == 3 && rows.m[1] == 4 && near(columns.getRow(1), {1, 5, 9, 13}));
  EXPECT_TRUE(near(after(Mat4(), [](Mat4& m) { m.set(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15); }), rows));
  EXPECT_TRUE(near(Mat4(a, b, c, d, true), rows) && near(Mat4(a, b, c, d, false), columns)) << "here true is rows";
}

TEST(Mat4, ProductsApplyTheRightOperandFirstAndDivideOnlyWhenProjecting) {
  const Mat4 p(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, false);
  const Mat4 q(4, 1, 2, 3, 2, 5, 1, 1, 1, 3, 6, 2, 3, 2, 1, 7, false);  // dominant diagonal, no symmetry, no zeros
  Mat4 product(false), out(false);
  Mat4::mult(p, q, product);
  EXPECT_EQ(product.m[0], 23.0);  // row 0 of p by column 0 of q: 4 + 4 + 3 + 12
  EXPECT_TRUE(near(p * q, product)) << "the member product, written into its own object";
  const Mat4 m(1, 0, 0, 5, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 1, false);  // row 3 is (0, 0, 1, 1): w = z + 1
  EXPECT_TRUE(near(m.mult(Vec3(1, 2, 3)), {6, 2, 3}) && near(m.multAndProject(Vec3(1, 2, 3)), {1.5, 0.5, 0.75}) &&
              near(m.multWithoutTranslate(Vec3(1, 2, 3)), {1, 2, 3}));
  EXPECT_TRUE(q.getInverse(out) && near(q * out, Mat4(true), 1e-15) && near(out * q, Mat4(true), 1e-15));
  EXPECT_TRUE(!Mat4(false).getInverse(out) && near(out, Mat4(true))) << "a singular matrix leaves the identity";
  EXPECT_TRUE(after(Mat4(), [](Mat4& t) { t.setScale(1e-100, 1e-100, 1e-100); }).getInverse(out)) << "det 1e-300";
}

TEST(Mat4, RotationsAreRightHandedInRadiansAndExtendersActFirst) {
  // The turns about single axes are checked against quaternions by the Euler properties below.
  const auto turned = [](const Mat4& m, Vec3 from, Vec3 to) { return near(m * from, to, kUlps); };
  // An axis of any length is normalised, and no axis at all turns about X.
  EXPECT_TRUE(turned(after(Mat4(), [](Mat4& m) { m.setRotation(M_PI / 2, 0, 0, 5); }), {1, 0, 0}, {0, 1, 0}) &&
              turned(after(Mat4(), [](Mat4& m) { m.setRotation(M_PI / 2, 0, 0, 0); }), {0, 1, 0}, {0, 0, 1}));
  const Mat4 moved = after(after(Mat4(), &Mat4::rotateZ, M_PI / 2), [](Mat4& m) { m.translate(1, 0, 0); });
  EXPECT_TRUE(turned(moved, {0, 0, 0}, {0, 1, 0})) << "the move follows the turned X axis";
}

TEST(Mat4, ProjectionsFollowTheirArgumentOrdersAndLookAtWritesOnlyTheRotation) {
  // setOrtho takes top before bottom, here 0 and 50, so Y flips; setFrustum reads the same places as
  // bottom and top. The field of view is in radians.
  EXPECT_TRUE(near(after(Mat4(), &Mat4::setOrtho, 0, 100, 0, 50, -1, 1),
                   Mat4(0.02, 0, 0, -1, 0, -0.04, 0, 1, 0, 0, -1, 0, 0, 0, 0, 1, false), 1e-17));
  EXPECT_TRUE(near(after(Mat4(), &Mat4::setFrustum, 0, 100, 0, 50, 1, 3),
                   Mat4(0.02, 0, 1, 0, 0, 0.04, 1, 0, 0, 0, -2, -3, 0, 0, -1, 0, false), 1e-17));
  EXPECT_TRUE(near(after(Mat4(), &Mat4::setPerspective, M_PI / 2, 1, 1, 3),
                   Mat4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -3, 0, 0, -1, 0, false), kUlps));
  // Up along the view: z.z takes 0.0001 as a float and stays unnormalised; x = up x z is zero and normalises
  // to X, whatever the order of the product; y = z x x is not normalised. The translation stays.
  Mat4 look(1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 7, 0, 0, 1, false);
  look.setLookAt(0, 0, 5, 0, 0, 0, 0, 0, 1);
  const double nudged = 1.0 + static_cast<double>(0.0001f);
  EXPECT_TRUE(near(look, Mat4(1, 0, 0, 1, 0, nudged, 0, 2, 0, 0, nudged, 3, 7, 0, 0, 1, false)));
}

TEST(Mat4, DecomposeReportsMirrorsOnXAndFlatAxesAsTinyAndAffinesMapThrough) {
  Vec3 position(9, 9, 9), scale;
  Quaternion rotation;
  // diag(1, -1, 1) is diag(-1, 1, 1) after a half turn about Z: a mirror always comes back on X.
  after(Mat4(), [](Mat4& m) { m.setScale(1, -1, 1); }).decompose(position, rotation, scale);
  EXPECT_TRUE(near(scale, {-1, 1, 1}) && near(rotation, {0, 0, 1, 0}) && near(position, {0, 0, 0}));
  Mat4(false).decompose(position, rotation, scale);  // a zero determinant does not negate sx
  EXPECT_TRUE(near(scale, {1e-06, 1e-06, 1e-06}) && near(rotation, {0, 0, 0.5, 0}));
  const Mat4 m = after(Mat4(), &Mat4::setWithAffine, Affine(1, 2, 3, 4, 5, 6));  // rows (1, 3, 5), (2, 4, 6)
  EXPECT_TRUE(near(m, Mat4(1, 3, 0, 5, 2, 4, 0, 6, 0, 0, 1, 0, 0, 0, 0, 1, false)) &&
              near(m.getAffine(), Affine(1, 2, 3, 4, 5, 6)));
  EXPECT_TRUE(near(Mat4::getAEToGLConversionMatrix(1920, 1080),
                   Mat4(1, 0, 0, -960, 0, -1, 0, 540, 0, 0, -1, 0, 0, 0, 0, 1, false)));
}

TEST(Mat4, EqualityIsInclusivePerElementForMatricesAndAffinesAndExactForQuaternions) {
  const auto lastZ = [](double v) { return after(Mat4(), [&](Mat4& m) { m.m[11] = v; }); };
  EXPECT_TRUE(lastZ(1e-12) == Mat4(true) && !(lastZ(2e-12) == Mat4(true)));
  EXPECT_TRUE(Affine(1, 0, 0, 1, 1e-12, 0) == Affine(true) && !(Affine(1, 0, 0, 1, 0, 2e-12) == Affine(true)));
  EXPECT_TRUE(!(Quaternion(0, 0, 0, 1 - 1e-16) == Quaternion()) && Quaternion(0, 0, 0, 1 - 1e-16) != Quaternion());
}

Vec3 anyVec3(double limit) { return Vec3(uniform(-limit, limit), uniform(-limit, limit), uniform(-limit, limit)); }

Quaternion anyRotation() {
  return after(Quaternion(), [](Quaternion& q) { q.set(anyVec3(1.0), uniform(-M_PI, M_PI)); });
}

RC_GTEST_PROP(Mat4Property, DecomposeReturnsWhatComposeTookIn, ()) {
  // Positions and anchors up to 100, scales up to 10: 1e-10 is a few hundred ulps of the
  // largest values that decompose takes square roots of and divides by.
  const Vec3 position = anyVec3(100), anchor = anyVec3(100),
             scale(uniform(0.1, 10), uniform(0.1, 10), uniform(0.1, 10));
  const Quaternion rotation = anyRotation();
  Vec3 p, s;
  Quaternion q;
  Mat4 m = after(Mat4(), [&](Mat4& t) { t.compose(position, rotation, scale); });
  m.decompose(p, q, s);
  RC_ASSERT(p.equal(position, 1e-10) && s.equal(scale, 1e-10));
  RC_ASSERT(std::fabs(std::fabs(q.dot(rotation)) - 1.0) <= 1e-10);  // q or -q
  m.compose(anchor, position, rotation, scale);
  m.decompose(anchor, p, q, s);
  RC_ASSERT(m.mult(anchor).equal(position, 1e-10) && p.equal(position, 1e-10) && s.equal(scale, 1e-10));
}

// set normalises its axis, which the compose property relies on; the constructor does not.
TEST(Quaternion, StartsAtNoTurnTheConstructorKeepsTheAxisAsGivenAndAnglesComeBackInDegrees) {
  const double c = std::cos(M_PI / 6), h = std::sqrt(0.5);
  EXPECT_TRUE(near(after(Quaternion(0, 0, 0, 0), &Quaternion::normalize), {0, 0, 0, 1})) << "as Quaternion() starts";
  EXPECT_TRUE(near(Quaternion(Vec3(0, 0, 2), M_PI / 3), {0, 0, 1, c}, kUlps)) << "the constructor's is as given";
  EXPECT_NEAR(Quaternion(0, 0, h, h).getRotationAngle(), 90.0, 1e-12);
  EXPECT_TRUE(std::isnan(Quaternion(0, 0, 0, 1.5).getRotationAngle())) << "w is not clamped";
  // 1 - w^2 is about 1e-14, below the tolerance: too little turn for an axis to mean anything.
  EXPECT_TRUE(near(Quaternion(1e-7, 0, 0, 1 - 5e-15).getRotationAxis(), {0, 0, 1}));
}

TEST(Quaternion, DirectionsAndEulerAnglesBuildTheStatedComponents) {
  // Opposite vectors: the half turn about (-y, x, 0) when |x| > |z|, else about (0, -z, y).
  EXPECT_TRUE(near(Quaternion(Vec3(1, 0, 0), Vec3(-1, 0, 0)), {0, 1, 0, 0}) &&
              near(Quaternion(Vec3(0, 0, 1), Vec3(0, 0, -1)), {0, -1, 0, 0}) &&
              near(Quaternion(Vec3(0, 1, 0), Vec3(0, 1, 0)), {0, 0, 0, 1}));
  const auto fromX = [](Quaternion q, Euler::RotationOrder order) {
    return after(q, &Quaternion::setWithEuler, Euler(1, 0, 0, order));
  };
  const double s = static_cast<float>(std::sin(0.5)), c = static_cast<float>(std::cos(0.5));
  EXPECT_TRUE(near(fromX(Quaternion(), Euler::XYZ), {s, 0, 0, c})) << "in single precision";
  // No order gives a zero quaternion; an unknown one changes nothing.
  EXPECT_TRUE(near(fromX(Quaternion(), Euler::Unspecified), {0, 0, 0, 0}) &&
              near(fromX(Quaternion(1, 2, 3, 4), Euler::RotationOrder(9)), {1, 2, 3, 4}));
}

TEST(Quaternion, MultiplyPutsItsArgumentOnTheRightAndSlerpTakesTheShortArcWithExactEnds) {
  const double h = std::sqrt(0.5);
  const Quaternion x(h, 0, 0, h), y(0, h, 0, h), z(0, 0, h, h), close(0, 0, std::sin(1e-4), std::cos(1e-4));
  // x y: y acts first and takes +Z to +X, which x keeps; y x: x takes +Z to -Y.
  EXPECT_TRUE(
      near(Quaternion::quaternionMulVec3(after(x, &Quaternion::multiply, y), Vec3(0, 0, 1)), {1, 0, 0}, kUlps) &&
      near(Quaternion::quaternionMulVec3(after(x, &Quaternion::premultiply, y), Vec3(0, 0, 1)), {0, -1, 0}, kUlps));
  const auto slerped = [](const Quaternion& to, double t) { return after(Quaternion(), &Quaternion::slerp, to, t); };
  // Half of z, an eighth of a turn, is one the formula would not give back exactly at either end.
  const Quaternion eighth(0, 0, std::sin(M_PI / 8), std::cos(M_PI / 8));
  EXPECT_TRUE(near(slerped(z, 0.5), eighth, kUlps) && near(slerped(eighth, 1.0), eighth) &&
              near(slerped(eighth, 0.0), {}));
  EXPECT_TRUE(near(slerped(Quaternion(0, 0, -h, -h), 0.999), z, 1e-3)) << "short arc";
  // Half angles 1e-4 apart: a sine below 0.001 gives the plain average, whatever t is.
  const Quaternion average(0, 0, std::sin(1e-4) * 0.5, (1 + close.w) * 0.5);
  EXPECT_TRUE(near(slerped(close, 0.1), average) && near(slerped(close, 0.9), average));
}

TEST(Euler, UnspecifiedKeepsTheHeldOrderAndGimbalLockUsesTheFloatThreshold) {
  // Euler() holds XYZ, which set keeps; == takes each angle within 1e-12 and the very same order.
  const Euler e = after(Euler(), &Euler::set, 0, 2, 3, Euler::Unspecified);
  EXPECT_TRUE(e == Euler(1e-12, 2, 3, Euler::XYZ) && !(e == Euler(0, 2, 3, Euler::ZYX)));
  const Mat4 yxz = productInOrder(Euler(0.3, 0.2, 0.4, Euler::YXZ));
  const Euler held = after(Euler(0, 0, 0, Euler::YXZ), &Euler::setWithMat4, yxz, Euler::Unspecified);
  EXPECT_TRUE(near(Vec3(held.x, held.y, held.z), {0.3, 0.2, 0.4}, kUlps) && held.mOrder == Euler::YXZ);
  const Mat4 past(1, 0, 1.0000000000000002, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, false);
  EXPECT_EQ(after(Euler(), &Euler::setWithMat4, past, Euler::XYZ).y, M_PI / 2) << "clamped to 1, not NaN";
  // 0.99999899 lies between the float 0.999999 (0.99999898672) and the double: locked, so z is 0.
  const Mat4 locked(1, -0.5, 0.99999899, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, false);
  EXPECT_EQ(after(Euler(), &Euler::setWithMat4, locked, Euler::XYZ).z, 0.0);
}

// Angles for any of the six orders, the middle one (between the other two in the order's
// product) at least margin away from a quarter turn, or at one when locked.
Euler anyAngles(double margin, bool locked = false) {
  Euler e(uniform(-M_PI, M_PI), uniform(-M_PI, M_PI), uniform(-M_PI, M_PI),
          static_cast<Euler::RotationOrder>(*rc::gen::inRange(1, 7)));
  double& middle = e.mOrder == Euler::XYZ || e.mOrder == Euler::ZYX   ? e.y
                   : e.mOrder == Euler::YZX || e.mOrder == Euler::XZY ? e.z
                                                                      : e.x;
  middle = locked ? *rc::gen::element(-M_PI / 2, M_PI / 2) : uniform(-M_PI / 2 + margin, M_PI / 2 - margin);
  return e;
}

bool anglesWithin(const Euler& a, const Euler& b, double tolerance) {
  return Vec3(a.x, a.y, a.z).equal(Vec3(b.x, b.y, b.z), tolerance);
}

// Double trigonometry throughout: 1e-9 allows for asin's loss of digits with the middle angle
// 0.01 from a quarter turn. At a quarter turn the outer two are told apart no longer, yet the
// angles must rebuild the same matrix; asin next to 1 keeps only half the digits (about
// 1.5e-8 rad), hence 1e-7 there.
RC_GTEST_PROP(EulerProperty, AnglesFromAMatrixGiveTheMatrixBack, (bool locked)) {
  const Euler angles = anyAngles(0.01, locked);
  const Mat4 rotation = productInOrder(angles);
  const Euler e = after(Euler(0, 0, 0, Euler::Unspecified), &Euler::setWithMat4, rotation, angles.mOrder);
  RC_ASSERT(e.mOrder == angles.mOrder && (locked || anglesWithin(e, angles, 1e-9)));
  RC_ASSERT(near(productInOrder(e), rotation, locked ? 1e-7 : 1e-14));
}

// setWithEuler carries about seven digits: 1e-6 on matrix elements of size 1. The outer
// angles lose more as the middle one nears a quarter turn (as 1/cos of it), so it keeps 0.1
// away, where 1e-5 holds.
RC_GTEST_PROP(EulerProperty, QuaternionOfAnglesMatchesTheMatrixProduct, ()) {
  const Euler angles = anyAngles(0.1);
  const Quaternion q = after(Quaternion(), &Quaternion::setWithEuler, angles);
  const Euler back = after(Euler(0, 0, 0, Euler::Unspecified), &Euler::setWithQuaternion, q, angles.mOrder);
  RC_ASSERT(near(after(Mat4(), &Mat4::setWithQuaternion, q), productInOrder(angles), 1e-6));
  RC_ASSERT(anglesWithin(back, angles, 1e-5));
}

// (The arguments run down the columns: Mat4's setWithAffine and the inverse below pin that.)
TEST(Affine, MultiplyAppliesItsArgumentAfter) {
  const Affine s(2, 0, 0, 3, 1, 1), t(0, 1, -1, 0, 5, 0);
  const Vec2 p(1, 2);
  EXPECT_TRUE(near(after(s, &Affine::multiply, t).getTransform(p), t.getTransform(s.getTransform(p))) &&
              near(after(s, &Affine::premultiply, t).getTransform(p), s.getTransform(t.getTransform(p))));
  EXPECT_TRUE(near(after(s, &Affine::translate, 1, 0).getTransform(Vec2()), {3, 1})) << "extenders act first";
}

TEST(Affine, AnglesAreDegreesAndTheAnchorLandsOnThePosition) {
  // kDegToRad leaves 2.7e-14 in a quarter turn's cosine.
  EXPECT_TRUE(near(after(Affine(), &Affine::setRotate, 90).getTransform(Vec2(1, 0)), {0, 1}, 1e-13) &&
              near(after(Affine(), &Affine::setSkewX, 45).getTransform(Vec2(0, 1)), {1, 1}, 1e-13) &&
              near(after(Affine(), &Affine::setSkewY, 45).getTransform(Vec2(1, 0)), {1, 1}, 1e-13));
  const Affine layer = after(Affine(), [](Affine& a) { a.set(Vec2(10, 20), Vec2(100, 200), Vec2(2, 3), 30); });
  const double c = std::cos(30 * kDegToRad), s = std::sin(30 * kDegToRad);
  EXPECT_TRUE(near(layer.getTransform(Vec2(10, 20)), {100, 200}, 1e-13) &&
              near(layer.getTransform(Vec2(11, 21)), {100 + 2 * c - 3 * s, 200 + 2 * s + 3 * c}, 1e-13));
}

TEST(Affine, InverseTreatsDeterminantsBelowOneMillionthAsSingularAndAverageScaleIsAFloat) {
  const auto scaled = [](double x, double y) { return Affine(x, 0, 0, y, 0, 0); };
  Affine out(1, 2, 3, 4, 5, 6);
  EXPECT_TRUE(near(scaled(1e-04, 1e-04).getInverse(), Affine(true))) << "det 1e-08: the identity";
  EXPECT_TRUE(scaled(1e-06, 1).inverse(out) && scaled(-1e-06, 1).inverse(out)) << "exactly 1e-06 is inverted";
  // x' = 2x + 3y + 3, y' = x + 2y + 4 gives x = 2x' - 3y' + 6, y = -x' + 2y' - 5: no term is zero or mirrored.
  EXPECT_TRUE(near(Affine(2, 1, 3, 2, 3, 4).getInverse(), Affine(2, -1, -3, 2, 6, -5)));
  // By rows, rounded to four decimals in single precision.
  EXPECT_EQ(Doubles({scaled(1, 3).averageScale(), scaled(1.0 / 3, 1.0 / 3).averageScale(),
                     after(Affine(), &Affine::setRotate, 33).averageScale(), Affine(3, 4, 0, 0, 0, 0).averageScale()}),
            Doubles({2, 0.33329999446868896, 1, 3.5}));
}

}  // namespace Quillmere::Velmira
