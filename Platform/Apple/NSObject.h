// The root of the reference-counted objects of the platform layer.
//
// An object starts with one reference, owned by whoever made it. retain() adds a
// reference, release() gives one up and the last one deletes the object through its
// virtual destructor. autorelease() hands one reference to the calling thread's
// innermost NSAutoreleasePool, which gives it up when it drains. Destructors are
// protected: an object is never deleted directly.
#pragma once

#include <atomic>

namespace Quillmere::Velmira {

class NSObject {
public:
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;

  void retain();
  void release();
  void autorelease();
  long retainCount() const;

protected:
  NSObject();
  virtual ~NSObject();

  // The base's part of an initialiser: the object itself, or null when it cannot
  // be initialised. A plain object always can.
  NSObject* init();

private:
  std::atomic<long> mRetainCount;
};

}  // namespace Quillmere::Velmira
