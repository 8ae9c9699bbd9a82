// Whether a long render holds its memory flat: 320x240 frames through the whole host (decode, the effect, encode),
// with "Skin Blur" keyframed through every size, so that every shader text is compiled on the way; the peak resident
// memory is printed after 1,000 frames and at the end. The frames the pipeline passes round are made once, and the
// shader objects of a replaced size are given back, so the two figures should be close.
//
//   SoakBench [frames]      default 10000 (minutes on llvmpipe)
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <fmt/format.h>

#include "Command/RenderPipeline.h"
#include "Core/EffectHost.h"
#include "Core/FrameTime.h"
#include "Media/MediaLog.h"
#include "Support/MediaFixtures.h"
#include "Velmira.h"

using namespace Quillmere::Velmira;

namespace {

// A line of /proc/self/status in MiB: VmHWM the peak resident set so far, VmRSS the resident set now.
double statusMiB(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(field + ":", 0) == 0) return std::atof(line.c_str() + field.size() + 1) / 1024.0;
  }
  return -1.0;
}

// Each whole size held for an equal share of the frames, with a one-frame step to the next.
std::string blurThroughEverySize(int frames) {
  std::string keys;
  for (int size = 0; size <= 30; ++size) {
    const int start = frames * size / 31, end = std::max(start, frames * (size + 1) / 31 - 1);
    keys += fmt::format("{}{}@{}f,{}@{}f", size ? "," : "", size, start, size, end);
  }
  return keys;
}

}  // namespace

int main(int argc, char** argv) {
  const int frames = argc > 1 ? std::max(1000, std::atoi(argv[1])) : 10000;
  MediaLog::setVerbose(false);
  MediaFixtures fixtures;
  MediaFixtures::Video clip;
  clip.width = 320;
  clip.height = 240;
  clip.frames = frames;
  clip.audio = false;
  std::fprintf(stderr, "making a %d-frame 320x240 clip...\n", frames);
  MediaReader reader(fixtures.makeVideo(clip));
  MediaWriter writer(fixtures.path("out.mp4"), reader.info());

  EffectHost host(EntryPointFunc);
  host.setTrack(0, ParamTrack::parse(blurThroughEverySize(frames)));
  host.setFrameRate(reader.info().frameRate.value());
  const Rational rate = reader.info().frameRate;
  // The peak alone would hide a leak behind the larger transient need of compiling a larger blur's shader, which
  // llvmpipe's compiler has; the resident set now tells the two apart.
  double peakAfterThousand = 0.0, nowAfterThousand = 0.0;
  const std::atomic<int> neverStopped{0};
  RenderPipeline(reader, writer, neverStopped)
      .run(
          [&](ArgbFrame& before, ArgbFrame& after) {
            after.allocate(before.width(), before.height());
            host.render(before, after, FrameTime::at(before.timeSeconds, rate.num, rate.den));
          },
          [&](std::int64_t written) {
            if (written == 1000) peakAfterThousand = statusMiB("VmHWM"), nowAfterThousand = statusMiB("VmRSS");
            if (written % 1000 == 0) std::fprintf(stderr, "%lld frames\n", static_cast<long long>(written));
          });
  fmt::print("{:<28}{:>12}{:>12}\n", "320x240, blur 0 to 30", "peak MiB", "now MiB");
  fmt::print("{:<28}{:>12.1f}{:>12.1f}\n", "after 1,000 frames", peakAfterThousand, nowAfterThousand);
  fmt::print("{:<28}{:>12.1f}{:>12.1f}\n", fmt::format("after {} frames", frames), statusMiB("VmHWM"),
             statusMiB("VmRSS"));
  return 0;
}
