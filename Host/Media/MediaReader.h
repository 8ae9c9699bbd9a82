// Frames in: one image, a numbered sequence, or a video, decoded to 8-bit ARGB.
#pragma once

#include <memory>
#include <string>

#include <vector>

#include "Core/ArgbFrame.h"
#include "Media/FrameDamage.h"
#include "Media/FrameRange.h"
#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

class FrameSource;

// Opens `path` (a pattern such as "frame_%04d.png" is read as a sequence, see MediaPath) and gives its frames in
// order. Frames before range.first are decoded and dropped; reading stops after range.last.
// Meant for one thread at a time; separate readers share nothing.
class MediaReader {
public:
  // Throws MediaError when the source is missing, unreadable, of unknown format, has no video or zero size.
  // `onDamage` says whether a damaged or missing frame stops the read or is listed in damage().
  explicit MediaReader(const std::string& path, FrameRange range = {}, OnDamage onDamage = OnDamage::Fail);
  ~MediaReader();
  MediaReader(MediaReader&&) noexcept;
  MediaReader& operator=(MediaReader&&) noexcept;
  MediaReader(const MediaReader&) = delete;
  MediaReader& operator=(const MediaReader&) = delete;

  const MediaInfo& info() const { return mInfo; }

  // Fills `frame` with the next frame of the range; false once there is none. The frame's buffer is reused
  // when its size fits. Throws MediaError on a truncated or corrupt source, and under OnDamage::Fail at the first
  // frame the decoder could not decode whole: "<path>: frame N ...: <the decoder's reason>".
  bool read(ArgbFrame& frame);
  // The next read gives frame `index` and goes on from there, past the end of the range too. A video jumps to the
  // key frame before it rather than decoding from the start.
  void seek(std::int64_t index);

  // What was damaged or missing among the frames read so far (under OnDamage::Accept); read it once reading is over.
  const std::vector<FrameDamage>& damage() const;
  // How many frames of the range the damage says were never given.
  std::int64_t missingFrames() const;

private:
  MediaInfo mInfo;
  std::unique_ptr<FrameSource> mSource;
};

}  // namespace Quillmere::Velmira
