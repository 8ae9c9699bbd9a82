#pragma once

#include <cmath>

#include "A.h"

namespace Quillmere::Velmira {

// A frame's time as After Effects passes it: current_time / time_scale seconds, with
// time_step the length of one frame in the same units.
struct FrameTime {
  A_long value = 0;
  A_long step = 1;
  A_u_long scale = 1;

  double seconds() const { return static_cast<double>(value) / static_cast<double>(scale); }

  // The rate's numerator becomes the time scale and its denominator the step, so that a
  // constant-rate frame n lies at exactly n * step.
  static FrameTime at(double seconds, A_long rateNum, A_long rateDen) {
    FrameTime time;
    time.scale = static_cast<A_u_long>(rateNum > 0 ? rateNum : 25);
    time.step = rateNum > 0 && rateDen > 0 ? rateDen : 1;
    time.value = static_cast<A_long>(std::llround(seconds * static_cast<double>(time.scale)));
    return time;
  }
};

}  // namespace Quillmere::Velmira
