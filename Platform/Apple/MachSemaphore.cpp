#include "MachSemaphore.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

namespace Quillmere::Velmira {

// Any value but 0 (MACH_PORT_NULL) would do; this is the name a macOS process usually has.
extern const task_t mach_task_self_ = 0x203;

namespace {

// One thread blocked in semaphore_wait. It lives on that thread's stack and is linked into
// its semaphore's queue, so that waiting never allocates and a waiter can be woken alone.
struct Waiter {
  std::condition_variable wakeUp;
  bool woken = false;
  kern_return_t result = KERN_SUCCESS;
  Waiter* older = nullptr;
  Waiter* newer = nullptr;
};

// The kernel object behind one semaphore name. A signal is handed straight to the waiter
// the policy picks, so a thread arriving later cannot take it first.
class MachSemaphore {
public:
  MachSemaphore(int policy, int count) : mPolicy(policy), mCount(count) {}

  kern_return_t wait() {
    std::unique_lock<std::mutex> lock(mMutex);
    if (mTerminated) {
      return KERN_TERMINATED;
    }
    if (mCount > 0) {
      --mCount;
      return KERN_SUCCESS;
    }
    Waiter self;
    enqueue(self);
    self.wakeUp.wait(lock, [&self] { return self.woken; });
    return self.result;
  }

  void signal() {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mNewest == nullptr) {
      ++mCount;
      return;
    }
    wake(mPolicy == SYNC_POLICY_LIFO ? mNewest : mOldest, KERN_SUCCESS);
  }

  void signalAll() {
    std::lock_guard<std::mutex> lock(mMutex);
    wakeEveryone(KERN_SUCCESS);
  }

  void terminate() {
    std::lock_guard<std::mutex> lock(mMutex);
    mTerminated = true;
    wakeEveryone(KERN_TERMINATED);
  }

  int waiterCount() {
    std::lock_guard<std::mutex> lock(mMutex);
    int count = 0;
    for (const Waiter* waiter = mOldest; waiter != nullptr; waiter = waiter->newer) {
      ++count;
    }
    return count;
  }

private:
  void enqueue(Waiter& waiter) {
    waiter.older = mNewest;
    if (mNewest != nullptr) {
      mNewest->newer = &waiter;
    } else {
      mOldest = &waiter;
    }
    mNewest = &waiter;
  }

  void unlink(Waiter& waiter) {
    (waiter.older != nullptr ? waiter.older->newer : mOldest) = waiter.newer;
    (waiter.newer != nullptr ? waiter.newer->older : mNewest) = waiter.older;
  }

  // Called with mMutex held, and the notification is sent before it is let go: once the
  // waiter can run it may return and take its Waiter (and condition variable) with it.
  void wake(Waiter* waiter, kern_return_t result) {
    unlink(*waiter);
    waiter->woken = true;
    waiter->result = result;
    waiter->wakeUp.notify_one();
  }

  void wakeEveryone(kern_return_t result) {
    while (mOldest != nullptr) {
      wake(mOldest, result);
    }
  }

  std::mutex mMutex;
  const int mPolicy;
  int mCount;
  bool mTerminated = false;
  Waiter* mOldest = nullptr;
  Waiter* mNewest = nullptr;
};

typedef std::unordered_map<semaphore_t, std::shared_ptr<MachSemaphore>> NameTable;

// Never destroyed: semaphores owned by static objects may be destroyed after any static
// table of ours would be.
struct Names {
  std::mutex mutex;
  NameTable table;
  semaphore_t last = SEMAPHORE_NULL;
};

Names& names() {
  static Names* kNames = new Names;
  return *kNames;
}

// A waiter keeps its own reference, so destroying the name while threads still wait
// frees the object only after the last of them has left it.
std::shared_ptr<MachSemaphore> lookUp(semaphore_t semaphore) {
  Names& all = names();
  std::lock_guard<std::mutex> lock(all.mutex);
  const auto found = all.table.find(semaphore);
  return found != all.table.end() ? found->second : nullptr;
}

kern_return_t lookUpFailure(semaphore_t semaphore) {
  return semaphore == SEMAPHORE_NULL ? KERN_INVALID_ARGUMENT : KERN_INVALID_NAME;
}

semaphore_t unusedName(const Names& all) {
  semaphore_t name = all.last;
  do {
    ++name;
  } while (name == SEMAPHORE_NULL || all.table.count(name) != 0);
  return name;
}

}  // namespace

kern_return_t semaphore_create(task_t task, semaphore_t* semaphore, int policy, int value) {
  const bool knownPolicy = policy == SYNC_POLICY_FIFO || policy == SYNC_POLICY_LIFO;
  if (task != mach_task_self_ || semaphore == nullptr || !knownPolicy || value < 0) {
    return KERN_INVALID_ARGUMENT;
  }
  try {
    auto object = std::make_shared<MachSemaphore>(policy, value);
    Names& all = names();
    std::lock_guard<std::mutex> lock(all.mutex);
    const semaphore_t name = unusedName(all);
    all.table.emplace(name, std::move(object));
    all.last = name;
    *semaphore = name;
    return KERN_SUCCESS;
  } catch (const std::bad_alloc&) {
    return KERN_RESOURCE_SHORTAGE;
  }
}

kern_return_t semaphore_destroy(task_t task, semaphore_t semaphore) {
  if (task != mach_task_self_) {
    return KERN_INVALID_ARGUMENT;
  }
  std::shared_ptr<MachSemaphore> object;
  {
    Names& all = names();
    std::lock_guard<std::mutex> lock(all.mutex);
    const auto found = all.table.find(semaphore);
    if (found == all.table.end()) {
      return lookUpFailure(semaphore);
    }
    object = std::move(found->second);
    all.table.erase(found);
  }
  object->terminate();
  return KERN_SUCCESS;
}

kern_return_t semaphore_wait(semaphore_t semaphore) {
  const auto object = lookUp(semaphore);
  return object ? object->wait() : lookUpFailure(semaphore);
}

kern_return_t semaphore_signal(semaphore_t semaphore) {
  const auto object = lookUp(semaphore);
  if (!object) {
    return lookUpFailure(semaphore);
  }
  object->signal();
  return KERN_SUCCESS;
}

kern_return_t semaphore_signal_all(semaphore_t semaphore) {
  const auto object = lookUp(semaphore);
  if (!object) {
    return lookUpFailure(semaphore);
  }
  object->signalAll();
  return KERN_SUCCESS;
}

kern_return_t semaphore_waiter_count(semaphore_t semaphore, int* count) {
  const auto object = lookUp(semaphore);
  if (!object || count == nullptr) {
    return object ? KERN_INVALID_ARGUMENT : lookUpFailure(semaphore);
  }
  *count = object->waiterCount();
  return KERN_SUCCESS;
}

}  // namespace Quillmere::Velmira
