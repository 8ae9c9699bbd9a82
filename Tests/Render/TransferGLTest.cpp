// Frames between host worlds and the GPU on a real context: the layout stays the host's, rows are neither skewed
// nor flipped, padding is never written, and every failure gives back what it took.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include <glbinding/gl/gl.h>

#include "GL/AEOpenGLUtilities.h"
#include "GL/AEOpenglMainFrameBuffer.h"
#include "HostDouble.h"
#include "RenderSupport/LiveObjects.h"
#include "RenderSupport/TestContext.h"
#include "RenderSupport/TestFrames.h"

using namespace gl;
using namespace Quillmere::Velmira;

namespace {

class Transfer : public ::testing::Test {
protected:
    void SetUp() override { TestContext::use(); }

    GLuint upload(int format, PF_LayerDef* world) {
        return AEOpenGLUtilities::UploadTexture(format, world, nullptr, host.inData(), pixelSize, glType, multiplier,
                                                false);
    }

    HostDouble host;
    unsigned long pixelSize = 0;
    GLenum glType = GL_NONE;
    float multiplier = 0.0f;
};

std::vector<std::uint8_t> textureBytes(GLuint texture, int width, int height) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * height * 4);
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return bytes;
}

// Draws the host's pixels, as premultiplied RGBA, into the main frame buffer's read-back target through the stack.
void drawIntoMainFrameBuffer(const HostWorld& world) {
    AEOpenglMainFrameBuffer* buffer = AEOpenglMainFrameBuffer::mainFrameBuffer();
    buffer->prepare(world.width(), world.height(), true);
    buffer->beginDrawing();
    glEnable(GL_SCISSOR_TEST);
    for (int y = 0; y < world.height(); ++y) {
        for (int x = 0; x < world.width(); ++x) {
            const PF_Pixel8& p = world.pixel(x, y);
            const float alpha = p.alpha / 255.0f;
            glScissor(x, y, 1, 1);
            glClearColor(p.red / 255.0f * alpha, p.green / 255.0f * alpha, p.blue / 255.0f * alpha, alpha);
            glClear(GL_COLOR_BUFFER_BIT);
        }
    }
    glDisable(GL_SCISSOR_TEST);
    buffer->endDrawing(1.0f);
}

}  // namespace

TEST_F(Transfer, PaddedRowsUploadUnchangedInHostOrderWithoutSkew) {
    HostWorld& input = host.setInputWorld(5, 3, 5 * 4 + 12);
    TestFrames::fill(input, TestFrames::Kind::HueSweep);
    const GLuint texture = upload(PF_PixelFormat_ARGB32, input.world());
    EXPECT_EQ(pixelSize, 4u);
    EXPECT_EQ(glType, GL_UNSIGNED_BYTE);
    EXPECT_EQ(multiplier, 1.0f);
    const std::vector<std::uint8_t> bytes = textureBytes(texture, 5, 3);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 5; ++x) {
            const PF_Pixel8& p = input.pixel(x, y);
            const std::uint8_t* t = &bytes[(static_cast<std::size_t>(y) * 5 + x) * 4];
            EXPECT_EQ((std::array<int, 4>{t[0], t[1], t[2], t[3]}),
                      (std::array<int, 4>{p.alpha, p.red, p.green, p.blue}))
                << "texel (" << x << ", " << y << ") holds alpha, red, green, blue in r, g, b, a";
        }
    }
    glDeleteTextures(1, &texture);
}

TEST_F(Transfer, UploadLeavesRowLengthZeroNoTextureBoundAndAFloatTexture) {
    HostWorld& input = host.setInputWorld(4, 2, 64);
    const GLuint texture = upload(PF_PixelFormat_ARGB32, input.world());
    GLint rowLength = -1, bound = -1, format = 0;
    glGetIntegerv(GL_UNPACK_ROW_LENGTH, &rowLength);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(rowLength, 0);
    EXPECT_EQ(bound, 0);
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(format, static_cast<GLint>(GL_RGBA32F));
    glDeleteTextures(1, &texture);
}

TEST_F(Transfer, SixteenBitFullChannelReachesOneAfterTheMultiplier) {
    // A deep world by hand: 2 x 1 pixels, rows padded to 24 bytes, channels from 0 to 32768.
    std::vector<PF_Pixel16> pixels(3, PF_Pixel16{32768, 16384, 0, 32768});
    PF_LayerDef world{};
    world.world_flags = PF_WorldFlag_DEEP;
    world.data = reinterpret_cast<PF_PixelPtr>(pixels.data());
    world.rowbytes = 24;
    world.width = 2;
    world.height = 1;
    const GLuint texture = upload(PF_PixelFormat_ARGB64, &world);
    std::uint32_t bits = 0;
    std::memcpy(&bits, &multiplier, sizeof bits);
    EXPECT_EQ(bits, 0x3FFFFF00u) << "65535 / 32768 as a float";
    EXPECT_EQ(pixelSize, 8u);
    EXPECT_EQ(glType, GL_UNSIGNED_SHORT);
    std::vector<float> texels(8);
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, texels.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_NEAR(texels[0] * multiplier, 1.0f, 1e-6f) << "full alpha";
    EXPECT_NEAR(texels[1] * multiplier, 0.5f, 1e-6f) << "half red";
    EXPECT_NEAR(texels[3] * multiplier, 1.0f, 1e-6f) << "full blue";
    glDeleteTextures(1, &texture);
}

TEST_F(Transfer, FloatWorldsGoUpThroughTheHostsIteration) {
    std::vector<PF_PixelFloat> pixels = {{1.0f, 0.25f, 0.5f, 0.75f}, {0.5f, 2.0f, -1.0f, 0.0f}};
    PF_LayerDef world{};
    world.world_flags = PF_WorldFlag_DEEP;
    world.data = reinterpret_cast<PF_PixelPtr>(pixels.data());
    world.rowbytes = 2 * sizeof(PF_PixelFloat);
    world.width = 2;
    world.height = 1;
    const GLuint texture = upload(PF_PixelFormat_ARGB128, &world);
    EXPECT_EQ(pixelSize, 16u);
    EXPECT_EQ(glType, GL_FLOAT);
    EXPECT_EQ(host.count("iterateFloat.iterate"), 1);
    EXPECT_EQ(host.heldSuites(), 0);
    std::vector<float> texels(8);
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, texels.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(texels, (std::vector<float>{1.0f, 0.25f, 0.5f, 0.75f, 0.5f, 2.0f, -1.0f, 0.0f}))
        << "float channels go up unscaled and unclamped";
    glDeleteTextures(1, &texture);
}

TEST_F(Transfer, UnknownFormatThrows516AndKeepsNoTexture) {
    HostWorld& input = host.setInputWorld(2, 2);
    const LiveObjects before = LiveObjects::count();
    try {
        upload(PF_PixelFormat_INVALID, input.world());
        FAIL() << "no exception";
    } catch (int code) {
        EXPECT_EQ(code, PF_Err_BAD_CALLBACK_PARAM);
    }
    EXPECT_EQ(LiveObjects::count().textures, before.textures);
}

TEST_F(Transfer, DownloadFillsOutputRowsTheSameWayUpAndLeavesPaddingAlone) {
    HostWorld source(4, 6);
    TestFrames::fill(source, TestFrames::Kind::TopBottom);
    drawIntoMainFrameBuffer(source);
    HostWorld& input = host.setInputWorld(4, 6);
    HostWorld& output = host.setOutputWorld(4, 6, 4 * 4 + 20);
    AEOpenGLUtilities::DownloadTexture(4, 6, input.world(), output.world(), host.inData(), PF_PixelFormat_ARGB32, 4,
                                       GL_UNSIGNED_BYTE);
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 4; ++x) {
            const PF_Pixel8& want = source.pixel(x, y);
            const PF_Pixel8& got = output.pixel(x, y);
            EXPECT_EQ((std::array<int, 4>{got.alpha, got.red, got.green, got.blue}),
                      (std::array<int, 4>{want.alpha, want.red, want.green, want.blue}))
                << "pixel (" << x << ", " << y << ")";
        }
    }
    EXPECT_TRUE(output.paddingIntact());
    EXPECT_EQ(host.liveHandles(), 0);
    EXPECT_EQ(host.heldSuites(), 0);
}

TEST_F(Transfer, DownloadFailuresGiveBackHandleAndSuite) {
    HostWorld& input = host.setInputWorld(2, 2);
    HostWorld& output = host.setOutputWorld(2, 2);
    drawIntoMainFrameBuffer(input);
    struct Case {
        const char* what;
        int format;
        std::function<void()> arrange;
        int thrown;
    };
    const Case cases[] = {
        // In this order: each arrangement stays for the cases after it.
        {"unknown format", PF_PixelFormat_INVALID, [] {}, PF_Err_BAD_CALLBACK_PARAM},
        {"no handle", PF_PixelFormat_ARGB32,
         [&] { host.failCall("HandleSuite.host_new_handle", 1, PF_Err_OUT_OF_MEMORY); }, PF_Err_OUT_OF_MEMORY},
        {"no handle suite", PF_PixelFormat_ARGB32, [&] { host.removeSuite(kPFHandleSuite, 2); },
         A_Err_MISSING_SUITE},
    };
    for (const Case& c : cases) {
        host.clearCalls();
        c.arrange();
        try {
            AEOpenGLUtilities::DownloadTexture(2, 2, input.world(), output.world(), host.inData(), c.format, 4,
                                               GL_UNSIGNED_BYTE);
            ADD_FAILURE() << c.what << ": no exception";
        } catch (int code) {
            EXPECT_EQ(code, c.thrown) << c.what;
        }
        EXPECT_EQ(host.liveHandles(), 0) << c.what;
        EXPECT_EQ(host.heldSuites(), 0) << c.what;
    }
}

TEST_F(Transfer, FramebufferStatusInWords) {
    GLuint frameBuffer = 0;
    glGenFramebuffers(1, &frameBuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
    EXPECT_EQ(AEOpenGLUtilities::CheckFramebufferStatus(), "Framebuffer incomplete, missing attachment!");
    GLuint colour = 0;
    glGenRenderbuffers(1, &colour);
    glBindRenderbuffer(GL_RENDERBUFFER, colour);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 2, 2);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colour);
    EXPECT_EQ(AEOpenGLUtilities::CheckFramebufferStatus(), "OK");
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &frameBuffer);
    glDeleteRenderbuffers(1, &colour);
}
