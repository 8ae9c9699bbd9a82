#include <gtest/gtest.h>

#include <string>

#include "Media/MediaWriter.h"
#include "Support/MediaFiles.h"
#include "Support/MediaFixtures.h"
#include "Support/SkinTest.h"
#include "VelmiraRun.h"

namespace Quillmere::Velmira {
namespace {

// The mask of every colour of a coarse cube, at ranges from none to all, against the reference model's skin test,
// written independently from the effect's description: white exactly where the reference blurs, black where it does
// not; only pixels on the range's rounding edge may be either. Alpha plays no part.
TEST(VelmiraMask, WhiteExactlyWhereTheReferenceSkinTestBlurs) {
  MediaFixtures fixtures;
  ArgbFrame cube;
  cube.allocate(18 * 18, 18);
  for (int i = 0; i < 18 * 18 * 18; ++i) {
    std::uint8_t* pixel = cube.row(i / (18 * 18)) + (i % (18 * 18)) * 4;
    pixel[0] = static_cast<std::uint8_t>(i * 7);
    for (int c = 0; c < 3; ++c)
      pixel[c + 1] = static_cast<std::uint8_t>(i / (c == 0 ? 324 : c == 1 ? 18 : 1) % 18 * 15);
  }
  MediaInfo info;
  info.width = cube.width();
  info.height = cube.height();
  info.hasAlpha = true;
  MediaWriter writer(fixtures.path("cube.png"), info);
  writer.write(cube);
  writer.finish();
  for (double range : {0.0, 5.0, 10.0, 12.5, 30.0, 99.9, 100.0}) {
    SCOPED_TRACE("range " + std::to_string(range));
    VelmiraRun run = VelmiraRun::run({"mask", "cube.png", "-o", "mask.png", "--skin-blur-range", std::to_string(range)},
                                     fixtures.folder());
    ASSERT_EQ(run.exitCode, 0) << run.err;
    ArgbFrame mask = readFrames(fixtures.path("mask.png")).front();
    ASSERT_EQ(mask.width(), cube.width());
    for (int y = 0; y < cube.height(); ++y) {
      for (int x = 0; x < cube.width(); ++x) {
        const std::uint8_t* in = cube.row(y) + x * 4;
        const std::uint8_t* out = mask.row(y) + x * 4;
        const SkinDecision decision = SkinTest::decide(in[1], in[2], in[3], range);
        ASSERT_TRUE(out[1] == out[2] && out[2] == out[3] && (out[1] == 0 || out[1] == 255)) << x << "," << y;
        if (decision != SkinDecision::EitherWay) {
          ASSERT_EQ(out[1] == 255, decision == SkinDecision::Blurred)
              << "rgb " << int(in[1]) << "," << int(in[2]) << "," << int(in[3]);
        }
      }
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
