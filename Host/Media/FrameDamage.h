// Frames of an input that did not decode whole, and what a reader does about them.
#pragma once

#include <cstdint>
#include <string>

namespace Quillmere::Velmira {

// Fail stops the read at the first damaged frame; Accept gives the damaged frames as the decoder made them
// (concealed) and lists them.
enum class OnDamage { Fail, Accept };

struct FrameDamage {
  // Frame numbers as the reader gives them (a sequence's file numbers); a run of missing frames spans several.
  std::int64_t first = 0;
  std::int64_t last = 0;
  bool missing = false;  // the frames were never given, as opposed to given concealed
  std::string reason;    // in FFmpeg's words where it gave any

  std::string describe() const {
    std::string frames = first == last ? "frame " + std::to_string(first)
                                       : "frames " + std::to_string(first) + "-" + std::to_string(last);
    return frames + (missing ? " missing: " : " truncated or corrupt: ") + reason;
  }
  std::int64_t count() const { return last - first + 1; }
};

}  // namespace Quillmere::Velmira
