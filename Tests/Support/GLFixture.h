#pragma once

#include <memory>

#include <glbinding/gl/types.h>

#include "CGLTypes.h"

namespace Quillmere::Velmira {

class AEOpenGLContext;

// The GL fixture of the tests: contexts of the plug-in's own kind and of a host's on real GL (llvmpipe where there is
// no GPU), and what the current context holds.
class GLFixture {
public:
  // One context for tests of single GL classes, made once per process and made current on the calling thread.
  static AEOpenGLContext& use();
  // A new context, current on the calling thread, its six-line banner kept off the test log.
  static std::unique_ptr<AEOpenGLContext> quietContext(const AEOpenGLContext* shared = nullptr);

  // One integer of the current context's state, as glGetIntegerv gives it (-1 where GL gives nothing).
  static int integer(gl::GLenum name);

  // Objects alive in the current context's share group, found by probing names as glIs* defines them (a name counts
  // once it has been bound), so that a test sees that nothing was left behind.
  struct LiveObjects {
    int textures = 0;
    int renderbuffers = 0;
  };
  static LiveObjects liveObjects();

  // A context as a host makes it: with EGL alone (no NSOpenGLContext wraps it) and outside the plug-in's share group.
  // After Effects keeps one current on the threads it calls the plug-in on, so a test can see that every command
  // hands the thread back with it current.
  class HostContext {
  public:
    HostContext();
    ~HostContext();
    HostContext(const HostContext&) = delete;
    HostContext& operator=(const HostContext&) = delete;

    void makeCurrent();
    bool isCurrent() const;
    CGLContextObj cglContext() const;

  private:
    void* mContext;  // an EGLContext
  };
};

}  // namespace Quillmere::Velmira
