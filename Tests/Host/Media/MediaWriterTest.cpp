#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Media/MediaError.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"
#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

namespace fs = std::filesystem;

std::string contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The names in `folder`, sorted: what a write made or left behind.
std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const fs::directory_entry& e : fs::directory_iterator(folder)) names.push_back(e.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// Written again with H.264 at the default quality, a flat block comes back within 4 codes (quantisation of a flat
// block is small; a frame out of place is off by 24).
constexpr int kLossyMarkerTolerance = 4;

// Read, then written again as the host does: every frame in order at its time, and the output keeps rate, time
// base, timestamps, rotation and audio.
TEST(MediaWriter, VideoReadAndWrittenKeepsFramesRateTimestampsRotationAndAudio) {
  struct Clip {
    const char* name;
    Rational rate;
    double rotation;  // turned 90 degrees clockwise is -90 counter-clockwise; Matroska stores no display matrix
  };
  const Clip clips[] = {{"clip.mp4", {25, 1}, -90.0},
                        {"clip.mov", {25, 1}, -90.0},
                        {"clip.mkv", {25, 1}, 0.0},
                        {"ntsc.mov", {30000, 1001}, -90.0}};
  for (const Clip& c : clips) {
    SCOPED_TRACE(c.name);
    const std::string input = sharedMedia().path(c.name), output = sharedMedia().path(std::string("out-") + c.name);
    copy(input, output);
    MediaReader source(input), result(output);
    const MediaInfo &in = source.info(), &out = result.info();
    EXPECT_EQ(in.kind, MediaKind::Video);
    EXPECT_EQ(in.width, 64);
    EXPECT_EQ(in.height, 48);
    EXPECT_EQ(in.frameRate, c.rate) << in.frameRate.num << "/" << in.frameRate.den;
    EXPECT_NEAR(in.durationSeconds, 10 / c.rate.value(), 0.001);
    EXPECT_EQ(in.otherStreamCount, 1);
    EXPECT_FALSE(in.hasAlpha);
    EXPECT_FALSE(in.reducedToEightBits);
    EXPECT_EQ(in.displayMatrix.has_value(), c.rotation != 0.0);
    EXPECT_NEAR(in.rotationDegrees, c.rotation, 1e-6);
    for (const MediaInfo* info : {&in, &out}) {
      EXPECT_EQ(info->codecName, "h264");
      EXPECT_EQ(info->frameCount, 10);
    }
    EXPECT_EQ(out.frameRate, in.frameRate);
    EXPECT_EQ(out.timeBase, in.timeBase) << out.timeBase.num << "/" << out.timeBase.den;
    EXPECT_NEAR(out.durationSeconds, in.durationSeconds, 1e-3);
    EXPECT_EQ(out.displayMatrix, in.displayMatrix);

    const std::vector<ArgbFrame> read = readFrames(input), written = readFrames(output);
    ASSERT_EQ(read.size(), 10u);
    ASSERT_EQ(written.size(), 10u);
    for (int i = 0; i < 10; ++i) {
      SCOPED_TRACE("frame " + std::to_string(i));
      EXPECT_EQ(read[i].index, i);
      EXPECT_NEAR(read[i].timeSeconds, i / c.rate.value(), 1e-3);
      EXPECT_NEAR((read[i].pts - in.startPts) * in.timeBase.value(), i / c.rate.value(), 1e-3);
      EXPECT_EQ(channel(read[i], 0, 0, 0), 255) << "opaque source";
      EXPECT_NEAR(channel(read[i], 4, 4, 1), MediaFixtures::frameMarker(i), kMarkerTolerance) << "out of order";
      EXPECT_EQ(written[i].pts - out.startPts, read[i].pts - in.startPts);
      EXPECT_NEAR(channel(written[i], 4, 4, 1), MediaFixtures::frameMarker(i), kLossyMarkerTolerance);
    }
    ArgbFrame frame;
    while (source.read(frame)) {
    }
    EXPECT_FALSE(source.read(frame)) << "reading past the end";

    const AudioSummary audioIn = summariseAudio(input), audioOut = summariseAudio(output);
    EXPECT_EQ(audioOut.streams, 1);
    EXPECT_EQ(audioOut.codec, "aac");
    EXPECT_EQ(audioOut.sampleRate, 48000);
    EXPECT_EQ(audioOut.packets, audioIn.packets) << "audio packets dropped or added";
  }
}

TEST(MediaWriter, RangeKeepsItsFramesAndOnlyTheAudioOfItsTimeSpan) {
  const std::string output = sharedMedia().path("range.mp4");
  copy(sharedMedia().path("clip.mp4"), output, FrameRange{3, 6});
  const std::vector<ArgbFrame> out = readFrames(output);
  ASSERT_EQ(out.size(), 4u);
  for (std::size_t i = 0; i < out.size(); ++i) {
    EXPECT_NEAR(out[i].timeSeconds, static_cast<double>(i) / 25.0, 1e-3) << "frame " << i;
    EXPECT_NEAR(channel(out[i], 4, 4, 1), MediaFixtures::frameMarker(3 + static_cast<int>(i)), kLossyMarkerTolerance)
        << "output frame " << i;
  }
  // Four frames last 0.16 s; AAC packets of 1024 samples (21.3 ms) overlap the ends by at most one packet.
  const AudioSummary audio = summariseAudio(output);
  EXPECT_GE(audio.packets, 6);
  EXPECT_LE(audio.packets, 9);
  EXPECT_GT(audio.firstSeconds, -0.03);
  EXPECT_LT(audio.endSeconds, 0.16 + 0.03);
}

// PNG, TIFF and QuickTime Animation are lossless, so alpha and colour come back exactly; JPEG has no alpha.
TEST(MediaWriter, AlphaIsKeptThroughPngTiffAndMovAndDroppedByJpeg) {
  const std::string picture = sharedMedia().makePicture({"alpha.png", 24, 16, true, false, 0});
  const std::vector<ArgbFrame> source = readFrames(picture);
  for (const char* name : {"alpha-out.png", "alpha-out.tif", "alpha-out.mov"}) {
    copy(picture, sharedMedia().path(name));
    EXPECT_TRUE(MediaReader(sharedMedia().path(name)).info().hasAlpha) << name;
    const std::vector<ArgbFrame> back = readFrames(sharedMedia().path(name));
    ASSERT_EQ(back.size(), 1u) << name;
    EXPECT_EQ(firstDifference(back[0], source[0]), "") << name;
  }
  EXPECT_EQ(MediaReader(sharedMedia().path("alpha-out.mov")).info().codecName, "qtrle");
  copy(picture, sharedMedia().path("flat.jpg"));
  const std::vector<ArgbFrame> jpeg = readFrames(sharedMedia().path("flat.jpg"));
  EXPECT_FALSE(MediaReader(sharedMedia().path("flat.jpg")).info().hasAlpha);
  EXPECT_EQ(channel(jpeg.at(0), 5, 5, 0), 255);
}

// H.264 in 4:2:0 needs even sizes; an odd-sized picture must still become a video of its own size.
TEST(MediaWriter, OddSizedFramesMakeAVideoOfTheSameSize) {
  copy(sharedMedia().makePicture({"odd.png", 17, 9}), sharedMedia().path("odd.mp4"));
  const std::vector<ArgbFrame> frames = readFrames(sharedMedia().path("odd.mp4"));
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0].width(), 17);
  EXPECT_EQ(frames[0].height(), 9);
}

TEST(MediaWriter, SequenceInAndOutIsNumberedByFile) {
  MediaFixtures& media = sharedMedia();
  const std::string pattern = media.makeSequence("seq/f_%04d.png", 7, 4, 8, 6);
  MediaReader reader(pattern);
  EXPECT_EQ(reader.info().kind, MediaKind::Sequence);
  EXPECT_EQ(reader.info().frameCount, 4);
  EXPECT_EQ(reader.info().firstNumber, 7);
  const std::vector<ArgbFrame> in = readFrames(pattern);
  ASSERT_EQ(in.size(), 4u);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(in[i].index, 7 + i);
    EXPECT_NEAR(in[i].timeSeconds, i / 25.0, 1e-9);
    EXPECT_EQ(firstDifference(in[i], patternFrame(8, 6, 7 + i, false)), "") << "file " << 7 + i;
  }
  const std::vector<ArgbFrame> ranged = readFrames(pattern, nullptr, FrameRange{8, 9});
  ASSERT_EQ(ranged.size(), 2u);
  EXPECT_EQ(ranged[0].index, 8);
  EXPECT_EQ(ranged[1].index, 9);

  fs::create_directories(media.path("seqout"));
  copy(pattern, media.path("seqout/o_%03d.png"));
  EXPECT_EQ(filesIn(media.path("seqout")),
            (std::vector<std::string>{"o_007.png", "o_008.png", "o_009.png", "o_010.png"}));
  const std::vector<ArgbFrame> out = readFrames(media.path("seqout/o_%03d.png"));
  ASSERT_EQ(out.size(), in.size());
  for (std::size_t i = 0; i < in.size(); ++i) EXPECT_EQ(firstDifference(out[i], in[i]), "") << "frame " << i;

  // A video range into a sequence: files named after the source frames, for render farm chunks.
  fs::create_directories(media.path("chunk"));
  copy(media.path("clip.mkv"), media.path("chunk/c_%04d.png"), FrameRange{4, 5});
  EXPECT_EQ(filesIn(media.path("chunk")), (std::vector<std::string>{"c_0004.png", "c_0005.png"}));
}

// A failed write throws the one error class naming the output, leaves no temporary file behind, and never
// touches what stood at the output path before.
TEST(MediaWriter, FailedWritesLeaveNothingAndKeepTheExistingOutput) {
  fs::create_directories(sharedMedia().path("fail"));
  struct FailureCase {
    const char* label;
    std::string output;
    void (*run)(const std::string& input, const std::string& output);  // the write that must fail
  };
  const FailureCase cases[] = {
      {"abandoned video", sharedMedia().path("fail/a.mp4"),
       [](const std::string& in, const std::string& out) {
         MediaReader reader(in);
         MediaWriter writer(out, reader.info());
         ArgbFrame frame;
         reader.read(frame);
         writer.write(frame);
         throw MediaError(out, "render stopped");  // the host's render failing before finish()
       }},
      {"wrong frame size", sharedMedia().path("fail/b.mkv"),
       [](const std::string& in, const std::string& out) {
         ArgbFrame frame;
         frame.allocate(32, 32);
         MediaWriter(out, MediaReader(in).info()).write(frame);
       }},
      {"second frame into one picture", sharedMedia().path("fail/c.png"),
       [](const std::string& in, const std::string& out) {
         MediaReader reader(in);
         MediaWriter writer(out, reader.info());
         ArgbFrame frame;
         while (reader.read(frame)) writer.write(frame);
       }},
      {"unknown extension", sharedMedia().path("fail/d.xyz"),
       [](const std::string& in, const std::string& out) { copy(in, out); }},
      {"finish without frames", sharedMedia().path("fail/e.mov"),
       [](const std::string& in, const std::string& out) { MediaWriter(out, MediaReader(in).info()).finish(); }},
  };
  for (const FailureCase& c : cases) {
    SCOPED_TRACE(c.label);
    { std::ofstream(c.output) << "earlier render"; }
    try {
      c.run(sharedMedia().path("clip.mp4"), c.output);
      ADD_FAILURE() << "no error";
    } catch (const MediaError& e) {
      EXPECT_EQ(e.path(), c.output) << e.what();
    }
    EXPECT_EQ(contents(c.output), "earlier render");
    EXPECT_EQ(filesIn(sharedMedia().path("fail")), std::vector<std::string>{fs::path(c.output).filename()});
    fs::remove(c.output);
  }
}

// (That an output is not an input is the command's one check, before the writer is made.)
TEST(MediaWriter, OutputThatCannotBeWrittenIsRefused) {
  MediaReader reader(sharedMedia().path("clip.mkv"));
  for (const std::string& output : {sharedMedia().path("no/such/folder/out.mp4"),
                                    sharedMedia().path("no/such/folder/f_%04d.png"), sharedMedia().folder()}) {
    try {
      MediaWriter writer(output, reader.info());
      ADD_FAILURE() << "no error for " << output;
    } catch (const MediaError& e) {
      EXPECT_EQ(e.path(), output) << e.what();
    }
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
