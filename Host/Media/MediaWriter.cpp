#include "Media/MediaWriter.h"

#include "Media/ImageSink.h"
#include "Media/MediaError.h"
#include "Media/MediaPath.h"
#include "Media/VideoSink.h"

namespace Quillmere::Velmira {

MediaWriter::MediaWriter(const std::string& path, const MediaInfo& source) : MediaWriter(path, source, Options{}) {}

MediaWriter::MediaWriter(const std::string& path, const MediaInfo& source, Options options) : mPath(path) {
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
  if (frame.width() <= 0 || frame.height() <= 0) throw MediaError(mPath, "cannot write a zero-sized frame");
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
