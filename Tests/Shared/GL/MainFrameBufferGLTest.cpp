// The main frame buffer on a real context: what prepare makes and keeps, the render-target stack and the GL calls
// whose order decides what ends up in the read-back buffer.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include <glbinding/gl/gl.h>

#include "GL/AEOpenGLUtilities.h"
#include "GL/AEOpenglMainFrameBuffer.h"
#include "Math/Vec2.h"
#include "Support/GLCallLog.h"
#include "Support/GLFixture.h"

using namespace gl;
using namespace Quillmere::Velmira;

namespace {

class MainFrameBuffer : public ::testing::Test {
protected:
  void SetUp() override {
    GLFixture::use();
    buffer = AEOpenglMainFrameBuffer::mainFrameBuffer();
  }
  void TearDown() override { buffer->clearStack(); }

  AEOpenglMainFrameBuffer* buffer = nullptr;
};

}  // namespace

TEST_F(MainFrameBuffer, PrepareMakesNothingForTheSameSizeAndDropsTheStackForANewOne) {
  buffer->prepare(20, 10, true);
  buffer->beginDrawing();
  buffer->pushRenderContext(false, false);
  const std::vector<uint32_t> levels = buffer->renderBufferStack();
  ASSERT_EQ(levels.size(), 2u);
  for (bool multisample : {true, false}) {
    GLCallLog log;
    buffer->prepare(20, 10, multisample);
    EXPECT_TRUE(log.calls().empty()) << "multisample " << multisample << ": first call " << log.calls()[0].text();
  }
  EXPECT_EQ(buffer->renderBufferStack(), levels) << "the same size keeps the stack";
  buffer->prepare(21, 10, true);
  EXPECT_TRUE(buffer->renderBufferStack().empty());
  for (uint32_t level : levels) {
    EXPECT_EQ(glIsRenderbuffer(level), GL_FALSE) << "render buffer " << level << " still alive";
  }
}

TEST_F(MainFrameBuffer, BeginDrawingMakesAMultisampledLevelThenBindsClearsAndSetsTheViewport) {
  buffer->prepare(24, 9, true);
  GLCallLog log;
  buffer->beginDrawing();
  EXPECT_EQ(log.names(),
            (std::vector<std::string>{"glDrawBuffer", "glDisable", "glEnable", "glGenRenderbuffers",
                                      "glBindRenderbuffer", "glRenderbufferStorageMultisample", "glBindFramebuffer",
                                      "glFramebufferRenderbuffer", "glClearColor", "glClear", "glViewport"}));
  EXPECT_EQ(log.calls().back().text(), "glViewport(0, 0, 24, 9)");
  // Eight samples, or fewer where the platform has fewer.
  GLint samples = 0;
  glGetIntegerv(GL_MAX_SAMPLES, &samples);
  const std::string storage = log.only({"glRenderbufferStorageMultisample"}).at(0);
  EXPECT_NE(storage.find(", " + std::to_string(std::min(8, samples)) + ", "), std::string::npos) << storage;
  EXPECT_EQ(AEOpenGLUtilities::CheckFramebufferStatus(), "OK") << "the level must be drawable";
}

TEST_F(MainFrameBuffer, EndDrawingPopsOnlyTheTopLevelAndAnEmptyStackMakesNothing) {
  buffer->prepare(8, 8, true);
  buffer->beginDrawing();
  const uint32_t lower = buffer->renderBufferStack().back();
  buffer->beginDrawing();
  const GLFixture::LiveObjects before = GLFixture::liveObjects();
  buffer->endDrawing(1.0f);
  ASSERT_EQ(buffer->renderBufferStack(), std::vector<uint32_t>{lower});
  const GLFixture::LiveObjects after = GLFixture::liveObjects();
  EXPECT_EQ(after.renderbuffers, before.renderbuffers - 1) << "the popped level is deleted";
  EXPECT_EQ(after.textures, before.textures) << "the resolve texture is deleted after the last pass";

  buffer->clearStack();
  GLCallLog log;
  EXPECT_EQ(buffer->popRenderContext(), 0u);
  buffer->endDrawing(1.0f);
  EXPECT_TRUE(log.calls().empty()) << log.calls()[0].text();
}

TEST_F(MainFrameBuffer, StencilEntriesFollowPopsButNotClearStack) {
  buffer->prepare(8, 8, true);
  buffer->pushRenderContext(false, true);
  const uint32_t withStencil = buffer->renderBufferStack().back();
  const uint32_t stencil = buffer->stencilBuffers().at(withStencil);
  buffer->pushRenderContext(false, false);
  for (int pop = 0; pop < 2; ++pop) {
    EXPECT_EQ(buffer->stencilBuffers().count(withStencil), 1u) << "before pop " << pop;
    GLuint texture = buffer->popRenderContext();
    glDeleteTextures(1, &texture);
  }
  EXPECT_EQ(buffer->stencilBuffers().count(withStencil), 0u);
  EXPECT_EQ(glIsRenderbuffer(stencil), GL_FALSE);

  buffer->pushRenderContext(false, true);
  const uint32_t kept = buffer->renderBufferStack().back();
  const uint32_t keptStencil = buffer->stencilBuffers().at(kept);
  buffer->clearStack();
  EXPECT_EQ(buffer->stencilBuffers().count(kept), 1u) << "clearStack leaves the stencil entry";
  EXPECT_EQ(glIsRenderbuffer(keptStencil), GL_TRUE) << "and its render buffer";
  glDeleteRenderbuffers(1, &keptStencil);
}

TEST_F(MainFrameBuffer, NormalLevelDrawsIntoItsTextureAndGivesTheStackBack) {
  buffer->prepare(4, 4, true);
  buffer->beginDrawing();
  const uint32_t level = buffer->renderBufferStack().back();
  GLuint texture = buffer->createRenderTexture(false);
  buffer->pushNormalRenderContext(texture, Vec2(4, 4), 0);
  GLint normal = 0;
  glGetIntegerv(GL_FRAMEBUFFER_BINDING, &normal);
  glClearColor(1, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  buffer->popNormalRenderContext();
  EXPECT_EQ(glIsFramebuffer(static_cast<GLuint>(normal)), GL_FALSE) << "the normal level's frame buffer is deleted";
  GLint attached = 0;
  glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME,
                                        &attached);
  EXPECT_EQ(static_cast<uint32_t>(attached), level) << "the stack's top is attached again";
  std::vector<std::array<std::uint8_t, 4>> texels(16);
  glBindTexture(GL_TEXTURE_2D, texture);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  glBindTexture(GL_TEXTURE_2D, 0);
  EXPECT_EQ(texels[5], (std::array<std::uint8_t, 4>{255, 0, 0, 255})) << "red " << int(texels[5][0]);
  glDeleteTextures(1, &texture);
}

TEST_F(MainFrameBuffer, TextureMakersSetFormatAndFiltersByTheirArguments) {
  buffer->prepare(6, 5, true);
  struct Case {
    const char* what;
    GLuint texture;
    GLenum format, filter;
    GLint width;
  };
  const Case cases[] = {
      // The 8-bit makers ask for the unsized GL_RGBA, and GL reports it back as asked.
      {"render", buffer->createRenderTexture(false), GL_RGBA, GL_LINEAR, 6},
      {"render mipmap", buffer->createRenderTexture(true), GL_RGBA, GL_LINEAR_MIPMAP_LINEAR, 6},
      {"render sized", buffer->createRenderTexture(Vec2(3.7, 2), false), GL_RGBA, GL_LINEAR, 3},
      {"float linear mipmap", buffer->createFloatRenderTexture(true, true), GL_RGBA32F, GL_LINEAR_MIPMAP_LINEAR, 6},
      {"float linear", buffer->createFloatRenderTexture(true, false), GL_RGBA32F, GL_LINEAR, 6},
      {"float mipmap", buffer->createFloatRenderTexture(false, true), GL_RGBA32F, GL_LINEAR_MIPMAP_NEAREST, 6},
      {"float nearest sized", buffer->createFloatRenderTexture(Vec2(2, 2), false, false), GL_RGBA32F, GL_NEAREST, 2},
  };
  GLint bound = -1;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_EQ(bound, 0) << "the makers leave no texture bound";
  for (const Case& c : cases) {
    GLint got[4] = {};
    glBindTexture(GL_TEXTURE_2D, c.texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &got[0]);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &got[1]);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &got[2]);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &got[3]);
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &c.texture);
    EXPECT_EQ(std::vector<GLint>(got, got + 4),
              (std::vector<GLint>{static_cast<GLint>(c.format), static_cast<GLint>(c.filter),
                                  static_cast<GLint>(GL_CLAMP_TO_EDGE), c.width}))
        << c.what << ": format, filter, wrap and width";
  }
}
