#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Core/PaddedWorld.h"
#include "Core/SkinMask.h"
#include "Core/SliderDefinition.h"
#include "Support/SkinTest.h"

namespace Quillmere::Velmira {
namespace {

const char* decisionName(SkinDecision decision) {
  switch (decision) {
    case SkinDecision::Blurred: return "blurred";
    case SkinDecision::NotBlurred: return "not blurred";
    default: return "either way";
  }
}

// Every colour of a coarse cube, at ranges from none to all, against the reference's
// independent skin test; only pixels it calls either way may go either way.
TEST(SkinMask, AgreesWithTheReferenceSkinTestOverTheColourCube) {
  long compared = 0;
  for (double rangePercent : {0.0, 5.0, 10.0, 12.5, 30.0, 50.0, 99.9, 100.0}) {
    float range = static_cast<float>(rangePercent) / 100.0f;
    for (int r = 0; r < 256; r += 15) {
      for (int g = 0; g < 256; g += 15) {
        for (int b = 0; b < 256; b += 15) {
          SkinDecision expected = SkinTest::decide(r, g, b, rangePercent);
          if (expected == SkinDecision::EitherWay) continue;
          bool blurs = SkinMask::blurs(r, g, b, range);
          ++compared;
          ASSERT_EQ(blurs, expected == SkinDecision::Blurred)
              << "rgb " << r << "," << g << "," << b << " at " << rangePercent << " %: reference says "
              << decisionName(expected);
        }
      }
    }
  }
  EXPECT_GT(compared, 30000);
}

TEST(SkinMask, PaintsWhiteWhereBlurredAndLeavesThePaddingAlone) {
  PaddedWorld input(3, 2), mask(3, 2);
  mask.fillPadding(0xA5);
  const std::uint8_t colours[6][4] = {{255, 230, 160, 130}, {0, 230, 160, 130}, {255, 30, 60, 220},
                                      {255, 128, 128, 128}, {255, 200, 90, 40}, {255, 40, 200, 60}};
  for (int i = 0; i < 6; ++i) std::memcpy(input.row(i / 3) + (i % 3) * 4, colours[i], 4);
  SkinMask::paint(input, mask, 0.10f);
  const bool expected[6] = {true, true, false, false, true, false};  // alpha plays no part
  for (int i = 0; i < 6; ++i) {
    const std::uint8_t* pixel = mask.row(i / 3) + (i % 3) * 4;
    EXPECT_EQ(pixel[0], 255) << "pixel " << i << " alpha";
    EXPECT_EQ(pixel[1], expected[i] ? 255 : 0) << "pixel " << i;
    EXPECT_EQ(pixel[2], pixel[1]) << "pixel " << i;
    EXPECT_EQ(pixel[3], pixel[1]) << "pixel " << i;
  }
  for (int y = 0; y < 2; ++y) {
    for (A_long x = 12; x < mask.rowBytes(); ++x) ASSERT_EQ(mask.row(y)[x], 0xA5) << "padding byte " << x;
  }
}

TEST(PaddedWorld, RowsAlwaysCarryPaddingAndAreAligned) {
  for (A_long width : {1, 15, 16, 17, 64, 1920}) {
    A_long rowBytes = PaddedWorld::paddedRowBytes(width);
    EXPECT_GT(rowBytes, width * 4) << "width " << width;
    EXPECT_EQ(rowBytes % PaddedWorld::kRowAlignment, 0) << "width " << width;
    EXPECT_LE(rowBytes, width * 4 + 4 + PaddedWorld::kRowAlignment) << "width " << width;
  }
}

TEST(SliderDefinition, FlagsAreTheNamesInLowerCaseJoinedByDashes) {
  struct Case {
    const char* name;
    const char* flag;
  } cases[] = {{"Skin Blur", "skin-blur"}, {"Skin Blur Range", "skin-blur-range"}, {"  Odd--Name 2 ", "odd-name-2"}};
  for (const auto& c : cases) {
    SliderDefinition slider;
    slider.name = c.name;
    EXPECT_EQ(slider.flagName(), c.flag) << c.name;
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
