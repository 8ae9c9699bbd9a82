// An AppKit GL context on EGL: no drawable, made current on the calling thread.
#pragma once

#include "CGLTypes.h"
#include "NSObject.h"

#include <EGL/egl.h>

namespace Quillmere::Velmira {

class NSOpenGLPixelFormat;

class NSOpenGLContext : public NSObject {
public:
  // One owned reference, or null when format is null or EGL cannot make the
  // context. With a share context the new one shares its textures, buffers,
  // render buffers and programs (not frame buffers or vertex arrays).
  static NSOpenGLContext* initWithFormat(NSOpenGLPixelFormat* format, NSOpenGLContext* share);

  // The NSOpenGLContext whose CGL object is current on the calling thread, or
  // null, also when the current context is one that no NSOpenGLContext wraps.
  // Not an owned reference: retain it to keep it.
  static NSOpenGLContext* currentContext();

  // Leaves the calling thread with no context.
  static void clearCurrentContext();

  void makeCurrentContext();

  // The CGL object under this context; this object owns it.
  ::Quillmere::Velmira::CGLContextObj CGLContextObj() const;

protected:
  // Destroys the EGL context. If it is still current on some thread, EGL keeps it
  // alive until that thread leaves it.
  ~NSOpenGLContext() override;

private:
  explicit NSOpenGLContext(EGLContext context);

  EGLContext mContext;
};

}  // namespace Quillmere::Velmira
