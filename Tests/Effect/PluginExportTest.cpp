#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace Quillmere::Velmira {
namespace {

// Names the linker defines in every shared object; they are not the plug-in's.
const std::set<std::string> kLinkerNames = {"_init", "_fini", "_edata", "_end", "__bss_start"};

std::set<std::string> definedDynamicSymbols(const std::string& file) {
  const std::string command = "nm -D --defined-only '" + file + "'";
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
  std::set<std::string> names;
  if (!pipe) return names;
  char line[4096];
  while (std::fgets(line, sizeof line, pipe.get()) != nullptr) {
    std::istringstream fields(line);
    std::string address, type, name;
    if (fields >> address >> type >> name && kLinkerNames.count(name) == 0) names.insert(name);
  }
  return names;
}

TEST(PluginExport, OnlyTheEntryLeavesTheLibrary) {
  EXPECT_EQ(definedDynamicSymbols(VELMIRA_PLUGIN_FILE), std::set<std::string>{"EntryPointFunc"});
}

}  // namespace
}  // namespace Quillmere::Velmira
