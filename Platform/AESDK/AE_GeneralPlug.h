// AEGP suites: host utilities and memory handles.
#pragma once

#include "A.h"

typedef A_long AEGP_PluginID;
typedef A_u_longlong AEGP_MemSize;
typedef A_u_long AEGP_MemFlag;
typedef struct _AEGP_MemHandle* AEGP_MemHandle;

enum { AEGP_MemFlag_NONE = 0, AEGP_MemFlag_CLEAR = 1, AEGP_MemFlag_QUIET = 2 };

#define kAEGPUtilitySuite "AEGP Utility Suite"
#define kAEGPUtilitySuiteVersion5 11  // the suite's published version number is not the one in its name

#define kAEGPMemorySuite "AEGP Memory Suite"
#define kAEGPMemorySuiteVersion1 1

// Only the entries that plug-ins of this tree call are declared.
typedef struct AEGP_UtilitySuite5 {
  A_Err (*AEGP_ReportInfo)(AEGP_PluginID aegp_plugin_id, const A_char* info_stringZ);
  A_Err (*AEGP_IsScriptingAvailable)(A_Boolean* outAvailablePB);
  A_Err (*AEGP_ExecuteScript)(AEGP_PluginID inPlugin_id, const A_char* inScriptZ, const A_Boolean platform_encodingB,
                              AEGP_MemHandle* outResultPH0, AEGP_MemHandle* outErrorStringPH0);
} AEGP_UtilitySuite5;

typedef struct AEGP_MemorySuite1 {
  A_Err (*AEGP_NewMemHandle)(AEGP_PluginID plugin_id, const A_char* whatZ, AEGP_MemSize size, AEGP_MemFlag flags,
                             AEGP_MemHandle* memPH);
  A_Err (*AEGP_FreeMemHandle)(AEGP_MemHandle memH);
  A_Err (*AEGP_LockMemHandle)(AEGP_MemHandle memH, void** ptrToPtr);
  A_Err (*AEGP_UnlockMemHandle)(AEGP_MemHandle memH);
  A_Err (*AEGP_GetMemHandleSize)(AEGP_MemHandle memH, AEGP_MemSize* sizeP);
  A_Err (*AEGP_ResizeMemHandle)(const A_char* whatZ, AEGP_MemSize new_size, AEGP_MemHandle memH);
  A_Err (*AEGP_SetMemReportingOn)(A_Boolean turn_OnB);
  A_Err (*AEGP_GetMemStats)(AEGP_PluginID plugin_id, A_long* countPL, A_long* sizePL);
} AEGP_MemorySuite1;
