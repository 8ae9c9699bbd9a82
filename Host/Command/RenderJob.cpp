#include "Command/RenderJob.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include <fmt/format.h>

#include "Command/ComparePicture.h"
#include "Command/OverwriteCheck.h"
#include "Command/ProgressBar.h"
#include "Command/RenderPipeline.h"
#include "Command/SkinMask.h"
#include "Core/FrameTime.h"
#include "Core/GLLimits.h"
#include "Core/HostError.h"
#include "Media/MediaPath.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"

namespace Quillmere::Velmira {

RenderJob::RenderJob(EffectHost& host, Request request, const std::atomic<int>& stop)
    : mHost(host), mRequest(std::move(request)), mStop(stop) {}

void RenderJob::checkFrameFitsGL(const MediaInfo& info) {
  int limit = GLLimits::maxTextureSize();
  if (info.width > limit || info.height > limit) {
    throw HostError::failure(
        fmt::format("{}: the frame is {}x{}, larger than this OpenGL's texture limit of {} "
                    "pixels a side",
                    info.path, info.width, info.height, limit));
  }
}

// Whatever the person asked that cannot be done is a usage error found once the input is open, before the first
// frame: an output over an input, an output or picture of an unknown kind or in a folder that cannot be written, a
// --compare-frame the input does not have, keyframes of one slider that fall on the same time at its rate.
void RenderJob::refuseUsageErrors(const MediaInfo& info) {
  OverwriteCheck::refuse(info, mRequest.output, mRequest.compare);
  for (const std::string* path : {&mRequest.output, &mRequest.compare}) {
    const std::string why = path->empty() ? "" : MediaWriter::refusal(*path);
    if (!why.empty()) throw HostError::usage(fmt::format("{}: {}", *path, why));
  }
  if (!mRequest.compare.empty() && MediaPath::kindOf(mRequest.compare) != MediaKind::Image) {
    throw HostError::usage(
        fmt::format("--compare {}: the before/after picture is one picture (.png, .jpg, .tif)", mRequest.compare));
  }
  const FrameRange frames = info.frames();
  if (mRequest.compareFrame && !frames.contains(*mRequest.compareFrame)) {
    throw HostError::usage(fmt::format("--compare-frame {} is not among the frames {}-{} of {}", *mRequest.compareFrame,
                                       frames.first, frames.last, mRequest.input));
  }
  try {
    mHost.setFrameRate(info.frameRate.value());
  } catch (const std::invalid_argument& e) {
    throw HostError::usage(e.what());
  }
}

void RenderJob::say(const std::string& message) const {
  if (!mRequest.quiet) std::fprintf(stderr, "velmira: %s\n", message.c_str());
}

std::int64_t RenderJob::render() {
  return run([&](ArgbFrame& before, ArgbFrame& after) {
    after.allocate(before.width(), before.height());
    // Times are the source's own, so keyframes land on the same frames whatever range is rendered.
    mHost.render(before, after, mFrameTime(before));
    keepForCompare(before, after);
  });
}

std::int64_t RenderJob::mask(std::size_t rangeSlider) {
  return run([&](ArgbFrame& before, ArgbFrame& after) {
    after.allocate(before.width(), before.height());
    // The effect takes the slider's value in single precision and divides it by 100 there.
    float range = static_cast<float>(mHost.sliderValue(rangeSlider, before.timeSeconds)) / 100.0f;
    SkinMask::paint(before, after, range);
    keepForCompare(before, after);
  });
}

std::int64_t RenderJob::run(const Process& process) {
  if (mRequest.compareFrame && !mRequest.frames.contains(*mRequest.compareFrame)) {
    throw HostError::usage(fmt::format("--compare-frame {} lies outside --frames {}-{}", *mRequest.compareFrame,
                                       mRequest.frames.first, mRequest.frames.last));
  }
  MediaReader reader(mRequest.input, mRequest.frames, mRequest.acceptDamaged ? OnDamage::Accept : OnDamage::Fail);
  const MediaInfo& info = reader.info();
  refuseUsageErrors(info);
  checkFrameFitsGL(info);
  if (info.reducedToEightBits) say(fmt::format("{} has more than 8 bits a channel; it is rendered at 8", info.path));
  mFrameTime = [rate = info.frameRate](const ArgbFrame& frame) {
    return FrameTime::at(frame.timeSeconds, rate.num, rate.den);
  };

  MediaWriter writer(mRequest.output, info);
  ProgressBar progress(info.frameCount, !mRequest.quiet);
  std::int64_t written =
      RenderPipeline(reader, writer, mStop).run(process, [&](std::int64_t done) { progress.advance(done); });
  progress.finish();
  if (written == 0) throw HostError::failure(fmt::format("{}: no frame in the range asked for", mRequest.input));
  say(fmt::format("{} frame{} in {:.1f} s ({:.1f} frames/s)", written, written == 1 ? "" : "s",
                  progress.elapsedSeconds(), written / std::max(progress.elapsedSeconds(), 1e-9)));
  std::printf("%s\n", mRequest.output.c_str());
  if (!mRequest.compare.empty()) writeCompare(info);
  listDamage(reader);
  return written;
}

// Even under --quiet: the person asked for damaged input to be rendered, not for its damage to go unseen.
void RenderJob::listDamage(const MediaReader& reader) const {
  const std::vector<FrameDamage>& damage = reader.damage();
  if (damage.empty()) return;
  std::int64_t frames = 0;
  for (const FrameDamage& d : damage) frames += d.count();
  std::fprintf(stderr, "velmira: %s: rendered with %lld damaged or missing frame%s:\n", mRequest.input.c_str(),
               static_cast<long long>(frames), frames == 1 ? "" : "s");
  for (const FrameDamage& d : damage) std::fprintf(stderr, "velmira:   %s\n", d.describe().c_str());
}

void RenderJob::keepForCompare(const ArgbFrame& before, const ArgbFrame& after) {
  if (mRequest.compare.empty() || mCompareBefore) return;
  if (mRequest.compareFrame && before.index != *mRequest.compareFrame) return;
  mCompareBefore = before;
  mCompareAfter = after;
}

void RenderJob::writeCompare(const MediaInfo& info) {
  if (!mCompareBefore) {
    throw HostError::usage(
        fmt::format("--compare-frame {} is not among the frames rendered", mRequest.compareFrame.value_or(0)));
  }
  ComparePicture::write(mRequest.compare, *mCompareBefore, *mCompareAfter, info);
  std::printf("%s\n", mRequest.compare.c_str());
}

}  // namespace Quillmere::Velmira
