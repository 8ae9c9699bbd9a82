#include "VelmiraRun.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "Media/MediaReader.h"

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

std::vector<ArgbFrame> readFrames(const std::string& path, MediaInfo* info) {
  MediaReader reader(path);
  if (info) *info = reader.info();
  std::vector<ArgbFrame> frames;
  ArgbFrame frame;
  while (reader.read(frame)) frames.push_back(frame);
  return frames;
}

const std::uint8_t* pixelAt(const ArgbFrame& frame, int x, int y) { return frame.row(y) + x * 4; }

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

void writeFile(const std::string& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

}  // namespace Quillmere::Velmira
