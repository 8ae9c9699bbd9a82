#include "EglDisplay.h"

#include <EGL/eglext.h>

#include <cstring>
#include <vector>

namespace Quillmere::Velmira {

namespace {

bool hasExtension(const char* extensions, const char* name) {
  if (extensions == nullptr) {
    return false;
  }
  const size_t length = std::strlen(name);
  for (const char* at = std::strstr(extensions, name); at != nullptr; at = std::strstr(at + length, name)) {
    const bool startsWord = at == extensions || at[-1] == ' ';
    const bool endsWord = at[length] == '\0' || at[length] == ' ';
    if (startsWord && endsWord) {
      return true;
    }
  }
  return false;
}

EGLDisplay initialised(EGLDisplay display) {
  if (display == EGL_NO_DISPLAY) {
    return EGL_NO_DISPLAY;
  }
  EGLint major = 0;
  EGLint minor = 0;
  return eglInitialize(display, &major, &minor) == EGL_TRUE ? display : EGL_NO_DISPLAY;
}

// Mesa lists its software rasteriser as a device too; only a GPU driver's device is
// preferred over the surfaceless platform.
EGLDisplay gpuDeviceDisplay() {
  const char* clientExtensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
  if (!hasExtension(clientExtensions, "EGL_EXT_device_enumeration") ||
      !hasExtension(clientExtensions, "EGL_EXT_platform_device")) {
    return EGL_NO_DISPLAY;
  }
  const auto queryDevices = reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
  const auto queryDeviceString =
      reinterpret_cast<PFNEGLQUERYDEVICESTRINGEXTPROC>(eglGetProcAddress("eglQueryDeviceStringEXT"));
  if (queryDevices == nullptr || queryDeviceString == nullptr) {
    return EGL_NO_DISPLAY;
  }
  EGLint count = 0;
  if (queryDevices(0, nullptr, &count) != EGL_TRUE || count <= 0) {
    return EGL_NO_DISPLAY;
  }
  std::vector<EGLDeviceEXT> devices(static_cast<size_t>(count));
  queryDevices(count, devices.data(), &count);
  for (EGLint i = 0; i < count; ++i) {
    if (hasExtension(queryDeviceString(devices[static_cast<size_t>(i)], EGL_EXTENSIONS), "EGL_MESA_device_software")) {
      continue;
    }
    const EGLDisplay display =
        initialised(eglGetPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[static_cast<size_t>(i)], nullptr));
    if (display != EGL_NO_DISPLAY) {
      return display;
    }
  }
  return EGL_NO_DISPLAY;
}

EGLDisplay surfacelessDisplay() {
  if (!hasExtension(eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS), "EGL_MESA_platform_surfaceless")) {
    return EGL_NO_DISPLAY;
  }
  return initialised(eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
}

EGLDisplay openDisplay() {
  const EGLDisplay device = gpuDeviceDisplay();
  return device != EGL_NO_DISPLAY ? device : surfacelessDisplay();
}

}  // namespace

EGLDisplay EglDisplay::display() {
  static const EGLDisplay kDisplay = openDisplay();
  return kDisplay;
}

void EglDisplay::bindOpenGL() { eglBindAPI(EGL_OPENGL_API); }

}  // namespace Quillmere::Velmira
