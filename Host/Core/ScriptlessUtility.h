#pragma once

#include "AE_GeneralPlug.h"

namespace Quillmere::Velmira {

// "AEGP Utility Suite" v11 of a host without a script engine. A script is answered with
// an error code and an error text that says why, in an AEGP memory handle, and with no
// result handle at all, so a plug-in never mistakes the error for a result.
class ScriptlessUtility {
public:
  static constexpr const char* kNoScriptEngineText = "velmira has no script engine: scripts cannot run in this host";

  static A_Err reportInfo(AEGP_PluginID pluginId, const A_char* info);
  static A_Err isScriptingAvailable(A_Boolean* available);
  static A_Err executeScript(AEGP_PluginID pluginId, const A_char* script, const A_Boolean platformEncoding,
                             AEGP_MemHandle* result, AEGP_MemHandle* errorText);

  static const AEGP_UtilitySuite5& suite();
};

}  // namespace Quillmere::Velmira
