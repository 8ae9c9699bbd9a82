#pragma once

#include <sys/wait.h>

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
};

}  // namespace Quillmere::Velmira
