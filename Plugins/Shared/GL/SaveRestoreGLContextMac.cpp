#include "GL/SaveRestoreGLContextMac.h"

#include "GL/AEOpenGLContext.h"

#include "CGLCurrent.h"
#include "NSOpenGLContext.h"

namespace Quillmere::Velmira {

SaveRestoreGLContextMac::SaveRestoreGLContextMac()
    : NSObject(), _mContextMutex(), _mContext(nullptr), _mRC(nullptr), _mRestored(false) {}

SaveRestoreGLContextMac::~SaveRestoreGLContextMac() {
  if (_mContext != nullptr) {
    _mContext->release();
  }
}

SaveRestoreGLContextMac* SaveRestoreGLContextMac::init() {
  SaveRestoreGLContextMac* self = new SaveRestoreGLContextMac();
  if (self->NSObject::init() == nullptr) {
    self->release();
    return nullptr;
  }
  self->_mContext = NSOpenGLContext::currentContext();
  if (self->_mContext != nullptr) {
    self->_mContext->retain();
  }
  self->_mRC = CGLGetCurrentContext();
  self->_mRestored = false;
  return self;
}

void SaveRestoreGLContextMac::restore() {
  if (_mRestored) {
    return;
  }
  // A host context wrapped in an NSOpenGLContext comes back through it; after that
  // the CGL context below is already the current one and nothing is flushed.
  if (NSOpenGLContext::currentContext() != _mContext && _mContext != nullptr) {
    _mContext->makeCurrentContext();
  }
  // A bare CGL context of the host, with the same flush rule as any switch away
  // from a context of the plug-in.
  if (_mRC != nullptr) {
    AEOpenGLContext::makeCurrentFlush(_mRC);
  }
  _mRestored = true;
}

NSOpenGLContext* SaveRestoreGLContextMac::mContext() const {
  std::lock_guard<std::mutex> lock(_mContextMutex);
  return _mContext;
}

void SaveRestoreGLContextMac::setMContext(NSOpenGLContext* context) {
  if (context != nullptr) {
    context->retain();
  }
  NSOpenGLContext* previous = nullptr;
  {
    std::lock_guard<std::mutex> lock(_mContextMutex);
    previous = _mContext;
    _mContext = context;
  }
  if (previous != nullptr) {
    previous->release();
  }
}

CGLContextObj SaveRestoreGLContextMac::mRC() const { return _mRC; }

void SaveRestoreGLContextMac::setMRC(CGLContextObj context) { _mRC = context; }

bool SaveRestoreGLContextMac::mRestored() const { return _mRestored; }

void SaveRestoreGLContextMac::setMRestored(bool restored) { _mRestored = restored; }

}  // namespace Quillmere::Velmira
