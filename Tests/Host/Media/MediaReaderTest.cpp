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

// Every bad input fails with the one error class, naming the file at fault: the input, or the file of a sequence.
// Empty, cut short and foreign files, and folders, go through the command's own table.
TEST(MediaReader, BadInputsGiveAnErrorNamingTheFile) {
  MediaFixtures& media = sharedMedia();
  media.makeCorrupt(media.makePicture({"big.png", 200, 120}), "corrupt.png");
  media.makeTruncated(media.path("clip.mkv"), "truncated.mkv", 0.6);  // its duration promises frames it no longer holds
  media.makeSequence("gap/g_%03d.png", 1, 3, 4, 4);
  std::filesystem::remove(media.path("gap/g_002.png"));
  media.makeSequence("odd/o_%04d.png", 1, 1, 24, 16);
  media.makePicture({"odd/o_0002.png", 9, 16});
  // Each input, and the file at fault: the input itself, or a file of the sequence it names.
  const std::pair<std::string, std::string> cases[] = {
      {"gap/g_%03d.png", "gap/g_002.png"},  {"missing.mp4", "missing.mp4"},     {"corrupt.png", "corrupt.png"},
      {"odd/o_%04d.png", "odd/o_0002.png"}, {"truncated.mkv", "truncated.mkv"}, {"none_%04d.png", "none_%04d.png"}};
  for (const auto& [input, culprit] : cases) {
    try {
      readFrames(media.path(input));
      ADD_FAILURE() << "no error for " << input;
    } catch (const MediaError& e) {
      EXPECT_EQ(e.path(), media.path(culprit)) << e.what();
      EXPECT_NE(std::string(e.what()).find(media.path(culprit)), std::string::npos) << e.what();
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
