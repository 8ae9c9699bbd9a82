#include <gtest/gtest.h>

#include "Media/MediaError.h"
#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

// A range gives the frames of those numbers, and says how many; that they hold the pictures of those numbers the
// writer's range rows check.
TEST(MediaReader, FrameRangeDropsBeforeAndStopsAfter) {
  // Each range, and the frames it gives.
  const std::pair<FrameRange, std::vector<int>> cases[] = {
      {{2, 5}, {2, 3, 4, 5}}, {{8, -1}, {8, 9}}, {{0, 0}, {0}}, {{9, 40}, {9}}, {{12, 15}, {}}};
  const std::string clip = sharedMedia().path("clip.mp4");
  for (const auto& [range, indexes] : cases) {
    SCOPED_TRACE("range " + std::to_string(range.first) + "-" + std::to_string(range.last));
    MediaInfo info;
    std::vector<int> seen;
    for (const ArgbFrame& frame : readFrames(clip, &info, range)) seen.push_back(static_cast<int>(frame.index));
    EXPECT_EQ(seen, indexes);
    EXPECT_EQ(info.frameCount, static_cast<std::int64_t>(indexes.size()));
  }
  EXPECT_THROW(MediaReader(clip, FrameRange{5, 2}), MediaError) << "an inverted range";
}

}  // namespace
}  // namespace Quillmere::Velmira
