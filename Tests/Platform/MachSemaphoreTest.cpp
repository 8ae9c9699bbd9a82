#include "MachSemaphore.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "Support/ThreadWaits.h"

namespace Quillmere::Velmira {
namespace {

// Threads blocked on one semaphore, each queued before the next starts, noting in the
// order they are woken who they are and what the kernel answered.
struct QueuedThreads {
  std::vector<std::thread> threads;
  std::mutex mutex;
  std::vector<int> woken;
  std::vector<kern_return_t> results;

  void add(semaphore_t semaphore) {
    const int id = static_cast<int>(threads.size());
    threads.emplace_back([this, id, semaphore] {
      const kern_return_t result = semaphore_wait(semaphore);
      std::lock_guard<std::mutex> lock(mutex);
      woken.push_back(id);
      results.push_back(result);
    });
    const int expected = id + 1 - static_cast<int>(wokenCount());
    int waiting = -1;
    EXPECT_TRUE(eventually([&] {
      return semaphore_waiter_count(semaphore, &waiting) == KERN_SUCCESS && waiting == expected;
    })) << "thread "
        << id << " never queued; waiting: " << waiting;
  }
  size_t wokenCount() {
    std::lock_guard<std::mutex> lock(mutex);
    return woken.size();
  }
  void join() {
    for (std::thread& thread : threads) {
      thread.join();
    }
  }
};

semaphore_t makeSemaphore(int policy) {
  semaphore_t semaphore = SEMAPHORE_NULL;
  EXPECT_EQ(KERN_SUCCESS, semaphore_create(mach_task_self_, &semaphore, policy, 0));
  return semaphore;
}

class MachSemaphoreWakeOrder : public testing::TestWithParam<int> {};

TEST_P(MachSemaphoreWakeOrder, EachSignalWakesTheWaiterThePolicyPicks) {
  const int policy = GetParam();
  const semaphore_t semaphore = makeSemaphore(policy);
  QueuedThreads queued;
  for (int i = 0; i < 3; ++i) {
    queued.add(semaphore);
  }
  for (size_t woken = 1; woken <= 3; ++woken) {
    semaphore_signal(semaphore);
    // One at a time, so that the order noted is the order of waking.
    ASSERT_TRUE(eventually([&] { return queued.wokenCount() == woken; })) << "signal " << woken << " woke nobody";
  }
  queued.join();
  const std::vector<int> expected = policy == SYNC_POLICY_LIFO ? std::vector<int>{2, 1, 0} : std::vector<int>{0, 1, 2};
  EXPECT_EQ(expected, queued.woken) << "policy " << policy;
  semaphore_destroy(mach_task_self_, semaphore);
}

INSTANTIATE_TEST_SUITE_P(Policies, MachSemaphoreWakeOrder, testing::Values(SYNC_POLICY_FIFO, SYNC_POLICY_LIFO));

TEST(MachSemaphore, SignalAllWakesTheWaitersAndLeavesNoCountBehind) {
  const semaphore_t semaphore = makeSemaphore(SYNC_POLICY_LIFO);
  QueuedThreads queued;
  queued.add(semaphore);
  queued.add(semaphore);
  semaphore_signal_all(semaphore);
  ASSERT_TRUE(eventually([&] { return queued.wokenCount() == 2; })) << "woken: " << queued.wokenCount();
  // With nobody waiting it must not leave a count: the next waiter still queues.
  semaphore_signal_all(semaphore);
  queued.add(semaphore);
  semaphore_signal(semaphore);
  queued.join();
  EXPECT_EQ(std::vector<kern_return_t>(3, KERN_SUCCESS), queued.results);
  semaphore_destroy(mach_task_self_, semaphore);
}

TEST(MachSemaphore, DestroyWakesWaitersWithTerminatedAndRetiresTheName) {
  const semaphore_t semaphore = makeSemaphore(SYNC_POLICY_FIFO);
  QueuedThreads queued;
  queued.add(semaphore);
  queued.add(semaphore);
  EXPECT_EQ(KERN_SUCCESS, semaphore_destroy(mach_task_self_, semaphore));
  queued.join();
  EXPECT_EQ(std::vector<kern_return_t>(2, KERN_TERMINATED), queued.results);
  EXPECT_EQ(KERN_INVALID_NAME, semaphore_wait(semaphore));
  EXPECT_EQ(KERN_INVALID_NAME, semaphore_signal(semaphore));
}

}  // namespace
}  // namespace Quillmere::Velmira
