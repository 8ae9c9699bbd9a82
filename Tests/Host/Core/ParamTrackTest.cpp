#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "Core/ParamTrack.h"
#include "Core/SliderDefinition.h"

namespace Quillmere::Velmira {
namespace {

struct Sample {
  const char* text;
  double framesPerSecond;
  double seconds;
  double expected;
};

class ParamTrackValue : public ::testing::TestWithParam<Sample> {};

TEST_P(ParamTrackValue, InterpolatesLinearlyAndHoldsOutsideTheKeys) {
  const Sample& sample = GetParam();
  ParamTrack track = ParamTrack::parse(sample.text);
  track.resolve(sample.framesPerSecond);
  EXPECT_NEAR(track.valueAt(sample.seconds), sample.expected, 1e-12)
      << "track '" << sample.text << "' at " << sample.seconds << " s, " << sample.framesPerSecond << " fps";
}

INSTANTIATE_TEST_SUITE_P(Keys, ParamTrackValue,
                         ::testing::Values(Sample{"42", 25, 0.0, 42.0}, Sample{"42", 25, 1e6, 42.0},  // a constant
                                           Sample{"-3.5", 25, 7.0, -3.5},       // signs and fractions
                                           Sample{"10@1,30@3", 25, 0.0, 10.0},  // held before the first key
                                           Sample{"10@1,30@3", 25, 1.0, 10.0}, Sample{"10@1,30@3", 25, 2.0, 20.0},
                                           Sample{"10@1,30@3", 25, 2.5, 25.0}, Sample{"10@1,30@3", 25, 3.0, 30.0},
                                           Sample{"10@1,30@3", 25, 99.0, 30.0},   // held after the last
                                           Sample{"10@1s,30@3s", 25, 2.0, 20.0},  // explicit seconds
                                           Sample{"0@0f,50@50f", 25, 1.0, 25.0},  // frames at 25 fps: 50f = 2 s
                                           Sample{"0@0f,50@50f", 50, 1.0, 50.0},  // the same keys at 50 fps: 50f = 1 s
                                           Sample{"0@0,60@2.5,60@4,0@120f", 24, 3.0,
                                                  60.0},  // a hold between two equal keys
                                           Sample{"0@0,60@2.5,60@4,0@120f", 24, 4.5, 30.0},  // 120f at 24 fps = 5 s
                                           Sample{"30@3,10@1", 25, 2.0, 20.0},               // keys in any order
                                           Sample{" 10 @ 1 , 30 @ 3 ", 25, 2.0, 20.0},       // blanks around the pieces
                                           Sample{"5@2f", 25, 0.0, 5.0}));                   // one key in frames

struct BadText {
  const char* text;
  const char* messagePart;
};

class ParamTrackSyntax : public ::testing::TestWithParam<BadText> {};

TEST_P(ParamTrackSyntax, RefusesWithAMessageQuotingThePiece) {
  const BadText& bad = GetParam();
  try {
    ParamTrack track = ParamTrack::parse(bad.text);
    track.resolve(25.0);
    FAIL() << "'" << bad.text << "' was accepted";
  } catch (const std::invalid_argument& e) {
    EXPECT_NE(std::string(e.what()).find(bad.messagePart), std::string::npos)
        << "message for '" << bad.text << "' was: " << e.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ParamTrackSyntax,
    ::testing::Values(BadText{"", "empty keyframe"}, BadText{"abc", "'abc' is not a number"},
                      BadText{"1@", "time after @ in '1@' is missing"}, BadText{"1@x", "'x' is not a number"},
                      BadText{"1@2,3", "keyframe '3' has no @TIME"}, BadText{"1@2,,3@4", "empty keyframe"},
                      BadText{"1@2,", "empty keyframe"}, BadText{"@2", "value before @ is missing"},
                      BadText{"1@-2", "negative time"}, BadText{"1@2g", "'2g' is not a number"},
                      BadText{"nan", "'nan' is not a number"}, BadText{"1e999", "'1e999' is not a number"},
                      BadText{"1@1,2@25f", "two keyframes at the same time (1 s)"}));

SliderDefinition percentSlider() {
  SliderDefinition slider;
  slider.name = "Skin Whiten";
  slider.validMin = 0.0f;
  slider.validMax = 100.0f;
  slider.displayFlags = PF_ValueDisplayFlag_PERCENT;
  return slider;
}

TEST(ParamTrackRange, KeyOutsideTheValidRangeIsRefusedNamingSliderAndRange) {
  ParamTrack track = ParamTrack::parse("50@0,120@2");
  try {
    track.checkRange(percentSlider());
    FAIL() << "120 % was accepted";
  } catch (const std::out_of_range& e) {
    EXPECT_STREQ(e.what(), "Skin Whiten: 120 is outside its valid range 0 to 100 %");
  }
}

TEST(ParamTrackRange, BothEndsOfTheRangeAreAccepted) {
  EXPECT_NO_THROW(ParamTrack::parse("0@0,100@1").checkRange(percentSlider()));
  EXPECT_THROW(ParamTrack::parse("-0.01").checkRange(percentSlider()), std::out_of_range);
  EXPECT_THROW(ParamTrack::parse("100.01").checkRange(percentSlider()), std::out_of_range);
}

}  // namespace
}  // namespace Quillmere::Velmira
