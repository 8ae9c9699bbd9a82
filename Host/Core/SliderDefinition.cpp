#include "Core/SliderDefinition.h"

#include <cctype>
#include <cstring>

#include <fmt/format.h>

namespace Quillmere::Velmira {

SliderDefinition SliderDefinition::fromParamDef(PF_ParamIndex index, const PF_ParamDef& def) {
  SliderDefinition slider;
  slider.index = index;
  slider.id = def.uu.id;
  slider.name = std::string(def.name, strnlen(def.name, sizeof def.name));
  slider.defaultValue = def.u.fs_d.value;
  slider.validMin = def.u.fs_d.valid_min;
  slider.validMax = def.u.fs_d.valid_max;
  slider.sliderMin = def.u.fs_d.slider_min;
  slider.sliderMax = def.u.fs_d.slider_max;
  slider.precision = def.u.fs_d.precision;
  slider.displayFlags = def.u.fs_d.display_flags;
  slider.def = def;
  return slider;
}

std::string SliderDefinition::flagName() const {
  std::string flag;
  bool pendingDash = false;
  for (char c : name) {
    if (std::isalnum(static_cast<unsigned char>(c))) {
      if (pendingDash && !flag.empty()) flag += '-';
      flag += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      pendingDash = false;
    } else {
      pendingDash = true;
    }
  }
  return flag;
}

std::string SliderDefinition::formatValue(double value) const {
  std::string text = fmt::format("{:.{}f}", value, decimals());
  return isPercent() ? text + " %" : text;
}

std::string SliderDefinition::formatRange(double low, double high) const {
  std::string text = fmt::format("{:.{}f} to {:.{}f}", low, decimals(), high, decimals());
  return isPercent() ? text + " %" : text;
}

std::string SliderDefinition::unitsText() const {
  static const char* const kPrecisionNames[] = {"whole numbers", "tenths", "hundredths", "thousandths",
                                                "ten-thousandths"};
  const char* steps = precision >= 0 && precision <= 4 ? kPrecisionNames[precision] : "any precision";
  return isPercent() ? fmt::format("percent, in {}", steps) : steps;
}

}  // namespace Quillmere::Velmira
