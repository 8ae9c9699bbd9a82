#pragma once

namespace Quillmere::Velmira {

// What the OpenGL implementation the effect will render on can take.
class GLLimits {
public:
  // GL_MAX_TEXTURE_SIZE of a real context, asked once per process. A frame wider or
  // taller than this cannot be uploaded by the effect.
  static int maxTextureSize();
};

}  // namespace Quillmere::Velmira
