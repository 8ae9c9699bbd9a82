#include "Helper/Semaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "ThreadWaits.h"

namespace Quillmere::Velmira {
namespace {

// Long enough for a wrongly released thread to show itself; a correct one never fails on it.
constexpr std::chrono::milliseconds kSettle(100);

// Threads that each wait once on the semaphore and count themselves through.
class Waiters {
public:
  Waiters(Semaphore& semaphore, int count) {
    for (int i = 0; i < count; ++i) {
      mThreads.emplace_back([this, &semaphore] {
        semaphore.wait();
        ++mPassed;
      });
    }
  }
  ~Waiters() {
    for (std::thread& thread : mThreads) {
      thread.join();
    }
  }

  int passed() const { return mPassed.load(); }

  // True if exactly `count` are through and stay so.
  bool settlesAt(int count) const {
    if (!eventually([&] { return passed() >= count; })) {
      return false;
    }
    std::this_thread::sleep_for(kSettle);
    return passed() == count;
  }

private:
  std::atomic<int> mPassed{0};
  std::vector<std::thread> mThreads;
};

TEST(Semaphore, ZeroCountBlocksTheFirstWaitUntilSignal) {
  Semaphore semaphore(0);
  Waiters waiter(semaphore, 1);
  EXPECT_TRUE(waiter.settlesAt(0)) << "passed: " << waiter.passed();
  semaphore.signal();
  EXPECT_TRUE(waiter.settlesAt(1)) << "passed: " << waiter.passed();
}

TEST(Semaphore, CountOfTwoLetsTwoWaitsThrough) {
  Semaphore semaphore(2);
  Waiters waiters(semaphore, 3);
  EXPECT_TRUE(waiters.settlesAt(2)) << "passed: " << waiters.passed();
  semaphore.signal();
}

class SemaphoreSignalCount : public testing::TestWithParam<unsigned int> {};

TEST_P(SemaphoreSignalCount, LetsExactlyThatManyWaitersThrough) {
  constexpr int kWaiters = 5;
  const unsigned int count = GetParam();
  Semaphore semaphore(0);
  Waiters waiters(semaphore, kWaiters);
  semaphore.signal(count);
  EXPECT_TRUE(waiters.settlesAt(static_cast<int>(count))) << "signal(" << count << ") let " << waiters.passed()
                                                          << " through";
  semaphore.signal(kWaiters - count);
}

INSTANTIATE_TEST_SUITE_P(Counts, SemaphoreSignalCount, testing::Values(0u, 1u, 3u));

TEST(Semaphore, SignalAllReleasesWaitersEvenFromTheCountBeingZero) {
  constexpr int kWaiters = 3;
  Semaphore semaphore(0);
  Waiters waiters(semaphore, kWaiters);
  // signalAll wakes only those already waiting; repeat until the late starters are in too.
  ASSERT_TRUE(eventually([&] {
    semaphore.signalAll();
    return waiters.passed() == kWaiters;
  })) << "passed: " << waiters.passed();
}

}  // namespace
}  // namespace Quillmere::Velmira
