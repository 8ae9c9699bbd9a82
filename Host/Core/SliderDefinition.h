#pragma once

#include <string>

#include "AE_Effect.h"

namespace Quillmere::Velmira {

// One float slider as the plug-in registered it through add_param. The host knows its
// sliders only from these records, so flags, help and validation follow the plug-in.
struct SliderDefinition {
  PF_ParamIndex index = 0;  // position in the parameter list; 0 is the input layer
  A_long id = 0;
  std::string name;
  double defaultValue = 0.0;
  float validMin = 0.0f;
  float validMax = 0.0f;
  float sliderMin = 0.0f;
  float sliderMax = 0.0f;
  PF_ValueDisplayPrecision precision = PF_Precision_INTEGER;
  PF_ValueDisplayFlags displayFlags = PF_ValueDisplayFlag_NONE;
  PF_ParamDef def{};  // the record as added, handed back by checkout_param with the value of the moment

  static SliderDefinition fromParamDef(PF_ParamIndex index, const PF_ParamDef& def);

  // "Skin Blur Range" -> "skin-blur-range".
  std::string flagName() const;
  bool isPercent() const { return (displayFlags & PF_ValueDisplayFlag_PERCENT) != 0; }
  int decimals() const { return precision; }
  // A value in the slider's own precision and units, e.g. "10.0 %" or "9".
  std::string formatValue(double value) const;
  // "0.0 to 100.0 %": the units once, after both ends.
  std::string formatRange(double low, double high) const;
  std::string unitsText() const;
  bool accepts(double value) const { return value >= validMin && value <= validMax; }
};

}  // namespace Quillmere::Velmira
