// The main frame buffer on a real context: what prepare keeps, the render-target stack and its stencils, normal
// levels, and the parameters of the textures it makes. (What a frame leaves alive goes through the effect's render
// commands.)
#include <gmock/gmock.h>

#include <glbinding/gl/gl.h>

#include "GL/AEOpenglMainFrameBuffer.h"
#include "Math/Vec2.h"
#include "Support/GLCallLog.h"
#include "Support/GLFixture.h"

using namespace gl;
using namespace Quillmere::Velmira;
using testing::ElementsAre;
using testing::IsEmpty;

class MainFrameBuffer : public testing::Test {
protected:
  void SetUp() override { GLFixture::use(); }
  void TearDown() override { buffer->clearStack(); }

  // The bound frame buffer's colour attachment: its type and name.
  static std::pair<GLint, GLint> colour() {
    std::pair<GLint, GLint> got;
    for (auto [query, value] : {std::pair{GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, &got.first},
                                {GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &got.second}}) {
      glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, query, value);
    }
    return got;
  }
  static std::pair<GLint, GLint> renderbuffer(uint32_t name) { return {GLint(GL_RENDERBUFFER), GLint(name)}; }

  AEOpenglMainFrameBuffer* const buffer = AEOpenglMainFrameBuffer::mainFrameBuffer();
};

TEST_F(MainFrameBuffer, PrepareKeepsEverythingForTheSizeHeldAndDropsTheLevelsForANewOne) {
  buffer->prepare(20, 10, true);
  buffer->beginDrawing();
  const uint32_t level = buffer->renderBufferStack().at(0);
  GLCallLog log;
  buffer->prepare(20, 10, false);
  EXPECT_THAT(log.names(), IsEmpty()) << "the size held, whatever multisample says";
  buffer->prepare(21, 10, true);
  EXPECT_THAT(buffer->renderBufferStack(), IsEmpty());
  EXPECT_EQ(glIsRenderbuffer(level), GL_FALSE);
}

// A second beginDrawing adds a level, cleared; a pop takes only that one and attaches the one below again, and the
// last pass turns blending and multisampling off (beginDrawing turns the second on). With no level left, endDrawing
// does nothing.
TEST_F(MainFrameBuffer, DrawingPushesALevelAndItsEndPopsThatOneOnly) {
  buffer->prepare(24, 9, true);
  buffer->beginDrawing();
  const uint32_t lower = buffer->renderBufferStack().back();
  GLCallLog log;
  buffer->beginDrawing();
  const GLuint texture = buffer->popRenderContext();
  EXPECT_EQ(colour(), renderbuffer(lower));
  buffer->drawToMainRenderBuffer(texture, 1.0f);
  EXPECT_THAT(buffer->renderBufferStack(), ElementsAre(lower));
  EXPECT_THAT(log.only({"glDisable", "glEnable", "glClear", "glViewport"}),
              ElementsAre("glDisable(GL_BLEND)", "glEnable(GL_MULTISAMPLE)", "glClear(GL_COLOR_BUFFER_BIT)",
                          "glViewport(0, 0, 24, 9)", "glDisable(GL_BLEND)", "glDisable(GL_MULTISAMPLE)",
                          "glClear(GL_COLOR_BUFFER_BIT)"));
  buffer->clearStack();
  GLCallLog empty;
  EXPECT_EQ(buffer->popRenderContext(), 0u);
  buffer->endDrawing(1.0f);
  EXPECT_THAT(empty.names(), IsEmpty());
}

TEST_F(MainFrameBuffer, StencilsGoWithThePopOfTheirLevelButNotWithClearStack) {
  buffer->prepare(8, 8, false);
  for (const bool pop : {true, false}) {
    buffer->pushRenderContext(false, true);
    const uint32_t level = buffer->renderBufferStack().back(), stencil = buffer->stencilBuffers().at(level);
    buffer->pushRenderContext(false, false);
    GLuint textures[2] = {buffer->popRenderContext()};
    EXPECT_EQ(buffer->stencilBuffers().count(level), 1u) << "after the pop of the level above";
    pop ? void(textures[1] = buffer->popRenderContext()) : buffer->clearStack();
    glDeleteTextures(2, textures);
    EXPECT_EQ(buffer->stencilBuffers().count(level), pop ? 0u : 1u) << (pop ? "popped" : "cleared");
    EXPECT_EQ(glIsRenderbuffer(stencil), pop ? GL_FALSE : GL_TRUE) << (pop ? "popped" : "cleared");
  }
}

TEST_F(MainFrameBuffer, NormalLevelDrawsIntoItsTextureAndGivesTheStackBack) {
  buffer->prepare(4, 4, true);
  buffer->beginDrawing();
  const GLuint texture = buffer->createRenderTexture(Vec2(2, 2), false);
  buffer->pushNormalRenderContext(texture, Vec2(2, 2), 0);
  const auto frameBuffer = static_cast<GLuint>(GLFixture::integer(GL_FRAMEBUFFER_BINDING));
  glClearColor(1, 0, 0, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  buffer->popNormalRenderContext();
  EXPECT_EQ(glIsFramebuffer(frameBuffer), GL_FALSE) << "the normal level's frame buffer";
  EXPECT_EQ(colour(), renderbuffer(buffer->renderBufferStack().back())) << "the stack's top, attached again";
  std::array<std::uint32_t, 4> texels{};
  glBindTexture(GL_TEXTURE_2D, texture);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  glDeleteTextures(1, &texture);
  EXPECT_THAT(texels, testing::Each(0xFF0000FFu)) << "red, opaque";
}

// Only the minification filter is asked of GL: it keeps a mipmap filter out of the magnification one.
TEST_F(MainFrameBuffer, TextureMakersSetFormatSizeFilterAndWrapByTheirArguments) {
  buffer->prepare(6, 5, true);
  const struct {
    GLuint texture;
    GLenum format;
    GLint width;
    GLenum filter;
  } cases[] = {
      // The 8-bit makers ask for the unsized GL_RGBA, which GL reports back as asked.
      {buffer->createRenderTexture(false), GL_RGBA, 6, GL_LINEAR},
      {buffer->createRenderTexture(true), GL_RGBA, 6, GL_LINEAR_MIPMAP_LINEAR},
      {buffer->createRenderTexture(Vec2(3.7, 2), false), GL_RGBA, 3, GL_LINEAR},
      {buffer->createFloatRenderTexture(true, true), GL_RGBA32F, 6, GL_LINEAR_MIPMAP_LINEAR},
      {buffer->createFloatRenderTexture(true, false), GL_RGBA32F, 6, GL_LINEAR},
      {buffer->createFloatRenderTexture(false, true), GL_RGBA32F, 6, GL_LINEAR_MIPMAP_NEAREST},
      {buffer->createFloatRenderTexture(Vec2(2, 2), false, false), GL_RGBA32F, 2, GL_NEAREST},
  };
  EXPECT_EQ(GLFixture::integer(GL_TEXTURE_BINDING_2D), 0) << "the makers leave no texture bound";
  for (const auto& c : cases) {
    std::vector<GLint> got(5);
    glBindTexture(GL_TEXTURE_2D, c.texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &got[0]);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &got[1]);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &got[2]);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &got[3]);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &got[4]);
    glDeleteTextures(1, &c.texture);
    EXPECT_THAT(got, ElementsAre(c.format, c.width, c.filter, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE))
        << "texture " << &c - cases << ": format, width, filter, wraps";
  }
}
