#include "Helper/ScriptHelper.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "AE_GeneralPlug.h"
#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "Core/MemoryHandles.h"
#include "Support/NoEffect.h"

namespace Quillmere::Velmira {
namespace {

using Names = std::vector<std::string>;

// A script engine for the host, offered as its AEGP Utility Suite (11): a script leaves the texts a test sets (none
// where unset) in handles of the host's memory suite, no terminator added.
std::optional<std::string> gResult, gError;
std::string gScriptRan;

AEGP_MemHandle leave(const std::optional<std::string>& bytes) {
  AEGP_MemHandle handle = nullptr;
  void* data = nullptr;
  if (bytes && MemoryHandles::newHandle(0, "script", bytes->size(), AEGP_MemFlag_NONE, &handle) == A_Err_NONE &&
      MemoryHandles::lockHandle(handle, &data) == A_Err_NONE) {
    std::memcpy(data, bytes->data(), bytes->size());
    MemoryHandles::unlockHandle(handle);
  }
  return handle;
}

A_Err executeScript(AEGP_PluginID, const A_char* script, const A_Boolean, AEGP_MemHandle* result,
                    AEGP_MemHandle* error) {
  gScriptRan = script;
  *result = leave(gResult);
  *error = leave(gError);
  return gResult ? A_Err_NONE : A_Err_GENERIC;
}

// 1000 characters is beyond any string's inline buffer, so the copy must follow the host's bytes to their
// terminating zero; bytes without one are cut at the handle's end. A result is locked, measured, unlocked and freed,
// the error text only freed; neither a null handle nor one the host would not lock is read, and only the handles the
// host gave are freed. The suites go back in the reverse order, and without the memory suite no script runs.
TEST(ScriptHelper, ResultTextsComeBackWholeAndEveryHandleTheHostGaveIsGivenBack) {
  CallRecorder calls;
  EffectHost host{NoEffect, &calls};
  AEGP_UtilitySuite5 utility{};
  utility.AEGP_ExecuteScript = executeScript;
  host.offerSuite(kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5, &utility);
  const std::string longText = std::string(997, 'x') + "end", zero(1, '\0');
  const Names read = {"LockMemHandle", "GetMemHandleSize", "UnlockMemHandle", "FreeMemHandle", "FreeMemHandle"};
  calls.failCall("MemorySuite.AEGP_LockMemHandle", 5, A_Err_PARAMETER);  // the last case's lock
  // clang-format off
  const struct { std::optional<std::string> result, error; std::string text; Names calls; } cases[] = {
      {std::string("42\0", 3), zero, "42", read},
      {zero, zero, "", read},
      {longText + '\0', zero, longText, read},
      {"abc", zero, "abc", read},
      {std::nullopt, "SyntaxError: missing ; before statement", "", {"FreeMemHandle"}},
      {"not to be read", std::nullopt, "", {"LockMemHandle", "FreeMemHandle"}}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE("case " + std::to_string(&c - cases));
    const std::size_t handles = EffectHost::liveHandles(), before = calls.calls().size();
    std::tie(gResult, gError) = std::tie(c.result, c.error);
    EXPECT_EQ(ScriptHelper::RunSriptAndGetStringResult(host.inData().pica_basicP, "app.project.numItems"), c.text);
    EXPECT_EQ(gScriptRan, "app.project.numItems");
    EXPECT_EQ(EffectHost::liveHandles(), handles) << "a handle was not given back";
    const std::vector<CallRecorder::Call> all = calls.calls();
    Names made;  // the memory and suite calls of the run, in order
    for (auto call = all.begin() + before; call != all.end(); ++call)
      made.push_back(call->name.rfind("MemorySuite.AEGP_", 0) == 0 ? call->name.substr(17)
                                                                   : call->name + " " + call->text);
    Names expected = {"AcquireSuite AEGP Utility Suite", "AcquireSuite AEGP Memory Suite"};
    expected.insert(expected.end(), c.calls.begin(), c.calls.end());
    expected.insert(expected.end(), {"ReleaseSuite AEGP Memory Suite", "ReleaseSuite AEGP Utility Suite"});
    EXPECT_EQ(made, expected);
  }

  gScriptRan.clear();
  calls.failCall("AcquireSuite", calls.count("AcquireSuite") + 2, kSPSuiteNotFoundError);
  try {
    ScriptHelper::RunSriptAndGetStringResult(host.inData().pica_basicP, "app.project.numItems");
    ADD_FAILURE() << "nothing thrown without the memory suite";
  } catch (int code) {
    EXPECT_EQ(code, A_Err_MISSING_SUITE);
  }
  EXPECT_EQ(gScriptRan, "") << "the script ran";
  EXPECT_EQ(host.heldSuites(), 0) << "suites still held";
}

TEST(ScriptHelperTrim, RemovesWhiteSpaceAtBothEndsOnly) {
  // Bytes above 0x7F are not white space in the "C" locale: Latin-1's no-break space, UTF-8.
  const std::pair<std::string, std::string> cases[] = {{"", ""},
                                                       {" \t\n\v\f\r", ""},
                                                       {"\nhello world ", "hello world"},
                                                       {"\r\n42\r\n", "42"},
                                                       {"\xA0x\xA0", "\xA0x\xA0"},
                                                       {" caf\xC3\xA9 ", "caf\xC3\xA9"}};
  for (const auto& [text, trimmed] : cases) {
    EXPECT_EQ(trimmed, ScriptHelper::TrimStringWhiteSpaces(text)) << "text \"" << text << "\"";
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
