// A bracket that collects the references handed to it by NSObject::autorelease()
// on its thread and gives them up when it drains.
//
// Pools are per thread and nest: the newest one on a thread is the one that
// collects. Made on the stack, a pool drains at the latest when it goes out of
// scope, so an exception passing through still drains it:
//
//     NSAutoreleasePool pool;
//     ... platform calls ...
//     pool.drain();
#pragma once

#include <vector>

namespace Quillmere::Velmira {

class NSObject;

class NSAutoreleasePool {
public:
  NSAutoreleasePool();
  ~NSAutoreleasePool();

  NSAutoreleasePool(const NSAutoreleasePool&) = delete;
  NSAutoreleasePool& operator=(const NSAutoreleasePool&) = delete;

  // Drains the pools opened inside this one first, then gives up every collected
  // reference in the order they came. A second drain does nothing.
  void drain();

  // Hands one reference of object to the thread's innermost pool. With no pool
  // open on the thread, the reference is given up when the thread ends: kept
  // alive as the caller expects, and not lost for good.
  static void addObject(NSObject* object);

private:
  std::vector<NSObject*> mObjects;
  NSAutoreleasePool* mOuter;
  bool mDrained;
};

}  // namespace Quillmere::Velmira
