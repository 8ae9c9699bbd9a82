// Frames on more than one host thread, each with its own context: frame buffers and vertex arrays are not shared
// between contexts, so the effect keeps a set per context, and every thread must get the same pixels.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "HostDouble.h"
#include "RenderSupport/EffectSession.h"
#include "RenderSupport/TestFrames.h"

using namespace Quillmere::Velmira;

namespace {

struct Rendered {
    PF_Err result = PF_Err_NONE;
    int deviation = -1;
    std::vector<std::uint8_t> bytes;
};

// One frame rendered on a thread of its own, joined before the next: the threads take turns, as a host that does
// not render this effect's frames concurrently would.
Rendered renderOnNewThread(EffectSession& session, HostDouble& host) {
    Rendered rendered;
    std::thread thread([&] {
        rendered.result = session.render();
        rendered.deviation = session.deviation().maximum;
        HostWorld* output = host.outputWorld();
        const auto* data = reinterpret_cast<const std::uint8_t*>(output->world()->data);
        rendered.bytes.assign(data, data + static_cast<std::size_t>(output->rowbytes()) * output->height());
    });
    thread.join();
    return rendered;
}

}  // namespace

TEST(RenderThreads, ThreadsRenderingInTurnGiveTheSamePixels) {
    HostDouble host;
    EffectSession session(host);
    TestFrames::fill(session.frame(40, 30, 0, 40 * 4 + 8), TestFrames::Kind::SkinGrain);
    std::vector<Rendered> frames;
    for (int turn = 0; turn < 3; ++turn) {
        frames.push_back(renderOnNewThread(session, host));
    }
    // The main thread too, after the others: a fourth context of the share group.
    frames.push_back(Rendered{session.render(), session.deviation().maximum, {}});
    const auto* data = reinterpret_cast<const std::uint8_t*>(host.outputWorld()->world()->data);
    frames.back().bytes.assign(data, data + frames.front().bytes.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].result, PF_Err_NONE) << "render " << i;
        EXPECT_EQ(frames[i].deviation, 0) << "render " << i;
        EXPECT_TRUE(frames[i].bytes == frames.front().bytes) << "render " << i << " differs from the first";
    }
}

TEST(RenderThreads, AThreadKeepsItsContextAcrossSizeChangesOnAnother) {
    HostDouble host;
    EffectSession session(host);
    // Thread A draws at one size, the main thread changes the size, and a render on a new thread and on the main
    // thread at the first size again must both be whole.
    TestFrames::fill(session.frame(24, 16), TestFrames::Kind::HueSweep);
    EXPECT_EQ(renderOnNewThread(session, host).deviation, 0) << "first size on a thread";
    TestFrames::fill(session.frame(17, 33), TestFrames::Kind::HueSweep);
    ASSERT_EQ(session.render(), PF_Err_NONE);
    EXPECT_EQ(session.deviation().maximum, 0) << "second size on the main thread";
    TestFrames::fill(session.frame(24, 16), TestFrames::Kind::SkinGrain);
    EXPECT_EQ(renderOnNewThread(session, host).deviation, 0) << "first size again, on a new thread";
    ASSERT_EQ(session.render(), PF_Err_NONE);
    EXPECT_EQ(session.deviation().maximum, 0) << "first size again, on the main thread";
}
