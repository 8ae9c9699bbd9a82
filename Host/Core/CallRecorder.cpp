#include "Core/CallRecorder.h"

#include <algorithm>
#include <atomic>

namespace Quillmere::Velmira {

namespace {

// Callbacks that take no effect_ref (suites, the C library, handles) reach the recorder through this.
std::atomic<CallRecorder*> gActive{nullptr};

}  // namespace

CallRecorder* CallRecorder::active() { return gActive.load(); }

void CallRecorder::setActive(CallRecorder* recorder) { gActive.store(recorder); }

void CallRecorder::failCall(const std::string& name, int nth, int error) {
  std::lock_guard<std::mutex> lock(mMutex);
  mFaults.push_back({name, nth, error, nullptr});
}

void CallRecorder::throwOnCall(const std::string& name, int nth, std::exception_ptr exception) {
  std::lock_guard<std::mutex> lock(mMutex);
  mFaults.push_back({name, nth, 0, std::move(exception)});
}

std::vector<CallRecorder::Call> CallRecorder::calls() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return mCalls;
}

std::vector<std::string> CallRecorder::names() const {
  std::vector<std::string> names;
  for (const Call& call : calls()) names.push_back(call.name);
  return names;
}

int CallRecorder::count(const std::string& name) const {
  std::vector<std::string> all = names();
  return static_cast<int>(std::count(all.begin(), all.end(), name));
}

int CallRecorder::enter(Call call) {
  Fault fault{};
  {
    std::lock_guard<std::mutex> lock(mMutex);
    int nth = ++mCounts[call.name];
    auto found = std::find_if(mFaults.begin(), mFaults.end(),
                              [&](const Fault& f) { return f.name == call.name && f.nth == nth; });
    if (found != mFaults.end()) fault = *found;
    mCalls.push_back(std::move(call));
  }
  if (fault.exception) std::rethrow_exception(fault.exception);
  return fault.error;
}

}  // namespace Quillmere::Velmira
