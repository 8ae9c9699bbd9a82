#include "Helper/ScriptHelper.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "AE_GeneralPlug.h"
#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "Core/MemoryHandles.h"
#include "Support/NoEffect.h"

namespace Quillmere::Velmira {
namespace {

using Names = std::vector<std::string>;

// A script engine for the host: an AEGP Utility Suite (11), offered in place of the host's own, whose scripts leave
// the texts a test sets (none where unset) in handles of the host's memory suite.
class ScriptHelperTest : public testing::Test {
protected:
  ScriptHelperTest() {
    sTest = this;
    mUtility.AEGP_ExecuteScript = executeScript;
    mHost.offerSuite(kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5, &mUtility);
  }

  // The result of one run of a script; `hostCalls` gets the memory and suite calls it made, in order.
  std::string run(Names* hostCalls = nullptr) {
    const std::size_t before = mCalls.calls().size();
    std::string result = ScriptHelper::RunSriptAndGetStringResult(mHost.inData().pica_basicP, "app.project.numItems");
    const std::vector<CallRecorder::Call> calls = mCalls.calls();
    for (std::size_t i = before; hostCalls && i < calls.size(); ++i) {
      const std::string& name = calls[i].name;
      if (name.rfind("MemorySuite.AEGP_", 0) == 0) hostCalls->push_back(name.substr(17));
      if (name == "AcquireSuite" || name == "ReleaseSuite") hostCalls->push_back(name + " " + calls[i].text);
    }
    return result;
  }

  std::optional<std::string> mResult, mError;  // the bytes the script leaves, no terminator added
  std::string mScriptRan;
  CallRecorder mCalls;
  EffectHost mHost{NoEffect, &mCalls};

private:
  static AEGP_MemHandle leave(const std::optional<std::string>& bytes) {
    AEGP_MemHandle handle = nullptr;
    void* data = nullptr;
    if (!bytes || MemoryHandles::newHandle(0, "script", bytes->size(), AEGP_MemFlag_NONE, &handle) != A_Err_NONE ||
        MemoryHandles::lockHandle(handle, &data) != A_Err_NONE) {
      return nullptr;
    }
    std::memcpy(data, bytes->data(), bytes->size());
    MemoryHandles::unlockHandle(handle);
    return handle;
  }

  static A_Err executeScript(AEGP_PluginID, const A_char* script, const A_Boolean, AEGP_MemHandle* result,
                             AEGP_MemHandle* error) {
    sTest->mScriptRan = script;
    *result = leave(sTest->mResult);
    *error = leave(sTest->mError);
    return sTest->mResult ? A_Err_NONE : A_Err_GENERIC;
  }

  static ScriptHelperTest* sTest;
  AEGP_UtilitySuite5 mUtility{};
};

ScriptHelperTest* ScriptHelperTest::sTest = nullptr;

// 1000 characters is beyond any string's inline buffer, so the copy must follow the host's bytes to their
// terminating zero; bytes without one are cut at the handle's end. The result is locked, measured, unlocked and freed,
// the error text only freed; the suites go back in the reverse order.
TEST_F(ScriptHelperTest, ResultTextsComeBackWholeAndHandlesAreGivenBack) {
  const std::string longText = std::string(997, 'x') + "end";
  const std::pair<std::string, std::string> cases[] = {
      {std::string("42\0", 3), "42"}, {std::string(1, '\0'), ""}, {longText + '\0', longText}, {"abc", "abc"}};
  for (const auto& [bytes, text] : cases) {
    const std::size_t handles = EffectHost::liveHandles();
    mResult = bytes;
    mError = std::string(1, '\0');
    Names hostCalls;
    EXPECT_EQ(text, run(&hostCalls)) << "result of " << text.size() << " characters";
    EXPECT_EQ(mScriptRan, "app.project.numItems");
    EXPECT_EQ(EffectHost::liveHandles(), handles) << "a handle was not given back";
    EXPECT_EQ(hostCalls, (Names{"AcquireSuite AEGP Utility Suite", "AcquireSuite AEGP Memory Suite", "LockMemHandle",
                                "GetMemHandleSize", "UnlockMemHandle", "FreeMemHandle", "FreeMemHandle",
                                "ReleaseSuite AEGP Memory Suite", "ReleaseSuite AEGP Utility Suite"}));
  }
}

// Neither a null handle nor one the host would not lock is read, and only the handles the host gave are freed.
TEST_F(ScriptHelperTest, NoTextFromTheHostGivesEmpty) {
  mError = std::string("SyntaxError: missing ; before statement", 40);
  Names hostCalls;
  EXPECT_EQ("", run(&hostCalls)) << "error with no result handle";
  EXPECT_EQ(Names(hostCalls.begin() + 2, hostCalls.end() - 2), Names{"FreeMemHandle"});

  mError.reset();
  mResult = std::string("not to be read", 15);
  mCalls.failCall("MemorySuite.AEGP_LockMemHandle", mCalls.count("MemorySuite.AEGP_LockMemHandle") + 1,
                  A_Err_PARAMETER);
  hostCalls.clear();
  EXPECT_EQ("", run(&hostCalls)) << "refused lock";
  EXPECT_EQ(Names(hostCalls.begin() + 2, hostCalls.end() - 2), (Names{"LockMemHandle", "FreeMemHandle"}));
}

TEST_F(ScriptHelperTest, MissingMemorySuiteThrowsBeforeTheScriptAndReleasesTheUtility) {
  mCalls.failCall("AcquireSuite", mCalls.count("AcquireSuite") + 2, kSPSuiteNotFoundError);
  int thrown = 0;
  try {
    run();
  } catch (int code) {
    thrown = code;
  }
  EXPECT_EQ(A_Err_MISSING_SUITE, thrown);
  EXPECT_EQ(mScriptRan, "") << "the script ran";
  EXPECT_EQ(0, mHost.heldSuites()) << "suites still held";
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
