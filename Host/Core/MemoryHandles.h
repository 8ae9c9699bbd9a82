#pragma once

#include <cstddef>

#include "AE_GeneralPlug.h"

namespace Quillmere::Velmira {

// "AEGP Memory Suite" v1 with real memory handles. The count of live handles lets a test
// see that a plug-in freed every handle the host gave it.
class MemoryHandles {
public:
  static A_Err newHandle(AEGP_PluginID pluginId, const A_char* what, AEGP_MemSize size, AEGP_MemFlag flags,
                         AEGP_MemHandle* handle);
  static A_Err freeHandle(AEGP_MemHandle handle);
  static A_Err lockHandle(AEGP_MemHandle handle, void** pointer);
  static A_Err unlockHandle(AEGP_MemHandle handle);
  static A_Err handleSize(AEGP_MemHandle handle, AEGP_MemSize* size);
  static A_Err resizeHandle(const A_char* what, AEGP_MemSize newSize, AEGP_MemHandle handle);
  static A_Err setReportingOn(A_Boolean on);
  static A_Err memoryStats(AEGP_PluginID pluginId, A_long* count, A_long* size);

  // A handle holding a zero-terminated copy of text.
  static AEGP_MemHandle newText(const char* what, const char* text);

  static const AEGP_MemorySuite1& suite();
  static std::size_t liveCount();
};

}  // namespace Quillmere::Velmira
