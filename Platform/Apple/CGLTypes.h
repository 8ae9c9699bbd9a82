// The CGL types the plug-in's GL code names: the context object and the error code.
#pragma once

namespace Quillmere::Velmira {

// An opaque handle to one GL context. Under EGL it is the EGLContext itself, so a
// context that some other code made with EGL on the process's display (as a host
// would) is a CGL object too.
typedef struct _CGLContextObject* CGLContextObj;

// Only the codes these calls can return, with the framework's values.
enum CGLError {
  kCGLNoError = 0,
  kCGLBadContext = 10004,
};

}  // namespace Quillmere::Velmira
