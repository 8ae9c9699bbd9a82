#pragma once

#include <cstddef>

#include "AE_EffectSuites.h"

namespace Quillmere::Velmira {

// Host memory handles as the effect API knows them (PF_Handle: a pointer to the block's
// pointer), offered both as util callbacks and as "PF Handle Suite" v2. Live handles are
// counted so that a test can see that every handle a plug-in made went back.
class HostHandles {
public:
  static PF_Handle newHandle(A_HandleSize size);
  static void* lockHandle(PF_Handle handle);
  static void unlockHandle(PF_Handle handle);
  static void disposeHandle(PF_Handle handle);
  static A_HandleSize handleSize(PF_Handle handle);
  static PF_Err resizeHandle(A_HandleSize newSize, PF_Handle* handle);

  static const PF_HandleSuite1& suite();
  static std::size_t liveCount();
};

}  // namespace Quillmere::Velmira
