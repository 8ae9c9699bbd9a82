// A crash ends the command with a message and exit 1, its temporary files gone, rather than with a signal.
#pragma once

namespace Quillmere::Velmira {

// Under a memory limit (ulimit -v) it is not velmira's own allocations that fail worst: Mesa's shader compiler and
// other libraries dereference the null that malloc gave them and end the process with SIGSEGV. Such a crash cannot be
// undone, but it can be reported plainly and cleaned up after: install() sets handlers for SIGSEGV, SIGBUS, SIGILL,
// SIGFPE and SIGABRT that print which signal came, remove the render's temporaries (CrashCleanup) and exit 1, on an
// alternate stack so that a stack overflow is reported too. Sanitizer builds keep their own handlers and reports.
class CrashReport {
public:
  static void install();
};

}  // namespace Quillmere::Velmira
