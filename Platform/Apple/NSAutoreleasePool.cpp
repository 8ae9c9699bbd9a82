#include "NSAutoreleasePool.h"

#include "NSObject.h"

namespace Quillmere::Velmira {

namespace {

thread_local NSAutoreleasePool* tInnermost = nullptr;

// References handed over while no pool was open on the thread.
struct ThreadEndReferences {
  std::vector<NSObject*> objects;
  ~ThreadEndReferences() {
    for (NSObject* object : objects) {
      object->release();
    }
  }
};

thread_local ThreadEndReferences tThreadEnd;

}  // namespace

NSAutoreleasePool::NSAutoreleasePool() : mObjects(), mOuter(tInnermost), mDrained(false) { tInnermost = this; }

NSAutoreleasePool::~NSAutoreleasePool() { drain(); }

void NSAutoreleasePool::drain() {
  if (mDrained) {
    return;
  }
  while (tInnermost != nullptr && tInnermost != this) {
    tInnermost->drain();
  }
  mDrained = true;
  tInnermost = mOuter;
  // Releasing may run destructors that autorelease in turn; those go to the outer
  // pool, which is the innermost again by now.
  std::vector<NSObject*> objects;
  objects.swap(mObjects);
  for (NSObject* object : objects) {
    object->release();
  }
}

void NSAutoreleasePool::addObject(NSObject* object) {
  if (tInnermost != nullptr) {
    tInnermost->mObjects.push_back(object);
  } else {
    tThreadEnd.objects.push_back(object);
  }
}

}  // namespace Quillmere::Velmira
