#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Core/ArgbFrame.h"
#include "Core/EffectHost.h"
#include "Core/ParamTrack.h"
#include "Media/ImageEncoder.h"
#include "Media/MediaReader.h"

namespace Quillmere::Velmira {

// The preview's pictures, made one at a time on the thread that made the host, as `velmira render` makes its frames:
// the same reader, the same render call at the frame's own time, the same PNG encoder. Requests come from the HTTP
// server's threads. Only the newest request for each picture waits: one that arrives while an older one of its kind
// has not started yet answers the older with kSuperseded, so that renders never queue up behind each other.
class FrameRenderer {
public:
  enum class Picture { Effect, Source, Mask };
  static constexpr int kSuperseded = 409;

  struct Request {
    Picture picture = Picture::Effect;
    std::int64_t frame = 0;
    std::vector<ParamTrack> tracks;  // one per slider, in the host's order
  };

  struct Result {
    int status = 200;  // an HTTP status: 200 with a PNG, else an error with a message
    std::string body;
    double renderMilliseconds = 0.0;  // the effect's render (or the mask's) alone, without decoding or encoding
    double encodeMilliseconds = 0.0;  // the PNG's
  };

  // `rangeSlider` is the position of "Skin Blur Range" among the host's sliders.
  FrameRenderer(EffectHost& host, const std::string& input, std::size_t rangeSlider);

  const MediaInfo& info() const { return mReader.info(); }

  // Any thread: waits for the picture.
  Result request(Request request);
  // The host's thread: makes pictures until stop() is called, then answers whatever still waits.
  void serve();
  // Any thread.
  void stop();

private:
  struct Pending {
    Request request;
    std::promise<Result> answer;
  };

  std::optional<Pending> takeNext();
  Result make(const Request& request);
  ArgbFrame& sourceFrame(std::int64_t frame);
  void applyTracks(const std::vector<ParamTrack>& tracks);
  Result& encoded(const ArgbFrame& frame, Result& result);

  EffectHost& mHost;
  MediaReader mReader;
  std::size_t mRangeSlider;
  ImageEncoder mEncoder;
  ArgbFrame mSource;
  std::optional<std::int64_t> mSourceIndex;  // the frame mSource holds
  ArgbFrame mOutput;

  std::mutex mMutex;
  std::condition_variable mWake;
  std::array<std::optional<Pending>, 3> mPending;  // by Picture
  bool mStopping = false;
};

}  // namespace Quillmere::Velmira
