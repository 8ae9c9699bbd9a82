#pragma once

#include <string>
#include <vector>

#include "Media/ArgbFrame.h"
#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

// One run of the built velmira command, as a person types it.
struct VelmiraRun {
  int exitCode = -1;
  std::string out;
  std::string err;

  // Arguments are quoted for the shell; `folder` is the working directory.
  static VelmiraRun run(const std::vector<std::string>& arguments, const std::string& folder);
};

// Every frame of a file, image, sequence or video, through the media layer.
std::vector<ArgbFrame> readFrames(const std::string& path, MediaInfo* info = nullptr);

// Bytes of the pixel at (x, y): alpha, red, green, blue.
const std::uint8_t* pixelAt(const ArgbFrame& frame, int x, int y);

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);

}  // namespace Quillmere::Velmira
