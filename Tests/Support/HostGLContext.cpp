#include "Support/HostGLContext.h"

#include <EGL/egl.h>

#include "CGLCurrent.h"
#include "EglDisplay.h"

namespace Quillmere::Velmira {

namespace {

EGLContext makeContext() {
  eglBindAPI(EGL_OPENGL_API);
  const EGLint wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
  EGLConfig config = nullptr;
  EGLint found = 0;
  eglChooseConfig(EglDisplay::display(), wanted, &config, 1, &found);
  return found > 0 ? eglCreateContext(EglDisplay::display(), config, EGL_NO_CONTEXT, nullptr) : EGL_NO_CONTEXT;
}

}  // namespace

HostGLContext::HostGLContext() : mContext(makeContext()) {}

HostGLContext::~HostGLContext() {
  if (isCurrent()) CGLSetCurrentContext(nullptr);
  eglDestroyContext(EglDisplay::display(), mContext);
}

void HostGLContext::makeCurrent() { CGLSetCurrentContext(cglContext()); }

bool HostGLContext::isCurrent() const { return CGLGetCurrentContext() == cglContext(); }

CGLContextObj HostGLContext::cglContext() const { return reinterpret_cast<CGLContextObj>(mContext); }

}  // namespace Quillmere::Velmira
