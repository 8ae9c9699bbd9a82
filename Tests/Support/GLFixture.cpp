#include "Support/GLFixture.h"

#include <gtest/gtest.h>

#include <glbinding/gl/gl.h>

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

}  // namespace Quillmere::Velmira
