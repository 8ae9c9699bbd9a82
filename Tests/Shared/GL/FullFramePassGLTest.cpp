// The two full-frame passes on a real context: the pixel formulas that turn the host's order into premultiplied
// RGBA and back, and that the quad's objects are made once.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include <glbinding/gl/gl.h>

#include "GL/BackgroundRender.h"
#include "GL/ScreenRender.h"
#include "Support/GLCallLog.h"
#include "Support/GLFixture.h"

using namespace gl;
using namespace Quillmere::Velmira;

namespace {

using Pixel = std::array<std::uint8_t, 4>;

// A one-row RGBA8 texture and a target of the same size, read back after a pass.
class PassTarget {
public:
  explicit PassTarget(const std::vector<Pixel>& texels) : mWidth(static_cast<GLsizei>(texels.size())) {
    glGenTextures(1, &mTexture);
    glBindTexture(GL_TEXTURE_2D, mTexture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, static_cast<GLint>(GL_NEAREST));
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(GL_RGBA8), mWidth, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 texels.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenRenderbuffers(1, &mColour);
    glBindRenderbuffer(GL_RENDERBUFFER, mColour);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, mWidth, 1);
    glGenFramebuffers(1, &mFrameBuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, mFrameBuffer);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, mColour);
    glViewport(0, 0, mWidth, 1);
    glDisable(GL_BLEND);
  }
  ~PassTarget() {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &mFrameBuffer);
    glDeleteRenderbuffers(1, &mColour);
    glDeleteTextures(1, &mTexture);
  }
  GLuint texture() const { return mTexture; }
  std::vector<Pixel> read() const {
    std::vector<Pixel> pixels(static_cast<std::size_t>(mWidth));
    glReadPixels(0, 0, mWidth, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
  }

private:
  GLsizei mWidth;
  GLuint mTexture = 0, mColour = 0, mFrameBuffer = 0;
};

struct PassCase {
  const char* what;
  bool screen;  // ScreenRender, else BackgroundRender
  float multiplier;
  std::vector<Pixel> in, out;
};

}  // namespace

TEST(FullFramePass, PassesConvertBetweenHostOrderAndPremultipliedRGBA) {
  GLFixture::use();
  const PassCase cases[] = {
      // Premultiplied RGBA in; alpha, red, green, blue out, colour divided by alpha. A colour above its alpha
      // (200 over 100) divides to more than 1, and the 8-bit target clamps it.
      {"ScreenRender",
       true,
       1.0f,
       {{200, 100, 50, 255}, {64, 32, 16, 128}, {90, 80, 70, 0}, {0, 0, 0, 255}, {200, 100, 50, 100}},
       {{255, 200, 100, 50}, {128, 127, 64, 32}, {0, 0, 0, 0}, {255, 0, 0, 0}, {100, 255, 255, 127}}},
      {"ScreenRender divides all four channels by the multiplier",
       true,
       2.0f,
       {{200, 100, 50, 255}, {100, 50, 25, 200}},
       {{128, 100, 50, 25}, {100, 64, 32, 16}}},
      {"BackgroundRender premultiplies",
       false,
       1.0f,
       {{255, 200, 100, 50}, {128, 254, 128, 64}, {0, 90, 80, 70}},
       {{200, 100, 50, 255}, {127, 64, 32, 128}, {0, 0, 0, 0}}},
  };
  for (const PassCase& c : cases) {
    PassTarget target(c.in);
    if (c.screen) {
      ScreenRender().draw(target.texture(), c.multiplier);
    } else {
      BackgroundRender().draw(target.texture(), c.multiplier);
    }
    const std::vector<Pixel> got = target.read();
    for (std::size_t i = 0; i < got.size(); ++i) {
      for (int ch = 0; ch < 4; ++ch) {
        // The division in the shader rounds once into 8 bits; a quotient on a .5 edge may go either way.
        EXPECT_LE(std::abs(got[i][ch] - c.out[i][ch]), 1)
            << c.what << ", pixel " << i << " channel " << ch << ": got " << int(got[i][ch]);
      }
    }
  }
}

TEST(FullFramePass, QuadObjectsAreMadeAtTheFirstDrawOnly) {
  GLFixture::use();
  PassTarget target({{1, 2, 3, 255}});
  ScreenRender screen;
  GLCallLog log;
  screen.draw(target.texture(), 1.0f);
  screen.draw(target.texture(), 1.0f);
  EXPECT_EQ(log.count("glGenVertexArrays"), 1);
  EXPECT_EQ(log.count("glGenBuffers"), 1);
  EXPECT_EQ(log.count("glDrawArrays"), 2);
  const std::vector<std::string> data = log.only({"glBufferData"});
  ASSERT_EQ(data.size(), 1u);
  EXPECT_NE(data[0].find("120"), std::string::npos) << "six vertices of five floats: " << data[0];
}
