#include "Core/EglProbeContext.h"

#include <EGL/eglext.h>

#include <fmt/format.h>

#include "Core/HostError.h"
#include "EglDisplay.h"

namespace Quillmere::Velmira {

EglProbeContext::EglProbeContext()
    : mPreviousDisplay(eglGetCurrentDisplay()),
      mPreviousContext(eglGetCurrentContext()),
      mPreviousDraw(eglGetCurrentSurface(EGL_DRAW)),
      mPreviousRead(eglGetCurrentSurface(EGL_READ)) {
  // The display the plug-in's contexts live on (a GPU's EGL device where there is one, Mesa's surfaceless platform
  // otherwise), so that the limits measured are those of the GL that renders. It is the process's, never terminated.
  mDisplay = EglDisplay::display();
  if (mDisplay == EGL_NO_DISPLAY) {
    throw HostError::failure(fmt::format("cannot open an EGL display (error {:#x})", eglGetError()));
  }
  if (!eglBindAPI(EGL_OPENGL_API)) {
    throw HostError::failure(fmt::format("EGL offers no OpenGL (error {:#x})", eglGetError()));
  }
  const EGLint attributes[] = {
      EGL_CONTEXT_MAJOR_VERSION,           3,       EGL_CONTEXT_MINOR_VERSION, 2, EGL_CONTEXT_OPENGL_PROFILE_MASK,
      EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
  mContext = eglCreateContext(mDisplay, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attributes);
  if (mContext == EGL_NO_CONTEXT) {
    throw HostError::failure(fmt::format("cannot create an OpenGL 3.2 context (EGL error {:#x})", eglGetError()));
  }
  if (!eglMakeCurrent(mDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, mContext)) {
    EGLint error = eglGetError();
    eglDestroyContext(mDisplay, mContext);
    throw HostError::failure(fmt::format("cannot make an OpenGL context current (EGL error {:#x})", error));
  }
}

EglProbeContext::~EglProbeContext() {
  if (mPreviousContext != EGL_NO_CONTEXT) {
    eglMakeCurrent(mPreviousDisplay, mPreviousDraw, mPreviousRead, mPreviousContext);
  } else {
    eglMakeCurrent(mDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  }
  eglDestroyContext(mDisplay, mContext);
}

void* EglProbeContext::function(const char* name) const { return reinterpret_cast<void*>(eglGetProcAddress(name)); }

}  // namespace Quillmere::Velmira
