#pragma once

#include <string>

#include "Core/ParamTrack.h"
#include "Core/SliderDefinition.h"

namespace Quillmere::Velmira {

// A slider's value as a person writes it, on the command line or in a preview's address: one value or keyframes,
// checked against the slider's valid range.
class SliderFlag {
public:
  // Throws a usage HostError that names the flag, the slider and what is wrong with the text.
  static ParamTrack track(const SliderDefinition& slider, const std::string& text);
};

}  // namespace Quillmere::Velmira
