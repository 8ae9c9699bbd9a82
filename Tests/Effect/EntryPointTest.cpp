// The effect's entry through the host: what each command declares and asks of the host, and how failures inside
// the effect reach it.
#include <gtest/gtest.h>

#include <cstring>

#include <fmt/format.h>
#include <stdexcept>
#include <string>

#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "Core/HostError.h"
#include "Velmira.h"
#include "VelmiraVersion.h"

namespace Quillmere::Velmira {
namespace {

// The sliders as the host must see them, in order: id, name, value, default, valid range, slider range, precision,
// display flags and curve tolerance.
const char* const kSliders[] = {
    "1 Skin Blur 9 9 0..30 0..300 0 0 0.05",      "2 Skin Blur Range 10 10 0..100 0..100 1 1 0.05",
    "3 Skin Whiten 30 30 0..100 0..100 1 1 0.05", "4 Skin Redden 0 0 0..100 0..100 1 1 0.05",
    "5 Skin Pinking 0 0 0..100 0..100 1 1 0.05",
};

TEST(EntryPoint, ParamsSetupAddsTheFiveSlidersFieldByFieldAfterCopyingEachName) {
  CallRecorder calls;
  EffectHost host(EntryPointFunc, &calls);
  ASSERT_EQ(host.sliders().size(), 5u);
  for (std::size_t row = 0; row < 5; ++row) {
    const PF_ParamDef& def = host.sliders()[row].def;
    const PF_FloatSliderDef& fs = def.u.fs_d;
    EXPECT_EQ(fmt::format("{} {} {:g} {:g} {:g}..{:g} {:g}..{:g} {} {} {:g}", def.uu.id, def.name, fs.value,
                          fs.dephault, fs.valid_min, fs.valid_max, fs.slider_min, fs.slider_max, fs.precision,
                          fs.display_flags, fs.curve_tolerance),
              kSliders[row]);
    // Everything else stays zero: the record is the filled fields over a cleared one.
    PF_ParamDef rest = def, zero{};
    rest.param_type = PF_Param_LAYER;  // 0: the host already refuses any type but a float slider
    rest.uu.id = 0;
    std::memset(rest.name, 0, std::strlen(def.name));
    rest.u.fs_d = PF_FloatSliderDef{};
    EXPECT_EQ(std::memcmp(&rest, &zero, sizeof rest), 0) << "a field beyond the slider's, or the name's tail, is set";
  }
  // Each record is appended (index -1), its name copied in before: the host keeps the record as it was given.
  for (const CallRecorder::Call& call : calls.calls()) {
    if (call.name == "add_param") {
      EXPECT_EQ(call.numbers.at(0), -1);
    }
  }
}

// The host's error ends the command at once: later sliders are not offered.
TEST(EntryPoint, ParamsSetupStopsAtARefusedSlider) {
  for (int refused = 1; refused <= 5; ++refused) {
    CallRecorder calls;
    calls.failCall("add_param", refused, PF_Err_OUT_OF_MEMORY);
    EXPECT_THROW(EffectHost(EntryPointFunc, &calls), HostError) << "slider " << refused;
    EXPECT_EQ(calls.count("add_param"), refused);
  }
}

// About formats through the PF ANSI suite and gives it back whatever happens inside: a refused suite and a sprintf
// of the suite's that throws both show. Any integer thrown inside becomes 516; any other exception passes through. The
// commands the effect does not handle write nothing and call nothing.
TEST(EntryPoint, AboutGivesBackItsSuiteAndTurnsIntegersThrownInsideInto516AndOtherCommandsDoNothing) {
  CallRecorder calls;
  EffectHost host(EntryPointFunc, &calls);
  const std::string about =
      "Velmira v" + std::to_string(Version::kMajor) + "." + std::to_string(Version::kMinor) + "\rVelmira";
  EXPECT_EQ(host.about(), about);
  calls.failCall("AcquireSuite", calls.count("AcquireSuite") + 1, kSPSuiteNotFoundError);
  EXPECT_EQ(host.send(PF_Cmd_ABOUT), PF_Err_BAD_CALLBACK_PARAM) << "a missing suite is thrown as 13";
  EXPECT_EQ(host.outData().return_msg[0], '\0');
  for (int thrown : {0, 4, 516, -7}) {
    calls.throwOnCall("ANSISuite.sprintf", calls.count("ANSISuite.sprintf") + 1, std::make_exception_ptr(thrown));
    EXPECT_EQ(host.send(PF_Cmd_ABOUT), PF_Err_BAD_CALLBACK_PARAM) << "thrown " << thrown;
  }
  calls.throwOnCall("ANSISuite.sprintf", calls.count("ANSISuite.sprintf") + 1,
                    std::make_exception_ptr(std::runtime_error("out of host memory")));
  EXPECT_THROW(host.send(PF_Cmd_ABOUT), std::runtime_error);
  EXPECT_EQ(host.heldSuites(), 0);

  const std::size_t before = calls.calls().size();
  for (PF_Cmd cmd : std::initializer_list<PF_Cmd>{PF_Cmd_UNUSED_0, PF_Cmd_SEQUENCE_SETUP, PF_Cmd_RENDER,
                                                  PF_Cmd_FRAME_SETUP, PF_Cmd_DO_DIALOG, PF_Cmd_USER_CHANGED_PARAM,
                                                  PF_Cmd_SMART_RENDER_GPU, PF_Cmd_NUM_CMDS, -1}) {
    EXPECT_EQ(host.send(cmd), PF_Err_NONE) << "command " << cmd;
    PF_OutData untouched{};
    untouched.num_params = host.outData().num_params;
    EXPECT_EQ(std::memcmp(&untouched, &host.outData(), sizeof untouched), 0) << "command " << cmd;
  }
  EXPECT_EQ(calls.calls().size(), before);
}

}  // namespace
}  // namespace Quillmere::Velmira
