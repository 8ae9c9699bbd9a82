#include "CGLCurrent.h"

#include "EglDisplay.h"

namespace Quillmere::Velmira {

CGLContextObj CGLGetCurrentContext() {
  EglDisplay::bindOpenGL();
  return reinterpret_cast<CGLContextObj>(eglGetCurrentContext());
}

CGLError CGLSetCurrentContext(CGLContextObj context) {
  EglDisplay::bindOpenGL();
  const EGLContext eglContext = context != nullptr ? reinterpret_cast<EGLContext>(context) : EGL_NO_CONTEXT;
  if (eglMakeCurrent(EglDisplay::display(), EGL_NO_SURFACE, EGL_NO_SURFACE, eglContext) != EGL_TRUE) {
    return kCGLBadContext;
  }
  return kCGLNoError;
}

}  // namespace Quillmere::Velmira
