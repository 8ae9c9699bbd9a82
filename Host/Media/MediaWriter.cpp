#include "Media/MediaWriter.h"

#include <filesystem>

#include "Media/ImageSink.h"
#include "Media/MediaError.h"
#include "Media/MediaPath.h"
#include "Media/VideoSink.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

namespace {

bool samePath(const std::string& a, const std::string& b) {
  std::error_code ec;
  if (fs::exists(a, ec) && fs::exists(b, ec)) return fs::equivalent(a, b, ec);
  return fs::weakly_canonical(a, ec) == fs::weakly_canonical(b, ec);
}

// The output may never replace its own source: not the same file, and for two sequences not the same pattern
// (which would overwrite frames still to be read).
void refuseToOverwriteSource(const std::string& path, const MediaInfo& source) {
  if (source.path.empty()) return;
  if (samePath(path, source.path)) throw MediaError(path, "is the input; choose another output name");
}

}  // namespace

MediaWriter::MediaWriter(const std::string& path, const MediaInfo& source) : MediaWriter(path, source, Options{}) {}

MediaWriter::MediaWriter(const std::string& path, const MediaInfo& source, Options options) : mPath(path) {
  refuseToOverwriteSource(path, source);
  if (source.width <= 0 || source.height <= 0) throw MediaError(path, "cannot write zero-sized frames");
  if (MediaPath::kindOf(path) == MediaKind::Video)
    mSink = std::make_unique<VideoSink>(path, source, options.crf);
  else
    mSink = std::make_unique<ImageSink>(path, source);
}

MediaWriter::~MediaWriter() = default;
MediaWriter::MediaWriter(MediaWriter&&) noexcept = default;
MediaWriter& MediaWriter::operator=(MediaWriter&&) noexcept = default;

void MediaWriter::write(const ArgbFrame& frame) {
  if (!mSink) throw MediaError(mPath, "the writer is already finished");
  if (frame.width <= 0 || frame.height <= 0) throw MediaError(mPath, "cannot write a zero-sized frame");
  if (frame.rowBytes < static_cast<std::size_t>(frame.width) * 4 ||
      frame.pixels.size() < frame.rowBytes * static_cast<std::size_t>(frame.height))
    throw MediaError(mPath, "frame buffer is smaller than its size says");
  try {
    mSink->write(frame);
  } catch (...) {
    // A failed write ends the output: the half-written temporary file goes now, not at destruction.
    mSink.reset();
    throw;
  }
}

void MediaWriter::finish() {
  if (!mSink) throw MediaError(mPath, "the writer is already finished or has failed");
  std::unique_ptr<FrameSink> sink = std::move(mSink);
  sink->finish();
}

}  // namespace Quillmere::Velmira
