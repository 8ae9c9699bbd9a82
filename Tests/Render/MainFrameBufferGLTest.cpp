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
#include "RenderSupport/GLCallLog.h"
#include "RenderSupport/LiveObjects.h"
#include "RenderSupport/TestContext.h"

using namespace gl;
using namespace Quillmere::Velmira;

namespace {

using Pixel = std::array<std::uint8_t, 4>;

class MainFrameBuffer : public ::testing::Test {
protected:
    void SetUp() override {
        TestContext::use();
        buffer = AEOpenglMainFrameBuffer::mainFrameBuffer();
    }
    void TearDown() override { buffer->clearStack(); }

    std::vector<Pixel> readMain(int width, int height) {
        std::vector<Pixel> pixels(static_cast<std::size_t>(width) * height);
        glReadBuffer(GL_COLOR_ATTACHMENT0);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }

    AEOpenglMainFrameBuffer* buffer = nullptr;
};

std::string show(const Pixel& p) {
    return "(" + std::to_string(p[0]) + ", " + std::to_string(p[1]) + ", " + std::to_string(p[2]) + ", " +
           std::to_string(p[3]) + ")";
}

int maxSamples() {
    GLint samples = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &samples);
    return samples;
}

}  // namespace

TEST_F(MainFrameBuffer, PrepareWithSameSizeMakesNothing) {
    buffer->prepare(31, 17, true);
    for (bool multisample : {true, false}) {
        GLCallLog log;
        buffer->prepare(31, 17, multisample);
        EXPECT_TRUE(log.calls().empty()) << "multisample " << multisample << ": first call " << log.calls()[0].text();
    }
}

TEST_F(MainFrameBuffer, PrepareWithNewSizeDropsTheLevelsOnTheStack) {
    buffer->prepare(20, 10, true);
    buffer->beginDrawing();
    buffer->pushRenderContext(false, false);
    const std::vector<uint32_t> levels = buffer->renderBufferStack();
    ASSERT_EQ(levels.size(), 2u);
    buffer->prepare(21, 10, true);
    EXPECT_TRUE(buffer->renderBufferStack().empty());
    for (uint32_t level : levels) {
        EXPECT_EQ(glIsRenderbuffer(level), GL_FALSE) << "render buffer " << level << " still alive";
    }
}

TEST_F(MainFrameBuffer, MultisampledLevelsAskForEightSamplesOrWhatThePlatformHas) {
    buffer->prepare(23, 9, true);
    GLCallLog log;
    buffer->beginDrawing();
    const std::vector<std::string> storage = log.only({"glRenderbufferStorageMultisample"});
    ASSERT_EQ(storage.size(), 1u);
    const int expected = std::min(8, maxSamples());
    EXPECT_NE(storage[0].find(", " + std::to_string(expected) + ", "), std::string::npos) << storage[0];
    EXPECT_EQ(AEOpenGLUtilities::CheckFramebufferStatus(), "OK") << "the level must be drawable";
}

TEST_F(MainFrameBuffer, BeginDrawingBindsClearsAndSetsTheViewportInOrder) {
    buffer->prepare(24, 9, true);
    GLCallLog log;
    buffer->beginDrawing();
    const std::vector<std::string> names = log.names();
    const std::vector<std::string> expected = {
        "glDrawBuffer",         "glDisable",
        "glEnable",             "glGenRenderbuffers",
        "glBindRenderbuffer",   "glRenderbufferStorageMultisample",
        "glBindFramebuffer",    "glFramebufferRenderbuffer",
        "glClearColor",         "glClear",
        "glViewport"};
    EXPECT_EQ(names, expected);
    EXPECT_EQ(log.calls().back().text(), "glViewport(0, 0, 24, 9)");
}

TEST_F(MainFrameBuffer, AFrameComesBackInHostOrderTheSameWayUp) {
    // Premultiplied colours drawn into the top and bottom halves (GL rows 0-1 and 2-3) come back straight, in the
    // host's order, in the same rows: nothing flips on the way through the resolve and the last pass.
    buffer->prepare(3, 4, true);
    buffer->beginDrawing();
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 3, 2);
    glClearColor(0.4f, 0.2f, 0.0f, 0.4f);
    glClear(GL_COLOR_BUFFER_BIT);
    glScissor(0, 2, 3, 2);
    glClearColor(0.0f, 0.0f, 1.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    buffer->endDrawing(1.0f);
    const std::vector<Pixel> pixels = readMain(3, 4);
    const Pixel top = {102, 255, 128, 0};
    const Pixel bottom = {255, 0, 0, 255};
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 3; ++x) {
            const Pixel& got = pixels[static_cast<std::size_t>(y) * 3 + x];
            const Pixel& want = y < 2 ? top : bottom;
            for (int c = 0; c < 4; ++c) {
                EXPECT_LE(std::abs(got[c] - want[c]), 1)
                    << "row " << y << " column " << x << ": got " << show(got) << ", expected " << show(want);
            }
        }
    }
    EXPECT_TRUE(buffer->renderBufferStack().empty());
}

TEST_F(MainFrameBuffer, EndDrawingPopsOnlyTheTopLevel) {
    buffer->prepare(8, 8, true);
    buffer->beginDrawing();
    const uint32_t lower = buffer->renderBufferStack().back();
    buffer->beginDrawing();
    const LiveObjects before = LiveObjects::count();
    buffer->endDrawing(1.0f);
    ASSERT_EQ(buffer->renderBufferStack().size(), 1u);
    EXPECT_EQ(buffer->renderBufferStack().back(), lower);
    const LiveObjects after = LiveObjects::count();
    EXPECT_EQ(after.renderbuffers, before.renderbuffers - 1) << "the popped level is deleted";
    EXPECT_EQ(after.textures, before.textures) << "the resolve texture is deleted after the last pass";
}

TEST_F(MainFrameBuffer, PopOnAnEmptyStackReturnsZeroAndMakesNothing) {
    buffer->prepare(8, 8, true);
    GLCallLog log;
    EXPECT_EQ(buffer->popRenderContext(), 0u);
    buffer->endDrawing(1.0f);
    EXPECT_TRUE(log.calls().empty()) << log.calls()[0].text();
}

TEST_F(MainFrameBuffer, StencilEntriesFollowPopsButNotClearStack) {
    buffer->prepare(8, 8, true);
    buffer->pushRenderContext(false, true);
    const uint32_t withStencil = buffer->renderBufferStack().back();
    ASSERT_EQ(buffer->stencilBuffers().count(withStencil), 1u);
    const uint32_t stencil = buffer->stencilBuffers().at(withStencil);
    buffer->pushRenderContext(false, false);
    GLuint texture = buffer->popRenderContext();
    glDeleteTextures(1, &texture);
    EXPECT_EQ(buffer->stencilBuffers().count(withStencil), 1u) << "a pop of a level without stencil keeps the map";
    texture = buffer->popRenderContext();
    glDeleteTextures(1, &texture);
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
    std::vector<Pixel> texels(16);
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(texels[5], (Pixel{255, 0, 0, 255})) << show(texels[5]);
    glDeleteTextures(1, &texture);
}

TEST_F(MainFrameBuffer, TextureMakersSetFormatAndFiltersByTheirArguments) {
    buffer->prepare(6, 5, true);
    struct Case {
        const char* what;
        GLuint texture;
        GLenum format;
        GLenum filter;
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
        {"float nearest sized", buffer->createFloatRenderTexture(Vec2(2, 2), false, false), GL_RGBA32F, GL_NEAREST,
         2},
    };
    GLint bound = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(bound, 0) << "the makers leave no texture bound";
    for (const Case& c : cases) {
        glBindTexture(GL_TEXTURE_2D, c.texture);
        GLint format = 0, filter = 0, wrap = 0, width = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &filter);
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &wrap);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
        EXPECT_EQ(format, static_cast<GLint>(c.format)) << c.what;
        EXPECT_EQ(filter, static_cast<GLint>(c.filter)) << c.what;
        EXPECT_EQ(wrap, static_cast<GLint>(GL_CLAMP_TO_EDGE)) << c.what;
        EXPECT_EQ(width, c.width) << c.what;
        glBindTexture(GL_TEXTURE_2D, 0);
        glDeleteTextures(1, &c.texture);
    }
}
