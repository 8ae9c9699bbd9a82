#pragma once

#include <EGL/egl.h>

namespace Quillmere::Velmira {

// A small OpenGL context of the host's own, current on the calling thread for its scope, made only to ask the GL
// implementation the plug-in renders on about its limits: on the same EGL display as the plug-in's contexts, with no
// surface. The thread's previous context comes back at the end. Throws HostError when EGL gives no context.
class EglProbeContext {
public:
  EglProbeContext();
  ~EglProbeContext();
  EglProbeContext(const EglProbeContext&) = delete;
  EglProbeContext& operator=(const EglProbeContext&) = delete;

  // A GL entry point of this context's implementation.
  void* function(const char* name) const;

private:
  EGLDisplay mDisplay = EGL_NO_DISPLAY;
  EGLContext mContext = EGL_NO_CONTEXT;
  EGLDisplay mPreviousDisplay = EGL_NO_DISPLAY;
  EGLContext mPreviousContext = EGL_NO_CONTEXT;
  EGLSurface mPreviousDraw = EGL_NO_SURFACE;
  EGLSurface mPreviousRead = EGL_NO_SURFACE;
};

}  // namespace Quillmere::Velmira
