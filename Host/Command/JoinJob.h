#pragma once

#include <string>
#include <vector>

#include "Media/FrameRange.h"

namespace Quillmere::Velmira {

// One run of `velmira join`: ranges of one job, rendered apart (by `render --frames` on the nodes of a farm), put
// together as the output a single render of those frames would have written.
class JoinJob {
public:
  struct Request {
    std::string source;
    std::string output;
    std::vector<std::string> segments;  // in the order of their frames
    FrameRange frames;                  // the frames the segments cover; all of the source's by default
    bool quiet = false;
  };

  explicit JoinJob(Request request);

  // Returns the number of frames joined; throws HostError (usage) or MediaError (a segment at fault).
  std::int64_t run();

private:
  void refuseUsageErrors() const;

  Request mRequest;
};

}  // namespace Quillmere::Velmira
