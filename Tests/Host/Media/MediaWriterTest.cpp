// The media layer's reader and writer on media made by the fixtures: what a read gives, and what a copy made as the
// host makes it keeps.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "Media/MediaError.h"
#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

namespace fs = std::filesystem;

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

// Read, then written again as the host does: every frame in order at its time, and the output keeps rate, time
// base, timestamps, rotation, YUV matrix and range, and every audio packet; a range starts at zero with only the audio
// of its time span (AAC packets of 21.3 ms overlap its ends by at most one). Matroska has no place for a display
// matrix, and a short Matroska range tells its rate only by what the writer states; what a file holds, not its name,
// makes it a video.
// The flat colour comes back within 3 per channel (Y, Cb and Cr rounded to whole codes, spread by the inverse
// matrix, then the result rounded), and within 4 once written again through H.264; the wrong matrix moves it by 8
// or more, the wrong range by 12.
TEST(MediaWriter, VideoKeepsFramesRateTimeBaseTimestampsRotationColoursAndAudio) {
  // Input, output, frame rate, rotation (counter-clockwise: the fixtures turn them 90 degrees clockwise), YUV matrix,
  // full range, range.
  const std::tuple<const char*, const char*, Rational, double, int, bool, FrameRange> clips[] = {
      {"clip.mp4", "out.mp4", {25, 1}, -90.0, 1, false, {}},
      {"clip.mkv", "out.mkv", {25, 1}, 0.0, 6, false, {}},
      {"ntsc.mov", "ntsc-out.mov", {30000, 1001}, -90.0, 6, true, {}},
      {"misnamed.png", "misnamed-out.mov", {25, 1}, -90.0, 1, false, {}},
      {"clip.mp4", "range.mp4", {25, 1}, -90.0, 1, false, {3, 6}},
      {"clip.mkv", "range.mkv", {25, 1}, 0.0, 6, false, {3, 6}}};
  const std::array<int, 3> colour = MediaFixtures::Video{}.colour;
  for (const auto& [inputName, outputName, rate, rotation, matrix, fullRange, range] : clips) {
    SCOPED_TRACE(outputName);
    const std::string input = sharedMedia().path(inputName), output = sharedMedia().path(outputName);
    copy(input, output, range);
    MediaInfo in, out;
    const std::vector<ArgbFrame> read = readFrames(input, &in), written = readFrames(output, &out);
    const int first = static_cast<int>(range.first), frames = range.last < 0 ? 10 : 4;
    EXPECT_TRUE(out.frameRate == rate) << out.frameRate.num << "/" << out.frameRate.den;
    EXPECT_TRUE(out.timeBase == in.timeBase) << out.timeBase.num << "/" << out.timeBase.den;
    EXPECT_NEAR(out.durationSeconds, frames / rate.value(), 1e-3);
    EXPECT_NEAR(out.rotationDegrees, rotation, 1e-6);
    EXPECT_EQ(out.colourMatrix, matrix);
    EXPECT_EQ(out.fullRange, fullRange);
    ASSERT_EQ(read.size(), 10u);
    ASSERT_EQ(written.size(), static_cast<std::size_t>(frames));
    for (int ch = 1; ch < 4; ++ch) {  // red, green, blue
      EXPECT_NEAR(channel(read[0], 40, 30, ch), colour[ch - 1], 3) << "read, channel " << ch;
      EXPECT_NEAR(channel(written[0], 40, 30, ch), colour[ch - 1], 4) << "written, channel " << ch;
    }
    for (int i = 0; i < frames; ++i) {
      SCOPED_TRACE("frame " + std::to_string(i));
      EXPECT_NEAR(written[i].timeSeconds, i / rate.value(), 1e-3);
      EXPECT_EQ(written[i].pts - written[0].pts, read[first + i].pts - read[first].pts);
      EXPECT_NEAR(channel(written[i], 4, 4, 1), MediaFixtures::frameMarker(first + i), kLossyMarkerTolerance);
    }
    const auto [packets, start, end] = MediaFixtures::audioOf(output);
    EXPECT_GE(packets, frames == 10 ? std::get<0>(MediaFixtures::audioOf(input)) : 6) << "audio packets dropped";
    EXPECT_GT(start, -0.03);
    EXPECT_LT(end, frames / rate.value() + 0.03);
  }
}

// Pictures come back exactly, deep channels brought to 8 bits, and written again keep their pixels: PNG, TIFF and
// QuickTime Animation are lossless and keep alpha; JPEG and H.264 drop it and come within 16 of these gradients (the
// wrong matrix moves them further). They are odd-sized, which H.264 in 4:2:0 cannot hold.
TEST(MediaWriter, PicturesKeepTheirPixelsAndAlphaWhereTheFormatHoldsIt) {
  const MediaFixtures::Picture pictures[] = {{"rgb.png", 17, 9, false, false},  {"rgba.png", 17, 9, true, false},
                                             {"rgb16.png", 17, 9, false, true}, {"rgba16.png", 17, 9, true, true},
                                             {"rgba.tif", 17, 9, true, false},  {"rgb16.tif", 17, 9, false, true},
                                             {"rgba16.tif", 17, 9, true, true}};
  // Each output's extension and codec, and how far its colours may stray: the lossless ones keep alpha.
  const std::tuple<const char*, const char*, int> outputs[] = {
      {".png", "png", 0}, {".tif", "tiff", 0}, {".mov", "qtrle", 0}, {".jpg", "mjpeg", 20}, {".mp4", "h264", 20}};
  for (const MediaFixtures::Picture& p : pictures) {
    SCOPED_TRACE(p.name);
    MediaInfo info;
    const std::string input = sharedMedia().makePicture(p);
    const std::vector<ArgbFrame> in = readFrames(input, &info);
    EXPECT_EQ(info.hasAlpha, p.alpha);
    EXPECT_EQ(info.reducedToEightBits, p.sixteenBit);
    ASSERT_EQ(in.size(), 1u);
    EXPECT_EQ(firstDifference(in[0], MediaFixtures::pattern(17, 9, 0, p.alpha)), "");
    if (!p.alpha) continue;  // what each format keeps shows on pictures with alpha
    for (const auto& [extension, codec, tolerance] : outputs) {
      const std::string output = input + "-out" + extension;
      copy(input, output);
      const std::vector<ArgbFrame> back = readFrames(output, &info);
      EXPECT_EQ(info.codecName, codec) << output;
      EXPECT_EQ(info.hasAlpha, tolerance == 0) << output;
      EXPECT_EQ(firstDifference(back.at(0), in[0], tolerance, tolerance == 0), "") << output;
    }
  }
}

// A photo's EXIF orientation stands it upright as it is read: each row gives the upright size and where the stored
// picture's top-left, top-right and bottom-left corners show, as EXIF defines the value; every pixel must be the
// stored one carried there (within JPEG's loss on these gradients, which a wrong turn or mirror exceeds many times).
TEST(MediaReader, ExifOrientationStandsPhotosUpright) {
  using Point = std::array<int, 2>;
  const std::tuple<int, int, int, Point, Point, Point> cases[] = {
      // clang-format off
      {3, 17, 9, {16, 8}, {0, 8}, {16, 0}},  // turned half round
      {6, 9, 17, {8, 0}, {8, 16}, {0, 0}},   // a quarter clockwise
      {8, 9, 17, {0, 16}, {0, 0}, {8, 16}},  // a quarter anticlockwise
      {2, 17, 9, {16, 0}, {0, 0}, {16, 8}},  // mirrored left to right
      {5, 9, 17, {0, 0}, {0, 16}, {8, 0}},   // mirrored across the diagonal
      // clang-format on
  };
  const ArgbFrame stored = MediaFixtures::pattern(17, 9, 0, false);
  for (const auto& [orientation, width, height, topLeft, topRight, bottomLeft] : cases) {
    SCOPED_TRACE("orientation " + std::to_string(orientation));
    MediaInfo info;
    const std::string name = "turned-" + std::to_string(orientation) + ".jpg";
    const std::vector<ArgbFrame> read =
        readFrames(sharedMedia().makePicture({name, 17, 9, false, false, 0, orientation}), &info);
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(info.width, width);
    EXPECT_EQ(info.height, height);
    ArgbFrame upright;
    upright.allocate(width, height);
    for (int y = 0; y < 9; ++y)
      for (int x = 0; x < 17; ++x) {
        const int ux = topLeft[0] + (topRight[0] - topLeft[0]) * x / 16 + (bottomLeft[0] - topLeft[0]) * y / 8;
        const int uy = topLeft[1] + (topRight[1] - topLeft[1]) * x / 16 + (bottomLeft[1] - topLeft[1]) * y / 8;
        std::copy_n(stored.row(y) + x * 4, 4, upright.row(uy) + ux * 4);
      }
    EXPECT_EQ(firstDifference(read[0], upright, 20, false), "");
  }
}

// Files are read and written by their numbers, so that a range of a job becomes the files it names.
TEST(MediaWriter, SequenceInAndOutIsNumberedByFile) {
  MediaFixtures& media = sharedMedia();
  const std::string pattern = media.makeSequence("seq/f_%04d.png", 7, 4, 8, 6);
  const std::vector<ArgbFrame> in = readFrames(pattern);
  ASSERT_EQ(in.size(), 4u);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(in[i].index, 7 + i);
    EXPECT_NEAR(in[i].timeSeconds, i / 25.0, 1e-9) << "file " << 7 + i;
    EXPECT_EQ(firstDifference(in[i], MediaFixtures::pattern(8, 6, 7 + i, false)), "") << "file " << 7 + i;
  }
  fs::create_directories(media.path("seqout"));
  copy(pattern, media.path("seqout/o_%03d.png"), FrameRange{8, 9});
  EXPECT_EQ(filesIn(media.path("seqout")), (std::vector<std::string>{"o_008.png", "o_009.png"}));
  EXPECT_EQ(firstDifference(readFrames(media.path("seqout/o_%03d.png")).at(1), in[2]), "");
}

// A failed write throws the one error class naming the output (or the file of a sequence), leaves no temporary file
// behind, and never touches what stood at the output path before, nor any file of an earlier sequence, even where the
// last of a sequence's files cannot be put in place; an output that cannot be written is refused before any frame is
// made.
TEST(MediaWriter, FailedWritesLeaveNothingAndKeepTheExistingOutput) {
  fs::create_directories(sharedMedia().path("fail"));
  MediaInfo clip;
  ArgbFrame frame = readFrames(sharedMedia().path("clip.mp4"), &clip).at(0), second = frame, wrongSize;
  second.index = 1;
  wrongSize.allocate(32, 32);
  // The frames written in turn, a null one standing for the host's render failing, then finish(); what stood in the
  // folder before, a folder where the name ends in '/'.
  const std::tuple<const char*, std::vector<const ArgbFrame*>, std::vector<std::string>> cases[] = {
      {"abandoned.mp4", {&frame, nullptr}, {"abandoned.mp4"}},
      {"wrong-size.mkv", {&wrongSize}, {"wrong-size.mkv"}},
      {"two-frames.png", {&frame, &frame}, {"two-frames.png"}},
      {"unknown.xyz", {&frame}, {"unknown.xyz"}},
      {"none.mov", {}, {"none.mov"}},
      {"f_%02d.png", {&frame, &second, nullptr}, {"f_00.png"}},
      {"g_%02d.png", {&frame, &second}, {"g_00.png", "g_01.png/"}}};
  for (const auto& [name, frames, before] : cases) {
    SCOPED_TRACE(name);
    const std::string output = sharedMedia().path(std::string("fail/") + name);
    for (const std::string& file : before)
      file.back() == '/' ? (void)fs::create_directory(sharedMedia().path("fail/" + file))
                         : writeFile(sharedMedia().path("fail/" + file), "earlier render");
    try {
      MediaWriter writer(output, clip);
      for (const ArgbFrame* f : frames) f ? writer.write(*f) : throw MediaError(output, "render stopped");
      writer.finish();
      ADD_FAILURE() << "no error";
    } catch (const MediaError& e) {
      EXPECT_EQ(e.path().rfind(output.substr(0, output.find('%')), 0), 0u) << e.what();
    }
    EXPECT_EQ(filesIn(sharedMedia().path("fail")), before);
    for (const std::string& file : before) {
      if (file.back() != '/') {
        EXPECT_EQ(readFile(sharedMedia().path("fail/" + file)), "earlier render");
      }
      fs::remove(sharedMedia().path("fail/" + file));
    }
  }
  for (const char* output : {"no/such/folder/out.mp4", "no/such/folder/f_%04d.png", "."})
    EXPECT_THROW(MediaWriter(sharedMedia().path(output), clip), MediaError) << output;
}

// A writer starting in a folder removes the temporaries and lock file that a killed render left there, and keeps
// those of a writer still at work, which a third one leaves alone too.
TEST(MediaWriter, AStartingWriterRemovesWhatAKilledRenderLeftAndKeepsALiveOnes) {
  const std::string folder = sharedMedia().path("stale");
  fs::create_directories(folder);
  MediaInfo clip;
  const ArgbFrame frame = readFrames(sharedMedia().path("clip.mp4"), &clip).at(0);
  if (fork() == 0) {
    MediaWriter killed(folder + "/dead.png", clip);
    killed.write(frame);
    raise(SIGKILL);
  }
  wait(nullptr);
  EXPECT_EQ(filesIn(folder).size(), 2u) << "the killed render's lock file and picture";
  MediaWriter live(folder + "/live.png", clip);
  live.write(frame);
  MediaWriter next(folder + "/next.png", clip);
  next.write(frame);
  next.finish();
  live.finish();
  EXPECT_EQ(filesIn(folder), (std::vector<std::string>{"live.png", "next.png"}));
}

}  // namespace
}  // namespace Quillmere::Velmira
