#include "Support/HostGLContext.h"

#include "CGLCurrent.h"
#include "NSOpenGLContext.h"
#include "NSOpenGLPixelFormat.h"

namespace Quillmere::Velmira {

HostGLContext::HostGLContext() {
  const NSOpenGLPixelFormatAttribute words[] = {NSOpenGLPFAColorSize, 24, NSOpenGLPFAOpenGLProfile,
                                                NSOpenGLProfileVersion3_2Core, 0};
  NSOpenGLPixelFormat* format = NSOpenGLPixelFormat::initWithAttributes(words);
  mContext = NSOpenGLContext::initWithFormat(format, nullptr);
  format->release();
}

HostGLContext::~HostGLContext() {
  if (isCurrent()) {
    NSOpenGLContext::clearCurrentContext();
  }
  mContext->release();
}

void HostGLContext::makeCurrent() { mContext->makeCurrentContext(); }

bool HostGLContext::isCurrent() const { return CGLGetCurrentContext() == mContext->CGLContextObj(); }

CGLContextObj HostGLContext::cglContext() const { return mContext->CGLContextObj(); }

}  // namespace Quillmere::Velmira
