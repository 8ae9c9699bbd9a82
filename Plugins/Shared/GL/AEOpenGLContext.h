#pragma once

#include "CGLTypes.h"

#include <glbinding/gl/extension.h>

#include <set>

namespace Quillmere::Velmira {

class NSOpenGLContext;

// One OpenGL context of the plug-in's own, never the host's: 3.2 core profile or
// above, no drawable (all drawing goes to frame buffer objects), optionally in the
// share group of another AEOpenGLContext. Construction leaves it current on the
// calling thread, so whoever constructs one on a host thread saves the host's
// context first (SaveRestoreGLContextMac).
//
// Nothing here tests a result: if the platform cannot make the context, both
// handles stay null, the constructor's GL work lands on whatever context the thread
// had, and a later makeContextCurrent leaves the thread with no context at all.
class AEOpenGLContext {
public:
  explicit AEOpenGLContext(const AEOpenGLContext* shared);
  // Releases the context. Does not touch the thread's current context.
  virtual ~AEOpenGLContext();

  AEOpenGLContext(const AEOpenGLContext&) = delete;
  AEOpenGLContext& operator=(const AEOpenGLContext&) = delete;

  // Makes this context current on the calling thread and points glbinding's
  // function table of this thread at it.
  void makeContextCurrent();

  // The CGL object under this context (null if it could not be made), for callers
  // that keep GL state per context: frame buffers and vertex arrays are not shared
  // between the contexts of one share group.
  CGLContextObj cglContext() const;

  // Brings glbinding up for the context current on the calling thread and prints
  // the six-line description of the context on standard output.
  static void InitializeOpenGLBindings();

  // Returns an owned reference (null on failure) and sets cglContext to the CGL
  // object under it. shared may be null.
  static NSOpenGLContext* createNSContext(NSOpenGLContext* shared, CGLContextObj& cglContext);

  // Switches the calling thread to context (which may be null). The context being
  // left is flushed first, unless it has an incomplete frame buffer bound.
  // Nothing at all happens when context is already current.
  static void makeCurrentFlush(CGLContextObj context);

private:
  CGLContextObj mCGLContext;
  NSOpenGLContext* mNSContext;
  std::set<gl::GLextension> mExtensions;
};

}  // namespace Quillmere::Velmira
