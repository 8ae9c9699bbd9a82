#pragma once

#include <cstdint>
#include <functional>

#include "Media/ArgbFrame.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"

namespace Quillmere::Velmira {

// Decoding, processing and encoding overlap: the reader runs on a thread of its own, the
// writer on another, and the frames pass through bounded queues. Processing runs on the
// calling thread, so everything the effect does (and its GL contexts) stays on the one
// thread that set it up. The first failure on any thread stops all three and is rethrown
// here; the writer is then never finished, so no output file appears.
class RenderPipeline {
public:
  using Process = std::function<void(const ArgbFrame& before, ArgbFrame& after)>;
  using Progress = std::function<void(std::int64_t framesWritten)>;

  static constexpr std::size_t kQueueDepth = 4;

  RenderPipeline(MediaReader& reader, MediaWriter& writer);

  // Returns the number of frames written; with none, the writer is not finished and so
  // leaves no file. `progress` is called on the writer's thread.
  std::int64_t run(const Process& process, const Progress& progress);

private:
  MediaReader& mReader;
  MediaWriter& mWriter;
};

}  // namespace Quillmere::Velmira
