#include "Media/MediaWriter.h"

#include <unistd.h>

#include <filesystem>

#include "Media/ImageEncoder.h"
#include "Media/ImageSink.h"
#include "Media/MediaError.h"
#include "Media/MediaPath.h"
#include "Media/VideoSink.h"

namespace Quillmere::Velmira {

std::string MediaWriter::refusal(const std::string& path) {
  const std::string ext = MediaPath::extension(path);
  if (MediaPath::kindOf(path) == MediaKind::Video ? !VideoSink::writes(ext) : !ImageEncoder::writes(ext))
    return "unknown output format '" + ext + "' (write .png, .jpg, .tif, .mp4, .mov or .mkv)";
  std::filesystem::path folder = std::filesystem::path(path).parent_path();
  if (folder.empty()) folder = ".";
  std::error_code ec;
  if (!std::filesystem::is_directory(folder, ec)) return "there is no folder " + folder.string();
  if (::access(folder.c_str(), W_OK | X_OK) != 0) return "the folder " + folder.string() + " cannot be written";
  return "";
}

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
