#include "GL/AEOpenGLContext.h"

#include "CGLCurrent.h"
#include "NSAutoreleasePool.h"
#include "NSOpenGLContext.h"
#include "NSOpenGLPixelFormat.h"

#include <glbinding/Binding.h>
#include <glbinding/ContextInfo.h>
#include <glbinding/Meta.h>
#include <glbinding/Version.h>
#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>
#include <glbinding/gl/types.h>

#include <iostream>

using namespace gl;

namespace Quillmere::Velmira {

namespace {

// No surface of its own, so no double buffer, depth, stencil or multisampling:
// every frame is drawn into frame buffer objects. The shaders say #version 330,
// and only the 3.2 core profile is asked for.
const NSOpenGLPixelFormatAttribute kPixelFormatAttributes[] = {
    NSOpenGLPFAClosestPolicy,
    NSOpenGLPFANoRecovery,
    NSOpenGLPFAAlphaSize,
    0,
    NSOpenGLPFAColorSize,
    24,
    NSOpenGLPFAStencilSize,
    0,
    NSOpenGLPFADepthSize,
    0,
    NSOpenGLPFAOpenGLProfile,
    NSOpenGLProfileVersion3_2Core,
    0,
};

// An incomplete frame buffer is left unflushed: flushing it would only raise an
// error on the context being left.
void flushContextBeingLeft() {
  GLint binding = 0;
  glGetIntegerv(GL_FRAMEBUFFER_BINDING, &binding);
  if (binding == 0 || glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE) {
    glFlush();
  }
}

}  // namespace

AEOpenGLContext::AEOpenGLContext(const AEOpenGLContext* shared)
    : mCGLContext(nullptr), mNSContext(nullptr), mExtensions() {
  mNSContext = createNSContext(shared != nullptr ? shared->mNSContext : nullptr, mCGLContext);
  if (mNSContext != nullptr) {
    mNSContext->makeCurrentContext();
  }
  // When the context could not be made, the steps below act on whatever context
  // the thread already has. With none at all there is nothing to describe, and
  // glbinding would throw reading the missing strings; the object is then left
  // with null handles, which a caller can see through cglContext().
  if (CGLGetCurrentContext() == nullptr) {
    return;
  }
  InitializeOpenGLBindings();
  mExtensions = glbinding::ContextInfo::extensions(nullptr);
}

AEOpenGLContext::~AEOpenGLContext() {
  if (mNSContext != nullptr) {
    mNSContext->release();
  }
}

void AEOpenGLContext::makeContextCurrent() {
  NSAutoreleasePool pool;
  if (mNSContext != nullptr) {
    mNSContext->makeCurrentContext();
  }
  makeCurrentFlush(mCGLContext);
  glbinding::Binding::useCurrentContext();
  pool.drain();
}

CGLContextObj AEOpenGLContext::cglContext() const { return mCGLContext; }

void AEOpenGLContext::InitializeOpenGLBindings() {
  glbinding::Binding::initialize(false);
  // glbinding names contexts through GLX, so under EGL every context has the
  // handle 0 and only the first initialize of the process registers anything; a
  // later one returns before choosing the thread's function table. The thread has
  // just switched to the new context, so it chooses it here, as after any switch
  // (the entry points follow the thread's current EGL context).
  glbinding::Binding::useCurrentContext();

  std::cout << std::endl
            << "OpenGL Version:  " << glbinding::ContextInfo::version() << std::endl
            << "OpenGL Vendor:   " << glbinding::ContextInfo::vendor() << std::endl
            << "OpenGL Renderer: " << glbinding::ContextInfo::renderer() << std::endl
            << "OpenGL Revision: " << glbinding::Meta::glRevision() << " (gl.xml)" << std::endl
            << std::endl;
}

NSOpenGLContext* AEOpenGLContext::createNSContext(NSOpenGLContext* shared, CGLContextObj& cglContext) {
  NSAutoreleasePool pool;
  NSOpenGLPixelFormat* format = NSOpenGLPixelFormat::initWithAttributes(kPixelFormatAttributes);
  NSOpenGLContext* context = NSOpenGLContext::initWithFormat(format, shared);
  cglContext = context != nullptr ? context->CGLContextObj() : nullptr;
  if (format != nullptr) {
    format->release();
  }
  pool.drain();
  return context;
}

void AEOpenGLContext::makeCurrentFlush(CGLContextObj context) {
  const CGLContextObj current = CGLGetCurrentContext();
  if (current == context) {
    return;
  }
  // A thread with no context has nothing to flush, and GL calls there would reach
  // no context at all.
  if (current != nullptr) {
    flushContextBeingLeft();
  }
  CGLSetCurrentContext(context);
}

}  // namespace Quillmere::Velmira
