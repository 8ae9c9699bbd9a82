// Frames on more than one host thread, each with its own context: frame buffers and vertex arrays are not shared
// between contexts, so the effect keeps a set per context, and every thread must get the same pixels.
#include <gtest/gtest.h>

#include <cstdint>
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

// One frame rendered on this thread, or on a thread of its own joined before the next: the threads take turns, as
// a host that does not render this effect's frames concurrently would.
Rendered renderOn(bool newThread, EffectSession& session, HostDouble& host) {
    Rendered rendered;
    auto render = [&] {
        rendered.result = session.render();
        rendered.deviation = session.deviation().maximum;
        HostWorld* output = host.outputWorld();
        const auto* data = reinterpret_cast<const std::uint8_t*>(output->world()->data);
        rendered.bytes.assign(data, data + static_cast<std::size_t>(output->rowbytes()) * output->height());
    };
    if (newThread) {
        std::thread(render).join();
    } else {
        render();
    }
    return rendered;
}

}  // namespace

TEST(RenderThreads, ThreadsRenderingInTurnGiveTheSamePixels) {
    HostDouble host;
    EffectSession session(host);
    TestFrames::fill(session.frame(40, 30, 0, 40 * 4 + 8), TestFrames::Kind::SkinGrain);
    std::vector<Rendered> frames;
    // Three new threads, then the main thread too: a fourth context of the share group.
    for (bool newThread : {true, true, true, false}) {
        frames.push_back(renderOn(newThread, session, host));
    }
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(frames[i].result, PF_Err_NONE) << "render " << i;
        EXPECT_EQ(frames[i].deviation, 0) << "render " << i;
        EXPECT_TRUE(frames[i].bytes == frames.front().bytes) << "render " << i << " differs from the first";
    }
}

TEST(RenderThreads, AThreadKeepsItsContextAcrossSizeChangesOnAnother) {
    HostDouble host;
    EffectSession session(host);
    // A thread draws at one size, the main thread changes the size, and renders on a new thread and on the main
    // thread at the first size again must both be whole.
    struct Step {
        A_long width, height;
        bool newThread;
    };
    for (const Step& step : {Step{24, 16, true}, Step{17, 33, false}, Step{24, 16, true}, Step{24, 16, false}}) {
        TestFrames::fill(session.frame(step.width, step.height), TestFrames::Kind::HueSweep);
        const Rendered rendered = renderOn(step.newThread, session, host);
        EXPECT_EQ(rendered.result, PF_Err_NONE);
        EXPECT_EQ(rendered.deviation, 0) << step.width << "x" << step.height << (step.newThread ? " on a new thread" : "");
    }
}
