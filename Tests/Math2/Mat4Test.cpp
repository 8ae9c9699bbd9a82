#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "Math/Mat4.h"
#include "MathExpect.h"

namespace Quillmere::Velmira {
namespace {

// 0..15 in storage order when read column by column.
const double kSequence[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
// The same sequence stored as if it had been read row by row: m[4c + r] = 4r + c.
const double kSequenceByRows[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};

Mat4 sequenceMatrix(bool columnMajor)
{
    return Mat4(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, columnMajor);
}

struct StorageCase {
    const char* name;
    Mat4 matrix;
    const double* expected;
};

TEST(Mat4Test, ConstructorsStoreInTheirStatedOrder)
{
    Mat4 viaSet(false);
    viaSet.set(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    const Vec4 a(0, 1, 2, 3), b(4, 5, 6, 7), c(8, 9, 10, 11), d(12, 13, 14, 15);
    const StorageCase cases[] = {
        {"16 doubles, columnMajor true", sequenceMatrix(true), kSequence},
        {"16 doubles, columnMajor false", sequenceMatrix(false), kSequenceByRows},
        {"array, columnMajor true", Mat4(kSequence, true), kSequence},
        {"array, columnMajor false", Mat4(kSequence, false), kSequenceByRows},
        // For vectors, true means rows: the opposite storage of columnMajor true.
        {"four Vec4, rows true", Mat4(a, b, c, d, true), kSequenceByRows},
        {"four Vec4, rows false", Mat4(a, b, c, d, false), kSequence},
        {"set always reads rows", viaSet, kSequenceByRows},
    };
    for (const StorageCase& test : cases) {
        EXPECT_TRUE(elementsAre(test.matrix.m, test.expected, 16, 0.0)) << test.name;
    }
}

TEST(Mat4Test, StartValuesAndRowColumnAccess)
{
    const double identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const double zeros[16] = {};
    EXPECT_TRUE(elementsAre(Mat4(true).m, identity, 16, 0.0));
    EXPECT_TRUE(elementsAre(Mat4(false).m, zeros, 16, 0.0));
    EXPECT_TRUE(elementsAre(Mat4::identity().m, identity, 16, 0.0));

    const Mat4 m = sequenceMatrix(true);
    EXPECT_EQ(m.getRow(1), Vec4(1, 5, 9, 13));
    EXPECT_EQ(m.getColumn(1), Vec4(4, 5, 6, 7));
    Mat4 written(false);
    for (int i = 0; i < 4; ++i) {
        written.setRow(i, m.getRow(i));
    }
    EXPECT_TRUE(matricesNear(written, m, 0.0));
}

TEST(Mat4Test, ProductAppliesTheRightOperandFirst)
{
    Mat4 translation(true);
    translation.setTranslate(10, 0, 0);
    Mat4 scale(true);
    scale.setScale(2, 2, 2);

    Mat4 combined = translation;
    combined.mult(scale);
    // Scaled first, then moved: (1, 1, 1) -> (2, 2, 2) -> (12, 2, 2).
    EXPECT_TRUE(vectorsNear(combined.mult(Vec3(1, 1, 1)), Vec3(12, 2, 2), 0.0));
    EXPECT_TRUE(matricesNear(translation * scale, combined, 0.0));
}

TEST(Mat4Test, StaticProductMayWriteIntoEitherOperand)
{
    const Mat4 a(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, false);
    const Mat4 b(2, 0, 1, 0, 0, 3, 0, 1, 1, 0, 4, 0, 5, 6, 7, 1, false);
    Mat4 separate(false);
    Mat4::mult(a, b, separate);
    Mat4 intoA = a;
    Mat4::mult(intoA, b, intoA);
    Mat4 intoB = b;
    Mat4::mult(a, intoB, intoB);
    EXPECT_TRUE(matricesNear(intoA, separate, 0.0));
    EXPECT_TRUE(matricesNear(intoB, separate, 0.0));
    // Row 0 of a times column 0 of b, worked by hand: 1*2 + 2*0 + 3*1 + 4*5.
    EXPECT_EQ(separate.m[0], 25.0);
}

TEST(Mat4Test, VectorProductsDivideOnlyWhenProjecting)
{
    // Row 3 is (0, 0, 1, 1): w = z + 1.
    const Mat4 projective(1, 0, 0, 5, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 1, false);
    const Vec3 p(1, 2, 3);
    EXPECT_TRUE(vectorsNear(projective.mult(p), Vec3(6, 2, 3), 0.0));
    EXPECT_TRUE(vectorsNear(projective * p, Vec3(6, 2, 3), 0.0));
    EXPECT_TRUE(vectorsNear(projective.multAndProject(p), Vec3(1.5, 0.5, 0.75), 0.0));
    EXPECT_TRUE(vectorsNear(projective.multWithoutTranslate(p), Vec3(1, 2, 3), 0.0));
    EXPECT_EQ(projective.mult(Vec4(1, 2, 3, 2)), Vec4(11, 2, 3, 5));

    // Where w comes out 1 the two agree.
    const Vec3 atZero(4, 5, 0);
    EXPECT_TRUE(vectorsNear(projective.multAndProject(atZero), projective.mult(atZero), 0.0));
}

TEST(Mat4Test, ElementWiseArithmeticCoversEveryElement)
{
    const Mat4 m = sequenceMatrix(true);
    Mat4 difference = m;
    difference.subtract(m);
    EXPECT_TRUE(matricesNear(difference, Mat4(false), 0.0));

    const Mat4 doubled = Mat4::identity() * 2.0;
    EXPECT_EQ(doubled.m[15], 2.0);
    EXPECT_TRUE(matricesNear(m + m, m * 2.0, 0.0));
    EXPECT_TRUE(matricesNear(m - m * 2.0, m * -1.0, 0.0));
}

struct DeterminantCase {
    const char* name;
    Mat4 matrix;
    double determinant;
};

TEST(Mat4Test, DeterminantIncludesTheBottomRow)
{
    const DeterminantCase cases[] = {
        {"identity", Mat4(true), 1.0},
        {"diagonal 2, 3, 4, 5", Mat4(2, 0, 0, 1, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 5, false), 120.0},
        {"2 by 2 block [1 2; 3 4]", Mat4(1, 2, 0, 0, 3, 4, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, false), -2.0},
        {"bottom row (0, 0, 0, 0)", Mat4(1, 0, 0, 7, 0, 1, 0, 8, 0, 0, 1, 9, 0, 0, 0, 0, false), 0.0},
        {"rows swapped", Mat4(0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, false), -1.0},
    };
    for (const DeterminantCase& test : cases) {
        EXPECT_EQ(test.matrix.determinant(), test.determinant) << test.name;
    }
}

TEST(Mat4Test, InverseOfAKnownMatrix)
{
    // The inverse of the block [1 2; 3 4] is [-2 1; 1.5 -0.5]; the translation
    // (1, 1, 1) comes back as -(A^-1 t).
    const Mat4 m(1, 2, 0, 1, 3, 4, 0, 1, 0, 0, 1, 1, 0, 0, 0, 1, false);
    const Mat4 expected(-2, 1, 0, 1, 1.5, -0.5, 0, -1, 0, 0, 1, -1, 0, 0, 0, 1, false);
    Mat4 out(false);
    EXPECT_TRUE(m.getInverse(out));
    EXPECT_TRUE(matricesNear(out, expected, 1e-15));

    Mat4 self = m;
    EXPECT_TRUE(self.getInverse(self));
    EXPECT_TRUE(matricesNear(self, out, 0.0));
}

TEST(Mat4Test, SingularInverseGivesIdentityAndTinyDeterminantsAreInverted)
{
    Mat4 out = sequenceMatrix(true);
    EXPECT_FALSE(Mat4(false).getInverse(out));
    EXPECT_TRUE(matricesNear(out, Mat4(true), 0.0));

    // Determinant 1e-300: no tolerance applies, so it is inverted.
    Mat4 tiny(true);
    tiny.setScale(1e-100, 1e-100, 1e-100);
    EXPECT_TRUE(tiny.getInverse(out));
    EXPECT_DOUBLE_EQ(out.m[0], 1e100);
}

TEST(Mat4Test, EqualityIsInclusiveAtTheToleranceAndFalseForNaN)
{
    Mat4 a(true);
    Mat4 b(true);
    b.m[7] = 1e-12;
    EXPECT_TRUE(a == b);
    b.m[7] = 2e-12;
    EXPECT_FALSE(a == b);

    Mat4 withNaN(true);
    withNaN.m[3] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(withNaN == withNaN);
}

TEST(Mat4Test, MaxScaleOnAxisIgnoresSignAndTheFourthRowAndColumn)
{
    Mat4 m(true);
    m.setScale(2, -3, 1);
    m.m[3] = 100;
    m.m[12] = 100;
    m.m[15] = 100;
    EXPECT_EQ(m.getMaxScaleOnAxis(), 3.0);
}

TEST(Mat4Test, TransposeLeavesTheSourceAndMayWriteInPlace)
{
    const Mat4 m = sequenceMatrix(true);
    Mat4 out(false);
    m.transpose(out);
    EXPECT_TRUE(elementsAre(out.m, kSequenceByRows, 16, 0.0));
    EXPECT_TRUE(elementsAre(m.m, kSequence, 16, 0.0));
    Mat4 self = m;
    self.transpose(self);
    EXPECT_TRUE(matricesNear(self, out, 0.0));
}

} // namespace
} // namespace Quillmere::Velmira
