#include "Command/JoinJob.h"

#include <cstdio>

#include <fmt/format.h>

#include "Command/OverwriteCheck.h"
#include "Core/HostError.h"
#include "Media/MediaPath.h"
#include "Media/MediaReader.h"
#include "Media/MediaWriter.h"
#include "Media/SegmentJoiner.h"
#include "Media/SequenceJoiner.h"

namespace Quillmere::Velmira {

JoinJob::JoinJob(Request request) : mRequest(std::move(request)) {}

// A video is joined from videos and a sequence from sequences; a single picture has nothing to join.
void JoinJob::refuseUsageErrors() const {
  const MediaKind kind = MediaPath::kindOf(mRequest.output);
  if (kind == MediaKind::Image) {
    throw HostError::usage(
        fmt::format("{}: the output of a join is a video or a numbered sequence (frame_%04d.png)", mRequest.output));
  }
  const std::string why = MediaWriter::refusal(mRequest.output);
  if (!why.empty()) throw HostError::usage(fmt::format("{}: {}", mRequest.output, why));
  for (const std::string& segment : mRequest.segments) {
    if (MediaPath::kindOf(segment) != kind) {
      throw HostError::usage(fmt::format("{}: a segment of {} is a {} too", segment, mRequest.output,
                                         kind == MediaKind::Video ? "video" : "sequence pattern"));
    }
  }
}

std::int64_t JoinJob::run() {
  refuseUsageErrors();
  const MediaInfo source = MediaReader(mRequest.source).info();
  OverwriteCheck::refuse(source, mRequest.output, "");
  std::int64_t frames = MediaPath::kindOf(mRequest.output) == MediaKind::Video
                            ? SegmentJoiner(source, mRequest.frames).join(mRequest.segments, mRequest.output)
                            : SequenceJoiner(source, mRequest.frames).join(mRequest.segments, mRequest.output);
  if (!mRequest.quiet) {
    std::fprintf(stderr, "velmira: %lld frames of %zu segments joined\n", static_cast<long long>(frames),
                 mRequest.segments.size());
  }
  std::printf("%s\n", mRequest.output.c_str());
  return frames;
}

}  // namespace Quillmere::Velmira
