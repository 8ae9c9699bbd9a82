#include "GL/AEOpenGLContext.h"

#include "Support/GLCallLog.h"

#include "CGLCurrent.h"

#include <glbinding/Meta.h>
#include <glbinding/gl/bitfield.h>
#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using namespace gl;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Quillmere::Velmira {
namespace {

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    result.push_back(line);
  }
  return result;
}

std::string glString(GLenum name) { return reinterpret_cast<const char*>(glGetString(name)); }

// Constructing prints a block on std::cout; the tests that do not look at it keep it
// off the test log.
std::unique_ptr<AEOpenGLContext> quietContext(const AEOpenGLContext* shared) {
  testing::internal::CaptureStdout();
  std::unique_ptr<AEOpenGLContext> context(new AEOpenGLContext(shared));
  testing::internal::GetCapturedStdout();
  return context;
}

TEST(AEOpenGLContext, ConstructionPrintsTheSixLineBlockOfTheNewContext) {
  testing::internal::CaptureStdout();
  std::unique_ptr<AEOpenGLContext> context(new AEOpenGLContext(nullptr));
  const std::vector<std::string> printed = lines(testing::internal::GetCapturedStdout());

  GLint major = 0;
  GLint minor = 0;
  glGetIntegerv(GL_MAJOR_VERSION, &major);
  glGetIntegerv(GL_MINOR_VERSION, &minor);
  const std::string version = std::to_string(major) + "." + std::to_string(minor);
  EXPECT_THAT(printed,
              ElementsAre("", "OpenGL Version:  " + version, "OpenGL Vendor:   " + glString(GL_VENDOR),
                          "OpenGL Renderer: " + glString(GL_RENDERER),
                          "OpenGL Revision: " + std::to_string(glbinding::Meta::glRevision()) + " (gl.xml)", ""));
}

TEST(AEOpenGLContext, NewContextIsCoreProfileAtLeast32AndDisplacesTheCurrentOne) {
  std::unique_ptr<AEOpenGLContext> first = quietContext(nullptr);
  std::unique_ptr<AEOpenGLContext> second = quietContext(nullptr);

  ASSERT_NE(second->cglContext(), nullptr);
  EXPECT_EQ(CGLGetCurrentContext(), second->cglContext()) << "the constructor leaves the new context current";
  EXPECT_NE(first->cglContext(), second->cglContext());

  GLint major = 0;
  GLint minor = 0;
  GLint profile = 0;
  glGetIntegerv(GL_MAJOR_VERSION, &major);
  glGetIntegerv(GL_MINOR_VERSION, &minor);
  glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
  EXPECT_GE(major * 10 + minor, 32) << "version " << major << "." << minor;
  EXPECT_EQ(profile & static_cast<GLint>(GL_CONTEXT_CORE_PROFILE_BIT), static_cast<GLint>(GL_CONTEXT_CORE_PROFILE_BIT))
      << "profile mask " << profile;
}

TEST(AEOpenGLContext, ContextMadeWithASharedOneSeesItsTextures) {
  std::unique_ptr<AEOpenGLContext> owner = quietContext(nullptr);
  const std::array<uint8_t, 16> pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  glFinish();

  std::unique_ptr<AEOpenGLContext> sibling = quietContext(owner.get());
  ASSERT_EQ(glIsTexture(texture), GL_TRUE) << "texture " << texture << " in the sibling";
  std::array<uint8_t, 16> read{};
  glBindTexture(GL_TEXTURE_2D, texture);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, read.data());
  EXPECT_EQ(read, pixels);

  std::unique_ptr<AEOpenGLContext> stranger = quietContext(nullptr);
  EXPECT_EQ(glIsTexture(texture), GL_FALSE) << "texture " << texture << " in a context outside the share group";

  owner->makeContextCurrent();
  glDeleteTextures(1, &texture);
}

TEST(AEOpenGLContext, MakeContextCurrentSwitchesBeforeTheFlushRuleSoNothingIsFlushed) {
  std::unique_ptr<AEOpenGLContext> target = quietContext(nullptr);
  std::unique_ptr<AEOpenGLContext> other = quietContext(nullptr);
  ASSERT_EQ(CGLGetCurrentContext(), other->cglContext());

  GLCallLog recorder;
  target->makeContextCurrent();
  EXPECT_EQ(CGLGetCurrentContext(), target->cglContext());
  EXPECT_THAT(recorder.names(), IsEmpty());

  target->makeContextCurrent();
  EXPECT_EQ(CGLGetCurrentContext(), target->cglContext()) << "made current again";
  EXPECT_THAT(recorder.names(), IsEmpty());
}

// A frame buffer object bound on the current context, complete (one colour texture)
// or incomplete (no attachment); made and deleted with the same context current.
class BoundFramebuffer {
public:
  explicit BoundFramebuffer(bool complete) {
    glGenFramebuffers(1, &mFramebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, mFramebuffer);
    if (complete) {
      glGenTextures(1, &mTexture);
      glBindTexture(GL_TEXTURE_2D, mTexture);
      glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
      glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, mTexture, 0);
    }
  }
  ~BoundFramebuffer() {
    glDeleteFramebuffers(1, &mFramebuffer);
    glDeleteTextures(1, &mTexture);
  }
  BoundFramebuffer(const BoundFramebuffer&) = delete;
  BoundFramebuffer& operator=(const BoundFramebuffer&) = delete;

private:
  GLuint mFramebuffer = 0;
  GLuint mTexture = 0;
};

TEST(AEOpenGLContext, MakeCurrentFlushFlushesTheContextBeingLeftUnlessItsFramebufferIsIncomplete) {
  struct FlushCase {
    const char* label;
    bool bound;
    bool complete;
    std::vector<std::string> calls;
  };
  const FlushCase cases[] = {
      {"no frame buffer bound", false, false, {"glGetIntegerv", "glFlush"}},
      {"complete frame buffer bound", true, true, {"glGetIntegerv", "glCheckFramebufferStatus", "glFlush"}},
      {"incomplete frame buffer bound", true, false, {"glGetIntegerv", "glCheckFramebufferStatus"}}};
  for (const FlushCase& flushCase : cases) {
    std::unique_ptr<AEOpenGLContext> destination = quietContext(nullptr);
    std::unique_ptr<AEOpenGLContext> left = quietContext(nullptr);
    std::unique_ptr<BoundFramebuffer> framebuffer;
    if (flushCase.bound) {
      framebuffer.reset(new BoundFramebuffer(flushCase.complete));
    }
    {
      GLCallLog recorder;
      AEOpenGLContext::makeCurrentFlush(destination->cglContext());
      EXPECT_EQ(recorder.names(), flushCase.calls) << flushCase.label;
    }
    EXPECT_EQ(CGLGetCurrentContext(), destination->cglContext()) << flushCase.label;
    left->makeContextCurrent();
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
