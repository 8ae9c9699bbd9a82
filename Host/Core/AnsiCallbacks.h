#pragma once

#include "AE_EffectSuites.h"

namespace Quillmere::Velmira {

// The C library as the host lends it to plug-ins: the `ansi` member of the util
// callbacks and "PF ANSI Suite" v1 carry the same functions.
class AnsiCallbacks {
public:
  static int sprintf(A_char* buffer, const A_char* format, ...) __attribute__((format(printf, 2, 3)));
  static A_char* strcpy(A_char* dest, const A_char* src);

  static const PF_ANSICallbacks& callbacks();
  static const PF_ANSICallbacksSuite1& suite();
};

}  // namespace Quillmere::Velmira
