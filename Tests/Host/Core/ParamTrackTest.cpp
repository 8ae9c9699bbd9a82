#include "Core/ParamTrack.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "Core/SliderDefinition.h"

namespace Quillmere::Velmira {
namespace {

TEST(ParamTrack, InterpolatesLinearlyBetweenKeysAndHoldsOutsideThem) {
  const struct {
    const char* text;
    double framesPerSecond, seconds, expected;
  } samples[] = {
      {"42", 25, 1e6, 42.0},                      // a constant
      {"-3.5", 25, 7.0, -3.5},                    // signs and fractions
      {"10@1,30@3", 25, 0.0, 10.0},               // held before the first key
      {"10@1,30@3", 25, 2.5, 25.0},               //
      {"10@1,30@3", 25, 99.0, 30.0},              // held after the last
      {"10@1s,30@3s", 25, 2.0, 20.0},             // explicit seconds
      {"0@0f,50@50f", 25, 1.0, 25.0},             // frames at 25 fps: 50f = 2 s
      {"0@0f,50@50f", 50, 1.0, 50.0},             // the same keys at 50 fps: 50f = 1 s
      {"0@0,60@2.5,60@4,0@120f", 24, 3.0, 60.0},  // a hold between two equal keys
      {"0@0,60@2.5,60@4,0@120f", 24, 4.5, 30.0},  // 120f at 24 fps = 5 s
      {"30@3,10@1", 25, 2.0, 20.0},               // keys in any order
      {" 10 @ 1 , 30 @ 3 ", 25, 2.0, 20.0},       // blanks around the pieces
      {"5@2f", 25, 0.0, 5.0},                     // one key in frames
  };
  for (const auto& sample : samples) {
    ParamTrack track = ParamTrack::parse(sample.text);
    track.resolve(sample.framesPerSecond);
    EXPECT_NEAR(track.valueAt(sample.seconds), sample.expected, 1e-12)
        << "'" << sample.text << "' at " << sample.seconds << " s, " << sample.framesPerSecond << " fps";
  }
}

TEST(ParamTrack, RefusesMalformedTextWithAMessageQuotingThePiece) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "empty keyframe"},
      {"abc", "'abc' is not a number"},
      {"1@", "time after @ in '1@' is missing"},
      {"1@2,3", "keyframe '3' has no @TIME"},
      {"1@2,,3@4", "empty keyframe"},
      {"@2", "value before @ is missing"},
      {"1@-2", "negative time"},
      {"1@2g", "'1@2g': '2g' is not a time"},
      {"nan", "'nan' is not a number"},
      {"1e999", "'1e999' is not a number"},
      {"1@1,2@25f", "two keyframes at the same time (1 s)"},
  };
  for (const auto& [text, messagePart] : cases) {
    try {
      ParamTrack::parse(text).resolve(25.0);
      ADD_FAILURE() << "'" << text << "' was accepted";
    } catch (const std::invalid_argument& e) {
      EXPECT_NE(std::string(e.what()).find(messagePart), std::string::npos) << "'" << text << "': " << e.what();
    }
  }
}

TEST(ParamTrack, KeysMustLieWithinTheSlidersValidRangeBothEndsIncluded) {
  SliderDefinition slider;
  slider.validMax = 100.0f;
  EXPECT_NO_THROW(ParamTrack::parse("0@0,100@1").checkRange(slider));
  EXPECT_THROW(ParamTrack::parse("-0.01").checkRange(slider), std::out_of_range);
  EXPECT_THROW(ParamTrack::parse("0@0,100.01@1").checkRange(slider), std::out_of_range);
}

}  // namespace
}  // namespace Quillmere::Velmira
