#include "Math/Color.h"

#include <limits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace Quillmere::Velmira {
namespace {

// Single-precision quotients n / 15 and n / 255, widened: the values a
// colour text or packed integer must store exactly.
constexpr double k8Of15 = 0.5333333611488342;
constexpr double k1Of15 = 0.06666667014360428;
constexpr double k2Of15 = 0.13333334028720856;
constexpr double k128Of255 = 0.501960813999176;

void expectChannels(const Color& c, double r, double g, double b, double a, const std::string& what) {
  EXPECT_EQ(c.mRed, r) << what << " red";
  EXPECT_EQ(c.mGreen, g) << what << " green";
  EXPECT_EQ(c.mBlue, b) << what << " blue";
  EXPECT_EQ(c.mAlpha, a) << what << " alpha";
}

TEST(Color, TextFormsAreArgbWithSinglePrecisionQuotientsAndOtherShapesLeaveWhite) {
  const struct {
    const char* text;
    double r, g, b, a;
  } cases[] = {
      {"#f00", 1, 0, 0, 1},
      {"#FF0080", 1, 0, k128Of255, 1},
      {"#8f00", 1, 0, 0, k8Of15},
      {"#80ff0000", 1, 0, 0, k128Of255},  // alpha first
      {"#12G", 0, k1Of15, k2Of15, 1},     // the length picks the form; the digits read are 0x12
      // Wrong shapes keep the start value, opaque white.
      {"", 1, 1, 1, 1},
      {"ff0000", 1, 1, 1, 1},
      {"x#ff0000", 1, 1, 1, 1},
      {"#12345", 1, 1, 1, 1},
      {"#1234567", 1, 1, 1, 1},
      {"#12", 1, 1, 1, 1},
      {"#123456789", 1, 1, 1, 1},
  };
  for (const auto& c : cases) {
    expectChannels(Color(std::string(c.text)), c.r, c.g, c.b, c.a, std::string("\"") + c.text + "\"");
  }
  expectChannels(Color(), 1, 1, 1, 1, "Color()");
  EXPECT_THROW(Color(std::string("#")), std::invalid_argument);
  EXPECT_THROW(Color(std::string("#1FFFFFFFFFFFFFFFF")), std::out_of_range);
}

TEST(Color, PackedIntegerHasAlphaInTheTopByteAndNoDefault) {
  expectChannels(Color(0x80FF8000u), 1, k128Of255, 0, k128Of255, "0x80FF8000");
  expectChannels(Color(0x00FFFFFFu), 1, 1, 1, 0, "0x00FFFFFF");
}

TEST(Color, NilColoursAreAllEqual) {
  EXPECT_TRUE(Color(0.5, 0.5, -0.1, 1).isNil());
  EXPECT_FALSE(Color(std::numeric_limits<double>::quiet_NaN(), 0, 0, 1).isNil()) << "NaN is not below 0";
  Color nil;
  nil.setNil();
  expectChannels(nil, -1, -1, -1, -1, "setNil");
  EXPECT_TRUE(nil == Color(0.2, -3, 0.4, 0.5)) << "two nil colours, different channels";
  EXPECT_TRUE(nil != Color());
  EXPECT_TRUE(Color(1, 1, 1, 1) == Color(1, 1, 1, 1 - 1e-12));
  EXPECT_TRUE(Color(1, 1, 1, 1) != Color(1, 1, 1, 1 - 2e-12));
}

TEST(Color, LerpClampsTAndRoundsTheFirstWeightToFloat) {
  const Color a(0.2, 0.4, 0.6, 0.8), b(1, 0, 1, 0);
  expectChannels(Color::lerp(a, b, 2.0), 1, 0, 1, 0, "t 2");
  expectChannels(Color::lerp(a, b, -1.0), 0.2, 0.4, 0.6, 0.8, "t -1");
  // s = float(0.9) = 0.8999999761581421 while t stays 0.1.
  const double s = 0.8999999761581421;
  expectChannels(Color::lerp(Color(1, 1, 1, 1), Color(0, 0, 0, 0), 0.1), s, s, s, s, "t 0.1");
}

TEST(Color, HexStringTruncatesAndPadsNothing) {
  const struct {
    Color color;
    const char* text;
  } cases[] = {
      {Color(), "#FFFFFF"},
      {Color(0, 0, 0, 1), "#000"},
      {Color(1, 1, 1, 0.5), "#7FFFFFFF"},  // 127.5 truncates to 7F
      {Color(1, 0, 0.5, 1), "#FF07F"},
      {Color(0.0627, 1, 1, 1), "#FFFFF"},                            // 15.99 truncates to F
      {Color(-1, -1, -1, -1), "#FFFFFF01FFFFFF01FFFFFF01FFFFFF01"},  // nil: -255 as 32 bits
      {Color(1e30, 2, 0, 2), "#1FE7FFFFFFF1FE0"},                    // saturates, 510 is 1FE
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.color.toHexString(), c.text);
  }
}

RC_GTEST_PROP(ColorProperty, TwoDigitChannelTextParsesBack, ()) {
  // Bytes of 16 and above print two digits each.
  const auto byte = rc::gen::inRange(16u, 256u);
  const unsigned alpha = *byte;
  const Color original(alpha << 24 | *byte << 16 | *byte << 8 | *byte);
  const std::string text = original.toHexString();
  RC_ASSERT(text.size() == (alpha == 255 ? 7u : 9u));
  const Color back(text);
  RC_ASSERT(back.mRed == original.mRed);
  RC_ASSERT(back.mGreen == original.mGreen);
  RC_ASSERT(back.mBlue == original.mBlue);
  RC_ASSERT(back.mAlpha == original.mAlpha);
}

}  // namespace
}  // namespace Quillmere::Velmira
