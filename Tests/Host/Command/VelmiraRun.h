#pragma once

#include <string>
#include <vector>

namespace Quillmere::Velmira {

// One run of the built velmira command, as a person types it.
struct VelmiraRun {
  int exitCode = -1;
  std::string out;
  std::string err;

  // Arguments are quoted for the shell; `folder` is the working directory.
  static VelmiraRun run(const std::vector<std::string>& arguments, const std::string& folder);
};

}  // namespace Quillmere::Velmira
