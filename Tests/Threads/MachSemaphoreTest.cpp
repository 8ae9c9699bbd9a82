#include "MachSemaphore.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "ThreadWaits.h"

namespace Quillmere::Velmira {
namespace {

semaphore_t makeSemaphore(int policy, int value) {
  semaphore_t semaphore = SEMAPHORE_NULL;
  EXPECT_EQ(KERN_SUCCESS, semaphore_create(mach_task_self_, &semaphore, policy, value));
  return semaphore;
}

int waiters(semaphore_t semaphore) {
  int count = -1;
  EXPECT_EQ(KERN_SUCCESS, semaphore_waiter_count(semaphore, &count));
  return count;
}

// Threads that block on one semaphore and note, in the order they are woken, who they are
// and what the kernel answered.
class WaitingThreads {
public:
  explicit WaitingThreads(semaphore_t semaphore) : mSemaphore(semaphore) {}
  ~WaitingThreads() { join(); }

  // Returns only once the new thread is queued, so the queue order is the start order.
  void startNext() {
    const int id = static_cast<int>(mThreads.size());
    mThreads.emplace_back([this, id] {
      const kern_return_t result = semaphore_wait(mSemaphore);
      std::lock_guard<std::mutex> lock(mMutex);
      mWoken.push_back(id);
      mResults.push_back(result);
    });
    ASSERT_TRUE(eventually([&] { return waiters(mSemaphore) == id + 1; })) << "thread " << id << " never queued";
  }

  size_t wokenCount() {
    std::lock_guard<std::mutex> lock(mMutex);
    return mWoken.size();
  }

  void join() {
    for (std::thread& thread : mThreads) {
      if (thread.joinable()) {
        thread.join();
      }
    }
  }

  // Read after join.
  std::vector<int> mWoken;
  std::vector<kern_return_t> mResults;

private:
  semaphore_t mSemaphore;
  std::mutex mMutex;
  std::vector<std::thread> mThreads;
};

struct WakeOrderCase {
  const char* name;
  int policy;
  std::vector<int> wakeOrder;
};

void PrintTo(const WakeOrderCase& c, std::ostream* out) { *out << c.name; }

class MachSemaphoreWakeOrder : public testing::TestWithParam<WakeOrderCase> {};

TEST_P(MachSemaphoreWakeOrder, EachSignalWakesTheWaiterThePolicyPicks) {
  const semaphore_t semaphore = makeSemaphore(GetParam().policy, 0);
  {
    WaitingThreads threads(semaphore);
    for (int i = 0; i < 3; ++i) {
      threads.startNext();
    }
    for (size_t woken = 1; woken <= 3; ++woken) {
      ASSERT_EQ(KERN_SUCCESS, semaphore_signal(semaphore));
      // One at a time, so that the order noted is the order of waking.
      ASSERT_TRUE(eventually([&] { return threads.wokenCount() == woken; })) << "signal " << woken << " woke nobody";
    }
    threads.join();
    EXPECT_EQ(GetParam().wakeOrder, threads.mWoken) << "policy " << GetParam().name;
    EXPECT_EQ(std::vector<kern_return_t>(3, KERN_SUCCESS), threads.mResults);
  }
  EXPECT_EQ(KERN_SUCCESS, semaphore_destroy(mach_task_self_, semaphore));
}

INSTANTIATE_TEST_SUITE_P(Policies, MachSemaphoreWakeOrder,
                         testing::Values(WakeOrderCase{"FIFO", SYNC_POLICY_FIFO, {0, 1, 2}},
                                         WakeOrderCase{"LIFO", SYNC_POLICY_LIFO, {2, 1, 0}}),
                         [](const testing::TestParamInfo<WakeOrderCase>& param) { return param.param.name; });

TEST(MachSemaphore, StartCountIsTakenWithoutBlockingThenWaitQueues) {
  const semaphore_t semaphore = makeSemaphore(SYNC_POLICY_LIFO, 2);
  EXPECT_EQ(KERN_SUCCESS, semaphore_wait(semaphore));
  EXPECT_EQ(KERN_SUCCESS, semaphore_wait(semaphore));
  {
    WaitingThreads threads(semaphore);
    threads.startNext();
    EXPECT_EQ(0u, threads.wokenCount()) << "a third wait passed a count of 2";
    semaphore_signal(semaphore);
  }
  semaphore_destroy(mach_task_self_, semaphore);
}

TEST(MachSemaphore, SignalAllWakesTheWaitersAndLeavesNoCountBehind) {
  const semaphore_t semaphore = makeSemaphore(SYNC_POLICY_LIFO, 0);
  {
    WaitingThreads threads(semaphore);
    threads.startNext();
    threads.startNext();
    EXPECT_EQ(KERN_SUCCESS, semaphore_signal_all(semaphore));
    threads.join();
    EXPECT_EQ(std::vector<kern_return_t>(2, KERN_SUCCESS), threads.mResults);
  }
  // With nobody waiting, signal_all must not leave a count that lets the next wait through.
  EXPECT_EQ(KERN_SUCCESS, semaphore_signal_all(semaphore));
  {
    WaitingThreads threads(semaphore);
    threads.startNext();
    EXPECT_EQ(0u, threads.wokenCount()) << "signal_all without waiters let a later wait through";
    semaphore_signal(semaphore);
  }
  semaphore_destroy(mach_task_self_, semaphore);
}

TEST(MachSemaphore, DestroyWakesWaitersWithTerminatedAndRetiresTheName) {
  const semaphore_t semaphore = makeSemaphore(SYNC_POLICY_FIFO, 0);
  WaitingThreads threads(semaphore);
  threads.startNext();
  threads.startNext();
  EXPECT_EQ(KERN_SUCCESS, semaphore_destroy(mach_task_self_, semaphore));
  threads.join();
  EXPECT_EQ(std::vector<kern_return_t>(2, KERN_TERMINATED), threads.mResults);

  EXPECT_EQ(KERN_INVALID_NAME, semaphore_wait(semaphore));
  EXPECT_EQ(KERN_INVALID_NAME, semaphore_signal(semaphore));
  EXPECT_EQ(KERN_INVALID_NAME, semaphore_signal_all(semaphore));
  EXPECT_EQ(KERN_INVALID_NAME, semaphore_destroy(mach_task_self_, semaphore));
  EXPECT_EQ(KERN_INVALID_ARGUMENT, semaphore_wait(SEMAPHORE_NULL));
}

TEST(MachSemaphore, NamesAreNotReusedWhileAlive) {
  const semaphore_t first = makeSemaphore(SYNC_POLICY_FIFO, 0);
  const semaphore_t second = makeSemaphore(SYNC_POLICY_FIFO, 1);
  EXPECT_NE(SEMAPHORE_NULL, first);
  EXPECT_NE(first, second);
  // The count of one must not leak into the other.
  EXPECT_EQ(KERN_SUCCESS, semaphore_wait(second));
  EXPECT_EQ(0, waiters(first));
  semaphore_destroy(mach_task_self_, first);
  semaphore_destroy(mach_task_self_, second);
}

struct CreateCase {
  const char* what;
  task_t task;
  bool giveOutput;
  int policy;
  int value;
};

void PrintTo(const CreateCase& c, std::ostream* out) { *out << c.what; }

class MachSemaphoreCreate : public testing::TestWithParam<CreateCase> {};

TEST_P(MachSemaphoreCreate, RefusesBadArgumentsAndLeavesTheOutputAlone) {
  const CreateCase& c = GetParam();
  semaphore_t semaphore = 12345;
  EXPECT_EQ(KERN_INVALID_ARGUMENT,
            semaphore_create(c.task, c.giveOutput ? &semaphore : nullptr, c.policy, c.value))
      << c.what;
  EXPECT_EQ(12345u, semaphore) << c.what;
}

INSTANTIATE_TEST_SUITE_P(BadArguments, MachSemaphoreCreate,
                         testing::Values(CreateCase{"another task", mach_task_self_ + 1, true, SYNC_POLICY_FIFO, 0},
                                         CreateCase{"no output", mach_task_self_, false, SYNC_POLICY_FIFO, 0},
                                         CreateCase{"policy 1", mach_task_self_, true, 1, 0},
                                         CreateCase{"negative count", mach_task_self_, true, SYNC_POLICY_LIFO, -1}));

}  // namespace
}  // namespace Quillmere::Velmira
