// The CPU model's own conventions, pinned where a slip would make every frame comparison judge against the wrong
// answer: the hue circle, the skin edge, the 8-bit storage between passes, which channels the blur touches.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "Reference/ReferenceRender.h"
#include "Reference/SkinTest.h"

using namespace Quillmere::Velmira;

namespace {

struct HueCase {
    double red, green, blue, hue;
};

ReferenceSliders neutral(double blur = 0.0, double range = 0.0) {
    ReferenceSliders sliders;
    sliders.blur = blur;
    sliders.range = range;
    sliders.whiten = 0.0;
    return sliders;
}

}  // namespace

TEST(SkinTest, HueRunsRoundTheCircleFromRedWithGreyAtZero) {
    const HueCase cases[] = {
        {1, 0, 0, 0.0},       {1, 1, 0, 1.0 / 6},   {0, 1, 0, 2.0 / 6},      {0, 1, 1, 3.0 / 6},
        {0, 0, 1, 4.0 / 6},   {1, 0, 1, 5.0 / 6},   {0.5, 0.5, 0.5, 0.0},    {1, 0.3, 0, 0.05},
        {1, 0, 0.3, 1 - 0.05},
    };
    for (const HueCase& c : cases) {
        EXPECT_NEAR(SkinTest::hue(c.red, c.green, c.blue), c.hue, 1e-12)
            << "rgb " << c.red << ", " << c.green << ", " << c.blue;
    }
}

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
    for (const Case& c : cases) {
        EXPECT_EQ(SkinTest::decide(c.red, c.green, c.blue, c.range), c.expected) << c.why;
    }
}

TEST(ReferenceRender, NeutralSlidersReturnOpaqueFramesUnchanged) {
    const std::vector<std::uint8_t> input = {255, 200, 100, 50, 255, 0, 255, 7, 255, 13, 14, 15, 255, 255, 255, 255};
    const ReferenceFrame frame = ReferenceRender(neutral()).render(input.data(), 2, 2, 8);
    EXPECT_EQ(frame.expected(), input);
    EXPECT_EQ(frame.low(), input);
    EXPECT_EQ(frame.high(), input);
}

TEST(ReferenceRender, PartialAlphaLosesPrecisionInEightBitPremultipliedStorage) {
    // 200 * 128 / 255 = 100.39 is stored as 100, and 100 / 128 * 255 = 199.2 comes back as 199.
    const std::vector<std::uint8_t> input = {128, 200, 100, 50};
    const ReferenceFrame frame = ReferenceRender(neutral()).render(input.data(), 1, 1, 4);
    EXPECT_EQ(frame.expected(), (std::vector<std::uint8_t>{128, 199, 100, 50}));
}

TEST(ReferenceRender, AlphaZeroComesBackAllZeroWhateverItsColour) {
    const std::vector<std::uint8_t> input = {0, 200, 100, 50};
    ReferenceSliders sliders;  // whitening on: the colour is not what decides
    const ReferenceFrame frame = ReferenceRender(sliders).render(input.data(), 1, 1, 4);
    EXPECT_EQ(frame.expected(), (std::vector<std::uint8_t>{0, 0, 0, 0}));
    EXPECT_EQ(frame.high(), (std::vector<std::uint8_t>{0, 0, 0, 0}));
}

TEST(ReferenceRender, BlurSmoothsAlphaRedGreenButKeepsEachPixelsBlue) {
    // A 3x1 strip of skin tones whose red and green differ a little and whose blue differs a lot.
    const std::vector<std::uint8_t> input = {255, 200, 120, 10, 255, 210, 126, 90, 255, 200, 120, 10};
    const ReferenceFrame frame = ReferenceRender(neutral(3, 100)).render(input.data(), 3, 1, 12);
    const std::vector<std::uint8_t>& out = frame.expected();
    EXPECT_LT(out[5], 210) << "the middle red is pulled towards its neighbours";
    EXPECT_GT(out[1], 200) << "the left red is pulled towards the middle";
    EXPECT_EQ(out[7], 90) << "blue is not blurred";
    EXPECT_EQ(out[3], 10) << "blue is not blurred";
}

TEST(ReferenceRender, BlurKeepsEdgesBetweenVeryDifferentColours) {
    // Red and green far apart in the range sense: the bilateral weight across the edge is negligible.
    const std::vector<std::uint8_t> input = {255, 250, 80, 0, 255, 60, 20, 0};
    const ReferenceFrame frame = ReferenceRender(neutral(3, 100)).render(input.data(), 2, 1, 8);
    EXPECT_EQ(frame.expected(), input);
}

TEST(ReferenceRender, ColourAdjustmentsMoveTheWayTheirNamesSay) {
    const ReferenceRender::Colour skin = {0.8, 0.55, 0.45};
    ReferenceSliders whiten = neutral();
    whiten.whiten = 100;
    ReferenceSliders redden = neutral();
    redden.redden = 100;
    ReferenceSliders pink = neutral();
    pink.pinking = 100;
    const auto whitened = ReferenceRender(whiten).adjustColour(skin);
    const auto reddened = ReferenceRender(redden).adjustColour(skin);
    const auto pinked = ReferenceRender(pink).adjustColour(skin);
    for (int c = 0; c < 3; ++c) {
        EXPECT_GT(whitened[c], skin[c]) << "whitening brightens channel " << c;
        EXPECT_GE(pinked[c], skin[c]) << "pinking never darkens channel " << c;
    }
    EXPECT_GT(reddened[0] - reddened[2], skin[0] - skin[2]) << "reddening widens red over blue";
    EXPECT_EQ(ReferenceRender(neutral()).adjustColour(skin), skin);
}

TEST(ReferenceRender, PaddedRowsAreReadAtRowbytes) {
    // Two rows of one pixel, 8 bytes apart, the padding holding a colour that must not be read.
    const std::vector<std::uint8_t> input = {255, 10, 20, 30, 255, 255, 255, 255, 255, 40, 50, 60, 0, 0, 0, 0};
    const ReferenceFrame frame = ReferenceRender(neutral()).render(input.data(), 1, 2, 8);
    EXPECT_EQ(frame.expected(), (std::vector<std::uint8_t>{255, 10, 20, 30, 255, 40, 50, 60}));
}
