#include "VelmiraRun.h"

#include <sys/wait.h>

#include <cstdlib>

#include "Support/MediaFiles.h"

namespace Quillmere::Velmira {

namespace {

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

}  // namespace

VelmiraRun VelmiraRun::run(const std::vector<std::string>& arguments, const std::string& folder) {
  std::string outPath = folder + "/.velmira-stdout", errPath = folder + "/.velmira-stderr";
  std::string command = "cd " + quoted(folder) + " && " + quoted(VELMIRA_COMMAND);
  for (const auto& argument : arguments) command += " " + quoted(argument);
  command += " >" + quoted(outPath) + " 2>" + quoted(errPath) + " </dev/null";
  int status = std::system(command.c_str());
  VelmiraRun run;
  run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  run.out = readFile(outPath);
  run.err = readFile(errPath);
  std::remove(outPath.c_str());
  std::remove(errPath.c_str());
  return run;
}

}  // namespace Quillmere::Velmira
