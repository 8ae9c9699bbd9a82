#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "Media/MediaError.h"
#include "Media/MediaReader.h"
#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

TEST(MediaReader, FrameRangeDropsBeforeAndStopsAfter) {
  struct RangeCase {
    FrameRange range;
    std::vector<int> indexes;
  };
  const RangeCase cases[] = {
      {{2, 5}, {2, 3, 4, 5}}, {{8, -1}, {8, 9}}, {{0, 0}, {0}}, {{9, 40}, {9}}, {{12, 15}, {}},
  };
  const std::string clip = sharedMedia().path("clip.mp4");
  for (const RangeCase& c : cases) {
    SCOPED_TRACE("range " + std::to_string(c.range.first) + "-" + std::to_string(c.range.last));
    MediaReader reader(clip, c.range);
    EXPECT_EQ(reader.info().frameCount, static_cast<std::int64_t>(c.indexes.size()));
    std::vector<int> seen;
    ArgbFrame frame;
    while (reader.read(frame)) {
      seen.push_back(static_cast<int>(frame.index));
      EXPECT_NEAR(channel(frame, 4, 4, 1), MediaFixtures::frameMarker(static_cast<int>(frame.index)), kMarkerTolerance)
          << "frame " << frame.index << " holds another frame's picture";
    }
    EXPECT_EQ(seen, c.indexes);
  }
  EXPECT_THROW(MediaReader(clip, FrameRange{5, 2}), MediaError) << "an inverted range";
}

TEST(MediaReader, ContentNotNameDecidesBetweenPictureAndVideo) {
  std::filesystem::copy_file(sharedMedia().path("clip.mp4"), sharedMedia().path("misnamed.png"));
  MediaReader reader(sharedMedia().path("misnamed.png"));
  EXPECT_EQ(reader.info().kind, MediaKind::Video);
  EXPECT_EQ(readFrames(sharedMedia().path("misnamed.png")).size(), 10u);
}

// A flat colour made into YUV with a given matrix and range must come back as that colour, so the reader has to
// use the stream's own matrix and range; and a video written from it must keep both.
// Read: maximum 3 per channel, since the stored Y, Cb and Cr are rounded to whole codes (half a code each), which
// the inverse matrix spreads to at most about 2 units of R, G or B, plus one for the rounding of the result. Mean
// 2: the field is flat, so every pixel carries the same rounding and the mean can be as large as the error of that
// one colour; it still rules out the wrong matrix, which moves this colour by 8 or more units, and a wrong range,
// which moves it by 12. Written again through lossy H.264: maximum 4 and mean 3, for the same reasons.
TEST(MediaReader, YuvIsDecodedWithTheStreamsOwnMatrixAndRangeAndAWriteKeepsThem) {
  struct ColourCase {
    int matrix;
    bool fullRange;
    const char* label;
  };
  const ColourCase cases[] = {
      {1, false, "bt709-limited"}, {1, true, "bt709-full"}, {6, false, "bt601-limited"}, {6, true, "bt601-full"}};
  MediaFixtures::Video video;
  video.frames = 2;
  video.audio = false;
  for (const ColourCase& c : cases) {
    SCOPED_TRACE(c.label);
    video.name = std::string(c.label) + ".mp4";
    video.matrix = c.matrix;
    video.fullRange = c.fullRange;
    const std::string input = sharedMedia().makeVideo(video);
    const std::string output = sharedMedia().path(std::string(c.label) + "-out.mkv");
    copy(input, output);
    EXPECT_FALSE(MediaReader(input).info().displayMatrix.has_value()) << "none was stored";
    MediaReader written(output);
    EXPECT_EQ(written.info().colourMatrix, c.matrix);
    EXPECT_EQ(written.info().fullRange, c.fullRange);
    for (const std::string& path : {input, output}) {
      const std::vector<ArgbFrame> frames = readFrames(path);
      ASSERT_EQ(frames.size(), 2u) << path;
      const Difference d = differenceFromFlat(frames[0], video.colour);
      const bool lossy = path == output;
      EXPECT_LE(d.max, lossy ? 4 : 3) << path << ": pixel (40,30) is " << channel(frames[0], 40, 30, 1) << ","
                                      << channel(frames[0], 40, 30, 2) << "," << channel(frames[0], 40, 30, 3);
      EXPECT_LE(d.mean, lossy ? 3.0 : 2.0) << path;
    }
  }
}

TEST(MediaReader, PicturesComeBackExactWithAlphaAndDeepChannelsBroughtToEightBits) {
  struct PictureCase {
    MediaFixtures::Picture picture;
    bool reduced;
  };
  const PictureCase cases[] = {
      {{"rgb.png", 24, 16, false, false, 3}, false}, {{"rgba.png", 24, 16, true, false, 3}, false},
      {{"rgb16.png", 24, 16, false, true, 3}, true}, {{"rgba16.png", 24, 16, true, true, 3}, true},
      {{"rgba.tif", 17, 9, true, false, 3}, false},  {{"rgba16.tif", 17, 9, true, true, 3}, true},
  };
  for (const PictureCase& c : cases) {
    SCOPED_TRACE(c.picture.name);
    MediaReader reader(sharedMedia().makePicture(c.picture));
    const MediaInfo& info = reader.info();
    EXPECT_EQ(info.kind, MediaKind::Image);
    EXPECT_EQ(info.frameCount, 1);
    EXPECT_EQ(info.hasAlpha, c.picture.alpha);
    EXPECT_EQ(info.reducedToEightBits, c.reduced);
    ArgbFrame frame;
    ASSERT_TRUE(reader.read(frame));
    EXPECT_EQ(firstDifference(frame, patternFrame(c.picture.width, c.picture.height, 3, c.picture.alpha)), "");
    EXPECT_FALSE(reader.read(frame)) << "a picture has one frame";
  }
}

// Every bad input fails with the one error class, naming the file at fault.
TEST(MediaReader, BadInputsGiveAnErrorNamingTheFile) {
  MediaFixtures& media = sharedMedia();
  const std::string png = media.makePicture({"big.png", 200, 120});
  const std::string mp4 = media.path("clip.mp4");
  const std::string gap = media.makeSequence("gap/g_%03d.png", 1, 3, 4, 4);
  std::filesystem::remove(media.path("gap/g_002.png"));
  std::ofstream(media.path("empty.png")).flush();
  std::ofstream(media.path("text.mp4")) << "this is not a video at all, just some words in a file\n";
  media.makeSequence("odd/o_%04d.png", 1, 1, 24, 16);
  media.makePicture({"odd/o_0002.png", 9, 16});

  struct BadCase {
    std::string path;
    std::string culprit;
  };
  const BadCase cases[] = {
      {media.path("missing.mp4"), media.path("missing.mp4")},
      {media.path("empty.png"), media.path("empty.png")},
      {media.path("text.mp4"), media.path("text.mp4")},
      {media.makeTruncated(mp4, "truncated.mp4"), media.path("truncated.mp4")},
      {media.makeCorrupt(mp4, "corrupt.mp4"), media.path("corrupt.mp4")},
      {media.makeTruncated(media.path("clip.mkv"), "truncated.mkv", 0.6), media.path("truncated.mkv")},
      {media.makeTruncated(png, "truncated.png", 0.3), media.path("truncated.png")},
      {media.makeCorrupt(png, "corrupt.png"), media.path("corrupt.png")},
      {media.path("none_%04d.png"), media.path("none_%04d.png")},
      {gap, media.path("gap/g_002.png")},
      {media.path("odd/o_%04d.png"), media.path("odd/o_0002.png")},
      {media.folder(), media.folder()},
  };
  for (const BadCase& c : cases) {
    try {
      readFrames(c.path);
      ADD_FAILURE() << "no error for " << c.path;
    } catch (const MediaError& e) {
      EXPECT_EQ(e.path(), c.culprit) << e.what();
      EXPECT_NE(std::string(e.what()).find(c.culprit), std::string::npos) << e.what();
      EXPECT_FALSE(e.problem().empty()) << c.path;
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
