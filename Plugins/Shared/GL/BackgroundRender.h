#pragma once

#include "GL/FullFrameQuad.h"
#include "GL/OpenglShader.h"

namespace Quillmere::Velmira {

// The first pass of a frame for effects that draw in premultiplied red, green, blue, alpha: an uploaded texture in
// the host's order, times the 16-bit multiplier, reordered and premultiplied. The inverse of ScreenRender.
// It belongs to the shared GL layer; the skin effect does its own conversion in its shader and never calls it, so
// the linker leaves it out of the plug-in while other effects on the layer get it by using it.
class BackgroundRender {
public:
  BackgroundRender();  // makes no GL call
  ~BackgroundRender();

  BackgroundRender(const BackgroundRender&) = delete;
  BackgroundRender& operator=(const BackgroundRender&) = delete;

  void draw(unsigned int texture, float multiplier);

  static const char* vertexSource();
  static const char* fragmentSource();

private:
  OpenglShader mShader;
  FullFrameQuad mQuad;
};

}  // namespace Quillmere::Velmira
