#pragma once

#include "CGLTypes.h"

namespace Quillmere::Velmira {

// A context as a host makes it: with EGL alone (no NSOpenGLContext wraps it) and outside the plug-in's share group.
// After Effects keeps one current on the threads it calls the plug-in on, so a test can see that every command hands
// the thread back with it current.
class HostGLContext {
public:
  HostGLContext();
  ~HostGLContext();
  HostGLContext(const HostGLContext&) = delete;
  HostGLContext& operator=(const HostGLContext&) = delete;

  void makeCurrent();
  bool isCurrent() const;
  CGLContextObj cglContext() const;

private:
  void* mContext;  // an EGLContext
};

}  // namespace Quillmere::Velmira
