#pragma once

#include <atomic>

#include <cstdint>
#include <string>
#include <vector>

#include "Command/ChunkPlan.h"
#include "Media/FrameRange.h"

namespace Quillmere::Velmira {

// One run of `velmira submit`: a render cut into chunks (ChunkPlan), run on a Slurm cluster as one job array whose
// task N runs `velmira render --frames` on chunk N, and a join job that Slurm starts only once every task has
// succeeded. Slurm is driven through its own commands (sbatch, scontrol, scancel), as a person would.
class SlurmSubmission {
public:
  struct Request {
    std::string input;
    std::string output;
    std::string parts;  // default: OUTPUT's folder / "<output name>.parts"
    FrameRange frames;
    std::int64_t chunkFrames = 100;
    std::vector<std::string> sbatchArguments;
    std::vector<std::string> sliderArguments;  // as every chunk's render takes them ("--skin-blur=12")
    std::string plugin;                        // empty: the nodes' own default
    bool wait = false;
    bool quiet = false;
  };

  explicit SlurmSubmission(Request request);

  // Submits, and with `wait` follows the jobs to their end. Throws HostError: usage for what cannot be asked,
  // failure for a chunk or join that failed (naming its log) or a Slurm command that did. A signal in `stop`
  // (SignalWatcher) ends the following, not the jobs, which Slurm runs on.
  void run(const std::atomic<int>& stop);

private:
  void refuseUsageErrors() const;
  std::string command(const std::string& verb) const;
  void writeScripts(const ChunkPlan& plan, FrameRange frames) const;
  std::string submitChunks(const ChunkPlan& plan, const std::vector<ChunkPlan::Chunk>& left);
  std::string submitJoin(const ChunkPlan& plan, const std::string& chunksJob);
  void follow(const ChunkPlan& plan, std::size_t left, const std::string& chunksJob, const std::string& joinJob,
              const std::atomic<int>& stop);
  void say(const std::string& message) const;

  Request mRequest;
};

}  // namespace Quillmere::Velmira
