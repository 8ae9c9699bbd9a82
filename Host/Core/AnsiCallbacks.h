#pragma once

#include "AE_EffectSuites.h"

namespace Quillmere::Velmira {

// The C library as the host lends it to plug-ins: the `ansi` member of the util callbacks and "PF ANSI Suite" v1
// carry the same functions, traced under their route ("ansi.sprintf", "ANSISuite.sprintf").
class AnsiCallbacks {
public:
  static const PF_ANSICallbacks& callbacks();
  static const PF_ANSICallbacksSuite1& suite();
};

}  // namespace Quillmere::Velmira
