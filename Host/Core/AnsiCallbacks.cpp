#include "Core/AnsiCallbacks.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace Quillmere::Velmira {

int AnsiCallbacks::sprintf(A_char* buffer, const A_char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  // Unbounded, as the effect API defines it: the caller owns the buffer's size.
  int written = std::vsprintf(buffer, format, arguments);
  va_end(arguments);
  return written;
}

A_char* AnsiCallbacks::strcpy(A_char* dest, const A_char* src) { return std::strcpy(dest, src); }

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

}  // namespace

const PF_ANSICallbacks& AnsiCallbacks::callbacks() {
  static const PF_ANSICallbacks kCallbacks{ansiAtan,
                                           ansiAtan2,
                                           ansiCeil,
                                           ansiCos,
                                           ansiExp,
                                           ansiFabs,
                                           ansiFloor,
                                           ansiFmod,
                                           ansiHypot,
                                           ansiLog,
                                           ansiLog10,
                                           ansiPow,
                                           ansiSin,
                                           ansiSqrt,
                                           ansiTan,
                                           AnsiCallbacks::sprintf,
                                           AnsiCallbacks::strcpy,
                                           ansiAsin,
                                           ansiAcos};
  return kCallbacks;
}

const PF_ANSICallbacksSuite1& AnsiCallbacks::suite() {
  static const PF_ANSICallbacksSuite1 kSuite{ansiAtan,
                                             ansiAtan2,
                                             ansiCeil,
                                             ansiCos,
                                             ansiExp,
                                             ansiFabs,
                                             ansiFloor,
                                             ansiFmod,
                                             ansiHypot,
                                             ansiLog,
                                             ansiLog10,
                                             ansiPow,
                                             ansiSin,
                                             ansiSqrt,
                                             ansiTan,
                                             AnsiCallbacks::sprintf,
                                             AnsiCallbacks::strcpy,
                                             ansiAsin,
                                             ansiAcos};
  return kSuite;
}

}  // namespace Quillmere::Velmira
