#include "Media/Orientation.h"

#include <cstdlib>
#include <cstring>

namespace Quillmere::Velmira {

int Orientation::of(const AVFrame& frame) {
  // FFmpeg's JPEG decoder also sets a display matrix from the tag, but the tag alone tells mirrored turns apart
  // without reading signs out of fixed-point numbers. It keeps the tag as text, padded with spaces.
  const AVDictionaryEntry* tag = av_dict_get(frame.metadata, "Orientation", nullptr, 0);
  if (!tag) return 1;
  char* end = nullptr;
  long value = std::strtol(tag->value, &end, 10);
  return end != tag->value && value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

void Orientation::apply(int orientation, const ArgbFrame& stored, ArgbFrame& upright) {
  const int w = stored.width(), h = stored.height();
  const bool swap = swapsSides(orientation);
  upright.allocate(swap ? h : w, swap ? w : h);
  for (int y = 0; y < upright.height(); ++y) {
    std::uint8_t* out = upright.row(y);
    for (int x = 0; x < upright.width(); ++x, out += 4) {
      // The stored pixel that shows at (x, y) once the picture stands upright.
      int sx = x, sy = y;
      switch (orientation) {
        case 2: sx = w - 1 - x; break;
        case 3: sx = w - 1 - x, sy = h - 1 - y; break;
        case 4: sy = h - 1 - y; break;
        case 5: sx = y, sy = x; break;
        case 6: sx = y, sy = h - 1 - x; break;
        case 7: sx = w - 1 - y, sy = h - 1 - x; break;
        case 8: sx = w - 1 - y, sy = x; break;
        default: break;
      }
      std::memcpy(out, stored.row(sy) + static_cast<std::ptrdiff_t>(sx) * 4, 4);
    }
  }
}

}  // namespace Quillmere::Velmira
