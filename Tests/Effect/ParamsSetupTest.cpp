#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "HostDouble.h"
#include "Velmira.h"

namespace Quillmere::Velmira {
namespace {

struct ExpectedSlider {
  const char* name;
  double value;
  float validMin;
  float validMax;
  float sliderMin;
  float sliderMax;
  A_short precision;
  A_short displayFlags;
};

// The sliders as the host must see them, in order; index and id are the row number + 1.
const ExpectedSlider kExpected[] = {
    {"Skin Blur", 9.0, 0.0f, 30.0f, 0.0f, 300.0f, 0, 0},
    {"Skin Blur Range", 10.0, 0.0f, 100.0f, 0.0f, 100.0f, 1, 1},
    {"Skin Whiten", 30.0, 0.0f, 100.0f, 0.0f, 100.0f, 1, 1},
    {"Skin Redden", 0.0, 0.0f, 100.0f, 0.0f, 100.0f, 1, 1},
    {"Skin Pinking", 0.0, 0.0f, 100.0f, 0.0f, 100.0f, 1, 1},
};

TEST(ParamsSetup, AddsTheFiveSlidersFieldByFieldAfterCopyingEachName) {
  HostDouble host;
  ASSERT_EQ(host.send(EntryPointFunc, PF_Cmd_PARAMS_SETUP), PF_Err_NONE);
  EXPECT_EQ(host.outData()->num_params, 6);
  const std::vector<PF_ParamDef> added = host.addedParams();
  ASSERT_EQ(added.size(), 5u);

  for (std::size_t row = 0; row < added.size(); ++row) {
    const ExpectedSlider& e = kExpected[row];
    const PF_ParamDef& def = added[row];
    const PF_FloatSliderDef& fs = def.u.fs_d;
    SCOPED_TRACE(e.name);
    EXPECT_EQ(def.param_type, PF_Param_FLOAT_SLIDER);
    EXPECT_EQ(def.uu.id, static_cast<A_long>(row + 1));
    EXPECT_STREQ(def.name, e.name);
    EXPECT_EQ(fs.value, e.value);
    EXPECT_EQ(fs.dephault, static_cast<float>(e.value));
    EXPECT_EQ(fs.valid_min, e.validMin);
    EXPECT_EQ(fs.valid_max, e.validMax);
    EXPECT_EQ(fs.slider_min, e.sliderMin);
    EXPECT_EQ(fs.slider_max, e.sliderMax);
    EXPECT_EQ(fs.precision, e.precision);
    EXPECT_EQ(fs.display_flags, e.displayFlags);
    EXPECT_EQ(fs.curve_tolerance, 0.05f);

    // Everything else stays zero, also the bytes after the name.
    EXPECT_EQ(std::string(def.name + std::strlen(e.name), sizeof def.name - std::strlen(e.name)),
              std::string(sizeof def.name - std::strlen(e.name), '\0'));
    EXPECT_EQ(std::string(fs.value_desc, sizeof fs.value_desc), std::string(sizeof fs.value_desc, '\0'));
    EXPECT_EQ(std::make_tuple(def.ui_flags, def.ui_width, def.ui_height, def.flags, def.unused, fs.phase, fs.fs_flags,
                              fs.useExponent, fs.exponent),
              std::make_tuple(0, 0, 0, 0, 0, 0.0, 0, 0, 0.0f));
  }

  std::vector<std::string> sequence;
  for (const HostCall& call : host.calls()) {
    sequence.push_back(call.name + " " + call.text);
    if (call.name == "add_param") {
      EXPECT_EQ(call.args, std::vector<std::int64_t>{-1}) << call.text << " was not appended";
      EXPECT_EQ(call.effectRef, host.effectRef());
    }
  }
  EXPECT_EQ(sequence,
            (std::vector<std::string>{"ansi.strcpy Skin Blur", "add_param Skin Blur", "ansi.strcpy Skin Blur Range",
                                      "add_param Skin Blur Range", "ansi.strcpy Skin Whiten", "add_param Skin Whiten",
                                      "ansi.strcpy Skin Redden", "add_param Skin Redden", "ansi.strcpy Skin Pinking",
                                      "add_param Skin Pinking"}));
}

class ParamsSetupRefused : public ::testing::TestWithParam<int> {};

// The host's error ends the command at once: later sliders are not offered.
TEST_P(ParamsSetupRefused, StopsAtTheRefusedSlider) {
  const int refused = GetParam();
  HostDouble host;
  host.failCall("add_param", refused, PF_Err_OUT_OF_MEMORY);
  EXPECT_EQ(host.send(EntryPointFunc, PF_Cmd_PARAMS_SETUP), PF_Err_OUT_OF_MEMORY);
  EXPECT_EQ(host.count("add_param"), refused);
  EXPECT_EQ(host.addedParams().size(), static_cast<std::size_t>(refused - 1));
  EXPECT_EQ(host.outData()->num_params, 6);
}

INSTANTIATE_TEST_SUITE_P(EachSlider, ParamsSetupRefused, ::testing::Range(1, 6));

}  // namespace
}  // namespace Quillmere::Velmira
