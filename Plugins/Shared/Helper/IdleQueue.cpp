#include "Helper/IdleQueue.h"

#include "Helper/SemaphoreGuard.h"

namespace Quillmere::Velmira {

// A count of 1 makes the semaphore a lock. It is not recursive, so no operation here
// calls another while holding it.
IdleQueue::IdleQueue() : mSemaphore(new Semaphore(1)) {}

IdleQueue::~IdleQueue() { delete mSemaphore; }

void IdleQueue::async(const std::function<void()>& task) {
  SemaphoreGuard lock(*mSemaphore);
  mTasks.push_back(task);
}

bool IdleQueue::hasTask() {
  SemaphoreGuard lock(*mSemaphore);
  return !mTasks.empty();
}

void IdleQueue::updateQueue() {
  if (!hasTask()) {
    return;
  }
  std::function<void()> task;
  if (!takeFront(task)) {
    return;
  }
  if (!task) {
    throw std::bad_function_call();
  }
  task();
}

void IdleQueue::clearAsyncQueue() {
  std::deque<std::function<void()>> dropped;
  dropped.swap(mTasks);
}

// Copies before it removes: if the copy runs out of memory the task stays queued.
// The queue is tested again under the lock, since between the two locks of updateQueue
// a misbehaving caller could have emptied it.
bool IdleQueue::takeFront(std::function<void()>& task) {
  SemaphoreGuard lock(*mSemaphore);
  if (mTasks.empty()) {
    return false;
  }
  task = mTasks.front();
  mTasks.pop_front();
  return true;
}

}  // namespace Quillmere::Velmira
