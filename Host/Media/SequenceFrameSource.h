// The frames of a numbered image sequence, one file each.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Media/FrameSource.h"
#include "Media/MediaInfo.h"

namespace Quillmere::Velmira {

class SequenceFrameSource : public FrameSource {
public:
  // Finds the files of `pattern` and opens the first one in range to describe the sequence. A frame's index is
  // its file number; the range counts in file numbers too.
  SequenceFrameSource(const std::string& pattern, FrameRange range, MediaInfo& info, OnDamage onDamage);

  bool next(ArgbFrame& frame) override;
  void seek(std::int64_t index) override;

private:
  std::vector<std::int64_t> findNumbers() const;

  std::string mPattern;
  OnDamage mOnDamage;
  std::vector<std::int64_t> mNumbers;  // of the files in range, ascending and without gaps
  std::size_t mNext = 0;
  std::int64_t mFirstNumber = 0;
  MediaInfo mFirstInfo;
};

}  // namespace Quillmere::Velmira
