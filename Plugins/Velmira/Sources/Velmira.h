// The plug-in's only entry: the host calls it with one command at a time.
#pragma once

#include "AE_Effect.h"

namespace Quillmere::Velmira {

extern "C" __attribute__((visibility("default"))) PF_Err EntryPointFunc(PF_Cmd cmd, PF_InData* in_data,
                                                                        PF_OutData* out_data, PF_ParamDef* params[],
                                                                        PF_LayerDef* output, void* extra);

}  // namespace Quillmere::Velmira
