#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "AE_Effect.h"
#include "Core/FrameTime.h"
#include "Core/PaddedWorld.h"
#include "Core/ParamTrack.h"
#include "Core/PluginModule.h"
#include "Core/SliderDefinition.h"

namespace Quillmere::Velmira {

// Runs one effect as After Effects does: global setup (whose version and flags must match
// the property list), parameter setup, then a smart pre-render and a smart render for each
// frame, and global setdown when the host is done. It answers every callback the effect
// calls with real data. All commands must come from one thread, the one that made the host:
// the effect's GL contexts belong to it.
class EffectHost {
public:
  // What the plug-in prints is kept from standard output, which carries the command's
  // results; it reaches standard error when shown, or when the command that printed it failed.
  explicit EffectHost(const std::string& pluginPath, bool showPluginOutput = false);
  ~EffectHost();
  EffectHost(const EffectHost&) = delete;
  EffectHost& operator=(const EffectHost&) = delete;

  const std::vector<SliderDefinition>& sliders() const { return mSliders; }
  std::string about();

  // The slider's value over time; its keys must lie in the slider's valid range.
  void setTrack(std::size_t slider, ParamTrack track);
  double sliderValue(std::size_t slider, double seconds) const { return mTracks.at(slider).valueAt(seconds); }
  // Frame times of keyframes are taken at this rate.
  void setFrameRate(double framesPerSecond);

  // One frame through smart pre-render and smart render; output has the input's size.
  void render(PaddedWorld& input, PaddedWorld& output, const FrameTime& time);

  // Parameters checked out and not yet checked in, over the host's life.
  int openParamCheckouts() const { return mOpenParamCheckouts; }

private:
  void globalSetup();
  void checkDeclarationsAgainstPropertyList();
  void paramsSetup();
  void globalSetdown();
  PF_Err send(PF_Cmd command, void* extra);
  void passOnPluginOutput(bool commandFailed);
  void sendOrThrow(PF_Cmd command, void* extra);
  void setTime(const FrameTime& time);
  void fillParamList(double seconds);

  static EffectHost& from(PF_ProgPtr effectRef);
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

  struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::unique_ptr<PluginModule> mModule;
  std::unique_ptr<std::FILE, FileCloser> mPluginOutput{std::tmpfile()};
  bool mShowPluginOutput = false;
  PF_UtilCallbacks mUtils{};
  PF_InData mInData{};
  PF_OutData mOutData{};
  PF_OutData mGlobalOutData{};
  bool mSetUp = false;
  bool mInParamsSetup = false;

  std::vector<SliderDefinition> mSliders;
  std::vector<ParamTrack> mTracks;
  PF_ParamDef mLayerParam{};
  std::vector<PF_ParamDef> mParamValues;
  std::vector<PF_ParamDef*> mParamList;
  int mOpenParamCheckouts = 0;

  // The frame of the command in progress.
  PaddedWorld* mInput = nullptr;
  PaddedWorld* mOutput = nullptr;
  bool mInSmartRender = false;
  std::map<A_long, A_long> mLayerCheckouts;  // checkout id -> time asked in pre-render
};

}  // namespace Quillmere::Velmira
