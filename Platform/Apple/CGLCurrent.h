// The calling thread's current GL context, read and set without the AppKit layer.
#pragma once

#include "CGLTypes.h"

namespace Quillmere::Velmira {

// The calling thread's current context, or null.
CGLContextObj CGLGetCurrentContext();

// Makes context current on the calling thread; null leaves the thread with no
// context. Any context made on the process's EGL display is accepted, whether or
// not an NSOpenGLContext wraps it. kCGLBadContext when EGL refuses the switch
// (an unknown handle, or a context current on another thread).
CGLError CGLSetCurrentContext(CGLContextObj context);

}  // namespace Quillmere::Velmira
