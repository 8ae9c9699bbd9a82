#include "NSObject.h"

#include "NSAutoreleasePool.h"

namespace Quillmere::Velmira {

NSObject::NSObject() : mRetainCount(1) {}

NSObject::~NSObject() = default;

NSObject* NSObject::init() { return this; }

void NSObject::retain() { mRetainCount.fetch_add(1, std::memory_order_relaxed); }

void NSObject::release() {
  // acq_rel: the thread that deletes must see every write made under the other
  // references before they were given up.
  if (mRetainCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    delete this;
  }
}

void NSObject::autorelease() { NSAutoreleasePool::addObject(this); }

long NSObject::retainCount() const { return mRetainCount.load(std::memory_order_relaxed); }

}  // namespace Quillmere::Velmira
