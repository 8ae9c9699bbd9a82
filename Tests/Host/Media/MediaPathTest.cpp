#include <gtest/gtest.h>

#include "Media/MediaPath.h"

namespace Quillmere::Velmira {
namespace {

struct PatternCase {
  const char* path;
  bool pattern;
};

TEST(MediaPath, IsSequencePatternTellsFrameNumbersFromPercentSigns) {
  const PatternCase cases[] = {
      {"frame_%04d.png", true}, {"out/f%d.tif", true},         {"shots/a_%09d.jpg", true}, {"100%.png", false},
      {"a%%b.png", false},      {"a%%_%03d.png", true},        {"a_%04d_%04d.png", false}, {"x%4d.png", false},
      {"x%00d.png", false},     {"dir_%04d/still.png", false}, {"clip.mp4", false},        {"%s.png", false},
  };
  for (const PatternCase& c : cases) EXPECT_EQ(MediaPath::isSequencePattern(c.path), c.pattern) << "path " << c.path;
}

struct NameCase {
  const char* pattern;
  long long number;
  const char* name;
};

TEST(MediaPath, SequenceFileNamePadsTheNumberAndKeepsLiteralPercents) {
  const NameCase cases[] = {
      {"f_%04d.png", 7, "f_0007.png"},
      {"f_%d.png", 12, "f_12.png"},
      {"f_%02d.png", 123, "f_123.png"},
      {"d%%/x%%_%03d.png", 5, "d%%/x%_005.png"},  // only the file name is a pattern
      {"shots/f_%04d.png", 0, "shots/f_0000.png"},
  };
  for (const NameCase& c : cases)
    EXPECT_EQ(MediaPath::sequenceFileName(c.pattern, c.number), c.name) << "pattern " << c.pattern;
}

TEST(MediaPath, KindOfFollowsPatternThenExtensionIgnoringCase) {
  EXPECT_EQ(MediaPath::kindOf("a/b_%04d.png"), MediaKind::Sequence);
  EXPECT_EQ(MediaPath::kindOf("CLIP.MP4"), MediaKind::Video);
  EXPECT_EQ(MediaPath::kindOf("take.mov"), MediaKind::Video);
  EXPECT_EQ(MediaPath::kindOf("take.mkv"), MediaKind::Video);
  EXPECT_EQ(MediaPath::kindOf("still.JPG"), MediaKind::Image);
  EXPECT_EQ(MediaPath::kindOf("noextension"), MediaKind::Image);
}

}  // namespace
}  // namespace Quillmere::Velmira
