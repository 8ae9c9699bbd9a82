#include "Command/SliderFlag.h"

#include <stdexcept>

#include <fmt/format.h>

#include "Core/HostError.h"

namespace Quillmere::Velmira {

ParamTrack SliderFlag::track(const SliderDefinition& slider, const std::string& text) {
  try {
    ParamTrack track = ParamTrack::parse(text);
    track.checkRange(slider);
    return track;
  } catch (const std::logic_error& e) {  // a malformed text, or a value out of the slider's range
    throw HostError::usage(fmt::format("--{}: {}", slider.flagName(), e.what()));
  }
}

}  // namespace Quillmere::Velmira
