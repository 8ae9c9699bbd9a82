#include <gtest/gtest.h>

#include <string>

#include "Command/SkinMask.h"
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

}  // namespace
}  // namespace Quillmere::Velmira
