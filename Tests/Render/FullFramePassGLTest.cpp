// The two full-frame passes on a real context: the pixel formulas that turn the host's order into premultiplied
// RGBA and back, and that the quad's objects are made once.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include <glbinding/gl/gl.h>

#include "GL/BackgroundRender.h"
#include "GL/ScreenRender.h"
#include "RenderSupport/GLCallLog.h"
#include "RenderSupport/TestContext.h"

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
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, static_cast<GLint>(GL_NEAREST));
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
    GLuint mTexture = 0;
    GLuint mColour = 0;
    GLuint mFrameBuffer = 0;
};

std::string show(const Pixel& p) {
    return "(" + std::to_string(p[0]) + ", " + std::to_string(p[1]) + ", " + std::to_string(p[2]) + ", " +
           std::to_string(p[3]) + ")";
}

void expectPixels(const std::vector<Pixel>& got, const std::vector<Pixel>& expected, const char* what) {
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i) {
        for (int c = 0; c < 4; ++c) {
            // The division in the shader rounds once into 8 bits; a quotient on a .5 edge may go either way.
            EXPECT_LE(std::abs(got[i][c] - expected[i][c]), 1)
                << what << " pixel " << i << ": got " << show(got[i]) << ", expected " << show(expected[i]);
        }
    }
}

class FullFramePass : public ::testing::Test {
protected:
    void SetUp() override { TestContext::use(); }
};

}  // namespace

TEST_F(FullFramePass, ScreenRenderReturnsHostOrderWithStraightAlpha) {
    // Premultiplied red, green, blue, alpha in; alpha, red, green, blue out, colour divided by alpha.
    // A colour above its alpha (200 over 100) divides to more than 1, and the 8-bit target clamps it.
    PassTarget target({{200, 100, 50, 255}, {64, 32, 16, 128}, {90, 80, 70, 0}, {0, 0, 0, 255}, {200, 100, 50, 100}});
    ScreenRender screen;
    screen.draw(target.texture(), 1.0f);
    expectPixels(target.read(),
                 {{255, 200, 100, 50}, {128, 127, 64, 32}, {0, 0, 0, 0}, {255, 0, 0, 0}, {100, 255, 255, 127}},
                 "ScreenRender");
}

TEST_F(FullFramePass, ScreenRenderDividesAllFourChannelsByTheMultiplier) {
    PassTarget target({{200, 100, 50, 255}, {100, 50, 25, 200}});
    ScreenRender screen;
    screen.draw(target.texture(), 2.0f);
    expectPixels(target.read(), {{128, 100, 50, 25}, {100, 64, 32, 16}}, "ScreenRender with multiplier 2");
}

TEST_F(FullFramePass, BackgroundRenderPremultipliesHostOrderIntoRGBA) {
    PassTarget target({{255, 200, 100, 50}, {128, 254, 128, 64}, {0, 90, 80, 70}});
    BackgroundRender background;
    background.draw(target.texture(), 1.0f);
    expectPixels(target.read(), {{200, 100, 50, 255}, {127, 64, 32, 128}, {0, 0, 0, 0}}, "BackgroundRender");
}

TEST_F(FullFramePass, QuadObjectsAreMadeAtTheFirstDrawOnly) {
    PassTarget target({{1, 2, 3, 255}});
    ScreenRender screen;
    GLCallLog log;
    screen.draw(target.texture(), 1.0f);
    screen.draw(target.texture(), 1.0f);
    EXPECT_EQ(log.count("glGenVertexArrays"), 1);
    EXPECT_EQ(log.count("glGenBuffers"), 1);
    EXPECT_EQ(log.count("glBufferData"), 1);
    EXPECT_EQ(log.count("glDrawArrays"), 2);
    const std::vector<std::string> first = log.only({"glGenVertexArrays", "glBindVertexArray", "glGenBuffers",
                                                     "glBufferData", "glUseProgram", "glDrawArrays"});
    ASSERT_GE(first.size(), 6u);
    EXPECT_EQ(first[0].rfind("glGenVertexArrays", 0), 0u) << first[0];
    EXPECT_EQ(first[1].rfind("glBindVertexArray", 0), 0u) << first[1];
    EXPECT_EQ(first[2].rfind("glGenBuffers", 0), 0u) << first[2];
    EXPECT_NE(first[3].find("120"), std::string::npos) << "six vertices of five floats: " << first[3];
    EXPECT_EQ(first[4].rfind("glUseProgram", 0), 0u) << first[4];
}
