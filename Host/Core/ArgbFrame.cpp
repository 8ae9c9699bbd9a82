#include "Core/ArgbFrame.h"

#include <utility>

namespace Quillmere::Velmira {

std::size_t ArgbFrame::paddedRowBytes(int width, std::size_t alignment) {
  std::size_t atLeast = (static_cast<std::size_t>(width) + 1) * 4;
  return (atLeast + alignment - 1) / alignment * alignment;
}

ArgbFrame::ArgbFrame(const ArgbFrame& other)
    : index(other.index), pts(other.pts), timeSeconds(other.timeSeconds), mPixels(other.mPixels), mWorld(other.mWorld) {
  pointWorldAtPixels();
}

ArgbFrame& ArgbFrame::operator=(const ArgbFrame& other) {
  if (this != &other) *this = ArgbFrame(other);
  return *this;
}

ArgbFrame::ArgbFrame(ArgbFrame&& other) noexcept
    : index(other.index),
      pts(other.pts),
      timeSeconds(other.timeSeconds),
      mPixels(std::move(other.mPixels)),
      mWorld(other.mWorld) {
  pointWorldAtPixels();
  other.mWorld = PF_EffectWorld{};
}

ArgbFrame& ArgbFrame::operator=(ArgbFrame&& other) noexcept {
  index = other.index;
  pts = other.pts;
  timeSeconds = other.timeSeconds;
  mPixels = std::move(other.mPixels);
  mWorld = other.mWorld;
  pointWorldAtPixels();
  other.mWorld = PF_EffectWorld{};
  return *this;
}

void ArgbFrame::allocate(int width, int height, std::size_t alignment) {
  std::size_t rowBytes = paddedRowBytes(width, alignment);
  if (width == mWorld.width && height == mWorld.height && rowBytes == this->rowBytes()) return;
  mPixels.assign(rowBytes * static_cast<std::size_t>(height), 0);
  mWorld = PF_EffectWorld{};
  mWorld.world_flags = PF_WorldFlag_WRITEABLE;
  mWorld.rowbytes = static_cast<A_long>(rowBytes);
  mWorld.width = width;
  mWorld.height = height;
  mWorld.extent_hint = {0, 0, width, height};
  mWorld.pix_aspect_ratio = {1, 1};
  pointWorldAtPixels();
}

void ArgbFrame::pointWorldAtPixels() {
  mWorld.data = mPixels.empty() ? nullptr : reinterpret_cast<PF_PixelPtr>(mPixels.data());
}

}  // namespace Quillmere::Velmira
