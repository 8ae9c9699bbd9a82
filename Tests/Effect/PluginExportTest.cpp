#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include "HostDouble.h"

namespace Quillmere::Velmira {
namespace {

// Names the linker defines in every shared object; they are not the plug-in's.
const std::set<std::string> kLinkerNames = {"_init", "_fini", "_edata", "_end", "__bss_start"};

std::set<std::string> definedDynamicSymbols(const std::string& file) {
  const std::string command = "nm -D --defined-only '" + file + "'";
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
  std::set<std::string> names;
  if (!pipe) {
    return names;
  }
  char line[4096];
  while (std::fgets(line, sizeof line, pipe.get()) != nullptr) {
    std::istringstream fields(line);
    std::string address, type, name;
    if (fields >> address >> type >> name && kLinkerNames.count(name) == 0) {
      names.insert(name);
    }
  }
  return names;
}

TEST(PluginExport, OnlyTheEntryLeavesTheLibrary) {
  EXPECT_EQ(definedDynamicSymbols(VELMIRA_PLUGIN_FILE), std::set<std::string>{"EntryPointFunc"});
}

// Loaded as a host loads it, the entry found by name answers a command. The effect makes
// its renderer at load and gives it back only at global setdown, so, as in the host, the
// library stays mapped after dlclose rather than stranding that object.
TEST(PluginExport, LoadsAndAnswersThroughTheNamedEntry) {
  void* library = dlopen(VELMIRA_PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  ASSERT_NE(library, nullptr) << dlerror();
  auto entry = reinterpret_cast<PF_EntryPointFunc>(dlsym(library, "EntryPointFunc"));
  ASSERT_NE(entry, nullptr) << dlerror();

  HostDouble host;
  EXPECT_EQ(host.send(entry, PF_Cmd_ABOUT), PF_Err_NONE);
  EXPECT_STREQ(host.outData()->return_msg, "Velmira v1.0\rVelmira");
  dlclose(library);
}

}  // namespace
}  // namespace Quillmere::Velmira
