// Telling what a path names from its text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Media/MediaKind.h"

namespace Quillmere::Velmira {

class MediaPath {
public:
  // True when the file name holds a printf-style frame number, %d or %0Nd (N from 1 to 9), once.
  // "frame_%04d.png" is a pattern; "100%.png" and "a%%b.png" are plain names.
  static bool isSequencePattern(const std::string& path);

  // The file of frame `number` of a pattern: ("f_%04d.png", 7) gives "f_0007.png".
  static std::string sequenceFileName(const std::string& pattern, std::int64_t number);

  // The frame number of a file of `pattern`: ("f_%04d.png", "f_0007.png") gives 7. None when the pattern prints no
  // number as `fileName` (a name without its folder): "f_7.png" is not frame 7 of "f_%04d.png".
  static std::optional<std::int64_t> sequenceNumber(const std::string& pattern, const std::string& fileName);

  // A pattern: Sequence. Otherwise by extension (case ignored): .mp4 .mov .mkv .m4v .webm .avi -> Video,
  // anything else -> Image (the reader then looks at the content).
  static MediaKind kindOf(const std::string& path);

  // Lower-case extension with its dot, "" when there is none.
  static std::string extension(const std::string& path);
};

}  // namespace Quillmere::Velmira
