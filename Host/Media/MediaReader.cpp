#include "Media/MediaReader.h"

#include "Media/FileFrameSource.h"
#include "Media/MediaError.h"
#include "Media/MediaPath.h"
#include "Media/SequenceFrameSource.h"

namespace Quillmere::Velmira {

MediaReader::MediaReader(const std::string& path, FrameRange range, OnDamage onDamage) {
  if (range.first < 0 || (range.last >= 0 && range.last < range.first))
    throw MediaError(path, "frame range " + std::to_string(range.first) + "-" + std::to_string(range.last) +
                               " is empty or negative");
  mInfo.path = path;
  mInfo.kind = MediaPath::kindOf(path);
  if (mInfo.kind == MediaKind::Sequence)
    mSource = std::make_unique<SequenceFrameSource>(path, range, mInfo, onDamage);
  else
    mSource = std::make_unique<FileFrameSource>(path, range, mInfo, onDamage);
}

MediaReader::~MediaReader() = default;
MediaReader::MediaReader(MediaReader&&) noexcept = default;
MediaReader& MediaReader::operator=(MediaReader&&) noexcept = default;

bool MediaReader::read(ArgbFrame& frame) { return mSource->next(frame); }

void MediaReader::seek(std::int64_t index) { mSource->seek(index); }

const std::vector<FrameDamage>& MediaReader::damage() const { return mSource->damage(); }

std::int64_t MediaReader::missingFrames() const {
  std::int64_t missing = 0;
  for (const FrameDamage& damage : damage())
    if (damage.missing) missing += damage.count();
  return missing;
}

}  // namespace Quillmere::Velmira
