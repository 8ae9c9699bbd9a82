#include "Helper/ScriptHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AE_GeneralPlug.h"
#include "HostDouble.h"

namespace Quillmere::Velmira {
namespace {

using testing::ElementsAre;

// The host's script engine and memory handles, served as AEGP Utility (11) and Memory (1)
// tables through the host double. It answers what a test sets up and notes every call on
// the handles, so that reading, unlocking and freeing can be checked.
class ScriptHelperTest : public testing::Test {
protected:
  struct Handle {
    std::string role;
    std::vector<char> bytes;
    int locks = 0;
    int frees = 0;
  };

  ScriptHelperTest() {
    sTest = this;
    mUtility.AEGP_ExecuteScript = executeScript;
    mMemory.AEGP_LockMemHandle = lockMemHandle;
    mMemory.AEGP_UnlockMemHandle = unlockMemHandle;
    mMemory.AEGP_FreeMemHandle = freeMemHandle;
    mMemory.AEGP_GetMemHandleSize = getMemHandleSize;
    mHost.addSuite(kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5, &mUtility);
    mHost.addSuite(kAEGPMemorySuite, kAEGPMemorySuiteVersion1, &mMemory);
  }
  ~ScriptHelperTest() override { sTest = nullptr; }

  static std::vector<char> terminated(const std::string& text) {
    std::vector<char> bytes(text.begin(), text.end());
    bytes.push_back('\0');
    return bytes;
  }

  std::string run(const char* script = "app.project.numItems") {
    return ScriptHelper::RunSriptAndGetStringResult(mHost.basicSuite(), script);
  }

  std::vector<std::string> suiteCalls() const {
    std::vector<std::string> calls;
    for (const HostCall& call : mHost.calls()) {
      if (call.name == "AcquireSuite" || call.name == "ReleaseSuite") {
        calls.push_back(call.name + " " + call.text);
      }
    }
    return calls;
  }

  // Every handle the script left was freed once and left with no lock held.
  void expectHandlesGivenBack() const {
    for (const auto& handle : mHandles) {
      EXPECT_EQ(1, handle->frees) << handle->role << " handle frees";
      EXPECT_EQ(0, handle->locks) << handle->role << " handle locks left";
    }
    EXPECT_EQ(0, mHost.heldSuites()) << "suites still held";
  }

  // What the script does: the result and error texts it leaves (none where not set).
  std::optional<std::vector<char>> mResultBytes;
  std::optional<std::vector<char>> mErrorBytes;
  A_Err mScriptErr = A_Err_NONE;
  bool mRefuseLocks = false;

  std::string mScriptSeen;
  std::vector<std::int64_t> mScriptArgs;
  std::vector<std::string> mMemoryCalls;
  std::vector<std::unique_ptr<Handle>> mHandles;
  HostDouble mHost;

private:
  AEGP_MemHandle makeHandle(const std::string& role, const std::vector<char>& bytes) {
    mHandles.push_back(std::make_unique<Handle>(Handle{role, bytes}));
    return reinterpret_cast<AEGP_MemHandle>(mHandles.back().get());
  }

  static Handle& handleOf(AEGP_MemHandle handle) { return *reinterpret_cast<Handle*>(handle); }

  static A_Err executeScript(AEGP_PluginID plugin, const A_char* script, const A_Boolean platformEncoding,
                             AEGP_MemHandle* result, AEGP_MemHandle* error) {
    sTest->mScriptSeen = script;
    sTest->mScriptArgs = {plugin, platformEncoding};
    if (sTest->mResultBytes) {
      *result = sTest->makeHandle("result", *sTest->mResultBytes);
    }
    if (sTest->mErrorBytes) {
      *error = sTest->makeHandle("error", *sTest->mErrorBytes);
    }
    return sTest->mScriptErr;
  }

  // A null handle is a fault of the caller: the call is noted so that tests see it.
  static A_Err lockMemHandle(AEGP_MemHandle handle, void** bytes) {
    if (handle == nullptr) {
      sTest->mMemoryCalls.push_back("Lock null");
      return A_Err_PARAMETER;
    }
    sTest->mMemoryCalls.push_back("Lock " + handleOf(handle).role);
    if (sTest->mRefuseLocks) {
      return A_Err_GENERIC;
    }
    ++handleOf(handle).locks;
    *bytes = handleOf(handle).bytes.data();
    return A_Err_NONE;
  }

  static A_Err unlockMemHandle(AEGP_MemHandle handle) {
    sTest->mMemoryCalls.push_back(handle ? "Unlock " + handleOf(handle).role : "Unlock null");
    if (handle != nullptr) {
      --handleOf(handle).locks;
    }
    return A_Err_NONE;
  }

  static A_Err freeMemHandle(AEGP_MemHandle handle) {
    sTest->mMemoryCalls.push_back(handle ? "Free " + handleOf(handle).role : "Free null");
    if (handle != nullptr) {
      ++handleOf(handle).frees;
    }
    return A_Err_NONE;
  }

  static A_Err getMemHandleSize(AEGP_MemHandle handle, AEGP_MemSize* size) {
    *size = handleOf(handle).bytes.size();
    return A_Err_NONE;
  }

  static ScriptHelperTest* sTest;
  AEGP_UtilitySuite5 mUtility{};
  AEGP_MemorySuite1 mMemory{};
};

ScriptHelperTest* ScriptHelperTest::sTest = nullptr;

TEST_F(ScriptHelperTest, ResultTextsComeBackWhole) {
  struct Case {
    const char* what;
    std::string text;
  };
  // 1000 characters is beyond any string's inline buffer, so the copy must follow the
  // host's bytes to their terminating zero.
  const std::string longText = std::string(997, 'x') + "end";
  for (const Case& c : {Case{"number", "42"}, Case{"empty", ""}, Case{"lines", "a\nb\n"}, Case{"long", longText}}) {
    mResultBytes = terminated(c.text);
    EXPECT_EQ(c.text, run()) << c.what;
  }
  expectHandlesGivenBack();
}

TEST_F(ScriptHelperTest, ScriptRunsOnceWithPluginZeroAndNoPlatformEncoding) {
  mResultBytes = terminated("3");
  mErrorBytes = terminated("");
  run("app.project.numItems");
  EXPECT_EQ("app.project.numItems", mScriptSeen);
  EXPECT_THAT(mScriptArgs, ElementsAre(0, 0)) << "plug-in id, platform encoding";
  EXPECT_THAT(mMemoryCalls, ElementsAre("Lock result", "Unlock result", "Free result", "Free error"));
  expectHandlesGivenBack();
}

TEST_F(ScriptHelperTest, SuitesAreTakenUtilityFirstAndGivenBackMemoryFirst) {
  mResultBytes = terminated("ok");
  run();
  EXPECT_THAT(suiteCalls(), ElementsAre("AcquireSuite AEGP Utility Suite", "AcquireSuite AEGP Memory Suite",
                                        "ReleaseSuite AEGP Memory Suite", "ReleaseSuite AEGP Utility Suite"));
  for (const HostCall& call : mHost.calls()) {
    if (call.name != "AcquireSuite" && call.name != "ReleaseSuite") {
      continue;
    }
    const int expected = call.text == kAEGPUtilitySuite ? kAEGPUtilitySuiteVersion5 : kAEGPMemorySuiteVersion1;
    EXPECT_THAT(call.args, ElementsAre(expected)) << call.name << " " << call.text << " version";
  }
}

TEST_F(ScriptHelperTest, FailedScriptWithOnlyAnErrorTextGivesEmptyAndNeverReadsTheError) {
  mScriptErr = A_Err_GENERIC;
  mErrorBytes = terminated("SyntaxError: missing ; before statement");
  EXPECT_EQ("", run());
  EXPECT_THAT(mMemoryCalls, ElementsAre("Free error")) << "a null result handle must be neither locked nor freed";
  expectHandlesGivenBack();
}

TEST_F(ScriptHelperTest, RefusedLockGivesEmptyAndFreesWithoutUnlocking) {
  mRefuseLocks = true;
  mResultBytes = terminated("never read");
  EXPECT_EQ("", run());
  EXPECT_THAT(mMemoryCalls, ElementsAre("Lock result", "Free result"));
  expectHandlesGivenBack();
}

TEST_F(ScriptHelperTest, TextWithoutTerminatingZeroIsCutAtTheHandlesEnd) {
  mResultBytes = std::vector<char>{'a', 'b', 'c'};
  EXPECT_EQ("abc", run());
}

TEST_F(ScriptHelperTest, MissingMemorySuiteThrowsBeforeTheScriptAndGivesTheUtilityBack) {
  mHost.removeSuite(kAEGPMemorySuite, kAEGPMemorySuiteVersion1);
  mResultBytes = terminated("x");
  try {
    run();
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(A_Err_MISSING_SUITE, code);
  }
  EXPECT_EQ("", mScriptSeen) << "the script ran";
  EXPECT_EQ(0, mHost.heldSuites()) << "suites still held";
}

TEST_F(ScriptHelperTest, MissingUtilitySuiteThrowsBeforeAskingForMemory) {
  mHost.removeSuite(kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5);
  try {
    run();
    ADD_FAILURE() << "no exception";
  } catch (int code) {
    EXPECT_EQ(A_Err_MISSING_SUITE, code);
  }
  EXPECT_THAT(suiteCalls(), ElementsAre("AcquireSuite AEGP Utility Suite"));
}

TEST(ScriptHelperTrim, RemovesWhiteSpaceAtBothEndsOnly) {
  struct Case {
    std::string text;
    std::string trimmed;
  };
  const Case cases[] = {
      {"", ""},
      {" \t\n\v\f\r", ""},
      {"\nhello world ", "hello world"},
      {"  a  b  ", "a  b"},
      {"x", "x"},
      {"\r\n42\r\n", "42"},
      // Bytes above 0x7F are not white space in the "C" locale, the no-break space of
      // Latin-1 (0xA0) and UTF-8 letters included.
      {"\xA0x\xA0", "\xA0x\xA0"},
      {" caf\xC3\xA9 ", "caf\xC3\xA9"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.trimmed, ScriptHelper::TrimStringWhiteSpaces(c.text)) << "text \"" << c.text << "\"";
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
