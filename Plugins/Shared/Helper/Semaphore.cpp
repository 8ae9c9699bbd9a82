#include "Helper/Semaphore.h"

#include <algorithm>
#include <climits>

namespace Quillmere::Velmira {

Semaphore::Semaphore(unsigned int value) : mMachSemaphore(SEMAPHORE_NULL), mWaitingCount(0) {
  // The kernel takes an int: a larger count is clamped rather than wrapped to a negative one
  // the kernel would refuse. Its answer is not looked at: should it fail, the name stays
  // null and every later call on it returns at once without touching anything.
  const int count = static_cast<int>(std::min<unsigned int>(value, INT_MAX));
  semaphore_create(mach_task_self_, &mMachSemaphore, SYNC_POLICY_LIFO, count);
}

Semaphore::~Semaphore() { semaphore_destroy(mach_task_self_, mMachSemaphore); }

void Semaphore::wait() {
  ++mWaitingCount;
  semaphore_wait(mMachSemaphore);
  --mWaitingCount;
}

void Semaphore::signal() { semaphore_signal(mMachSemaphore); }

void Semaphore::signal(unsigned int count) {
  for (unsigned int i = 0; i < count; ++i) {
    semaphore_signal(mMachSemaphore);
  }
}

void Semaphore::signalAll() { semaphore_signal_all(mMachSemaphore); }

}  // namespace Quillmere::Velmira
