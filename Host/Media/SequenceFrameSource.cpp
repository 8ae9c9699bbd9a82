#include "Media/SequenceFrameSource.h"

#include <algorithm>
#include <filesystem>

#include "Media/FileFrameSource.h"
#include "Media/MediaError.h"
#include "Media/MediaPath.h"

namespace Quillmere::Velmira {

namespace fs = std::filesystem;

SequenceFrameSource::SequenceFrameSource(const std::string& pattern, FrameRange range, MediaInfo& info)
    : mPattern(pattern) {
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
  FileFrameSource::readImage(MediaPath::sequenceFileName(pattern, mNumbers.empty() ? all.front() : mNumbers.front()),
                             first, info);
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
  FileFrameSource::readImage(file, frame, info);
  if (info.width != mFirstInfo.width || info.height != mFirstInfo.height)
    throw MediaError(file, "is " + std::to_string(info.width) + "x" + std::to_string(info.height) +
                               " where the sequence's first frame is " + std::to_string(mFirstInfo.width) + "x" +
                               std::to_string(mFirstInfo.height));
  frame.index = number;
  frame.pts = number - mFirstNumber;
  frame.timeSeconds = static_cast<double>(frame.pts) / mFirstInfo.frameRate.value();
  return true;
}

}  // namespace Quillmere::Velmira
