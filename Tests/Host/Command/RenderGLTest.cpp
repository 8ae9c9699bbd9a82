#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <random>
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

// Damaged input never kills or hangs the command. Each mutant of a PNG, a JPEG, an MP4 and an MKV (bytes flipped, a
// range zeroed, the file cut short, a range doubled, where a fixed seed says) renders every frame, each the original's
// where the format can tell (damage is never rendered silently), or fails with exit 1, its last line naming the file,
// and leaves nothing in the output's folder.
TEST(VelmiraRender, DamagedInputRendersEveryFrameItHoldsOrFailsNamingTheFile) {
  MediaFixtures fixtures;
  MediaFixtures::Video mp4, mkv;
  mp4.frames = mkv.frames = 6;
  mkv.name = "clip.mkv";
  const std::string sources[] = {fixtures.makePicture({"p.png"}), fixtures.makePicture({"p.jpg"}),
                                 fixtures.makeVideo(mp4), fixtures.makeVideo(mkv)};
  std::mt19937 random(20240611);
  int n = 0;
  for (const std::string& source : sources) {
    for (int damage = 0; damage < 8; ++damage, ++n) {
      std::string bytes = readFile(source);
      const std::size_t start = random() % bytes.size(), length = 1 + random() % (bytes.size() / 8);
      if (damage % 4 == 0)
        for (int i = 0; i < 8; ++i) bytes[random() % bytes.size()] ^= static_cast<char>(1 + random() % 255);
      if (damage % 4 == 1) bytes.replace(start, length, std::min(length, bytes.size() - start), '\0');
      if (damage % 4 == 2) bytes.resize(start);
      if (damage % 4 == 3) bytes.insert(start, bytes.substr(start, length));
      const std::string kind = fs::path(source).extension().string(), input = "in" + std::to_string(n) + kind,
                        folder = "o" + std::to_string(n), output = folder + "/r" + kind;
      SCOPED_TRACE(input);
      writeFile(fixtures.path(input), bytes);
      fs::create_directories(fixtures.path(folder));
      const VelmiraRun run = VelmiraRun::run({"render", input, "-o", output, "--quiet"}, fixtures.folder(), 60);
      ASSERT_TRUE(run.exitCode == 0 || run.exitCode == 1) << "exit " << run.exitCode << "\n" << run.err;
      std::vector<std::string> left;  // temporary files included
      for (const auto& entry : fs::directory_iterator(fixtures.path(folder))) left.push_back(entry.path().string());
      if (run.exitCode == 0) {
        EXPECT_EQ(left, std::vector<std::string>{fixtures.path(output)});
        EXPECT_EQ(readFrames(fixtures.path(output)).size(), readFrames(fixtures.path(input)).size());
        // Rendered, so undamaged: the mutation fell where no picture is, and every pixel is the original's. A JPEG is
        // the exception: it has no checksum, and changed bytes of its picture that still decode as valid data are
        // another picture to FFmpeg and to anyone, not damage that can be told.
        const std::vector<ArgbFrame> mutant = readFrames(fixtures.path(input)), original = readFrames(source);
        ASSERT_EQ(mutant.size(), original.size());
        for (std::size_t i = 0; i < mutant.size() && kind != ".jpg"; ++i)
          for (int y = 0; y < mutant[i].height(); ++y)
            EXPECT_EQ(std::memcmp(mutant[i].row(y), original[i].row(y), mutant[i].width() * 4u), 0)
                << "frame " << i << " row " << y << " differs from the original's";
      } else {
        EXPECT_EQ(left, std::vector<std::string>{});
        const std::string err = run.err.substr(0, run.err.find_last_not_of('\n') + 1);
        const std::string last = err.substr(err.rfind('\n') + 1);
        EXPECT_TRUE(last.rfind("velmira: ", 0) == 0 && last.find(input) != std::string::npos) << run.err;
      }
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
