#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "Media/MediaError.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"
#include "MediaFixtures/MediaFixtures.h"
#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

namespace fs = std::filesystem;

class MediaWriterTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        sMedia = std::make_unique<MediaFixtures>();
        for (const char* name : {"clip.mp4", "clip.mov", "clip.mkv", "ntsc.mov"}) {
            MediaFixtures::Video video;
            video.name = name;
            video.rotation = 90.0;
            if (std::string(name) == "ntsc.mov") {
                video.rateNum = 30000;
                video.rateDen = 1001;
            }
            sMedia->makeVideo(video);
        }
        MediaFixtures::Picture alpha;
        alpha.name = "alpha.png";
        alpha.alpha = true;
        sMedia->makePicture(alpha);
    }
    static void TearDownTestSuite() { sMedia.reset(); }

    // Reads `input` (within `range`) and writes every frame to `output`, as the host does.
    static void copy(const std::string& input, const std::string& output, FrameRange range = {}) {
        MediaReader reader(input, range);
        MediaWriter writer(output, reader.info());
        ArgbFrame frame;
        while (reader.read(frame)) writer.write(frame);
        writer.finish();
    }

    static std::string contents(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    // Names in `folder` that are not in `expected`: temporary leftovers of a failed write.
    static std::vector<std::string> strayFiles(const std::string& folder, const std::vector<std::string>& expected) {
        std::vector<std::string> stray;
        for (const fs::directory_entry& e : fs::directory_iterator(folder)) {
            std::string name = e.path().filename().string();
            if (std::find(expected.begin(), expected.end(), name) == expected.end()) stray.push_back(name);
        }
        return stray;
    }

    static std::unique_ptr<MediaFixtures> sMedia;
};
std::unique_ptr<MediaFixtures> MediaWriterTest::sMedia;

// H.264 at the default quality on a flat field with a flat block: the marker grey comes back within 4 codes
// (quantisation of a flat block is small; a frame out of place is off by 24).
constexpr int kLossyMarkerTolerance = 4;

TEST_F(MediaWriterTest, VideoKeepsRateTimeBaseTimestampsRotationAndAudio) {
    for (const char* name : {"clip.mp4", "clip.mov", "clip.mkv", "ntsc.mov"}) {
        SCOPED_TRACE(name);
        std::string input = sMedia->path(name);
        std::string output = sMedia->path(std::string("out-") + name);
        copy(input, output);

        MediaReader source(input), result(output);
        EXPECT_EQ(result.info().codecName, "h264");
        EXPECT_EQ(result.info().frameCount, 10);
        EXPECT_EQ(result.info().frameRate, source.info().frameRate);
        EXPECT_EQ(result.info().timeBase, source.info().timeBase)
            << result.info().timeBase.num << "/" << result.info().timeBase.den;
        EXPECT_NEAR(result.info().durationSeconds, source.info().durationSeconds, 1e-3);
        EXPECT_EQ(result.info().displayMatrix, source.info().displayMatrix);
        std::vector<ArgbFrame> in = readAll(input), out = readAll(output);
        ASSERT_EQ(out.size(), in.size());
        for (std::size_t i = 0; i < out.size(); ++i) {
            EXPECT_EQ(out[i].pts - result.info().startPts, in[i].pts - source.info().startPts) << "frame " << i;
            EXPECT_NEAR(channel(out[i], 4, 4, 1), MediaFixtures::frameMarker(static_cast<int>(i)),
                        kLossyMarkerTolerance)
                << "frame " << i;
        }

        StreamSummary audioIn = summarise(input, AVMEDIA_TYPE_AUDIO);
        StreamSummary audioOut = summarise(output, AVMEDIA_TYPE_AUDIO);
        EXPECT_EQ(audioOut.streams, 1);
        EXPECT_EQ(audioOut.codec, "aac");
        EXPECT_EQ(audioOut.sampleRate, 48000);
        EXPECT_EQ(audioOut.packets, audioIn.packets) << "audio packets dropped or added";
    }
}

TEST_F(MediaWriterTest, RangeKeepsItsFramesAndOnlyTheAudioOfItsTimeSpan) {
    std::string output = sMedia->path("range.mp4");
    copy(sMedia->path("clip.mp4"), output, FrameRange{3, 6});
    std::vector<ArgbFrame> out = readAll(output);
    ASSERT_EQ(out.size(), 4u);
    for (std::size_t i = 0; i < out.size(); ++i) {
        EXPECT_NEAR(out[i].timeSeconds, static_cast<double>(i) / 25.0, 1e-3) << "frame " << i;
        EXPECT_NEAR(channel(out[i], 4, 4, 1), MediaFixtures::frameMarker(3 + static_cast<int>(i)),
                    kLossyMarkerTolerance)
            << "output frame " << i;
    }
    // Four frames last 0.16 s; AAC packets of 1024 samples (21.3 ms) overlap the ends by at most one packet.
    StreamSummary audio = summarise(output, AVMEDIA_TYPE_AUDIO);
    EXPECT_GE(audio.packets, 6);
    EXPECT_LE(audio.packets, 9);
    EXPECT_GT(audio.firstSeconds, -0.03);
    EXPECT_LT(audio.endSeconds, 0.16 + 0.03);
}

// PNG, TIFF and QuickTime Animation are lossless, so alpha and colour come back exactly.
TEST_F(MediaWriterTest, AlphaIsKeptThroughPngTiffAndMov) {
    const std::vector<ArgbFrame> source = readAll(sMedia->path("alpha.png"));
    for (const char* name : {"alpha-out.png", "alpha-out.tif", "alpha-out.mov"}) {
        SCOPED_TRACE(name);
        copy(sMedia->path("alpha.png"), sMedia->path(name));
        MediaReader reader(sMedia->path(name));
        EXPECT_TRUE(reader.info().hasAlpha);
        std::vector<ArgbFrame> back = readAll(sMedia->path(name));
        ASSERT_EQ(back.size(), 1u);
        int wrong = 0;
        for (int y = 0; y < source[0].height; ++y)
            for (int x = 0; x < source[0].width * 4; ++x)
                if (back[0].row(y)[x] != source[0].row(y)[x] && wrong++ < 3)
                    ADD_FAILURE() << "byte " << x << " of row " << y << " is " << int(back[0].row(y)[x])
                                  << ", not " << int(source[0].row(y)[x]);
        EXPECT_EQ(wrong, 0);
    }
    EXPECT_EQ(MediaReader(sMedia->path("alpha-out.mov")).info().codecName, "qtrle");
}

// H.264 in 4:2:0 needs even sizes; an odd-sized picture must still become a video of its own size.
TEST_F(MediaWriterTest, OddSizedFramesMakeAVideoOfTheSameSize) {
    MediaFixtures::Picture odd;
    odd.name = "odd.png";
    odd.width = 17;
    odd.height = 9;
    copy(sMedia->makePicture(odd), sMedia->path("odd.mp4"));
    std::vector<ArgbFrame> frames = readAll(sMedia->path("odd.mp4"));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].width, 17);
    EXPECT_EQ(frames[0].height, 9);
}

TEST_F(MediaWriterTest, JpegOutputHasNoAlphaAndReadsBackOpaque) {
    copy(sMedia->path("alpha.png"), sMedia->path("flat.jpg"));
    MediaReader reader(sMedia->path("flat.jpg"));
    EXPECT_FALSE(reader.info().hasAlpha);
    ArgbFrame frame;
    ASSERT_TRUE(reader.read(frame));
    EXPECT_EQ(channel(frame, 5, 5, 0), 255);
}

TEST_F(MediaWriterTest, SequenceOutNumbersFilesByFrameIndex) {
    std::string pattern = sMedia->makeSequence("in/s_%04d.png", 5, 3, 6, 4);
    fs::create_directories(sMedia->path("seqout"));
    copy(pattern, sMedia->path("seqout/o_%03d.png"));
    for (int n = 5; n < 8; ++n) EXPECT_TRUE(fs::exists(sMedia->path("seqout/o_00" + std::to_string(n) + ".png"))) << n;
    std::vector<ArgbFrame> in = readAll(pattern), out = readAll(sMedia->path("seqout/o_%03d.png"));
    ASSERT_EQ(out.size(), in.size());
    for (std::size_t i = 0; i < in.size(); ++i) EXPECT_EQ(out[i].pixels, in[i].pixels) << "frame " << i;

    // A video range into a sequence: files named after the source frames, for render farm chunks.
    fs::create_directories(sMedia->path("chunk"));
    copy(sMedia->path("clip.mkv"), sMedia->path("chunk/c_%04d.png"), FrameRange{4, 5});
    EXPECT_EQ(strayFiles(sMedia->path("chunk"), {"c_0004.png", "c_0005.png"}), std::vector<std::string>{});
    EXPECT_TRUE(fs::exists(sMedia->path("chunk/c_0004.png")));
}

TEST_F(MediaWriterTest, MatrixAndRangeOfTheSourceAreKept) {
    MediaFixtures::Video video;
    video.name = "full601.mp4";
    video.frames = 3;
    video.audio = false;
    video.matrix = 6;
    video.fullRange = true;
    std::string input = sMedia->makeVideo(video);
    copy(input, sMedia->path("full601-out.mkv"));
    MediaReader reader(sMedia->path("full601-out.mkv"));
    EXPECT_EQ(reader.info().colourMatrix, 6);
    EXPECT_TRUE(reader.info().fullRange);
    ArgbFrame frame;
    ASSERT_TRUE(reader.read(frame));
    // Flat field through lossy H.264: at most 4 codes, as for the marker, and 3 on average (the whole field
    // shares one colour, so its error is the mean too); BT.709 instead of BT.601 would move it by 8 or more.
    Difference d = differenceFromFlat(frame, video.colour);
    EXPECT_LE(d.max, kLossyMarkerTolerance) << "pixel (40,30) is " << channel(frame, 40, 30, 1) << ","
                                            << channel(frame, 40, 30, 2) << "," << channel(frame, 40, 30, 3);
    EXPECT_LE(d.mean, 3.0);
}

struct FailureCase {
    const char* label;
    std::string output;
    // Runs the write that must fail.
    void (*run)(const std::string& input, const std::string& output);
};

// A failed write throws the one error class naming the output, leaves no temporary file behind, and never
// touches what stood at the output path before.
TEST_F(MediaWriterTest, FailedWritesLeaveNothingAndKeepTheExistingOutput) {
    fs::create_directories(sMedia->path("fail"));
    const FailureCase cases[] = {
        {"abandoned video", sMedia->path("fail/a.mp4"),
         [](const std::string& in, const std::string& out) {
             MediaReader reader(in);
             MediaWriter writer(out, reader.info());
             ArgbFrame frame;
             reader.read(frame);
             writer.write(frame);
             throw MediaError(out, "render stopped");  // the host's render failing before finish()
         }},
        {"wrong frame size", sMedia->path("fail/b.mkv"),
         [](const std::string& in, const std::string& out) {
             MediaReader reader(in);
             MediaWriter writer(out, reader.info());
             ArgbFrame frame;
             frame.allocate(32, 32);
             writer.write(frame);
         }},
        {"second frame into one picture", sMedia->path("fail/c.png"),
         [](const std::string& in, const std::string& out) {
             MediaReader reader(in);
             MediaWriter writer(out, reader.info());
             ArgbFrame frame;
             while (reader.read(frame)) writer.write(frame);
         }},
        {"unknown extension", sMedia->path("fail/d.xyz"),
         [](const std::string& in, const std::string& out) { copy(in, out); }},
        {"finish without frames", sMedia->path("fail/e.mov"),
         [](const std::string& in, const std::string& out) {
             MediaReader reader(in);
             MediaWriter(out, reader.info()).finish();
         }},
    };
    for (const FailureCase& c : cases) {
        SCOPED_TRACE(c.label);
        { std::ofstream(c.output) << "earlier render"; }
        try {
            c.run(sMedia->path("clip.mp4"), c.output);
            ADD_FAILURE() << "no error";
        } catch (const MediaError& e) {
            EXPECT_EQ(e.path(), c.output) << e.what();
        }
        EXPECT_EQ(contents(c.output), "earlier render");
        EXPECT_EQ(strayFiles(sMedia->path("fail"), {fs::path(c.output).filename().string()}),
                  std::vector<std::string>{});
        fs::remove(c.output);
    }
}

TEST_F(MediaWriterTest, OutputThatIsTheInputOrCannotBeWrittenIsRefused) {
    std::string input = sMedia->path("clip.mkv");
    std::string before = contents(input);
    MediaReader reader(input);
    const std::string refused[] = {
        input,
        sMedia->folder() + "/./clip.mkv",
        sMedia->path("no/such/folder/out.mp4"),
        sMedia->path("no/such/folder/f_%04d.png"),
        sMedia->folder(),
    };
    for (const std::string& output : refused) {
        SCOPED_TRACE(output);
        try {
            MediaWriter writer(output, reader.info());
            ADD_FAILURE() << "no error";
        } catch (const MediaError& e) {
            EXPECT_EQ(e.path(), output) << e.what();
        }
    }
    EXPECT_EQ(contents(input), before) << "the input was touched";
}

}  // namespace
}  // namespace Quillmere::Velmira
