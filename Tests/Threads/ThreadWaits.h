// Waiting helpers for tests that watch other threads. A deadline only turns a hang into a
// clear failure; no test asserts on how long anything takes.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace Quillmere::Velmira {

// Generous, since the thread sanitizer on two busy cores is slow.
constexpr std::chrono::seconds kHangDeadline(20);

// Polls until `condition` holds; false if it never did before the deadline.
inline bool eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kHangDeadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// Runs `call` on a thread of its own. A call that never returns would leave that thread
// using the test's objects after the test ended, so a hang ends the process instead,
// naming what hung.
inline void mustReturn(const char* what, const std::function<void()>& call) {
  auto done = std::make_shared<std::promise<void>>();
  std::future<void> finished = done->get_future();
  std::thread([call, done] {
    call();
    done->set_value();
  }).detach();
  if (finished.wait_for(kHangDeadline) != std::future_status::ready) {
    std::fprintf(stderr, "%s did not return: a lock was left taken\n", what);
    std::abort();
  }
}

}  // namespace Quillmere::Velmira
