// One job cut into ranges, rendered apart and joined, is the job rendered at once: by hand (render --frames, then
// join) and through a Slurm cluster of this machine (submit --wait), for a clip with audio and a PNG sequence.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Media/MediaPath.h"
#include "SlurmCluster.h"
#include "Support/MediaFiles.h"
#include "Support/MediaFixtures.h"
#include "VelmiraRun.h"

namespace Quillmere::Velmira {
namespace {

namespace fs = std::filesystem;

// Two encodes of the same frames by H.264 at the writer's quality, one whole and one cut at other keyframes.
constexpr int kEncoderTolerance = 4;

struct Job {
  std::string input, output;
};

// The frames of `farm` are those of `single`: as many, at the same times, numbered alike; each within the encoder's
// tolerance, or for pictures the same file byte for byte; and the audio packets are the same.
void expectSameOutput(const MediaFixtures& fixtures, const std::string& single, const std::string& farm) {
  MediaInfo singleInfo, farmInfo;
  const std::vector<ArgbFrame> want = readFrames(fixtures.path(single), &singleInfo),
                               got = readFrames(fixtures.path(farm), &farmInfo);
  ASSERT_EQ(got.size(), want.size());
  EXPECT_EQ(farmInfo.timeBase.den, singleInfo.timeBase.den);
  for (std::size_t i = 0; i < want.size(); ++i) {
    EXPECT_EQ(got[i].pts, want[i].pts) << "frame " << i;
    EXPECT_EQ(got[i].index, want[i].index) << "frame " << i;
    int worst = 0;
    for (int y = 0; y < want[i].height(); ++y)
      for (int x = 0; x < want[i].width() * 4; ++x)
        worst = std::max(worst, std::abs(got[i].row(y)[x] - want[i].row(y)[x]));
    EXPECT_LE(worst, singleInfo.kind == MediaKind::Video ? kEncoderTolerance : 0) << "frame " << i;
    if (singleInfo.kind == MediaKind::Sequence) {
      const std::string file = MediaPath::sequenceFileName(single, want[i].index);
      EXPECT_EQ(readFile(fixtures.path(MediaPath::sequenceFileName(farm, want[i].index))),
                readFile(fixtures.path(file)));
    }
  }
  if (singleInfo.kind == MediaKind::Video) {
    EXPECT_EQ(MediaFixtures::audioOf(fixtures.path(farm)), MediaFixtures::audioOf(fixtures.path(single)));
  }
}

// Twelve frames, so that four chunks of three leave a join at three places; the sequence starts at 1.
MediaFixtures& media() {
  static MediaFixtures fixtures;
  static bool made = false;
  if (!made) {
    MediaFixtures::Video clip;
    clip.frames = 12;
    fixtures.makeVideo(clip);
    fixtures.makeSequence("seq/f_%04d.png", 1, 12, 24, 16);
    for (const char* folder : {"single", "joined", "farm", "parts"}) fs::create_directories(fixtures.path(folder));
    made = true;
  }
  return fixtures;
}

const Job kJobs[] = {{"clip.mp4", "clip.mp4"}, {"seq/f_%04d.png", "f_%04d.png"}, {"clip.mp4", "f_%02d.png"}};

void renderSingle(const Job& job) {
  ASSERT_EQ(VelmiraRun::run({"render", job.input, "-o", "single/" + job.output, "-q"}, media().folder()).exitCode, 0);
}

TEST(VelmiraFarm, RangesJoinedByHandAreOneRender) {
  MediaFixtures& fixtures = media();
  for (const Job& job : kJobs) {
    SCOPED_TRACE(job.input + " to " + job.output);
    const int first = MediaPath::isSequencePattern(job.input) ? 1 : 0;
    renderSingle(job);
    std::vector<std::string> join{"join", "--source", job.input, "-o", "joined/" + job.output};
    for (int chunk = 0; chunk < 3; ++chunk) {
      const std::string segment = "part" + std::to_string(chunk) + "/" + job.output;
      fs::create_directories(fixtures.path("part" + std::to_string(chunk)));
      const std::string frames = std::to_string(first + 5 * chunk) + "-" + std::to_string(first + 5 * chunk + 4);
      VelmiraRun render =
          VelmiraRun::run({"render", job.input, "-o", segment, "--frames", frames, "-q"}, fixtures.folder());
      ASSERT_EQ(render.exitCode, 0) << render.err;
      join.push_back(segment);
    }
    VelmiraRun joined = VelmiraRun::run(join, fixtures.folder());
    ASSERT_EQ(joined.exitCode, 0) << joined.err;
    expectSameOutput(fixtures, "single/" + job.output, "joined/" + job.output);
  }
}

// Four chunks of three frames on the cluster; then a chunk whose range holds a damaged picture fails the job, and
// once the picture is mended a second submit renders that chunk alone.
TEST(VelmiraFarm, SubmitOnSlurmIsOneRenderAndRendersAgainOnlyWhatFailed) {
  SlurmCluster cluster;
  if (!cluster.installed())
    GTEST_SKIP() << "Slurm and munge are not installed: scripts/setup installs slurm-wlm and munge";
  ASSERT_TRUE(cluster.ready()) << "the one-node Slurm cluster did not come up";
  MediaFixtures& fixtures = media();
  int n = 0;
  for (const Job& job : kJobs) {
    SCOPED_TRACE(job.input + " to " + job.output);
    renderSingle(job);
    VelmiraRun farm = VelmiraRun::run({"submit", job.input, "-o", "farm/" + job.output, "--chunk-frames", "3",
                                       "--parts", "parts/" + std::to_string(n++), "--wait", "-q"},
                                      fixtures.folder());
    ASSERT_EQ(farm.exitCode, 0) << farm.err;
    expectSameOutput(fixtures, "single/" + job.output, "farm/" + job.output);
  }
  fixtures.makeSequence("bad/b_%04d.png", 1, 12, 24, 16);
  const std::string mended = readFile(fixtures.path("bad/b_0008.png"));
  writeFile(fixtures.path("bad/b_0008.png"), "not a picture");
  const std::vector<std::string> submit{"submit", "bad/b_%04d.png", "-o",        "farm/b_%04d.png", "--chunk-frames",
                                        "3",      "--parts",        "parts/bad", "--wait"};
  VelmiraRun failed = VelmiraRun::run(submit, fixtures.folder());
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_NE(failed.err.find("chunk 2 (frames 7-9) ended FAILED"), std::string::npos) << failed.err;
  EXPECT_NE(failed.err.find("parts/bad/chunk-0002.log"), std::string::npos) << failed.err;
  EXPECT_FALSE(fs::exists(fixtures.path("farm/b_0001.png")));
  EXPECT_FALSE(fs::exists(fixtures.path("parts/bad/join.log"))) << "the join ran";

  writeFile(fixtures.path("bad/b_0008.png"), mended);
  struct stat before {};
  ASSERT_EQ(::stat(fixtures.path("parts/bad/chunk-0000/b_0001.png").c_str(), &before), 0);
  VelmiraRun again = VelmiraRun::run(submit, fixtures.folder());
  ASSERT_EQ(again.exitCode, 0) << again.err;
  EXPECT_NE(again.err.find("1 of 4 chunks"), std::string::npos) << again.err;
  struct stat after {};
  ASSERT_EQ(::stat(fixtures.path("farm/b_0001.png").c_str(), &after), 0);
  EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec) << "chunk 0 was rendered again";
  expectSameOutput(fixtures, "single/f_%04d.png", "farm/b_%04d.png");
}

}  // namespace
}  // namespace Quillmere::Velmira
