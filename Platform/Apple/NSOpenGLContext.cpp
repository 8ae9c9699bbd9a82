#include "NSOpenGLContext.h"

#include "CGLCurrent.h"
#include "EglDisplay.h"
#include "NSOpenGLPixelFormat.h"

#include <map>
#include <mutex>

namespace Quillmere::Velmira {

namespace {

// Live contexts by their CGL object, so that currentContext can answer from the
// thread's current CGL object alone, whoever made it current (makeCurrentContext
// or CGLSetCurrentContext).
class Registry {
public:
  void add(CGLContextObj cgl, NSOpenGLContext* context) {
    std::lock_guard<std::mutex> lock(mMutex);
    mContexts[cgl] = context;
  }

  void remove(CGLContextObj cgl) {
    std::lock_guard<std::mutex> lock(mMutex);
    mContexts.erase(cgl);
  }

  NSOpenGLContext* find(CGLContextObj cgl) {
    std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mContexts.find(cgl);
    return found != mContexts.end() ? found->second : nullptr;
  }

private:
  std::mutex mMutex;
  std::map<CGLContextObj, NSOpenGLContext*> mContexts;
};

// Never destroyed: a context released by a static destructor at exit still finds it.
Registry& registry() {
  static Registry* const kRegistry = new Registry;
  return *kRegistry;
}

}  // namespace

NSOpenGLContext* NSOpenGLContext::initWithFormat(NSOpenGLPixelFormat* format, NSOpenGLContext* share) {
  if (format == nullptr) {
    return nullptr;
  }
  EglDisplay::bindOpenGL();
  const EGLContext context =
      eglCreateContext(EglDisplay::display(), format->config(), share != nullptr ? share->mContext : EGL_NO_CONTEXT,
                       format->contextAttributes().data());
  if (context == EGL_NO_CONTEXT) {
    return nullptr;
  }
  return new NSOpenGLContext(context);
}

NSOpenGLContext::NSOpenGLContext(EGLContext context) : NSObject(), mContext(context) {
  registry().add(CGLContextObj(), this);
}

NSOpenGLContext::~NSOpenGLContext() {
  registry().remove(CGLContextObj());
  eglDestroyContext(EglDisplay::display(), mContext);
}

NSOpenGLContext* NSOpenGLContext::currentContext() {
  const ::Quillmere::Velmira::CGLContextObj current = CGLGetCurrentContext();
  return current != nullptr ? registry().find(current) : nullptr;
}

void NSOpenGLContext::clearCurrentContext() { CGLSetCurrentContext(nullptr); }

void NSOpenGLContext::makeCurrentContext() { CGLSetCurrentContext(CGLContextObj()); }

::Quillmere::Velmira::CGLContextObj NSOpenGLContext::CGLContextObj() const {
  return reinterpret_cast<::Quillmere::Velmira::CGLContextObj>(mContext);
}

}  // namespace Quillmere::Velmira
