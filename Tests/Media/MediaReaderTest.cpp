#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>

#include "Media/MediaError.h"
#include "Media/MediaReader.h"
#include "MediaFixtures/MediaFixtures.h"
#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

// One folder of test media for the whole suite: making H.264 with audio is the slow part.
class MediaReaderTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        sMedia = std::make_unique<MediaFixtures>();
        for (const char* name : {"clip.mp4", "clip.mov", "clip.mkv"}) {
            MediaFixtures::Video video;
            video.name = name;
            sMedia->makeVideo(video);
        }
    }
    static void TearDownTestSuite() { sMedia.reset(); }
    static std::unique_ptr<MediaFixtures> sMedia;
};
std::unique_ptr<MediaFixtures> MediaReaderTest::sMedia;

// The marker block is stored losslessly as a grey; decoding adds at most the YUV rounding of one or two codes.
constexpr int kMarkerTolerance = 2;

TEST_F(MediaReaderTest, VideoGivesEveryFrameWithIndexTimeAndInfo) {
    for (const char* name : {"clip.mp4", "clip.mov", "clip.mkv"}) {
        SCOPED_TRACE(name);
        MediaReader reader(sMedia->path(name));
        const MediaInfo& info = reader.info();
        EXPECT_EQ(info.kind, MediaKind::Video);
        EXPECT_EQ(info.codecName, "h264");
        EXPECT_EQ(info.width, 64);
        EXPECT_EQ(info.height, 48);
        EXPECT_EQ(info.frameRate, (Rational{25, 1})) << info.frameRate.num << "/" << info.frameRate.den;
        EXPECT_EQ(info.frameCount, 10);
        EXPECT_NEAR(info.durationSeconds, 0.4, 0.001);
        EXPECT_EQ(info.otherStreamCount, 1);
        EXPECT_FALSE(info.hasAlpha);
        EXPECT_FALSE(info.reducedToEightBits);

        ArgbFrame frame;
        int count = 0;
        while (reader.read(frame)) {
            EXPECT_EQ(frame.index, count);
            EXPECT_NEAR(frame.timeSeconds, count / 25.0, 1e-3) << "frame " << count;
            EXPECT_NEAR((frame.pts - info.startPts) * info.timeBase.value(), count / 25.0, 1e-3) << "frame " << count;
            EXPECT_GE(frame.rowBytes, 64u * 4);
            EXPECT_EQ(channel(frame, 0, 0, 0), 255) << "opaque source, frame " << count;
            EXPECT_NEAR(channel(frame, 4, 4, 1), MediaFixtures::frameMarker(count), kMarkerTolerance)
                << "frame " << count << " is out of order";
            ++count;
        }
        EXPECT_EQ(count, 10);
        EXPECT_FALSE(reader.read(frame)) << "reading past the end";
    }
}

struct RangeCase {
    FrameRange range;
    std::vector<int> indexes;
};

TEST_F(MediaReaderTest, FrameRangeDropsBeforeAndStopsAfter) {
    const RangeCase cases[] = {
        {{2, 5}, {2, 3, 4, 5}},
        {{8, -1}, {8, 9}},
        {{0, 0}, {0}},
        {{9, 40}, {9}},
        {{12, 15}, {}},
    };
    for (const RangeCase& c : cases) {
        SCOPED_TRACE("range " + std::to_string(c.range.first) + "-" + std::to_string(c.range.last));
        MediaReader reader(sMedia->path("clip.mp4"), c.range);
        EXPECT_EQ(reader.info().frameCount, static_cast<std::int64_t>(c.indexes.size()));
        std::vector<int> seen;
        ArgbFrame frame;
        while (reader.read(frame)) {
            seen.push_back(static_cast<int>(frame.index));
            EXPECT_NEAR(channel(frame, 4, 4, 1), MediaFixtures::frameMarker(static_cast<int>(frame.index)),
                        kMarkerTolerance)
                << "frame " << frame.index << " holds another frame's picture";
        }
        EXPECT_EQ(seen, c.indexes);
    }
}

TEST_F(MediaReaderTest, ContentNotNameDecidesBetweenPictureAndVideo) {
    std::filesystem::copy_file(sMedia->path("clip.mp4"), sMedia->path("misnamed.png"));
    MediaReader reader(sMedia->path("misnamed.png"));
    EXPECT_EQ(reader.info().kind, MediaKind::Video);
    EXPECT_EQ(reader.info().frameCount, 10);
    EXPECT_EQ(readAll(sMedia->path("misnamed.png")).size(), 10u);
}

TEST_F(MediaReaderTest, InvertedRangeIsAnError) {
    EXPECT_THROW(MediaReader(sMedia->path("clip.mp4"), FrameRange{5, 2}), MediaError);
}

struct ColourCase {
    int matrix;
    bool fullRange;
    const char* label;
};

// A flat colour made into YUV with a given matrix and range must come back as that colour, so the reader has to
// use the stream's own matrix and range. Maximum 3 per channel: the stored Y, Cb and Cr are rounded to whole
// codes (half a code each), which the inverse matrix spreads to at most about 2 units of R, G or B, plus one for
// the rounding of the result. Mean 2: the field is flat, so every pixel carries the same rounding and the mean
// can be as large as the error of that one colour; it still rules out the wrong matrix, which moves this colour
// by 8 or more units, and a wrong range, which moves it by 12.
TEST_F(MediaReaderTest, YuvIsDecodedWithTheStreamsOwnMatrixAndRange) {
    const ColourCase cases[] = {
        {1, false, "bt709-limited"},
        {1, true, "bt709-full"},
        {6, false, "bt601-limited"},
        {6, true, "bt601-full"},
    };
    const std::array<int, 3> colour{200, 120, 80};
    for (const ColourCase& c : cases) {
        SCOPED_TRACE(c.label);
        MediaFixtures::Video video;
        video.name = std::string(c.label) + ".mp4";
        video.frames = 1;
        video.audio = false;
        video.colour = colour;
        video.matrix = c.matrix;
        video.fullRange = c.fullRange;
        std::vector<ArgbFrame> frames = readAll(sMedia->makeVideo(video));
        ASSERT_EQ(frames.size(), 1u);
        Difference d = differenceFromFlat(frames[0], colour);
        EXPECT_LE(d.max, 3) << "pixel (40,30) is " << channel(frames[0], 40, 30, 1) << ","
                            << channel(frames[0], 40, 30, 2) << "," << channel(frames[0], 40, 30, 3);
        EXPECT_LE(d.mean, 2.0);
    }
}

TEST_F(MediaReaderTest, DisplayMatrixIsKept) {
    MediaFixtures::Video video;
    video.name = "rotated.mp4";
    video.frames = 2;
    video.rotation = 90.0;
    MediaReader reader(sMedia->makeVideo(video));
    ASSERT_TRUE(reader.info().displayMatrix.has_value());
    // 90 degrees clockwise is -90 counter-clockwise.
    EXPECT_NEAR(reader.info().rotationDegrees, -90.0, 1e-6);
    MediaReader plain(sMedia->path("clip.mp4"));
    EXPECT_FALSE(plain.info().displayMatrix.has_value());
}

struct PictureCase {
    MediaFixtures::Picture picture;
    bool reduced;
};

TEST_F(MediaReaderTest, PicturesComeBackExactWithAlphaAndDeepChannelsBroughtToEightBits) {
    const PictureCase cases[] = {
        {{"rgb.png", 24, 16, false, false, 3}, false},
        {{"rgba.png", 24, 16, true, false, 3}, false},
        {{"rgb16.png", 24, 16, false, true, 3}, true},
        {{"rgba16.png", 24, 16, true, true, 3}, true},
        {{"rgba.tif", 17, 9, true, false, 3}, false},
        {{"rgba16.tif", 17, 9, true, true, 3}, true},
    };
    for (const PictureCase& c : cases) {
        SCOPED_TRACE(c.picture.name);
        MediaReader reader(sMedia->makePicture(c.picture));
        const MediaInfo& info = reader.info();
        EXPECT_EQ(info.kind, MediaKind::Image);
        EXPECT_EQ(info.frameCount, 1);
        EXPECT_EQ(info.hasAlpha, c.picture.alpha);
        EXPECT_EQ(info.reducedToEightBits, c.reduced);
        ArgbFrame frame;
        ASSERT_TRUE(reader.read(frame));
        ASSERT_EQ(frame.width, c.picture.width);
        ASSERT_EQ(frame.height, c.picture.height);
        int wrong = 0;
        for (int y = 0; y < frame.height; ++y)
            for (int x = 0; x < frame.width; ++x) {
                std::array<std::uint8_t, 4> want = MediaFixtures::patternPixel(x, y, 3, c.picture.alpha);
                for (int ch = 0; ch < 4; ++ch)
                    if (channel(frame, x, y, ch) != want[static_cast<std::size_t>(ch)] && wrong++ < 3)
                        ADD_FAILURE() << "pixel " << x << "," << y << " channel " << "argb"[ch] << " is "
                                      << channel(frame, x, y, ch) << ", not " << int(want[ch]);
            }
        EXPECT_EQ(wrong, 0);
        EXPECT_FALSE(reader.read(frame)) << "a picture has one frame";
    }
}

TEST_F(MediaReaderTest, SequenceIsNumberedByFileAndRangedByNumber) {
    std::string pattern = sMedia->makeSequence("seq/f_%04d.png", 7, 4, 8, 6);
    MediaReader reader(pattern);
    EXPECT_EQ(reader.info().kind, MediaKind::Sequence);
    EXPECT_EQ(reader.info().frameCount, 4);
    EXPECT_EQ(reader.info().firstNumber, 7);
    std::vector<ArgbFrame> frames = readAll(pattern);
    ASSERT_EQ(frames.size(), 4u);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].index, 7 + static_cast<int>(i));
        EXPECT_NEAR(frames[i].timeSeconds, static_cast<double>(i) / 25.0, 1e-9);
        EXPECT_EQ(channel(frames[i], 2, 1, 1), MediaFixtures::patternPixel(2, 1, 7 + static_cast<int>(i), false)[1])
            << "file " << 7 + i << " read out of order";
    }
    std::vector<ArgbFrame> ranged = readAll(pattern, FrameRange{8, 9});
    ASSERT_EQ(ranged.size(), 2u);
    EXPECT_EQ(ranged[0].index, 8);
    EXPECT_EQ(ranged[1].index, 9);
}

// Every bad input fails with the one error class, naming the file at fault.
TEST_F(MediaReaderTest, BadInputsGiveAnErrorNamingTheFile) {
    MediaFixtures::Picture big;
    big.name = "big.png";
    big.width = 200;
    big.height = 120;
    std::string png = sMedia->makePicture(big);
    std::string mp4 = sMedia->path("clip.mp4");
    std::string gap = sMedia->makeSequence("gap/g_%03d.png", 1, 3, 4, 4);
    std::filesystem::remove(sMedia->path("gap/g_002.png"));
    std::ofstream(sMedia->path("empty.png")).flush();
    std::ofstream(sMedia->path("text.mp4")) << "this is not a video at all, just some words in a file\n";
    MediaFixtures::Picture odd;
    odd.name = "odd/o_0002.png";
    odd.width = 9;
    sMedia->makeSequence("odd/o_%04d.png", 1, 1, 24, 16);
    sMedia->makePicture(odd);

    struct BadCase {
        std::string path;
        std::string culprit;
    };
    const BadCase cases[] = {
        {sMedia->path("missing.mp4"), sMedia->path("missing.mp4")},
        {sMedia->path("empty.png"), sMedia->path("empty.png")},
        {sMedia->path("text.mp4"), sMedia->path("text.mp4")},
        {sMedia->makeTruncated(mp4, "truncated.mp4"), sMedia->path("truncated.mp4")},
        {sMedia->makeCorrupt(mp4, "corrupt.mp4"), sMedia->path("corrupt.mp4")},
        {sMedia->makeTruncated(sMedia->path("clip.mkv"), "truncated.mkv", 0.6), sMedia->path("truncated.mkv")},
        {sMedia->makeTruncated(png, "truncated.png", 0.3), sMedia->path("truncated.png")},
        {sMedia->makeCorrupt(png, "corrupt.png"), sMedia->path("corrupt.png")},
        {sMedia->path("none_%04d.png"), sMedia->path("none_%04d.png")},
        {gap, sMedia->path("gap/g_002.png")},
        {sMedia->path("odd/o_%04d.png"), sMedia->path("odd/o_0002.png")},
        {sMedia->folder(), sMedia->folder()},
    };
    for (const BadCase& c : cases) {
        SCOPED_TRACE(c.path);
        try {
            readAll(c.path);
            ADD_FAILURE() << "no error for " << c.path;
        } catch (const MediaError& e) {
            EXPECT_EQ(e.path(), c.culprit) << e.what();
            EXPECT_NE(std::string(e.what()).find(c.culprit), std::string::npos) << e.what();
            EXPECT_FALSE(e.problem().empty());
        }
    }
}

}  // namespace
}  // namespace Quillmere::Velmira
