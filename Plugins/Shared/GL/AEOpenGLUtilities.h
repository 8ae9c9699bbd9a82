#pragma once

#include <string>

#include <glbinding/gl/types.h>

#include "AE_Effect.h"

namespace Quillmere::Velmira {

// Moves one frame between the host's memory and the GPU, and settles the layout there: the host's pixels go up
// unchanged into a GL_RGBA32F texture, so a texel holds alpha, red, green, blue in r, g, b, a; no row is ever
// flipped (the host's top row is GL's row 0); and multiplier16bit scales 16-bit channels (0 to 32768) to the full
// range on the way in, the shaders dividing by it on the way out. Every failure leaves as a plain integer.
//
// Deep frames pass through the main frame buffer's 8-bit render buffers on their way, as the effect that uses this
// class never sends one (it declares 8-bit frames only); an effect that renders deep frames needs deeper levels
// there first. The format argument alone decides how a world is read: a caller that takes the format from the world
// must check that the two agree, since a world of another depth goes to GL as a null pointer.
class AEOpenGLUtilities {
public:
  // The float path's temporary: packed rows of buffer, world's width pixels apart.
  struct FloatCopyRefcon {
    PF_PixelFloat* buffer;
    PF_LayerDef* world;
  };

  // A new texture that the caller owns. pixelSize, glType and multiplier16bit are results; output is not read.
  static gl::GLuint UploadTexture(int format, PF_LayerDef* input, PF_LayerDef* output, PF_InData* in_data,
                                  unsigned long& pixelSize, gl::GLenum& glType, float& multiplier16bit, bool mipmap);
  // Reads the bound frame buffer (width by height) into output, row by row; input is read for float frames only.
  static void DownloadTexture(unsigned int width, unsigned int height, PF_LayerDef* input, PF_LayerDef* output,
                              PF_InData* in_data, int format, unsigned long pixelSize, gl::GLenum glType);

  static PF_Err CopyPixelFloatIn(void* refcon, A_long x, A_long y, PF_PixelFloat* in, PF_PixelFloat* out);
  static PF_Err CopyPixelFloatOut(void* refcon, A_long x, A_long y, PF_PixelFloat* in, PF_PixelFloat* out);

  // The bound frame buffer's completeness, in words; for diagnosis.
  static std::string CheckFramebufferStatus();

  // 65535 / 32768: GL normalises 16-bit channels by 65535, the host's run to 32768.
  static constexpr float kMultiplier16bit = 65535.0f / 32768.0f;
};

}  // namespace Quillmere::Velmira
