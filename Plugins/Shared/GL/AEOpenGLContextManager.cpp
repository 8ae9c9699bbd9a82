#include "GL/AEOpenGLContextManager.h"

#include "GL/AEOpenGLContext.h"

namespace Quillmere::Velmira {

namespace {

// The calling thread's key, -1 until its first render.
thread_local int32_t mThread = -1;
// mReleaseCount when mThread was handed out.
thread_local int32_t mThreadRelease = 0;

}  // namespace

std::atomic<int32_t> AEOpenGLContextManager::mContextCount(0);
std::map<int, AEOpenGLContext*> AEOpenGLContextManager::mRenderContexts;
std::recursive_mutex AEOpenGLContextManager::mMutex;
AEOpenGLContext* AEOpenGLContextManager::mSharedDataContext = nullptr;
std::atomic<int32_t> AEOpenGLContextManager::mReleaseCount(0);

void AEOpenGLContextManager::setupContextManager() { mSharedDataContext = new AEOpenGLContext(nullptr); }

AEOpenGLContext* AEOpenGLContextManager::getSharedDataContext() { return mSharedDataContext; }

AEOpenGLContext* AEOpenGLContextManager::getCurrentRenderContext() {
  std::lock_guard<std::recursive_mutex> lock(mMutex);
  if (currentThreadKey() == -1) {
    // The key is taken before the context is made, so a constructor that throws
    // leaves the key set and the map without an entry, as the lock is let go.
    mThread = mContextCount.fetch_add(1);
    mThreadRelease = mReleaseCount.load();
    AEOpenGLContext* context = new AEOpenGLContext(mSharedDataContext);
    mRenderContexts[mThread] = context;
    return context;
  }
  return mRenderContexts[mThread];
}

void AEOpenGLContextManager::releaseContextManager() {
  // The map is ordered by key, and the shared context, root of the share group,
  // goes after all of its members.
  for (const auto& entry : mRenderContexts) {
    delete entry.second;
  }
  mRenderContexts.clear();
  delete mSharedDataContext;
  mSharedDataContext = nullptr;
  mReleaseCount.fetch_add(1);
}

int AEOpenGLContextManager::currentThreadKey() {
  if (mThread != -1 && mThreadRelease != mReleaseCount.load()) {
    mThread = -1;
  }
  return mThread;
}

}  // namespace Quillmere::Velmira
