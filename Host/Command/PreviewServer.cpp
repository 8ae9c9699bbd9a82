#include "Command/PreviewServer.h"

#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>
#include <random>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Command/PreviewPage.h"
#include "Command/SliderFlag.h"
#include "Core/HostError.h"

namespace Quillmere::Velmira {

namespace {

constexpr const char* kLoopback = "127.0.0.1";

// 128 bits from the system's entropy source, as hex: as much as a notebook server's token.
std::string randomToken() {
  std::random_device device;
  std::string token;
  for (int i = 0; i < 4; ++i) token += fmt::format("{:08x}", device());
  return token;
}

// Compares every character, so that the time a refusal takes tells nothing of how much of a guess was right.
bool sameToken(const std::string& given, const std::string& token) {
  if (given.empty()) return false;
  unsigned difference = given.size() == token.size() ? 0u : 1u;
  for (std::size_t i = 0; i < token.size(); ++i)
    difference |= static_cast<unsigned>(given[i % given.size()] ^ token[i]);
  return difference == 0;
}

// Without SO_REUSEPORT, which the library sets by default: with it a second server (another user's too) could bind
// the same port beside ours, and a port in use would go unnoticed.
void reuseAddressOnly(socket_t socket) {
  int yes = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

void sendText(httplib::Response& response, int status, const std::string& text) {
  response.status = status;
  response.set_content(text + "\n", "text/plain; charset=utf-8");
}

}  // namespace

PreviewServer::PreviewServer(EffectHost& host, const std::string& input, std::size_t rangeSlider)
    : mHost(host), mRenderer(host, input, rangeSlider), mToken(randomToken()) {
  mServer.set_socket_options(reuseAddressOnly);
  mServer.set_keep_alive_timeout(1);  // Ctrl-C waits for idle connections no longer than this
  route();
}

void PreviewServer::bind(int port) {
  mPort = port == 0 ? mServer.bind_to_any_port(kLoopback) : (mServer.bind_to_port(kLoopback, port) ? port : -1);
  if (mPort <= 0) {
    throw HostError::failure(
        fmt::format("cannot serve on {}:{}: the port is in use or not allowed; choose another with --port, or "
                    "--port 0 for any free one",
                    kLoopback, port));
  }
}

std::string PreviewServer::address() const { return fmt::format("http://{}:{}/?token={}", kLoopback, mPort, mToken); }

void PreviewServer::run(const std::atomic<int>& stop) {
  std::thread http([this] { mServer.listen_after_bind(); });
  // The command's SignalWatcher takes SIGINT, SIGTERM and SIGHUP and only records them; this thread turns the record
  // into a stop within a few milliseconds.
  std::atomic<bool> served{false};
  std::thread watcher([&] {
    while (!stop.load() && !served) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    mRenderer.stop();
  });
  mRenderer.serve();
  served = true;
  mServer.stop();
  http.join();
  watcher.join();
}

void PreviewServer::route() {
  mServer.set_pre_routing_handler(
      [this](const httplib::Request& request, httplib::Response& response) { return admit(request, response); });
  mServer.set_error_handler([](const httplib::Request& request, httplib::Response& response) {
    if (response.body.empty()) sendText(response, response.status, fmt::format("nothing at {}", request.path));
  });
  mServer.Get("/", [](const httplib::Request&, httplib::Response& response) {
    response.set_content(PreviewPage::html(), "text/html; charset=utf-8");
  });
  mServer.Get("/params.json", [this](const httplib::Request&, httplib::Response& response) {
    response.set_content(paramsJson(), "application/json");
  });
  mServer.Get("/info.json", [this](const httplib::Request&, httplib::Response& response) {
    response.set_content(infoJson(), "application/json");
  });
  const std::pair<const char*, FrameRenderer::Picture> pictures[] = {{"/frame.png", FrameRenderer::Picture::Effect},
                                                                     {"/source.png", FrameRenderer::Picture::Source},
                                                                     {"/mask.png", FrameRenderer::Picture::Mask}};
  for (const auto& [path, picture] : pictures) {
    mServer.Get(path, [this, picture = picture](const httplib::Request& request, httplib::Response& response) {
      servePicture(picture, request, response);
    });
  }
}

// Before any route: the Host header must name this address (a rebound name is refused), and the token must match.
httplib::Server::HandlerResponse PreviewServer::admit(const httplib::Request& request,
                                                      httplib::Response& response) const {
  response.set_header("Cache-Control", "no-store");
  response.set_header("Referrer-Policy", "no-referrer");
  response.set_header("X-Content-Type-Options", "nosniff");
  response.set_header("Content-Security-Policy",
                      "default-src 'none'; img-src 'self' blob:; connect-src 'self'; style-src 'unsafe-inline'; "
                      "script-src 'unsafe-inline'; base-uri 'none'; form-action 'none'");
  const std::string host = request.get_header_value("Host");
  if (host != fmt::format("{}:{}", kLoopback, mPort)) {
    sendText(response, 403, fmt::format("this preview answers only to Host {}:{}, not '{}'", kLoopback, mPort, host));
    return httplib::Server::HandlerResponse::Handled;
  }
  if (!sameToken(request.get_param_value("token"), mToken)) {
    sendText(response, 403, "a missing or wrong token: open the address velmira preview printed, token included");
    return httplib::Server::HandlerResponse::Handled;
  }
  return httplib::Server::HandlerResponse::Unhandled;
}

void PreviewServer::servePicture(FrameRenderer::Picture picture, const httplib::Request& request,
                                 httplib::Response& response) {
  FrameRenderer::Request asked;
  try {
    asked = parseRequest(picture, request);
  } catch (const HostError& e) {
    sendText(response, 400, e.what());
    return;
  }
  FrameRenderer::Result result = mRenderer.request(std::move(asked));
  if (result.status != 200) {
    sendText(response, result.status, result.body);
    return;
  }
  response.set_header("X-Render-Milliseconds", fmt::format("{:.1f}", result.renderMilliseconds));
  response.set_header("X-Encode-Milliseconds", fmt::format("{:.1f}", result.encodeMilliseconds));
  response.set_content(std::move(result.body), "image/png");
}

// As `velmira render INPUT --frames N-N --FLAG VALUE...`: a slider left out takes its default, and a bad value is
// refused with the message render gives.
FrameRenderer::Request PreviewServer::parseRequest(FrameRenderer::Picture picture,
                                                   const httplib::Request& request) const {
  FrameRenderer::Request asked;
  asked.picture = picture;
  asked.frame = request.has_param("frame") ? parseFrame(request.get_param_value("frame")) : info().frames().first;
  const auto& sliders = mHost.sliders();
  for (const auto& slider : sliders) {
    const std::string flag = slider.flagName();
    asked.tracks.push_back(request.has_param(flag.c_str()) ? SliderFlag::track(slider, request.get_param_value(flag))
                                                           : ParamTrack::constant(slider.defaultValue));
  }
  for (const auto& [name, value] : request.params) {
    bool known = name == "token" || name == "frame" ||
                 std::any_of(sliders.begin(), sliders.end(), [&](const auto& s) { return s.flagName() == name; });
    if (!known) throw HostError::usage(fmt::format("'{}' is neither a slider's flag nor frame", name));
  }
  return asked;
}

// A frame number is read by the one rule --frames reads it by, as a range of one.
std::int64_t PreviewServer::parseFrame(const std::string& text) const {
  const FrameRange frames = info().frames();
  std::optional<FrameRange> asked;
  try {
    asked = FrameRange::parse(text);
  } catch (const std::invalid_argument&) {
  }
  if (!asked || asked->first != asked->last || !frames.contains(asked->first)) {
    throw HostError::usage(
        fmt::format("frame '{}' is not among the frames {}-{} of {}", text, frames.first, frames.last, info().path));
  }
  return asked->first;
}

// The sliders as the effect registered them, which the page turns into its controls.
std::string PreviewServer::paramsJson() const {
  nlohmann::json sliders = nlohmann::json::array();
  for (const auto& slider : mHost.sliders()) {
    sliders.push_back({{"name", slider.name},
                       {"flag", slider.flagName()},
                       {"default", slider.defaultValue},
                       {"min", std::max(slider.validMin, slider.sliderMin)},
                       {"max", std::min(slider.validMax, slider.sliderMax)},
                       {"validMin", slider.validMin},
                       {"validMax", slider.validMax},
                       {"decimals", slider.decimals()},
                       {"percent", slider.isPercent()},
                       {"units", slider.unitsText()}});
  }
  return sliders.dump();
}

std::string PreviewServer::infoJson() const {
  const MediaInfo& media = info();
  const FrameRange frames = media.frames();
  return nlohmann::json{{"input", media.path},
                        {"width", media.width},
                        {"height", media.height},
                        {"firstFrame", frames.first},
                        {"lastFrame", frames.last},
                        {"frameCount", media.frameCount},
                        {"rate", {{"num", media.frameRate.num}, {"den", media.frameRate.den}}},
                        {"still", media.kind == MediaKind::Image}}
      .dump();
}

}  // namespace Quillmere::Velmira
