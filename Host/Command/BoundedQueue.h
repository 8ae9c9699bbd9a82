#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>

namespace Quillmere::Velmira {

// A queue between two threads that holds at most `capacity` items, so a fast decoder
// cannot fill memory while the renderer lags. close() ends it from either side: a
// producer's push then fails, and a consumer's pop gives the items left, then nothing.
template <typename T>
class BoundedQueue {
public:
  explicit BoundedQueue(std::size_t capacity) : mCapacity(capacity == 0 ? 1 : capacity) {}

  // False when the queue was closed before the item could go in.
  bool push(T item) {
    std::unique_lock<std::mutex> lock(mMutex);
    mNotFull.wait(lock, [this] { return mClosed || mItems.size() < mCapacity; });
    if (mClosed) return false;
    mItems.push_back(std::move(item));
    mNotEmpty.notify_one();
    return true;
  }

  // Nothing once the queue is closed and empty.
  std::optional<T> pop() {
    std::unique_lock<std::mutex> lock(mMutex);
    mNotEmpty.wait(lock, [this] { return mClosed || !mItems.empty(); });
    if (mItems.empty()) return std::nullopt;
    T item = std::move(mItems.front());
    mItems.pop_front();
    mNotFull.notify_one();
    return item;
  }

  void close() {
    std::lock_guard<std::mutex> lock(mMutex);
    mClosed = true;
    mNotFull.notify_all();
    mNotEmpty.notify_all();
  }

private:
  const std::size_t mCapacity;
  std::mutex mMutex;
  std::condition_variable mNotFull;
  std::condition_variable mNotEmpty;
  std::deque<T> mItems;
  bool mClosed = false;
};

}  // namespace Quillmere::Velmira
