#pragma once

#include <string>

#include "Core/ArgbFrame.h"
#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

// A before/after picture: the frame as it came in on the left, as the effect left it on
// the right, with a thin divider between them.
class ComparePicture {
public:
  static constexpr int kDivider = 8;

  static ArgbFrame compose(const ArgbFrame& before, const ArgbFrame& after);
  // Written as an image (the kind follows the path's extension); alpha kept where the
  // source has it and the format carries it.
  static void write(const std::string& path, const ArgbFrame& before, const ArgbFrame& after, const MediaInfo& source);
};

}  // namespace Quillmere::Velmira
