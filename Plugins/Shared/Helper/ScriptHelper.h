// Runs a script in the host's scripting engine and gives its result back as text.
#pragma once

#include <string>

#include "SPBasic.h"

namespace Quillmere::Velmira {

class ScriptHelper {
public:
  ScriptHelper() = delete;

  // `script` is zero-terminated. Throws the integer A_Err_MISSING_SUITE, before the script
  // runs, when the host lacks the AEGP Utility (11) or Memory (1) suite. The result of a
  // script the host gives no result text for is the empty string: the host's error text
  // is never returned, so a caller that must tell failure from an empty result has its
  // script report failure in its result.
  static std::string RunSriptAndGetStringResult(SPBasicSuite* basicSuite, const char* script);

  // The text without the white space at either end ("C" locale classes: blank, tab, line
  // feed, vertical tab, form feed, carriage return); white space inside stays.
  static std::string TrimStringWhiteSpaces(const std::string& text);
};

}  // namespace Quillmere::Velmira
