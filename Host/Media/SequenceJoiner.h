// Ranges of one job rendered as numbered pictures, put in place as one sequence. Each range already holds the frame
// numbers of the whole, so nothing is re-encoded or renumbered: the join checks that every frame is there once and
// moves the files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Media/FrameRange.h"
#include "Media/FrameTimeline.h"
#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

class SequenceJoiner {
public:
  // `source` is what the segments were rendered from; `wanted` the frames they must cover (the whole source when
  // `wanted.last` is -1).
  SequenceJoiner(const MediaInfo& source, FrameRange wanted);

  // `segments` are sequence patterns. Checks them all, then moves every file to the number's name under `output`
  // (a pattern of the same extension). Throws MediaError naming the segment, or the file, at fault. Returns the
  // number of frames put in place.
  std::int64_t join(const std::vector<std::string>& segments, const std::string& output);

private:
  static void move(const std::string& from, const std::string& to);

  std::string mSourcePath;
  FrameRange mWanted;
};

}  // namespace Quillmere::Velmira
