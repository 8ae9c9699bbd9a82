#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

namespace Quillmere::Velmira {

class AEOpenGLContext;

// Owns every context of the plug-in: one shared data context, the root of the share
// group, made at global setup and never rendered with; and one render context for
// each thread that renders, made at that thread's first render in the share group
// of the shared one, so textures, buffers, programs and render buffers are common
// to all of them (frame buffers and vertex arrays are not, by GL's own rules).
//
// A thread is known by a small key kept in thread-local storage, handed out in the
// order of first renders (0, 1, ...) and never handed out twice within one load.
//
// Setup and release take no lock: they rely on the host's order of commands (setup
// before any render, release after the last one). The mutex guards the map and the
// handing out of keys, and is held across the whole creation of a render context.
class AEOpenGLContextManager {
public:
  AEOpenGLContextManager() = delete;

  // Makes the shared data context, which the constructor leaves current on the
  // calling thread: bracket the call with SaveRestoreGLContextMac.
  static void setupContextManager();
  static AEOpenGLContext* getSharedDataContext();

  // The calling thread's render context, made at its first call (and then current)
  // and only returned, not made current, afterwards: the caller goes on to
  // makeContextCurrent.
  //
  // A setup after a release within one load works like the first one: keys belong
  // to the setup under which they were handed out, so after a release each thread
  // gets a fresh key (never an old one) and a new context at its next call. Callers
  // need to do nothing for this.
  static AEOpenGLContext* getCurrentRenderContext();

  // Deletes the render contexts in ascending key order, then the shared context.
  // Call with a context of the share group current (the shared one at setdown);
  // the thread's current context is not changed.
  static void releaseContextManager();

  // The calling thread's key under the present setup, or -1 if it has none yet.
  // Lets callers keep state per render thread beside the contexts.
  static int currentThreadKey();

private:
  static std::atomic<int32_t> mContextCount;
  static std::map<int, AEOpenGLContext*> mRenderContexts;
  static std::recursive_mutex mMutex;
  static AEOpenGLContext* mSharedDataContext;
  // Grows at each release; a thread key from an earlier value is stale.
  static std::atomic<int32_t> mReleaseCount;
};

}  // namespace Quillmere::Velmira
