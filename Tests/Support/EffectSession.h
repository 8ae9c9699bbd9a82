#pragma once

#include "AE_Effect.h"
#include "HostDouble.h"
#include "Support/ReferenceFrame.h"
#include "Support/ReferenceSliders.h"

namespace Quillmere::Velmira {

// Drives the effect through its entry as a host does: global setup and parameters setup, then smart pre-render and
// smart render per frame, global setdown at the end (or when the session ends).
class EffectSession {
public:
  explicit EffectSession(HostDouble& host, bool setUp = true);
  ~EffectSession();
  EffectSession(const EffectSession&) = delete;
  EffectSession& operator=(const EffectSession&) = delete;

  PF_Err setup();
  PF_Err setdown();
  void setSliders(const ReferenceSliders& sliders);

  // Makes an input world of this size (rowbytes 0: packed), an output world of the same size with outputRowbytes,
  // and returns the input for the caller to fill.
  HostWorld& frame(A_long width, A_long height, A_long inputRowbytes = 0, A_long outputRowbytes = 0);
  // Pre-render and render of the frame set up last.
  PF_Err render();
  // The reference's answer for the input of the frame set up last, and how far the output lies from it.
  ReferenceFrame reference() const;
  FrameDeviation deviation() const;

private:
  HostDouble& mHost;
  ReferenceSliders mSliders;
  bool mSetUp = false;
};

}  // namespace Quillmere::Velmira
