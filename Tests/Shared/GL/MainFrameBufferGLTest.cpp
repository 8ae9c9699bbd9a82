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

class MainFrameBuffer : public testing::Test {
protected:
  void SetUp() override { GLFixture::use(); }
  void TearDown() override { buffer->clearStack(); }

  // The bound frame buffer's colour attachment: its type and name.
  static std::vector<GLint> colour() {
    std::vector<GLint> got;
    for (GLenum query : {GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME})
      glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, query, &got.emplace_back(-1));
    return got;
  }

  AEOpenglMainFrameBuffer* const buffer = AEOpenglMainFrameBuffer::mainFrameBuffer();
};

// A second beginDrawing adds a level, cleared; a pop takes only that one and attaches the one below again, and the
// last pass turns blending and multisampling off (beginDrawing turns the second on). A normal level attaches its
// texture through a frame buffer of its own, which its pop deletes. A new size drops every level; the size held asks
// nothing of GL, whatever multisample says, and with no level left endDrawing does nothing.
TEST_F(MainFrameBuffer, DrawingPushesALevelItsEndPopsThatOneOnlyANormalLevelGoesWholeAndANewSizeDropsThemAll) {
  buffer->prepare(24, 9, true);
  buffer->beginDrawing();
  const uint32_t lower = buffer->renderBufferStack().back();
  GLCallLog log;
  buffer->beginDrawing();
  const GLuint texture = buffer->popRenderContext();
  EXPECT_THAT(colour(), ElementsAre(GL_RENDERBUFFER, GLint(lower)));
  buffer->drawToMainRenderBuffer(texture, 1.0f);
  EXPECT_THAT(log.only({"glDisable", "glEnable", "glClear", "glViewport"}),
              ElementsAre("glDisable(GL_BLEND)", "glEnable(GL_MULTISAMPLE)", "glClear(GL_COLOR_BUFFER_BIT)",
                          "glViewport(0, 0, 24, 9)", "glDisable(GL_BLEND)", "glDisable(GL_MULTISAMPLE)",
                          "glClear(GL_COLOR_BUFFER_BIT)"));
  const GLuint normal = buffer->createRenderTexture(Vec2(2, 2), false);
  buffer->pushNormalRenderContext(normal, Vec2(2, 2), 0);
  const auto frameBuffer = static_cast<GLuint>(GLFixture::integer(GL_FRAMEBUFFER_BINDING));
  EXPECT_THAT(colour(), ElementsAre(GL_TEXTURE, GLint(normal))) << "the normal level";
  buffer->popNormalRenderContext();
  glDeleteTextures(1, &normal);
  EXPECT_EQ(glIsFramebuffer(frameBuffer), GL_FALSE) << "the normal level's frame buffer";
  buffer->prepare(25, 9, true);
  EXPECT_THAT(buffer->renderBufferStack(), testing::IsEmpty());
  EXPECT_EQ(glIsRenderbuffer(lower), GL_FALSE);
  const std::size_t calls = log.names().size();
  buffer->prepare(25, 9, false);
  buffer->endDrawing(1.0f);
  EXPECT_EQ(log.names().size(), calls) << "the size held, then no level to pop";
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

// Only the minification filter is asked of GL: it keeps a mipmap filter out of the magnification one.
TEST_F(MainFrameBuffer, TextureMakersSetFormatSizeFilterAndWrapByTheirArguments) {
  buffer->prepare(6, 5, true);
  // The 8-bit makers ask for the unsized GL_RGBA, which GL reports back as asked.
  // clang-format off
  const struct { GLuint texture; GLenum format; GLint width; GLenum filter; } cases[] = {
      {buffer->createRenderTexture(false), GL_RGBA, 6, GL_LINEAR},
      {buffer->createRenderTexture(true), GL_RGBA, 6, GL_LINEAR_MIPMAP_LINEAR},
      {buffer->createRenderTexture(Vec2(3.7, 2), false), GL_RGBA, 3, GL_LINEAR},
      {buffer->createFloatRenderTexture(true, true), GL_RGBA32F, 6, GL_LINEAR_MIPMAP_LINEAR},
      {buffer->createFloatRenderTexture(true, false), GL_RGBA32F, 6, GL_LINEAR},
      {buffer->createFloatRenderTexture(false, true), GL_RGBA32F, 6, GL_LINEAR_MIPMAP_NEAREST},
      {buffer->createFloatRenderTexture(Vec2(2, 2), false, false), GL_RGBA32F, 2, GL_NEAREST}};
  // clang-format on
  EXPECT_EQ(GLFixture::integer(GL_TEXTURE_BINDING_2D), 0) << "the makers leave no texture bound";
  for (const auto& c : cases) {
    std::vector<GLint> got;
    glBindTexture(GL_TEXTURE_2D, c.texture);
    for (GLenum name : {GL_TEXTURE_INTERNAL_FORMAT, GL_TEXTURE_WIDTH})
      glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, name, &got.emplace_back(-1));
    for (GLenum name : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
      glGetTexParameteriv(GL_TEXTURE_2D, name, &got.emplace_back(-1));
    glDeleteTextures(1, &c.texture);
    EXPECT_THAT(got, ElementsAre(c.format, c.width, c.filter, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE))
        << "texture " << &c - cases << ": format, width, filter, wraps";
  }
}
