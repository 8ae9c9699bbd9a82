#pragma once

#include "CGLTypes.h"

namespace Quillmere::Velmira {

class NSOpenGLContext;

// A GL context playing the host's own (After Effects keeps one current on the threads it calls the plug-in on),
// outside the plug-in's share group, so a test can see that every command hands the thread back with it current.
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
  NSOpenGLContext* mContext;
};

}  // namespace Quillmere::Velmira
