// Frames per second of reading and writing 1080p media, one thread each, as the host's decode and encode
// threads run them. "items_per_second" is frames per second.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "Media/MediaLog.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"
#include "Support/MediaFixtures.h"

namespace Quillmere::Velmira {
namespace {

constexpr int kFrames = 30;

MediaFixtures& media() {
  static MediaFixtures fixtures;
  return fixtures;
}

// A 1080p H.264 clip with audio, and its first frame as a PNG, made once.
const std::string& clip() {
  static const std::string path = [] {
    MediaFixtures::Video video;
    video.name = "bench.mp4";
    video.width = 1920;
    video.height = 1080;
    video.frames = kFrames;
    return media().makeVideo(video);
  }();
  return path;
}

const std::string& picture() {
  static const std::string path = [] {
    MediaReader reader(clip());
    MediaWriter writer(media().path("bench.png"), reader.info());
    ArgbFrame frame;
    reader.read(frame);
    writer.write(frame);
    writer.finish();
    return media().path("bench.png");
  }();
  return path;
}

void readAllFrames(benchmark::State& state, const std::string& path) {
  std::int64_t frames = 0;
  for (auto _ : state) {
    MediaReader reader(path);
    ArgbFrame frame;
    while (reader.read(frame)) ++frames;
    benchmark::DoNotOptimize(frame.row(0));
  }
  state.SetItemsProcessed(frames);
}

void writeFrames(benchmark::State& state, const std::string& source, const std::string& output) {
  MediaReader reader(source);
  MediaInfo info = reader.info();
  ArgbFrame frame;
  reader.read(frame);
  int count = info.kind == MediaKind::Video ? kFrames : 1;
  // The same picture again and again, at the source's frame spacing.
  std::int64_t spacing = static_cast<std::int64_t>(info.timeBase.den) * info.frameRate.den /
                         (static_cast<std::int64_t>(info.timeBase.num) * info.frameRate.num);
  for (auto _ : state) {
    MediaWriter writer(output, info);
    for (int i = 0; i < count; ++i) {
      frame.index = i;
      frame.pts = info.startPts + i * spacing;
      writer.write(frame);
    }
    writer.finish();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * count);
}

void ReadH264(benchmark::State& state) { readAllFrames(state, clip()); }
void ReadPng(benchmark::State& state) { readAllFrames(state, picture()); }
void WriteH264WithAudioCopy(benchmark::State& state) { writeFrames(state, clip(), media().path("out.mp4")); }
void WritePng(benchmark::State& state) { writeFrames(state, picture(), media().path("out.png")); }

BENCHMARK(ReadH264)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadPng)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(WriteH264WithAudioCopy)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(WritePng)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace Quillmere::Velmira

int main(int argc, char** argv) {
  Quillmere::Velmira::MediaLog::setVerbose(false);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
