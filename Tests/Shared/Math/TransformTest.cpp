// Mat4, Quaternion, Euler and Affine.

#include "MathExpect.h"

namespace Quillmere::Velmira {

// Sines and cosines of quarter turns are off by about 6e-17: a few ulps of 1 cover them.
constexpr double kUlps = 1e-15;

TEST(Mat4, ConstructorsStoreInTheirStatedOrder) {
  const double sequence[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  const Mat4 columns(sequence, true), rows(sequence, false);  // by rows, m[4c + r] = a_(4r + c)
  const Vec4 a(0, 1, 2, 3), b(4, 5, 6, 7), c(8, 9, 10, 11), d(12, 13, 14, 15);
  EXPECT_TRUE(columns.m[3] == 3 && rows.m[12] == 3 && rows.m[1] == 4 && near(columns.getRow(1), {1, 5, 9, 13}));
  EXPECT_TRUE(near(Mat4(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, false), rows) &&
              near(after(Mat4(), [](Mat4& m) { m.set(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15); }), rows));
  EXPECT_TRUE(near(Mat4(a, b, c, d, true), rows) && near(Mat4(a, b, c, d, false), columns)) << "here true is rows";
}

TEST(Mat4, ProductsApplyTheRightOperandFirstIntoAnyOutAndDivideOnlyWhenProjecting) {
  const Mat4 p(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, false);
  const Mat4 q(2, 0, 1, 0, 0, 3, 0, 1, 1, 0, 4, 0, 5, 6, 7, 1, false);
  Mat4 separate(false), intoP = p, intoQ = q;
  Mat4::mult(p, q, separate);
  Mat4::mult(intoP, q, intoP);
  Mat4::mult(p, intoQ, intoQ);
  EXPECT_EQ(separate.m[0], 25.0);  // row 0 of p by column 0 of q: 2 + 0 + 3 + 20
  EXPECT_TRUE(near(intoP, separate) && near(intoQ, separate) && near(p * q, separate));
  const Mat4 m(1, 0, 0, 5, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 1, false);  // row 3 is (0, 0, 1, 1): w = z + 1
  EXPECT_TRUE(near(m.mult(Vec3(1, 2, 3)), {6, 2, 3}) && near(m.multAndProject(Vec3(1, 2, 3)), {1.5, 0.5, 0.75}) &&
              near(m.multWithoutTranslate(Vec3(1, 2, 3)), {1, 2, 3}));
  Mat4 r(1, 2, 0, 1, 3, 4, 0, 1, 0, 0, 1, 1, 0, 0, 0, 1, false), out(false);
  EXPECT_TRUE(r.getInverse(out) && r.getInverse(r) && near(r, out)) << "the inverse may be written in place";
  EXPECT_TRUE(!Mat4(false).getInverse(out) && near(out, Mat4(true))) << "a singular matrix leaves the identity";
  EXPECT_TRUE(after(Mat4(), [](Mat4& t) { t.setScale(1e-100, 1e-100, 1e-100); }).getInverse(out)) << "det 1e-300";
}

TEST(Mat4, RotationsAreRightHandedInRadiansAndExtendersActFirst) {
  const auto turned = [](const Mat4& m, Vec3 from, Vec3 to) { return near(m * from, to, kUlps); };
  EXPECT_TRUE(turned(after(Mat4(), &Mat4::setXRotation, M_PI / 2), {0, 1, 0}, {0, 0, 1}) &&
              turned(after(Mat4(), &Mat4::setYRotation, M_PI / 2), {0, 0, 1}, {1, 0, 0}) &&
              turned(after(Mat4(), &Mat4::setZRotation, M_PI / 2), {1, 0, 0}, {0, 1, 0}));
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
  Mat4 look(1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 7, 0, 0, 1, false);
  look.setLookAt(Vec3(5, 0, 0), Vec3(0, 0, 0), Vec3(0, 1, 0));  // z = (1, 0, 0), x = up x z, y = z x x
  EXPECT_TRUE(near(look, Mat4(0, 0, 1, 1, 0, 1, 0, 2, -1, 0, 0, 3, 7, 0, 0, 1, false)));
  // up along the view: z.z takes 0.0001 as a float and stays unnormalised; x = up x z is zero
  // again and normalises to X; y = z x x is not normalised.
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

TEST(Mat4, EqualityIsInclusivePerElementForMatricesAndExactForQuaternions) {
  EXPECT_TRUE(Mat4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1e-12, 0, 0, 0, 1, false) == Mat4(true) &&
              Affine(1, 0, 0, 1, 1e-12, 0) == Affine(true));
  EXPECT_FALSE(Mat4(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 2e-12, 0, 0, 0, 1, false) == Mat4(true) ||
               Affine(1, 0, 0, 1, 0, 2e-12) == Affine(true));
  EXPECT_TRUE(!(Quaternion(0, 0, 0, 1 - 1e-16) == Quaternion()) && Quaternion(0, 0, 0, 1 - 1e-16) != Quaternion());
}

TEST(Quaternion, StartsAtNoTurnOnlySetNormalisesTheAxisAndAnglesComeBackInDegrees) {
  const double c = std::cos(M_PI / 6), h = std::sqrt(0.5);
  const auto set = [](Vec3 axis) { return after(Quaternion(), [&](Quaternion& q) { q.set(axis, M_PI / 3); }); };
  EXPECT_TRUE(near(Quaternion(), {0, 0, 0, 1}) &&
              near(after(Quaternion(0, 0, 0, 0), &Quaternion::normalize), {0, 0, 0, 1}));
  EXPECT_TRUE(near(Quaternion(Vec3(0, 0, 2), M_PI / 3), {0, 0, 1, c}, kUlps) &&
              near(set({0, 0, 2}), {0, 0, 0.5, c}, kUlps));
  EXPECT_TRUE(near(set({0, 0, 0}), {0.5, 0, 0, c}, kUlps)) << "no axis is X";
  EXPECT_TRUE(near(Quaternion::quaternionMulVec3(Quaternion(0, 0, h, h), Vec3(1, 0, 0)), {0, 1, 0}, kUlps));
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
  const auto fromEuler = [](Quaternion q, Euler::RotationOrder order) {
    return after(q, &Quaternion::setWithEuler, Euler(1, 0, 0, order));
  };
  const double s = static_cast<float>(std::sin(0.5)), c = static_cast<float>(std::cos(0.5));
  EXPECT_TRUE(near(fromEuler(Quaternion(), Euler::XYZ), {s, 0, 0, c})) << "in single precision";
  // No order gives a zero quaternion; an unknown one changes nothing.
  EXPECT_TRUE(near(fromEuler(Quaternion(), Euler::Unspecified), {0, 0, 0, 0}) &&
              near(fromEuler(Quaternion(1, 2, 3, 4), static_cast<Euler::RotationOrder>(9)), {1, 2, 3, 4}));
}

TEST(Quaternion, MultiplyPutsItsArgumentOnTheRightAndSlerpTakesTheShortArc) {
  const double h = std::sqrt(0.5);
  const Quaternion x(h, 0, 0, h), y(0, h, 0, h), z(0, 0, h, h), close(0, 0, std::sin(1e-4), std::cos(1e-4));
  // x y: y acts first and takes +Z to +X, which x keeps; y x: x takes +Z to -Y.
  EXPECT_TRUE(
      near(Quaternion::quaternionMulVec3(after(x, &Quaternion::multiply, y), Vec3(0, 0, 1)), {1, 0, 0}, kUlps) &&
      near(Quaternion::quaternionMulVec3(after(x, &Quaternion::premultiply, y), Vec3(0, 0, 1)), {0, -1, 0}, kUlps));
  EXPECT_TRUE(
      near(after(Quaternion(), &Quaternion::slerp, z, 0.5), {0, 0, std::sin(M_PI / 8), std::cos(M_PI / 8)}, kUlps));
  EXPECT_TRUE(near(after(Quaternion(), &Quaternion::slerp, Quaternion(0, 0, -h, -h), 0.999), z, 1e-3)) << "short arc";
  // Half angles 1e-4 apart: a sine below 0.001 gives the plain average, whatever t is.
  EXPECT_TRUE(
      near(after(Quaternion(), &Quaternion::slerp, close, 0.1), {0, 0, std::sin(1e-4) * 0.5, (1 + close.w) * 0.5}) &&
      near(after(Quaternion(), &Quaternion::slerp, close, 0.9), {0, 0, std::sin(1e-4) * 0.5, (1 + close.w) * 0.5}));
  EXPECT_TRUE(near(Quaternion::lerp(close, close, NAN), close));
}

TEST(Euler, UnspecifiedKeepsTheHeldOrderAndGimbalLockUsesTheFloatThreshold) {
  EXPECT_EQ(Ints({Euler::Unspecified, Euler::XYZ, Euler::YZX, Euler::ZXY, Euler::XZY, Euler::YXZ, Euler::ZYX}),
            Ints({0, 1, 2, 3, 4, 5, 6}));
  // Euler() holds XYZ, which set keeps; == takes each angle within 1e-12 and the very same order.
  const Euler e = after(Euler(), &Euler::set, 0, 2, 3, Euler::Unspecified);
  EXPECT_TRUE(e == Euler(0, 2, 3, Euler::XYZ) && e == Euler(1e-12, 2, 3, Euler::XYZ) &&
              !(e == Euler(0, 2, 3, Euler::ZYX)));
  const Mat4 yxz = after(after(after(Mat4(), &Mat4::rotateY, 0.2), &Mat4::rotateX, 0.3), &Mat4::rotateZ, 0.4);
  const Euler held = after(Euler(0, 0, 0, Euler::YXZ), &Euler::setWithMat4, yxz, Euler::Unspecified);
  EXPECT_TRUE(near(Vec3(held.x, held.y, held.z), {0.3, 0.2, 0.4}, kUlps) && held.mOrder == Euler::YXZ);
  const Euler none(7, 8, 9, Euler::Unspecified);  // no order to extract for: the angles stay
  EXPECT_TRUE(after(none, &Euler::setWithMat4, yxz, Euler::Unspecified) == none);
  const Mat4 past(1, 0, 1.0000000000000002, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, false);
  EXPECT_EQ(after(Euler(), &Euler::setWithMat4, past, Euler::XYZ).y, M_PI / 2) << "clamped to 1, not NaN";
  // 0.99999899 lies between the float 0.999999 (0.99999898672) and the double: locked, so z is 0.
  const Mat4 locked(1, -0.5, 0.99999899, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, false);
  EXPECT_EQ(after(Euler(), &Euler::setWithMat4, locked, Euler::XYZ).z, 0.0);
}

TEST(Affine, ArgumentsRunDownTheColumnsAndMultiplyAppliesItsArgumentAfter) {
  const Affine a(1, 2, 3, 4, 5, 6), s(2, 0, 0, 3, 1, 1), t(0, 1, -1, 0, 5, 0);
  const Vec2 p(1, 2);
  EXPECT_TRUE(a.m[1] == 3 && a.m[3] == 2 && near(a.getTransform(Vec2(1, 0)), {6, 8}));
  double x = 1, y = 2;
  Affine(0, 1, 1, 0, 0, 0).transform(x, y);  // swaps the coordinates
  EXPECT_TRUE(near(Vec2(x, y), {2, 1})) << "y comes from the old x";
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
  EXPECT_TRUE(!scaled(0.999e-06, 1).inverse(out) && near(out, Affine(1, 2, 3, 4, 5, 6))) << "out untouched";
  EXPECT_TRUE(near(scaled(1e-04, 1e-04).getInverse(), Affine(true))) << "det 1e-08: the identity";
  EXPECT_TRUE(scaled(1e-06, 1).inverse(out) && scaled(-1e-06, 1).inverse(out)) << "exactly 1e-06 is inverted";
  EXPECT_TRUE(near(Affine(2, 0, 0, 4, 6, 8).getInverse(), Affine(0.5, 0, 0, 0.25, -3, -2)));
  // By rows, rounded to four decimals in single precision.
  EXPECT_EQ(Doubles({scaled(1, 3).averageScale(), scaled(1.0 / 3, 1.0 / 3).averageScale(),
                     after(Affine(), &Affine::setRotate, 33).averageScale(), Affine(3, 4, 0, 0, 0, 0).averageScale()}),
            Doubles({2, 0.33329999446868896, 1, 3.5}));
}

}  // namespace Quillmere::Velmira
