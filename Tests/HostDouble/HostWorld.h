// An 8-bit ARGB frame in host memory, rows rowbytes apart (rowbytes may exceed width * 4,
// and the padding is filled with a marker so that writes into it can be detected).
#pragma once

#include <cstdint>
#include <vector>

#include "AE_Effect.h"

namespace Quillmere::Velmira {

class HostWorld {
public:
  static constexpr std::uint8_t kPaddingMarker = 0xA5;

  HostWorld(A_long width, A_long height, A_long rowbytes = 0);  // 0: width * 4
  HostWorld(const HostWorld&) = delete;
  HostWorld& operator=(const HostWorld&) = delete;

  PF_EffectWorld* world() { return &mWorld; }
  A_long width() const { return mWorld.width; }
  A_long height() const { return mWorld.height; }
  A_long rowbytes() const { return mWorld.rowbytes; }

  PF_Pixel8& pixel(A_long x, A_long y);
  const PF_Pixel8& pixel(A_long x, A_long y) const;
  void fill(PF_Pixel8 colour);
  // True when no byte beyond width * 4 in any row has changed since construction.
  bool paddingIntact() const;

private:
  std::vector<std::uint8_t> mBytes;
  PF_EffectWorld mWorld{};
};

}  // namespace Quillmere::Velmira
