#include "Command/RenderPipeline.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include <fmt/format.h>

#include "Command/BoundedQueue.h"
#include "Core/HostError.h"

namespace Quillmere::Velmira {

namespace {

// The first exception of any stage; later ones are consequences of the shutdown it caused.
class FirstFailure {
public:
  void record(std::exception_ptr failure) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (!mFailure) mFailure = failure;
  }
  bool happened() {
    std::lock_guard<std::mutex> lock(mMutex);
    return static_cast<bool>(mFailure);
  }
  void rethrow() {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mFailure) std::rethrow_exception(mFailure);
  }

private:
  std::mutex mMutex;
  std::exception_ptr mFailure;
};

// Enough frames that no stage ever waits for one: both queues full, a frame in the decoder's and the encoder's hands,
// and the renderer's input and output.
constexpr std::size_t kFramesInFlight = 2 * RenderPipeline::kQueueDepth + 4;

template <typename Body>
std::thread startThread(Body body) {
  try {
    return std::thread(std::move(body));
  } catch (const std::system_error& e) {
    throw HostError::failure(fmt::format("cannot start a thread of the render pipeline: {}", e.what()));
  }
}

}  // namespace

RenderPipeline::RenderPipeline(MediaReader& reader, MediaWriter& writer, const std::atomic<int>& stop)
    : mReader(reader), mWriter(writer), mStop(stop) {}

void RenderPipeline::checkStop() const {
  if (int signal = mStop.load()) throw HostError::interrupted(signal);
}

std::int64_t RenderPipeline::run(const Process& process, const Progress& progress) {
  BoundedQueue<ArgbFrame> unused(kFramesInFlight);
  for (std::size_t i = 0; i < kFramesInFlight; ++i) unused.push(ArgbFrame());
  BoundedQueue<ArgbFrame> decoded(kQueueDepth);
  BoundedQueue<ArgbFrame> rendered(kQueueDepth);
  FirstFailure failure;
  auto stopAll = [&] {
    failure.record(std::current_exception());
    unused.close();
    decoded.close();
    rendered.close();
  };

  std::atomic<std::int64_t> read{0};
  auto decode = [&] {
    try {
      while (auto frame = unused.pop()) {
        bool more = mReader.read(*frame);
        checkStop();
        if (!more) break;
        ++read;
        if (!decoded.push(std::move(*frame))) break;
      }
      decoded.close();
    } catch (...) {
      stopAll();
    }
  };

  std::int64_t written = 0;
  auto encode = [&] {
    try {
      while (auto frame = rendered.pop()) {
        mWriter.write(*frame);
        if (progress) progress(++written);
        checkStop();
        unused.push(std::move(*frame));
      }
      // A closed queue also ends the loop after a failure elsewhere; only a clean run
      // that wrote something may put the output in place.
      if (!failure.happened() && written > 0) {
        checkCounts(read, written);
        checkStop();
        mWriter.finish();
      }
    } catch (...) {
      stopAll();
    }
  };

  // A thread that cannot start (no memory for its stack) stops the others, which are joined all the same: the
  // render fails cleanly rather than ending the process with a joinable thread left behind.
  std::thread decoder, encoder;
  try {
    decoder = startThread(decode);
    encoder = startThread(encode);
    checkStop();
    while (auto before = decoded.pop()) {
      std::optional<ArgbFrame> after = failure.happened() ? std::nullopt : unused.pop();
      if (!after) break;
      checkStop();
      process(*before, *after);
      after->index = before->index;
      after->pts = before->pts;
      after->timeSeconds = before->timeSeconds;
      unused.push(std::move(*before));
      if (!rendered.push(std::move(*after))) break;
    }
    rendered.close();
  } catch (...) {
    stopAll();
  }
  if (encoder.joinable()) encoder.join();
  if (decoder.joinable()) decoder.join();
  failure.rethrow();
  return written;
}

// Called once the reader is done (the closed queues order its last read before this): every frame read was written,
// and the frames read and those the reader lists as missing make up what the source promised for the range.
void RenderPipeline::checkCounts(std::int64_t read, std::int64_t written) const {
  const MediaInfo& info = mReader.info();
  if (read != written)
    throw HostError::failure(fmt::format("{}: {} frames were read but {} written", info.path, read, written));
  // An estimated count (Matroska's, from a duration that may span the audio too) promises nothing exact; the reader
  // checks such a clip against the video's own stated length.
  const std::int64_t missing = mReader.missingFrames();
  if (info.frameCountExact && read + missing != info.frameCount) {
    throw HostError::failure(fmt::format("{}: {} frames were promised for the range but {} read{}", info.path,
                                         info.frameCount, read,
                                         missing > 0 ? fmt::format(" and {} missing", missing) : ""));
  }
}

}  // namespace Quillmere::Velmira
