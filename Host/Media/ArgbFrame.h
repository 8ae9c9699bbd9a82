// One decoded frame in the effect's 8-bit layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quillmere::Velmira {

// Pixels as the effect's PF_PixelFormat_ARGB32 world holds them: four bytes a pixel in the order alpha, red,
// green, blue, rows from the top, `rowBytes` apart (rowBytes may exceed width * 4). Alpha is straight; a source
// without alpha gives 255.
struct ArgbFrame {
  int width = 0;
  int height = 0;
  std::size_t rowBytes = 0;
  std::vector<std::uint8_t> pixels;  // rowBytes * height bytes

  // Frame number: the position in a video (0 for the first decoded frame) or the file number of a sequence.
  std::int64_t index = 0;
  // Presentation time in the source's time base (MediaInfo::timeBase), and in seconds from the first frame.
  std::int64_t pts = 0;
  double timeSeconds = 0.0;

  // Sizes the frame, rows padded to `alignment` bytes; the pixels are zero.
  void allocate(int w, int h, std::size_t alignment = 64);

  std::uint8_t* row(int y) { return pixels.data() + static_cast<std::size_t>(y) * rowBytes; }
  const std::uint8_t* row(int y) const { return pixels.data() + static_cast<std::size_t>(y) * rowBytes; }
};

}  // namespace Quillmere::Velmira
