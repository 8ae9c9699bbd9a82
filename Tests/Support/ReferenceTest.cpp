// The CPU model's own conventions, pinned where a slip would let every frame comparison pass a wrong answer: the
// band at the skin edge, the exact 8-bit storage between passes where no band applies, and which way the colour
// adjustments move. (A slip in the hue, the blur or the rows would fail the whole-frame comparisons instead.)
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "Support/ReferenceRender.h"
#include "Support/SkinTest.h"

using namespace Quillmere::Velmira;

namespace {

const ReferenceSliders kNeutral{0, 0, 0, 0, 0};  // no blur, no skin, no colour change

}  // namespace

TEST(SkinTest, DecisionIsDistanceBelowRangeWithTheEdgeEitherWay) {
  struct Case {
    std::uint8_t red, green, blue;
    double range;
    SkinDecision expected;
    const char* why;
  };
  const Case cases[] = {
      {128, 128, 128, 10.0, SkinDecision::EitherWay, "grey is 0.1 from skin, the same float as 10 %"},
      {128, 128, 128, 20.0, SkinDecision::Blurred, "grey inside a wider band"},
      {128, 128, 128, 5.0, SkinDecision::NotBlurred, "grey outside a narrow band"},
      {255, 77, 0, 0.0, SkinDecision::NotBlurred, "range 0 blurs nothing, not even the skin hue"},
      {255, 77, 0, 1.0, SkinDecision::Blurred, "hue 0.0503 is 0.0007 from skin, scaled"},
      {0, 255, 255, 100.0, SkinDecision::Blurred, "cyan is 0.9 away, inside 100 %"},
      {0, 0, 255, 100.0, SkinDecision::Blurred, "blue wraps round to 0.766"},
      {255, 0, 128, 26.0, SkinDecision::NotBlurred, "hue 0.916 wraps round to 0.267 away"},
      {255, 0, 128, 27.0, SkinDecision::Blurred, "and is inside a band of 0.27"},
  };
  for (const Case& c : cases) EXPECT_EQ(SkinTest::decide(c.red, c.green, c.blue, c.range), c.expected) << c.why;
}

TEST(ReferenceRender, StorageBetweenPassesIsEightBitPremultipliedAndReadAtRowbytes) {
  using Bytes = std::vector<std::uint8_t>;
  struct Case {
    const char* what;
    ReferenceSliders sliders;
    Bytes input;
    int width, height, rowbytes;
    Bytes expected;
  };
  // clang-format off
  const Case cases[] = {
      {"neutral sliders leave opaque pixels as they were", kNeutral,
       {255, 200, 100, 50, 255, 0, 255, 7, 255, 13, 14, 15, 255, 255, 255, 255}, 2, 2, 8,
       {255, 200, 100, 50, 255, 0, 255, 7, 255, 13, 14, 15, 255, 255, 255, 255}},
      // 200 * 128 / 255 = 100.39 is stored as 100, and 100 / 128 * 255 = 199.2 comes back as 199.
      {"partial alpha loses precision", kNeutral, {128, 200, 100, 50}, 1, 1, 4, {128, 199, 100, 50}},
      {"alpha 0 comes back all zero, whitening or not", ReferenceSliders{}, {0, 200, 100, 50}, 1, 1, 4, {0, 0, 0, 0}},
      {"padding holds a colour that must not be read", kNeutral,
       {255, 10, 20, 30, 255, 255, 255, 255, 255, 40, 50, 60, 0, 0, 0, 0}, 1, 2, 8, {255, 10, 20, 30, 255, 40, 50, 60}},
  };
  // clang-format on
  for (const Case& c : cases) {
    const ReferenceFrame frame = ReferenceRender(c.sliders).render(c.input.data(), c.width, c.height, c.rowbytes);
    EXPECT_EQ(frame.expected(), c.expected) << c.what;
    EXPECT_EQ(frame.low(), c.expected) << c.what << ": no band where nothing lies on an edge";
    EXPECT_EQ(frame.high(), c.expected) << c.what << ": no band where nothing lies on an edge";
  }
}

TEST(ReferenceRender, ColourAdjustmentsMoveTheWayTheirNamesSay) {
  const ReferenceRender::Colour skin = {0.8, 0.55, 0.45};
  // Sliders in order: blur, range, whiten, redden, pinking.
  const auto whitened = ReferenceRender({0, 0, 100, 0, 0}).adjustColour(skin);
  const auto reddened = ReferenceRender({0, 0, 0, 100, 0}).adjustColour(skin);
  const auto pinked = ReferenceRender({0, 0, 0, 0, 100}).adjustColour(skin);
  for (int c = 0; c < 3; ++c) {
    EXPECT_GT(whitened[c], skin[c]) << "whitening brightens channel " << c;
    EXPECT_GE(pinked[c], skin[c]) << "pinking never darkens channel " << c;
  }
  EXPECT_GT(reddened[0] - reddened[2], skin[0] - skin[2]) << "reddening widens red over blue";
  EXPECT_EQ(ReferenceRender(kNeutral).adjustColour(skin), skin);
}
