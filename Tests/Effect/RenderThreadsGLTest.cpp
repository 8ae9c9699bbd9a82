// Frames on more than one host thread, each with its own context: frame buffers and vertex arrays are not shared
// between contexts, so the effect keeps a set per context, and every thread must get the same pixels.
#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <thread>
#include <vector>

#include "Core/EffectHost.h"
#include "Support/ReferenceRender.h"
#include "Support/TestFrames.h"
#include "Velmira.h"

namespace Quillmere::Velmira {
namespace {

// Three new threads and the main thread at one size, a fourth context of the share group; then the main thread
// changes the size, and a new thread and the main thread at the first size again must still be whole. The threads
// take turns, as a host that does not render this effect's frames concurrently does.
TEST(RenderThreads, ThreadsRenderingInTurnGiveTheSamePixelsAcrossSizeChangesOnAnother) {
  EffectHost host(EntryPointFunc);
  const struct {
    int width, height;
    bool newThread;
  } steps[] = {{40, 30, true},  {40, 30, true}, {40, 30, true}, {40, 30, false},
               {17, 33, false}, {40, 30, true}, {40, 30, false}};
  std::vector<std::uint8_t> first;
  for (std::size_t i = 0; i < std::size(steps); ++i) {
    SCOPED_TRACE("render " + std::to_string(i));
    ArgbFrame input, output;
    TestFrames::make(input, TestFrames::Kind::SkinGrain, steps[i].width, steps[i].height);
    output.allocate(steps[i].width, steps[i].height);
    auto render = [&] { host.render(input, output, FrameTime{}); };
    if (steps[i].newThread) {
      std::thread(render).join();
    } else {
      render();
    }
    EXPECT_TRUE(matchesReference(input, output, ReferenceSliders{}));
    std::vector<std::uint8_t> bytes(output.row(0), output.row(0) + output.rowBytes() * output.height());
    if (steps[i].width != 40) continue;
    if (first.empty()) first = bytes;
    EXPECT_TRUE(bytes == first) << "differs from the first";
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
