#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <set>
#include <string>

namespace Quillmere::Velmira {
namespace {

// Names the linker defines in every shared object; they are not the plug-in's.
const std::set<std::string> kLinkerNames = {"_init", "_fini", "_edata", "_end", "__bss_start"};

std::set<std::string> definedDynamicSymbols(const std::string& file) {
  const std::string command = "nm -D --defined-only --format=just-symbols '" + file + "'";
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
  std::set<std::string> names;
  for (char name[4096]; pipe && std::fscanf(pipe.get(), "%4095s", name) == 1;) {
    if (kLinkerNames.count(name) == 0) names.insert(name);
  }
  return names;
}

TEST(PluginExport, OnlyTheEntryLeavesTheLibrary) {
  EXPECT_EQ(definedDynamicSymbols(VELMIRA_PLUGIN_FILE), std::set<std::string>{"EntryPointFunc"});
}

}  // namespace
}  // namespace Quillmere::Velmira
