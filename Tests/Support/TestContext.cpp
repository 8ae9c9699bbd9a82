#include "Support/TestContext.h"

#include "GL/AEOpenGLContext.h"

namespace Quillmere::Velmira {

AEOpenGLContext& TestContext::use() {
  static AEOpenGLContext* const kContext = new AEOpenGLContext(nullptr);
  kContext->makeContextCurrent();
  return *kContext;
}

}  // namespace Quillmere::Velmira
