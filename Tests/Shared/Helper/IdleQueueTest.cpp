#include "Helper/IdleQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Quillmere::Velmira {
namespace {

// A hang here means the queue's lock was left taken; ctest's time-out reports it.

// A task whose copies run out of memory while `*failing` is set.
struct Fragile {
  bool* failing;
  std::string* ran;
  Fragile(bool* flag, std::string* log) : failing(flag), ran(log) {}
  Fragile(const Fragile& other) : Fragile(other.failing, other.ran) {
    if (*failing) throw std::bad_alloc();
  }
  void operator()() const { *ran += "c"; }
};

// A task posted by a running task waits for the next call. A task that fails, or whose copy
// fails, is the only one lost, and leaves the queue unlocked.
TEST(IdleQueue, TasksRunInPostingOrderOnePerUpdateAndAFailureLosesNoOtherTask) {
  IdleQueue queue;
  std::string ran;
  bool failing = false;
  const std::function<void()> fragile = Fragile(&failing, &ran);
  queue.updateQueue();
  queue.async([&ran] { ran += "a"; });
  queue.async([] { throw std::runtime_error("task failed"); });
  queue.async(std::function<void()>());
  queue.async([&] {
    ran += "b";
    queue.async([&ran] { ran += "d"; });
  });
  queue.async(fragile);
  failing = true;
  EXPECT_THROW(queue.async(fragile), std::bad_alloc) << "posting";
  queue.updateQueue();
  EXPECT_THROW(queue.updateQueue(), std::runtime_error);
  EXPECT_THROW(queue.updateQueue(), std::bad_function_call);
  queue.updateQueue();
  EXPECT_EQ("ab", ran);
  EXPECT_THROW(queue.updateQueue(), std::bad_alloc) << "taking";
  failing = false;
  for (const char* expected : {"abc", "abcd", "abcd"}) {
    queue.updateQueue();
    EXPECT_EQ(expected, ran);
  }
  queue.async([&ran] { ran += "dropped"; });
  queue.clearAsyncQueue();
  EXPECT_FALSE(queue.hasTask());
}

// Producers post tasks while one consumer thread runs updateQueue: every task runs once.
TEST(IdleQueue, ManyProducersOneConsumerLoseNoTaskAndRunNoneTwice) {
  constexpr int kProducers = 4, kTasksEach = 400;
  IdleQueue queue;
  std::vector<int> runs(kProducers, 0);  // the consumer's alone until it is joined
  std::atomic<int> producing{kProducers};
  std::thread consumer([&] {
    while (producing > 0 || queue.hasTask()) queue.updateQueue();
  });
  std::vector<std::thread> producers;
  for (int producer = 0; producer < kProducers; ++producer) {
    producers.emplace_back([&, producer] {
      for (int task = 0; task < kTasksEach; ++task) queue.async([&runs, producer] { ++runs[producer]; });
      --producing;
    });
  }
  for (std::thread& producer : producers) producer.join();
  consumer.join();
  EXPECT_EQ(std::vector<int>(kProducers, kTasksEach), runs) << "tasks run, by producer";
}

}  // namespace
}  // namespace Quillmere::Velmira
