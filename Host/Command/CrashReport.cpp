#include "Command/CrashReport.h"

#include <signal.h>
#include <unistd.h>

#include <cstring>

#include "Media/CrashCleanup.h"

namespace Quillmere::Velmira {

namespace {

constexpr int kFatalSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

void say(const char* text) {
  for (std::size_t left = std::strlen(text); left > 0;) {
    ssize_t written = ::write(STDERR_FILENO, text, left);
    if (written <= 0) return;
    text += written;
    left -= static_cast<std::size_t>(written);
  }
}

extern "C" void reportCrash(int signal) {
  // sigabbrev_np is not async-signal-safe by contract; the names are few enough to spell out.
  const char* name = signal == SIGSEGV  ? "SIGSEGV"
                     : signal == SIGBUS ? "SIGBUS"
                     : signal == SIGILL ? "SIGILL"
                     : signal == SIGFPE ? "SIGFPE"
                                        : "SIGABRT";
  say("velmira: stopped by ");
  say(name);
  say(" inside velmira or a library it uses; under a memory limit (ulimit -v) that is how a library that ran out of "
      "memory ends. Nothing was put in place and the render's temporary files are removed.\n");
  CrashCleanup::removeTemporaries();
  ::_exit(1);
}

}  // namespace

void CrashReport::install() {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  static char alternateStack[64 * 1024];
  stack_t stack{};
  stack.ss_sp = alternateStack;
  stack.ss_size = sizeof alternateStack;
  ::sigaltstack(&stack, nullptr);
  struct sigaction action {};
  action.sa_handler = reportCrash;
  action.sa_flags = SA_ONSTACK | SA_RESETHAND;
  sigemptyset(&action.sa_mask);
  for (int signal : kFatalSignals) ::sigaction(signal, &action, nullptr);
#endif
}

}  // namespace Quillmere::Velmira
