#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "Support/MediaFiles.h"
#include "Support/MediaFixtures.h"
#include "Support/ReferenceRender.h"
#include "Support/ReferenceSliders.h"
#include "VelmiraRun.h"

namespace Quillmere::Velmira {
namespace {

namespace fs = std::filesystem;

// Frames compared away from the fixtures' frame marker, the 16x16 block at the top left,
// and from the pixels the default blur (4 pixels each way) mixes it into.
bool sameOutsideMarker(const ArgbFrame& a, const ArgbFrame& b) {
  constexpr int kReach = 16 + 4;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = y < kReach ? kReach : 0; x < a.width(); ++x) {
      if (std::memcmp(a.row(y) + x * 4, b.row(y) + x * 4, 4) != 0) return false;
    }
  }
  return true;
}

// What comes out is what the effect makes of what went in, frame by frame, whatever the road: a picture with alpha
// (odd-sized, so the rows are padded unevenly) keeps its alpha, a sequence comes out numbered like the input, and
// with no input the bundled portrait goes to out/ with its before/after picture.
TEST(VelmiraRender, OutputsAreTheEffectsFramesOfTheInputs) {
  MediaFixtures fixtures;
  fixtures.makePicture({"a.png", 37, 21, true});
  fixtures.makeSequence("seq/f_%04d.png", 7, 3, 24, 16);
  fs::create_directories(fixtures.path("done"));
  const struct {
    std::vector<std::string> arguments;
    std::string printed, input, output;
    ReferenceSliders sliders;
  } cases[] = {
      // clang-format off
      {{"render", "a.png", "-o", "out.png", "--skin-pinking", "40"}, "out.png\n", "a.png", "out.png", {9, 10, 30, 0, 40}},
      {{"render", "seq/f_%04d.png", "-o", "done/g_%04d.png"}, "done/g_%04d.png\n", "seq/f_%04d.png", "done/g_%04d.png", {}},
      {{"render"}, "out/astronaut.png\nout/astronaut-compare.png\n", VELMIRA_SAMPLE, "out/astronaut.png", {}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.printed);
    VelmiraRun run = VelmiraRun::run(c.arguments, fixtures.folder());
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, c.printed);
    MediaInfo info;
    const std::vector<ArgbFrame> in = readFrames(fixtures.path(c.input)),
                                 out = readFrames(fixtures.path(c.output), &info);
    ASSERT_EQ(out.size(), in.size());
    for (std::size_t i = 0; i < in.size(); ++i) {
      EXPECT_EQ(out[i].index, in[i].index) << "numbered unlike the input";
      EXPECT_TRUE(matchesReference(in[i], out[i], c.sliders)) << "frame " << in[i].index;
    }
    EXPECT_EQ(info.hasAlpha, c.input == "a.png");
  }
}

// "Skin Whiten" 0 up to frame 4, rising to 80 at frame 8, held after it. The plug-in reads the value through
// checkout_param at each frame's time, so the frames must follow the keys. The before/after picture of frame 5 holds
// that frame as it came in on the left and as the effect left it on the right, 8 pixels apart.
TEST(VelmiraRender, KeyframesReachThePluginAtEachFramesTimeAndTheComparePictureHoldsBeforeAndAfter) {
  MediaFixtures fixtures;
  MediaFixtures::Video clip;
  clip.frames = 11;
  std::string input = fixtures.makeVideo(clip);
  fs::create_directories(fixtures.path("k"));
  VelmiraRun run = VelmiraRun::run({"render", input, "-o", "k/f_%02d.png", "--quiet", "--skin-whiten",
                                    "0@0,0@4f,80@0.32", "--compare", "five.png", "--compare-frame", "5"},
                                   fixtures.folder());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  std::vector<ArgbFrame> frames = readFrames(fixtures.path("k/f_%02d.png"));
  ASSERT_EQ(frames.size(), 11u);
  for (int i = 1; i <= 4; ++i) EXPECT_TRUE(sameOutsideMarker(frames[0], frames[i])) << "frame " << i << " vs 0";
  for (int i = 5; i <= 8; ++i) {
    EXPECT_FALSE(sameOutsideMarker(frames[i - 1], frames[i])) << "frame " << i << " vs " << i - 1;
  }
  for (int i = 9; i <= 10; ++i) EXPECT_TRUE(sameOutsideMarker(frames[8], frames[i])) << "frame " << i << " vs 8";
  const ArgbFrame before = readFrames(input).at(5), both = readFrames(fixtures.path("five.png")).front();
  ASSERT_EQ(both.width(), 2 * before.width() + 8);
  ASSERT_EQ(both.height(), before.height());
  const std::size_t half = static_cast<std::size_t>(before.width()) * 4;
  for (int y = 0; y < before.height(); ++y) {
    ASSERT_EQ(std::memcmp(both.row(y), before.row(y), half), 0) << "left half is not frame 5, row " << y;
    ASSERT_EQ(std::memcmp(both.row(y) + half + 32, frames[5].row(y), half), 0) << "right half, row " << y;
  }
  // The held end is the keyed value itself: frame 10 equals a render with 80 throughout.
  fs::create_directories(fixtures.path("flat"));
  run =
      VelmiraRun::run({"render", input, "-o", "flat/f_%02d.png", "--quiet", "--skin-whiten", "80", "--frames", "10-10"},
                      fixtures.folder());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_TRUE(sameOutsideMarker(frames[10], readFrames(fixtures.path("flat/f_10.png")).front()));
}

}  // namespace
}  // namespace Quillmere::Velmira
