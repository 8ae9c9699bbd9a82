#include "Core/AnsiCallbacks.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "Core/CallRecorder.h"

namespace Quillmere::Velmira {

namespace {

A_FpLong ansiAtan(A_FpLong x) { return std::atan(x); }
A_FpLong ansiAtan2(A_FpLong y, A_FpLong x) { return std::atan2(y, x); }
A_FpLong ansiCeil(A_FpLong x) { return std::ceil(x); }
A_FpLong ansiCos(A_FpLong x) { return std::cos(x); }
A_FpLong ansiExp(A_FpLong x) { return std::exp(x); }
A_FpLong ansiFabs(A_FpLong x) { return std::fabs(x); }
A_FpLong ansiFloor(A_FpLong x) { return std::floor(x); }
A_FpLong ansiFmod(A_FpLong x, A_FpLong y) { return std::fmod(x, y); }
A_FpLong ansiHypot(A_FpLong x, A_FpLong y) { return std::hypot(x, y); }
A_FpLong ansiLog(A_FpLong x) { return std::log(x); }
A_FpLong ansiLog10(A_FpLong x) { return std::log10(x); }
A_FpLong ansiPow(A_FpLong x, A_FpLong y) { return std::pow(x, y); }
A_FpLong ansiSin(A_FpLong x) { return std::sin(x); }
A_FpLong ansiSqrt(A_FpLong x) { return std::sqrt(x); }
A_FpLong ansiTan(A_FpLong x) { return std::tan(x); }
A_FpLong ansiAsin(A_FpLong x) { return std::asin(x); }
A_FpLong ansiAcos(A_FpLong x) { return std::acos(x); }
A_char* ansiStrcpy(A_char* dest, const A_char* src) { return std::strcpy(dest, src); }

// Unbounded, as the effect API defines it: the caller owns the buffer's size. The text is recorded once formatted;
// a call that a fault fails writes nothing.
int formatInto(const char* route, A_char* buffer, const A_char* format, va_list arguments)
    __attribute__((format(printf, 3, 0)));
int formatInto(const char* route, A_char* buffer, const A_char* format, va_list arguments) {
  if (!CallRecorder::active()) return std::vsprintf(buffer, format, arguments);
  va_list measure;
  va_copy(measure, arguments);
  int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  std::string text(static_cast<std::size_t>(length < 0 ? 0 : length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  if (CallRecorder::enterActive(route, text.c_str()) != 0) return -1;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return static_cast<int>(text.size());
}

template <const char* Route>
__attribute__((format(printf, 2, 3))) int ansiSprintf(A_char* buffer, const A_char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  int written = formatInto(Route, buffer, format, arguments);
  va_end(arguments);
  return written;
}

constexpr char kUtilsSprintf[] = "ansi.sprintf";
constexpr char kSuiteSprintf[] = "ANSISuite.sprintf";

#define VELMIRA_ANSI_TABLE(ROUTE, SPRINTF)                                                         \
  {                                                                                                \
    VELMIRA_TRACED(ROUTE "atan", ansiAtan), VELMIRA_TRACED(ROUTE "atan2", ansiAtan2),              \
        VELMIRA_TRACED(ROUTE "ceil", ansiCeil), VELMIRA_TRACED(ROUTE "cos", ansiCos),              \
        VELMIRA_TRACED(ROUTE "exp", ansiExp), VELMIRA_TRACED(ROUTE "fabs", ansiFabs),              \
        VELMIRA_TRACED(ROUTE "floor", ansiFloor), VELMIRA_TRACED(ROUTE "fmod", ansiFmod),          \
        VELMIRA_TRACED(ROUTE "hypot", ansiHypot), VELMIRA_TRACED(ROUTE "log", ansiLog),            \
        VELMIRA_TRACED(ROUTE "log10", ansiLog10), VELMIRA_TRACED(ROUTE "pow", ansiPow),            \
        VELMIRA_TRACED(ROUTE "sin", ansiSin), VELMIRA_TRACED(ROUTE "sqrt", ansiSqrt),              \
        VELMIRA_TRACED(ROUTE "tan", ansiTan), SPRINTF, VELMIRA_TRACED(ROUTE "strcpy", ansiStrcpy), \
        VELMIRA_TRACED(ROUTE "asin", ansiAsin), VELMIRA_TRACED(ROUTE "acos", ansiAcos)             \
  }

}  // namespace

const PF_ANSICallbacks& AnsiCallbacks::callbacks() {
  static const PF_ANSICallbacks kCallbacks VELMIRA_ANSI_TABLE("ansi.", ansiSprintf<kUtilsSprintf>);
  return kCallbacks;
}

const PF_ANSICallbacksSuite1& AnsiCallbacks::suite() {
  static const PF_ANSICallbacksSuite1 kSuite VELMIRA_ANSI_TABLE("ANSISuite.", ansiSprintf<kSuiteSprintf>);
  return kSuite;
}

}  // namespace Quillmere::Velmira
