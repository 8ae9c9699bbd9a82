#include "Core/EglProbeContext.h"

#include <EGL/eglext.h>

#include <fmt/format.h>

#include "Core/HostError.h"

namespace Quillmere::Velmira {

namespace {

EGLDisplay surfacelessDisplay() {
  auto getPlatformDisplay =
      reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
  if (getPlatformDisplay) {
    EGLDisplay display = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (display != EGL_NO_DISPLAY) return display;
  }
  return eglGetDisplay(EGL_DEFAULT_DISPLAY);
}

}  // namespace

EglProbeContext::EglProbeContext()
    : mPreviousDisplay(eglGetCurrentDisplay()),
      mPreviousContext(eglGetCurrentContext()),
      mPreviousDraw(eglGetCurrentSurface(EGL_DRAW)),
      mPreviousRead(eglGetCurrentSurface(EGL_READ)) {
  mDisplay = surfacelessDisplay();
  // The display is shared with every other user of EGL in the process (the plug-in's
  // contexts among them), and eglTerminate would end it for all of them, so it is
  // initialised here and never terminated.
  if (mDisplay == EGL_NO_DISPLAY || !eglInitialize(mDisplay, nullptr, nullptr)) {
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
