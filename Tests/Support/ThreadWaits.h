// Waiting on other threads in tests. The deadline only turns a hang into a clear
// failure; no test asserts on how long anything takes.
#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace Quillmere::Velmira {

// True once `condition` holds; false if it never did within a generous deadline (the
// thread sanitizer on two busy cores is slow).
inline bool eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace Quillmere::Velmira
