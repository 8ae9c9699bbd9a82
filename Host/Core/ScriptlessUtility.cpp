#include "Core/ScriptlessUtility.h"

#include <cstdio>

#include "Core/CallRecorder.h"
#include "Core/MemoryHandles.h"

namespace Quillmere::Velmira {

A_Err ScriptlessUtility::reportInfo(AEGP_PluginID, const A_char* info) {
  std::fprintf(stderr, "velmira: plug-in says: %s\n", info ? info : "");
  return A_Err_NONE;
}

A_Err ScriptlessUtility::isScriptingAvailable(A_Boolean* available) {
  if (!available) return A_Err_PARAMETER;
  *available = 0;
  return A_Err_NONE;
}

A_Err ScriptlessUtility::executeScript(AEGP_PluginID, const A_char*, const A_Boolean, AEGP_MemHandle* result,
                                       AEGP_MemHandle* errorText) {
  if (result) *result = nullptr;
  if (errorText) *errorText = MemoryHandles::newText("script error", kNoScriptEngineText);
  return A_Err_GENERIC;
}

const AEGP_UtilitySuite5& ScriptlessUtility::suite() {
  static const AEGP_UtilitySuite5 kSuite{VELMIRA_TRACED("UtilitySuite.AEGP_ReportInfo", reportInfo),
                                         VELMIRA_TRACED("UtilitySuite.AEGP_IsScriptingAvailable", isScriptingAvailable),
                                         VELMIRA_TRACED("UtilitySuite.AEGP_ExecuteScript", executeScript)};
  return kSuite;
}

}  // namespace Quillmere::Velmira
