#pragma once

#include "GL/FullFrameQuad.h"
#include "GL/OpenglShader.h"

namespace Quillmere::Velmira {

// The last pass of a frame: a premultiplied red, green, blue, alpha texture back into the host's order alpha, red,
// green, blue with straight alpha, divided by the 16-bit multiplier. Draws a full-frame quad into whatever target
// the caller has bound.
class ScreenRender {
public:
  ScreenRender();  // makes no GL call
  ~ScreenRender();

  ScreenRender(const ScreenRender&) = delete;
  ScreenRender& operator=(const ScreenRender&) = delete;

  void draw(unsigned int texture, float multiplier);

  static const char* vertexSource();
  static const char* fragmentSource();

private:
  FullFrameQuad mQuad;
  OpenglShader mShader;
};

}  // namespace Quillmere::Velmira
