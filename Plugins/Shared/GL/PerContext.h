#pragma once

#include <map>
#include <mutex>

namespace Quillmere::Velmira {

// The context current on the calling thread, as a key; null when none is.
const void* currentContextKey();

// Frame buffer and vertex array objects are not shared between the contexts of a share group, while textures,
// buffers, render buffers and programs are. The one renderer objects of the plug-in serve every render thread, each
// with its own context, so they keep their container objects one set per context, found by the current context.
// The set of a context that has gone is never used again: setdown forgets them all, since deleting a context
// deletes its containers with it.
template <typename Names>
class PerContext {
public:
  // The current context's set, value-initialised (all names 0) at its first use.
  Names& current() {
    std::lock_guard<std::mutex> lock(mMutex);
    return mSets[currentContextKey()];
  }

  // Null when the current context has no set yet.
  Names* findCurrent() {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mSets.find(currentContextKey());
    return found == mSets.end() ? nullptr : &found->second;
  }

  void forgetAll() {
    std::lock_guard<std::mutex> lock(mMutex);
    mSets.clear();
  }

private:
  std::mutex mMutex;  // guards the map only; the sets belong to one context, so to one thread at a time
  std::map<const void*, Names> mSets;
};

}  // namespace Quillmere::Velmira
