// What cutting a render into chunks costs: the chunks of a 1920x1080 H.264 clip with audio rendered one after
// another (velmira render --frames, each a process of its own, as on the nodes of a farm) plus the join, against one
// render of the whole clip. The ratio is the machine time a farm spends beyond one machine's; its wall time is about
// the ratio times one render, divided by the nodes. Run: build*/bin/FarmBench [frames] (default 160).
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <fmt/format.h>

#include "Support/MediaFixtures.h"

namespace {

double secondsToRun(const std::string& command) {
  auto start = std::chrono::steady_clock::now();
  int status = std::system((command + " >/dev/null 2>&1").c_str());
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (status != 0) {
    std::fprintf(stderr, "failed: %s\n", command.c_str());
    std::exit(1);
  }
  return seconds;
}

}  // namespace

int main(int argc, char** argv) {
  using Quillmere::Velmira::MediaFixtures;
  const int frames = argc > 1 ? std::atoi(argv[1]) : 160;
  MediaFixtures fixtures;
  MediaFixtures::Video clip;
  clip.width = 1920;
  clip.height = 1080;
  clip.frames = frames;
  std::fprintf(stderr, "making a %d-frame 1920x1080 clip with audio...\n", frames);
  const std::string input = fixtures.makeVideo(clip);
  const std::string velmira = fmt::format("'{}'", VELMIRA_COMMAND);

  const double single =
      secondsToRun(fmt::format("{} render '{}' -o '{}' -q", velmira, input, fixtures.path("one.mp4")));
  std::printf("%s\n", fmt::format("{:>6} {:>12} {:>12} {:>8} {:>10} {:>10} {:>7}", "chunks", "frames each",
                                  "renders (s)", "join (s)", "total (s)", "single (s)", "ratio")
                          .c_str());
  for (int chunks : {1, 4, 16}) {
    const int each = (frames + chunks - 1) / chunks;
    double renders = 0.0;
    std::string segments;
    for (int first = 0, n = 0; first < frames; first += each, ++n) {
      const std::string segment = fixtures.path(fmt::format("c{}-{}.mp4", chunks, n));
      renders += secondsToRun(fmt::format("{} render '{}' -o '{}' --frames {}-{} -q", velmira, input, segment, first,
                                          std::min(first + each, frames) - 1));
      segments += " '" + segment + "'";
    }
    const double join = secondsToRun(fmt::format("{} join --source '{}' -o '{}' -q{}", velmira, input,
                                                 fixtures.path(fmt::format("joined{}.mp4", chunks)), segments));
    std::printf("%s\n", fmt::format("{:>6} {:>12} {:>12.1f} {:>8.2f} {:>10.1f} {:>10.1f} {:>7.3f}", chunks, each,
                                    renders, join, renders + join, single, (renders + join) / single)
                            .c_str());
    std::fflush(stdout);
  }
  return 0;
}
