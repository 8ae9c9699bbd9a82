#include <gtest/gtest.h>

#include "Media/MediaError.h"
#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

TEST(MediaReader, FrameRangeDropsBeforeAndStopsAfter) {
  struct RangeCase {
    FrameRange range;
    std::vector<int> indexes;
  };
  const RangeCase cases[] = {{{2, 5}, {2, 3, 4, 5}}, {{8, -1}, {8, 9}}, {{0, 0}, {0}}, {{9, 40}, {9}}, {{12, 15}, {}}};
  const std::string clip = sharedMedia().path("clip.mp4");
  for (const RangeCase& c : cases) {
    SCOPED_TRACE("range " + std::to_string(c.range.first) + "-" + std::to_string(c.range.last));
    MediaInfo info;
    std::vector<int> seen;
    for (const ArgbFrame& frame : readFrames(clip, &info, c.range)) {
      seen.push_back(static_cast<int>(frame.index));
      EXPECT_NEAR(channel(frame, 4, 4, 1), MediaFixtures::frameMarker(seen.back()), kMarkerTolerance)
          << "frame " << frame.index << " holds another frame's picture";
    }
    EXPECT_EQ(seen, c.indexes);
    EXPECT_EQ(info.frameCount, static_cast<std::int64_t>(c.indexes.size()));
  }
  EXPECT_THROW(MediaReader(clip, FrameRange{5, 2}), MediaError) << "an inverted range";
}

// Every bad input fails with the one error class, naming the file at fault: the input, or the file of a sequence.
TEST(MediaReader, BadInputsGiveAnErrorNamingTheFile) {
  MediaFixtures& media = sharedMedia();
  const std::string png = media.makePicture({"big.png", 200, 120}), mp4 = media.path("clip.mp4");
  media.makeTruncated(mp4, "truncated.mp4");
  media.makeCorrupt(mp4, "corrupt.mp4");
  media.makeTruncated(media.path("clip.mkv"), "truncated.mkv", 0.6);
  media.makeTruncated(png, "truncated.png", 0.3);
  media.makeCorrupt(png, "corrupt.png");
  writeFile(media.path("empty.png"), "");
  writeFile(media.path("text.mp4"), "this is not a video at all, just some words in a file\n");
  media.makeSequence("gap/g_%03d.png", 1, 3, 4, 4);
  std::filesystem::remove(media.path("gap/g_002.png"));
  media.makeSequence("odd/o_%04d.png", 1, 1, 24, 16);
  media.makePicture({"odd/o_0002.png", 9, 16});
  // Each input, and the file at fault: the input itself, or a file of the sequence it names.
  const std::pair<std::string, std::string> cases[] = {
      {"missing.mp4", "missing.mp4"},     {"empty.png", "empty.png"},          {"text.mp4", "text.mp4"},
      {"truncated.mp4", "truncated.mp4"}, {"corrupt.mp4", "corrupt.mp4"},      {"truncated.mkv", "truncated.mkv"},
      {"truncated.png", "truncated.png"}, {"corrupt.png", "corrupt.png"},      {".", "."},
      {"none_%04d.png", "none_%04d.png"}, {"gap/g_%03d.png", "gap/g_002.png"}, {"odd/o_%04d.png", "odd/o_0002.png"}};
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
