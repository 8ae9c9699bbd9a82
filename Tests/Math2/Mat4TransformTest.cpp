#include <cmath>

#include <gtest/gtest.h>

#include "Math/Affine.h"
#include "Math/Mat4.h"
#include "Math/Quaternion.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

const double kPi = 3.141592653589793;
// Sines and cosines of quarter turns are off by about 6e-17, never more than a few ulps of 1.
const double kTrigTolerance = 1e-15;

struct RotationCase {
    const char* name;
    Mat4 rotation;
    Vec3 from;
    Vec3 to;
};

Mat4 rotated(void (Mat4::*setter)(double), double angle)
{
    Mat4 m(true);
    (m.*setter)(angle);
    return m;
}

Mat4 aboutAxis(double angle, double x, double y, double z)
{
    Mat4 m(true);
    m.setRotation(angle, x, y, z);
    return m;
}

TEST(Mat4TransformTest, QuarterTurnsAreRightHanded)
{
    const double q = kPi / 2;
    const RotationCase cases[] = {
        {"setXRotation", rotated(&Mat4::setXRotation, q), Vec3(0, 1, 0), Vec3(0, 0, 1)},
        {"setYRotation", rotated(&Mat4::setYRotation, q), Vec3(0, 0, 1), Vec3(1, 0, 0)},
        {"setZRotation", rotated(&Mat4::setZRotation, q), Vec3(1, 0, 0), Vec3(0, 1, 0)},
        {"setRotation about Y", aboutAxis(q, 0, 1, 0), Vec3(0, 0, 1), Vec3(1, 0, 0)},
        {"setRotation about unnormalised Z", aboutAxis(q, 0, 0, 5), Vec3(1, 0, 0), Vec3(0, 1, 0)},
        {"setRotation about zero axis is X", aboutAxis(q, 0, 0, 0), Vec3(0, 1, 0), Vec3(0, 0, 1)},
    };
    for (const RotationCase& test : cases) {
        EXPECT_TRUE(vectorsNear(test.rotation.mult(test.from), test.to, kTrigTolerance))
            << test.name;
    }
}

TEST(Mat4TransformTest, ExtendersActInLocalCoordinates)
{
    Mat4 m(true);
    m.rotateZ(kPi / 2);
    EXPECT_TRUE(matricesNear(m, rotated(&Mat4::setZRotation, kPi / 2), 0.0));
    m.translate(1, 0, 0);
    // The move follows the turned X axis, which now points along +Y.
    EXPECT_TRUE(vectorsNear(m.mult(Vec3()), Vec3(0, 1, 0), kTrigTolerance));

    Mat4 base = aboutAxis(0.7, 1, 2, 3);
    base.position(Vec3(4, 5, 6));
    Mat4 scale(true);
    scale.setScale(2, 3, 4);
    Mat4 extended = base;
    extended.scale(Vec4(2, 3, 4, 99));
    EXPECT_TRUE(matricesNear(extended, base * scale, 1e-15));

    Mat4 translation(true);
    translation.setTranslate(-1, 2, 7);
    extended = base;
    extended.translate(Vec3(-1, 2, 7));
    EXPECT_TRUE(matricesNear(extended, base * translation, 1e-14));
}

TEST(Mat4TransformTest, ProjectionsFollowTheirArgumentOrders)
{
    // Hand-worked from the projection formulas.
    Mat4 ortho(true);
    ortho.setOrtho(0, 100, 0, 50, -1, 1);  // top 0, bottom 50: Y is flipped.
    const Mat4 expectedOrtho(0.02, 0, 0, -1, 0, -0.04, 0, 1, 0, 0, -1, 0, 0, 0, 0, 1, false);
    EXPECT_TRUE(matricesNear(ortho, expectedOrtho, 1e-17));

    Mat4 frustum(true);
    frustum.setFrustum(0, 100, 0, 50, 1, 3);  // the same positions read as bottom, top.
    const Mat4 expectedFrustum(0.02, 0, 1, 0, 0, 0.04, 1, 0, 0, 0, -2, -3, 0, 0, -1, 0, false);
    EXPECT_TRUE(matricesNear(frustum, expectedFrustum, 1e-17));

    Mat4 perspective(true);
    perspective.setPerspective(kPi / 2, 1, 1, 3);
    const Mat4 expectedPerspective(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -3, 0, 0, -1, 0, false);
    EXPECT_TRUE(matricesNear(perspective, expectedPerspective, kTrigTolerance));
}

TEST(Mat4TransformTest, LookAtWritesOnlyTheRotationPart)
{
    Mat4 m(true);
    m.setTranslate(1, 2, 3);
    m.m[3] = 7;
    m.setLookAt(Vec3(5, 0, 0), Vec3(0, 0, 0), Vec3(0, 1, 0));
    // z = (1, 0, 0), x = up x z = (0, 0, -1), y = z x x = (0, 1, 0).
    const Mat4 expected(0, 0, 1, 1, 0, 1, 0, 2, -1, 0, 0, 3, 7, 0, 0, 1, false);
    EXPECT_TRUE(matricesNear(m, expected, 0.0));
}

TEST(Mat4TransformTest, LookAtDegenerateDirectionsStillGiveABasis)
{
    Mat4 same(true);
    same.setLookAt(2, 2, 2, 2, 2, 2, 0, 1, 0);
    EXPECT_TRUE(matricesNear(same, Mat4(true), 0.0)) << "eye on target looks from +Z";

    // up along the view: z is nudged to 1.0001 (as a float) and not normalised
    // again; up x z stays zero, which normalises to X; y = z x x is not normalised.
    Mat4 parallel(true);
    parallel.setLookAt(0, 0, 5, 0, 0, 0, 0, 0, 1);
    const double nudged = 1.0 + static_cast<double>(0.0001f);
    EXPECT_TRUE(vectorsNear(parallel.getColumn(0).getVec3(), Vec3(1, 0, 0), 0.0));
    EXPECT_TRUE(vectorsNear(parallel.getColumn(1).getVec3(), Vec3(0, nudged, 0), 0.0));
    EXPECT_TRUE(vectorsNear(parallel.getColumn(2).getVec3(), Vec3(0, 0, nudged), 0.0));
}

TEST(Mat4TransformTest, QuaternionAndAffineConversions)
{
    const double s = std::sqrt(0.5);
    Mat4 fromQuaternion = Mat4(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, true);
    fromQuaternion.setWithQuaternion(Quaternion(0, 0, s, s));
    EXPECT_TRUE(matricesNear(fromQuaternion, rotated(&Mat4::setZRotation, kPi / 2), 1e-15));

    // Affine(1, ..., 6) stores rows (1, 3, 5) and (2, 4, 6).
    const Affine affine(1, 2, 3, 4, 5, 6);
    Mat4 fromAffine(false);
    fromAffine.setWithAffine(affine);
    const Mat4 expected(1, 3, 0, 5, 2, 4, 0, 6, 0, 0, 1, 0, 0, 0, 0, 1, false);
    EXPECT_TRUE(matricesNear(fromAffine, expected, 0.0));
    EXPECT_TRUE(fromAffine.getAffine() == affine);
}

TEST(Mat4TransformTest, ComposeAroundAnAnchor)
{
    const Vec3 anchor(10, 20, 30);
    const Vec3 position(-1, 2, 5);
    const Quaternion rotation(Vec3(0, 0.6, 0.8), 1.1);
    const Vec3 scale(2, 1, 0.5);
    Mat4 m(true);
    m.compose(anchor, position, rotation, scale);
    EXPECT_TRUE(vectorsNear(m.mult(anchor), position, 1e-13));
    EXPECT_EQ(m.getRow(3), Vec4(0, 0, 0, 1));

    Mat4 withoutAnchor(true);
    withoutAnchor.compose(position, rotation, scale);
    Mat4 zeroAnchor(true);
    zeroAnchor.compose(Vec3(), position, rotation, scale);
    EXPECT_TRUE(matricesNear(zeroAnchor, withoutAnchor, 1e-15));

    Vec3 p, s;
    Quaternion q;
    m.decompose(anchor, p, q, s);
    EXPECT_TRUE(vectorsNear(p, position, 1e-13));
    EXPECT_TRUE(vectorsNear(s, scale, 1e-14));
}

struct DecomposeCase {
    const char* name;
    Mat4 matrix;
    Vec3 scale;
    Quaternion rotation;
};

TEST(Mat4TransformTest, DecomposeReportsMirrorsOnXAndFlatAxesAsTiny)
{
    Mat4 scaled(true);
    scaled.setScale(2, 3, 4);
    Mat4 mirroredY(true);
    mirroredY.setScale(1, -1, 1);
    const DecomposeCase cases[] = {
        {"plain scale", scaled, Vec3(2, 3, 4), Quaternion()},
        // diag(1, -1, 1) = diag(-1, 1, 1) x half turn about Z.
        {"mirror in Y", mirroredY, Vec3(-1, 1, 1), Quaternion(0, 0, 1, 0)},
        // A zero determinant does not negate sx.
        {"zero matrix", Mat4(false), Vec3(1e-06, 1e-06, 1e-06), Quaternion(0, 0, 0.5, 0)},
    };
    for (const DecomposeCase& test : cases) {
        Vec3 position(9, 9, 9), scale;
        Quaternion rotation;
        test.matrix.decompose(position, rotation, scale);
        EXPECT_TRUE(vectorsNear(scale, test.scale, 0.0)) << test.name;
        EXPECT_TRUE(quaternionsNear(rotation, test.rotation, 0.0)) << test.name;
        EXPECT_TRUE(vectorsNear(position, Vec3(), 0.0)) << test.name;
    }
}

TEST(Mat4TransformTest, HostToGLConversionCentresAndFlips)
{
    const Mat4 m = Mat4::getAEToGLConversionMatrix(1920, 1080);
    const Mat4 expected(1, 0, 0, -960, 0, -1, 0, 540, 0, 0, -1, 0, 0, 0, 0, 1, false);
    EXPECT_TRUE(matricesNear(m, expected, 0.0));
    EXPECT_TRUE(vectorsNear(m.mult(Vec3(960, 540, 0)), Vec3(), 0.0));
    EXPECT_TRUE(vectorsNear(m.mult(Vec3(0, 0, 2)), Vec3(-960, 540, -2), 0.0));
}

} // namespace
} // namespace Quillmere::Velmira
