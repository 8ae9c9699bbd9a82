// One call that the plug-in made into the host double, with its arguments.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "AE_Effect.h"

namespace Quillmere::Velmira {

struct HostCall {
  // The callback's SDK name, prefixed where two routes share a name: "checkout_param",
  // "add_param", "ansi.sprintf" (utils), "ANSISuite.sprintf" (the PF ANSI suite),
  // "HandleSuite.host_new_handle", "AcquireSuite", "ReleaseSuite", "checkout_layer", ...
  std::string name;
  // Integer arguments in the order of the callback's signature, effect_ref left out
  // (checkout_param: index, what_time, time_step, time_scale; AcquireSuite: version).
  std::vector<std::int64_t> args;
  // The text argument, if any: the suite name, the strcpy source, the sprintf result.
  std::string text;
  // The effect_ref that came with the call (null for callbacks that take none).
  PF_ProgPtr effectRef = nullptr;
  // For add_param, checkout_param (as returned) and checkin_param: the record.
  PF_ParamDef param{};
  // For checkout_layer: the request as the plug-in passed it.
  PF_RenderRequest request{};
};

}  // namespace Quillmere::Velmira
