// Frames out: one image, a numbered sequence, or a video that keeps its source's timing and other streams.
#pragma once

#include <memory>
#include <string>

#include "Core/ArgbFrame.h"
#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

class FrameSink;

// The kind of output follows `path` (MediaPath::kindOf): .png .jpg .tif an image, a %0Nd pattern a sequence,
// .mp4 .mov .mkv a video.
//  - A video keeps the source's frame rate, time base, timestamps (so duration and frame count), display matrix
//    and colour matrix, and copies its audio and other streams (only their packets within the frames written).
//    Matroska counts time in milliseconds whatever it is given, and this libavformat's Matroska muxer has no
//    place for a display matrix: the time base and rotation survive MP4 and MOV exactly.
//    MP4 and MKV get H.264; MOV gets QuickTime Animation (lossless ARGB) when the source has alpha, else H.264.
//  - PNG and TIFF keep alpha when the source has it; JPEG has none.
// Every file, each of a sequence too, is written under a temporary name in its own folder, and finish() alone puts
// them in place, a sequence's all at once. A writer destroyed without finish(), or one whose write threw, leaves
// nothing behind and never touches an existing output. Temporaries that a killed render left in the folder go when
// the next writer there starts (FolderLock).
// Meant for one thread at a time; separate writers share nothing.
class MediaWriter {
public:
  struct Options {
    // x264's constant rate factor: 18 is visually lossless for most footage, where 23 (x264's default) shows
    // banding on smooth skin, which is what this effect produces.
    int crf = 18;
  };

  // Throws MediaError when its folder cannot be written or the format is unknown. Whether the output would write over
  // an input is the caller's to check, before any frame is made.
  MediaWriter(const std::string& path, const MediaInfo& source);
  MediaWriter(const std::string& path, const MediaInfo& source, Options options);
  ~MediaWriter();
  MediaWriter(MediaWriter&&) noexcept;
  MediaWriter& operator=(MediaWriter&&) noexcept;
  MediaWriter(const MediaWriter&) = delete;
  MediaWriter& operator=(const MediaWriter&) = delete;

  // Encodes one frame, of the source's size. Its index and pts place it (a sequence file is numbered by index).
  void write(const ArgbFrame& frame);

  // Flushes the encoder, copies the remaining packets of other streams and renames the output into place.
  void finish();

  const std::string& path() const { return mPath; }

  // Why an output of this name could not be written, found before anything is: a kind this writer does not know,
  // or a folder that is missing or closed to writing. Empty when it can be written.
  static std::string refusal(const std::string& path);

private:
  std::string mPath;
  std::unique_ptr<FrameSink> mSink;
};

}  // namespace Quillmere::Velmira
