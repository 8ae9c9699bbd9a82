#pragma once

#include "CGLTypes.h"
#include "NSObject.h"

#include <atomic>
#include <mutex>

namespace Quillmere::Velmira {

class NSOpenGLContext;

// Notes the GL context that the host has current on the calling thread, and puts it
// back once. The bracket round one host command, on one thread:
//
//     SaveRestoreGLContextMac* saved = SaveRestoreGLContextMac::init();
//     ... switch to the plug-in's contexts and draw ...
//     saved->restore();
//     saved->release();
//
// restore() cannot give a thread back "no context": if nothing was current at init,
// the plug-in's context stays current. It does not touch glbinding, whose record of
// the thread stays on the plug-in's context until the next makeContextCurrent.
// The object holds a reference to the host's NSOpenGLContext until it is released.
class SaveRestoreGLContextMac : public NSObject {
public:
  // One owned reference, or null if the object cannot be initialised.
  static SaveRestoreGLContextMac* init();

  // Switches the thread back to the saved context: through the saved
  // NSOpenGLContext where the host had one, else through CGL, flushing the context
  // being left as AEOpenGLContext::makeCurrentFlush does. Runs through once; later
  // calls do nothing.
  void restore();

  // The saved NSOpenGLContext, or null if none was current (not an owned reference).
  NSOpenGLContext* mContext() const;
  // Retains context and gives up the previous one.
  void setMContext(NSOpenGLContext* context);
  // The saved CGL context, or null if none was current. A plain value: keeps nothing alive.
  CGLContextObj mRC() const;
  void setMRC(CGLContextObj context);
  bool mRestored() const;
  void setMRestored(bool restored);

protected:
  ~SaveRestoreGLContextMac() override;

private:
  SaveRestoreGLContextMac();

  // Atomic properties: each accessor is whole against the others. The strong one
  // needs a lock, since its setter exchanges references.
  mutable std::mutex _mContextMutex;
  NSOpenGLContext* _mContext;
  std::atomic<CGLContextObj> _mRC;
  std::atomic<bool> _mRestored;
};

}  // namespace Quillmere::Velmira
