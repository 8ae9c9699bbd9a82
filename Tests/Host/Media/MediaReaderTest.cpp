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

// A flat colour made YUV with a given matrix and range must come back as that colour, so the reader has to use the
// stream's own matrix and range, and a video written from it must keep both. Lossless input: within 3 per channel
// (Y, Cb and Cr rounded to whole codes, spread by the inverse matrix, then the result rounded); written again
// through H.264: within 4. The wrong matrix moves this colour by 8 or more, the wrong range by 12.
TEST(MediaReader, YuvIsDecodedWithTheStreamsOwnMatrixAndRangeAndAWriteKeepsThem) {
  for (const int matrix : {1, 6}) {
    for (const bool full : {false, true}) {
      const std::string name = "colour-" + std::to_string(matrix) + (full ? "-full" : "-limited");
      SCOPED_TRACE(name);
      const MediaFixtures::Video video{name + ".mp4", 64, 48, 25, 1, 2, false, {200, 120, 80}, matrix, full, {}};
      const std::string input = sharedMedia().makeVideo(video), output = sharedMedia().path(name + ".mkv");
      copy(input, output);
      for (const std::string& path : {input, output}) {
        MediaInfo info;
        const ArgbFrame frame = readFrames(path, &info).at(0);
        EXPECT_EQ(info.colourMatrix, matrix) << path;
        EXPECT_EQ(info.fullRange, full) << path;
        for (int c = 0; c < 3; ++c)
          EXPECT_NEAR(channel(frame, 40, 30, c + 1), video.colour[static_cast<std::size_t>(c)], path == input ? 3 : 4)
              << path << " channel "
              << "rgb"[c];
      }
    }
  }
}

TEST(MediaReader, PicturesComeBackExactWithAlphaAndDeepChannelsBroughtToEightBits) {
  const MediaFixtures::Picture pictures[] = {
      {"rgb.png", 24, 16, false, false, 3},  {"rgba.png", 24, 16, true, false, 3},
      {"rgb16.png", 24, 16, false, true, 3}, {"rgba16.png", 24, 16, true, true, 3},
      {"rgba.tif", 17, 9, true, false, 3},   {"rgb16.tif", 17, 9, false, true, 3},
      {"rgba16.tif", 17, 9, true, true, 3}};
  for (const MediaFixtures::Picture& p : pictures) {
    SCOPED_TRACE(p.name);
    MediaInfo info;
    const std::vector<ArgbFrame> frames = readFrames(sharedMedia().makePicture(p), &info);
    EXPECT_EQ(info.hasAlpha, p.alpha);
    EXPECT_EQ(info.reducedToEightBits, p.sixteenBit);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(firstDifference(frames[0], MediaFixtures::pattern(p.width, p.height, 3, p.alpha)), "");
  }
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
