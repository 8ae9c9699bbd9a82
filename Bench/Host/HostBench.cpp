// Frames per second of a 10-second 1920x1080 H.264 clip with audio, rendered by the velmira
// command at the default sliders, beside ffmpeg's smoothing filters on the same clip with the
// same encoder settings. Every row decodes, filters and encodes the whole clip, so the rows
// compare what a person waits for. Run: build*/bin/HostBench [seconds] (default 10).
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Support/MediaFixtures.h"

namespace {

struct Row {
  std::string tool;
  std::string settings;
  std::string command;
};

double secondsToRun(const std::string& command) {
  auto start = std::chrono::steady_clock::now();
  int status = std::system((command + " >/dev/null 2>&1").c_str());
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return status == 0 ? seconds : -1.0;
}

}  // namespace

int main(int argc, char** argv) {
  using Quillmere::Velmira::MediaFixtures;
  int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
  MediaFixtures fixtures;
  MediaFixtures::Video clip;
  clip.width = 1920;
  clip.height = 1080;
  clip.frames = 25 * seconds;
  clip.audio = true;
  std::fprintf(stderr, "making a %d-frame 1920x1080 clip with audio...\n", clip.frames);
  std::string input = fixtures.makeVideo(clip);
  std::string output = fixtures.path("out.mp4");

  // ffmpeg encodes as the velmira writer does: H.264 at CRF 18, audio copied.
  std::string ffmpeg = fmt::format("ffmpeg -v error -y -i '{}' -c:a copy -c:v libx264 -crf 18 -pix_fmt yuv420p", input);
  std::vector<Row> rows = {
      {"velmira", "default sliders (blur 9, range 10 %, whiten 30 %)",
       fmt::format("'{}' render '{}' -o '{}' --quiet", VELMIRA_COMMAND, input, output)},
      {"velmira", "blur 0, whiten 0 (host and transfers only)",
       fmt::format("'{}' render '{}' -o '{}' --quiet --skin-blur 0 --skin-whiten 0", VELMIRA_COMMAND, input, output)},
      {"ffmpeg", "no filter (decode and encode only)", fmt::format("{} -vf null '{}'", ffmpeg, output)},
      {"ffmpeg", "bilateral sigmaS=4 sigmaR=0.1",
       fmt::format("{} -vf bilateral=sigmaS=4:sigmaR=0.1 '{}'", ffmpeg, output)},
      {"ffmpeg", "smartblur lr=4 ls=-1 lt=10", fmt::format("{} -vf smartblur=lr=4:ls=-1:lt=10 '{}'", ffmpeg, output)},
      {"ffmpeg", "gblur sigma=4", fmt::format("{} -vf gblur=sigma=4 '{}'", ffmpeg, output)},
  };

  std::printf("%s\n", fmt::format("{:<9} {:<52} {:>9} {:>8}", "tool", "settings", "seconds", "frames/s").c_str());
  for (const Row& row : rows) {
    double elapsed = secondsToRun(row.command);
    std::string rate = elapsed > 0 ? fmt::format("{:.2f}", clip.frames / elapsed) : "failed";
    std::printf("%s\n", fmt::format("{:<9} {:<52} {:>9.1f} {:>8}", row.tool, row.settings, elapsed, rate).c_str());
    std::fflush(stdout);
  }
  return 0;
}
