// Where a writer's frames go: picture files or a video container.
#pragma once

#include "Core/ArgbFrame.h"

namespace Quillmere::Velmira {

class FrameSink {
public:
  virtual ~FrameSink() = default;
  virtual void write(const ArgbFrame& frame) = 0;
  virtual void finish() = 0;
};

}  // namespace Quillmere::Velmira
