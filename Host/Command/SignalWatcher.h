// SIGINT, SIGTERM and SIGHUP as requests to stop, taken where they can do no harm.
#pragma once

#include <signal.h>

#include <atomic>
#include <string>
#include <thread>

namespace Quillmere::Velmira {

// Blocks the three signals in the thread that makes it, so that every thread started afterwards (the pipeline's,
// FFmpeg's, Mesa's) inherits the mask, and takes them with sigwait on a thread of its own. There is no handler,
// hence nothing async-signal-unsafe: the first signal is only recorded, and the render stops at its next check,
// unwinding as after any failure so that its temporary files go. A second signal, a second or more after the first,
// ends the process at once by the signal's own default action, for a render that does not reach a check soon; what
// it leaves, the next render into the folder removes (FolderLock). A signal the command was started ignoring (nohup, a
// background job) stays ignored. Make it before any other thread, and only one at a time.
class SignalWatcher {
public:
  SignalWatcher();
  // Stops the watching thread and gives the signals back their earlier mask.
  ~SignalWatcher();
  SignalWatcher(const SignalWatcher&) = delete;
  SignalWatcher& operator=(const SignalWatcher&) = delete;

  // The first signal received, 0 while none has come.
  const std::atomic<int>& received() const { return mReceived; }

  // "SIGINT" and the like.
  static std::string nameOf(int signal);

private:
  void watch();

  sigset_t mWatched;
  sigset_t mEarlierMask;
  std::atomic<int> mReceived{0};
  std::atomic<bool> mClosing{false};
  std::thread mThread;
};

}  // namespace Quillmere::Velmira
