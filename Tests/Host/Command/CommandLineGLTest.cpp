#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "Core/EffectHost.h"
#include "Support/MediaFixtures.h"
#include "VelmiraRun.h"

namespace Quillmere::Velmira {
namespace {

namespace fs = std::filesystem;

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(VelmiraCommandLine, EveryVerbAnswersHelp) {
  MediaFixtures fixtures;
  const std::vector<std::vector<std::string>> invocations = {
      {"--help"}, {"about", "--help"}, {"params", "--help"}, {"render", "--help"}, {"mask", "--help"}};
  for (const auto& arguments : invocations) {
    VelmiraRun run = VelmiraRun::run(arguments, fixtures.folder());
    std::string shown = arguments.size() > 1 ? arguments[0] + " --help" : "--help";
    EXPECT_EQ(run.exitCode, 0) << shown << ": " << run.err;
    EXPECT_TRUE(contains(run.out, "Usage:")) << shown << " printed: " << run.out;
  }
  // The slider flags of render come from the plug-in, with their ranges in the help.
  VelmiraRun render = VelmiraRun::run({"render", "--help"}, fixtures.folder());
  EXPECT_TRUE(contains(render.out, "--skin-blur-range")) << render.out;
  EXPECT_TRUE(contains(render.out, "Skin Blur: 0 to 30, default 9")) << render.out;
}

// Columns are set apart by two blanks or more; a single blank belongs to the text.
std::vector<std::string> columnsOf(const std::string& line) {
  std::vector<std::string> columns;
  std::string::size_type at = 0;
  while (at < line.size()) {
    auto gap = line.find("  ", at);
    if (gap == std::string::npos) gap = line.size();
    if (gap > at) columns.push_back(line.substr(at, gap - at));
    at = line.find_first_not_of(' ', gap);
    if (at == std::string::npos) break;
  }
  return columns;
}

std::string fixed(double value, int decimals, bool percent) {
  std::ostringstream text;
  text.setf(std::ios::fixed);
  text.precision(decimals);
  text << value;
  return text.str() + (percent ? " %" : "");
}

// The table is checked against the records the plug-in hands to add_param in this very
// process, field by field, so it cannot drift from what the effect registers.
TEST(VelmiraCommandLine, ParamsListsExactlyTheSlidersThePluginRegisters) {
  MediaFixtures fixtures;
  VelmiraRun run = VelmiraRun::run({"params"}, fixtures.folder());
  ASSERT_EQ(run.exitCode, 0) << run.err;
  std::istringstream lines(run.out);
  std::string line;
  std::getline(lines, line);  // the heading
  EffectHost host(VELMIRA_PLUGIN);
  ASSERT_EQ(host.sliders().size(), 5u);
  for (const SliderDefinition& slider : host.sliders()) {
    ASSERT_TRUE(std::getline(lines, line)) << "no row for " << slider.name;
    const PF_FloatSliderDef& def = slider.def.u.fs_d;
    bool percent = def.display_flags & PF_ValueDisplayFlag_PERCENT;
    std::vector<std::string> columns = columnsOf(line);
    ASSERT_EQ(columns.size(), 6u) << line;
    EXPECT_EQ(columns[0], slider.def.name);
    EXPECT_EQ(columns[1], "--" + slider.flagName());
    EXPECT_EQ(columns[2], fixed(def.value, def.precision, percent)) << slider.name << " default";
    EXPECT_EQ(columns[3],
              fixed(def.valid_min, def.precision, false) + " to " + fixed(def.valid_max, def.precision, percent))
        << slider.name << " valid range";
    EXPECT_EQ(columns[4],
              fixed(def.slider_min, def.precision, false) + " to " + fixed(def.slider_max, def.precision, percent))
        << slider.name << " slider range";
    EXPECT_EQ(contains(columns[5], "percent"), percent) << slider.name << " units: " << columns[5];
  }
  EXPECT_FALSE(std::getline(lines, line)) << "a row for no registered slider: " << line;
}

TEST(VelmiraCommandLine, AboutPrintsTheEffectsTextWithItsBreakAsANewLine) {
  MediaFixtures fixtures;
  VelmiraRun run = VelmiraRun::run({"about"}, fixtures.folder());
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out, "Velmira v1.0\nVelmira\n");
}

// A copy of the plug-in whose property list has one line changed.
std::string pluginWithList(const MediaFixtures& fixtures, const std::string& name, const std::string& from,
                           const std::string& to) {
  fs::path folder = fs::path(fixtures.folder()) / name;
  fs::create_directories(folder);
  fs::copy_file(VELMIRA_PLUGIN, folder / "Velmira.so");
  std::string list = readFile(fs::path(VELMIRA_PLUGIN).replace_extension(".pipl").string());
  if (!from.empty()) {
    auto at = list.find(from);
    EXPECT_NE(at, std::string::npos) << "the property list has no line " << from;
    list.replace(at, from.size(), to);
  }
  if (name != "missing") writeFile((folder / "Velmira.pipl").string(), list);
  return (folder / "Velmira.so").string();
}

TEST(VelmiraCommandLine, PluginThatDisagreesWithItsPropertyListIsRefused) {
  MediaFixtures fixtures;
  struct Case {
    const char* name;
    const char* from;
    const char* to;
    const char* messagePart;
  } cases[] = {
      {"version", "Version = 0x80001", "Version = 0x80002",
       "the list declares version 0x80002, flags 0x0 and 0x400, but global setup declared version 0x80001"},
      {"flags", "OutFlags = 0", "OutFlags = 0x2000000", "flags 0x2000000 and 0x400"},
      {"flags2", "OutFlags2 = 0x400", "OutFlags2 = 0x1400", "flags 0x0 and 0x1400"},
      {"entry", "EntryPoint = EntryPointFunc", "EntryPoint = PluginMain", "has no entry 'PluginMain'"},
      {"nokey", "MatchName = Quillmere Velmira", "", "has no 'MatchName'"},
      {"missing", "", "", "cannot read the plug-in's property list"},
  };
  for (const auto& c : cases) {
    std::string plugin = pluginWithList(fixtures, c.name, c.from, c.to);
    VelmiraRun run = VelmiraRun::run({"--plugin", plugin, "about"}, fixtures.folder());
    EXPECT_EQ(run.exitCode, 1) << c.name << ": " << run.err;
    EXPECT_TRUE(contains(run.err, c.messagePart)) << c.name << " said: " << run.err;
    EXPECT_TRUE(run.out.empty()) << c.name << " printed " << run.out;
  }
}

TEST(VelmiraCommandLine, UsageErrorsExitWithTwoAndSayWhatIsWrong) {
  MediaFixtures fixtures;
  std::string picture = fixtures.makePicture({});
  struct Case {
    std::vector<std::string> arguments;
    const char* messagePart;
  } cases[] = {
      {{"render", picture, "-o", "a.png", "--skin-whiten", "120"},
       "--skin-whiten: Skin Whiten: 120 is outside its valid range 0 to 100 %"},
      {{"render", picture, "-o", "a.png", "--skin-blur", "0@0,31@1"},
       "Skin Blur: 31 is outside its valid range 0 to 30"},
      {{"render", picture, "-o", "a.png", "--skin-redden", "5@x"}, "--skin-redden 5@x: 'x' is not a number"},
      {{"render", picture, "-o", "a.png", "--frames", "9-3"}, "--frames: frame range '9-3' ends before it starts"},
      {{"render", picture, "-o", "a.png", "--bogus"}, "--bogus"},
      {{"render", picture, "-o", picture}, "is the input; velmira never writes over its input"},
      {{"mask", picture}, "--output is required"},
      {{"mask", picture, "-o", "m.png", "--skin-whiten", "5"}, "--skin-whiten"},
      {{"paint"}, "subcommand"},
  };
  for (const auto& c : cases) {
    VelmiraRun run = VelmiraRun::run(c.arguments, fixtures.folder());
    EXPECT_EQ(run.exitCode, 2) << c.arguments.back() << ": " << run.err;
    EXPECT_TRUE(contains(run.err, c.messagePart)) << c.arguments.back() << " said: " << run.err;
  }
  EXPECT_FALSE(fs::exists(fs::path(fixtures.folder()) / "a.png")) << "a refused render wrote its output";
}

}  // namespace
}  // namespace Quillmere::Velmira
