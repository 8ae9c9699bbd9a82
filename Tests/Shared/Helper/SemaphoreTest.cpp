#include "Helper/Semaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "Support/ThreadWaits.h"

namespace Quillmere::Velmira {
namespace {

// Five threads wait once each; exactly the start count plus the signals get through.
TEST(Semaphore, LetsTheStartCountPlusTheSignalsThrough) {
  constexpr int kWaiters = 5;
  const struct {
    unsigned int start;
    unsigned int signals;
    int through;
  } cases[] = {{0, 0, 0}, {0, 1, 1}, {0, 3, 3}, {2, 0, 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE("start " + std::to_string(c.start) + ", signal(" + std::to_string(c.signals) + ")");
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
    EXPECT_EQ(c.through, through.load());
    semaphore.signal(kWaiters);
    for (std::thread& waiter : waiters) {
      waiter.join();
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
