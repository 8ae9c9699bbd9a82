#include "Core/FloatIterator.h"

#include <algorithm>
#include <cstdint>

#include "Core/CallRecorder.h"

namespace Quillmere::Velmira {

namespace {

PF_PixelFloat* floatPixel(PF_EffectWorld* world, A_long x, A_long y) {
  auto* row = reinterpret_cast<std::uint8_t*>(world->data) + static_cast<std::ptrdiff_t>(y) * world->rowbytes;
  return reinterpret_cast<PF_PixelFloat*>(row) + x;
}

}  // namespace

PF_Err FloatIterator::iterate(PF_InData* in_data, A_long progress_base, A_long progress_final, PF_EffectWorld* src,
                              const PF_Rect* area, void* refcon, PF_IteratePixelFloatFunc pix_fn, PF_EffectWorld* dst) {
  return iterateOrigin(in_data, progress_base, progress_final, src, area, nullptr, refcon, pix_fn, dst);
}

PF_Err FloatIterator::iterateOrigin(PF_InData*, A_long, A_long, PF_EffectWorld* src, const PF_Rect* area,
                                    const PF_Point* origin, void* refcon, PF_IteratePixelFloatFunc pix_fn,
                                    PF_EffectWorld* dst) {
  if (!src || !dst || !pix_fn) return PF_Err_BAD_CALLBACK_PARAM;
  // The area lies in the destination; the source is read at the same place, shifted by
  // the origin when one is given. Both are clipped to their worlds.
  PF_Rect whole{0, 0, dst->width, dst->height};
  PF_Rect rect = area ? *area : whole;
  rect.left = std::max(rect.left, A_long{0});
  rect.top = std::max(rect.top, A_long{0});
  rect.right = std::min(rect.right, dst->width);
  rect.bottom = std::min(rect.bottom, dst->height);
  A_long dx = origin ? origin->h : 0;
  A_long dy = origin ? origin->v : 0;
  for (A_long y = rect.top; y < rect.bottom; ++y) {
    for (A_long x = rect.left; x < rect.right; ++x) {
      A_long sx = x + dx, sy = y + dy;
      if (sx < 0 || sy < 0 || sx >= src->width || sy >= src->height) continue;
      if (PF_Err err = pix_fn(refcon, x, y, floatPixel(src, sx, sy), floatPixel(dst, x, y))) return err;
    }
  }
  return PF_Err_NONE;
}

const PF_iterateFloatSuite1& FloatIterator::suite() {
  static const PF_iterateFloatSuite1 kSuite{VELMIRA_TRACED("iterateFloat.iterate", iterate),
                                            VELMIRA_TRACED("iterateFloat.iterate_origin", iterateOrigin)};
  return kSuite;
}

}  // namespace Quillmere::Velmira
