#pragma once

#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

namespace Quillmere::Velmira {

// Every call an effect makes into the host, callbacks and suite functions alike, in the order made, and the faults
// asked of the host: the nth call of a function fails with an error, or throws. A host records only while a recorder
// is attached to it, so a long render keeps nothing.
//
// Calls are named as the effect API names them: "checkout_param", "add_param", "AcquireSuite", ... A function that
// two routes offer is named by its route: "ansi.sprintf" through in_data->utils, "ANSISuite.sprintf" through the PF
// ANSI suite, "host_new_handle" and "HandleSuite.host_new_handle".
class CallRecorder {
public:
  struct Call {
    std::string name;
    std::vector<std::int64_t> numbers;  // the integer arguments, in order (effect_ref and other pointers left out)
    std::string text;                   // the first text argument (a suite's name, strcpy's source, sprintf's result)
  };

  // Counted from 1, over the recorder's life.
  void failCall(const std::string& name, int nth, int error);
  void throwOnCall(const std::string& name, int nth, std::exception_ptr exception);

  std::vector<Call> calls() const;
  std::vector<std::string> names() const;
  int count(const std::string& name) const;

  // The recorder of the host that is running, if it has one; callbacks record through it.
  static CallRecorder* active();
  static void setActive(CallRecorder* recorder);

  // Notes a call and returns the error a fault asks for it (0 for none), or throws what a fault asks.
  int enter(Call call);

  template <typename... Args>
  static int enterActive(const char* name, const Args&... args) {
    CallRecorder* recorder = active();
    if (!recorder) return 0;
    Call call{name, {}, {}};
    (note(call, args), ...);
    return recorder->enter(std::move(call));
  }

private:
  struct Fault {
    std::string name;
    int nth;
    int error;
    std::exception_ptr exception;
  };

  template <typename T>
  static void note(Call& call, const T& value) {
    if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) {
      call.numbers.push_back(static_cast<std::int64_t>(value));
    } else if constexpr (std::is_same_v<T, const char*>) {
      // Only const text is read: a char* is a buffer still to be written.
      if (call.text.empty() && value) call.text = value;
    }
  }

  mutable std::mutex mMutex;
  std::vector<Call> mCalls;
  std::map<std::string, int> mCounts;
  std::vector<Fault> mFaults;
};

// A host function wrapped so that every call is noted by the active recorder and can be made to fail: the wrapper
// answers a fault with the error for a result code, a null pointer, or nothing, without calling the function.
template <typename Name, auto Function>
struct Traced;

template <typename Name, typename Result, typename... Args, Result (*Function)(Args...)>
struct Traced<Name, Function> {
  static Result call(Args... args) {
    if (int error = CallRecorder::enterActive(Name::name(), args...)) {
      if constexpr (std::is_void_v<Result>) {
        return;
      } else if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
      } else {
        return static_cast<Result>(error);
      }
    }
    return Function(args...);
  }
};

}  // namespace Quillmere::Velmira

// The function pointer of FUNCTION traced under NAME, for a callback or suite table.
#define VELMIRA_TRACED(NAME, FUNCTION)                           \
  [] {                                                           \
    struct Name {                                                \
      static const char* name() { return NAME; }                 \
    };                                                           \
    return &::Quillmere::Velmira::Traced<Name, &FUNCTION>::call; \
  }()
