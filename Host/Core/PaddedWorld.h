#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "AE_Effect.h"

namespace Quillmere::Velmira {

// An 8-bit ARGB frame (PF_PixelFormat_ARGB32) in host memory, as the effect sees it:
// bytes alpha, red, green, blue; rows rowbytes apart.
class PaddedWorld {
public:
  // Rows are padded to the next multiple of kRowAlignment bytes, always by at least one
  // pixel, so that a plug-in that takes width * 4 for the row length shows itself at once.
  static constexpr A_long kRowAlignment = 64;
  static A_long paddedRowBytes(A_long width);

  PaddedWorld() = default;
  PaddedWorld(A_long width, A_long height);
  PaddedWorld(const PaddedWorld&) = delete;
  PaddedWorld& operator=(const PaddedWorld&) = delete;
  PaddedWorld(PaddedWorld&& other) noexcept;
  PaddedWorld& operator=(PaddedWorld&& other) noexcept;

  A_long width() const { return mDef.width; }
  A_long height() const { return mDef.height; }
  A_long rowBytes() const { return mDef.rowbytes; }
  std::uint8_t* row(A_long y) { return mPixels.data() + static_cast<std::size_t>(y) * mDef.rowbytes; }
  const std::uint8_t* row(A_long y) const { return mPixels.data() + static_cast<std::size_t>(y) * mDef.rowbytes; }
  PF_EffectWorld* def() { return &mDef; }

  // Copies rows of width * 4 bytes from memory whose rows lie strideBytes apart.
  void copyFrom(const std::uint8_t* pixels, std::ptrdiff_t strideBytes);
  void copyTo(std::uint8_t* pixels, std::ptrdiff_t strideBytes) const;
  void fillPadding(std::uint8_t value);
  void clear();

private:
  void pointDefAtPixels();

  std::vector<std::uint8_t> mPixels;
  PF_EffectWorld mDef{};
};

}  // namespace Quillmere::Velmira
