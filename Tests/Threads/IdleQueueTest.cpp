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

#include "ThreadWaits.h"

namespace Quillmere::Velmira {
namespace {

TEST(IdleQueue, NewQueueHasNoTaskAndUpdateReturnsAtOnce) {
  IdleQueue queue;
  EXPECT_FALSE(queue.hasTask());
  mustReturn("updateQueue on an empty queue", [&] { queue.updateQueue(); });
  EXPECT_FALSE(queue.hasTask());
}

TEST(IdleQueue, TasksRunInPostingOrderOnePerUpdate) {
  IdleQueue queue;
  std::string ran;
  for (char name : std::string("abc")) {
    queue.async([&ran, name] { ran += name; });
  }
  for (const char* expected : {"a", "ab", "abc"}) {
    EXPECT_TRUE(queue.hasTask()) << "before running up to " << expected;
    queue.updateQueue();
    EXPECT_EQ(expected, ran);
  }
  EXPECT_FALSE(queue.hasTask());
}

TEST(IdleQueue, ClearDropsEveryTaskWithoutRunningIt) {
  IdleQueue queue;
  int runs = 0;
  queue.async([&runs] { ++runs; });
  queue.async([&runs] { ++runs; });
  queue.clearAsyncQueue();
  EXPECT_FALSE(queue.hasTask());
  queue.updateQueue();
  EXPECT_EQ(0, runs);
}

TEST(IdleQueue, QueuedTasksAreDestroyedUnrunWithTheQueue) {
  auto token = std::make_shared<int>(0);
  {
    IdleQueue queue;
    queue.async([token] { ++*token; });
    EXPECT_EQ(2, token.use_count()) << "the queue keeps one copy of the task";
  }
  EXPECT_EQ(1, token.use_count()) << "the queue's copy outlived it";
  EXPECT_EQ(0, *token);
}

struct FailingTaskCase {
  const char* name;
  std::function<void()> task;
  std::function<void(IdleQueue&)> expectThrow;
};

void PrintTo(const FailingTaskCase& c, std::ostream* out) { *out << c.name; }

class IdleQueueFailingTask : public testing::TestWithParam<FailingTaskCase> {};

// Whatever way the task fails, it leaves the queue, the lock is free again and the
// task behind it still runs on the next call.
TEST_P(IdleQueueFailingTask, LeavesQueueUnlockedWithLaterTasksKept) {
  IdleQueue queue;
  bool laterRan = false;
  queue.async(GetParam().task);
  queue.async([&laterRan] { laterRan = true; });

  GetParam().expectThrow(queue);

  mustReturn("hasTask after a failed task", [&] { EXPECT_TRUE(queue.hasTask()); });
  mustReturn("async after a failed task", [&] { queue.async([] {}); });
  queue.updateQueue();
  EXPECT_TRUE(laterRan) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(
    Failures, IdleQueueFailingTask,
    testing::Values(
        FailingTaskCase{"Throwing", [] { throw std::runtime_error("task failed"); },
                        [](IdleQueue& queue) { EXPECT_THROW(queue.updateQueue(), std::runtime_error); }},
        FailingTaskCase{"Empty", std::function<void()>(),
                        [](IdleQueue& queue) { EXPECT_THROW(queue.updateQueue(), std::bad_function_call); }}),
    [](const testing::TestParamInfo<FailingTaskCase>& param) { return param.param.name; });

// A task whose copies run out of memory once `failCopies` is set.
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

TEST(IdleQueue, FailedCopyWhilePostingGivesTheLockBack) {
  IdleQueue queue;
  CopyFailure failure;
  const std::function<void()> task(failure);
  *failure.failCopies = true;
  EXPECT_THROW(queue.async(task), std::bad_alloc);
  mustReturn("hasTask after a failed async", [&] { EXPECT_FALSE(queue.hasTask()); });
}

TEST(IdleQueue, FailedCopyWhileTakingGivesTheLockBackAndKeepsTheTask) {
  IdleQueue queue;
  CopyFailure failure;
  queue.async(std::function<void()>(failure));
  *failure.failCopies = true;
  EXPECT_THROW(queue.updateQueue(), std::bad_alloc);
  mustReturn("hasTask after a failed take", [&] { EXPECT_TRUE(queue.hasTask()); });

  *failure.failCopies = false;
  queue.updateQueue();
  EXPECT_EQ(1, *failure.runs);
  EXPECT_FALSE(queue.hasTask());
}

TEST(IdleQueue, TaskThatPostsATaskDoesNotDeadlockAndTheNewOneWaits) {
  IdleQueue queue;
  std::vector<std::string> ran;
  queue.async([&] {
    ran.push_back("outer");
    EXPECT_FALSE(queue.hasTask());
    queue.async([&] { ran.push_back("posted"); });
  });
  mustReturn("updateQueue running a posting task", [&] { queue.updateQueue(); });
  EXPECT_EQ(std::vector<std::string>{"outer"}, ran);
  EXPECT_TRUE(queue.hasTask());
  queue.updateQueue();
  EXPECT_EQ((std::vector<std::string>{"outer", "posted"}), ran);
}

TEST(IdleQueue, TaskThatUpdatesTheQueueRunsTheNextInsideItself) {
  IdleQueue queue;
  std::vector<std::string> ran;
  queue.async([&] {
    ran.push_back("first begins");
    queue.updateQueue();
    ran.push_back("first ends");
  });
  queue.async([&] { ran.push_back("second"); });
  mustReturn("updateQueue from inside a task", [&] { queue.updateQueue(); });
  EXPECT_EQ((std::vector<std::string>{"first begins", "second", "first ends"}), ran);
}

// Producers post numbered tasks while one consumer thread runs updateQueue. Every task
// must run exactly once, and each producer's tasks in the order it posted them.
TEST(IdleQueue, ManyProducersOneConsumerLoseNoTaskAndRunNoneTwice) {
  constexpr int kProducers = 4;
  constexpr int kTasksEach = 400;
  IdleQueue queue;
  std::vector<std::pair<int, int>> ran;  // touched by the consumer thread only
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
