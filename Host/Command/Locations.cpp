#include "Command/Locations.h"

#include <filesystem>
#include <system_error>

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

std::string Locations::executableDirectory() {
  std::error_code error;
  fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? std::string(".") : self.parent_path().string();
}

std::string Locations::defaultPlugin() {
  return (fs::path(executableDirectory()) / ".." / "plugins" / "Velmira.so").lexically_normal().string();
}

std::string Locations::sample() {
  fs::path installed =
      (fs::path(executableDirectory()) / ".." / "share" / "velmira" / "samples" / "astronaut.png").lexically_normal();
  std::error_code error;
  if (fs::exists(installed, error)) return installed.string();
  return (fs::path(VELMIRA_SOURCE_DIR) / "samples" / "astronaut.png").string();
}

}  // namespace Quillmere::Velmira
