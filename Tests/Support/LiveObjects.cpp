#include "Support/LiveObjects.h"

#include <glbinding/gl/gl.h>

using namespace gl;

namespace Quillmere::Velmira {

namespace {
// Mesa hands out the lowest free names, so a test that makes a few hundred objects stays far below this.
constexpr GLuint kHighestName = 4096;
}  // namespace

LiveObjects LiveObjects::count() {
  LiveObjects live;
  for (GLuint name = 1; name <= kHighestName; ++name) {
    live.textures += glIsTexture(name) == GL_TRUE ? 1 : 0;
    live.renderbuffers += glIsRenderbuffer(name) == GL_TRUE ? 1 : 0;
  }
  return live;
}

}  // namespace Quillmere::Velmira
