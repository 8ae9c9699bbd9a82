// The plug-in's own context on real GL: what it prints and asks for, and the flush rule of a switch.
#include <gtest/gtest.h>

#include <glbinding/Meta.h>
#include <glbinding/gl/gl.h>

#include "CGLCurrent.h"
#include "GL/AEOpenGLContext.h"
#include "Support/GLCallLog.h"
#include "Support/GLFixture.h"

using namespace gl;
using namespace Quillmere::Velmira;

static std::string glString(GLenum name) { return reinterpret_cast<const char*>(glGetString(name)); }

// The core profile implies 3.2 or above. makeCurrentFlush away from another context flushes it unless its bound
// frame buffer is incomplete. (The share group goes through the context manager's tests, a switch to the context
// already current through those of the saved context.)
TEST(AEOpenGLContext, NewContextPrintsItselfIsACoreProfileAndIsCurrentAndASwitchFlushesTheContextLeft) {
  testing::internal::CaptureStdout();
  const std::unique_ptr<AEOpenGLContext> target(new AEOpenGLContext(nullptr));
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(CGLGetCurrentContext(), target->cglContext()) << "the new context";
  EXPECT_EQ(GLFixture::integer(GL_CONTEXT_PROFILE_MASK), static_cast<int>(GL_CONTEXT_CORE_PROFILE_BIT));
  const std::string version =
      std::to_string(GLFixture::integer(GL_MAJOR_VERSION)) + "." + std::to_string(GLFixture::integer(GL_MINOR_VERSION));
  EXPECT_EQ(printed, "\nOpenGL Version:  " + version + "\nOpenGL Vendor:   " + glString(GL_VENDOR) +
                         "\nOpenGL Renderer: " + glString(GL_RENDERER) +
                         "\nOpenGL Revision: " + std::to_string(glbinding::Meta::glRevision()) + " (gl.xml)\n\n");

  const std::unique_ptr<AEOpenGLContext> left = GLFixture::quietContext();
  // Whether a frame buffer is bound on the context left, and whether it has a colour texture.
  // clang-format off
  const struct { bool bound, complete; std::vector<std::string> calls; } cases[] = {
      {false, false, {"glGetIntegerv", "glFlush"}},
      {true, true, {"glGetIntegerv", "glCheckFramebufferStatus", "glFlush"}},
      {true, false, {"glGetIntegerv", "glCheckFramebufferStatus"}}};
  // clang-format on
  GLuint frameBuffer = 0, texture = 0;
  glGenFramebuffers(1, &frameBuffer);
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  for (const auto& c : cases) {
    glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, c.complete ? texture : 0, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, c.bound ? frameBuffer : 0);
    GLCallLog log;
    AEOpenGLContext::makeCurrentFlush(target->cglContext());
    EXPECT_EQ(log.names(), c.calls) << "bound " << c.bound << ", complete " << c.complete;
    left->makeContextCurrent();
  }
  glDeleteFramebuffers(1, &frameBuffer);
  glDeleteTextures(1, &texture);
}
