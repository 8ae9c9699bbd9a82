// Access to the host's suites. SuiteScoper holds one suite for one scope (acquired by
// the constructor, released by the destructor, a failed acquire thrown as the integer
// A_Err_MISSING_SUITE); the free functions report by their PF_Err result instead and
// leave pairing acquire and release to the caller.
#pragma once

#include "AE_Effect.h"
#include "DrawbotSuites.h"
#include "SPBasic.h"

namespace Quillmere::Velmira {

template <typename SuiteType>
class SuiteScoper {
public:
  // out_data and err_string may be null; with an out_data a failure is also reported to
  // the host through return_msg and the error-message flag.
  SuiteScoper(const PF_InData* in_data, const char* suite_name, int suite_version, PF_OutData* out_data = nullptr,
              const char* err_string = nullptr)
      : mSuiteName(suite_name), mSuiteVersion(suite_version) {
    mBasicSuite = in_data->pica_basicP;
    if (acquire()) {
      return;
    }
    if (out_data != nullptr) {
      out_data->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
      // The text goes in as the format: callers' messages hold no conversion.
      in_data->utils->ansi.sprintf(out_data->return_msg,
                                   err_string != nullptr ? err_string : "Not able to acquire AEFX Suite.");
    }
    throw static_cast<int>(A_Err_MISSING_SUITE);
  }

  SuiteScoper(SPBasicSuite* basic_suite, const char* suite_name, int suite_version)
      : mBasicSuite(basic_suite), mSuiteName(suite_name), mSuiteVersion(suite_version) {
    if (!acquire()) {
      throw static_cast<int>(A_Err_MISSING_SUITE);
    }
  }

  ~SuiteScoper() {
    if (mSuite != nullptr) {
      mBasicSuite->ReleaseSuite(mSuiteName, mSuiteVersion);
    }
  }

  SuiteScoper(const SuiteScoper&) = delete;
  SuiteScoper& operator=(const SuiteScoper&) = delete;

  const SuiteType* operator->() const { return mSuite; }

private:
  // True when the host answered without error; a table left null then is simply not
  // released later.
  bool acquire() {
    const void* table = nullptr;
    if (mBasicSuite->AcquireSuite(mSuiteName, mSuiteVersion, &table) != kSPNoError) {
      return false;
    }
    mSuite = static_cast<const SuiteType*>(table);
    return true;
  }

  const SuiteType* mSuite = nullptr;
  SPBasicSuite* mBasicSuite = nullptr;
  const char* mSuiteName;  // not copied: callers pass literals that outlive the scoper
  int mSuiteVersion;
};

PF_Err AcquireSuite(PF_InData* in_data, PF_OutData* out_data, const char* name, int version, const char* error_string,
                    void** suite);
PF_Err ReleaseSuite(PF_InData* in_data, PF_OutData* out_data, const char* name, int version, const char* error_string);
PF_Err AcquireDrawbotSuites(PF_InData* in_data, PF_OutData* out_data, DRAWBOT_Suites* suites);
PF_Err ReleaseDrawbotSuites(PF_InData* in_data, PF_OutData* out_data);

}  // namespace Quillmere::Velmira
