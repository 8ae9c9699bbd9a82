#include "VelmiraRender.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "HostDouble.h"

namespace Quillmere::Velmira {
namespace {

using Names = std::vector<std::string>;

void setSliders(HostDouble& host, double blur, double range, double whiten, double redden, double pink) {
  host.setParam(1, blur);
  host.setParam(2, range);
  host.setParam(3, whiten);
  host.setParam(4, redden);
  host.setParam(5, pink);
}

TEST(VelmiraRender, StartsWithItsOwnValuesAndARebuildDue) {
  const VelmiraRender render;
  EXPECT_EQ(render.blurSize(), 10.0f);
  EXPECT_EQ(render.skinColorRange(), 0.3f);
  EXPECT_EQ(render.whitening(), 0.3f);
  EXPECT_EQ(render.redden(), 0.0f);
  EXPECT_EQ(render.pinking(), 0.0f);
  EXPECT_TRUE(render.rebuildRequested());
  EXPECT_EQ(render.shader(), nullptr);
}

// Slider 3 is animated: its value is read at the frame time.
TEST(VelmiraRenderPreaprea, ChecksOutEachSliderAtTheFrameTimeAndChecksItBackIn) {
  HostDouble host;
  host.setTime(120, 5, 600);
  setSliders(host, 9, 10, 30, 0, 0);
  host.setParam(3, [](A_long time, A_long, A_u_long scale) { return 250.0 * time / scale; });
  VelmiraRender render;
  EXPECT_EQ(render.preaprea(host.inData(), host.outData(), host.smartRenderExtra()), PF_Err_NONE);
  EXPECT_EQ(render.whitening(), 0.5f);

  const auto calls = host.calls();
  ASSERT_EQ(calls.size(), 10u);
  for (std::size_t k = 0; k < 5; ++k) {
    const HostCall& checkout = calls[2 * k];
    const HostCall& checkin = calls[2 * k + 1];
    const auto index = static_cast<std::int64_t>(k + 1);
    EXPECT_EQ(checkout.name, "checkout_param");
    EXPECT_EQ(checkout.args, (std::vector<std::int64_t>{index, 120, 5, 600})) << "slider " << index;
    EXPECT_EQ(checkout.effectRef, host.effectRef());
    EXPECT_EQ(checkin.name, "checkin_param");
    EXPECT_EQ(checkin.param.uu.id, index) << "checked in another record than slider " << index;
  }
}

// Sliders 2 to 5 are divided by 100 in single precision after the conversion: 0.7 tells
// that apart from a division in double, 100 must give exactly 1.
TEST(VelmiraRenderPreaprea, StoresPercentagesAsSinglePrecisionQuotients) {
  const float seven = static_cast<float>(0.7) / 100.0f;
  ASSERT_NE(seven, static_cast<float>(0.7 / 100.0)) << "0.7 no longer tells the two divisions apart";
  HostDouble host;
  setSliders(host, 9.4, 30, 100, 0.7, 0);
  VelmiraRender render;
  ASSERT_EQ(render.preaprea(host.inData(), host.outData(), host.smartRenderExtra()), PF_Err_NONE);
  EXPECT_EQ(render.blurSize(), 9.4f) << "the blur size is stored unscaled, as a float";
  EXPECT_EQ(render.skinColorRange(), 30.0f / 100.0f);
  EXPECT_EQ(render.whitening(), 1.0f);
  EXPECT_EQ(render.redden(), seven);
  EXPECT_EQ(render.pinking(), 0.0f);
}

// The rule is on the float values: a new fraction rebuilds though the integer size stays,
// and a size that is not a number always does.
TEST(VelmiraRenderRebuild, FollowsTheBlurSizeAsAFloat) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    double before;
    double after;
    bool rebuild;
  } cases[] = {{9, 9, false},    {9, 9.4, true}, {9, 10, true},   {30, 3, true},
               {0, -0.0, false}, {9, nan, true}, {nan, nan, true}};
  for (const auto& c : cases) {
    HostDouble host;
    setSliders(host, c.before, 10, 30, 0, 0);
    VelmiraRender render;
    ASSERT_EQ(render.preaprea(host.inData(), host.outData(), host.smartRenderExtra()), PF_Err_NONE);
    render.buildShader();
    const OpenglShader* first = render.shader();
    ASSERT_NE(first, nullptr);
    ASSERT_FALSE(render.rebuildRequested());

    setSliders(host, c.after, 80, 10, 50, 50);  // the other sliders never ask for a rebuild
    ASSERT_EQ(render.preaprea(host.inData(), host.outData(), host.smartRenderExtra()), PF_Err_NONE);
    EXPECT_EQ(render.rebuildRequested(), c.rebuild) << c.before << " -> " << c.after;
    if (!c.rebuild) {
      render.buildShader();
      EXPECT_EQ(render.shader(), first) << "an unchanged blur size replaced the shader, " << c.before;
    }
  }
}

// Where the failure happens among the ten calls decides what is read: nothing is checked
// out after it, later sliders become 0, and all five check-ins still run. A later
// failure of the last check-in does not replace the first error.
// The parameter is the position, 1 to 10: checkout of slider 1, its check-in, checkout of
// slider 2, ...
class VelmiraRenderFailure : public ::testing::TestWithParam<int> {};

TEST_P(VelmiraRenderFailure, StopsCheckingOutButChecksEverythingIn) {
  const int position = GetParam();
  const int slider = (position + 1) / 2;
  const bool atCheckout = position % 2 == 1;
  HostDouble host;
  setSliders(host, 9, 10, 30, 40, 50);
  host.failCall(atCheckout ? "checkout_param" : "checkin_param", slider, PF_Err_INTERNAL_STRUCT_DAMAGED);
  if (position < 10) {
    host.failCall("checkin_param", 5, PF_Err_OUT_OF_MEMORY);
  }
  VelmiraRender render;

  EXPECT_EQ(render.preaprea(host.inData(), host.outData(), host.smartRenderExtra()), PF_Err_INTERNAL_STRUCT_DAMAGED);
  EXPECT_EQ(host.count("checkout_param"), slider);
  EXPECT_EQ(host.count("checkin_param"), 5);

  // A slider keeps its value when it was read before the failure: all before it, and the
  // failing one itself when only its check-in failed.
  const float real[] = {9.0f, 0.1f, 0.3f, 0.4f, 0.5f};
  const float got[] = {render.blurSize(), render.skinColorRange(), render.whitening(), render.redden(),
                       render.pinking()};
  for (int s = 1; s <= 5; ++s) {
    const bool read = s < slider || (s == slider && !atCheckout);
    EXPECT_EQ(got[s - 1], read ? real[s - 1] : 0.0f) << "slider " << s;
  }
}

INSTANTIATE_TEST_SUITE_P(EachCall, VelmiraRenderFailure, ::testing::Range(1, 11));

}  // namespace
}  // namespace Quillmere::Velmira
