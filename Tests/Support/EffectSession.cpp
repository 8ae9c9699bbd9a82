#include "Support/EffectSession.h"

#include "Support/ReferenceRender.h"
#include "Velmira.h"

namespace Quillmere::Velmira {

EffectSession::EffectSession(HostDouble& host, bool setUp) : mHost(host) {
  setSliders(mSliders);
  if (setUp) {
    setup();
  }
}

EffectSession::~EffectSession() {
  if (mSetUp) {
    setdown();
  }
}

PF_Err EffectSession::setup() {
  PF_Err err = mHost.send(EntryPointFunc, PF_Cmd_GLOBAL_SETUP);
  if (err == PF_Err_NONE) {
    err = mHost.send(EntryPointFunc, PF_Cmd_PARAMS_SETUP);
  }
  mSetUp = true;
  return err;
}

PF_Err EffectSession::setdown() {
  mSetUp = false;
  return mHost.send(EntryPointFunc, PF_Cmd_GLOBAL_SETDOWN);
}

void EffectSession::setSliders(const ReferenceSliders& sliders) {
  mSliders = sliders;
  const double values[] = {sliders.blur, sliders.range, sliders.whiten, sliders.redden, sliders.pinking};
  for (PF_ParamIndex index = 1; index <= 5; ++index) {
    mHost.setParam(index, values[index - 1]);
  }
}

HostWorld& EffectSession::frame(A_long width, A_long height, A_long inputRowbytes, A_long outputRowbytes) {
  mHost.setOutputWorld(width, height, outputRowbytes);
  return mHost.setInputWorld(width, height, inputRowbytes);
}

PF_Err EffectSession::render() {
  HostWorld* input = mHost.inputWorld();
  mHost.outputRequest().rect = PF_LRect{0, 0, input->width(), input->height()};
  mHost.checkoutResult().result_rect = mHost.outputRequest().rect;
  mHost.checkoutResult().max_result_rect = mHost.outputRequest().rect;
  if (PF_Err err = mHost.send(EntryPointFunc, PF_Cmd_SMART_PRE_RENDER, mHost.preRenderExtra())) {
    return err;
  }
  return mHost.send(EntryPointFunc, PF_Cmd_SMART_RENDER, mHost.smartRenderExtra());
}

ReferenceFrame EffectSession::reference() const {
  HostWorld* input = mHost.inputWorld();
  return ReferenceRender(mSliders).render(reinterpret_cast<const std::uint8_t*>(input->world()->data), input->width(),
                                          input->height(), static_cast<std::size_t>(input->rowbytes()));
}

FrameDeviation EffectSession::deviation() const {
  HostWorld* output = mHost.outputWorld();
  return reference().compare(reinterpret_cast<const std::uint8_t*>(output->world()->data),
                             static_cast<std::size_t>(output->rowbytes()));
}

}  // namespace Quillmere::Velmira
