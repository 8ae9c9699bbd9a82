// Frames between host worlds and the GPU on a real context, at every depth (the 8-bit frames of the effect also go
// through the whole-frame tests, the deep ones only here): channels go up unchanged into float storage and come back
// the same through padded rows, unpack state is restored, and every failure gives back what it took.
#include <gtest/gtest.h>

#include <cstring>

#include <glbinding/gl/gl.h>

#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "GL/AEOpenGLUtilities.h"
#include "Support/GLFixture.h"
#include "Support/NoEffect.h"

using namespace gl;
using namespace Quillmere::Velmira;

// 3 x 2 pixels of the given size over the caller's bytes.
static PF_LayerDef world(std::vector<std::uint8_t>& bytes, A_long rowbytes, unsigned long pixelSize) {
  PF_LayerDef world{};
  world.world_flags = pixelSize > 4 ? PF_WorldFlag_DEEP : PF_WorldFlag_WRITEABLE;
  world.data = reinterpret_cast<PF_PixelPtr>(bytes.data());
  world.rowbytes = rowbytes;
  world.width = 3;
  world.height = 2;
  return world;
}

// Rows of 4 pixels going up and of 5 coming back, the texture read back through a frame buffer; channel values that
// need the depth's full precision and, for floats, ones that no normalised storage holds. Then an unknown format
// throws 516, and an error of the host's float iteration is thrown as it is.
TEST(Transfer, EveryDepthComesBackUnchangedThroughPaddedRowsAndAFailureThrowsItsCodeKeepingNothing) {
  GLFixture::use();
  CallRecorder calls;
  EffectHost host{NoEffect, &calls};
  unsigned long pixelSize = 0;
  GLenum glType = GL_NONE;
  float multiplier = 0.0f;
  const auto upload = [&](int format, PF_LayerDef* input) {
    return AEOpenGLUtilities::UploadTexture(format, input, nullptr, &host.inData(), pixelSize, glType, multiplier,
                                            false);
  };
  // clang-format off
  const struct { int format; unsigned long size; GLenum type; float scale; } depths[] = {
      {PF_PixelFormat_ARGB32, 4, GL_UNSIGNED_BYTE, 1.0f},
      {PF_PixelFormat_ARGB64, 8, GL_UNSIGNED_SHORT, 65535.0f / 32768.0f},  // the host's 32768 becomes 1
      {PF_PixelFormat_ARGB128, 16, GL_FLOAT, 1.0f}};
  // clang-format on
  for (const auto& [format, size, type, scale] : depths) {
    SCOPED_TRACE("pixels of " + std::to_string(size) + " bytes");
    std::vector<std::uint8_t> in(8 * size), out(10 * size, 0xA5), expected(out);
    for (std::size_t i = 0; i < in.size(); i += 4) {
      const float value = (static_cast<float>(i) - 40.0f) / 3.0f;  // every byte of it counts, at every depth
      std::memcpy(&in[i], &value, 4);
    }
    PF_LayerDef input = world(in, 4 * size, size), output = world(out, 5 * size, size);
    const GLuint texture = upload(format, &input);
    EXPECT_EQ(std::tuple(pixelSize, glType, multiplier), std::tuple(size, type, scale));
    EXPECT_EQ(GLFixture::integer(GL_UNPACK_ROW_LENGTH), 0);
    GLuint frameBuffer = 0;
    glGenFramebuffers(1, &frameBuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
    EXPECT_EQ(AEOpenGLUtilities::CheckFramebufferStatus(), "Framebuffer incomplete, missing attachment!");
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    AEOpenGLUtilities::DownloadTexture(3, 2, &input, &output, &host.inData(), format, pixelSize, glType);
    glDeleteFramebuffers(1, &frameBuffer);
    glDeleteTextures(1, &texture);
    std::copy_n(in.begin(), 3 * size, expected.begin());
    std::copy_n(in.begin() + 4 * size, 3 * size, expected.begin() + 5 * size);
    EXPECT_EQ(out, expected) << "the rows and their padding as they come back";
  }

  std::vector<std::uint8_t> bytes(6 * 16);
  PF_LayerDef frame = world(bytes, 3 * 16, 16);
  const GLFixture::LiveObjects before = GLFixture::liveObjects();
  for (const int error : {0, int{PF_Err_OUT_OF_MEMORY}}) {
    for (const bool download : {false, true}) {
      SCOPED_TRACE(std::string(download ? "download" : "upload") + (error ? ", iteration failing" : ", bad format"));
      const int format = error ? PF_PixelFormat_ARGB128 : PF_PixelFormat_INVALID;
      if (error) calls.failCall("iterateFloat.iterate", calls.count("iterateFloat.iterate") + 1, error);
      try {
        download ? AEOpenGLUtilities::DownloadTexture(3, 2, &frame, &frame, &host.inData(), format, 16, GL_FLOAT)
                 : void(upload(format, &frame));
        ADD_FAILURE() << "nothing thrown";
      } catch (int code) {
        EXPECT_EQ(code, error ? error : PF_Err_BAD_CALLBACK_PARAM);
      }
      EXPECT_EQ(GLFixture::liveObjects().textures, before.textures);
      EXPECT_EQ(EffectHost::liveHandles(), 0u);
    }
  }
}
