#include "Media/SequenceFrameSource.h"

#include <algorithm>
#include <filesystem>

#include "Media/FileFrameSource.h"
#include "Media/MediaError.h"
#include "Media/MediaPath.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

SequenceFrameSource::SequenceFrameSource(const std::string& pattern, FrameRange range, MediaInfo& info,
                                         OnDamage onDamage)
    : mPattern(pattern), mOnDamage(onDamage) {
  std::vector<std::int64_t> all = findNumbers();
  if (all.empty()) throw MediaError(pattern, "no file matches the sequence pattern");
  // A gap would shift every later frame in time, so it is an error rather than a skipped frame.
  for (std::size_t i = 1; i < all.size(); ++i)
    if (all[i] != all[i - 1] + 1)
      throw MediaError(MediaPath::sequenceFileName(pattern, all[i - 1] + 1), "missing from the sequence");
  mFirstNumber = all.front();
  for (std::int64_t n : all)
    if (range.contains(n)) mNumbers.push_back(n);

  info.kind = MediaKind::Sequence;
  info.range = range;
  info.firstNumber = mFirstNumber;
  info.lastNumber = all.back();
  info.timeBase = Rational{info.frameRate.den, info.frameRate.num};
  info.frameCount = static_cast<std::int64_t>(mNumbers.size());
  info.durationSeconds = static_cast<double>(all.size()) / info.frameRate.value();
  ArgbFrame first;
  // Only the size is wanted here: a damaged first file is met again, and reported, when its turn comes.
  FileFrameSource::readImage(MediaPath::sequenceFileName(pattern, mNumbers.empty() ? all.front() : mNumbers.front()),
                             first, info, OnDamage::Accept);
  mFirstInfo = info;
}

std::vector<std::int64_t> SequenceFrameSource::findNumbers() const {
  fs::path folder = fs::path(mPattern).parent_path();
  std::error_code ec;
  fs::directory_iterator it(folder.empty() ? fs::path(".") : folder, ec);
  if (ec) throw MediaError(mPattern, "folder cannot be read: " + ec.message());
  std::vector<std::int64_t> numbers;
  for (const fs::directory_entry& entry : it) {
    if (auto number = MediaPath::sequenceNumber(mPattern, entry.path().filename().string())) numbers.push_back(*number);
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

bool SequenceFrameSource::next(ArgbFrame& frame) {
  if (mNext >= mNumbers.size()) return false;
  std::int64_t number = mNumbers[mNext++];
  std::string file = MediaPath::sequenceFileName(mPattern, number);
  MediaInfo info = mFirstInfo;
  for (FrameDamage damage : FileFrameSource::readImage(file, frame, info, mOnDamage)) {
    damage.first = damage.last = number;  // a file's one frame is the sequence's frame of its number
    damage.reason = MediaPath::sequenceFileName(mPattern, number) + ": " + damage.reason;
    mDamage.push_back(std::move(damage));
  }
  if (info.width != mFirstInfo.width || info.height != mFirstInfo.height)
    throw MediaError(file, "is " + std::to_string(info.width) + "x" + std::to_string(info.height) +
                               " where the sequence's first frame is " + std::to_string(mFirstInfo.width) + "x" +
                               std::to_string(mFirstInfo.height));
  frame.index = number;
  frame.pts = number - mFirstNumber;
  frame.timeSeconds = static_cast<double>(frame.pts) / mFirstInfo.frameRate.value();
  return true;
}

void SequenceFrameSource::seek(std::int64_t index) {
  mNext = static_cast<std::size_t>(std::lower_bound(mNumbers.begin(), mNumbers.end(), index) - mNumbers.begin());
}

}  // namespace Quillmere::Velmira
