#include "GL/AEOpenGLUtilities.h"

#include <cstring>
#include <limits>
#include <memory>

#include <glbinding/gl/gl.h>

#include "AE_EffectSuites.h"
#include "Helper/SuiteScoper.h"

using namespace gl;

namespace Quillmere::Velmira {

namespace {

void setFilters(bool mipmap) {
  const auto filter = static_cast<GLint>(mipmap ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, static_cast<GLint>(GL_CLAMP_TO_EDGE));
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, static_cast<GLint>(GL_CLAMP_TO_EDGE));
}

void uploadRows(PF_LayerDef* input, GLint rowLength, GLenum type, const void* pixels) {
  glPixelStorei(GL_UNPACK_ROW_LENGTH, rowLength);
  glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, input->width, input->height, GL_RGBA, type, pixels);
}

// height x width x 16 in 64 bits; a product that does not fit asks for the largest size, so that the allocation
// fails and throws instead of making a short buffer.
std::size_t floatBufferPixels(PF_LayerDef* world) {
  const auto width = static_cast<unsigned long long>(world->width < 0 ? 0 : world->width);
  const auto height = static_cast<unsigned long long>(world->height < 0 ? 0 : world->height);
  if (width != 0 && height > std::numeric_limits<std::size_t>::max() / 16 / width) {
    return std::numeric_limits<std::size_t>::max() / sizeof(PF_PixelFloat);
  }
  return static_cast<std::size_t>(width * height);
}

void uploadFloat(PF_LayerDef* input, PF_InData* in_data) {
  std::unique_ptr<PF_PixelFloat[]> buffer(new PF_PixelFloat[floatBufferPixels(input)]);
  AEOpenGLUtilities::FloatCopyRefcon refcon{buffer.get(), input};
  {
    SuiteScoper<PF_iterateFloatSuite1> iterateSuite(in_data, kPFIterateFloatSuite, kPFIterateFloatSuiteVersion1);
    const PF_Err err = iterateSuite->iterate(in_data, 0, input->height, input, nullptr, &refcon,
                                             AEOpenGLUtilities::CopyPixelFloatIn, input);
    if (err != PF_Err_NONE) {
      throw static_cast<int>(err);
    }
  }  // released before the GL call
  uploadRows(input, input->width, GL_FLOAT, buffer.get());
}

// A host handle for the read-back, given back on every way out.
class LockedHandle {
public:
  LockedHandle(const SuiteScoper<PF_HandleSuite1>& suite, A_HandleSize size) : mSuite(suite) {
    mHandle = mSuite->host_new_handle(size);
    if (mHandle == nullptr) {
      throw static_cast<int>(PF_Err_OUT_OF_MEMORY);
    }
    mPixels = mSuite->host_lock_handle(mHandle);
  }
  ~LockedHandle() {
    mSuite->host_unlock_handle(mHandle);
    mSuite->host_dispose_handle(mHandle);
  }
  LockedHandle(const LockedHandle&) = delete;
  LockedHandle& operator=(const LockedHandle&) = delete;

  unsigned char* pixels() const { return static_cast<unsigned char*>(mPixels); }

private:
  const SuiteScoper<PF_HandleSuite1>& mSuite;
  PF_Handle mHandle = nullptr;
  void* mPixels = nullptr;
};

template <typename Pixel, typename GetPixelData>
void copyRows(const unsigned char* buffer, unsigned int width, PF_LayerDef* output, GetPixelData getPixelData) {
  const std::size_t pixelSize = sizeof(Pixel);
  for (A_long y = 0; y < output->height; ++y) {
    Pixel* pixels = nullptr;
    getPixelData(output, nullptr, &pixels);
    // The row's offset in whole pixels, as the host's rowbytes may not be a multiple of the pixel size.
    const std::size_t offset =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(output->rowbytes) / pixelSize * pixelSize;
    std::memcpy(reinterpret_cast<unsigned char*>(pixels) + offset,
                buffer + static_cast<std::size_t>(y) * width * pixelSize,
                static_cast<std::size_t>(output->width) * pixelSize);
  }
}

void downloadFloat(unsigned char* buffer, PF_LayerDef* input, PF_LayerDef* output, PF_InData* in_data) {
  AEOpenGLUtilities::FloatCopyRefcon refcon{reinterpret_cast<PF_PixelFloat*>(buffer), input};
  SuiteScoper<PF_iterateFloatSuite1> iterateSuite(in_data, kPFIterateFloatSuite, kPFIterateFloatSuiteVersion1);
  const PF_Err err = iterateSuite->iterate(in_data, 0, input->height, input, nullptr, &refcon,
                                           AEOpenGLUtilities::CopyPixelFloatOut, output);
  if (err != PF_Err_NONE) {
    throw static_cast<int>(err);
  }
}

}  // namespace

GLuint AEOpenGLUtilities::UploadTexture(int format, PF_LayerDef* input, PF_LayerDef*, PF_InData* in_data,
                                        unsigned long& pixelSize, GLenum& glType, float& multiplier16bit, bool mipmap) {
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  setFilters(mipmap);
  glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(GL_RGBA32F), input->width, input->height, 0, GL_RGBA, GL_FLOAT,
               nullptr);
  multiplier16bit = 1.0f;
  try {
    if (format == PF_PixelFormat_ARGB32) {
      glType = GL_UNSIGNED_BYTE;
      pixelSize = 4;
      PF_Pixel8* pixels = nullptr;
      in_data->utils->get_pixel_data8(input, nullptr, &pixels);
      uploadRows(input, input->rowbytes >> 2, GL_UNSIGNED_BYTE, pixels);
    } else if (format == PF_PixelFormat_ARGB64) {
      glType = GL_UNSIGNED_SHORT;
      pixelSize = 8;
      multiplier16bit = kMultiplier16bit;
      PF_Pixel16* pixels = nullptr;
      in_data->utils->get_pixel_data16(input, nullptr, &pixels);
      uploadRows(input, input->rowbytes >> 3, GL_UNSIGNED_SHORT, pixels);
    } else if (format == PF_PixelFormat_ARGB128) {
      glType = GL_FLOAT;
      pixelSize = 16;
      uploadFloat(input, in_data);
    } else {
      throw static_cast<int>(PF_Err_BAD_CALLBACK_PARAM);
    }
  } catch (...) {
    // The texture is the caller's only on success: a failed upload gives it back and leaves the unpack state
    // and the binding as a good one would.
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &texture);
    throw;
  }
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glBindTexture(GL_TEXTURE_2D, 0);
  return texture;
}

void AEOpenGLUtilities::DownloadTexture(unsigned int width, unsigned int height, PF_LayerDef* input,
                                        PF_LayerDef* output, PF_InData* in_data, int format, unsigned long pixelSize,
                                        GLenum glType) {
  SuiteScoper<PF_HandleSuite1> handleSuite(in_data, kPFHandleSuite, kPFHandleSuiteVersion1);
  const A_HandleSize bytes = static_cast<A_HandleSize>(static_cast<uint32_t>(width * height)) * pixelSize;
  LockedHandle handle(handleSuite, bytes);
  glReadBuffer(GL_COLOR_ATTACHMENT0);
  glReadPixels(0, 0, static_cast<GLsizei>(width), static_cast<GLsizei>(height), GL_RGBA, glType, handle.pixels());
  if (format == PF_PixelFormat_ARGB32) {
    copyRows<PF_Pixel8>(handle.pixels(), width, output, in_data->utils->get_pixel_data8);
  } else if (format == PF_PixelFormat_ARGB64) {
    copyRows<PF_Pixel16>(handle.pixels(), width, output, in_data->utils->get_pixel_data16);
  } else if (format == PF_PixelFormat_ARGB128) {
    downloadFloat(handle.pixels(), input, output, in_data);
  } else {
    throw static_cast<int>(PF_Err_BAD_CALLBACK_PARAM);
  }
}

PF_Err AEOpenGLUtilities::CopyPixelFloatIn(void* refcon, A_long x, A_long y, PF_PixelFloat* in, PF_PixelFloat*) {
  auto* copy = static_cast<FloatCopyRefcon*>(refcon);
  std::memcpy(&copy->buffer[static_cast<std::size_t>(y) * copy->world->width + x], in, sizeof(PF_PixelFloat));
  return PF_Err_NONE;
}

PF_Err AEOpenGLUtilities::CopyPixelFloatOut(void* refcon, A_long x, A_long y, PF_PixelFloat*, PF_PixelFloat* out) {
  auto* copy = static_cast<FloatCopyRefcon*>(refcon);
  std::memcpy(out, &copy->buffer[static_cast<std::size_t>(y) * copy->world->width + x], sizeof(PF_PixelFloat));
  return PF_Err_NONE;
}

std::string AEOpenGLUtilities::CheckFramebufferStatus() {
  const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
  switch (status) {
    case GL_FRAMEBUFFER_COMPLETE: return "OK";
    case GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT: return "Framebuffer incomplete, incomplete attachment!";
    case GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT: return "Framebuffer incomplete, missing attachment!";
    case GL_FRAMEBUFFER_INCOMPLETE_DRAW_BUFFER: return "Framebuffer incomplete, missing draw buffer!";
    case GL_FRAMEBUFFER_INCOMPLETE_READ_BUFFER: return "Framebuffer incomplete, missing read buffer!";
    case GL_FRAMEBUFFER_UNSUPPORTED: return "Unsupported framebuffer format!";
    default: return "Unknown error!";
  }
}

}  // namespace Quillmere::Velmira
