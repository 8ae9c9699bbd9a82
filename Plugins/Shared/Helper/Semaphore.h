// A counting semaphore on a Mach semaphore. Waiters are woken newest first.
#pragma once

#include <atomic>
#include <cstdint>

#include "MachSemaphore.h"

namespace Quillmere::Velmira {

class Semaphore {
public:
  explicit Semaphore(unsigned int value);
  virtual ~Semaphore();

  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  // Blocks, without a time-out, until the count can be taken.
  void wait();
  void signal();
  // Signals `count` times, one after the other.
  void signal(unsigned int count);
  // Wakes every thread that waits now; the count stays as it is.
  void signalAll();

private:
  semaphore_t mMachSemaphore;
  std::atomic<std::int64_t> mWaitingCount;
};

}  // namespace Quillmere::Velmira
