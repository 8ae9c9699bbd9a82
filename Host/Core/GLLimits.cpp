#include "Core/GLLimits.h"

#include <mutex>

#include "Core/EglProbeContext.h"
#include "Core/HostError.h"

namespace Quillmere::Velmira {

namespace {

constexpr unsigned int kGlMaxTextureSize = 0x0D33;
using GetIntegerv = void (*)(unsigned int name, int* value);

int askMaxTextureSize() {
  // Plain EGL lookups rather than glbinding: the effect's glbinding keeps its function
  // tables per context handle, and a context of the host must not take part in them.
  EglProbeContext context;
  auto getIntegerv = reinterpret_cast<GetIntegerv>(context.function("glGetIntegerv"));
  if (!getIntegerv) throw HostError::failure("the OpenGL implementation has no glGetIntegerv");
  int size = 0;
  getIntegerv(kGlMaxTextureSize, &size);
  return size;
}

}  // namespace

int GLLimits::maxTextureSize() {
  static std::once_flag kOnce;
  static int kSize = 0;
  std::call_once(kOnce, [] { kSize = askMaxTextureSize(); });
  return kSize;
}

}  // namespace Quillmere::Velmira
