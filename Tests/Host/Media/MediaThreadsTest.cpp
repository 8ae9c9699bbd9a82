#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"
#include "MediaTestSupport.h"
#include "Support/MediaFixtures.h"

namespace Quillmere::Velmira {
namespace {

// The host's shape: frames are read on one thread and written on another. Returns the error text, empty when all
// went well.
std::string copyOnTwoThreads(const std::string& input, const std::string& output) {
  std::string error;
  auto guarded = [&](auto work) {
    return std::thread([&error, work] {
      try {
        work();
      } catch (const std::exception& e) {
        error = e.what();
      }
    });
  };
  MediaReader reader(input);
  MediaWriter writer(output, reader.info());
  std::vector<ArgbFrame> frames;
  guarded([&] {
    ArgbFrame frame;
    while (reader.read(frame)) frames.push_back(frame);
  }).join();
  guarded([&] {
    for (const ArgbFrame& frame : frames) writer.write(frame);
    writer.finish();
  }).join();
  return error;
}

// Two whole pipelines at once: readers and writers share nothing, so each result is what the same copy gives
// alone.
TEST(MediaThreads, ConcurrentPipelinesGiveWhatEachGivesAlone) {
  MediaFixtures media;
  MediaFixtures::Video video;
  video.frames = 12;
  const std::string clip = media.makeVideo(video);
  const std::string sequence = media.makeSequence("s_%03d.png", 1, 12, 40, 30);

  std::string errorVideo, errorSequence;
  std::thread first([&] { errorVideo = copyOnTwoThreads(clip, media.path("out.mkv")); });
  std::thread second([&] { errorSequence = copyOnTwoThreads(sequence, media.path("o_%03d.png")); });
  first.join();
  second.join();
  ASSERT_EQ(errorVideo, "");
  ASSERT_EQ(errorSequence, "");

  const std::vector<ArgbFrame> videoOut = readFrames(media.path("out.mkv"));
  ASSERT_EQ(videoOut.size(), 12u);
  for (std::size_t i = 0; i < videoOut.size(); ++i)
    EXPECT_NEAR(channel(videoOut[i], 4, 4, 1), MediaFixtures::frameMarker(static_cast<int>(i)), 4) << "frame " << i;
  const std::vector<ArgbFrame> in = readFrames(sequence), out = readFrames(media.path("o_%03d.png"));
  ASSERT_EQ(out.size(), in.size());
  for (std::size_t i = 0; i < in.size(); ++i) EXPECT_EQ(firstDifference(out[i], in[i]), "") << "file " << i + 1;
}

}  // namespace
}  // namespace Quillmere::Velmira
