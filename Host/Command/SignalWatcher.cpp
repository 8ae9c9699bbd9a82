#include "Command/SignalWatcher.h"

#include <pthread.h>

#include <chrono>

#include <fmt/format.h>

namespace Quillmere::Velmira {

namespace {

constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr auto kInsistAfter = std::chrono::seconds(1);

// A blocked signal is kept pending even where its action is to ignore it, so one ignored at the start must not be
// blocked, or sigwait would take it after all.
bool ignored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

SignalWatcher::SignalWatcher() {
  sigemptyset(&mWatched);
  for (int signal : kStopSignals)
    if (!ignored(signal)) sigaddset(&mWatched, signal);
  pthread_sigmask(SIG_BLOCK, &mWatched, &mEarlierMask);
  mThread = std::thread([this] { watch(); });
}

SignalWatcher::~SignalWatcher() {
  mClosing = true;
  // Aimed at the watching thread alone, so no other thread sees it; any watched signal wakes sigwait.
  for (int signal : kStopSignals) {
    if (sigismember(&mWatched, signal) == 1) {
      pthread_kill(mThread.native_handle(), signal);
      break;
    }
  }
  mThread.join();
  pthread_sigmask(SIG_SETMASK, &mEarlierMask, nullptr);
}

void SignalWatcher::watch() {
  if (sigisemptyset(&mWatched)) return;
  std::chrono::steady_clock::time_point first;
  for (;;) {
    int signal = 0;
    if (sigwait(&mWatched, &signal) != 0 || mClosing) return;
    int none = 0;
    if (mReceived.compare_exchange_strong(none, signal)) first = std::chrono::steady_clock::now();
    // One request may come twice at once, from the terminal to the process group and from a wrapper passing it on;
    // only a signal well after the first is the person insisting.
    if (std::chrono::steady_clock::now() - first < kInsistAfter) continue;
    // The signal then acts as it would on any program.
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    pthread_kill(pthread_self(), signal);
  }
}

std::string SignalWatcher::nameOf(int signal) {
  switch (signal) {
    case SIGINT: return "SIGINT";
    case SIGTERM: return "SIGTERM";
    case SIGHUP: return "SIGHUP";
    default: return fmt::format("signal {}", signal);
  }
}

}  // namespace Quillmere::Velmira
