#include "FrameGuard.h"

#include <glbinding/gl/gl.h>

#include "GL/AEOpenglMainFrameBuffer.h"

namespace Quillmere::Velmira {

FrameGuard::~FrameGuard() {
  if (mTexture != 0) {
    gl::glDeleteTextures(1, &mTexture);
  }
  // The effect pushes one level a frame and pops it in the same frame, so a level still
  // on the stack is this frame's: the stack is emptied rather than resolved.
  if (mDrawing) {
    AEOpenglMainFrameBuffer::mainFrameBuffer()->clearStack();
  }
}

}  // namespace Quillmere::Velmira
