#include <gtest/gtest.h>

#include <future>
#include <vector>

#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

// The host's shape: frames are read on one thread and written on another.
void copyOnTwoThreads(const std::string& input, const std::string& output) {
  MediaReader reader(input);
  MediaWriter writer(output, reader.info());
  std::vector<ArgbFrame> frames;
  std::async(std::launch::async, [&] {
    for (ArgbFrame frame; reader.read(frame);) frames.push_back(frame);
  }).get();
  std::async(std::launch::async, [&] {
    for (const ArgbFrame& frame : frames) writer.write(frame);
    writer.finish();
  }).get();
}

// Two whole pipelines at once: readers and writers share nothing, so each result is what the same copy gives alone.
TEST(MediaThreads, ConcurrentPipelinesGiveWhatEachGivesAlone) {
  MediaFixtures media;
  const std::string clip = media.makeVideo({}), sequence = media.makeSequence("s_%03d.png", 1, 12, 40, 30);
  auto video = std::async(std::launch::async, copyOnTwoThreads, clip, media.path("out.mkv"));
  auto pictures = std::async(std::launch::async, copyOnTwoThreads, sequence, media.path("o_%03d.png"));
  ASSERT_NO_THROW(video.get());
  ASSERT_NO_THROW(pictures.get());
  const std::vector<ArgbFrame> videoOut = readFrames(media.path("out.mkv"));
  ASSERT_EQ(videoOut.size(), 10u);
  for (int i = 0; i < 10; ++i)
    EXPECT_NEAR(channel(videoOut[i], 4, 4, 1), MediaFixtures::frameMarker(i), kLossyMarkerTolerance) << "frame " << i;
  const std::vector<ArgbFrame> out = readFrames(media.path("o_%03d.png"));
  ASSERT_EQ(out.size(), 12u);
  for (int i = 0; i < 12; ++i)
    EXPECT_EQ(firstDifference(out[i], MediaFixtures::pattern(40, 30, i + 1, false)), "") << i + 1;
}

}  // namespace
}  // namespace Quillmere::Velmira
