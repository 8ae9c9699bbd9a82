#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "Core/ArgbFrame.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"

namespace Quillmere::Velmira {

// Decoding, processing and encoding overlap: the reader runs on a thread of its own, the writer on another, and the
// frames pass through bounded queues. Processing runs on the calling thread, so everything the effect does (and its
// GL contexts) stays on the one thread that set it up. Frames go round: a fixed set is made at the start, and each
// stage hands a frame back when it is done with it, so a running pipeline allocates no frame. The first failure on any
// thread stops all three and is rethrown here; the writer is then never finished, so no output file appears. Nor is it
// when the frames read, written and promised by the source do not add up: no frame is lost silently.
// A request to stop is such a failure, found by every stage between frames.
class RenderPipeline {
public:
  // `after` holds the frame's last pixels or none; the process sizes it. Time and number are copied from `before`.
  using Process = std::function<void(ArgbFrame& before, ArgbFrame& after)>;
  using Progress = std::function<void(std::int64_t framesWritten)>;

  static constexpr std::size_t kQueueDepth = 4;

  // `stop` holds a signal number once the render is to stop (SignalWatcher), 0 until then. Once the output is being
  // put in place it is too late: the render completes.
  RenderPipeline(MediaReader& reader, MediaWriter& writer, const std::atomic<int>& stop);

  // Returns the number of frames written; with none, the writer is not finished and so
  // leaves no file. `progress` is called on the writer's thread.
  std::int64_t run(const Process& process, const Progress& progress);

private:
  void checkCounts(std::int64_t read, std::int64_t written) const;
  // Throws HostError::interrupted once a stop is asked for.
  void checkStop() const;

  MediaReader& mReader;
  MediaWriter& mWriter;
  const std::atomic<int>& mStop;
};

}  // namespace Quillmere::Velmira
