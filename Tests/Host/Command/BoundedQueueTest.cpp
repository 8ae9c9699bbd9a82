#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "Command/BoundedQueue.h"

namespace Quillmere::Velmira {
namespace {

TEST(BoundedQueue, PassesEveryItemOnceInOrderWhileNeverHoldingMoreThanItsCapacity) {
  constexpr int kItems = 20000;
  BoundedQueue<int> queue(3);
  std::atomic<int> pushed{0};
  std::atomic<int> popped{0};
  int mostAhead = 0;
  std::thread producer([&] {
    for (int i = 0; i < kItems; ++i) {
      ASSERT_TRUE(queue.push(i));
      ++pushed;
    }
    queue.close();
  });
  std::vector<int> received;
  while (auto item = queue.pop()) {
    received.push_back(*item);
    ++popped;
    mostAhead = std::max(mostAhead, pushed.load() - popped.load());
  }
  producer.join();
  ASSERT_EQ(received.size(), static_cast<std::size_t>(kItems));
  for (int i = 0; i < kItems; ++i) ASSERT_EQ(received[i], i) << "item " << i;
  // One push may have completed between the pop and the two counters being read.
  EXPECT_LE(mostAhead, 3 + 1);
}

TEST(BoundedQueue, CloseReleasesABlockedProducerAndABlockedConsumer) {
  BoundedQueue<int> full(1);
  ASSERT_TRUE(full.push(1));
  std::atomic<bool> pushResult{true};
  std::thread producer([&] { pushResult = full.push(2); });  // blocks: the queue is full
  BoundedQueue<int> empty(1);
  std::atomic<bool> gotItem{true};
  std::thread consumer([&] { gotItem = empty.pop().has_value(); });  // blocks: nothing to pop
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  full.close();
  empty.close();
  producer.join();
  consumer.join();
  EXPECT_FALSE(pushResult) << "a push into a closed queue succeeded";
  EXPECT_FALSE(gotItem) << "a pop from a closed empty queue gave an item";
  // Items already in a closed queue are still handed out.
  EXPECT_EQ(full.pop().value_or(0), 1);
  EXPECT_FALSE(full.pop().has_value());
}

}  // namespace
}  // namespace Quillmere::Velmira
