// What a person waits for in `velmira preview`: from a slider's change to the new picture loaded in the browser
// (headless Chromium), at 512x512 and 1920x1080, beside the effect's render of the same frame on the server. Then the
// same under 20 slider changes a second for 10 seconds, where each change is counted until a picture that includes it
// is on screen; the first and last two seconds' medians show whether waits grow. Run: build*/bin/PreviewBench.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Host/Command/BrowserSession.h"
#include "Host/Command/PreviewRun.h"
#include "Support/MediaFixtures.h"

namespace {

using Quillmere::Velmira::BrowserSession;

double percentile(std::vector<double> values, double fraction) {
  if (values.empty()) return 0.0;
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1) + 0.5)];
}

std::vector<double> numbers(const nlohmann::json& list) { return list.get<std::vector<double>>(); }

// One change at a time, each waited for: the change's latency and the server's render of it.
void oneByOne(BrowserSession& page, std::vector<double>& latency, std::vector<double>& render) {
  for (int i = 0; i < 20; ++i) {
    nlohmann::json got = page.evaluate(fmt::format(
        "(async () => {{ velmiraPreview.set('skin-whiten', {}); await velmiraPreview.settled(); "
        "return [velmiraPreview.history[velmiraPreview.history.length - 1], velmiraPreview.renderMs]; }})()",
        20 + i % 2 * 40 + i));
    latency.push_back(got[0]);
    render.push_back(got[1]);
  }
}

// 200 changes, one every 50 ms, then until the last is on screen: each change's wait, in order.
std::vector<double> rapid(BrowserSession& page) {
  return numbers(
      page.evaluate("(async () => { const from = velmiraPreview.history.length; for (let i = 0; i < 200; ++i) { "
                    "velmiraPreview.set('skin-whiten', 10 + (i % 80)); await new Promise((r) => setTimeout(r, 50)); } "
                    "await velmiraPreview.settled(); return velmiraPreview.history.slice(from); })()"));
}

}  // namespace

int main() {
  using Quillmere::Velmira::MediaFixtures;
  using Quillmere::Velmira::PreviewRun;
  MediaFixtures fixtures;
  std::puts("Preview latency: slider change to picture loaded, ms (Chromium headless, llvmpipe where no GPU)");
  std::puts(
      "size        render med  latency med  latency p95  | 20/s: latency med  p95    first 2 s med  last 2 s med");
  for (auto [width, height] : {std::pair{512, 512}, std::pair{1920, 1080}}) {
    const std::string name = fmt::format("p{}.png", width);
    fixtures.makePicture({name, width, height});
    PreviewRun preview({name}, fixtures.folder());
    BrowserSession page(preview.address, fixtures.path("profile" + name));
    page.waitUntil("typeof velmiraPreview === 'object'");
    page.evaluate("(async () => { await velmiraPreview.ready; await velmiraPreview.settled(); })()");
    std::vector<double> latency, render;
    oneByOne(page, latency, render);
    const std::vector<double> waits = rapid(page);
    const std::size_t edge = std::min<std::size_t>(40, waits.size());
    const std::vector<double> first(waits.begin(), waits.begin() + static_cast<long>(edge)),
        last(waits.end() - static_cast<long>(edge), waits.end());
    std::printf("%-11s %10.1f %12.1f %12.1f  | %17.1f %6.1f %14.1f %13.1f\n",
                fmt::format("{}x{}", width, height).c_str(), percentile(render, 0.5), percentile(latency, 0.5),
                percentile(latency, 0.95), percentile(waits, 0.5), percentile(waits, 0.95), percentile(first, 0.5),
                percentile(last, 0.5));
  }
  return 0;
}
