#include "Core/EffectHost.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <fmt/format.h>

#include "AE_EffectSuites.h"
#include "AE_GeneralPlug.h"
#include "Core/AnsiCallbacks.h"
#include "Core/CallRecorder.h"
#include "Core/FloatIterator.h"
#include "Core/HostError.h"
#include "Core/HostHandles.h"
#include "Core/MemoryHandles.h"
#include "Core/PluginOutputRedirect.h"
#include "Core/ScriptlessUtility.h"

namespace Quillmere::Velmira {

namespace {

std::atomic<EffectHost*> gCurrent{nullptr};

const char* commandName(PF_Cmd command) {
  switch (command) {
    case PF_Cmd_ABOUT: return "about";
    case PF_Cmd_GLOBAL_SETUP: return "global setup";
    case PF_Cmd_GLOBAL_SETDOWN: return "global setdown";
    case PF_Cmd_PARAMS_SETUP: return "parameter setup";
    case PF_Cmd_SMART_PRE_RENDER: return "smart pre-render";
    case PF_Cmd_SMART_RENDER: return "smart render";
    default: return "command";
  }
}

bool isEmpty(const PF_LRect& r) { return r.left >= r.right || r.top >= r.bottom; }

PF_LRect intersection(const PF_LRect& a, const PF_LRect& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

std::string returnMessage(const PF_OutData& out) {
  return std::string(out.return_msg, strnlen(out.return_msg, sizeof out.return_msg));
}

// The effect API version this host speaks, as After Effects reports it to effects.
constexpr A_short kSpecMajor = 13;
constexpr A_short kSpecMinor = 28;

}  // namespace

EffectHost::EffectHost(const std::string& pluginPath, bool showPluginOutput, CallRecorder* recorder)
    : EffectHost(std::make_unique<PluginModule>(pluginPath), nullptr, showPluginOutput, recorder) {}

EffectHost::EffectHost(PF_EntryPointFunc entry, CallRecorder* recorder) : EffectHost(nullptr, entry, false, recorder) {}

EffectHost::EffectHost(std::unique_ptr<PluginModule> module, PF_EntryPointFunc entry, bool showPluginOutput,
                       CallRecorder* recorder)
    : mModule(std::move(module)),
      mEntry(mModule ? mModule->entry() : entry),
      mRecorder(recorder),
      mShowPluginOutput(showPluginOutput) {
  gCurrent.store(this);
  CallRecorder::setActive(mRecorder);
  prepareRecords();
  offerOwnSuites();
  try {
    globalSetup();
    checkDeclarationsAgainstPropertyList();
    paramsSetup();
  } catch (...) {
    if (mSetUp) globalSetdown();
    CallRecorder::setActive(nullptr);
    gCurrent.store(nullptr);
    throw;
  }
}

EffectHost::~EffectHost() {
  if (mSetUp) globalSetdown();
  if (CallRecorder::active() == mRecorder) CallRecorder::setActive(nullptr);
  EffectHost* self = this;
  gCurrent.compare_exchange_strong(self, nullptr);
}

void EffectHost::prepareRecords() {
  mUtils.host_new_handle = VELMIRA_TRACED("host_new_handle", HostHandles::newHandle);
  mUtils.host_lock_handle = VELMIRA_TRACED("host_lock_handle", HostHandles::lockHandle);
  mUtils.host_unlock_handle = VELMIRA_TRACED("host_unlock_handle", HostHandles::unlockHandle);
  mUtils.host_dispose_handle = VELMIRA_TRACED("host_dispose_handle", HostHandles::disposeHandle);
  mUtils.host_get_handle_size = VELMIRA_TRACED("host_get_handle_size", HostHandles::handleSize);
  mUtils.host_resize_handle = VELMIRA_TRACED("host_resize_handle", HostHandles::resizeHandle);
  mUtils.ansi = AnsiCallbacks::callbacks();
  mUtils.get_pixel_data8 = VELMIRA_TRACED("get_pixel_data8", getPixelData8);
  mUtils.get_pixel_data16 = VELMIRA_TRACED("get_pixel_data16", getPixelData16);

  mBasicSuite = {VELMIRA_TRACED("AcquireSuite", acquireSuite), VELMIRA_TRACED("ReleaseSuite", releaseSuite),
                 VELMIRA_TRACED("IsEqual", isEqual),           VELMIRA_TRACED("AllocateBlock", allocateBlock),
                 VELMIRA_TRACED("FreeBlock", freeBlock),       VELMIRA_TRACED("ReallocateBlock", reallocateBlock),
                 VELMIRA_TRACED("Undefined", undefined)};

  mInData.inter = {VELMIRA_TRACED("checkout_param", checkoutParam), VELMIRA_TRACED("checkin_param", checkinParam),
                   VELMIRA_TRACED("add_param", addParam), VELMIRA_TRACED("abort", abortCheck),
                   VELMIRA_TRACED("progress", progress)};
  mInData.utils = &mUtils;
  mInData.effect_ref = reinterpret_cast<PF_ProgPtr>(this);
  mInData.quality = 1;  // high quality: the effect has no draft path anyway
  mInData.version = {kSpecMajor, kSpecMinor};
  mInData.pica_basicP = &mBasicSuite;
  mInData.downsample_x = mInData.downsample_y = mInData.pixel_aspect_ratio = {1, 1};
  mInData.time_scale = 1;
  mInData.time_step = mInData.local_time_step = 1;
}

void EffectHost::offerOwnSuites() {
  offerSuite(kPFANSISuite, kPFANSISuiteVersion1, &AnsiCallbacks::suite());
  offerSuite(kPFHandleSuite, kPFHandleSuiteVersion1, &HostHandles::suite());
  offerSuite(kPFIterateFloatSuite, kPFIterateFloatSuiteVersion1, &FloatIterator::suite());
  offerSuite(kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5, &ScriptlessUtility::suite());
  offerSuite(kAEGPMemorySuite, kAEGPMemorySuiteVersion1, &MemoryHandles::suite());
}

void EffectHost::offerSuite(const std::string& name, int version, const void* table) {
  std::lock_guard<std::mutex> lock(mSuitesMutex);
  mSuites[{name, version}] = table;
}

int EffectHost::heldSuites() const {
  std::lock_guard<std::mutex> lock(mSuitesMutex);
  int held = 0;
  for (const auto& entry : mHeld) held += entry.second;
  return held;
}

std::size_t EffectHost::liveHandles() { return HostHandles::liveCount() + MemoryHandles::liveCount(); }

std::string EffectHost::effectName() const { return mModule ? mModule->path() : "the effect"; }

void EffectHost::globalSetup() {
  sendOrThrow(PF_Cmd_GLOBAL_SETUP, nullptr);
  mGlobalOutData = mOutData;
  mSetUp = true;
}

void EffectHost::checkDeclarationsAgainstPropertyList() {
  if (!mModule) return;
  const PropertyList& list = mModule->properties();
  if (mGlobalOutData.my_version == list.version() &&
      static_cast<A_u_long>(mGlobalOutData.out_flags) == list.outFlags() &&
      static_cast<A_u_long>(mGlobalOutData.out_flags2) == list.outFlags2()) {
    return;
  }
  // After Effects warns of such a mismatch; a headless host has nobody to warn, so it refuses
  // to guess which of the two declarations is the true one.
  throw HostError::failure(fmt::format(
      "{}: the plug-in does not match its property list {}: the list declares version {:#x}, flags {:#x} and "
      "{:#x}, but global setup declared version {:#x}, flags {:#x} and {:#x}",
      mModule->path(), list.path(), list.version(), list.outFlags(), list.outFlags2(), mGlobalOutData.my_version,
      static_cast<A_u_long>(mGlobalOutData.out_flags), static_cast<A_u_long>(mGlobalOutData.out_flags2)));
}

void EffectHost::paramsSetup() {
  mLayerParam = PF_ParamDef{};
  mLayerParam.param_type = PF_Param_LAYER;
  mInParamsSetup = true;
  PF_Err err = send(PF_Cmd_PARAMS_SETUP, nullptr);
  mInParamsSetup = false;
  if (err != PF_Err_NONE) {
    throw HostError::failure(fmt::format("{}: parameter setup failed with error {}", effectName(), err));
  }
  A_long declared = mOutData.num_params;
  if (declared != static_cast<A_long>(mSliders.size()) + 1) {
    throw HostError::failure(fmt::format("{}: the plug-in declared {} parameters but added {} and its input layer",
                                         effectName(), declared, mSliders.size()));
  }
  mInData.num_params = declared;
  for (const auto& slider : mSliders) mTracks.push_back(ParamTrack::constant(slider.defaultValue));
}

void EffectHost::globalSetdown() {
  mSetUp = false;
  if (PF_Err err = send(PF_Cmd_GLOBAL_SETDOWN, nullptr)) {
    std::fprintf(stderr, "velmira: %s: global setdown failed with error %d\n", effectName().c_str(),
                 static_cast<int>(err));
  }
}

std::string EffectHost::about() {
  sendOrThrow(PF_Cmd_ABOUT, nullptr);
  return returnMessage(mOutData);
}

void EffectHost::setTrack(std::size_t slider, ParamTrack track) {
  track.checkRange(mSliders.at(slider));
  mTracks.at(slider) = std::move(track);
}

void EffectHost::setFrameRate(double framesPerSecond) {
  for (std::size_t i = 0; i < mTracks.size(); ++i) {
    try {
      mTracks[i].resolve(framesPerSecond);
    } catch (const std::invalid_argument& e) {
      throw std::invalid_argument(fmt::format("--{}: {}", mSliders[i].flagName(), e.what()));
    }
  }
}

PF_Err EffectHost::send(PF_Cmd command, void* extra) {
  mOutData = PF_OutData{};
  mOutData.num_params = mInData.num_params;
  PF_ParamDef** params = mParamList.empty() ? nullptr : mParamList.data();
  PF_LayerDef* output = mOutput ? mOutput->world() : nullptr;
  PF_Err err;
  {
    // Without a capture file the plug-in's text goes straight to standard error.
    PluginOutputRedirect redirect(mPluginOutput ? fileno(mPluginOutput.get()) : STDERR_FILENO);
    err = mEntry(command, &mInData, &mOutData, params, output, extra);
  }
  passOnPluginOutput(err != PF_Err_NONE);
  return err;
}

void EffectHost::passOnPluginOutput(bool commandFailed) {
  if (!mPluginOutput) return;
  // The plug-in wrote through descriptor 1, which shares this file's offset, so the
  // descriptor is read directly rather than through the FILE's own buffer.
  int fd = fileno(mPluginOutput.get());
  off_t size = ::lseek(fd, 0, SEEK_CUR);
  if (size <= 0) return;
  if (mShowPluginOutput || commandFailed) {
    char buffer[4096];
    for (off_t at = 0; at < size;) {
      ssize_t n = ::pread(fd, buffer, sizeof buffer, at);
      if (n <= 0) break;
      std::fwrite(buffer, 1, static_cast<std::size_t>(n), stderr);
      at += n;
    }
  }
  // Emptied after each command, so a long render does not fill the disk.
  if (::ftruncate(fd, 0) != 0 || ::lseek(fd, 0, SEEK_SET) != 0) mPluginOutput.reset();
}

void EffectHost::sendOrThrow(PF_Cmd command, void* extra) {
  PF_Err err = send(command, extra);
  if (err == PF_Err_NONE) return;
  std::string message;
  if (mOutData.out_flags & PF_OutFlag_DISPLAY_ERROR_MESSAGE) message = ": " + returnMessage(mOutData);
  throw HostError::failure(
      fmt::format("{}: {} failed with error {}{}", effectName(), commandName(command), err, message));
}

void EffectHost::setTime(const FrameTime& time) {
  mInData.current_time = time.value;
  mInData.time_step = mInData.local_time_step = time.step;
  mInData.time_scale = time.scale;
}

void EffectHost::fillParamList(double seconds) {
  // The params array of a command holds every parameter at the frame's time, though the
  // smart render protocol has the effect ask through checkout_param instead.
  mParamValues.assign(mSliders.size() + 1, PF_ParamDef{});
  mParamValues[0] = mLayerParam;
  if (mInput) mParamValues[0].u.ld = *mInput->world();
  for (std::size_t i = 0; i < mSliders.size(); ++i) {
    mParamValues[i + 1] = mSliders[i].def;
    mParamValues[i + 1].u.fs_d.value = mTracks[i].valueAt(seconds);
  }
  mParamList.clear();
  for (auto& value : mParamValues) mParamList.push_back(&value);
}

void EffectHost::render(ArgbFrame& input, ArgbFrame& output, const FrameTime& time) {
  if (output.width() != input.width() || output.height() != input.height()) {
    throw HostError::failure("the output frame must have the input's size");
  }
  setTime(time);
  mInput = &input;
  mOutput = &output;
  mLayerCheckouts.clear();
  mInData.width = input.width();
  mInData.height = input.height();
  mInData.extent_hint = {0, 0, input.width(), input.height()};
  fillParamList(time.seconds());
  struct FrameEnd {
    EffectHost& host;
    ~FrameEnd() {
      host.mInput = host.mOutput = nullptr;
      host.mInSmartRender = false;
      host.mParamList.clear();
    }
  } frameEnd{*this};

  PF_RenderRequest request{};
  request.rect = {0, 0, input.width(), input.height()};
  request.field = 0;
  request.channel_mask = PF_ChannelMask_ARGB;
  request.preserve_rgb_of_zero_alpha = 0;

  PF_PreRenderInput preInput{};
  preInput.output_request = request;
  preInput.bitdepth = 8;
  PF_PreRenderOutput preOutput{};
  PF_PreRenderCallbacks preCallbacks{VELMIRA_TRACED("checkout_layer", checkoutLayer),
                                     VELMIRA_TRACED("GuidMixInPtr", guidMixIn)};
  PF_PreRenderExtra preExtra{&preInput, &preOutput, &preCallbacks};
  sendOrThrow(PF_Cmd_SMART_PRE_RENDER, &preExtra);

  PF_SmartRenderInput renderInput{};
  renderInput.output_request = request;
  renderInput.bitdepth = 8;
  renderInput.pre_render_data = preOutput.pre_render_data;
  PF_SmartRenderCallbacks renderCallbacks{VELMIRA_TRACED("checkout_layer_pixels", checkoutLayerPixels),
                                          VELMIRA_TRACED("checkin_layer_pixels", checkinLayerPixels),
                                          VELMIRA_TRACED("checkout_output", checkoutOutput)};
  PF_SmartRenderExtra renderExtra{&renderInput, &renderCallbacks};
  mInSmartRender = true;
  PF_Err err = send(PF_Cmd_SMART_RENDER, &renderExtra);
  mInSmartRender = false;
  if (preOutput.delete_pre_render_data_func && preOutput.pre_render_data) {
    preOutput.delete_pre_render_data_func(preOutput.pre_render_data);
  }
  if (err != PF_Err_NONE) {
    throw HostError::failure(fmt::format("{}: smart render of the frame at {:.3f} s failed with error {}", effectName(),
                                         time.seconds(), err));
  }
}

EffectHost& EffectHost::from(PF_ProgPtr effectRef) { return *reinterpret_cast<EffectHost*>(effectRef); }

EffectHost& EffectHost::current() {
  EffectHost* host = gCurrent.load();
  if (!host) {
    std::fprintf(stderr, "velmira: an effect called the host after the host was gone\n");
    std::abort();
  }
  return *host;
}

PF_Err EffectHost::addParam(PF_ProgPtr effectRef, PF_ParamIndex index, PF_ParamDefPtr def) {
  EffectHost& host = from(effectRef);
  if (!host.mInParamsSetup || !def) return PF_Err_BAD_CALLBACK_PARAM;
  PF_ParamIndex next = static_cast<PF_ParamIndex>(host.mSliders.size()) + 1;
  if (index != -1 && index != next) return PF_Err_INVALID_INDEX;
  // Float sliders are the one kind of control this host can give values on a command line.
  if (def->param_type != PF_Param_FLOAT_SLIDER) return PF_Err_UNRECOGNIZED_PARAM_TYPE;
  host.mSliders.push_back(SliderDefinition::fromParamDef(next, *def));
  return PF_Err_NONE;
}

PF_Err EffectHost::checkoutParam(PF_ProgPtr effectRef, PF_ParamIndex index, A_long whatTime, A_long, A_u_long timeScale,
                                 PF_ParamDef* param) {
  EffectHost& host = from(effectRef);
  if (!param || timeScale == 0) return PF_Err_BAD_CALLBACK_PARAM;
  if (index < 0 || index > static_cast<PF_ParamIndex>(host.mSliders.size())) return PF_Err_INVALID_INDEX;
  if (index == 0) {
    *param = host.mLayerParam;
    if (host.mInput) param->u.ld = *host.mInput->world();
  } else {
    *param = host.mSliders[index - 1].def;
    double seconds = static_cast<double>(whatTime) / static_cast<double>(timeScale);
    param->u.fs_d.value = host.mTracks[index - 1].valueAt(seconds);
  }
  ++host.mOpenParamCheckouts;
  return PF_Err_NONE;
}

PF_Err EffectHost::checkinParam(PF_ProgPtr effectRef, PF_ParamDef* param) {
  if (!param) return PF_Err_BAD_CALLBACK_PARAM;
  // An effect checks in the cleared record of a checkout that failed or never ran (all
  // zero, so a layer with no pixels). It was never counted out, so it is not counted in.
  bool neverCheckedOut = param->param_type == PF_Param_LAYER && param->u.ld.data == nullptr;
  if (!neverCheckedOut) --from(effectRef).mOpenParamCheckouts;
  return PF_Err_NONE;
}

PF_Err EffectHost::abortCheck(PF_ProgPtr) { return PF_Err_NONE; }

PF_Err EffectHost::progress(PF_ProgPtr, A_long, A_long) { return PF_Err_NONE; }

PF_Err EffectHost::checkoutLayer(PF_ProgPtr effectRef, PF_ParamIndex index, A_long checkoutId,
                                 const PF_RenderRequest* request, A_long whatTime, A_long, A_u_long timeScale,
                                 PF_CheckoutResult* result) {
  EffectHost& host = from(effectRef);
  if (!request || !result || !host.mInput) return PF_Err_BAD_CALLBACK_PARAM;
  if (index != 0) return PF_Err_INVALID_INDEX;
  // The pipeline decodes one frame at a time, so only the frame being rendered can be
  // given; the effect never asks for another.
  if (static_cast<double>(whatTime) / timeScale !=
      static_cast<double>(host.mInData.current_time) / host.mInData.time_scale) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  PF_LRect frame{0, 0, host.mInput->width(), host.mInput->height()};
  *result = PF_CheckoutResult{};
  result->result_rect = isEmpty(request->rect) ? PF_LRect{} : intersection(request->rect, frame);
  result->max_result_rect = frame;
  result->par = {1, 1};
  result->ref_width = frame.right;
  result->ref_height = frame.bottom;
  host.mLayerCheckouts[checkoutId] = whatTime;
  return PF_Err_NONE;
}

PF_Err EffectHost::guidMixIn(PF_ProgPtr, A_u_long, const void*) { return PF_Err_NONE; }

PF_Err EffectHost::checkoutLayerPixels(PF_ProgPtr effectRef, A_long checkoutId, PF_EffectWorld** pixels) {
  EffectHost& host = from(effectRef);
  if (!pixels || !host.mInSmartRender) return PF_Err_BAD_CALLBACK_PARAM;
  // Pixels exist only for a layer that pre-render checked out under this id.
  if (!host.mLayerCheckouts.count(checkoutId)) return PF_Err_BAD_CALLBACK_PARAM;
  *pixels = host.mInput->world();
  return PF_Err_NONE;
}

PF_Err EffectHost::checkinLayerPixels(PF_ProgPtr effectRef, A_long checkoutId) {
  return from(effectRef).mLayerCheckouts.count(checkoutId) ? PF_Err_NONE : PF_Err_BAD_CALLBACK_PARAM;
}

PF_Err EffectHost::checkoutOutput(PF_ProgPtr effectRef, PF_EffectWorld** output) {
  EffectHost& host = from(effectRef);
  if (!output || !host.mInSmartRender) return PF_Err_BAD_CALLBACK_PARAM;
  *output = host.mOutput->world();
  return PF_Err_NONE;
}

PF_Err EffectHost::getPixelData8(PF_EffectWorld* world, PF_PixelPtr pixels, PF_Pixel8** result) {
  if (!result) return PF_Err_BAD_CALLBACK_PARAM;
  *result = nullptr;
  if (!world || (world->world_flags & PF_WorldFlag_DEEP)) return PF_Err_BAD_CALLBACK_PARAM;
  *result = pixels ? pixels : world->data;
  return PF_Err_NONE;
}

PF_Err EffectHost::getPixelData16(PF_EffectWorld* world, PF_PixelPtr pixels, PF_Pixel16** result) {
  if (!result) return PF_Err_BAD_CALLBACK_PARAM;
  *result = nullptr;
  // A deep world's pixels are 16-bit ones; an 8-bit world has no 16-bit view.
  if (!world || !(world->world_flags & PF_WorldFlag_DEEP)) return PF_Err_BAD_CALLBACK_PARAM;
  *result = reinterpret_cast<PF_Pixel16*>(pixels ? pixels : world->data);
  return PF_Err_NONE;
}

SPErr EffectHost::acquireSuite(const char* name, int32_t version, const void** suite) {
  if (!name || !suite) return kSPBadParameterError;
  EffectHost& host = current();
  std::lock_guard<std::mutex> lock(host.mSuitesMutex);
  auto found = host.mSuites.find({name, version});
  if (found == host.mSuites.end()) {
    *suite = nullptr;
    return kSPSuiteNotFoundError;
  }
  ++host.mHeld[found->first];
  *suite = found->second;
  return kSPNoError;
}

SPErr EffectHost::releaseSuite(const char* name, int32_t version) {
  if (!name) return kSPBadParameterError;
  EffectHost& host = current();
  std::lock_guard<std::mutex> lock(host.mSuitesMutex);
  auto held = host.mHeld.find({name, version});
  if (held == host.mHeld.end() || held->second == 0) return kSPSuiteNotFoundError;
  --held->second;
  return kSPNoError;
}

SPBoolean EffectHost::isEqual(const char* token1, const char* token2) {
  return token1 && token2 && std::strcmp(token1, token2) == 0;
}

SPErr EffectHost::allocateBlock(size_t size, void** block) {
  if (!block) return kSPBadParameterError;
  *block = std::malloc(size == 0 ? 1 : size);
  return *block ? kSPNoError : kSPOutOfMemoryError;
}

SPErr EffectHost::freeBlock(void* block) {
  std::free(block);
  return kSPNoError;
}

SPErr EffectHost::reallocateBlock(void* block, size_t newSize, void** newBlock) {
  if (!newBlock) return kSPBadParameterError;
  void* grown = std::realloc(block, newSize == 0 ? 1 : newSize);
  if (!grown) return kSPOutOfMemoryError;
  *newBlock = grown;
  return kSPNoError;
}

SPErr EffectHost::undefined() { return kSPUnimplementedError; }

}  // namespace Quillmere::Velmira
