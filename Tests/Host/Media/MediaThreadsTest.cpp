#include <gtest/gtest.h>

#include <future>
#include <vector>

#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

// Two whole pipelines at once: readers and writers share nothing, so each result is what the same copy gives alone.
// Under the thread sanitizer this is where state shared behind the media layer's back would show.
TEST(MediaThreads, ConcurrentPipelinesGiveWhatEachGivesAlone) {
  MediaFixtures media;
  const std::string clip = media.makeVideo({}), sequence = media.makeSequence("s_%03d.png", 1, 10, 40, 30);
  auto video = std::async(std::launch::async, [&] { copy(clip, media.path("out.mkv")); });
  auto pictures = std::async(std::launch::async, [&] { copy(sequence, media.path("o_%03d.png")); });
  ASSERT_NO_THROW(video.get());
  ASSERT_NO_THROW(pictures.get());
  const std::vector<ArgbFrame> videoOut = readFrames(media.path("out.mkv")), out = readFrames(media.path("o_%03d.png"));
  ASSERT_EQ(videoOut.size(), 10u);
  ASSERT_EQ(out.size(), 10u);
  for (int i = 0; i < 10; ++i) {
    EXPECT_NEAR(channel(videoOut[i], 4, 4, 1), MediaFixtures::frameMarker(i), kLossyMarkerTolerance) << "frame " << i;
    EXPECT_EQ(firstDifference(out[i], MediaFixtures::pattern(40, 30, i + 1, false)), "") << "file " << i + 1;
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
