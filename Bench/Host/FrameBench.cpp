// What one 1920x1080 frame costs the host besides decoding, rendering and encoding: the work a host does when the
// world the effect gets is a buffer of its own, beside what it does now that frames are made once and passed round.
// Before, each frame was allocated anew by the decoder and again for the result, copied into the effect's world,
// that world's output cleared, and the result copied out; now each stage takes a frame of the right size from the
// pipeline's set. Run: build*/bin/FrameBench (Google Benchmark's table; time is per frame).
#include <benchmark/benchmark.h>

#include <cstring>

#include "Core/ArgbFrame.h"

namespace Quillmere::Velmira {
namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

void copyRows(const ArgbFrame& from, ArgbFrame& to) {
  for (int y = 0; y < from.height(); ++y) std::memcpy(to.row(y), from.row(y), static_cast<std::size_t>(kWidth) * 4);
}

// The rows of a frame into another frame's, as into and out of the effect's own world.
void CopyFrameRows(benchmark::State& state) {
  ArgbFrame from, to;
  from.allocate(kWidth, kHeight);
  to.allocate(kWidth, kHeight);
  for (auto _ : state) {
    copyRows(from, to);
    benchmark::DoNotOptimize(to.row(0));
  }
}

// Everything the host used to do per frame: two new frames (their fresh pages touched by the first write), two
// copies and a clear.
void FormerHostWorkPerFrame(benchmark::State& state) {
  ArgbFrame world, output;
  world.allocate(kWidth, kHeight);
  output.allocate(kWidth, kHeight);
  for (auto _ : state) {
    ArgbFrame decoded, result;
    decoded.allocate(kWidth, kHeight);
    copyRows(decoded, world);
    std::memset(output.row(0), 0, output.rowBytes() * kHeight);
    result.allocate(kWidth, kHeight);
    copyRows(output, result);
    benchmark::DoNotOptimize(result.row(0));
  }
}

// What it does now: the decoder's and the render thread's frames taken again at the same size.
void HostWorkPerFrameNow(benchmark::State& state) {
  ArgbFrame decoded, result;
  decoded.allocate(kWidth, kHeight);
  result.allocate(kWidth, kHeight);
  for (auto _ : state) {
    decoded.allocate(kWidth, kHeight);
    result.allocate(kWidth, kHeight);
    benchmark::DoNotOptimize(result.row(0));
  }
}

BENCHMARK(CopyFrameRows)->Unit(benchmark::kMillisecond);
BENCHMARK(FormerHostWorkPerFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(HostWorkPerFrameNow)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quillmere::Velmira

BENCHMARK_MAIN();
