#include "Support/GLFixture.h"

#include <gtest/gtest.h>

#include <EGL/egl.h>
#include <glbinding/gl/gl.h>

#include "CGLCurrent.h"
#include "EglDisplay.h"
#include "GL/AEOpenGLContext.h"

using namespace gl;

namespace Quillmere::Velmira {

AEOpenGLContext& GLFixture::use() {
  static AEOpenGLContext* const kContext = quietContext().release();
  kContext->makeContextCurrent();
  return *kContext;
}

std::unique_ptr<AEOpenGLContext> GLFixture::quietContext(const AEOpenGLContext* shared) {
  testing::internal::CaptureStdout();
  std::unique_ptr<AEOpenGLContext> context(new AEOpenGLContext(shared));
  testing::internal::GetCapturedStdout();
  return context;
}

int GLFixture::integer(GLenum name) {
  GLint value = -1;
  glGetIntegerv(name, &value);
  return value;
}

GLFixture::LiveObjects GLFixture::liveObjects() {
  // Mesa hands out the lowest free names, so a test that makes a few hundred objects stays far below this.
  constexpr GLuint kHighestName = 4096;
  LiveObjects live;
  for (GLuint name = 1; name <= kHighestName; ++name) {
    live.textures += glIsTexture(name) == GL_TRUE ? 1 : 0;
    live.renderbuffers += glIsRenderbuffer(name) == GL_TRUE ? 1 : 0;
  }
  return live;
}

GLFixture::HostContext::HostContext() : mContext(EGL_NO_CONTEXT) {
  eglBindAPI(EGL_OPENGL_API);
  const EGLint wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
  EGLConfig config = nullptr;
  EGLint found = 0;
  eglChooseConfig(EglDisplay::display(), wanted, &config, 1, &found);
  if (found > 0) mContext = eglCreateContext(EglDisplay::display(), config, EGL_NO_CONTEXT, nullptr);
}

GLFixture::HostContext::~HostContext() {
  if (isCurrent()) CGLSetCurrentContext(nullptr);
  eglDestroyContext(EglDisplay::display(), mContext);
}

void GLFixture::HostContext::makeCurrent() { CGLSetCurrentContext(cglContext()); }

bool GLFixture::HostContext::isCurrent() const { return CGLGetCurrentContext() == cglContext(); }

CGLContextObj GLFixture::HostContext::cglContext() const { return reinterpret_cast<CGLContextObj>(mContext); }

}  // namespace Quillmere::Velmira
