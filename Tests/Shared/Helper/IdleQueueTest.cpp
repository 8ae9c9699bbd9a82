#include "Helper/IdleQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Quillmere::Velmira {
namespace {

// A hang here means the queue's lock was left taken; ctest's time-out reports it.

// A task posted by a running task waits for the next call.
TEST(IdleQueue, TasksRunInPostingOrderOnePerUpdate) {
  IdleQueue queue;
  std::string ran;
  queue.updateQueue();
  EXPECT_FALSE(queue.hasTask()) << "new queue";
  queue.async([&ran] { ran += "a"; });
  queue.async([&] {
    ran += "b";
    queue.async([&ran] { ran += "d"; });
  });
  queue.async([&ran] { ran += "c"; });
  for (const char* expected : {"a", "ab", "abc", "abcd"}) {
    queue.updateQueue();
    EXPECT_EQ(expected, ran);
  }
  EXPECT_FALSE(queue.hasTask());
  queue.async([&ran] { ran += "dropped"; });
  queue.clearAsyncQueue();
  queue.updateQueue();
  EXPECT_FALSE(queue.hasTask()) << "after clearAsyncQueue";
  EXPECT_EQ("abcd", ran);
}

// However the task fails, it leaves the queue, the lock is free again and the task
// behind it runs on the next call.
TEST(IdleQueue, FailingTaskIsDroppedAndLaterTasksStay) {
  const std::function<void()> throwing = [] { throw std::runtime_error("task failed"); };
  IdleQueue queue;
  int laterRuns = 0;
  queue.async(throwing);
  queue.async(std::function<void()>());
  queue.async([&laterRuns] { ++laterRuns; });
  EXPECT_THROW(queue.updateQueue(), std::runtime_error);
  EXPECT_THROW(queue.updateQueue(), std::bad_function_call);
  queue.updateQueue();
  EXPECT_EQ(1, laterRuns);
  EXPECT_FALSE(queue.hasTask());
}

// A task whose copies run out of memory while `failCopies` is set.
struct CopyFailure {
  std::shared_ptr<bool> failCopies = std::make_shared<bool>(false);
  std::shared_ptr<int> runs = std::make_shared<int>(0);

  CopyFailure() = default;
  CopyFailure(const CopyFailure& other) : failCopies(other.failCopies), runs(other.runs) {
    if (*failCopies) {
      throw std::bad_alloc();
    }
  }
  CopyFailure& operator=(const CopyFailure&) = delete;
  void operator()() const { ++*runs; }
};

TEST(IdleQueue, FailedCopyGivesTheLockBackAndLosesNoQueuedTask) {
  IdleQueue queue;
  CopyFailure failure;
  const std::function<void()> task(failure);
  queue.async(task);
  *failure.failCopies = true;
  EXPECT_THROW(queue.async(task), std::bad_alloc) << "posting";
  EXPECT_THROW(queue.updateQueue(), std::bad_alloc) << "taking";
  *failure.failCopies = false;
  EXPECT_TRUE(queue.hasTask()) << "the task whose copy failed was removed";
  queue.updateQueue();
  EXPECT_EQ(1, *failure.runs);
  EXPECT_FALSE(queue.hasTask());
}

// Producers post numbered tasks while one consumer thread runs updateQueue. Every task
// must run exactly once, and each producer's tasks in the order it posted them.
TEST(IdleQueue, ManyProducersOneConsumerLoseNoTaskAndRunNoneTwice) {
  constexpr int kProducers = 4;
  constexpr int kTasksEach = 400;
  IdleQueue queue;
  std::vector<std::pair<int, int>> ran;  // the consumer's alone until it is joined
  std::atomic<int> producersDone{0};
  std::thread consumer([&] {
    while (producersDone.load() < kProducers || queue.hasTask()) {
      queue.updateQueue();
    }
  });
  std::vector<std::thread> producers;
  for (int producer = 0; producer < kProducers; ++producer) {
    producers.emplace_back([&, producer] {
      for (int index = 0; index < kTasksEach; ++index) {
        queue.async([&ran, producer, index] { ran.emplace_back(producer, index); });
      }
      ++producersDone;
    });
  }
  for (std::thread& producer : producers) {
    producer.join();
  }
  consumer.join();

  ASSERT_EQ(static_cast<size_t>(kProducers * kTasksEach), ran.size());
  std::vector<int> next(kProducers, 0);
  for (const auto& [producer, index] : ran) {
    ASSERT_EQ(next[producer], index) << "producer " << producer << ": task out of order, lost or run twice";
    ++next[producer];
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
