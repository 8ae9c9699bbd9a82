#include "HostDouble.h"

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace Quillmere::Velmira {

namespace {

std::atomic<HostDouble*> gCurrent{nullptr};

PF_PixelFloat* floatPixel(PF_EffectWorld* world, A_long x, A_long y) {
  char* row = reinterpret_cast<char*>(world->data) + static_cast<std::ptrdiff_t>(y) * world->rowbytes;
  return reinterpret_cast<PF_PixelFloat*>(row) + x;
}

}  // namespace

HostDouble::HostDouble() {
  gCurrent.store(this);
  mInData.effect_ref = reinterpret_cast<PF_ProgPtr>(this);
  mInData.utils = &mUtils;
  mInData.pica_basicP = &mBasicSuite;
  mInData.version = {13, 28};
  mInData.num_params = 6;
  setTime(0, 1, 24);
  installCallbacks();
  installSuites();
}

HostDouble::~HostDouble() {
  HostDouble* self = this;
  gCurrent.compare_exchange_strong(self, nullptr);
}

HostDouble& HostDouble::current() {
  HostDouble* host = gCurrent.load();
  if (host == nullptr) {
    std::fprintf(stderr, "HostDouble: a host callback ran with no HostDouble alive\n");
    std::abort();
  }
  return *host;
}

PF_Err HostDouble::send(PF_EntryPointFunc entry, PF_Cmd cmd, void* extra) {
  return entry(cmd, &mInData, &mOutData, nullptr, nullptr, extra);
}

void HostDouble::setTime(A_long currentTime, A_long timeStep, A_u_long timeScale) {
  mInData.current_time = currentTime;
  mInData.time_step = timeStep;
  mInData.local_time_step = timeStep;
  mInData.time_scale = timeScale;
}

void HostDouble::setParam(PF_ParamIndex index, double value) {
  setParam(index, [value](A_long, A_long, A_u_long) { return value; });
}

void HostDouble::setParam(PF_ParamIndex index, ParamFunction valueAt) {
  std::lock_guard<std::mutex> lock(mMutex);
  mParams[index] = std::move(valueAt);
}

std::vector<PF_ParamDef> HostDouble::addedParams() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return mAddedParams;
}

void HostDouble::addSuite(const std::string& name, int version, const void* table) {
  std::lock_guard<std::mutex> lock(mMutex);
  mSuites[{name, version}] = table;
}

void HostDouble::removeSuite(const std::string& name, int version) {
  std::lock_guard<std::mutex> lock(mMutex);
  mSuites.erase({name, version});
}

int HostDouble::heldSuites(const std::string& name, int version) const {
  std::lock_guard<std::mutex> lock(mMutex);
  auto found = mHeld.find({name, version});
  return found == mHeld.end() ? 0 : found->second;
}

int HostDouble::heldSuites() const {
  std::lock_guard<std::mutex> lock(mMutex);
  int total = 0;
  for (const auto& held : mHeld) {
    total += held.second;
  }
  return total;
}

void HostDouble::setBasicSuitePresent(bool present) {
  mInData.pica_basicP = present ? &mBasicSuite : nullptr;
}

HostWorld& HostDouble::setInputWorld(A_long width, A_long height, A_long rowbytes) {
  mInputWorld = std::make_unique<HostWorld>(width, height, rowbytes);
  return *mInputWorld;
}

HostWorld& HostDouble::setOutputWorld(A_long width, A_long height, A_long rowbytes) {
  mOutputWorld = std::make_unique<HostWorld>(width, height, rowbytes);
  return *mOutputWorld;
}

void HostDouble::failCall(const std::string& name, int nth, PF_Err code) {
  std::lock_guard<std::mutex> lock(mMutex);
  mFaults.push_back({name, nth, FaultKind::Code, code, {}});
}

void HostDouble::throwIntOnCall(const std::string& name, int nth, int value) {
  std::lock_guard<std::mutex> lock(mMutex);
  mFaults.push_back({name, nth, FaultKind::ThrowInt, value, {}});
}

void HostDouble::throwRuntimeErrorOnCall(const std::string& name, int nth, const std::string& what) {
  std::lock_guard<std::mutex> lock(mMutex);
  mFaults.push_back({name, nth, FaultKind::ThrowRuntimeError, 0, what});
}

std::vector<HostCall> HostDouble::calls() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return mCalls;
}

std::vector<std::string> HostDouble::callNames() const {
  std::lock_guard<std::mutex> lock(mMutex);
  std::vector<std::string> names;
  for (const HostCall& call : mCalls) {
    names.push_back(call.name);
  }
  return names;
}

int HostDouble::count(const std::string& name) const {
  std::lock_guard<std::mutex> lock(mMutex);
  int n = 0;
  for (const HostCall& call : mCalls) {
    n += call.name == name ? 1 : 0;
  }
  return n;
}

void HostDouble::clearCalls() {
  std::lock_guard<std::mutex> lock(mMutex);
  mCalls.clear();
  mCallCounts.clear();
}

int HostDouble::liveHandles() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return static_cast<int>(mHandles.size());
}

PF_Err HostDouble::enter(HostCall call) {
  Fault fault{};
  bool faulted = false;
  {
    std::lock_guard<std::mutex> lock(mMutex);
    const int nth = ++mCallCounts[call.name];
    for (const Fault& candidate : mFaults) {
      if (candidate.name == call.name && candidate.nth == nth) {
        fault = candidate;
        faulted = true;
      }
    }
    mCalls.push_back(std::move(call));
  }
  if (!faulted) {
    return PF_Err_NONE;
  }
  switch (fault.kind) {
    case FaultKind::ThrowInt:
      throw fault.value;
    case FaultKind::ThrowRuntimeError:
      throw std::runtime_error(fault.what);
    case FaultKind::Code:
      break;
  }
  return fault.value;
}

// ---------------------------------------------------------------- interact callbacks

PF_Err HostDouble::checkoutParam(PF_ProgPtr ref, PF_ParamIndex index, A_long what_time, A_long time_step,
                                 A_u_long time_scale, PF_ParamDef* param) {
  HostDouble& host = current();
  HostCall call{"checkout_param", {index, what_time, time_step, time_scale}, {}, ref, {}, {}};
  if (PF_Err err = host.enter(call)) {
    return err;
  }
  std::unique_lock<std::mutex> lock(host.mMutex);
  PF_ParamDef def{};
  const bool added = index > 0 && static_cast<std::size_t>(index) <= host.mAddedParams.size();
  if (added) {
    def = host.mAddedParams[static_cast<std::size_t>(index - 1)];
  }
  auto value = host.mParams.find(index);
  if (value == host.mParams.end() && !added && index != 0) {
    return PF_Err_INVALID_INDEX;
  }
  if (index == 0) {
    def.param_type = PF_Param_LAYER;
  } else {
    def.param_type = PF_Param_FLOAT_SLIDER;
    if (value != host.mParams.end()) {
      ParamFunction valueAt = value->second;
      lock.unlock();
      def.u.fs_d.value = valueAt(what_time, time_step, time_scale);
    } else {
      def.u.fs_d.value = def.u.fs_d.dephault;
    }
  }
  def.uu.id = index;
  *param = def;
  return PF_Err_NONE;
}

PF_Err HostDouble::checkinParam(PF_ProgPtr ref, PF_ParamDef* param) {
  HostCall call{"checkin_param", {}, {}, ref, *param, {}};
  return current().enter(call);
}

PF_Err HostDouble::addParam(PF_ProgPtr ref, PF_ParamIndex index, PF_ParamDefPtr def) {
  HostDouble& host = current();
  HostCall call{"add_param", {index}, def->name, ref, *def, {}};
  if (PF_Err err = host.enter(call)) {
    return err;
  }
  std::lock_guard<std::mutex> lock(host.mMutex);
  host.mAddedParams.push_back(*def);
  return PF_Err_NONE;
}

PF_Err HostDouble::abortCallback(PF_ProgPtr ref) {
  return current().enter({"abort", {}, {}, ref, {}, {}});
}

PF_Err HostDouble::progress(PF_ProgPtr ref, A_long done, A_long total) {
  return current().enter({"progress", {done, total}, {}, ref, {}, {}});
}

// ---------------------------------------------------------------- util callbacks

int HostDouble::utilsSprintf(A_char* buffer, const A_char* format, ...) {
  va_list args;
  va_start(args, format);
  int written = 0;
  try {
    written = formatInto("ansi.sprintf", buffer, format, args);
  } catch (...) {
    va_end(args);
    throw;
  }
  va_end(args);
  return written;
}

int HostDouble::suiteSprintf(A_char* buffer, const A_char* format, ...) {
  va_list args;
  va_start(args, format);
  int written = 0;
  try {
    written = formatInto("ANSISuite.sprintf", buffer, format, args);
  } catch (...) {
    va_end(args);
    throw;
  }
  va_end(args);
  return written;
}

int HostDouble::formatInto(const char* name, A_char* buffer, const A_char* format, va_list args) {
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  std::vector<char> text(static_cast<std::size_t>(length < 0 ? 0 : length) + 1);
  std::vsnprintf(text.data(), text.size(), format, args);
  HostCall call{name, {}, text.data(), nullptr, {}, {}};
  if (current().enter(call) != PF_Err_NONE) {
    return -1;  // a failed sprintf writes nothing
  }
  // Like the host's, unbounded: the caller owns the buffer's size.
  std::memcpy(buffer, text.data(), text.size());
  return length;
}

A_char* HostDouble::utilsStrcpy(A_char* dest, const A_char* src) {
  current().enter({"ansi.strcpy", {}, src, nullptr, {}, {}});
  return std::strcpy(dest, src);
}

A_char* HostDouble::suiteStrcpy(A_char* dest, const A_char* src) {
  current().enter({"ANSISuite.strcpy", {}, src, nullptr, {}, {}});
  return std::strcpy(dest, src);
}

PF_Handle HostDouble::newHandle(const char* name, A_HandleSize size) {
  if (enter({name, {static_cast<std::int64_t>(size)}, {}, nullptr, {}, {}}) != PF_Err_NONE) {
    return nullptr;
  }
  auto handle = std::make_unique<Handle>();
  handle->bytes.resize(size);
  handle->data = handle->bytes.data();
  PF_Handle key = &handle->data;
  std::lock_guard<std::mutex> lock(mMutex);
  mHandles[key] = std::move(handle);
  return key;
}

void* HostDouble::lockHandle(const char* name, PF_Handle handle) {
  enter({name, {}, {}, nullptr, {}, {}});
  return handle == nullptr ? nullptr : *handle;
}

void HostDouble::unlockHandle(const char* name, PF_Handle) {
  enter({name, {}, {}, nullptr, {}, {}});
}

void HostDouble::disposeHandle(const char* name, PF_Handle handle) {
  enter({name, {}, {}, nullptr, {}, {}});
  std::lock_guard<std::mutex> lock(mMutex);
  mHandles.erase(handle);
}

A_HandleSize HostDouble::handleSize(const char* name, PF_Handle handle) {
  enter({name, {}, {}, nullptr, {}, {}});
  std::lock_guard<std::mutex> lock(mMutex);
  auto found = mHandles.find(handle);
  return found == mHandles.end() ? 0 : found->second->bytes.size();
}

PF_Err HostDouble::resizeHandle(const char* name, A_HandleSize size, PF_Handle* handle) {
  if (PF_Err err = enter({name, {static_cast<std::int64_t>(size)}, {}, nullptr, {}, {}})) {
    return err;
  }
  std::lock_guard<std::mutex> lock(mMutex);
  auto found = mHandles.find(*handle);
  if (found == mHandles.end()) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  found->second->bytes.resize(size);
  found->second->data = found->second->bytes.data();
  return PF_Err_NONE;
}

PF_Err HostDouble::getPixelData8(PF_EffectWorld* world, PF_PixelPtr pixels, PF_Pixel8** result) {
  if (PF_Err err = current().enter({"get_pixel_data8", {}, {}, nullptr, {}, {}})) {
    return err;
  }
  if ((world->world_flags & PF_WorldFlag_DEEP) != 0) {
    *result = nullptr;
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  *result = pixels != nullptr ? pixels : world->data;
  return PF_Err_NONE;
}

PF_Err HostDouble::getPixelData16(PF_EffectWorld* world, PF_PixelPtr pixels, PF_Pixel16** result) {
  if (PF_Err err = current().enter({"get_pixel_data16", {}, {}, nullptr, {}, {}})) {
    return err;
  }
  if ((world->world_flags & PF_WorldFlag_DEEP) == 0) {
    *result = nullptr;
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  *result = reinterpret_cast<PF_Pixel16*>(pixels != nullptr ? pixels : world->data);
  return PF_Err_NONE;
}

void HostDouble::installCallbacks() {
  mInData.inter.checkout_param = &checkoutParam;
  mInData.inter.checkin_param = &checkinParam;
  mInData.inter.add_param = &addParam;
  mInData.inter.abort = &abortCallback;
  mInData.inter.progress = &progress;

  mUtils.host_new_handle = [](A_HandleSize size) { return current().newHandle("host_new_handle", size); };
  mUtils.host_lock_handle = [](PF_Handle h) { return current().lockHandle("host_lock_handle", h); };
  mUtils.host_unlock_handle = [](PF_Handle h) { current().unlockHandle("host_unlock_handle", h); };
  mUtils.host_dispose_handle = [](PF_Handle h) { current().disposeHandle("host_dispose_handle", h); };
  mUtils.host_get_handle_size = [](PF_Handle h) { return current().handleSize("host_get_handle_size", h); };
  mUtils.host_resize_handle = [](A_HandleSize size, PF_Handle* h) {
    return current().resizeHandle("host_resize_handle", size, h);
  };
  mUtils.get_pixel_data8 = &getPixelData8;
  mUtils.get_pixel_data16 = &getPixelData16;

  PF_ANSICallbacks& ansi = mUtils.ansi;
  ansi.atan = [](A_FpLong x) { return std::atan(x); };
  ansi.atan2 = [](A_FpLong y, A_FpLong x) { return std::atan2(y, x); };
  ansi.ceil = [](A_FpLong x) { return std::ceil(x); };
  ansi.cos = [](A_FpLong x) { return std::cos(x); };
  ansi.exp = [](A_FpLong x) { return std::exp(x); };
  ansi.fabs = [](A_FpLong x) { return std::fabs(x); };
  ansi.floor = [](A_FpLong x) { return std::floor(x); };
  ansi.fmod = [](A_FpLong x, A_FpLong y) { return std::fmod(x, y); };
  ansi.hypot = [](A_FpLong x, A_FpLong y) { return std::hypot(x, y); };
  ansi.log = [](A_FpLong x) { return std::log(x); };
  ansi.log10 = [](A_FpLong x) { return std::log10(x); };
  ansi.pow = [](A_FpLong x, A_FpLong y) { return std::pow(x, y); };
  ansi.sin = [](A_FpLong x) { return std::sin(x); };
  ansi.sqrt = [](A_FpLong x) { return std::sqrt(x); };
  ansi.tan = [](A_FpLong x) { return std::tan(x); };
  ansi.sprintf = &utilsSprintf;
  ansi.strcpy = &utilsStrcpy;
  ansi.asin = [](A_FpLong x) { return std::asin(x); };
  ansi.acos = [](A_FpLong x) { return std::acos(x); };

  mPreRenderCallbacks.checkout_layer = &checkoutLayer;
  mPreRenderCallbacks.GuidMixInPtr = &guidMixIn;
  mPreRenderExtra = {&mPreRenderInput, &mPreRenderOutput, &mPreRenderCallbacks};
  mPreRenderInput.output_request.channel_mask = PF_ChannelMask_ARGB;
  mSmartRenderCallbacks.checkout_layer_pixels = &checkoutLayerPixels;
  mSmartRenderCallbacks.checkin_layer_pixels = &checkinLayerPixels;
  mSmartRenderCallbacks.checkout_output = &checkoutOutput;
  mSmartRenderExtra = {&mSmartRenderInput, &mSmartRenderCallbacks};
}

// ---------------------------------------------------------------- suites

void HostDouble::installSuites() {
  mBasicSuite.AcquireSuite = &acquireSuite;
  mBasicSuite.ReleaseSuite = &releaseSuite;
  mBasicSuite.IsEqual = [](const char* a, const char* b) -> SPBoolean { return std::strcmp(a, b) == 0; };
  mBasicSuite.AllocateBlock = [](size_t size, void** block) -> SPErr {
    *block = std::malloc(size);
    return *block != nullptr ? kSPNoError : kSuiteNotFound;
  };
  mBasicSuite.FreeBlock = [](void* block) -> SPErr {
    std::free(block);
    return kSPNoError;
  };
  mBasicSuite.ReallocateBlock = [](void* block, size_t size, void** resized) -> SPErr {
    *resized = std::realloc(block, size);
    return *resized != nullptr ? kSPNoError : kSuiteNotFound;
  };
  mBasicSuite.Undefined = []() -> SPErr { return kSPNoError; };

  // The suite's table is the utils' ANSI table with its own recording names.
  const PF_ANSICallbacks& ansi = mUtils.ansi;
  mAnsiSuite = {ansi.atan, ansi.atan2, ansi.ceil,  ansi.cos, ansi.exp, ansi.fabs,         ansi.floor,
                ansi.fmod, ansi.hypot, ansi.log,   ansi.log10, ansi.pow, ansi.sin,        ansi.sqrt,
                ansi.tan,  &suiteSprintf, &suiteStrcpy, ansi.asin, ansi.acos};
  mHandleSuite.host_new_handle = [](A_HandleSize size) {
    return current().newHandle("HandleSuite.host_new_handle", size);
  };
  mHandleSuite.host_lock_handle = [](PF_Handle h) { return current().lockHandle("HandleSuite.host_lock_handle", h); };
  mHandleSuite.host_unlock_handle = [](PF_Handle h) { current().unlockHandle("HandleSuite.host_unlock_handle", h); };
  mHandleSuite.host_dispose_handle = [](PF_Handle h) {
    current().disposeHandle("HandleSuite.host_dispose_handle", h);
  };
  mHandleSuite.host_get_handle_size = [](PF_Handle h) {
    return current().handleSize("HandleSuite.host_get_handle_size", h);
  };
  mHandleSuite.host_resize_handle = [](A_HandleSize size, PF_Handle* h) {
    return current().resizeHandle("HandleSuite.host_resize_handle", size, h);
  };
  mIterateFloatSuite.iterate = &iterateFloat;
  mIterateFloatSuite.iterate_origin = &iterateFloatOrigin;

  mSuites[{kPFANSISuite, kPFANSISuiteVersion1}] = &mAnsiSuite;
  mSuites[{kPFHandleSuite, kPFHandleSuiteVersion1}] = &mHandleSuite;
  mSuites[{kPFIterateFloatSuite, kPFIterateFloatSuiteVersion1}] = &mIterateFloatSuite;
}

SPErr HostDouble::acquireSuite(const char* name, int32_t version, const void** suite) {
  HostDouble& host = current();
  if (SPErr err = host.enter({"AcquireSuite", {version}, name, nullptr, {}, {}})) {
    return err;
  }
  std::lock_guard<std::mutex> lock(host.mMutex);
  auto found = host.mSuites.find({name, version});
  if (found == host.mSuites.end()) {
    return kSuiteNotFound;
  }
  *suite = found->second;
  ++host.mHeld[{name, version}];
  return kSPNoError;
}

SPErr HostDouble::releaseSuite(const char* name, int32_t version) {
  HostDouble& host = current();
  if (SPErr err = host.enter({"ReleaseSuite", {version}, name, nullptr, {}, {}})) {
    return err;
  }
  std::lock_guard<std::mutex> lock(host.mMutex);
  --host.mHeld[{name, version}];
  return kSPNoError;
}

PF_Err HostDouble::iterateFloat(PF_InData*, A_long progress_base, A_long progress_final, PF_EffectWorld* src,
                                const PF_Rect* area, void* refcon, PF_IteratePixelFloatFunc pix_fn,
                                PF_EffectWorld* dst) {
  if (PF_Err err = current().enter({"iterateFloat.iterate", {progress_base, progress_final}, {}, nullptr, {}, {}})) {
    return err;
  }
  return iterateFloatOver(src, area, {0, 0}, refcon, pix_fn, dst);
}

PF_Err HostDouble::iterateFloatOrigin(PF_InData*, A_long progress_base, A_long progress_final, PF_EffectWorld* src,
                                      const PF_Rect* area, const PF_Point* origin, void* refcon,
                                      PF_IteratePixelFloatFunc pix_fn, PF_EffectWorld* dst) {
  HostCall call{"iterateFloat.iterate_origin", {progress_base, progress_final}, {}, nullptr, {}, {}};
  if (PF_Err err = current().enter(call)) {
    return err;
  }
  return iterateFloatOver(src, area, origin != nullptr ? *origin : PF_Point{0, 0}, refcon, pix_fn, dst);
}

// Visits the area of dst (all of it without an area) row by row; the source pixel is the
// one at the same place shifted by origin, or none without a source.
PF_Err HostDouble::iterateFloatOver(PF_EffectWorld* src, const PF_Rect* area, PF_Point origin, void* refcon,
                                    PF_IteratePixelFloatFunc pix_fn, PF_EffectWorld* dst) {
  const PF_Rect whole{0, 0, dst->width, dst->height};
  const PF_Rect& rect = area != nullptr ? *area : whole;
  for (A_long y = rect.top; y < rect.bottom; ++y) {
    for (A_long x = rect.left; x < rect.right; ++x) {
      PF_PixelFloat* in = src != nullptr ? floatPixel(src, x + origin.h, y + origin.v) : nullptr;
      if (PF_Err err = pix_fn(refcon, x, y, in, floatPixel(dst, x, y))) {
        return err;
      }
    }
  }
  return PF_Err_NONE;
}

// ---------------------------------------------------------------- pre-render and smart render

PF_Err HostDouble::checkoutLayer(PF_ProgPtr ref, PF_ParamIndex index, A_long checkout_id, const PF_RenderRequest* req,
                                 A_long what_time, A_long time_step, A_u_long time_scale, PF_CheckoutResult* result) {
  HostDouble& host = current();
  HostCall call{"checkout_layer", {index, checkout_id, what_time, time_step, time_scale}, {}, ref, {}, *req};
  if (PF_Err err = host.enter(call)) {
    return err;
  }
  *result = host.mCheckoutResult;
  return PF_Err_NONE;
}

PF_Err HostDouble::guidMixIn(PF_ProgPtr ref, A_u_long size, const void*) {
  return current().enter({"GuidMixInPtr", {size}, {}, ref, {}, {}});
}

PF_Err HostDouble::checkoutLayerPixels(PF_ProgPtr ref, A_long checkout_id, PF_EffectWorld** pixels) {
  HostDouble& host = current();
  if (PF_Err err = host.enter({"checkout_layer_pixels", {checkout_id}, {}, ref, {}, {}})) {
    return err;
  }
  if (!host.mInputWorld) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  *pixels = host.mInputWorld->world();
  return PF_Err_NONE;
}

PF_Err HostDouble::checkinLayerPixels(PF_ProgPtr ref, A_long checkout_id) {
  return current().enter({"checkin_layer_pixels", {checkout_id}, {}, ref, {}, {}});
}

PF_Err HostDouble::checkoutOutput(PF_ProgPtr ref, PF_EffectWorld** output) {
  HostDouble& host = current();
  if (PF_Err err = host.enter({"checkout_output", {}, {}, ref, {}, {}})) {
    return err;
  }
  if (!host.mOutputWorld) {
    return PF_Err_BAD_CALLBACK_PARAM;
  }
  *output = host.mOutputWorld->world();
  return PF_Err_NONE;
}

}  // namespace Quillmere::Velmira
