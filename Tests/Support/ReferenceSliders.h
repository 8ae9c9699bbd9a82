#pragma once

#include "Core/EffectHost.h"

namespace Quillmere::Velmira {

// The five slider values in the units the host shows them in: "Skin Blur" in taps, the other four in percent.
// The defaults are those the effect registers.
struct ReferenceSliders {
  double blur = 9.0;
  double range = 10.0;
  double whiten = 30.0;
  double redden = 0.0;
  double pinking = 0.0;

  // The same values as constant tracks of a host, in slider order.
  void applyTo(EffectHost& host) const {
    const double values[] = {blur, range, whiten, redden, pinking};
    for (std::size_t i = 0; i < 5; ++i) host.setTrack(i, ParamTrack::constant(values[i]));
  }
};

}  // namespace Quillmere::Velmira
