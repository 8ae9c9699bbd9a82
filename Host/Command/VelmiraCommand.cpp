#include "Command/VelmiraCommand.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <new>
#include <stdexcept>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include "Command/CrashReport.h"
#include "Command/JoinJob.h"
#include "Command/Locations.h"
#include "Command/PreviewServer.h"
#include "Command/RenderJob.h"
#include "Command/SignalWatcher.h"
#include "Command/SliderFlag.h"
#include "Command/SlurmSubmission.h"
#include "Core/EffectHost.h"
#include "Core/HostError.h"
#include "Media/MediaLog.h"
#include "VelmiraVersion.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

namespace {

constexpr const char* kRangeSliderName = "Skin Blur Range";

constexpr const char* kKeyframeHelp =
    "Slider flags take one VALUE, or keyframes VALUE@TIME[,VALUE@TIME...] with TIME in seconds (2.5 or 2.5s) or in "
    "frames (60f). Values between keys are interpolated linearly and held before the first and after the last.";

struct SliderFlags {
  std::vector<std::string> texts;
  std::vector<CLI::Option*> options;
};

std::string sliderHelp(const SliderDefinition& slider) {
  return fmt::format("{}: {}, default {} ({}; the slider shows {})", slider.name,
                     slider.formatRange(slider.validMin, slider.validMax), slider.formatValue(slider.defaultValue),
                     slider.unitsText(), slider.formatRange(slider.sliderMin, slider.sliderMax));
}

void addSliderFlag(CLI::App& verb, const SliderDefinition& slider, SliderFlags& flags, std::size_t i) {
  flags.options[i] =
      verb.add_option("--" + slider.flagName(), flags.texts[i], sliderHelp(slider))->type_name("VALUE|KEYS");
}

// The slider flags given, as a render on another machine takes them.
std::vector<std::string> sliderArguments(const EffectHost& host, const SliderFlags& flags) {
  std::vector<std::string> arguments;
  for (std::size_t i = 0; i < flags.options.size(); ++i)
    if (flags.options[i] && flags.options[i]->count())
      arguments.push_back(fmt::format("--{}={}", host.sliders()[i].flagName(), flags.texts[i]));
  return arguments;
}

// Keyframe texts become tracks; a bad one is a usage error that names the flag and slider.
void applySliderFlags(EffectHost& host, const SliderFlags& flags) {
  for (std::size_t i = 0; i < flags.options.size(); ++i) {
    if (!flags.options[i] || flags.options[i]->count() == 0) continue;
    host.setTrack(i, SliderFlag::track(host.sliders()[i], flags.texts[i]));
  }
}

std::size_t rangeSliderIndex(const EffectHost& host) {
  const auto& sliders = host.sliders();
  auto found = std::find_if(sliders.begin(), sliders.end(),
                            [](const SliderDefinition& s) { return s.name == kRangeSliderName; });
  if (found == sliders.end()) {
    throw HostError::failure(
        fmt::format("the plug-in registers no \"{}\" slider, so there is no skin mask to draw", kRangeSliderName));
  }
  return static_cast<std::size_t>(found - sliders.begin());
}

// The flags render and mask share.
void addOutputFlags(CLI::App& verb, RenderJob::Request& request) {
  verb.add_flag("-q,--quiet", request.quiet, "No progress bar and no messages but errors");
  verb.add_flag("--accept-damaged", request.acceptDamaged,
                "Render damaged input as decoded (concealed errors, missing frames skipped) and list its damaged "
                "frames on stderr, rather than fail");
}

std::string aboutText(EffectHost& host) {
  std::string text = host.about();
  std::replace(text.begin(), text.end(), '\r', '\n');  // the effect API's line break is the Mac's
  return text;
}

// With no input the bundled portrait is rendered into out/, with its before/after picture.
void fillDefaults(RenderJob::Request& request, const char* suffix) {
  bool sample = request.input.empty();
  if (sample) request.input = Locations::sample();
  if (request.output.empty()) {
    fs::path name = fs::path(request.input).filename();
    fs::path output = fs::path("out") / (name.stem().string() + suffix + name.extension().string());
    fs::create_directories(output.parent_path());
    request.output = output.string();
    if (sample && request.compare.empty() && std::string(suffix).empty()) {
      request.compare = (fs::path("out") / (name.stem().string() + "-compare.png")).string();
    }
  }
}

}  // namespace

void VelmiraCommand::refuseUnknownVerb(int argc, char** argv) {
  static const char* const kVerbs[] = {"about", "params", "render", "mask", "preview", "join", "submit"};
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--") return;
    if (arg == "--plugin") ++i;
    if (arg.rfind('-', 0) == 0) continue;
    if (std::find(std::begin(kVerbs), std::end(kVerbs), arg) != std::end(kVerbs)) return;
    throw HostError::usage(
        fmt::format("'{}' is no verb of velmira: about, params, render, mask, preview, join or submit", arg));
  }
}

std::string VelmiraCommand::pluginOption(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--") break;
    if (arg == "--plugin" && i + 1 < argc) return argv[i + 1];
    if (arg.rfind("--plugin=", 0) == 0) return arg.substr(9);
  }
  return {};
}

bool VelmiraCommand::verboseFlag(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--") break;
    if (arg == "-v" || arg == "--verbose") return true;
  }
  return false;
}

std::string VelmiraCommand::paramsTable(const EffectHost& host) {
  std::string table = fmt::format("{:<18}{:<20}{:<10}{:<18}{:<18}{}\n", "Slider", "Flag", "Default", "Valid range",
                                  "Slider range", "Units");
  for (const auto& slider : host.sliders()) {
    table += fmt::format("{:<18}{:<20}{:<10}{:<18}{:<18}{}\n", slider.name, "--" + slider.flagName(),
                         slider.formatValue(slider.defaultValue), slider.formatRange(slider.validMin, slider.validMax),
                         slider.formatRange(slider.sliderMin, slider.sliderMax), slider.unitsText());
  }
  return table;
}

int VelmiraCommand::run(int argc, char** argv) {
  CrashReport::install();
  // Before the plug-in and GL start threads of their own, which must inherit the blocked signals.
  SignalWatcher signals;
  try {
    return parseAndRun(argc, argv, signals.received());
  } catch (const HostError& e) {
    if (e.kind() == HostError::Kind::Interrupted) {
      std::fprintf(stderr, "velmira: interrupted by %s; an existing output is as it was\n",
                   SignalWatcher::nameOf(e.signal()).c_str());
      return kSignalBase + e.signal();
    }
    std::fprintf(stderr, "velmira: %s\n", e.what());
    if (e.kind() == HostError::Kind::Usage) {
      std::fprintf(stderr, "Run with --help for more information.\n");
      return kUsage;
    }
    return kFailure;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "velmira: out of memory; nothing was put in place\n");
    return kFailure;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "velmira: %s\n", e.what());
    return kFailure;
  }
}

int VelmiraCommand::parseAndRun(int argc, char** argv, const std::atomic<int>& stop) {
  // `velmira --version` is answered before the plug-in loads: the version is the command's own, and it is asked
  // for most where the plug-in or GL does not work. With other arguments CLI11 answers it after the load.
  const std::string version = fmt::format("velmira {}", Version::kText);
  if (argc == 2 && std::string(argv[1]) == "--version") {
    std::puts(version.c_str());
    return kSuccess;
  }
  refuseUnknownVerb(argc, argv);
  std::string pluginPath = pluginOption(argc, argv);
  if (pluginPath.empty()) pluginPath = Locations::defaultPlugin();
  EffectHost host(pluginPath, verboseFlag(argc, argv));

  CLI::App app{
      "velmira: retouches skin in images, image sequences and videos with the Velmira effect, "
      "loaded as an After Effects style plug-in"};
  app.footer(kKeyframeHelp);
  app.require_subcommand(1);
  app.set_version_flag("--version", version);
  app.fallthrough();
  app.add_option("--plugin", pluginPath, "The effect to load (default: " + Locations::defaultPlugin() + ")");
  bool verbose = false;
  app.add_flag("-v,--verbose", verbose,
               "Show the plug-in's own printing and FFmpeg's notes on stderr, not only their errors");

  CLI::App* about = app.add_subcommand("about", "Print the effect's About text");
  CLI::App* params = app.add_subcommand("params", "List the effect's sliders: flag, default, ranges and units");

  RenderJob::Request render;
  CLI::App* renderVerb =
      app.add_subcommand("render",
                         "Retouch an image, a numbered sequence (frame_%04d.png) or a video. With no INPUT the bundled "
                         "portrait goes to out/, with a before/after picture");
  renderVerb->footer(kKeyframeHelp);
  CLI::Option* renderInput = renderVerb->add_option("input", render.input, "Image, sequence pattern or video");
  renderVerb->add_option("-o,--output", render.output, "Output file; its extension decides the kind (default: out/)");
  renderVerb->add_option("--compare", render.compare, "Also write a before/after picture of one frame");
  std::int64_t compareFrame = 0;
  CLI::Option* compareFrameOption = renderVerb->add_option(
      "--compare-frame", compareFrame, "The frame of a video for --compare (default: the first rendered)");
  std::string framesText;
  CLI::Option* framesOption =
      renderVerb->add_option("--frames", framesText, "Render only frames A-B (from 0, both included)");
  addOutputFlags(*renderVerb, render);
  SliderFlags renderFlags{std::vector<std::string>(host.sliders().size()),
                          std::vector<CLI::Option*>(host.sliders().size(), nullptr)};
  for (std::size_t i = 0; i < host.sliders().size(); ++i) addSliderFlag(*renderVerb, host.sliders()[i], renderFlags, i);

  RenderJob::Request mask;
  CLI::App* maskVerb = app.add_subcommand(
      "mask", "Write the skin mask the effect would use: white where a pixel is blurred, black elsewhere");
  maskVerb->footer(kKeyframeHelp);
  CLI::Option* maskInput =
      maskVerb->add_option("input", mask.input, "Image, sequence pattern or video (default: the bundled portrait)");
  maskVerb->add_option("-o,--output", mask.output, "Output file")->required();
  std::string maskFramesText;
  CLI::Option* maskFramesOption = maskVerb->add_option("--frames", maskFramesText, "Only frames A-B");
  addOutputFlags(*maskVerb, mask);
  SliderFlags maskFlags{std::vector<std::string>(host.sliders().size()),
                        std::vector<CLI::Option*>(host.sliders().size(), nullptr)};
  std::size_t rangeSlider = rangeSliderIndex(host);
  addSliderFlag(*maskVerb, host.sliders()[rangeSlider], maskFlags, rangeSlider);

  std::string previewInput;
  int previewPort = 0;
  CLI::App* previewVerb = app.add_subcommand(
      "preview", "Tune the sliders by eye: serves a page on 127.0.0.1 that shows the frame as they move; Ctrl-C stops");
  CLI::Option* previewInputOption = previewVerb->add_option(
      "input", previewInput, "Image, sequence pattern or video (default: the bundled portrait)");
  previewVerb->add_option("--port", previewPort, "The port to serve on (default 0: any free one)")
      ->check(CLI::Range(0, 65535));

  JoinJob::Request join;
  CLI::App* joinVerb = app.add_subcommand(
      "join", "Put ranges rendered apart (render --frames) together as one output, without encoding again");
  joinVerb->add_option("--source", join.source, "The input the segments were rendered from")->required();
  joinVerb->add_option("-o,--output", join.output, "The joined video, or sequence pattern")->required();
  joinVerb->add_option("segments", join.segments, "The rendered ranges, in the order of their frames")->required();
  std::string joinFramesText;
  CLI::Option* joinFramesOption =
      joinVerb->add_option("--frames", joinFramesText, "The frames A-B the segments cover (default: all)");
  joinVerb->add_flag("-q,--quiet", join.quiet, "No messages but errors");

  SlurmSubmission::Request submit;
  CLI::App* submitVerb = app.add_subcommand(
      "submit", "Render on a Slurm cluster: chunks of frames as one job array, joined once every chunk succeeded");
  submitVerb->footer(kKeyframeHelp);
  submitVerb->add_option("input", submit.input, "Sequence pattern or video, on storage every node sees")->required();
  submitVerb->add_option("-o,--output", submit.output, "Output video or sequence pattern")->required();
  std::string submitFramesText;
  CLI::Option* submitFramesOption =
      submitVerb->add_option("--frames", submitFramesText, "Render only frames A-B (from 0, both included)");
  submitVerb->add_option("--chunk-frames", submit.chunkFrames, "Frames a chunk (default 100)");
  submitVerb->add_option("--parts", submit.parts,
                         "Folder for the segments and logs, seen by every node (default: OUTPUT.parts beside OUTPUT)");
  submitVerb->add_option("--sbatch-arg", submit.sbatchArguments,
                         "An option for sbatch, e.g. --sbatch-arg=--partition=gpu (again for more)");
  submitVerb->add_flag("--wait", submit.wait, "Follow the jobs; exit 0 only once the join has completed");
  submitVerb->add_flag("-q,--quiet", submit.quiet, "No progress line and no messages but errors");
  SliderFlags submitFlags{std::vector<std::string>(host.sliders().size()),
                          std::vector<CLI::Option*>(host.sliders().size(), nullptr)};
  for (std::size_t i = 0; i < host.sliders().size(); ++i) addSliderFlag(*submitVerb, host.sliders()[i], submitFlags, i);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    int code = app.exit(e);
    return code == 0 ? kSuccess : kUsage;
  }

  MediaLog::setVerbose(verbose);
  if ((renderInput->count() && render.input.empty()) || (maskInput->count() && mask.input.empty()) ||
      (previewInputOption->count() && previewInput.empty())) {
    throw HostError::usage("the INPUT given is empty");
  }

  auto frames = [](CLI::Option* option, const std::string& text) {
    if (option->count() == 0) return FrameRange{};
    try {
      return FrameRange::parse(text);
    } catch (const std::invalid_argument& e) {
      throw HostError::usage(fmt::format("--frames: {}", e.what()));
    }
  };

  if (*about) {
    std::printf("%s\n", aboutText(host).c_str());
  } else if (*params) {
    std::fputs(paramsTable(host).c_str(), stdout);
  } else if (*renderVerb) {
    applySliderFlags(host, renderFlags);
    render.frames = frames(framesOption, framesText);
    if (compareFrameOption->count()) render.compareFrame = compareFrame;
    fillDefaults(render, "");
    RenderJob(host, render, stop).render();
  } else if (*maskVerb) {
    applySliderFlags(host, maskFlags);
    mask.frames = frames(maskFramesOption, maskFramesText);
    fillDefaults(mask, "-mask");
    RenderJob(host, mask, stop).mask(rangeSlider);
  } else if (*joinVerb) {
    join.frames = frames(joinFramesOption, joinFramesText);
    JoinJob(join).run();
  } else if (*submitVerb) {
    applySliderFlags(host, submitFlags);  // a bad flag is refused here, not by every chunk
    submit.frames = frames(submitFramesOption, submitFramesText);
    submit.sliderArguments = sliderArguments(host, submitFlags);
    if (!VelmiraCommand::pluginOption(argc, argv).empty()) submit.plugin = pluginPath;
    SlurmSubmission(submit).run(stop);
  } else if (*previewVerb) {
    PreviewServer server(host, previewInput.empty() ? Locations::sample() : previewInput, rangeSlider);
    server.bind(previewPort);
    std::printf("%s\n", server.address().c_str());
    std::fflush(stdout);
    std::fprintf(stderr, "velmira: open the address above in a browser; Ctrl-C stops the preview\n");
    server.run(stop);
  }
  return kSuccess;
}

}  // namespace Quillmere::Velmira
