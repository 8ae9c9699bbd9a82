// Whole frames through the effect and the host, against the CPU reference model: synthetic frames
// that strain one convention each (the skin band, alpha, padded rows, row direction, odd sizes) and the bundled
// portrait, for slider settings that cover each slider's extremes and the blur sizes 0, 1, 3, 9 and 30.
// (The tolerance is the one of every comparison with the reference, stated and justified in Support/ReferenceRender.h.)
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>

#include "Core/EffectHost.h"
#include "GL/OpenglShader.h"
#include "Media/MediaReader.h"
#include "Support/GLFixture.h"
#include "Support/ReferenceRender.h"
#include "Support/TestFrames.h"
#include "Velmira.h"
#include "VelmiraRender.h"

namespace Quillmere::Velmira {
namespace {

constexpr std::uint8_t kPaddingMarker = 0xA5;

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

// Odd sizes, and rows padded on the way in and out by different amounts.
const struct {
  const char* name;
  TestFrames::Kind kind;
  int width, height;
  std::size_t inputAlignment, outputAlignment;
} kFrames[] = {
    {"hue sweep", TestFrames::Kind::HueSweep, 64, 40, 64, 64},
    {"alpha ramp", TestFrames::Kind::AlphaRamp, 37, 21, 16, 64},
    {"top and bottom", TestFrames::Kind::TopBottom, 16, 11, 64, 256},
    {"skin grain", TestFrames::Kind::SkinGrain, 33, 29, 4, 32},
};

class WholeFrame : public ::testing::TestWithParam<Setting> {
protected:
  void SetUp() override { GetParam().sliders.applyTo(host); }

  // The output's padding is marked first, so that a write beyond a row's pixels shows.
  void expectMatchesReference(ArgbFrame& input, std::size_t outputAlignment, const std::string& what) {
    ArgbFrame output;
    output.allocate(input.width(), input.height(), outputAlignment);
    const std::size_t used = static_cast<std::size_t>(input.width()) * 4;
    for (int y = 0; y < output.height(); ++y)
      std::memset(output.row(y) + used, kPaddingMarker, output.rowBytes() - used);
    host.render(input, output, FrameTime{});
    EXPECT_TRUE(matchesReference(input, output, GetParam().sliders)) << what;
    for (int y = 0; y < output.height(); ++y) {
      for (std::size_t x = used; x < output.rowBytes(); ++x) {
        ASSERT_EQ(output.row(y)[x], kPaddingMarker) << what << ": padding written at row " << y;
      }
    }
  }

  EffectHost host{EntryPointFunc};
};

TEST_P(WholeFrame, MatchesTheReferenceModel) {
  for (const auto& f : kFrames) {
    ArgbFrame input;
    TestFrames::make(input, f.kind, f.width, f.height, f.inputAlignment);
    expectMatchesReference(input, f.outputAlignment, f.name);
  }
  if (GetParam().portrait) {
    MediaReader reader(VELMIRA_SAMPLE_PORTRAIT);
    ArgbFrame portrait;
    ASSERT_TRUE(reader.read(portrait));
    expectMatchesReference(portrait, 128, "portrait");
  }
}

INSTANTIATE_TEST_SUITE_P(Sliders, WholeFrame, ::testing::ValuesIn(kSettings),
                         [](const ::testing::TestParamInfo<Setting>& param) { return std::string(param.param.name); });

// Every whole "Skin Blur" value the slider offers writes one of these texts (sizes with the same half-width share
// one); each must compile and link on a real 3.2 core context, the largest taking seconds on llvmpipe.
TEST(SkinShader, TextOfEveryBlurSizeCompilesAndLinks) {
  GLFixture::use();
  for (int size = 0; size <= 29; size += size == 0 ? 1 : 2) {
    SCOPED_TRACE("Skin Blur " + std::to_string(size));
    OpenglShader shader(VelmiraRender::vertexSource(), VelmiraRender::fragmentSource(static_cast<float>(size)));
    testing::internal::CaptureStdout();
    shader.useProgram();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "compile or link messages";
    EXPECT_NE(shader.getUniformLocation("videoTexture"), -1) << "no program was linked";
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
