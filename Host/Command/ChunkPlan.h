#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Media/FrameRange.h"

namespace Quillmere::Velmira {

// A render cut into chunks of frames, and where each chunk's segment and log go in the parts folder, by names that
// stay the same from one submission of a job to the next, so that a chunk whose segment is complete is not rendered
// again:
//   video output  OUT.mp4        parts/chunk-0003.mp4, one file written whole or not at all
//   sequence      OUT/f_%04d.png parts/chunk-0003/f_%04d.png, complete when every frame of the chunk is there
//   logs                         parts/chunk-0003.log, parts/join.log
class ChunkPlan {
public:
  struct Chunk {
    int number = 0;
    FrameRange frames;
    std::string segment;
    std::string log;
  };

  // `frames` are the source's frames to render, both ends known.
  ChunkPlan(const std::string& output, const std::string& parts, FrameRange frames, std::int64_t chunkFrames);

  const std::vector<Chunk>& chunks() const { return mChunks; }
  bool complete(const Chunk& chunk) const;
  // The chunks still to render; a sequence's chunk folders are made for them.
  std::vector<Chunk> incomplete() const;
  // Every segment, complete or not, goes when the job changes (other sliders, another chunk size or range).
  void removeSegments() const;

  std::string file(const std::string& name) const;
  // The logs as sbatch names them, %a standing for the array task, which is the chunk's number.
  std::string logPattern() const;

private:
  std::string mParts;
  bool mSequence;
  std::vector<Chunk> mChunks;
};

}  // namespace Quillmere::Velmira
