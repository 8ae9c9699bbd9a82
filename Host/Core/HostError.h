#pragma once

#include <stdexcept>
#include <string>

namespace Quillmere::Velmira {

// What the command reports before it exits. The kind decides the exit code, so that a
// script can tell a mistyped command line from a render that went wrong.
class HostError : public std::runtime_error {
public:
  enum class Kind { Usage, Failure };

  HostError(Kind kind, const std::string& message) : std::runtime_error(message), mKind(kind) {}

  static HostError usage(const std::string& message) { return HostError(Kind::Usage, message); }
  static HostError failure(const std::string& message) { return HostError(Kind::Failure, message); }

  Kind kind() const { return mKind; }

private:
  Kind mKind;
};

}  // namespace Quillmere::Velmira
