#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "Support/MediaFiles.h"

namespace Quillmere::Velmira {

// One run of the built velmira command, as a person types it: arguments quoted for the shell, `folder` the working
// directory, nothing on standard input; with `seconds`, killed after that long (exit code 124).
struct VelmiraRun {
  int exitCode = -1;
  std::string out;
  std::string err;

  static VelmiraRun run(const std::vector<std::string>& arguments, const std::string& folder, int seconds = 0) {
    auto quoted = [](const std::string& text) {
      std::string result = "'";
      for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
      return result + "'";
    };
    const std::string outPath = folder + "/.velmira-stdout", errPath = folder + "/.velmira-stderr";
    std::string command = "cd " + quoted(folder) + " && " +
                          (seconds ? "timeout -k 5 " + std::to_string(seconds) + " " : "") + quoted(VELMIRA_COMMAND);
    for (const auto& argument : arguments) command += " " + quoted(argument);
    const int status =
        std::system((command + " >" + quoted(outPath) + " 2>" + quoted(errPath) + " </dev/null").c_str());
    VelmiraRun run{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), readFile(outPath),
                   readFile(errPath)};
    std::remove(outPath.c_str());
    std::remove(errPath.c_str());
    return run;
  }

  // Starts the command in `folder` without waiting for it, standard error to `errPath`; its process id. A limit on
  // its address space, in bytes, as `ulimit -v` sets, where not 0.
  static pid_t start(const std::vector<std::string>& arguments, const std::string& folder, const std::string& errPath,
                     rlim_t addressSpace = 0) {
    std::vector<char*> argv{const_cast<char*>(VELMIRA_COMMAND)};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
      const int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), none = open("/dev/null", O_RDWR);
      dup2(none, 0);
      dup2(none, 1);
      dup2(err, 2);
      const rlimit limit{addressSpace, addressSpace};
      if (addressSpace) setrlimit(RLIMIT_AS, &limit);
      if (chdir(folder.c_str()) == 0) execv(argv[0], argv.data());
      _exit(127);
    }
    return pid;
  }
};

}  // namespace Quillmere::Velmira
