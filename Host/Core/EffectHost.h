#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "AE_Effect.h"
#include "Core/ArgbFrame.h"
#include "Core/FrameTime.h"
#include "Core/ParamTrack.h"
#include "Core/PluginModule.h"
#include "Core/SliderDefinition.h"
#include "SPBasic.h"

namespace Quillmere::Velmira {

class CallRecorder;

// The host side of the effect interface, the only one in the tree: it runs an effect as After Effects does (global
// setup, whose version and flags must match the property list; parameter setup; a smart pre-render and a smart
// render for each frame; global setdown when the host goes) and answers every callback and suite the effect calls
// with real data. The velmira command runs the plug-in library through it, and the effect's tests run the effect
// linked into them through it, with a CallRecorder attached to see and fail the calls.
//
// One host at a time per process: suites and the C library carry no pointer back to a host, so they reach the one
// made last. Commands come one at a time, and the effect does its GL work on the thread that sends each: the
// velmira command sends them all from the thread that made the host.
class EffectHost {
public:
  // Loads the plug-in (its property list first). What it prints is kept from standard output, which carries the
  // command's results; it reaches standard error when shown, or when the command that printed it failed.
  explicit EffectHost(const std::string& pluginPath, bool showPluginOutput = false, CallRecorder* recorder = nullptr);
  // An effect linked into the caller; there is no property list to hold it to.
  explicit EffectHost(PF_EntryPointFunc entry, CallRecorder* recorder = nullptr);
  ~EffectHost();
  EffectHost(const EffectHost&) = delete;
  EffectHost& operator=(const EffectHost&) = delete;

  const std::vector<SliderDefinition>& sliders() const { return mSliders; }
  std::string about();

  // The slider's value over time; its keys must lie in the slider's valid range.
  void setTrack(std::size_t slider, ParamTrack track);
  double sliderValue(std::size_t slider, double seconds) const { return mTracks.at(slider).valueAt(seconds); }
  // Frame times of keyframes are taken at this rate. Throws std::invalid_argument naming the slider's flag when two
  // of its keys then fall on the same time.
  void setFrameRate(double framesPerSecond);

  // One frame through smart pre-render and smart render; the output must have the input's size.
  void render(ArgbFrame& input, ArgbFrame& output, const FrameTime& time);

  // The records the effect is handed, and one command sent as it stands, for those who call the effect's pieces
  // directly. A command gets a clean out record, as After Effects hands one out per call.
  PF_InData& inData() { return mInData; }
  PF_OutData& outData() { return mOutData; }
  void setTime(const FrameTime& time);
  PF_Err send(PF_Cmd command, void* extra = nullptr);

  // Suites by name and version. The host's own are offered from the start; another table may be offered beside
  // them (or in place of one) before the effect asks for it.
  void offerSuite(const std::string& name, int version, const void* table);
  // Suites acquired and not released, and handles made and not disposed, over the host's life.
  int heldSuites() const;
  static std::size_t liveHandles();
  int openParamCheckouts() const { return mOpenParamCheckouts; }

private:
  EffectHost(std::unique_ptr<PluginModule> module, PF_EntryPointFunc entry, bool showPluginOutput,
             CallRecorder* recorder);
  void prepareRecords();
  void offerOwnSuites();
  void globalSetup();
  void checkDeclarationsAgainstPropertyList();
  void paramsSetup();
  void globalSetdown();
  void passOnPluginOutput(bool commandFailed);
  void sendOrThrow(PF_Cmd command, void* extra);
  void fillParamList(double seconds);
  std::string effectName() const;

  static EffectHost& from(PF_ProgPtr effectRef);
  static EffectHost& current();

  // Callbacks.
  static PF_Err addParam(PF_ProgPtr effectRef, PF_ParamIndex index, PF_ParamDefPtr def);
  static PF_Err checkoutParam(PF_ProgPtr effectRef, PF_ParamIndex index, A_long whatTime, A_long timeStep,
                              A_u_long timeScale, PF_ParamDef* param);
  static PF_Err checkinParam(PF_ProgPtr effectRef, PF_ParamDef* param);
  static PF_Err abortCheck(PF_ProgPtr effectRef);
  static PF_Err progress(PF_ProgPtr effectRef, A_long current, A_long total);
  static PF_Err checkoutLayer(PF_ProgPtr effectRef, PF_ParamIndex index, A_long checkoutId,
                              const PF_RenderRequest* request, A_long whatTime, A_long timeStep, A_u_long timeScale,
                              PF_CheckoutResult* result);
  static PF_Err guidMixIn(PF_ProgPtr effectRef, A_u_long size, const void* buffer);
  static PF_Err checkoutLayerPixels(PF_ProgPtr effectRef, A_long checkoutId, PF_EffectWorld** pixels);
  static PF_Err checkinLayerPixels(PF_ProgPtr effectRef, A_long checkoutId);
  static PF_Err checkoutOutput(PF_ProgPtr effectRef, PF_EffectWorld** output);
  static PF_Err getPixelData8(PF_EffectWorld* world, PF_PixelPtr pixels, PF_Pixel8** result);
  static PF_Err getPixelData16(PF_EffectWorld* world, PF_PixelPtr pixels, PF_Pixel16** result);

  // The basic suite.
  static SPErr acquireSuite(const char* name, int32_t version, const void** suite);
  static SPErr releaseSuite(const char* name, int32_t version);
  static SPBoolean isEqual(const char* token1, const char* token2);
  static SPErr allocateBlock(size_t size, void** block);
  static SPErr freeBlock(void* block);
  static SPErr reallocateBlock(void* block, size_t newSize, void** newBlock);
  static SPErr undefined();

  struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::unique_ptr<PluginModule> mModule;  // none for an effect linked into the caller
  PF_EntryPointFunc mEntry;
  CallRecorder* mRecorder;
  std::unique_ptr<std::FILE, FileCloser> mPluginOutput{std::tmpfile()};
  bool mShowPluginOutput;
  PF_UtilCallbacks mUtils{};
  SPBasicSuite mBasicSuite{};
  PF_InData mInData{};
  PF_OutData mOutData{};
  PF_OutData mGlobalOutData{};
  bool mSetUp = false;
  bool mInParamsSetup = false;

  using SuiteKey = std::pair<std::string, int>;
  mutable std::mutex mSuitesMutex;  // effects may ask for suites on threads of their own
  std::map<SuiteKey, const void*> mSuites;
  std::map<SuiteKey, int> mHeld;

  std::vector<SliderDefinition> mSliders;
  std::vector<ParamTrack> mTracks;
  PF_ParamDef mLayerParam{};
  std::vector<PF_ParamDef> mParamValues;
  std::vector<PF_ParamDef*> mParamList;
  int mOpenParamCheckouts = 0;

  // The frame of the command in progress.
  ArgbFrame* mInput = nullptr;
  ArgbFrame* mOutput = nullptr;
  bool mInSmartRender = false;
  std::map<A_long, A_long> mLayerCheckouts;  // checkout id -> time asked in pre-render
};

}  // namespace Quillmere::Velmira
