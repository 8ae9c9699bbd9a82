#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Velmira {

class EffectHost;

// The `velmira` command line. Parsing has two stages: the plug-in is loaded first, because
// the slider flags, their help and their validation come from the sliders it registers;
// then the command line is parsed against them.
class VelmiraCommand {
public:
  // A render stopped by signal N exits 128 + N, as shells report a program the signal ended.
  enum ExitCode { kSuccess = 0, kFailure = 1, kUsage = 2, kSignalBase = 128 };

  int run(int argc, char** argv);

  // The value of --plugin and whether --verbose is given, looked for before the full parse,
  // since both act while the plug-in loads.
  static std::string pluginOption(int argc, char** argv);
  // A first word that is no verb is a usage error, also before --help: `velmira frobnicate --help` is a typo.
  static void refuseUnknownVerb(int argc, char** argv);
  static bool verboseFlag(int argc, char** argv);
  // The `velmira params` table for a host's sliders.
  static std::string paramsTable(const EffectHost& host);

private:
  int parseAndRun(int argc, char** argv, const std::atomic<int>& stop);
};

}  // namespace Quillmere::Velmira
