#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>

#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"
#include "MediaFixtures/MediaFixtures.h"
#include "MediaTestSupport.h"

namespace Quillmere::Velmira {
namespace {

// The host's shape: a reader on one thread hands frames to a writer on another.
class Handoff {
public:
    void push(std::optional<ArgbFrame> frame) {
        std::lock_guard<std::mutex> lock(mMutex);
        mFrames.push_back(std::move(frame));
        mReady.notify_one();
    }
    std::optional<ArgbFrame> pop() {
        std::unique_lock<std::mutex> lock(mMutex);
        mReady.wait(lock, [&] { return !mFrames.empty(); });
        std::optional<ArgbFrame> frame = std::move(mFrames.front());
        mFrames.pop_front();
        return frame;
    }

private:
    std::mutex mMutex;
    std::condition_variable mReady;
    std::deque<std::optional<ArgbFrame>> mFrames;
};

// Decodes on one thread and encodes on another; returns the error text, empty when all went well.
std::string copyOnTwoThreads(const std::string& input, const std::string& output) {
    std::string error;
    std::mutex errorMutex;
    auto record = [&](const std::exception& e) {
        std::lock_guard<std::mutex> lock(errorMutex);
        error = e.what();
    };
    MediaReader reader(input);
    MediaWriter writer(output, reader.info());
    Handoff handoff;
    std::thread decoder([&] {
        try {
            ArgbFrame frame;
            while (reader.read(frame)) handoff.push(frame);
        } catch (const std::exception& e) {
            record(e);
        }
        handoff.push(std::nullopt);
    });
    std::thread encoder([&] {
        try {
            while (std::optional<ArgbFrame> frame = handoff.pop()) writer.write(*frame);
            writer.finish();
        } catch (const std::exception& e) {
            record(e);
        }
    });
    decoder.join();
    encoder.join();
    return error;
}

// Two whole pipelines at once, four threads: readers and writers share nothing, so each result is what the
// same copy gives alone.
TEST(MediaThreads, ConcurrentPipelinesGiveWhatEachGivesAlone) {
    MediaFixtures media;
    MediaFixtures::Video video;
    video.frames = 12;
    std::string clip = media.makeVideo(video);
    std::string sequence = media.makeSequence("s_%03d.png", 1, 12, 40, 30);

    std::string errorVideo, errorSequence;
    std::thread first([&] { errorVideo = copyOnTwoThreads(clip, media.path("out.mkv")); });
    std::thread second([&] { errorSequence = copyOnTwoThreads(sequence, media.path("o_%03d.png")); });
    first.join();
    second.join();
    ASSERT_EQ(errorVideo, "");
    ASSERT_EQ(errorSequence, "");

    std::vector<ArgbFrame> videoOut = readAll(media.path("out.mkv"));
    ASSERT_EQ(videoOut.size(), 12u);
    for (std::size_t i = 0; i < videoOut.size(); ++i)
        EXPECT_NEAR(channel(videoOut[i], 4, 4, 1), MediaFixtures::frameMarker(static_cast<int>(i)), 4) << "frame " << i;
    std::vector<ArgbFrame> in = readAll(sequence), out = readAll(media.path("o_%03d.png"));
    ASSERT_EQ(out.size(), in.size());
    for (std::size_t i = 0; i < in.size(); ++i) EXPECT_EQ(out[i].pixels, in[i].pixels) << "file " << i + 1;
}

}  // namespace
}  // namespace Quillmere::Velmira
