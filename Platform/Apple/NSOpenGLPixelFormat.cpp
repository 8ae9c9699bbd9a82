#include "NSOpenGLPixelFormat.h"

#include "EglDisplay.h"

#include <cstddef>
#include <utility>

namespace Quillmere::Velmira {

namespace {

// What the words ask for, before EGL is asked.
struct Request {
  EGLint colorBits = 0;
  EGLint alphaBits = 0;
  EGLint depthBits = 0;
  EGLint stencilBits = 0;
  EGLint sampleBuffers = 0;
  EGLint samples = 0;
  NSOpenGLPixelFormatAttribute profile = NSOpenGLProfileVersionLegacy;
};

bool takesValue(NSOpenGLPixelFormatAttribute word) {
  switch (word) {
    case NSOpenGLPFAColorSize:
    case NSOpenGLPFAAlphaSize:
    case NSOpenGLPFADepthSize:
    case NSOpenGLPFAStencilSize:
    case NSOpenGLPFASampleBuffers:
    case NSOpenGLPFASamples:
    case NSOpenGLPFAOpenGLProfile: return true;
    default: return false;
  }
}

bool isFlag(NSOpenGLPixelFormatAttribute word) {
  return word == NSOpenGLPFADoubleBuffer || word == NSOpenGLPFANoRecovery || word == NSOpenGLPFAAccelerated ||
         word == NSOpenGLPFAClosestPolicy;
}

void store(Request& request, NSOpenGLPixelFormatAttribute word, NSOpenGLPixelFormatAttribute value) {
  const EGLint bits = static_cast<EGLint>(value);
  switch (word) {
    case NSOpenGLPFAColorSize: request.colorBits = bits; break;
    case NSOpenGLPFAAlphaSize: request.alphaBits = bits; break;
    case NSOpenGLPFADepthSize: request.depthBits = bits; break;
    case NSOpenGLPFAStencilSize: request.stencilBits = bits; break;
    case NSOpenGLPFASampleBuffers: request.sampleBuffers = bits; break;
    case NSOpenGLPFASamples: request.samples = bits; break;
    default: request.profile = value; break;
  }
}

bool parse(const NSOpenGLPixelFormatAttribute* words, Request& request) {
  if (words == nullptr) {
    return false;
  }
  for (std::size_t i = 0; words[i] != 0; ++i) {
    if (isFlag(words[i])) {
      continue;
    }
    if (!takesValue(words[i])) {
      return false;
    }
    // The word after a sized attribute is its value even when it is 0 (no alpha,
    // no depth), so the list goes on after it.
    store(request, words[i], words[i + 1]);
    ++i;
  }
  return true;
}

bool contextAttributesFor(NSOpenGLPixelFormatAttribute profile, std::vector<EGLint>& attributes) {
  EGLint major = 0;
  EGLint minor = 0;
  switch (profile) {
    case NSOpenGLProfileVersionLegacy:
      attributes = {EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT, EGL_NONE};
      return true;
    case NSOpenGLProfileVersion3_2Core:
      major = 3;
      minor = 2;
      break;
    case NSOpenGLProfileVersion4_1Core:
      major = 4;
      minor = 1;
      break;
    default: return false;
  }
  attributes = {
      EGL_CONTEXT_MAJOR_VERSION,           major,   EGL_CONTEXT_MINOR_VERSION, minor, EGL_CONTEXT_OPENGL_PROFILE_MASK,
      EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
  return true;
}

bool chooseConfig(const Request& request, EGLConfig& config) {
  // Colour bits are spread over red, green and blue as AppKit counts them: 24 is
  // eight each.
  const EGLint channelBits = request.colorBits / 3;
  const EGLint wanted[] = {EGL_SURFACE_TYPE,
                           0,  // no surface: any configuration qualifies
                           EGL_RENDERABLE_TYPE,
                           EGL_OPENGL_BIT,
                           EGL_RED_SIZE,
                           channelBits,
                           EGL_GREEN_SIZE,
                           channelBits,
                           EGL_BLUE_SIZE,
                           channelBits,
                           EGL_ALPHA_SIZE,
                           request.alphaBits,
                           EGL_DEPTH_SIZE,
                           request.depthBits,
                           EGL_STENCIL_SIZE,
                           request.stencilBits,
                           EGL_SAMPLE_BUFFERS,
                           request.sampleBuffers,
                           EGL_SAMPLES,
                           request.samples,
                           EGL_NONE};
  EGLint found = 0;
  return eglChooseConfig(EglDisplay::display(), wanted, &config, 1, &found) == EGL_TRUE && found > 0;
}

}  // namespace

NSOpenGLPixelFormat* NSOpenGLPixelFormat::initWithAttributes(const NSOpenGLPixelFormatAttribute* attributes) {
  Request request;
  std::vector<EGLint> contextAttributes;
  EGLConfig config = nullptr;
  if (!parse(attributes, request) || !contextAttributesFor(request.profile, contextAttributes) ||
      EglDisplay::display() == EGL_NO_DISPLAY || !chooseConfig(request, config)) {
    return nullptr;
  }
  return new NSOpenGLPixelFormat(config, std::move(contextAttributes));
}

NSOpenGLPixelFormat::NSOpenGLPixelFormat(EGLConfig config, std::vector<EGLint> contextAttributes)
    : NSObject(), mConfig(config), mContextAttributes(std::move(contextAttributes)) {}

NSOpenGLPixelFormat::~NSOpenGLPixelFormat() = default;

EGLConfig NSOpenGLPixelFormat::config() const { return mConfig; }

const std::vector<EGLint>& NSOpenGLPixelFormat::contextAttributes() const { return mContextAttributes; }

}  // namespace Quillmere::Velmira
