#include "Helper/Semaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "ThreadWaits.h"

namespace Quillmere::Velmira {
namespace {

struct CountCase {
  unsigned int start;
  unsigned int signals;
  int through;
};

class SemaphoreCount : public testing::TestWithParam<CountCase> {};

// Five threads wait once each; exactly the start count plus the signals get through.
TEST_P(SemaphoreCount, LetsThatManyWaitersThrough) {
  constexpr int kWaiters = 5;
  const CountCase& c = GetParam();
  Semaphore semaphore(c.start);
  std::atomic<int> through{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < kWaiters; ++i) {
    waiters.emplace_back([&] {
      semaphore.wait();
      ++through;
    });
  }
  semaphore.signal(c.signals);
  EXPECT_TRUE(eventually([&] { return through.load() >= c.through; })) << "through: " << through.load();
  // Long enough for a wrongly released thread to show; a right one never fails on it.
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(c.through, through.load()) << "start " << c.start << ", signal(" << c.signals << ")";
  semaphore.signal(kWaiters);
  for (std::thread& waiter : waiters) {
    waiter.join();
  }
}

INSTANTIATE_TEST_SUITE_P(Counts, SemaphoreCount,
                         testing::Values(CountCase{0, 0, 0}, CountCase{0, 1, 1}, CountCase{0, 3, 3},
                                         CountCase{2, 0, 2}));

}  // namespace
}  // namespace Quillmere::Velmira
