#pragma once

#include <stdexcept>
#include <string>

namespace Quillmere::Velmira {

// What the command reports before it exits. The kind decides the exit code, so that a
// script can tell a mistyped command line from a render that went wrong, and both from one
// that a signal stopped.
class HostError : public std::runtime_error {
public:
  enum class Kind { Usage, Failure, Interrupted };

  HostError(Kind kind, const std::string& message, int signal = 0)
      : std::runtime_error(message), mKind(kind), mSignal(signal) {}

  static HostError usage(const std::string& message) { return HostError(Kind::Usage, message); }
  static HostError failure(const std::string& message) { return HostError(Kind::Failure, message); }
  static HostError interrupted(int signal) { return HostError(Kind::Interrupted, "interrupted", signal); }

  Kind kind() const { return mKind; }
  // The signal that stopped the work, for Interrupted.
  int signal() const { return mSignal; }

private:
  Kind mKind;
  int mSignal;
};

}  // namespace Quillmere::Velmira
