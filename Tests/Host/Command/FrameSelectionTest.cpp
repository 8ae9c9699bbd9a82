#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "Core/FrameSelection.h"

namespace Quillmere::Velmira {
namespace {

TEST(FrameSelection, ParsesRangesAndSingleFrames) {
  struct Case {
    const char* text;
    int64_t first, last;
  } cases[] = {{"100-199", 100, 199}, {"0-0", 0, 0}, {"7", 7, 7}, {"0-99999", 0, 99999}};
  for (const auto& c : cases) {
    FrameSelection range = FrameSelection::parse(c.text);
    EXPECT_EQ(range.first, c.first) << c.text;
    EXPECT_EQ(range.last, c.last) << c.text;
  }
  EXPECT_EQ(FrameSelection::parse("100-199").count(), 100);
}

TEST(FrameSelection, RefusesMalformedRangesWithAReason) {
  struct Case {
    const char* text;
    const char* messagePart;
  } cases[] = {{"", "is not a frame range"},   {"-5", "is not a frame range"},
               {"5-", "is not a frame range"}, {"a-b", "whole numbers from 0"},
               {"1.5-3", "whole numbers"},     {"9-3", "ends before it starts (9 > 3)"},
               {"1-2-3", "whole numbers"},     {"1 - 2", "whole numbers"}};
  for (const auto& c : cases) {
    try {
      FrameSelection::parse(c.text);
      ADD_FAILURE() << "'" << c.text << "' was accepted";
    } catch (const std::invalid_argument& e) {
      EXPECT_NE(std::string(e.what()).find(c.messagePart), std::string::npos)
          << "message for '" << c.text << "': " << e.what();
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
