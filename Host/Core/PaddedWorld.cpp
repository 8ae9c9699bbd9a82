#include "Core/PaddedWorld.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Quillmere::Velmira {

A_long PaddedWorld::paddedRowBytes(A_long width) {
  A_long atLeast = (width + 1) * 4;
  return (atLeast + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
}

PaddedWorld::PaddedWorld(A_long width, A_long height)
    : mPixels(static_cast<std::size_t>(paddedRowBytes(width)) * static_cast<std::size_t>(height)) {
  mDef.world_flags = PF_WorldFlag_WRITEABLE;
  mDef.rowbytes = paddedRowBytes(width);
  mDef.width = width;
  mDef.height = height;
  mDef.extent_hint = {0, 0, width, height};
  mDef.pix_aspect_ratio = {1, 1};
  pointDefAtPixels();
}

PaddedWorld::PaddedWorld(PaddedWorld&& other) noexcept : mPixels(std::move(other.mPixels)), mDef(other.mDef) {
  pointDefAtPixels();
  other.mDef = PF_EffectWorld{};
}

PaddedWorld& PaddedWorld::operator=(PaddedWorld&& other) noexcept {
  mPixels = std::move(other.mPixels);
  mDef = other.mDef;
  pointDefAtPixels();
  other.mDef = PF_EffectWorld{};
  return *this;
}

void PaddedWorld::pointDefAtPixels() {
  mDef.data = mPixels.empty() ? nullptr : reinterpret_cast<PF_PixelPtr>(mPixels.data());
}

void PaddedWorld::copyFrom(const std::uint8_t* pixels, std::ptrdiff_t strideBytes) {
  for (A_long y = 0; y < height(); ++y) {
    std::memcpy(row(y), pixels + y * strideBytes, static_cast<std::size_t>(width()) * 4);
  }
}

void PaddedWorld::copyTo(std::uint8_t* pixels, std::ptrdiff_t strideBytes) const {
  for (A_long y = 0; y < height(); ++y) {
    std::memcpy(pixels + y * strideBytes, row(y), static_cast<std::size_t>(width()) * 4);
  }
}

void PaddedWorld::fillPadding(std::uint8_t value) {
  std::size_t used = static_cast<std::size_t>(width()) * 4;
  for (A_long y = 0; y < height(); ++y) std::memset(row(y) + used, value, rowBytes() - used);
}

void PaddedWorld::clear() { std::fill(mPixels.begin(), mPixels.end(), std::uint8_t{0}); }

}  // namespace Quillmere::Velmira
