#include "Command/ChunkPlan.h"

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include "Media/MediaPath.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

ChunkPlan::ChunkPlan(const std::string& output, const std::string& parts, FrameRange frames, std::int64_t chunkFrames)
    : mParts(parts), mSequence(MediaPath::isSequencePattern(output)) {
  const std::string name = fs::path(output).filename().string();
  for (std::int64_t first = frames.first; first <= frames.last; first += chunkFrames) {
    Chunk chunk;
    chunk.number = static_cast<int>(mChunks.size());
    chunk.frames = {first, std::min(first + chunkFrames - 1, frames.last)};
    const std::string stem = fmt::format("chunk-{:04}", chunk.number);
    chunk.segment = mSequence ? file(stem + "/" + name) : file(stem + MediaPath::extension(output));
    chunk.log = file(stem + ".log");
    mChunks.push_back(chunk);
  }
}

std::string ChunkPlan::file(const std::string& name) const { return (fs::path(mParts) / name).string(); }

std::string ChunkPlan::logPattern() const { return file("chunk-%4a.log"); }

bool ChunkPlan::complete(const Chunk& chunk) const {
  std::error_code error;
  if (!mSequence) return fs::exists(chunk.segment, error);
  for (std::int64_t n = chunk.frames.first; n <= chunk.frames.last; ++n)
    if (!fs::exists(MediaPath::sequenceFileName(chunk.segment, n), error)) return false;
  return true;
}

std::vector<ChunkPlan::Chunk> ChunkPlan::incomplete() const {
  std::vector<Chunk> left;
  for (const Chunk& chunk : mChunks) {
    if (complete(chunk)) continue;
    if (mSequence) fs::create_directories(fs::path(chunk.segment).parent_path());
    left.push_back(chunk);
  }
  return left;
}

void ChunkPlan::removeSegments() const {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(mParts, error)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind("chunk-", 0) == 0 && name.size() >= 10 && entry.path().extension() != ".log")
      fs::remove_all(entry.path(), error);
  }
}

}  // namespace Quillmere::Velmira
