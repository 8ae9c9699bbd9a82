#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "AE_Effect.h"

namespace Quillmere::Velmira {

// The host's one frame: 8-bit ARGB as an effect's PF_PixelFormat_ARGB32 world holds it (bytes alpha, red, green,
// blue; straight alpha; rows from the top, rowBytes() apart) together with the PF_EffectWorld that points at those
// rows. The decoder writes into the rows the effect reads, and the encoder reads the rows the effect wrote: no frame
// is copied on its way through the host.
class ArgbFrame {
public:
  // Rows are padded to the next multiple of the alignment, always by at least one pixel, so that an effect that takes
  // width * 4 for the row length shows itself at once.
  static constexpr std::size_t kRowAlignment = 64;
  static std::size_t paddedRowBytes(int width, std::size_t alignment = kRowAlignment);

  ArgbFrame() = default;
  ArgbFrame(const ArgbFrame& other);
  ArgbFrame& operator=(const ArgbFrame& other);
  ArgbFrame(ArgbFrame&& other) noexcept;
  ArgbFrame& operator=(ArgbFrame&& other) noexcept;

  // Sizes the frame. A frame of the same size and alignment keeps its buffer and its pixels, so that frames passed
  // round the host's queues allocate nothing once running; a new size gets zeroed pixels.
  void allocate(int width, int height, std::size_t alignment = kRowAlignment);

  int width() const { return mWorld.width; }
  int height() const { return mWorld.height; }
  std::size_t rowBytes() const { return static_cast<std::size_t>(mWorld.rowbytes); }
  std::uint8_t* row(int y) { return mPixels.data() + static_cast<std::size_t>(y) * rowBytes(); }
  const std::uint8_t* row(int y) const { return mPixels.data() + static_cast<std::size_t>(y) * rowBytes(); }
  PF_EffectWorld* world() { return &mWorld; }

  // Frame number: the position in a video (0 for the first decoded frame) or the file number of a sequence.
  std::int64_t index = 0;
  // Presentation time in the source's time base, and in seconds from the source's first frame.
  std::int64_t pts = 0;
  double timeSeconds = 0.0;

private:
  void pointWorldAtPixels();

  std::vector<std::uint8_t> mPixels;
  PF_EffectWorld mWorld{};
};

}  // namespace Quillmere::Velmira
