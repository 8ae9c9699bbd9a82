#include "HostDouble.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>

namespace Quillmere::Velmira {

namespace {

std::atomic<HostDouble*> gCurrent{nullptr};
constexpr char kUtilsSprintf[] = "ansi.sprintf";
constexpr char kSuiteSprintf[] = "ANSISuite.sprintf";

PF_PixelFloat* floatPixel(PF_EffectWorld* world, A_long x, A_long y) {
  char* row = reinterpret_cast<char*>(world->data) + static_cast<std::ptrdiff_t>(y) * world->rowbytes;
  return reinterpret_cast<PF_PixelFloat*>(row) + x;
}

std::string vformat(const char* format, va_list args) __attribute__((format(printf, 1, 0)));
std::string vformat(const char* format, va_list args) {
  va_list measure;
  va_copy(measure, args);
  const int length = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  std::vector<char> text(static_cast<std::size_t>(length < 0 ? 0 : length) + 1);
  std::vsnprintf(text.data(), text.size(), format, args);
  return text.data();
}

}  // namespace

struct HostDouble::Callbacks {
  static HostDouble& current() {
    HostDouble* host = gCurrent.load();
    if (host == nullptr) {
      std::fprintf(stderr, "HostDouble: a host callback ran with no HostDouble alive\n");
      std::abort();
    }
    return *host;
  }

  static PF_Err simple(const char* name, std::vector<std::int64_t> args = {}, PF_ProgPtr ref = nullptr) {
    return current().enter({name, std::move(args), {}, ref, {}, {}});
  }

  // ------------------------------------------------------------ interact callbacks

  static PF_Err checkoutParam(PF_ProgPtr ref, PF_ParamIndex index, A_long what_time, A_long time_step,
                              A_u_long time_scale, PF_ParamDef* param) {
    HostDouble& host = current();
    if (PF_Err err = simple("checkout_param", {index, what_time, time_step, time_scale}, ref)) {
      return err;
    }
    std::unique_lock<std::mutex> lock(host.mMutex);
    PF_ParamDef def{};
    const bool added = index > 0 && static_cast<std::size_t>(index) <= host.mAddedParams.size();
    if (added) {
      def = host.mAddedParams[static_cast<std::size_t>(index - 1)];
    }
    auto value = host.mParams.find(index);
    if (index == 0) {
      def.param_type = PF_Param_LAYER;
    } else if (value != host.mParams.end()) {
      def.param_type = PF_Param_FLOAT_SLIDER;
      ParamFunction valueAt = value->second;
      lock.unlock();
      def.u.fs_d.value = valueAt(what_time, time_step, time_scale);
    } else if (added) {
      def.param_type = PF_Param_FLOAT_SLIDER;
      def.u.fs_d.value = def.u.fs_d.dephault;
    } else {
      return PF_Err_INVALID_INDEX;
    }
    def.uu.id = index;
    *param = def;
    return PF_Err_NONE;
  }

  static PF_Err checkinParam(PF_ProgPtr ref, PF_ParamDef* param) {
    return current().enter({"checkin_param", {}, {}, ref, *param, {}});
  }

  static PF_Err addParam(PF_ProgPtr ref, PF_ParamIndex index, PF_ParamDefPtr def) {
    HostDouble& host = current();
    if (PF_Err err = host.enter({"add_param", {index}, def->name, ref, *def, {}})) {
      return err;
    }
    std::lock_guard<std::mutex> lock(host.mMutex);
    host.mAddedParams.push_back(*def);
    return PF_Err_NONE;
  }

  // ------------------------------------------------------------ util callbacks

  // Like the host's, unbounded: the caller owns the buffer's size. A failed sprintf
  // writes nothing.
  static int sprintfAs(const char* name, A_char* buffer, const std::string& text) {
    if (current().enter({name, {}, text, nullptr, {}, {}}) != PF_Err_NONE) {
      return -1;
    }
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<int>(text.size());
  }

  template <const char* Name>
  __attribute__((format(printf, 2, 3))) static int sprintfNamed(A_char* buffer, const A_char* format, ...) {
    va_list args;
    va_start(args, format);
    const std::string text = vformat(format, args);
    va_end(args);
    return sprintfAs(Name, buffer, text);
  }

  static A_char* strcpyAs(const char* name, A_char* dest, const A_char* src) {
    current().enter({name, {}, src, nullptr, {}, {}});
    return std::strcpy(dest, src);
  }

  static PF_Handle newHandle(A_HandleSize size) {
    HostDouble& host = current();
    if (simple("HandleSuite.host_new_handle", {static_cast<std::int64_t>(size)}) != PF_Err_NONE) {
      return nullptr;
    }
    auto handle = std::make_unique<std::pair<void*, std::vector<char>>>();
    handle->second.resize(size);
    handle->first = handle->second.data();
    PF_Handle key = &handle->first;
    std::lock_guard<std::mutex> lock(host.mMutex);
    host.mHandles[key] = std::move(handle);
    return key;
  }

  static void disposeHandle(PF_Handle handle) {
    HostDouble& host = current();
    simple("HandleSuite.host_dispose_handle");
    std::lock_guard<std::mutex> lock(host.mMutex);
    host.mHandles.erase(handle);
  }

  // A deep world has no 8-bit pixels and an 8-bit one no 16-bit pixels.
  template <typename Pixel>
  static PF_Err pixelData(const char* name, bool deep, PF_EffectWorld* world, PF_PixelPtr pixels, Pixel** result) {
    if (PF_Err err = simple(name)) {
      return err;
    }
    if (((world->world_flags & PF_WorldFlag_DEEP) != 0) != deep) {
      *result = nullptr;
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    *result = reinterpret_cast<Pixel*>(pixels != nullptr ? pixels : world->data);
    return PF_Err_NONE;
  }

  // ------------------------------------------------------------ suites

  static SPErr acquireSuite(const char* name, int32_t version, const void** suite) {
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

  static SPErr releaseSuite(const char* name, int32_t version) {
    HostDouble& host = current();
    if (SPErr err = host.enter({"ReleaseSuite", {version}, name, nullptr, {}, {}})) {
      return err;
    }
    std::lock_guard<std::mutex> lock(host.mMutex);
    --host.mHeld[{name, version}];
    return kSPNoError;
  }

  // Visits the area of dst (all of it without an area) row by row; the source pixel is
  // the one at the same place, or none without a source.
  static PF_Err iterateFloat(PF_InData*, A_long progress_base, A_long progress_final, PF_EffectWorld* src,
                             const PF_Rect* area, void* refcon, PF_IteratePixelFloatFunc pix_fn, PF_EffectWorld* dst) {
    if (PF_Err err = simple("iterateFloat.iterate", {progress_base, progress_final})) {
      return err;
    }
    const PF_Rect whole{0, 0, dst->width, dst->height};
    const PF_Rect& rect = area != nullptr ? *area : whole;
    for (A_long y = rect.top; y < rect.bottom; ++y) {
      for (A_long x = rect.left; x < rect.right; ++x) {
        PF_PixelFloat* in = src != nullptr ? floatPixel(src, x, y) : nullptr;
        if (PF_Err err = pix_fn(refcon, x, y, in, floatPixel(dst, x, y))) {
          return err;
        }
      }
    }
    return PF_Err_NONE;
  }

  // ------------------------------------------------------------ pre-render and smart render

  static PF_Err checkoutLayer(PF_ProgPtr ref, PF_ParamIndex index, A_long checkout_id, const PF_RenderRequest* req,
                              A_long what_time, A_long time_step, A_u_long time_scale, PF_CheckoutResult* result) {
    HostDouble& host = current();
    HostCall call{"checkout_layer", {index, checkout_id, what_time, time_step, time_scale}, {}, ref, {}, *req};
    if (PF_Err err = host.enter(call)) {
      return err;
    }
    *result = host.mCheckoutResult;
    return PF_Err_NONE;
  }

  static PF_Err giveWorld(const char* name, std::vector<std::int64_t> args, PF_ProgPtr ref,
                          const std::unique_ptr<HostWorld>& world, PF_EffectWorld** given) {
    if (PF_Err err = simple(name, std::move(args), ref)) {
      return err;
    }
    if (!world) {
      return PF_Err_BAD_CALLBACK_PARAM;
    }
    *given = world->world();
    return PF_Err_NONE;
  }

  static PF_Err checkoutLayerPixels(PF_ProgPtr ref, A_long checkout_id, PF_EffectWorld** pixels) {
    return giveWorld("checkout_layer_pixels", {checkout_id}, ref, current().mInputWorld, pixels);
  }

  static PF_Err checkoutOutput(PF_ProgPtr ref, PF_EffectWorld** output) {
    return giveWorld("checkout_output", {}, ref, current().mOutputWorld, output);
  }

  static void install(HostDouble& host) {
    host.mInData.inter.checkout_param = &checkoutParam;
    host.mInData.inter.checkin_param = &checkinParam;
    host.mInData.inter.add_param = &addParam;
    host.mUtils.ansi.sprintf = &sprintfNamed<kUtilsSprintf>;
    host.mUtils.ansi.strcpy = [](A_char* dest, const A_char* src) { return strcpyAs("ansi.strcpy", dest, src); };
    host.mUtils.get_pixel_data8 = [](PF_EffectWorld* world, PF_PixelPtr pixels, PF_Pixel8** result) {
      return pixelData("get_pixel_data8", false, world, pixels, result);
    };
    host.mUtils.get_pixel_data16 = [](PF_EffectWorld* world, PF_PixelPtr pixels, PF_Pixel16** result) {
      return pixelData("get_pixel_data16", true, world, pixels, result);
    };

    host.mPreRenderCallbacks.checkout_layer = &checkoutLayer;
    host.mPreRenderExtra = {&host.mPreRenderInput, &host.mPreRenderOutput, &host.mPreRenderCallbacks};
    host.mPreRenderInput.output_request.channel_mask = PF_ChannelMask_ARGB;
    host.mSmartRenderCallbacks.checkout_layer_pixels = &checkoutLayerPixels;
    host.mSmartRenderCallbacks.checkout_output = &checkoutOutput;
    host.mSmartRenderExtra = {&host.mSmartRenderInput, &host.mSmartRenderCallbacks};

    host.mBasicSuite.AcquireSuite = &acquireSuite;
    host.mBasicSuite.ReleaseSuite = &releaseSuite;
    host.mAnsiSuite.sprintf = &sprintfNamed<kSuiteSprintf>;
    host.mAnsiSuite.strcpy = [](A_char* dest, const A_char* src) { return strcpyAs("ANSISuite.strcpy", dest, src); };
    host.mHandleSuite.host_new_handle = &newHandle;
    host.mHandleSuite.host_lock_handle = [](PF_Handle handle) -> void* {
      simple("HandleSuite.host_lock_handle");
      return handle == nullptr ? nullptr : *handle;
    };
    host.mHandleSuite.host_unlock_handle = [](PF_Handle) { simple("HandleSuite.host_unlock_handle"); };
    host.mHandleSuite.host_dispose_handle = &disposeHandle;
    host.mIterateFloatSuite.iterate = &iterateFloat;
    host.mSuites[{kPFANSISuite, kPFANSISuiteVersion1}] = &host.mAnsiSuite;
    host.mSuites[{kPFHandleSuite, kPFHandleSuiteVersion1}] = &host.mHandleSuite;
    host.mSuites[{kPFIterateFloatSuite, kPFIterateFloatSuiteVersion1}] = &host.mIterateFloatSuite;
  }
};

HostDouble::HostDouble() {
  gCurrent.store(this);
  mInData.effect_ref = reinterpret_cast<PF_ProgPtr>(this);
  mInData.utils = &mUtils;
  mInData.pica_basicP = &mBasicSuite;
  mInData.version = {13, 28};
  mInData.num_params = 6;
  setTime(0, 1, 24);
  Callbacks::install(*this);
}

HostDouble::~HostDouble() {
  HostDouble* self = this;
  gCurrent.compare_exchange_strong(self, nullptr);
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

void HostDouble::setBasicSuitePresent(bool present) { mInData.pica_basicP = present ? &mBasicSuite : nullptr; }

void HostDouble::addFault(Fault fault) {
  std::lock_guard<std::mutex> lock(mMutex);
  mFaults.push_back(std::move(fault));
}

std::vector<HostCall> HostDouble::calls() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return mCalls;
}

std::vector<std::string> HostDouble::callNames() const {
  std::vector<std::string> names;
  for (const HostCall& call : calls()) {
    names.push_back(call.name);
  }
  return names;
}

int HostDouble::count(const std::string& name) const {
  int n = 0;
  for (const HostCall& call : calls()) {
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
  std::optional<Fault> fault;
  {
    std::lock_guard<std::mutex> lock(mMutex);
    const int nth = ++mCallCounts[call.name];
    for (const Fault& candidate : mFaults) {
      if (candidate.name == call.name && candidate.nth == nth) {
        fault = candidate;
      }
    }
    mCalls.push_back(std::move(call));
  }
  if (!fault) {
    return PF_Err_NONE;
  }
  switch (fault->kind) {
    case FaultKind::ThrowInt: throw fault->value;
    case FaultKind::ThrowRuntimeError: throw std::runtime_error(fault->what);
    case FaultKind::Code: break;
  }
  return fault->value;
}

}  // namespace Quillmere::Velmira
