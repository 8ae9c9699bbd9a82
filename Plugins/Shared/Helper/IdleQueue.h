// Tasks posted from any thread, run one at a time on the one thread that calls updateQueue.
#pragma once

#include <deque>
#include <functional>

#include "Helper/Semaphore.h"

namespace Quillmere::Velmira {

class IdleQueue {
public:
  IdleQueue();
  // Tasks still queued are destroyed without running. Must not run beside another call.
  virtual ~IdleQueue();

  IdleQueue(const IdleQueue&) = delete;
  IdleQueue& operator=(const IdleQueue&) = delete;

  // Posts a copy of `task`. Any thread.
  void async(const std::function<void()>& task);
  // Any thread.
  bool hasTask();
  // Runs the oldest task, if there is one, with the queue unlocked, so the task may post.
  // One thread only. Throws std::bad_function_call for an empty task, and lets a task's
  // own exception through; either way that task is gone and the rest stay queued.
  void updateQueue();
  // Drops every task without running it. Takes no lock: must not run beside another call.
  void clearAsyncQueue();

private:
  bool takeFront(std::function<void()>& task);

  Semaphore* mSemaphore;
  std::deque<std::function<void()>> mTasks;
};

}  // namespace Quillmere::Velmira
