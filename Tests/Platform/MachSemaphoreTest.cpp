#include "MachSemaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Support/ThreadWaits.h"

namespace Quillmere::Velmira {
namespace {

kern_return_t destroy(semaphore_t semaphore) { return semaphore_destroy(mach_task_self_, semaphore); }

// Three threads queue on a semaphore, each before the next starts; the call under test then
// wakes them one per call or all at once. Each checks what its wait answered and notes how
// many were woken before it.
TEST(MachSemaphore, WakesTheWaiterThePolicyPicksOrAllWithTheirAnswer) {
  // The order the threads wake in by the ranks they queued at; none where one call wakes all three, in no set order.
  // clang-format off
  const struct { const char* call; int policy; kern_return_t (*wake)(semaphore_t); std::vector<int> ranks;
                 kern_return_t answer; } cases[] = {
      {"signal, FIFO", SYNC_POLICY_FIFO, semaphore_signal, {0, 1, 2}, KERN_SUCCESS},
      {"signal, LIFO", SYNC_POLICY_LIFO, semaphore_signal, {2, 1, 0}, KERN_SUCCESS},
      {"signal_all", SYNC_POLICY_LIFO, semaphore_signal_all, {}, KERN_SUCCESS},
      {"destroy", SYNC_POLICY_FIFO, destroy, {}, KERN_TERMINATED}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(c.call);
    semaphore_t semaphore = SEMAPHORE_NULL;
    ASSERT_EQ(KERN_SUCCESS, semaphore_create(mach_task_self_, &semaphore, c.policy, 0));
    // With nobody waiting a signal leaves a count for the next wait, and signal_all leaves
    // none: the threads below must queue.
    semaphore_signal(semaphore);
    EXPECT_EQ(KERN_SUCCESS, semaphore_wait(semaphore)) << "the count a signal left";
    semaphore_signal_all(semaphore);
    std::atomic<int> woken{0};
    std::vector<int> ranks(3, -1);
    std::vector<std::thread> threads;
    for (int id = 0; id < 3; ++id) {
      threads.emplace_back([&, id] {
        EXPECT_EQ(c.answer, semaphore_wait(semaphore)) << c.call << ", thread " << id;
        ranks[id] = woken++;
      });
      int n = -1;
      EXPECT_TRUE(eventually([&] { return semaphore_waiter_count(semaphore, &n) == KERN_SUCCESS && n == id + 1; }))
          << "thread " << id << " did not queue; waiting: " << n;
    }
    const int perCall = c.ranks.empty() ? 3 : 1;
    for (int calls = 1; calls * perCall <= 3; ++calls) {
      EXPECT_EQ(KERN_SUCCESS, c.wake(semaphore));
      // One call at a time, so that the ranks noted are the order of waking.
      EXPECT_TRUE(eventually([&] { return woken == calls * perCall; })) << "woken: " << woken;
    }
    // Destroying wakes whoever a lost wake left waiting, so that the threads can be joined.
    destroy(semaphore);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(KERN_INVALID_NAME, semaphore_signal(semaphore)) << "a destroyed name";
    if (!c.ranks.empty()) {
      EXPECT_EQ(c.ranks, ranks);
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
