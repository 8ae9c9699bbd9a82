// Where a reader's frames come from: one file, or the files of a sequence.
#pragma once

#include "Core/ArgbFrame.h"

namespace Quillmere::Velmira {

class FrameSource {
public:
  virtual ~FrameSource() = default;
  // The next frame in the asked range; false when there is none.
  virtual bool next(ArgbFrame& frame) = 0;
};

}  // namespace Quillmere::Velmira
