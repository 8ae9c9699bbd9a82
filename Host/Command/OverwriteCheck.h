#pragma once

#include <string>

#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

// The one rule that keeps velmira off its input: no file a render writes may be a file it reads. Files are compared
// by identity (device and inode), not by the text of their paths, so another spelling of a pattern, a symbolic or a
// hard link, and a before/after picture named like the input or like the output are all caught. A pattern stands for
// the file of every frame number it will be given.
class OverwriteCheck {
public:
  // Throws HostError::usage naming the file; called once the input is open, before any frame is made.
  static void refuse(const MediaInfo& input, const std::string& output, const std::string& compare);
};

}  // namespace Quillmere::Velmira
