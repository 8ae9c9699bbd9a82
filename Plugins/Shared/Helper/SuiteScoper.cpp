#include "Helper/SuiteScoper.h"

#include <type_traits>

namespace Quillmere::Velmira {

namespace {

// The host's own sprintf writes the message, as the format with no further arguments:
// messages handed in by callers therefore hold no conversion. return_msg is the host's
// fixed field of PF_MAX_EFFECT_MSG_LEN + 1 bytes and is written without a bound, as the
// host's sprintf knows no size: our own texts are short, and a caller's text must fit.
void reportError(PF_InData* in_data, PF_OutData* out_data, const char* message) {
  out_data->out_flags |= PF_OutFlag_DISPLAY_ERROR_MESSAGE;
  in_data->utils->ansi.sprintf(out_data->return_msg, message);
}

struct DrawbotSuiteName {
  const char* name;
  int version;
};

// The order of the fields of DRAWBOT_Suites; release goes in this order too.
constexpr DrawbotSuiteName kDrawbotSuites[] = {
    {kDRAWBOT_DrawSuite, kDRAWBOT_DrawSuite_Version1},
    {kDRAWBOT_SupplierSuite, kDRAWBOT_SupplierSuite_Version1},
    {kDRAWBOT_SurfaceSuite, kDRAWBOT_SurfaceSuite_Version2},
    {kDRAWBOT_PathSuite, kDRAWBOT_PathSuite_Version1},
};

}  // namespace

PF_Err AcquireSuite(PF_InData* in_data, PF_OutData* out_data, const char* name, int version, const char* error_string,
                    void** suite) {
  SPBasicSuite* basic = in_data->pica_basicP;
  if (basic != nullptr) {
    // The host's code is not trusted on its own: what counts is whether a table came back.
    basic->AcquireSuite(name, version, const_cast<const void**>(suite));
    if (*suite != nullptr) {
      return PF_Err_NONE;
    }
  }
  char defaultMessage[1024];
  in_data->utils->ansi.sprintf(defaultMessage, "Not able to acquire AEFX Suite-%s-%d", name, version);
  reportError(in_data, out_data, error_string != nullptr ? error_string : defaultMessage);
  return PF_Err_BAD_CALLBACK_PARAM;
}

PF_Err ReleaseSuite(PF_InData* in_data, PF_OutData* out_data, const char* name, int version, const char* error_string) {
  SPBasicSuite* basic = in_data->pica_basicP;
  if (basic != nullptr) {
    basic->ReleaseSuite(name, version);
    return PF_Err_NONE;
  }
  reportError(in_data, out_data, error_string != nullptr ? error_string : "Not able to release AEFX Suite.");
  return PF_Err_BAD_CALLBACK_PARAM;
}

PF_Err AcquireDrawbotSuites(PF_InData* in_data, PF_OutData* out_data, DRAWBOT_Suites* suites) {
  if (suites == nullptr) {
    reportError(in_data, out_data, "NULL suite pointer passed to AEFX_AcquireDrawbotSuites");
    return PF_Err_UNRECOGNIZED_PARAM_TYPE;
  }
  // Each field goes through a plain void* so that no pointer is written through another type.
  PF_Err err = PF_Err_NONE;
  int next = 0;
  auto acquireInto = [&](auto*& field) {
    if (err != PF_Err_NONE) {
      return;  // suites acquired before a failure stay held: the caller releases all four anyway
    }
    const DrawbotSuiteName& suite = kDrawbotSuites[next++];
    void* table = field;
    err = AcquireSuite(in_data, out_data, suite.name, suite.version, nullptr, &table);
    field = static_cast<std::remove_reference_t<decltype(field)>>(table);
  };
  acquireInto(suites->drawbot_suiteP);
  acquireInto(suites->supplier_suiteP);
  acquireInto(suites->surface_suiteP);
  acquireInto(suites->path_suiteP);
  return err;
}

PF_Err ReleaseDrawbotSuites(PF_InData* in_data, PF_OutData* out_data) {
  for (const DrawbotSuiteName& suite : kDrawbotSuites) {
    ReleaseSuite(in_data, out_data, suite.name, suite.version, nullptr);
  }
  return PF_Err_NONE;
}

}  // namespace Quillmere::Velmira
