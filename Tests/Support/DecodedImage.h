#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Quillmere::Velmira {

// One picture file decoded with FFmpeg into packed 8-bit alpha, red, green, blue, as a host hands frames over.
struct DecodedImage {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> argb;

  // Throws std::runtime_error naming the file when it cannot be read.
  static DecodedImage load(const std::string& path);
};

}  // namespace Quillmere::Velmira
