#pragma once

#include "AE_EffectSuites.h"

namespace Quillmere::Velmira {

// "PF iterateFloat Suite" v1: calls a plug-in's function once for every pixel of an area
// of a float world (PF_PixelFloat, rows rowbytes apart), row after row.
class FloatIterator {
public:
  static PF_Err iterate(PF_InData* in_data, A_long progress_base, A_long progress_final, PF_EffectWorld* src,
                        const PF_Rect* area, void* refcon, PF_IteratePixelFloatFunc pix_fn, PF_EffectWorld* dst);
  static PF_Err iterateOrigin(PF_InData* in_data, A_long progress_base, A_long progress_final, PF_EffectWorld* src,
                              const PF_Rect* area, const PF_Point* origin, void* refcon,
                              PF_IteratePixelFloatFunc pix_fn, PF_EffectWorld* dst);

  static const PF_iterateFloatSuite1& suite();
};

}  // namespace Quillmere::Velmira
