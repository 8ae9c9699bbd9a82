#include "Helper/SuiteScoper.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "AE_EffectSuites.h"
#include "HostDouble.h"

namespace Quillmere::Velmira {
namespace {

using Names = std::vector<std::string>;

// The suite calls alone, as "Acquire name version" / "Release name version".
Names suiteTraffic(const HostDouble& host) {
  Names traffic;
  for (const HostCall& call : host.calls()) {
    if (call.name == "AcquireSuite" || call.name == "ReleaseSuite") {
      traffic.push_back(call.name.substr(0, 7) + " " + call.text + " " + std::to_string(call.args.at(0)));
    }
  }
  return traffic;
}

TEST(SuiteScoper, ReleasesWithTheNameAndVersionItAcquiredWith) {
  HostDouble host;
  {
    SuiteScoper<PF_HandleSuite1> handles(host.inData(), kPFHandleSuite, kPFHandleSuiteVersion1);
    EXPECT_NE(handles->host_new_handle, nullptr);
    EXPECT_EQ(host.heldSuites(kPFHandleSuite, 2), 1);
  }
  EXPECT_EQ(suiteTraffic(host), (Names{"Acquire PF Handle Suite 2", "Release PF Handle Suite 2"}));
  EXPECT_EQ(host.heldSuites(), 0);
}

// The in_data route is switched off: the scoper must use the basic suite it was given.
TEST(SuiteScoper, FromBasicSuiteReleasesThroughItAndThrowsThirteenOnFailure) {
  HostDouble host;
  static const int kTable = 7;
  host.addSuite("AEGP Memory Suite", 1, &kTable);
  host.setBasicSuitePresent(false);
  {
    SuiteScoper<int> memory(host.basicSuite(), "AEGP Memory Suite", 1);
    EXPECT_EQ(memory.operator->(), &kTable);
  }
  EXPECT_EQ(host.count("ReleaseSuite"), 1);
  int thrown = 0;
  try {
    SuiteScoper<int> missing(host.basicSuite(), "AEGP Utility Suite", 11);
  } catch (int value) {
    thrown = value;
  }
  EXPECT_EQ(thrown, 13);
  EXPECT_EQ(host.count("ReleaseSuite"), 1);
  EXPECT_EQ(host.heldSuites(), 0);
}

TEST(SuiteScoper, SuccessWithANullTableSkipsTheRelease) {
  HostDouble host;
  host.addSuite("Empty Suite", 3, nullptr);
  { SuiteScoper<int> empty(host.inData(), "Empty Suite", 3); }
  EXPECT_EQ(host.count("AcquireSuite"), 1);
  EXPECT_EQ(host.count("ReleaseSuite"), 0);
}

// A failed acquire throws 13 and is reported only when the caller passed out_data; the
// caller's text replaces the default one.
TEST(SuiteScoper, FailureThrowsThirteenAndReportsOnlyWithOutData) {
  struct {
    bool withOutData;
    const char* message;
    const char* expectedText;
  } const cases[] = {{true, nullptr, "Not able to acquire AEFX Suite."},
                     {true, "Suite gone", "Suite gone"},
                     {false, "Suite gone", "untouched"},
                     {false, nullptr, "untouched"}};
  for (const auto& c : cases) {
    HostDouble host;
    PF_OutData* out = host.outData();
    std::strcpy(out->return_msg, "untouched");
    int thrown = 0;
    try {
      SuiteScoper<int> missing(host.inData(), "No Such Suite", 1, c.withOutData ? out : nullptr, c.message);
    } catch (int value) {
      thrown = value;
    }
    SCOPED_TRACE(std::string(c.withOutData ? "with" : "without") + " out_data, message " +
                 (c.message != nullptr ? c.message : "none"));
    EXPECT_EQ(thrown, 13);
    EXPECT_EQ(host.count("ReleaseSuite"), 0) << "a scoper that never acquired released";
    EXPECT_STREQ(out->return_msg, c.expectedText);
    EXPECT_EQ(out->out_flags, c.withOutData ? PF_OutFlag_DISPLAY_ERROR_MESSAGE : 0);
  }
}

TEST(SuiteScoper, SecondScoperFailingAfterFirstSucceededLeavesNothingHeld) {
  HostDouble host;
  host.failCall("AcquireSuite", 2, 1);
  EXPECT_THROW(
      {
        SuiteScoper<PF_ANSICallbacksSuite1> ansi(host.inData(), kPFANSISuite, kPFANSISuiteVersion1);
        SuiteScoper<PF_HandleSuite1> handles(host.inData(), kPFHandleSuite, kPFHandleSuiteVersion1);
      },
      int);
  EXPECT_EQ(suiteTraffic(host),
            (Names{"Acquire PF ANSI Suite 1", "Acquire PF Handle Suite 2", "Release PF ANSI Suite 1"}));
  EXPECT_EQ(host.heldSuites(), 0);
}

// The table decides, not the host's code: a success code without a table is a failure,
// and a failure code with a table from before the call counts as success.
TEST(AcquireSuite, JudgesByTheTableNotByTheHostsCode) {
  HostDouble host;
  host.addSuite("Empty Suite", 1, nullptr);
  void* table = nullptr;
  EXPECT_EQ(AcquireSuite(host.inData(), host.outData(), kPFANSISuite, 1, nullptr, &table), PF_Err_NONE);
  EXPECT_NE(table, nullptr);
  EXPECT_EQ(ReleaseSuite(host.inData(), host.outData(), kPFANSISuite, 1, nullptr), PF_Err_NONE);
  EXPECT_EQ(host.heldSuites(), 0);

  table = nullptr;
  EXPECT_EQ(AcquireSuite(host.inData(), host.outData(), "Empty Suite", 1, nullptr, &table), 516);
  EXPECT_STREQ(host.outData()->return_msg, "Not able to acquire AEFX Suite-Empty Suite-1");
  EXPECT_EQ(host.outData()->out_flags, PF_OutFlag_DISPLAY_ERROR_MESSAGE);

  int previous = 0;
  void* stale = &previous;
  EXPECT_EQ(AcquireSuite(host.inData(), host.outData(), "No Such Suite", 1, nullptr, &stale), PF_Err_NONE);
}

TEST(AcquireSuite, OwnTextReplacesTheFormattedOneWhichIsStillMade) {
  HostDouble host;
  void* table = nullptr;
  EXPECT_EQ(AcquireSuite(host.inData(), host.outData(), "Gone", 4, "Own words", &table), 516);
  EXPECT_STREQ(host.outData()->return_msg, "Own words");
  const auto calls = host.calls();
  std::vector<std::string> formatted;
  for (const HostCall& call : calls) {
    if (call.name == "ansi.sprintf") {
      formatted.push_back(call.text);
    }
  }
  EXPECT_EQ(formatted, (Names{"Not able to acquire AEFX Suite-Gone-4", "Own words"}));
}

TEST(SuiteFunctions, WithoutBasicSuiteFailAndReportWithoutCallingIt) {
  HostDouble host;
  host.setBasicSuitePresent(false);
  void* table = nullptr;
  EXPECT_EQ(AcquireSuite(host.inData(), host.outData(), kPFANSISuite, 1, nullptr, &table), 516);
  EXPECT_STREQ(host.outData()->return_msg, "Not able to acquire AEFX Suite-PF ANSI Suite-1");
  EXPECT_EQ(ReleaseSuite(host.inData(), host.outData(), kPFANSISuite, 1, nullptr), 516);
  EXPECT_STREQ(host.outData()->return_msg, "Not able to release AEFX Suite.");
  EXPECT_EQ(ReleaseSuite(host.inData(), host.outData(), kPFANSISuite, 1, "Own words"), 516);
  EXPECT_STREQ(host.outData()->return_msg, "Own words");
  EXPECT_EQ(host.count("AcquireSuite") + host.count("ReleaseSuite"), 0);
}

class DrawbotSuites : public ::testing::Test {
protected:
  void addAll(int count) {
    const char* names[] = {kDRAWBOT_DrawSuite, kDRAWBOT_SupplierSuite, kDRAWBOT_SurfaceSuite, kDRAWBOT_PathSuite};
    const int versions[] = {1, 1, 2, 1};
    for (int i = 0; i < count; ++i) {
      host.addSuite(names[i], versions[i], &mTables[i]);
    }
  }
  HostDouble host;
  int mTables[4] = {};
};

TEST_F(DrawbotSuites, AcquireAndReleaseAllFourInFieldOrder) {
  addAll(4);
  DRAWBOT_Suites suites{};
  EXPECT_EQ(AcquireDrawbotSuites(host.inData(), host.outData(), &suites), PF_Err_NONE);
  EXPECT_EQ(static_cast<void*>(suites.drawbot_suiteP), &mTables[0]);
  EXPECT_EQ(static_cast<void*>(suites.supplier_suiteP), &mTables[1]);
  EXPECT_EQ(static_cast<void*>(suites.surface_suiteP), &mTables[2]);
  EXPECT_EQ(static_cast<void*>(suites.path_suiteP), &mTables[3]);
  EXPECT_EQ(ReleaseDrawbotSuites(host.inData(), host.outData()), PF_Err_NONE);
  EXPECT_EQ(suiteTraffic(host), (Names{"Acquire DRAWBOT Draw Suite 1", "Acquire DRAWBOT Supplier Suite 1",
                                       "Acquire DRAWBOT Surface Suite 2", "Acquire DRAWBOT Path Suite 1",
                                       "Release DRAWBOT Draw Suite 1", "Release DRAWBOT Supplier Suite 1",
                                       "Release DRAWBOT Surface Suite 2", "Release DRAWBOT Path Suite 1"}));

  // Without a basic suite releasing still succeeds, with the message shown.
  host.setBasicSuitePresent(false);
  EXPECT_EQ(ReleaseDrawbotSuites(host.inData(), host.outData()), PF_Err_NONE);
  EXPECT_STREQ(host.outData()->return_msg, "Not able to release AEFX Suite.");
}

TEST_F(DrawbotSuites, ThirdMissingKeepsTheFirstTwoHeldAndTheFourthUntouched) {
  addAll(2);
  int marker = 0;
  DRAWBOT_Suites suites{};
  suites.path_suiteP = reinterpret_cast<DRAWBOT_PathSuite1*>(&marker);
  EXPECT_EQ(AcquireDrawbotSuites(host.inData(), host.outData(), &suites), 516);
  EXPECT_EQ(static_cast<void*>(suites.drawbot_suiteP), &mTables[0]);
  EXPECT_EQ(static_cast<void*>(suites.supplier_suiteP), &mTables[1]);
  EXPECT_EQ(suites.surface_suiteP, nullptr);
  EXPECT_EQ(static_cast<void*>(suites.path_suiteP), &marker);
  EXPECT_EQ(host.heldSuites(), 2);
  EXPECT_EQ(host.count("AcquireSuite"), 3);
  EXPECT_STREQ(host.outData()->return_msg, "Not able to acquire AEFX Suite-DRAWBOT Surface Suite-2");
}

TEST_F(DrawbotSuites, NullRecordIsRefusedWithItsOwnText) {
  EXPECT_EQ(AcquireDrawbotSuites(host.inData(), host.outData(), nullptr), 514);
  EXPECT_STREQ(host.outData()->return_msg, "NULL suite pointer passed to AEFX_AcquireDrawbotSuites");
  EXPECT_EQ(host.count("AcquireSuite"), 0);
}

}  // namespace
}  // namespace Quillmere::Velmira
