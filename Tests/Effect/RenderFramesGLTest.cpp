// Whole frames through the effect's entry, as a host sends them, against the CPU reference model: synthetic frames
// that strain one convention each (the skin band, alpha, padded rows, row direction, odd sizes) and the bundled
// portrait, for slider settings that cover each slider's extremes and the blur sizes 0, 1, 3, 9 and 30.
//
// Tolerance. The reference already gives, for every channel, the band of values a GPU may land on where the maths
// sits on a rounding edge: the 8-bit storage of the premultiplied colour between the passes (with a window of
// 1/40 of a level for float error, which the division by alpha then widens at low alpha), and a skin decision
// right at the range. Outside that band we allow at most 1 level: llvmpipe computes exp, sqrt and the 841-tap sums
// in single precision and may round a value that lies more than 1/40 of a level from an edge the other way (a
// wrong skin decision, a lost channel or a flipped row would be tens of levels off). The mean distance outside the
// band must stay below 0.01 levels over all channels: such roundings are rare, and a systematic slip of even one
// level on a tenth of the pixels would exceed it. On llvmpipe every frame here lies inside its band (maximum 0),
// the bands average under half a level, and the same frames with their rows flipped lie 25 to 255 levels out.
// Where full reddening pushes a saturated colour below 0 the effect takes a square root of a negative number,
// which GLSL leaves undefined; the reference accepts any value in such a channel, and the frames here avoid it.
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "HostDouble.h"
#include "Support/DecodedImage.h"
#include "Support/EffectSession.h"
#include "Support/ReferenceSliders.h"
#include "Support/TestContext.h"
#include "Support/TestFrames.h"

using namespace Quillmere::Velmira;

namespace {

constexpr int kMaxOutsideBand = 1;
constexpr double kMeanOutsideBand = 0.01;

struct Setting {
  const char* name;
  ReferenceSliders sliders;
  bool portrait;
};

// Test names and failure messages show the setting by its name.
void PrintTo(const Setting& setting, std::ostream* out) { *out << setting.name; }

// Sliders in order: blur, range, whiten, redden, pinking.
const Setting kSettings[] = {
    {"Defaults", {9, 10, 30, 0, 0}, true},        {"BlurZero", {0, 20, 30, 0, 0}, false},
    {"BlurOne", {1, 30, 0, 0, 0}, false},         {"BlurThreeFullRange", {3, 100, 0, 0, 0}, false},
    {"BlurThirty", {30, 15, 0, 0, 0}, true},      {"RangeZeroNothingAdjusted", {9, 0, 0, 0, 0}, false},
    {"WhitenFull", {9, 10, 100, 0, 0}, false},    {"ReddenFull", {9, 10, 0, 100, 0}, false},
    {"PinkingFull", {9, 10, 0, 0, 100}, false},   {"AllHalf", {9.4, 50, 50, 50, 50}, false},
    {"AllFull", {30, 100, 100, 100, 100}, false},
};

struct Frame {
  TestFrames::Kind kind;
  A_long width, height, inputRowbytes, outputRowbytes;
};

// Odd sizes, and rows padded on the way in and out by different amounts.
const Frame kFrames[] = {
    {TestFrames::Kind::HueSweep, 64, 40, 0, 0},
    {TestFrames::Kind::AlphaRamp, 37, 21, 37 * 4 + 12, 0},
    {TestFrames::Kind::TopBottom, 16, 11, 0, 16 * 4 + 28},
    {TestFrames::Kind::SkinGrain, 33, 29, 33 * 4 + 4, 33 * 4 + 8},
};

class WholeFrame : public ::testing::TestWithParam<Setting> {
protected:
  void SetUp() override { TestContext::use(); }

  void expectMatchesReference(EffectSession& session, const std::string& what) {
    const ReferenceFrame reference = session.reference();
    EXPECT_EQ(reference.undefinedChannels(), 0) << what << ": a frame that tests nothing somewhere";
    HostWorld* output = host.outputWorld();
    const FrameDeviation deviation = reference.compare(reinterpret_cast<const std::uint8_t*>(output->world()->data),
                                                       static_cast<std::size_t>(output->rowbytes()));
    EXPECT_LE(deviation.maximum, kMaxOutsideBand) << what << ": " << deviation.describe();
    EXPECT_LT(deviation.mean, kMeanOutsideBand) << what << ": " << deviation.describe();
    EXPECT_TRUE(host.outputWorld()->paddingIntact()) << what << ": padding of the output written";
  }

  HostDouble host;
};

}  // namespace

TEST_P(WholeFrame, MatchesTheReferenceModel) {
  const Setting& setting = GetParam();
  EffectSession session(host);
  session.setSliders(setting.sliders);
  for (const Frame& f : kFrames) {
    TestFrames::fill(session.frame(f.width, f.height, f.inputRowbytes, f.outputRowbytes), f.kind);
    ASSERT_EQ(session.render(), PF_Err_NONE) << TestFrames::name(f.kind);
    expectMatchesReference(session, TestFrames::name(f.kind));
  }
  if (setting.portrait) {
    std::ifstream exists(VELMIRA_SAMPLE_PORTRAIT);
    if (!exists) {
      GTEST_SKIP() << "no portrait at " << VELMIRA_SAMPLE_PORTRAIT;
    }
    const DecodedImage portrait = DecodedImage::load(VELMIRA_SAMPLE_PORTRAIT);
    TestFrames::copy(portrait, session.frame(portrait.width, portrait.height, 0, portrait.width * 4 + 64));
    ASSERT_EQ(session.render(), PF_Err_NONE);
    expectMatchesReference(session, "portrait");
  }
}

INSTANTIATE_TEST_SUITE_P(Sliders, WholeFrame, ::testing::ValuesIn(kSettings),
                         [](const ::testing::TestParamInfo<Setting>& param) { return std::string(param.param.name); });
