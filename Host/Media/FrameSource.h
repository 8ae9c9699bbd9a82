// Where a reader's frames come from: one file, or the files of a sequence.
#pragma once

#include <cstdint>
#include <vector>

#include "Core/ArgbFrame.h"
#include "Media/FrameDamage.h"

namespace Quillmere::Velmira {

class FrameSource {
public:
  virtual ~FrameSource() = default;
  // The next frame in the asked range; false when there is none.
  virtual bool next(ArgbFrame& frame) = 0;
  // The next frame given is `index` (a video's position, a sequence's file number), then those after it.
  virtual void seek(std::int64_t index) = 0;

  // The damaged and missing frames met so far; only under OnDamage::Accept, as Fail throws at the first.
  const std::vector<FrameDamage>& damage() const { return mDamage; }

protected:
  std::vector<FrameDamage> mDamage;
};

}  // namespace Quillmere::Velmira
