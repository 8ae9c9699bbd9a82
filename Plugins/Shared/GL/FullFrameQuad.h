#pragma once

#include <cstdint>

#include "GL/PerContext.h"

namespace Quillmere::Velmira {

class OpenglShader;

// The quad that ScreenRender and BackgroundRender draw over the whole target: six vertices of x, y, z, u, v, with
// v = 0 at y = -1 so that no pass flips the image. The buffer is shared by the contexts of the share group; the
// vertex array is made once in each context that draws.
class FullFrameQuad {
public:
  FullFrameQuad();  // makes no GL call
  ~FullFrameQuad();

  FullFrameQuad(const FullFrameQuad&) = delete;
  FullFrameQuad& operator=(const FullFrameQuad&) = delete;

  // One pass of shader, whose sampler "videoTexture" reads texture on unit 0, into the bound target.
  void draw(OpenglShader& shader, unsigned int texture, float multiplier);
  // Deletes the current context's vertex array and the buffer; the owner calls it before its shader goes.
  void release();

private:
  void makeObjects();

  PerContext<uint32_t> mVertexArray;
  uint32_t mVertexBuffer;
};

}  // namespace Quillmere::Velmira
