// Frames on more than one host thread, each with its own context: frame buffers and vertex arrays are not shared
// between contexts, so the effect keeps a set per context, and every thread must get the same pixels.
#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <thread>
#include <vector>

#include "HostDouble.h"
#include "Support/EffectSession.h"
#include "Support/TestFrames.h"

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

TEST(RenderThreads, ThreadsRenderingInTurnGiveTheSamePixelsAcrossSizeChangesOnAnother) {
  HostDouble host;
  EffectSession session(host);
  struct Step {
    A_long width, height;
    bool newThread;
  };
  // Three new threads and the main thread at one size, a fourth context of the share group; then the main thread
  // changes the size, and a new thread and the main thread at the first size again must still be whole.
  const Step steps[] = {{40, 30, true},  {40, 30, true}, {40, 30, true}, {40, 30, false},
                        {17, 33, false}, {40, 30, true}, {40, 30, false}};
  std::vector<std::uint8_t> first;
  for (std::size_t i = 0; i < std::size(steps); ++i) {
    const Step& step = steps[i];
    TestFrames::fill(session.frame(step.width, step.height, 0, step.width * 4 + 8), TestFrames::Kind::SkinGrain);
    const Rendered rendered = renderOn(step.newThread, session, host);
    EXPECT_EQ(rendered.result, PF_Err_NONE) << "render " << i;
    EXPECT_EQ(rendered.deviation, 0) << "render " << i;
    if (step.width == 40) {
      if (first.empty()) {
        first = rendered.bytes;
      }
      EXPECT_TRUE(rendered.bytes == first) << "render " << i << " differs from the first";
    }
  }
}
