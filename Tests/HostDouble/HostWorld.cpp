#include "HostWorld.h"

namespace Quillmere::Velmira {

HostWorld::HostWorld(A_long width, A_long height, A_long rowbytes) {
  const A_long rowBytes = rowbytes > 0 ? rowbytes : width * 4;
  mBytes.assign(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height), 0);
  for (A_long y = 0; y < height; ++y) {
    for (A_long b = width * 4; b < rowBytes; ++b) {
      mBytes[static_cast<std::size_t>(y * rowBytes + b)] = kPaddingMarker;
    }
  }
  mWorld.world_flags = PF_WorldFlag_WRITEABLE;
  mWorld.data = reinterpret_cast<PF_PixelPtr>(mBytes.data());
  mWorld.rowbytes = rowBytes;
  mWorld.width = width;
  mWorld.height = height;
  mWorld.extent_hint = {0, 0, width, height};
  mWorld.pix_aspect_ratio = {1, 1};
}

PF_Pixel8& HostWorld::pixel(A_long x, A_long y) {
  return reinterpret_cast<PF_Pixel8*>(mBytes.data() + y * mWorld.rowbytes)[x];
}

const PF_Pixel8& HostWorld::pixel(A_long x, A_long y) const {
  return reinterpret_cast<const PF_Pixel8*>(mBytes.data() + y * mWorld.rowbytes)[x];
}

void HostWorld::fill(PF_Pixel8 colour) {
  for (A_long y = 0; y < mWorld.height; ++y) {
    for (A_long x = 0; x < mWorld.width; ++x) {
      pixel(x, y) = colour;
    }
  }
}

bool HostWorld::paddingIntact() const {
  for (A_long y = 0; y < mWorld.height; ++y) {
    for (A_long b = mWorld.width * 4; b < mWorld.rowbytes; ++b) {
      if (mBytes[static_cast<std::size_t>(y * mWorld.rowbytes + b)] != kPaddingMarker) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace Quillmere::Velmira
