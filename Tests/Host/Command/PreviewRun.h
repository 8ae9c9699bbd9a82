#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include <httplib.h>

namespace Quillmere::Velmira {

// A `velmira preview` running in the background, started in `folder`, with the port and token of the address it
// printed first. The server goes when the object does: Ctrl-C (SIGINT) to its PID, as a person stops it.
class PreviewRun {
public:
  PreviewRun(const std::vector<std::string>& arguments, const std::string& folder) {
    int out[2];
    if (pipe(out) != 0) return;
    mPid = fork();
    if (mPid == 0) {
      dup2(out[1], STDOUT_FILENO);
      close(out[0]);
      if (chdir(folder.c_str()) != 0) _exit(127);
      std::vector<char*> argv{const_cast<char*>(VELMIRA_COMMAND), const_cast<char*>("preview")};
      for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
      argv.push_back(nullptr);
      execv(VELMIRA_COMMAND, argv.data());
      _exit(127);
    }
    close(out[1]);
    mOutput = fdopen(out[0], "r");
    char line[256] = {};
    if (mOutput && std::fgets(line, sizeof line, mOutput)) address = line;
    if (auto colon = address.rfind(':'), slash = address.find('/', colon); slash != std::string::npos) {
      port = std::stoi(address.substr(colon + 1, slash - colon - 1));
      token = address.substr(address.find("token=") + 6);
      token.erase(token.find_last_not_of('\n') + 1);
    }
  }
  ~PreviewRun() { stop(); }
  PreviewRun(const PreviewRun&) = delete;
  PreviewRun& operator=(const PreviewRun&) = delete;

  // SIGINT, then the exit code (128 + the signal when a signal ended it).
  int stop() {
    if (mPid > 0) {
      kill(mPid, SIGINT);
      int status = 0;
      waitpid(mPid, &status, 0);
      mExitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
      mPid = -1;
    }
    if (mOutput) std::fclose(mOutput);
    mOutput = nullptr;
    return mExitCode;
  }

  httplib::Result get(const std::string& target, const std::string& host = "") const {
    httplib::Client client("127.0.0.1", port);
    client.set_read_timeout(300);
    httplib::Headers headers;
    if (!host.empty()) headers.emplace("Host", host);
    return client.Get(target.c_str(), headers);
  }

  std::string address;  // empty when the command printed none
  int port = 0;
  std::string token;

private:
  pid_t mPid = -1;
  std::FILE* mOutput = nullptr;
  int mExitCode = -1;
};

}  // namespace Quillmere::Velmira
