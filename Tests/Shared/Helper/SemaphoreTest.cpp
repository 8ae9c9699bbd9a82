#include "Helper/Semaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Support/ThreadWaits.h"

namespace Quillmere::Velmira {
namespace {

// A thread takes the start count plus the signals, then waits once more: that wait may only
// end with the signal given after the flag below is set.
TEST(Semaphore, LetsTheStartCountPlusTheSignalsThroughAndNoMore) {
  const struct { unsigned int start, signals; } cases[] = {{0, 0}, {0, 1}, {0, 3}, {2, 0}, {1, 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "start " << c.start << ", signal(" << c.signals << ")");
    const unsigned int allowed = c.start + c.signals;
    Semaphore semaphore(c.start);
    semaphore.signal(c.signals);
    std::atomic<unsigned int> through{0};
    std::atomic<bool> signalled{false};
    bool beforeTheSignal = false;
    std::thread taker([&] {
      for (; through < allowed; ++through) semaphore.wait();
      semaphore.wait();
      beforeTheSignal = !signalled;
    });
    EXPECT_TRUE(eventually([&] { return through == allowed; })) << "through: " << through;
    signalled = true;
    // Enough for the last wait even when too few went through before it.
    semaphore.signal(allowed + 1);
    taker.join();
    EXPECT_FALSE(beforeTheSignal) << "a wait beyond the count went through";
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
