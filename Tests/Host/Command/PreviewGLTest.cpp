// `velmira preview` over HTTP, as the page and scripts use it: each request a line, with what must come back.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "BrowserSession.h"
#include "PreviewRun.h"
#include "Support/MediaFiles.h"
#include "Support/MediaFixtures.h"
#include "VelmiraRun.h"

namespace Quillmere::Velmira {
namespace {

bool samePixels(const ArgbFrame& a, const ArgbFrame& b) {
  if (a.width() != b.width() || a.height() != b.height()) return false;
  for (int y = 0; y < a.height(); ++y) {
    if (std::memcmp(a.row(y), b.row(y), static_cast<std::size_t>(a.width()) * 4) != 0) return false;
  }
  return true;
}

// A picture's pixels equal those of the velmira run on the line (its output is the file `made`), or, for the
// source, the input's frame as the media layer decodes it. The video's frames are asked out of order, so that the
// reader seeks back and forth; its fixture marks every frame differently.
TEST(VelmiraPreview, AnswersEachRequestAsRenderWouldAndRefusesStrangers) {
  MediaFixtures fixtures;
  fixtures.makePicture({"p.png", 37, 21, true});
  MediaFixtures::Video clip;
  clip.frames = 30;
  clip.colour = {210, 150, 120};
  const std::string video = fixtures.makeVideo(clip);
  PreviewRun picture({"p.png"}, fixtures.folder()), movie({video}, fixtures.folder());
  ASSERT_EQ(picture.address.rfind("http://127.0.0.1:", 0), 0u) << picture.address;
  ASSERT_EQ(picture.token.size(), 32u);
  ASSERT_NE(picture.token, movie.token) << "the token must be new for each run";
  const std::string ours = "127.0.0.1:" + std::to_string(movie.port);
  const struct {
    const PreviewRun& server;
    std::string target;  // "T" stands for token=<the run's token>
    std::string host;    // empty: the server's own address
    int status;
    std::string shown;  // a fragment of the body, or of the reference frame's source
    std::vector<std::string> reference;
  } cases[] = {
      // clang-format off
      {picture, "/frame.png?T&skin-whiten=55&skin-pinking=20.5", "", 200, "", {"render", "p.png", "-o", "r.png", "--skin-whiten", "55", "--skin-pinking", "20.5"}},
      {picture, "/frame.png?T", "", 200, "", {"render", "p.png", "-o", "r.png"}},
      {picture, "/mask.png?T&skin-blur-range=20", "", 200, "", {"mask", "p.png", "-o", "r.png", "--skin-blur-range", "20"}},
      {movie, "/frame.png?T&frame=17&skin-blur=3&skin-whiten=70", "", 200, "", {"render", video, "-o", "r.png", "--frames", "17-17", "--skin-blur", "3", "--skin-whiten", "70"}},
      {movie, "/frame.png?T&frame=4&skin-blur=3&skin-whiten=70", "", 200, "", {"render", video, "-o", "r.png", "--frames", "4-4", "--skin-blur", "3", "--skin-whiten", "70"}},
      {movie, "/frame.png?T&frame=5&skin-blur=3&skin-whiten=0@0,90@10f", "", 200, "", {"render", video, "-o", "r.png", "--frames", "5-5", "--skin-blur", "3", "--skin-whiten", "0@0,90@10f"}},
      {movie, "/mask.png?T&frame=29&skin-blur-range=4", "", 200, "", {"mask", video, "-o", "r.png", "--frames", "29-29", "--skin-blur-range", "4"}},
      {movie, "/source.png?T&frame=11", "", 200, "", {}},
      {movie, "/params.json?T", "", 200, R"("flag":"skin-blur-range")", {}},
      {movie, "/info.json?T", "", 200, R"("frameCount":30,"height":48)", {}},
      {movie, "/?T", "", 200, "window.velmiraPreview", {}},
      // What render refuses is refused with its words.
      {movie, "/frame.png?T&skin-whiten=120", "", 400, "--skin-whiten: Skin Whiten: 120 is outside its valid range 0 to 100 %", {}},
      {movie, "/mask.png?T&skin-blur-range=abc", "", 400, "--skin-blur-range: 'abc'", {}},
      {movie, "/frame.png?T&frame=30", "", 400, "frame '30' is not among the frames 0-29 of", {}},
      {movie, "/frame.png?T&skin-whitten=5", "", 400, "'skin-whitten' is neither a slider's flag nor frame", {}},
      // Strangers: no token, a wrong one, a name rebound to 127.0.0.1, and paths that are no page of the preview.
      {movie, "/frame.png", "", 403, "a missing or wrong token", {}},
      {movie, "/info.json?token=0123456789abcdef0123456789abcdef", "", 403, "a missing or wrong token", {}},
      {movie, "/?T", "attacker.example:" + std::to_string(movie.port), 403, "answers only to Host " + ours, {}},
      {movie, "/?T", "localhost:" + std::to_string(movie.port), 403, "answers only to Host", {}},
      {movie, "/../../etc/passwd?T", "", 404, "nothing at", {}},
      {movie, "/p.png?T", "", 404, "nothing at", {}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.target + " " + c.host);
    std::string target = c.target;
    if (auto at = target.find('T', 1); at != std::string::npos) target.replace(at, 1, "token=" + c.server.token);
    httplib::Result response = c.server.get(target, c.host);
    ASSERT_TRUE(response) << "no answer";
    EXPECT_EQ(response->status, c.status) << response->body;
    if (c.status != 200 || !c.shown.empty()) {
      EXPECT_NE(response->body.find(c.shown), std::string::npos) << response->body;
      continue;
    }
    writeFile(fixtures.path("got.png"), response->body);
    const ArgbFrame got = readFrames(fixtures.path("got.png")).at(0);
    if (c.reference.empty()) {
      EXPECT_TRUE(samePixels(got, readFrames(video, nullptr, {11, 11}).at(0)));
      continue;
    }
    VelmiraRun run = VelmiraRun::run(c.reference, fixtures.folder());
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(samePixels(got, readFrames(fixtures.path("r.png")).at(0)));
  }
  PreviewRun taken({"p.png", "--port", std::to_string(picture.port)}, fixtures.folder());
  EXPECT_EQ(taken.address, "");
  EXPECT_EQ(taken.stop(), 1) << "a port in use is an error";
  EXPECT_EQ(picture.stop(), 0) << "Ctrl-C is the way to stop it";
}

// The page in a real browser, moved as a person moves it, one step a line: what the step does, the layer that must
// then be on screen with the pixels of the velmira run on the line (none: the input's frame 20), and what the page
// must show beside it. Five quick slider moves must end on the last one's picture.
TEST(VelmiraPreview, PageShowsWhatItsSlidersScrubberAndTogglesAsk) {
  MediaFixtures fixtures;
  MediaFixtures::Video clip;
  clip.frames = 30;
  clip.colour = {210, 150, 120};
  const std::string video = fixtures.makeVideo(clip);
  PreviewRun preview({video}, fixtures.folder());
  BrowserSession page(preview.address, fixtures.path("profile"));
  page.waitUntil("typeof velmiraPreview === 'object'");
  const auto shown = [&](const std::string& layer) {
    writeFile(fixtures.path("shown.png"),
              BrowserSession::base64(
                  page.evaluate("(async () => { const b = new Uint8Array(await velmiraPreview.shownBlob('" + layer +
                                "').arrayBuffer()); let s = ''; for (const c of b) s += "
                                "String.fromCharCode(c); return btoa(s); })()")));
    return readFrames(fixtures.path("shown.png")).at(0);
  };
  const std::string byId = "document.getElementById";
  const struct {
    std::string step;
    std::string layer;
    std::vector<std::string> reference;
    std::string check;  // a script that must give true
  } steps[] = {
      // clang-format off
      {"", "frame", {"render", video, "-o", "r.png", "--frames", "0-0"},
       "[...document.querySelectorAll('input[type=range][name]')].map((e) => e.name).join() === 'skin-blur,skin-blur-range,skin-whiten,skin-redden,skin-pinking'"},
      {"for (const v of [10, 25, 40, 55, 72.5]) velmiraPreview.set('skin-whiten', v)", "frame", {"render", video, "-o", "r.png", "--frames", "0-0", "--skin-whiten", "72.5"},
       byId + "('command').textContent.endsWith('--skin-whiten 72.5')"},
      {"const s = " + byId + "('scrub'); s.value = 20; s.dispatchEvent(new Event('input'))", "frame", {"render", video, "-o", "r.png", "--frames", "20-20", "--skin-whiten", "72.5"},
       byId + "('frame-number').textContent === '20'"},
      {byId + "('view-before').click()", "before", {}, byId + "('frame').hidden && !" + byId + "('before').hidden"},
      {byId + "('view-split').click()", "before", {}, byId + "('frame').style.clipPath.startsWith('inset') && !" + byId + "('frame').hidden"},
      {byId + "('mask-toggle').click(); velmiraPreview.set('skin-blur-range', 35)", "mask", {"mask", video, "-o", "r.png", "--frames", "20-20", "--skin-blur-range", "35"},
       "!" + byId + "('mask').hidden"},
      // clang-format on
  };
  for (const auto& s : steps) {
    SCOPED_TRACE(s.step);
    page.evaluate("(async () => { await velmiraPreview.ready; " + s.step + "; await velmiraPreview.settled(); })()");
    EXPECT_EQ(page.evaluate(s.check), true);
    const ArgbFrame got = shown(s.layer);
    if (s.reference.empty()) {
      EXPECT_TRUE(samePixels(got, readFrames(video, nullptr, {20, 20}).at(0)));
      continue;
    }
    VelmiraRun run = VelmiraRun::run(s.reference, fixtures.folder());
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(samePixels(got, readFrames(fixtures.path("r.png")).at(0)));
  }
  writeFile(VELMIRA_SCREENSHOT, page.screenshot());
  EXPECT_EQ(readFrames(VELMIRA_SCREENSHOT).at(0).width(), 1280);
}

}  // namespace
}  // namespace Quillmere::Velmira
