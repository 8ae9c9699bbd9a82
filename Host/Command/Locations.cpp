#include "Command/Locations.h"

#include <filesystem>
#include <system_error>

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

std::string Locations::executable() {
  std::error_code error;
  fs::path self = fs::read_symlink("/proc/self/exe", error);
  return error ? std::string("velmira") : self.string();
}

std::string Locations::executableDirectory() {
  fs::path self = executable();
  return self.has_parent_path() ? self.parent_path().string() : std::string(".");
}

std::string Locations::defaultPlugin() {
  return (fs::path(executableDirectory()) / VELMIRA_PLUGIN_FOLDER / "Velmira.so").lexically_normal().string();
}

std::string Locations::sample() {
  return (fs::path(executableDirectory()) / VELMIRA_SAMPLE_FOLDER / "astronaut.png").lexically_normal().string();
}

}  // namespace Quillmere::Velmira
