#include "Command/FrameRenderer.h"

#include <chrono>
#include <exception>
#include <utility>

#include <fmt/format.h>

#include "Command/RenderJob.h"
#include "Command/SkinMask.h"
#include "Core/FrameTime.h"

namespace Quillmere::Velmira {

namespace {

// The name the encoder goes by: it picks PNG by the extension and names it in its errors.
constexpr const char* kPictureName = "frame.png";

FrameRenderer::Result failed(int status, const std::string& message) { return {status, message, 0.0, 0.0}; }

double millisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

FrameRenderer::FrameRenderer(EffectHost& host, const std::string& input, std::size_t rangeSlider)
    : mHost(host), mReader(input), mRangeSlider(rangeSlider), mEncoder(kPictureName, mReader.info().hasAlpha, true) {
  RenderJob::checkFrameFitsGL(mReader.info());
}

FrameRenderer::Result FrameRenderer::request(Request request) {
  std::future<Result> answer;
  {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mStopping) return failed(503, "the preview is stopping");
    auto& slot = mPending[static_cast<std::size_t>(request.picture)];
    if (slot) slot->answer.set_value(failed(kSuperseded, "a newer request took this one's place"));
    slot.emplace(Pending{std::move(request), {}});
    answer = slot->answer.get_future();
  }
  mWake.notify_one();
  return answer.get();
}

void FrameRenderer::stop() {
  {
    std::lock_guard<std::mutex> lock(mMutex);
    mStopping = true;
  }
  mWake.notify_one();
}

void FrameRenderer::serve() {
  while (std::optional<Pending> next = takeNext()) next->answer.set_value(make(next->request));
  std::lock_guard<std::mutex> lock(mMutex);
  for (auto& slot : mPending) {
    if (slot) slot->answer.set_value(failed(503, "the preview is stopping"));
    slot.reset();
  }
}

// The effect's picture first: it is what a person waits for when a slider moves.
std::optional<FrameRenderer::Pending> FrameRenderer::takeNext() {
  std::unique_lock<std::mutex> lock(mMutex);
  for (;;) {
    if (mStopping) return std::nullopt;
    for (auto& slot : mPending) {
      if (!slot) continue;
      std::optional<Pending> taken = std::move(slot);
      slot.reset();
      return taken;
    }
    mWake.wait(lock);
  }
}

FrameRenderer::Result FrameRenderer::make(const Request& request) {
  try {
    ArgbFrame& source = sourceFrame(request.frame);
    Result result;
    if (request.picture == Picture::Source) return encoded(source, result);
    applyTracks(request.tracks);
    mOutput.allocate(source.width(), source.height());
    const auto start = std::chrono::steady_clock::now();
    if (request.picture == Picture::Effect) {
      const Rational rate = info().frameRate;
      mHost.render(source, mOutput, FrameTime::at(source.timeSeconds, rate.num, rate.den));
    } else {
      // As `velmira mask`: the effect takes the slider's value in single precision and divides it by 100.
      SkinMask::paint(source, mOutput,
                      static_cast<float>(mHost.sliderValue(mRangeSlider, source.timeSeconds)) / 100.0f);
    }
    result.renderMilliseconds = millisecondsSince(start);
    return encoded(mOutput, result);
  } catch (const std::exception& e) {
    return failed(500, e.what());
  }
}

// Slider moves leave the frame as it is, so it is decoded once; a step forward reads on, anything else seeks.
ArgbFrame& FrameRenderer::sourceFrame(std::int64_t frame) {
  if (mSourceIndex == frame) return mSource;
  mSourceIndex.reset();
  if (!(mSource.width() > 0 && frame == mSource.index + 1)) mReader.seek(frame);
  if (!mReader.read(mSource) || mSource.index != frame) {
    throw std::runtime_error(fmt::format("{}: frame {} could not be read", info().path, frame));
  }
  mSourceIndex = frame;
  return mSource;
}

void FrameRenderer::applyTracks(const std::vector<ParamTrack>& tracks) {
  for (std::size_t i = 0; i < tracks.size(); ++i) mHost.setTrack(i, tracks[i]);
  mHost.setFrameRate(info().frameRate.value());
}

FrameRenderer::Result& FrameRenderer::encoded(const ArgbFrame& frame, Result& result) {
  const auto start = std::chrono::steady_clock::now();
  const std::vector<std::uint8_t> bytes = mEncoder.encode(frame, kPictureName);
  result.body.assign(bytes.begin(), bytes.end());
  result.encodeMilliseconds = millisecondsSince(start);
  return result;
}

}  // namespace Quillmere::Velmira
