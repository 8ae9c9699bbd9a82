#pragma once

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

extern "C" {
#include <libavutil/base64.h>
}

namespace Quillmere::Velmira {

// Debian's Chromium, headless, driven through its DevTools protocol over --remote-debugging-pipe: the browser reads
// commands from its descriptor 3 and writes answers to 4, each a JSON text ended by a NUL. One page, opened at `url`.
class BrowserSession {
public:
  BrowserSession(const std::string& url, const std::string& profileFolder) {
    int toBrowser[2], fromBrowser[2];
    if (pipe(toBrowser) != 0 || pipe(fromBrowser) != 0) throw std::runtime_error("no pipes");
    mPid = fork();
    if (mPid == 0) {
      dup2(toBrowser[0], 3);
      dup2(fromBrowser[1], 4);
      const std::string profile = "--user-data-dir=" + profileFolder;
      std::freopen((profileFolder + ".log").c_str(), "w", stderr);
      // As root Chromium needs --no-sandbox; its D-Bus complaints on stderr are noise.
      execl("/usr/bin/chromium", "chromium", "--headless", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu",
            "--remote-debugging-pipe", "--window-size=1280,800", "--hide-scrollbars", profile.c_str(), "about:blank",
            static_cast<char*>(nullptr));
      _exit(127);
    }
    close(toBrowser[0]);
    close(fromBrowser[1]);
    mWrite = toBrowser[1];
    mRead = fromBrowser[0];
    const std::string target = call("Target.createTarget", {{"url", url}})["targetId"];
    mSession = call("Target.attachToTarget", {{"targetId", target}, {"flatten", true}})["sessionId"];
  }
  ~BrowserSession() {
    close(mWrite);
    close(mRead);
    kill(mPid, SIGTERM);
    waitpid(mPid, nullptr, 0);
  }
  BrowserSession(const BrowserSession&) = delete;
  BrowserSession& operator=(const BrowserSession&) = delete;

  // The value of a script run in the page, promises awaited; a script that throws throws here.
  nlohmann::json evaluate(const std::string& script) {
    nlohmann::json result =
        call("Runtime.evaluate", {{"expression", script}, {"awaitPromise", true}, {"returnByValue", true}});
    if (result.contains("exceptionDetails")) throw std::runtime_error("in the page: " + result.dump());
    return result["result"].value("value", nlohmann::json());
  }

  // Asks again until the script gives true, as a page still loading may not yet know what it names.
  void waitUntil(const std::string& script) {
    for (int tries = 0; tries < 1200; ++tries, usleep(50000)) {
      try {
        if (evaluate(script) == true) return;
      } catch (const std::runtime_error&) {
      }
    }
    throw std::runtime_error("the page never came to " + script);
  }

  std::string screenshot() { return base64(call("Page.captureScreenshot", {{"format", "png"}})["data"]); }

  static std::string base64(const std::string& text) {
    std::string bytes(text.size(), '\0');
    int size =
        av_base64_decode(reinterpret_cast<std::uint8_t*>(bytes.data()), text.c_str(), static_cast<int>(text.size()));
    bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
  }

private:
  nlohmann::json call(const std::string& method, const nlohmann::json& params) {
    nlohmann::json message{{"id", ++mLastId}, {"method", method}, {"params", params}};
    if (!mSession.empty()) message["sessionId"] = mSession;
    const std::string text = message.dump() + '\0';
    if (write(mWrite, text.data(), text.size()) != static_cast<ssize_t>(text.size())) throw std::runtime_error("write");
    for (;;) {  // events come between the answers; they are skipped
      nlohmann::json answer = nlohmann::json::parse(nextMessage());
      if (answer.value("id", 0) != mLastId) continue;
      if (answer.contains("error")) throw std::runtime_error(method + ": " + answer["error"].dump());
      return answer["result"];
    }
  }

  std::string nextMessage() {
    for (;;) {
      if (auto end = mBuffer.find('\0'); end != std::string::npos) {
        std::string message = mBuffer.substr(0, end);
        mBuffer.erase(0, end + 1);
        return message;
      }
      pollfd wait{mRead, POLLIN, 0};
      char chunk[65536];
      ssize_t got = poll(&wait, 1, 120000) == 1 ? read(mRead, chunk, sizeof chunk) : -1;
      if (got <= 0) throw std::runtime_error("the browser did not answer");
      mBuffer.append(chunk, static_cast<std::size_t>(got));
    }
  }

  pid_t mPid = -1;
  int mWrite = -1, mRead = -1;
  int mLastId = 0;
  std::string mSession, mBuffer;
};

}  // namespace Quillmere::Velmira
