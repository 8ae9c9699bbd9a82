#include "Helper/ScriptHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "AE_GeneralPlug.h"
#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "Support/NoEffect.h"

namespace Quillmere::Velmira {
namespace {

using testing::ElementsAre;

// A script engine and its memory handles, as AEGP Utility (11) and Memory (1) tables the host offers in place of
// its own (it has no script engine). A script leaves the texts a test sets (none where unset); every call on a
// handle is noted as "<call> <role>".
class ScriptHelperTest : public testing::Test {
protected:
  struct Handle {
    std::string role;
    std::vector<char> bytes;
  };

  ScriptHelperTest() {
    sTest = this;
    mUtility.AEGP_ExecuteScript = executeScript;
    mMemory.AEGP_LockMemHandle = [](AEGP_MemHandle handle, void** bytes) -> A_Err {
      note("Lock", handle);
      if (handle == nullptr || sTest->mRefuseLocks) {
        return A_Err_PARAMETER;
      }
      *bytes = of(handle).bytes.data();
      return A_Err_NONE;
    };
    mMemory.AEGP_UnlockMemHandle = [](AEGP_MemHandle handle) -> A_Err { return note("Unlock", handle); };
    mMemory.AEGP_FreeMemHandle = [](AEGP_MemHandle handle) -> A_Err { return note("Free", handle); };
    mMemory.AEGP_GetMemHandleSize = [](AEGP_MemHandle handle, AEGP_MemSize* size) -> A_Err {
      *size = of(handle).bytes.size();
      return A_Err_NONE;
    };
    mHost.offerSuite(kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5, &mUtility);
    mHost.offerSuite(kAEGPMemorySuite, kAEGPMemorySuiteVersion1, &mMemory);
  }

  static std::vector<char> terminated(const std::string& text) {
    return {text.c_str(), text.c_str() + text.size() + 1};
  }

  std::string run() {
    return ScriptHelper::RunSriptAndGetStringResult(mHost.inData().pica_basicP, "app.project.numItems");
  }

  std::optional<std::vector<char>> mResultBytes;
  std::optional<std::vector<char>> mErrorBytes;
  bool mRefuseLocks = false;
  std::vector<std::string> mCalls;
  std::list<Handle> mHandles;
  CallRecorder mHostCalls;
  EffectHost mHost{NoEffect, &mHostCalls};

private:
  static Handle& of(AEGP_MemHandle handle) { return *reinterpret_cast<Handle*>(handle); }

  static A_Err note(const char* call, AEGP_MemHandle handle) {
    sTest->mCalls.push_back(std::string(call) + " " + (handle != nullptr ? of(handle).role : "null"));
    return A_Err_NONE;
  }

  static AEGP_MemHandle leave(const char* role, const std::optional<std::vector<char>>& bytes) {
    if (!bytes) {
      return nullptr;
    }
    sTest->mHandles.push_back(Handle{role, *bytes});
    return reinterpret_cast<AEGP_MemHandle>(&sTest->mHandles.back());
  }

  static A_Err executeScript(AEGP_PluginID plugin, const A_char* script, const A_Boolean platformEncoding,
                             AEGP_MemHandle* result, AEGP_MemHandle* error) {
    sTest->mCalls.push_back("Execute " + std::to_string(plugin) + " " + script + " " +
                            std::to_string(platformEncoding));
    *result = leave("result", sTest->mResultBytes);
    *error = leave("error", sTest->mErrorBytes);
    return sTest->mResultBytes ? A_Err_NONE : A_Err_GENERIC;
  }

  static ScriptHelperTest* sTest;
  AEGP_UtilitySuite5 mUtility{};
  AEGP_MemorySuite1 mMemory{};
};

ScriptHelperTest* ScriptHelperTest::sTest = nullptr;

// 1000 characters is beyond any string's inline buffer, so the copy must follow the host's
// bytes to their terminating zero; bytes without one are cut at the handle's end.
TEST_F(ScriptHelperTest, ResultTextsComeBackWholeAndHandlesAreGivenBack) {
  const std::string longText = std::string(997, 'x') + "end";
  const std::pair<std::vector<char>, std::string> cases[] = {
      {terminated("42"), "42"}, {terminated(""), ""}, {terminated(longText), longText}, {{'a', 'b', 'c'}, "abc"}};
  for (const auto& [bytes, text] : cases) {
    mCalls.clear();
    mResultBytes = bytes;
    mErrorBytes = terminated("");
    EXPECT_EQ(text, run()) << "result of " << text.size() << " characters";
    EXPECT_THAT(mCalls, ElementsAre("Execute 0 app.project.numItems 0", "Lock result", "Unlock result", "Free result",
                                    "Free error"));
  }
}

TEST_F(ScriptHelperTest, SuitesAreReleasedMemoryFirstThenUtility) {
  mResultBytes = terminated("ok");
  run();
  std::vector<std::string> suiteCalls;
  for (const CallRecorder::Call& call : mHostCalls.calls()) {
    if (call.name == "AcquireSuite" || call.name == "ReleaseSuite") {
      suiteCalls.push_back(call.name + " " + call.text + " " + std::to_string(call.numbers.at(0)));
    }
  }
  EXPECT_THAT(suiteCalls, ElementsAre("AcquireSuite AEGP Utility Suite 11", "AcquireSuite AEGP Memory Suite 1",
                                      "ReleaseSuite AEGP Memory Suite 1", "ReleaseSuite AEGP Utility Suite 11"));
}

// Neither a null handle nor one the host would not lock is read; the error text is never
// read either, and only the handles the host gave are freed.
TEST_F(ScriptHelperTest, NoTextFromTheHostGivesEmpty) {
  mErrorBytes = terminated("SyntaxError: missing ; before statement");
  EXPECT_EQ("", run()) << "error with no result handle";
  EXPECT_THAT(mCalls, ElementsAre("Execute 0 app.project.numItems 0", "Free error"));

  mCalls.clear();
  mErrorBytes.reset();
  mResultBytes = terminated("not to be read");
  mRefuseLocks = true;
  EXPECT_EQ("", run()) << "refused lock";
  EXPECT_THAT(mCalls, ElementsAre("Execute 0 app.project.numItems 0", "Lock result", "Free result"));
}

TEST_F(ScriptHelperTest, MissingMemorySuiteThrowsBeforeTheScriptAndReleasesTheUtility) {
  mHostCalls.failCall("AcquireSuite", mHostCalls.count("AcquireSuite") + 2, kSPSuiteNotFoundError);
  int thrown = 0;
  try {
    run();
  } catch (int code) {
    thrown = code;
  }
  EXPECT_EQ(A_Err_MISSING_SUITE, thrown);
  EXPECT_TRUE(mCalls.empty()) << "the script ran";
  EXPECT_EQ(0, mHost.heldSuites()) << "suites still held";
}

TEST(ScriptHelperTrim, RemovesWhiteSpaceAtBothEndsOnly) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {" \t\n\v\f\r", ""},
      {"\nhello world ", "hello world"},
      {"\r\n42\r\n", "42"},
      // Bytes above 0x7F are not white space in the "C" locale: Latin-1's no-break space, UTF-8.
      {"\xA0x\xA0", "\xA0x\xA0"},
      {" caf\xC3\xA9 ", "caf\xC3\xA9"},
  };
  for (const auto& [text, trimmed] : cases) {
    EXPECT_EQ(trimmed, ScriptHelper::TrimStringWhiteSpaces(text)) << "text \"" << text << "\"";
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
