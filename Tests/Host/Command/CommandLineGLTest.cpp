// The velmira command as a person types it, one run a line: the arguments, the exit code, and a fragment of what it
// must print (on standard output for a success, on standard error otherwise). After every run the inputs are as they
// were, and so is an output that a failed run was given; no temporary or lock file is left behind.
#include <gtest/gtest.h>

#include <signal.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <set>
#include <thread>

#include <fmt/format.h>
#include <string>
#include <vector>

#include "Core/GLLimits.h"
#include "Support/MediaFiles.h"
#include "Support/MediaFixtures.h"
#include "VelmiraRun.h"
#include "VelmiraVersion.h"

namespace Quillmere::Velmira {
namespace {

namespace fs = std::filesystem;

// A copy of the plug-in whose property list has one line changed (or is missing).
std::string pluginWithList(const MediaFixtures& fixtures, const std::string& name, const std::string& from,
                           const std::string& to) {
  fs::path folder = fs::path(fixtures.folder()) / name;
  fs::create_directories(folder);
  fs::copy_file(VELMIRA_PLUGIN, folder / "Velmira.so");
  std::string list = readFile(fs::path(VELMIRA_PLUGIN).replace_extension(".pipl").string());
  if (from.empty()) return (folder / "Velmira.so").string();
  auto at = list.find(from);
  EXPECT_NE(at, std::string::npos) << "the property list has no line " << from;
  writeFile((folder / "Velmira.pipl").string(), list.replace(at, from.size(), to));
  return (folder / "Velmira.so").string();
}

TEST(VelmiraCommandLine, EachRunExitsAndSpeaksAsExpected) {
  MediaFixtures fixtures;
  const std::string picture = fixtures.makePicture({"p.png"});
  const std::string video = fixtures.makeVideo({});  // 10 frames
  fixtures.makeSequence("seq/f_%d.png", 7, 3, 24, 16);
  fixtures.makePicture({"f_0000.png"});
  fs::create_symlink("p.png", fixtures.path("link.png"));
  fs::create_hard_link(picture, fixtures.path("hard.png"));
  fixtures.makePicture({"wide.png", GLLimits::maxTextureSize() + 1, 2});
  std::string huge = readFile(picture);  // its header says 16384x16384, more than FFmpeg decodes
  writeFile(fixtures.path("huge.png"), huge.replace(16, 8, std::string("\0\0\x40\0\0\0\x40\0", 8)));
  fixtures.makeTruncated(picture, "half.png");
  fixtures.makeTruncated(video, "half.mp4", 0.3);
  fixtures.makeCorrupt(video, "noise.mp4");
  fixtures.makeSequence("gap/g_%03d.png", 1, 3, 4, 4);
  fs::remove(fixtures.path("gap/g_002.png"));
  fixtures.makeSequence("odd/o_%04d.png", 1, 1, 24, 16);
  fixtures.makePicture({"odd/o_0002.png", 9, 16});
  writeFile(fixtures.path("notes.png"), "these are not pixels\n");
  writeFile(fixtures.path("empty.png"), "");
  fs::create_directories(fixtures.path("folder.png"));
  MediaFixtures::Video broad;
  broad.name = "broad.mp4";
  broad.width = 96;
  fixtures.makeVideo(broad);
  // Segments for join: frames 0-3, 4-9, 5-9 and 6-9 of the clip, and 4-9 of a broader one.
  for (const auto& [input, frames, segment] : {std::array<std::string, 3>{video, "0-3", "a.mp4"},
                                               {video, "4-9", "b.mp4"},
                                               {video, "5-9", "c.mp4"},
                                               {video, "6-9", "d.mp4"},
                                               {"broad.mp4", "4-9", "w.mp4"}}) {
    ASSERT_EQ(VelmiraRun::run({"render", input, "--frames", frames, "-o", segment, "-q"}, fixtures.folder()).exitCode,
              0);
  }
  const std::string kept = "kept.png";
  const std::string longest(251, 'n');                                     // with ".png", NAME_MAX
  const std::string ours = fmt::format("{:#x}", Version::kEffectVersion);  // the version global setup declares
  const std::string about = fmt::format("Velmira v{}.{}\nVelmira\n", Version::kMajor, Version::kMinor);

  const std::string badVersion = pluginWithList(fixtures, "version", "Version = " + ours, "Version = 0x1");
  const std::string badFlags = pluginWithList(fixtures, "flags", "OutFlags = 0", "OutFlags = 0x2000000");
  const std::string badFlags2 = pluginWithList(fixtures, "flags2", "OutFlags2 = 0x400", "OutFlags2 = 0x1400");
  const std::string badEntry = pluginWithList(fixtures, "entry", "EntryPointFunc", "PluginMain");
  const std::string noKey = pluginWithList(fixtures, "nokey", "MatchName = Quillmere Velmira", "");
  const std::string noList = pluginWithList(fixtures, "missing", "", "");
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string shown;  // on stdout after a success, on stderr after a failure
  } cases[] = {
      // clang-format off
      {{"--help"}, 0, "Usage:"},
      {{"about", "--help"}, 0, "Usage:"},
      {{"params", "--help"}, 0, "Usage:"},
      {{"mask", "--help"}, 0, "--skin-blur-range"},
      // The slider flags come from the plug-in, with their ranges in the help and the params table.
      {{"render", "--help"}, 0, "Skin Blur: 0 to 30, default 9 (whole numbers; the slider shows 0 to 300)"},
      {{"params"}, 0, "\nSkin Blur         --skin-blur         9         0 to 30           0 to 300          whole"},
      {{"params"}, 0, "\nSkin Whiten       --skin-whiten       30.0 %    0.0 to 100.0 %    0.0 to 100.0 %    percent"},
      {{"about"}, 0, about},
      {{"--version"}, 0, fmt::format("velmira {}\n", Version::kText)},
      // Names of the longest length a file system allows: the temporaries' names are cut, not the outputs'.
      {{"render", "p.png", "-o", longest + ".png"}, 0, longest + ".png"},
      {{"render", "seq/f_%d.png", "-o", longest.substr(9) + "_%04d.png"}, 0, longest.substr(9) + "_%04d.png"},
      // Usage errors: exit 2, before anything is read or written.
      {{"render", "p.png", "-o", kept, "--skin-whiten", "120"}, 2, "--skin-whiten: Skin Whiten: 120 is outside its valid range 0 to 100 %"},
      {{"render", "p.png", "-o", kept, "--skin-blur", "0@0,31@1"}, 2, "Skin Blur: 31 is outside its valid range 0 to 30"},
      {{"render", "p.png", "-o", kept, "--skin-redden", "5@inf"}, 2, "--skin-redden: '5@inf': 'inf' is not a time"},
      {{"render", video, "-o", kept, "--skin-whiten", "0@1,5@25f"}, 2, "--skin-whiten: two keyframes at the same time (1 s)"},
      {{"render", "p.png", "-o", kept, "--frames", "9-3"}, 2, "--frames: '9-3' ends before it starts"},
      {{"render", "p.png", "-o", kept, "--frames", "3-x"}, 2, "--frames: '3-x' is not a frame range A-B"},
      {{"render", "p.png", "-o", kept, "--bogus"}, 2, "--bogus"},
      {{"render", video, "-o", kept, "--compare", "c.png", "--compare-frame", "50", "--frames", "0-3"}, 2, "--compare-frame 50 lies outside --frames 0-3"},
      {{"mask", "p.png"}, 2, "--output is required"},
      {{"mask", "p.png", "-o", kept, "--skin-whiten", "5"}, 2, "--skin-whiten"},
      {{"paint", "--help"}, 2, "'paint' is no verb of velmira"},
      {{"render", "", "-o", kept}, 2, "the INPUT given is empty"},
      {{"preview", ""}, 2, "the INPUT given is empty"},
      {{"render", "p.png", "-o", "out.xyz"}, 2, "out.xyz: unknown output format '.xyz'"},
      {{"render", "p.png", "-o", "no/such/folder/out.png"}, 2, "there is no folder no/such/folder"},
      {{"render", "p.png", "-o", "out.png", "--compare", "c.mp4"}, 2, "--compare c.mp4: the before/after picture is one"},
      {{"render", video, "-o", "v.mp4", "--compare", "c.png", "--compare-frame", "10"}, 2, "--compare-frame 10 is not among the frames 0-9"},
      // No output ever writes over an input, whatever name it goes by.
      {{"render", "p.png", "-o", "p.png"}, 2, "p.png is the input; velmira never writes over its input"},
      {{"render", "p.png", "-o", "link.png"}, 2, "link.png is the input (p.png under another name)"},
      {{"render", "p.png", "-o", "hard.png"}, 2, "hard.png is the input (p.png under another name)"},
      {{"render", "seq/f_%d.png", "-o", "seq/f_%01d.png"}, 2, "seq/f_7.png is the input"},
      {{"render", "seq/f_%d.png", "--frames", "8-9", "-o", "seq/f_%01d.png"}, 2, "seq/f_8.png is the input"},
      {{"render", "f_0000.png", "-o", "f_%04d.png"}, 2, "f_0000.png is the input"},
      {{"render", "p.png", "-o", kept, "--compare", "p.png"}, 2, "p.png is the input"},
      {{"render", "p.png", "-o", "new.png", "--compare", "./new.png"}, 2, "--compare ./new.png is also the output"},
      // Failures: exit 1, naming the file at fault: the input, or the file of a sequence.
      {{"render", "absent.png", "-o", kept}, 1, "absent.png"},
      {{"render", "half.png", "-o", kept}, 1, "half.png: frame 0 missing: truncated or corrupt"},
      {{"render", "half.png", "-o", kept, "--accept-damaged"}, 1, "half.png: frame 0 missing: truncated or corrupt"},
      {{"render", "half.mp4", "-o", kept}, 1, "half.mp4"},
      {{"render", "noise.mp4", "-o", kept}, 1, "noise.mp4"},
      {{"render", "notes.png", "-o", kept}, 1, "notes.png"},
      {{"render", "empty.png", "-o", kept}, 1, "empty.png"},
      {{"render", "folder.png", "-o", kept}, 1, "folder.png"},
      {{"render", "none_%04d.png", "-o", kept}, 1, "none_%04d.png"},
      {{"render", "gap/g_%03d.png", "-o", kept}, 1, "gap/g_002.png"},
      {{"render", "odd/o_%04d.png", "-o", kept}, 1, "odd/o_0002.png"},
      {{"render", "wide.png", "-o", kept}, 1, "wide.png: the frame is"},
      {{"render", "huge.png", "-o", kept}, 1, "huge.png: FFmpeg refused to decode it for its size: Picture size 16384x16384 is invalid"},
      {{"preview", "wide.png"}, 1, "wide.png: the frame is"},
      {{"render", video, "-o", "late.mp4", "--frames", "20-30"}, 1, "no frame in the range asked for"},
      // A join refuses segments that leave frames out, overlap or differ, naming the segment.
      {{"join", "--source", video, "-o", "j.mp4", "a.mp4", "d.mp4"}, 1, "d.mp4: starts at frame 6, but a.mp4 ends at frame 3: frames 4-5 are in no segment"},
      {{"join", "--source", video, "-o", "j.mp4", "a.mp4", "b.mp4", "c.mp4"}, 1, "c.mp4: starts at frame 5, inside b.mp4 (frames 4-9)"},
      {{"join", "--source", video, "-o", "j.mp4", "a.mp4", "w.mp4"}, 1, "w.mp4: is h264 96x48, where a.mp4 is h264 64x48"},
      {{"join", "--source", video, "-o", "j.mp4", "b.mp4"}, 1, "b.mp4: starts at frame 4, where the frames to join (frames 0-9 of"},
      {{"join", "--source", video, "-o", "j.mp4", "a.mp4"}, 1, "a.mp4: ends at frame 3, where the frames to join"},
      {{"join", "--source", video, "-o", "j.mp4", "a.mp4", video}, 1, "clip.mp4: states no first frame"},
      {{"join", "--source", "seq/f_%d.png", "-o", "j_%d.png", "gap/g_%03d.png"}, 1, "gap/g_002.png: missing from the sequence"},
      {{"join", "--source", video, "-o", "j.png", "a.mp4"}, 2, "the output of a join is a video or a numbered sequence"},
      {{"join", "--source", video, "-o", "j_%02d.png", "a.mp4"}, 2, "a.mp4: a segment of j_%02d.png is a sequence pattern too"},
      {{"submit", video, "-o", "s.png"}, 2, "s.png: a farm renders into a video or a numbered sequence"},
      // A plug-in that disagrees with its property list is refused.
      {{"--plugin", badVersion, "about"}, 1, "declares version 0x1, flags 0x0 and 0x400, but global setup declared version " + ours},
      {{"--plugin", badFlags, "about"}, 1, "flags 0x2000000 and 0x400"},
      {{"--plugin", badFlags2, "about"}, 1, "flags 0x0 and 0x1400"},
      {{"--plugin", badEntry, "about"}, 1, "has no entry 'PluginMain'"},
      {{"--plugin", noKey, "about"}, 1, "has no 'MatchName'"},
      {{"--plugin", noList, "about"}, 1, "cannot read the plug-in's property list"},
      // clang-format on
  };
  const std::vector<std::string> inputs = {picture, video, fixtures.path("seq/f_7.png"), fixtures.path("f_0000.png")};
  std::vector<std::string> before;
  for (const std::string& input : inputs) before.push_back(readFile(input));
  for (const auto& run : cases) {
    std::string line;
    for (const std::string& argument : run.arguments) line += " " + fs::path(argument).filename().string();
    SCOPED_TRACE("velmira" + line);
    writeFile(fixtures.path(kept), "an earlier result");
    VelmiraRun result = VelmiraRun::run(run.arguments, fixtures.folder());
    EXPECT_EQ(result.exitCode, run.exitCode) << result.err;
    const std::string& shown = run.exitCode == 0 ? result.out : result.err;
    EXPECT_NE(shown.find(run.shown), std::string::npos) << "printed: " << shown;
    if (run.exitCode != 0) {
      EXPECT_TRUE(result.out.empty()) << "printed a result: " << result.out;
    }
    EXPECT_EQ(readFile(fixtures.path(kept)), "an earlier result") << "the existing output was touched";
    for (std::size_t i = 0; i < inputs.size(); ++i)
      EXPECT_EQ(readFile(inputs[i]), before[i]) << inputs[i] << " was written";
    for (const auto& entry : fs::recursive_directory_iterator(fixtures.folder())) {
      EXPECT_NE(entry.path().filename().string()[0], '.') << "left behind: " << entry.path();
    }
  }
  for (const std::string& name : {longest + ".png", longest.substr(9) + "_0007.png", longest.substr(9) + "_0009.png"})
    EXPECT_EQ(readFrames(fixtures.path(name)).size(), 1u) << name;
  EXPECT_FALSE(fs::exists(fixtures.path("late.mp4")));
  EXPECT_FALSE(fs::exists(fixtures.path("j.mp4")));
  EXPECT_FALSE(fs::exists(fixtures.path("new.png")));
}

// Damaged input fails by default, naming the file, the frame and the decoder's reason, and writes nothing; with
// --accept-damaged it is rendered and its damaged frames are listed, even under --quiet.
TEST(VelmiraCommandLine, DamagedInputFailsUnlessAccepted) {
  MediaFixtures fixtures;
  fixtures.makeDamagedFrame(fixtures.makeVideo({}), "hit.mp4", 5);
  fixtures.makeTruncated(fixtures.makePicture({"p.jpg", 64, 48}), "half.jpg");
  fixtures.makeTruncated(fixtures.makePicture({"q.jpg"}), "end.jpg", 0.95);  // FFmpeg misses the end marker alone
  const std::string png = readFile(fixtures.makePicture({"p.png"}));
  writeFile(fixtures.path("cut.png"), png.substr(0, png.size() - 12));  // the end chunk gone
  MediaFixtures::Video mkv;
  mkv.name = "clip.mkv";
  fixtures.makeTruncated(fixtures.makeVideo(mkv), "half.mkv", 0.6);  // demuxes cleanly up to the cut
  const struct {
    std::string input, output;
    std::string reason;  // after "<input>: ", on failure
    std::string listed;  // a line of the list after an accepted render
  } cases[] = {
      // clang-format off
      {"hit.mp4", "o.mp4", "frame 5 truncated or corrupt: ", "velmira:   frame 5 truncated or corrupt: "},
      {"half.jpg", "o.jpg", "frame 0 truncated or corrupt: overread", "velmira:   frame 0 truncated or corrupt: "},
      {"end.jpg", "o.jpg", "frame 0 truncated or corrupt: EOI missing", "velmira:   frame 0 truncated or corrupt: "},
      {"cut.png", "o.png", "frame 0 truncated or corrupt: 0 bytes left", "velmira:   frame 0 truncated or corrupt: "},
      {"half.mkv", "o.mkv", "missing: truncated: the container states 10 frames, the stream holds", " missing: truncated"},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.input);
    writeFile(fixtures.path(c.output), "an earlier result");
    VelmiraRun refused = VelmiraRun::run({"render", c.input, "-o", c.output}, fixtures.folder());
    EXPECT_EQ(refused.exitCode, 1) << refused.err;
    EXPECT_NE(refused.err.find(c.input + ": frame"), std::string::npos) << refused.err;
    EXPECT_NE(refused.err.find(c.reason), std::string::npos) << refused.err;
    EXPECT_EQ(readFile(fixtures.path(c.output)), "an earlier result");
    fs::remove(fixtures.path(c.output));
    VelmiraRun accepted =
        VelmiraRun::run({"mask", c.input, "-o", c.output, "--accept-damaged", "--quiet"}, fixtures.folder());
    EXPECT_EQ(accepted.exitCode, 0) << accepted.err;
    EXPECT_NE(accepted.err.find(c.listed), std::string::npos) << accepted.err;
    EXPECT_TRUE(fs::exists(fixtures.path(c.output)));
  }
  for (const auto& entry : fs::recursive_directory_iterator(fixtures.folder()))
    EXPECT_NE(entry.path().filename().string()[0], '.') << "left behind: " << entry.path();
}

// A signal during a render into an existing output stops it: exit 128+N naming the signal, the output's files as they
// were byte for byte, no new frame of a sequence and no temporary left. It is signalled once its first temporary
// appears, and the render lasts far longer than that.
TEST(VelmiraCommandLine, ASignalStopsARenderAndKeepsTheExistingOutput) {
  MediaFixtures fixtures;
  MediaFixtures::Video clip;
  clip.width = 160, clip.height = 120, clip.frames = 100, clip.audio = false;  // some 30 s at blur 30 on llvmpipe
  const std::string video = fixtures.makeVideo(clip);
  const std::string out = fixtures.path("out");
  const struct {
    int signal, exitCode;
    std::string name, output;
    std::vector<std::string> existing;
  } cases[] = {{SIGINT, 130, "SIGINT", "kept.mp4", {"kept.mp4"}},
               {SIGTERM, 143, "SIGTERM", "f_%04d.png", {"f_0000.png", "f_0001.png"}},
               {SIGHUP, 129, "SIGHUP", "kept.mov", {"kept.mov"}}};
  for (const auto& run : cases) {
    SCOPED_TRACE(run.name);
    fs::remove_all(out);
    fs::create_directories(out);
    for (const std::string& name : run.existing) writeFile(out + "/" + name, "earlier " + name);
    const pid_t pid = VelmiraRun::start({"render", video, "-o", "out/" + run.output, "--skin-blur", "30"},
                                        fixtures.folder(), fixtures.path("stderr"));
    int status = 0;
    bool signalled = false;
    for (int i = 0; waitpid(pid, &status, WNOHANG) == 0; ++i) {
      if (!signalled && filesIn(out).size() > run.existing.size() + 1) {  // a lock file and a temporary
        signalled = kill(pid, run.signal) == 0;
        i = 0;
      }
      if (i == 6000) kill(pid, SIGKILL);  // hung for a minute, which the checks below report
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const std::string err = readFile(fixtures.path("stderr"));
    EXPECT_TRUE(WIFEXITED(status)) << "ended by the signal itself, not by an exit";
    EXPECT_EQ(WEXITSTATUS(status), run.exitCode) << err;
    EXPECT_NE(err.find("interrupted by " + run.name), std::string::npos) << err;
    EXPECT_EQ(filesIn(out), run.existing);
    for (const std::string& name : run.existing) EXPECT_EQ(readFile(out + "/" + name), "earlier " + name);
  }
}

// From too little memory to start GL up to enough to render, the command renders, or fails with exit 1 and a message;
// it is never ended by a signal (Mesa's shader compiler dereferences the null that a failed allocation gives it), and
// leaves nothing in the folder.
TEST(VelmiraCommandLine, UnderAMemoryLimitItRendersOrFailsCleanly) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer reserves more address space than any of these limits";
#endif
  MediaFixtures fixtures;
  fixtures.makePicture({"p.png", 64, 48});
  std::set<int> codes;
  for (rlim_t mib = 280; mib <= 600; mib += 20) {
    SCOPED_TRACE(fmt::format("ulimit -v {} MiB", mib));
    int status = 0;
    waitpid(VelmiraRun::start({"render", "p.png", "-o", "o.png"}, fixtures.folder(), fixtures.path("err"), mib << 20),
            &status, 0);
    ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    const int code = WEXITSTATUS(status);
    codes.insert(code);
    EXPECT_TRUE(code == 0 || code == 1) << "exit " << code;
    if (code != 0) {
      EXPECT_NE(readFile(fixtures.path("err")).find("velmira: "), std::string::npos);
    }
    EXPECT_EQ(fs::exists(fixtures.path("o.png")), code == 0);
    fs::remove(fixtures.path("o.png"));
    for (const auto& entry : fs::directory_iterator(fixtures.folder()))
      EXPECT_NE(entry.path().filename().string()[0], '.') << "left behind: " << entry.path();
  }
  EXPECT_EQ(codes, (std::set<int>{0, 1})) << "the limits no longer span failing and rendering";
}

}  // namespace
}  // namespace Quillmere::Velmira
