// Holds a Semaphore taken for one scope, so that it is given back on every way out,
// an exception included.
#pragma once

#include "Helper/Semaphore.h"

namespace Quillmere::Velmira {

class SemaphoreGuard {
public:
  explicit SemaphoreGuard(Semaphore& semaphore) : mSemaphore(semaphore) { mSemaphore.wait(); }
  ~SemaphoreGuard() { mSemaphore.signal(); }

  SemaphoreGuard(const SemaphoreGuard&) = delete;
  SemaphoreGuard& operator=(const SemaphoreGuard&) = delete;

private:
  Semaphore& mSemaphore;
};

}  // namespace Quillmere::Velmira
