#include <gtest/gtest.h>

#include <string>

#include "Support/MediaFiles.h"
#include "Support/MediaFixtures.h"
#include "Support/SkinTest.h"
#include "VelmiraRun.h"

namespace Quillmere::Velmira {
namespace {

// The mask against the reference model's skin test, written independently from the
// effect's description: white exactly where the reference blurs, black where it does
// not; pixels on the range's rounding edge may be either.
TEST(VelmiraMask, WhiteExactlyWhereTheReferenceSkinTestBlurs) {
  MediaFixtures fixtures;
  for (double rangePercent : {10.0, 3.5, 40.0}) {
    std::string range = std::to_string(rangePercent);
    VelmiraRun run =
        VelmiraRun::run({"mask", VELMIRA_SAMPLE, "-o", "mask.png", "--skin-blur-range", range}, fixtures.folder());
    ASSERT_EQ(run.exitCode, 0) << run.err;
    ArgbFrame portrait = readFrames(VELMIRA_SAMPLE).front();
    ArgbFrame mask = readFrames(fixtures.path("mask.png")).front();
    ASSERT_EQ(mask.width(), portrait.width());
    ASSERT_EQ(mask.height(), portrait.height());
    long blurred = 0, wrong = 0;
    std::string firstWrong;
    for (int y = 0; y < portrait.height(); ++y) {
      for (int x = 0; x < portrait.width(); ++x) {
        const std::uint8_t* in = portrait.row(y) + x * 4;
        const std::uint8_t* out = mask.row(y) + x * 4;
        SkinDecision decision = SkinTest::decide(in[1], in[2], in[3], rangePercent);
        bool white = out[1] == 255 && out[2] == 255 && out[3] == 255;
        bool black = out[1] == 0 && out[2] == 0 && out[3] == 0;
        EXPECT_TRUE(white || black) << "pixel " << x << "," << y << " is neither white nor black";
        blurred += white;
        if (decision == SkinDecision::EitherWay) continue;
        if (white != (decision == SkinDecision::Blurred)) {
          if (wrong++ == 0) firstWrong = std::to_string(x) + "," + std::to_string(y);
        }
      }
    }
    EXPECT_EQ(wrong, 0) << wrong << " pixels disagree at range " << range << ", the first at " << firstWrong;
    EXPECT_GT(blurred, 0) << "range " << range << ": the portrait has skin";
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
