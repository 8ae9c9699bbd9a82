// Reading back what a test wrote: every frame of a file through the media layer, a file's bytes, a folder's names.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Core/ArgbFrame.h"
#include "Media/MediaReader.h"

namespace Quillmere::Velmira {

// Every frame of a picture, sequence or video (within `range`), and what the reader found out about it.
inline std::vector<ArgbFrame> readFrames(const std::string& path, MediaInfo* info = nullptr, FrameRange range = {}) {
  MediaReader reader(path, range);
  if (info) *info = reader.info();
  std::vector<ArgbFrame> frames;
  ArgbFrame frame;
  while (reader.read(frame)) frames.push_back(frame);
  return frames;
}

// Channel c (0 alpha, 1 red, 2 green, 3 blue) of pixel (x, y).
inline int channel(const ArgbFrame& frame, int x, int y, int c) {
  return frame.row(y)[static_cast<std::size_t>(x) * 4 + static_cast<std::size_t>(c)];
}

inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

inline void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// The names in `folder`, sorted, a folder's ending in '/': what a write made or left behind.
inline std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const std::filesystem::directory_entry& e : std::filesystem::directory_iterator(folder))
    names.push_back(e.path().filename().string() + (e.is_directory() ? "/" : ""));
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace Quillmere::Velmira
