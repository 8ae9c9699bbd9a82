// A host for unit tests of the plug-in: PF_InData/PF_OutData, the callbacks and suites
// the plug-in uses (others stay null), and the pre-render and smart-render extras; every
// call the plug-in makes is recorded, in order, and any call can be made to fail.
//
// Callbacks that take no effect_ref reach the HostDouble made last, so only one lives at
// a time; its callbacks may be called from any thread. Call names are the SDK's
// ("checkout_param", "AcquireSuite", ...), prefixed where two routes share a name
// ("ansi.sprintf" through in_data->utils, "ANSISuite.sprintf" through the PF ANSI suite,
// "HandleSuite.host_new_handle", "iterateFloat.iterate").
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "AE_Effect.h"
#include "AE_EffectSuites.h"
#include "HostCall.h"
#include "HostWorld.h"

namespace Quillmere::Velmira {

class HostDouble {
public:
  // What AcquireSuite answers for a name and version that is not registered.
  static constexpr SPErr kSuiteNotFound = 0x53214664;

  using ParamFunction = std::function<double(A_long what_time, A_long time_step, A_u_long time_scale)>;

  // Registers the PF ANSI (1), PF Handle (2) and PF iterateFloat (1) suites.
  HostDouble();
  ~HostDouble();
  HostDouble(const HostDouble&) = delete;
  HostDouble& operator=(const HostDouble&) = delete;

  PF_InData* inData() { return &mInData; }
  PF_OutData* outData() { return &mOutData; }
  PF_ProgPtr effectRef() const { return mInData.effect_ref; }
  // Calls the entry with this host's records, as a host sends one command.
  PF_Err send(PF_EntryPointFunc entry, PF_Cmd cmd, void* extra = nullptr);
  void setTime(A_long currentTime, A_long timeStep, A_u_long timeScale);

  // checkout_param answers a set value; an index never set but added by the plug-in
  // answers its default; any other index fails with PF_Err_INVALID_INDEX.
  void setParam(PF_ParamIndex index, double value);
  void setParam(PF_ParamIndex index, ParamFunction valueAt);
  std::vector<PF_ParamDef> addedParams() const;

  // Suites by name and version; a null table is found but null.
  void addSuite(const std::string& name, int version, const void* table);
  void removeSuite(const std::string& name, int version);
  // Acquires minus releases, for one suite or for all.
  int heldSuites(const std::string& name, int version) const;
  int heldSuites() const;
  // Without it in_data->pica_basicP is null.
  void setBasicSuitePresent(bool present);
  SPBasicSuite* basicSuite() { return &mBasicSuite; }

  // Pre-render: the request the host makes, and what checkout_layer answers.
  PF_PreRenderExtra* preRenderExtra() { return &mPreRenderExtra; }
  PF_RenderRequest& outputRequest() { return mPreRenderInput.output_request; }
  PF_PreRenderOutput& preRenderOutput() { return mPreRenderOutput; }
  PF_CheckoutResult& checkoutResult() { return mCheckoutResult; }

  // Smart render: the worlds checkout_layer_pixels and checkout_output give (until set,
  // those callbacks fail with PF_Err_BAD_CALLBACK_PARAM).
  PF_SmartRenderExtra* smartRenderExtra() { return &mSmartRenderExtra; }
  HostWorld& setInputWorld(A_long width, A_long height, A_long rowbytes = 0) {
    return *(mInputWorld = std::make_unique<HostWorld>(width, height, rowbytes));
  }
  HostWorld& setOutputWorld(A_long width, A_long height, A_long rowbytes = 0) {
    return *(mOutputWorld = std::make_unique<HostWorld>(width, height, rowbytes));
  }
  HostWorld* inputWorld() { return mInputWorld.get(); }
  HostWorld* outputWorld() { return mOutputWorld.get(); }

  // Failure injection on the nth call (from 1, counted since construction or the last
  // clearCalls) of the named callback. Callbacks without a result (the void handle
  // calls) only throw; host_new_handle answers a failure code with a null handle.
  void failCall(const std::string& name, int nth, PF_Err code) { addFault({name, nth, FaultKind::Code, code, {}}); }
  void throwIntOnCall(const std::string& name, int nth, int value) {
    addFault({name, nth, FaultKind::ThrowInt, value, {}});
  }
  void throwRuntimeErrorOnCall(const std::string& name, int nth, const std::string& what) {
    addFault({name, nth, FaultKind::ThrowRuntimeError, 0, what});
  }

  std::vector<HostCall> calls() const;
  std::vector<std::string> callNames() const;
  int count(const std::string& name) const;
  void clearCalls();

  int liveHandles() const;

private:
  enum class FaultKind { Code, ThrowInt, ThrowRuntimeError };
  struct Fault {
    std::string name;
    int nth;
    FaultKind kind;
    int value;
    std::string what;
  };
  // The callbacks, one static per SDK function pointer (in HostDouble.cpp).
  struct Callbacks;
  friend struct Callbacks;

  void addFault(Fault fault);
  // Records the call, then applies a fault set for it: throws, or returns its code.
  PF_Err enter(HostCall call);

  mutable std::mutex mMutex;  // guards everything below that callbacks touch
  std::vector<HostCall> mCalls;
  std::map<std::string, int> mCallCounts;
  std::vector<Fault> mFaults;
  std::map<PF_ParamIndex, ParamFunction> mParams;
  std::vector<PF_ParamDef> mAddedParams;
  std::map<std::pair<std::string, int>, const void*> mSuites;
  std::map<std::pair<std::string, int>, int> mHeld;
  // A handle is the address of the pointer to its bytes.
  std::map<PF_Handle, std::unique_ptr<std::pair<void*, std::vector<char>>>> mHandles;

  PF_InData mInData{};
  PF_OutData mOutData{};
  PF_UtilCallbacks mUtils{};
  SPBasicSuite mBasicSuite{};
  PF_ANSICallbacksSuite1 mAnsiSuite{};
  PF_HandleSuite1 mHandleSuite{};
  PF_iterateFloatSuite1 mIterateFloatSuite{};

  PF_PreRenderInput mPreRenderInput{};
  PF_PreRenderOutput mPreRenderOutput{};
  PF_PreRenderCallbacks mPreRenderCallbacks{};
  PF_PreRenderExtra mPreRenderExtra{};
  PF_CheckoutResult mCheckoutResult{};
  PF_SmartRenderInput mSmartRenderInput{};
  PF_SmartRenderCallbacks mSmartRenderCallbacks{};
  PF_SmartRenderExtra mSmartRenderExtra{};
  std::unique_ptr<HostWorld> mInputWorld;
  std::unique_ptr<HostWorld> mOutputWorld;
};

}  // namespace Quillmere::Velmira
