#include "Command/SlurmSubmission.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include <fmt/format.h>

#include "Command/Locations.h"
#include "Command/OverwriteCheck.h"
#include "Core/HostError.h"
#include "Media/FrameTimeline.h"
#include "Media/MediaPath.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"

namespace Quillmere::Velmira {

namespace {

namespace fs = std::filesystem;

// Slurm keeps a finished job's state for some minutes (MinJobAge); a look every second follows a job well within it.
constexpr auto kPollInterval = std::chrono::seconds(1);

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

std::string commandLine(const std::vector<std::string>& arguments) {
  std::string line;
  for (const std::string& argument : arguments) line += (line.empty() ? "" : " ") + quoted(argument);
  return line;
}

// Runs one of Slurm's commands and returns what it printed; one that fails is a failure of the submission.
std::string slurm(const std::vector<std::string>& arguments) {
  std::FILE* pipe = ::popen((commandLine(arguments) + " 2>&1 </dev/null").c_str(), "r");
  if (!pipe) throw HostError::failure(fmt::format("{} cannot be started", arguments.front()));
  std::string output;
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, n);
  const int status = ::pclose(pipe);
  if (status != 0) {
    throw HostError::failure(
        fmt::format("{} failed (is Slurm installed and its controller running?): {}", arguments.front(), output));
  }
  return output;
}

// sbatch --parsable prints "<job id>[;<cluster>]".
std::string jobId(const std::string& printed) {
  std::string id = printed.substr(0, printed.find_first_of(";\n"));
  if (id.empty() || id.find_first_not_of("0123456789") != std::string::npos)
    throw HostError::failure("sbatch printed no job id: " + printed);
  return id;
}

// The chunks as sbatch's --array takes them, runs of numbers joined: "0-3,7".
std::string arrayIndexes(const std::vector<ChunkPlan::Chunk>& chunks) {
  std::string text;
  for (std::size_t i = 0; i < chunks.size(); ++i) {
    std::size_t end = i;
    while (end + 1 < chunks.size() && chunks[end + 1].number == chunks[end].number + 1) ++end;
    text += fmt::format("{}{}", text.empty() ? "" : ",", chunks[i].number);
    if (end > i) text += fmt::format("-{}", chunks[end].number);
    i = end;
  }
  return text;
}

// The state of every task of a job ("COMPLETED", "FAILED", ...), by array task; a job that is no array is task -1,
// and tasks still pending together ("ArrayTaskId=2-3") are left out. Without an accounting daemon scontrol is
// where states are found.
std::map<int, std::string> jobStates(const std::string& job) {
  std::map<int, std::string> states;
  std::istringstream lines(slurm({"scontrol", "-o", "show", "job", job}));
  auto field = [](const std::string& line, const std::string& name) {
    std::size_t at = line.find(" " + name + "=");
    if (at == std::string::npos) at = line.rfind(name + "=", 0) == 0 ? 0 : std::string::npos;
    if (at == std::string::npos) return std::string();
    at = line.find('=', at) + 1;
    return line.substr(at, line.find(' ', at) - at);
  };
  for (std::string line; std::getline(lines, line);) {
    const std::string task = field(line, "ArrayTaskId");
    if (!task.empty() && task.find_first_not_of("0123456789") != std::string::npos) continue;
    states[task.empty() ? -1 : std::stoi(task)] = field(line, "JobState");
  }
  return states;
}

bool ended(const std::string& state) {
  return state != "PENDING" && state != "RUNNING" && state != "CONFIGURING" && state != "COMPLETING" &&
         state != "SUSPENDED" && state != "REQUEUED";
}

// What went wrong, as the failed render's last words say it.
std::string lastLine(const std::string& log) {
  std::ifstream in(log);
  std::string line, last;
  while (std::getline(in, line))
    if (!line.empty()) last = line;
  return last;
}

}  // namespace

SlurmSubmission::SlurmSubmission(Request request) : mRequest(std::move(request)) {
  for (std::string* path : {&mRequest.input, &mRequest.output}) *path = fs::absolute(*path).lexically_normal();
  if (mRequest.parts.empty()) {
    // A pattern's '%' would be read by sbatch in the log names.
    std::string name = fs::path(mRequest.output).filename().string() + ".parts";
    for (char& c : name) c = c == '%' ? '#' : c;
    mRequest.parts = (fs::path(mRequest.output).parent_path() / name).string();
  }
  mRequest.parts = fs::absolute(mRequest.parts).lexically_normal();
}

void SlurmSubmission::say(const std::string& message) const {
  if (!mRequest.quiet) std::fprintf(stderr, "velmira: %s\n", message.c_str());
}

// The chunks are rendered and joined into a video or a sequence; a single picture is one frame, nothing to share.
void SlurmSubmission::refuseUsageErrors() const {
  if (mRequest.chunkFrames < 1) throw HostError::usage("--chunk-frames: a chunk holds at least one frame");
  if (MediaPath::kindOf(mRequest.output) == MediaKind::Image) {
    throw HostError::usage(
        fmt::format("{}: a farm renders into a video or a numbered sequence (frame_%04d.png)", mRequest.output));
  }
  const std::string why = MediaWriter::refusal(mRequest.output);
  if (!why.empty()) throw HostError::usage(fmt::format("{}: {}", mRequest.output, why));
  if (mRequest.parts.find('%') != std::string::npos)
    throw HostError::usage(
        fmt::format("--parts {}: sbatch reads '%' in log names; choose a folder without it", mRequest.parts));
}

void SlurmSubmission::run(const std::atomic<int>& stop) {
  refuseUsageErrors();
  const MediaInfo source = MediaReader(mRequest.input).info();
  OverwriteCheck::refuse(source, mRequest.output, "");
  const FrameRange frames = FrameTimeline(source).resolve(mRequest.frames, mRequest.input);
  fs::create_directories(mRequest.parts);
  const ChunkPlan plan(mRequest.output, mRequest.parts, frames, mRequest.chunkFrames);
  writeScripts(plan, frames);
  const std::vector<ChunkPlan::Chunk> left = plan.incomplete();
  say(fmt::format("{} of {} chunks of {} frames to render ({} complete from before); segments and logs in {}",
                  left.size(), plan.chunks().size(), mRequest.chunkFrames, plan.chunks().size() - left.size(),
                  mRequest.parts));
  const std::string chunksJob = left.empty() ? "" : submitChunks(plan, left);
  const std::string joinJob = submitJoin(plan, chunksJob);
  if (!chunksJob.empty()) std::printf("chunks %s\n", chunksJob.c_str());
  std::printf("join %s\n", joinJob.c_str());
  std::fflush(stdout);
  if (mRequest.wait) follow(plan, left.size(), chunksJob, joinJob, stop);
}

// The velmira of this submission, at the same path on every node (each installs the same package).
std::string SlurmSubmission::command(const std::string& verb) const {
  std::vector<std::string> words{Locations::executable()};
  if (!mRequest.plugin.empty()) words.insert(words.end(), {"--plugin", fs::absolute(mRequest.plugin).string()});
  words.push_back(verb);
  return commandLine(words);
}

// Array task N runs chunk N. A job that differs from the one whose segments lie in the parts folder (other sliders,
// frames or chunks) makes those segments stale, so they go before anything is counted complete.
void SlurmSubmission::writeScripts(const ChunkPlan& plan, FrameRange frames) const {
  std::string chunks = "#!/bin/sh\n# Written by velmira submit: array task N renders chunk N.\n";
  chunks += "case \"$SLURM_ARRAY_TASK_ID\" in\n";
  for (const ChunkPlan::Chunk& chunk : plan.chunks()) {
    std::vector<std::string> words{mRequest.input, "-o", chunk.segment, "--frames",
                                   fmt::format("{}-{}", chunk.frames.first, chunk.frames.last)};
    words.insert(words.end(), mRequest.sliderArguments.begin(), mRequest.sliderArguments.end());
    chunks += fmt::format("  {}) exec {} {} ;;\n", chunk.number, command("render"), commandLine(words));
  }
  chunks += "esac\necho \"velmira: this job has no chunk $SLURM_ARRAY_TASK_ID\" >&2\nexit 1\n";
  const std::string chunksFile = plan.file("chunks.sh");
  std::ifstream before(chunksFile);
  std::stringstream old;
  old << before.rdbuf();
  if (before && old.str() != chunks) plan.removeSegments();

  std::vector<std::string> words{"--source",      mRequest.input, "-o",
                                 mRequest.output, "--frames",     fmt::format("{}-{}", frames.first, frames.last)};
  for (const ChunkPlan::Chunk& chunk : plan.chunks()) words.push_back(chunk.segment);
  const std::string join = fmt::format(
      "#!/bin/sh\n# Written by velmira submit: runs once every chunk has "
      "succeeded.\nexec {} {}\n",
      command("join"), commandLine(words));
  std::ofstream(chunksFile) << chunks;
  std::ofstream(plan.file("join.sh")) << join;
}

std::string SlurmSubmission::submitChunks(const ChunkPlan& plan, const std::vector<ChunkPlan::Chunk>& left) {
  std::vector<std::string> sbatch{"sbatch", "--parsable", "--job-name=velmira-chunks", "--array=" + arrayIndexes(left),
                                  "--output=" + plan.logPattern()};
  sbatch.insert(sbatch.end(), mRequest.sbatchArguments.begin(), mRequest.sbatchArguments.end());
  sbatch.push_back(plan.file("chunks.sh"));
  return jobId(slurm(sbatch));
}

// Without kill-on-invalid-dep a failed chunk would leave the join pending for ever.
std::string SlurmSubmission::submitJoin(const ChunkPlan& plan, const std::string& chunksJob) {
  std::vector<std::string> sbatch{"sbatch", "--parsable", "--job-name=velmira-join",
                                  "--output=" + plan.file("join.log")};
  if (!chunksJob.empty())
    sbatch.insert(sbatch.end(), {"--dependency=afterok:" + chunksJob, "--kill-on-invalid-dep=yes"});
  sbatch.insert(sbatch.end(), mRequest.sbatchArguments.begin(), mRequest.sbatchArguments.end());
  sbatch.push_back(plan.file("join.sh"));
  return jobId(slurm(sbatch));
}

// A chunk that fails ends the wait at once, and the join with it; sbatch --wait would neither tell which chunk
// failed nor notice a join cancelled for it.
void SlurmSubmission::follow(const ChunkPlan& plan, std::size_t left, const std::string& chunksJob,
                             const std::string& joinJob, const std::atomic<int>& stop) {
  const std::size_t total = plan.chunks().size();
  const bool terminal = ::isatty(STDERR_FILENO);
  std::set<int> done;
  std::size_t shown = SIZE_MAX;
  for (;;) {
    if (!chunksJob.empty()) {
      for (const auto& [task, state] : jobStates(chunksJob)) {
        if (state == "COMPLETED") done.insert(task);
        if (state == "COMPLETED" || !ended(state)) continue;
        const ChunkPlan::Chunk& chunk = plan.chunks().at(static_cast<std::size_t>(task));
        slurm({"scancel", joinJob});
        if (terminal && !mRequest.quiet) std::fputc('\n', stderr);
        throw HostError::failure(fmt::format("chunk {} (frames {}-{}) ended {}: {}; its log is {}", chunk.number,
                                             chunk.frames.first, chunk.frames.last, state, lastLine(chunk.log),
                                             chunk.log));
      }
    }
    const std::size_t finished = total - left + done.size();
    if (finished != shown && !mRequest.quiet) {
      std::fprintf(stderr, terminal ? "\rvelmira: %zu of %zu chunks done\033[K" : "velmira: %zu of %zu chunks done\n",
                   finished, total);
      shown = finished;
    }
    const std::string join = jobStates(joinJob)[-1];
    if (join == "COMPLETED") break;
    if (ended(join)) {
      throw HostError::failure(fmt::format("the join ended {}: {}; its log is {}", join,
                                           lastLine(plan.file("join.log")), plan.file("join.log")));
    }
    if (int signal = stop.load()) {
      if (terminal && !mRequest.quiet) std::fputc('\n', stderr);
      const std::string jobs = chunksJob.empty() ? joinJob : chunksJob + " " + joinJob;
      say(fmt::format("no longer following; the jobs run on (scancel {} stops them)", jobs));
      throw HostError::interrupted(signal);
    }
    std::this_thread::sleep_for(kPollInterval);
  }
  if (terminal && !mRequest.quiet) std::fputc('\n', stderr);
  std::printf("%s\n", mRequest.output.c_str());
}

}  // namespace Quillmere::Velmira
