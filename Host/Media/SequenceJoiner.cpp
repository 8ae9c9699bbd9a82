#include "Media/SequenceJoiner.h"

#include <filesystem>

#include <fmt/format.h>

#include "Media/MediaError.h"
#include "Media/MediaPath.h"
#include "Media/MediaReader.h"
#include "Media/SegmentOrder.h"
#include "Media/TempFile.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

SequenceJoiner::SequenceJoiner(const MediaInfo& source, FrameRange wanted)
    : mSourcePath(source.path), mWanted(FrameTimeline(source).resolve(wanted, source.path)) {}

std::int64_t SequenceJoiner::join(const std::vector<std::string>& segments, const std::string& output) {
  std::vector<SegmentOrder::Span> spans;
  MediaInfo first;
  for (const std::string& segment : segments) {
    if (MediaPath::extension(segment) != MediaPath::extension(output))
      throw MediaError(segment, "holds other files than " + output + ": the join moves files, it does not convert");
    // The reader refuses a sequence with a file missing inside it, naming the file.
    const MediaInfo info = MediaReader(segment).info();
    if (spans.empty()) first = info;
    if (info.width != first.width || info.height != first.height) {
      throw MediaError(segment, fmt::format("holds {}x{} pictures, where {} holds {}x{}", info.width, info.height,
                                            first.path, first.width, first.height));
    }
    spans.push_back({segment, info.firstNumber, info.lastNumber});
  }
  SegmentOrder::check(spans, mWanted, mSourcePath);
  for (const SegmentOrder::Span& span : spans)
    for (std::int64_t n = span.first; n <= span.last; ++n)
      move(MediaPath::sequenceFileName(span.path, n), MediaPath::sequenceFileName(output, n));
  return mWanted.last - mWanted.first + 1;
}

// A rename where the parts and the output share a file system; else a copy that appears complete, as a render's
// files do.
void SequenceJoiner::move(const std::string& from, const std::string& to) {
  std::error_code error;
  fs::rename(from, to, error);
  if (!error) return;
  TempFile file(to);
  fs::copy_file(from, file.path(), fs::copy_options::overwrite_existing, error);
  if (error) throw MediaError(from, "cannot be copied to " + to + ": " + error.message());
  file.commit();
  fs::remove(from, error);
}

}  // namespace Quillmere::Velmira
