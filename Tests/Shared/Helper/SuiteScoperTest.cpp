// Suite access against the host: what is acquired is released with the same name and version, failures are thrown
// as 13 or reported as 516, and messages reach the host only where the caller gave out_data.
#include "Helper/SuiteScoper.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "AE_EffectSuites.h"
#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "Support/NoEffect.h"

namespace Quillmere::Velmira {
namespace {

using Names = std::vector<std::string>;

class SuiteAccess : public ::testing::Test {
protected:
  // The suite calls alone, as "Acquire name version" / "Release name version".
  Names suiteTraffic() const {
    Names traffic;
    for (const CallRecorder::Call& call : calls.calls()) {
      if (call.name == "AcquireSuite" || call.name == "ReleaseSuite") {
        traffic.push_back(call.name.substr(0, 7) + " " + call.text + " " + std::to_string(call.numbers.at(0)));
      }
    }
    return traffic;
  }
  int nextCall(const char* name) const { return calls.count(name) + 1; }
  // The integer a scoper's failure throws, or 0.
  template <typename Make>
  static int thrownBy(Make make) {
    try {
      make();
    } catch (int value) {
      return value;
    }
    return 0;
  }

  CallRecorder calls;
  EffectHost host{NoEffect, &calls};
  PF_InData* in = &host.inData();
  PF_OutData* out = &host.outData();
};

// The plug-in's route releases what it acquired under the same name and version, and no table it did not get: a null
// one that came with success, or one whose acquire failed (the basic-suite route, and a failure unwinding the suites
// acquired before it, go through the script bridge). A failed acquire throws 13 and is reported only when the caller
// passed out_data, the caller's text replacing the default one.
TEST_F(SuiteAccess, ScopersReleaseOnlyWhatTheyAcquiredAndAFailureThrowsThirteenReportedOnlyWithOutData) {
  host.offerSuite("Empty Suite", 3, nullptr);
  { SuiteScoper<PF_HandleSuite1> handles(in, kPFHandleSuite, kPFHandleSuiteVersion1); }
  { SuiteScoper<int> empty(in, "Empty Suite", 3); }
  // clang-format off
  const struct { bool withOutData; const char *message, *expectedText; } cases[] = {
      {true, nullptr, "Not able to acquire AEFX Suite."},
      {true, "Suite gone", "Suite gone"},
      {false, "Suite gone", "untouched"}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "out_data " << c.withOutData << ", " << (c.message ? c.message : "no text"));
    *out = PF_OutData{};
    std::strcpy(out->return_msg, "untouched");
    EXPECT_EQ(thrownBy([&] { SuiteScoper<int>(in, "No Such Suite", 1, c.withOutData ? out : nullptr, c.message); }),
              13);
    EXPECT_STREQ(out->return_msg, c.expectedText);
    EXPECT_EQ(out->out_flags, c.withOutData ? PF_OutFlag_DISPLAY_ERROR_MESSAGE : 0);
  }
  EXPECT_EQ(thrownBy([&] { SuiteScoper<int>(in->pica_basicP, "No Such Suite", 1); }), 13);
  Names expected = {"Acquire PF Handle Suite 2", "Release PF Handle Suite 2", "Acquire Empty Suite 3"};
  expected.resize(7, "Acquire No Such Suite 1");
  EXPECT_EQ(suiteTraffic(), expected);
}

// The table decides, not the host's code: a success code without a table is a failure (516, reported with the
// name and version formatted in, or the caller's own text), and a failure code with a table from before the call
// counts as success. Without a basic suite both functions fail. (Their success goes through the Drawbot suites.)
TEST_F(SuiteAccess, FreeFunctionsJudgeByTheTableAndReportTo516) {
  host.offerSuite("Empty Suite", 1, nullptr);
  void* table = nullptr;
  EXPECT_EQ(AcquireSuite(in, out, "Empty Suite", 1, nullptr, &table), 516);
  EXPECT_STREQ(out->return_msg, "Not able to acquire AEFX Suite-Empty Suite-1");
  EXPECT_EQ(out->out_flags, PF_OutFlag_DISPLAY_ERROR_MESSAGE);
  EXPECT_EQ(AcquireSuite(in, out, "Gone", 4, "Own words", &table), 516);
  EXPECT_STREQ(out->return_msg, "Own words");

  int previous = 0;
  void* stale = &previous;
  calls.failCall("AcquireSuite", nextCall("AcquireSuite"), kSPSuiteNotFoundError);
  EXPECT_EQ(AcquireSuite(in, out, kPFANSISuite, 1, nullptr, &stale), PF_Err_NONE);

  PF_InData bare = *in;
  bare.pica_basicP = nullptr;
  EXPECT_EQ(AcquireSuite(&bare, out, kPFANSISuite, 1, nullptr, &table), 516);
  EXPECT_EQ(ReleaseSuite(&bare, out, kPFANSISuite, 1, nullptr), 516);
  EXPECT_STREQ(out->return_msg, "Not able to release AEFX Suite.");
}

// The four suites in the order of the record's fields, and back in the same order; a missing third keeps the first
// two held and the fourth untouched; a null record is refused with its own text.
TEST_F(SuiteAccess, DrawbotSuitesComeAndGoInFieldOrder) {
  int tables[4] = {};
  const char* names[] = {kDRAWBOT_DrawSuite, kDRAWBOT_SupplierSuite, kDRAWBOT_SurfaceSuite, kDRAWBOT_PathSuite};
  const int versions[] = {1, 1, 2, 1};
  for (int i = 0; i < 4; ++i) host.offerSuite(names[i], versions[i], &tables[i]);
  DRAWBOT_Suites suites{};
  EXPECT_EQ(AcquireDrawbotSuites(in, out, &suites), PF_Err_NONE);
  auto fields = [&] {
    return std::vector<const void*>{suites.drawbot_suiteP, suites.supplier_suiteP, suites.surface_suiteP,
                                    suites.path_suiteP};
  };
  EXPECT_EQ(fields(), (std::vector<const void*>{&tables[0], &tables[1], &tables[2], &tables[3]}));
  EXPECT_EQ(ReleaseDrawbotSuites(in, out), PF_Err_NONE);
  EXPECT_EQ(suiteTraffic(), (Names{"Acquire DRAWBOT Draw Suite 1", "Acquire DRAWBOT Supplier Suite 1",
                                   "Acquire DRAWBOT Surface Suite 2", "Acquire DRAWBOT Path Suite 1",
                                   "Release DRAWBOT Draw Suite 1", "Release DRAWBOT Supplier Suite 1",
                                   "Release DRAWBOT Surface Suite 2", "Release DRAWBOT Path Suite 1"}));

  calls.failCall("AcquireSuite", nextCall("AcquireSuite") + 2, kSPSuiteNotFoundError);
  int marker = 0;
  suites = DRAWBOT_Suites{};
  suites.path_suiteP = reinterpret_cast<DRAWBOT_PathSuite1*>(&marker);
  EXPECT_EQ(AcquireDrawbotSuites(in, out, &suites), 516);
  EXPECT_EQ(fields(), (std::vector<const void*>{&tables[0], &tables[1], nullptr, &marker}));
  EXPECT_STREQ(out->return_msg, "Not able to acquire AEFX Suite-DRAWBOT Surface Suite-2");

  EXPECT_EQ(AcquireDrawbotSuites(in, out, nullptr), 514);
  EXPECT_STREQ(out->return_msg, "NULL suite pointer passed to AEFX_AcquireDrawbotSuites");
}

}  // namespace
}  // namespace Quillmere::Velmira
