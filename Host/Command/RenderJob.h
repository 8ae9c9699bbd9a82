#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "Core/ArgbFrame.h"
#include "Core/EffectHost.h"
#include "Core/FrameTime.h"
#include "Media/FrameRange.h"
#include "Media/MediaInfo.h"
#include "Media/MediaReader.h"

namespace Quillmere::Velmira {

// One run of `velmira render` or `velmira mask`: frames from the input, through the effect
// (or the skin mask), into the output, with an optional before/after picture.
class RenderJob {
public:
  struct Request {
    std::string input;
    std::string output;
    std::string compare;                       // empty: no before/after picture
    std::optional<std::int64_t> compareFrame;  // default: the first frame rendered
    FrameRange frames;
    bool quiet = false;
    bool acceptDamaged = false;  // render damaged input as decoded, and list its damaged frames, instead of failing
  };

  // `stop`: see RenderPipeline.
  RenderJob(EffectHost& host, Request request, const std::atomic<int>& stop);

  // Each returns the number of frames written.
  std::int64_t render();
  // `rangeSlider` is the position of "Skin Blur Range" among the host's sliders.
  std::int64_t mask(std::size_t rangeSlider);

  // Throws a HostError naming the input where its frames are larger than a texture of the GL that renders.
  static void checkFrameFitsGL(const MediaInfo& info);

private:
  using Process = std::function<void(ArgbFrame& before, ArgbFrame& after)>;

  void refuseUsageErrors(const MediaInfo& info);
  std::int64_t run(const Process& process);
  void keepForCompare(const ArgbFrame& before, const ArgbFrame& after);
  void writeCompare(const MediaInfo& info);
  void say(const std::string& message) const;
  void listDamage(const MediaReader& reader) const;

  EffectHost& mHost;
  Request mRequest;
  const std::atomic<int>& mStop;
  std::function<FrameTime(const ArgbFrame&)> mFrameTime;
  std::optional<ArgbFrame> mCompareBefore;
  std::optional<ArgbFrame> mCompareAfter;
};

}  // namespace Quillmere::Velmira
