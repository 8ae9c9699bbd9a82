// Frames between host worlds and the GPU on a real context, for the depths the whole-frame tests do not send: the
// layout stays the host's, deep channels are scaled, unpack state is restored, and every failure gives back what
// it took. (8-bit frames, padded rows and row direction go through the whole frame tests against the reference.)
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include <glbinding/gl/gl.h>

#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "GL/AEOpenGLUtilities.h"
#include "GL/AEOpenglMainFrameBuffer.h"
#include "Support/GLFixture.h"
#include "Support/NoEffect.h"

using namespace gl;
using namespace Quillmere::Velmira;

namespace {

class Transfer : public ::testing::Test {
protected:
  void SetUp() override { GLFixture::use(); }

  GLuint upload(int format, PF_LayerDef* world) {
    return AEOpenGLUtilities::UploadTexture(format, world, nullptr, &host.inData(), pixelSize, glType, multiplier,
                                            false);
  }

  // A deep world over the caller's pixels.
  template <typename Pixel>
  static PF_LayerDef deepWorld(std::vector<Pixel>& pixels, A_long width, A_long height, A_long rowbytes) {
    PF_LayerDef world{};
    world.world_flags = PF_WorldFlag_DEEP;
    world.data = reinterpret_cast<PF_PixelPtr>(pixels.data());
    world.rowbytes = rowbytes;
    world.width = width;
    world.height = height;
    return world;
  }

  static std::vector<float> texels(GLuint texture, std::size_t count) {
    std::vector<float> values(count);
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, values.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &texture);
    return values;
  }

  CallRecorder calls;
  EffectHost host{NoEffect, &calls};
  unsigned long pixelSize = 0;
  GLenum glType = GL_NONE;
  float multiplier = 0.0f;
};

}  // namespace

TEST_F(Transfer, SixteenBitFullChannelReachesOneAndUnpackStateIsRestored) {
  // 2 x 2 pixels in rows padded to 24 bytes, channels from 0 to 32768; the second row starts black.
  std::vector<PF_Pixel16> pixels(6, PF_Pixel16{32768, 16384, 0, 32768});
  pixels[3] = PF_Pixel16{};
  PF_LayerDef world = deepWorld(pixels, 2, 2, 24);
  const GLuint texture = upload(PF_PixelFormat_ARGB64, &world);
  std::uint32_t bits = 0;
  std::memcpy(&bits, &multiplier, sizeof bits);
  EXPECT_EQ(bits, 0x3FFFFF00u) << "65535 / 32768 as a float";
  EXPECT_EQ(pixelSize, 8u);
  EXPECT_EQ(glType, GL_UNSIGNED_SHORT);
  GLint rowLength = -1, bound = -1, format = 0;
  glGetIntegerv(GL_UNPACK_ROW_LENGTH, &rowLength);
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
  EXPECT_EQ(rowLength, 0);
  EXPECT_EQ(bound, 0);
  glBindTexture(GL_TEXTURE_2D, texture);
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
  EXPECT_EQ(format, static_cast<GLint>(GL_RGBA32F));
  const std::vector<float> values = texels(texture, 16);
  EXPECT_NEAR(values[0] * multiplier, 1.0f, 1e-6f) << "full alpha";
  EXPECT_NEAR(values[1] * multiplier, 0.5f, 1e-6f) << "half red";
  EXPECT_NEAR(values[3] * multiplier, 1.0f, 1e-6f) << "full blue";
  EXPECT_EQ(values[8], 0.0f) << "the second row is read at rowbytes, not at the width";
}

TEST_F(Transfer, FloatWorldsGoUpThroughTheHostsIteration) {
  std::vector<PF_PixelFloat> pixels = {{1.0f, 0.25f, 0.5f, 0.75f}, {0.5f, 2.0f, -1.0f, 0.0f}};
  PF_LayerDef world = deepWorld(pixels, 2, 1, 2 * sizeof(PF_PixelFloat));
  const GLuint texture = upload(PF_PixelFormat_ARGB128, &world);
  EXPECT_EQ(pixelSize, 16u);
  EXPECT_EQ(glType, GL_FLOAT);
  EXPECT_EQ(calls.count("iterateFloat.iterate"), 1);
  EXPECT_EQ(host.heldSuites(), 0);
  EXPECT_EQ(texels(texture, 8), (std::vector<float>{1.0f, 0.25f, 0.5f, 0.75f, 0.5f, 2.0f, -1.0f, 0.0f}))
      << "float channels go up unscaled and unclamped";
}

TEST_F(Transfer, UnknownFormatThrows516AndKeepsNoTexture) {
  ArgbFrame input;
  input.allocate(2, 2);
  const GLFixture::LiveObjects before = GLFixture::liveObjects();
  try {
    upload(PF_PixelFormat_INVALID, input.world());
    FAIL() << "no exception";
  } catch (int code) {
    EXPECT_EQ(code, PF_Err_BAD_CALLBACK_PARAM);
  }
  EXPECT_EQ(GLFixture::liveObjects().textures, before.textures);
}

// (A missing handle or handle suite is given back through the entry: see the render commands' failure table.)
TEST_F(Transfer, DownloadOfAnUnknownFormatThrows516AndGivesBackHandleAndSuite) {
  ArgbFrame input, output;
  input.allocate(2, 2);
  output.allocate(2, 2);
  AEOpenglMainFrameBuffer* buffer = AEOpenglMainFrameBuffer::mainFrameBuffer();
  buffer->prepare(2, 2, true);
  buffer->beginDrawing();
  buffer->endDrawing(1.0f);
  try {
    AEOpenGLUtilities::DownloadTexture(2, 2, input.world(), output.world(), &host.inData(), PF_PixelFormat_INVALID, 4,
                                       GL_UNSIGNED_BYTE);
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(code, PF_Err_BAD_CALLBACK_PARAM);
  }
  EXPECT_EQ(EffectHost::liveHandles(), 0u);
  EXPECT_EQ(host.heldSuites(), 0);
}

TEST_F(Transfer, FramebufferStatusInWords) {
  GLuint frameBuffer = 0;
  glGenFramebuffers(1, &frameBuffer);
  glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
  EXPECT_EQ(AEOpenGLUtilities::CheckFramebufferStatus(), "Framebuffer incomplete, missing attachment!");
  glBindFramebuffer(GL_FRAMEBUFFER, 0);
  glDeleteFramebuffers(1, &frameBuffer);
}
