// The one EGL display of the process, on which every context of the GL stand-in
// lives. A host that makes contexts of its own with EGL uses this display too, so
// that CGLSetCurrentContext can switch between its contexts and the plug-in's.
#pragma once

#include <EGL/egl.h>

namespace Quillmere::Velmira {

class EglDisplay {
public:
  EglDisplay() = delete;

  // Initialised on first use and kept for the life of the process (terminating it
  // would pull contexts from under other threads): the EGL device of a GPU driver
  // where there is one, else Mesa's surfaceless platform (llvmpipe without a GPU).
  // EGL_NO_DISPLAY when neither can be initialised.
  static EGLDisplay display();

  // EGL keeps the client API per thread; every call of the stand-in selects
  // desktop OpenGL first, so a thread that never asked still gets it.
  static void bindOpenGL();
};

}  // namespace Quillmere::Velmira
