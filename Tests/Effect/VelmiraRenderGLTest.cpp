// How the render object reads the sliders through the host, and when it asks for a new shader.
#include "VelmiraRender.h"

#include <gtest/gtest.h>

#include <string>

#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "Support/ReferenceSliders.h"
#include "Velmira.h"

namespace Quillmere::Velmira {
namespace {

class VelmiraRenderTest : public ::testing::Test {
protected:
  PF_Err preaprea() { return render.preaprea(&host.inData(), &host.outData(), nullptr); }

  CallRecorder calls;
  EffectHost host{EntryPointFunc, &calls};
  VelmiraRender render;
};

// Each slider is read at the frame's time and checked back in: "Skin Blur" keyed from 0 at 0 s to 18.8 at 1 s and
// "Skin Whiten" from 0 % to 100 % are read at 0.5 s. Sliders 2 to 5 are divided by 100 in single precision after the
// conversion (0.7 tells that apart from a division in double), and the blur size is kept unscaled.
TEST_F(VelmiraRenderTest, PreapreaReadsEachSliderAtTheFrameTimeAsASinglePrecisionQuotient) {
  ReferenceSliders{0, 30, 0, 0.7, 0}.applyTo(host);
  host.setTrack(0, ParamTrack::parse("0@0,18.8@1"));
  host.setTrack(2, ParamTrack::parse("0@0,100@1"));
  host.setFrameRate(24);
  host.setTime(FrameTime{300, 5, 600});
  ASSERT_EQ(preaprea(), PF_Err_NONE);
  EXPECT_EQ(render.blurSize(), 9.4f);
  EXPECT_EQ(render.skinColorRange(), 30.0f / 100.0f);
  EXPECT_EQ(render.whitening(), 0.5f);
  EXPECT_EQ(render.redden(), static_cast<float>(0.7) / 100.0f);
  ASSERT_NE(render.redden(), static_cast<float>(0.7 / 100.0)) << "0.7 no longer tells the two divisions apart";
  EXPECT_EQ(render.pinking(), 0.0f);
  EXPECT_EQ(host.openParamCheckouts(), 0);
}

// Where a failure happens among the ten calls decides what is read: nothing is checked out after it, later sliders
// become 0, and all five check-ins still run. A later failure of the last check-in does not replace the first error.
// Position 1 is the checkout of slider 1, 2 its check-in, 3 the checkout of slider 2, ...
TEST_F(VelmiraRenderTest, AFailedCallStopsTheCheckoutsButChecksEverythingIn) {
  ReferenceSliders{9, 10, 30, 40, 50}.applyTo(host);
  const float real[] = {9.0f, 0.1f, 0.3f, 0.4f, 0.5f};
  for (int position = 1; position <= 10; ++position) {
    SCOPED_TRACE("failure at call " + std::to_string(position));
    const int slider = (position + 1) / 2;
    const bool atCheckout = position % 2 == 1;
    const int checkouts = calls.count("checkout_param"), checkins = calls.count("checkin_param");
    calls.failCall(atCheckout ? "checkout_param" : "checkin_param", (atCheckout ? checkouts : checkins) + slider,
                   PF_Err_INTERNAL_STRUCT_DAMAGED);
    if (position < 10) calls.failCall("checkin_param", checkins + 5, PF_Err_OUT_OF_MEMORY);

    EXPECT_EQ(preaprea(), PF_Err_INTERNAL_STRUCT_DAMAGED);
    EXPECT_EQ(calls.count("checkout_param") - checkouts, slider);
    EXPECT_EQ(calls.count("checkin_param") - checkins, 5);
    // A slider keeps its value when it was read before the failure: all before it, and the failing one itself when
    // only its check-in failed.
    const float got[] = {render.blurSize(), render.skinColorRange(), render.whitening(), render.redden(),
                         render.pinking()};
    for (int s = 1; s <= 5; ++s) {
      const bool read = s < slider || (s == slider && !atCheckout);
      EXPECT_EQ(got[s - 1], read ? real[s - 1] : 0.0f) << "slider " << s;
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
