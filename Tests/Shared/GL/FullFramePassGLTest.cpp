// The two full-frame passes on a real context: the host's order with straight alpha to premultiplied RGBA and back,
// with the multiplier of deep frames, and the quad's objects made once.
#include <gtest/gtest.h>

#include <glbinding/gl/gl.h>

#include "GL/BackgroundRender.h"
#include "GL/ScreenRender.h"
#include "Support/GLCallLog.h"
#include "Support/GLFixture.h"

using namespace gl;
using namespace Quillmere::Velmira;
using Pixels = std::vector<std::array<std::uint8_t, 4>>;

// One row of texels through a pass into an 8-bit target of the same width, read back.
template <typename Pass>
static Pixels drawn(Pass& pass, const Pixels& texels, float multiplier) {
  const auto width = static_cast<GLsizei>(texels.size());
  GLuint textures[2] = {}, frameBuffer = 0;
  glGenTextures(2, textures);
  for (GLuint texture : textures) {
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, static_cast<GLint>(GL_NEAREST));
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(GL_RGBA8), width, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  }
  glGenFramebuffers(1, &frameBuffer);
  glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, textures[1], 0);
  glViewport(0, 0, width, 1);
  pass.draw(textures[0], multiplier);
  Pixels read(texels.size());
  glReadPixels(0, 0, width, 1, GL_RGBA, GL_UNSIGNED_BYTE, read.data());
  glDeleteFramebuffers(1, &frameBuffer);
  glDeleteTextures(2, textures);
  return read;
}

TEST(FullFramePass, PassesConvertBetweenHostOrderAndPremultipliedRGBA) {
  GLFixture::use();
  ScreenRender screen;
  BackgroundRender background;
  // clang-format off
  const struct { bool screen; float multiplier; Pixels in, out; } cases[] = {
      {true, 1, {{200, 100, 50, 255}, {64, 32, 16, 128}, {90, 80, 70, 0}},
                {{255, 200, 100, 50}, {128, 127, 64, 32}, {0, 0, 0, 0}}},
      {true, 2, {{200, 100, 50, 255}}, {{128, 100, 50, 25}}},
      {false, 1, {{128, 254, 128, 64}, {0, 90, 80, 70}}, {{127, 64, 32, 128}, {0, 0, 0, 0}}},
      {false, 2, {{100, 50, 40, 20}}, {{78, 63, 31, 200}}}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.screen ? "ScreenRender" : "BackgroundRender") + " by " + std::to_string(c.multiplier));
    const Pixels got = c.screen ? drawn(screen, c.in, c.multiplier) : drawn(background, c.in, c.multiplier);
    // The shader's quotient is rounded once into 8 bits; one on a .5 edge may go either way.
    for (std::size_t at = 0; at < 4 * got.size(); ++at)
      EXPECT_NEAR(got[at / 4][at % 4], c.out[at / 4][at % 4], 1) << "pixel " << at / 4 << " channel " << at % 4;
  }
  GLCallLog log;
  drawn(screen, {{1, 2, 3, 255}}, 1.0f);
  EXPECT_EQ(log.count("glGenVertexArrays") + log.count("glGenBuffers"), 0) << "the quad is made at the first draw";
}
