#pragma once

#include <atomic>

#include <cstddef>
#include <string>

#include <httplib.h>

#include "Command/FrameRenderer.h"
#include "Core/EffectHost.h"

namespace Quillmere::Velmira {

// `velmira preview`: the page and the pictures it shows, served over HTTP on 127.0.0.1 alone. Every request carries
// the run's random token and names this address in its Host header, so that neither another user of the machine nor a
// web page that rebinds a name of its own to 127.0.0.1 can read the footage. HTTP runs on the server's threads; the
// pictures are made by a FrameRenderer on the thread that made the host.
class PreviewServer {
public:
  // Opens the input; `rangeSlider` is the position of "Skin Blur Range" among the host's sliders.
  PreviewServer(EffectHost& host, const std::string& input, std::size_t rangeSlider);

  // Takes the port (0: a free one). Throws a HostError when it is in use or not allowed.
  void bind(int port);
  // The page's address, token included.
  std::string address() const;
  // Serves until `stop` holds a signal (SignalWatcher), then finishes the requests in flight and returns.
  void run(const std::atomic<int>& stop);

private:
  void route();
  httplib::Server::HandlerResponse admit(const httplib::Request& request, httplib::Response& response) const;
  void servePicture(FrameRenderer::Picture picture, const httplib::Request& request, httplib::Response& response);
  FrameRenderer::Request parseRequest(FrameRenderer::Picture picture, const httplib::Request& request) const;
  std::int64_t parseFrame(const std::string& text) const;
  std::string paramsJson() const;
  std::string infoJson() const;
  const MediaInfo& info() const { return mRenderer.info(); }

  EffectHost& mHost;
  FrameRenderer mRenderer;
  std::string mToken;
  int mPort = 0;
  httplib::Server mServer;
};

}  // namespace Quillmere::Velmira
