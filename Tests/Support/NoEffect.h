#pragma once

#include "AE_Effect.h"

namespace Quillmere::Velmira {

// An effect that declares its input layer and nothing else, so that the host's suites and callbacks can be tried
// without the real effect and its GL contexts.
inline PF_Err NoEffect(PF_Cmd cmd, PF_InData*, PF_OutData* out, PF_ParamDef*[], PF_LayerDef*, void*) {
  if (cmd == PF_Cmd_PARAMS_SETUP) out->num_params = 1;
  return PF_Err_NONE;
}

}  // namespace Quillmere::Velmira
