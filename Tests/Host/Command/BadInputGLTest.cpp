#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Core/GLLimits.h"
#include "Support/MediaFixtures.h"
#include "VelmiraRun.h"

namespace Quillmere::Velmira {
namespace {

namespace fs = std::filesystem;

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// Each bad input fails with exit code 1 and a message that names the file, and leaves an
// output that already existed exactly as it was.
TEST(VelmiraBadInput, FailsNamingTheFileAndNeverTouchesTheOutput) {
  MediaFixtures fixtures;
  std::string picture = fixtures.makePicture({});
  std::string video = fixtures.makeVideo({});
  std::string tooWide = fixtures.makePicture({"wide.png", GLLimits::maxTextureSize() + 1, 2});
  writeFile(fixtures.path("notes.png"), "these are not pixels\n");
  struct Case {
    const char* what;
    std::string input;
    const char* messagePart;  // besides the file's name
  } cases[] = {
      {"missing", fixtures.path("absent.png"), ""},
      {"truncated picture", fixtures.makeTruncated(picture, "half.png"), ""},
      {"truncated video", fixtures.makeTruncated(video, "half.mp4", 0.3), ""},
      {"corrupt video", fixtures.makeCorrupt(video, "noise.mp4"), ""},
      {"unknown format", fixtures.path("notes.png"), ""},
      {"empty file", fixtures.path("empty.png"), ""},
      {"folder, not a file", fixtures.path("folder.png"), ""},
      {"frame above the GL texture limit", tooWide, "larger than this OpenGL's texture limit"},
  };
  writeFile(fixtures.path("empty.png"), "");
  fs::create_directories(fixtures.path("folder.png"));
  for (const auto& c : cases) {
    std::string output = fixtures.path("kept.png");
    writeFile(output, "an earlier result");
    VelmiraRun run = VelmiraRun::run({"render", c.input, "-o", output, "--quiet"}, fixtures.folder());
    EXPECT_EQ(run.exitCode, 1) << c.what << ": " << run.err;
    EXPECT_TRUE(contains(run.err, fs::path(c.input).filename().string())) << c.what << " said: " << run.err;
    EXPECT_TRUE(contains(run.err, c.messagePart)) << c.what << " said: " << run.err;
    EXPECT_EQ(readFile(output), "an earlier result") << c.what << " touched the existing output";
  }
  // Nothing half-written is left beside the output either.
  for (const auto& entry : fs::directory_iterator(fixtures.folder())) {
    EXPECT_EQ(entry.path().string().find("kept.png."), std::string::npos) << "left behind: " << entry.path();
  }
}

TEST(VelmiraBadInput, AnOutputThatCannotBeWrittenIsAFailureNamingIt) {
  MediaFixtures fixtures;
  std::string picture = fixtures.makePicture({});
  VelmiraRun run = VelmiraRun::run({"render", picture, "-o", "no/such/folder/out.png"}, fixtures.folder());
  EXPECT_EQ(run.exitCode, 1) << run.err;
  EXPECT_TRUE(contains(run.err, "out.png")) << run.err;
}

TEST(VelmiraBadInput, ARangeBeyondTheLastFrameIsAFailureThatWritesNothing) {
  MediaFixtures fixtures;
  std::string video = fixtures.makeVideo({});  // 10 frames
  VelmiraRun run = VelmiraRun::run({"render", video, "-o", "late.mp4", "--frames", "20-30"}, fixtures.folder());
  EXPECT_EQ(run.exitCode, 1) << run.err;
  EXPECT_TRUE(contains(run.err, "no frame in the range asked for")) << run.err;
  EXPECT_FALSE(fs::exists(fixtures.path("late.mp4"))) << "an empty output was written";
}

}  // namespace
}  // namespace Quillmere::Velmira
