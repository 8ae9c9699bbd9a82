#include "Media/ArgbFrame.h"

namespace Quillmere::Velmira {

void ArgbFrame::allocate(int w, int h, std::size_t alignment) {
  width = w;
  height = h;
  std::size_t packed = static_cast<std::size_t>(w) * 4;
  rowBytes = (packed + alignment - 1) / alignment * alignment;
  pixels.assign(rowBytes * static_cast<std::size_t>(h), 0);
}

}  // namespace Quillmere::Velmira
