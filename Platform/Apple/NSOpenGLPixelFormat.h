// A GL pixel format built from AppKit's zero-terminated list of attribute words.
//
// Contexts here never get a surface: all drawing goes to frame buffer objects. The
// words therefore choose an EGL configuration with no surface type and the GL
// version and profile of the contexts made with the format.
#pragma once

#include "NSObject.h"

#include <EGL/egl.h>

#include <cstdint>
#include <vector>

namespace Quillmere::Velmira {

typedef uint32_t NSOpenGLPixelFormatAttribute;

// The framework's words, with its values. A word followed by a value word is marked.
enum : NSOpenGLPixelFormatAttribute {
  NSOpenGLPFADoubleBuffer = 5,
  NSOpenGLPFAColorSize = 8,       // + value: bits of red, green and blue together
  NSOpenGLPFAAlphaSize = 11,      // + value
  NSOpenGLPFADepthSize = 12,      // + value
  NSOpenGLPFAStencilSize = 13,    // + value
  NSOpenGLPFASampleBuffers = 55,  // + value
  NSOpenGLPFASamples = 56,        // + value
  NSOpenGLPFANoRecovery = 72,
  NSOpenGLPFAAccelerated = 73,
  NSOpenGLPFAClosestPolicy = 74,
  NSOpenGLPFAOpenGLProfile = 99,  // + one of the profile values below
};

enum : NSOpenGLPixelFormatAttribute {
  NSOpenGLProfileVersionLegacy = 0x1000,
  NSOpenGLProfileVersion3_2Core = 0x3200,
  NSOpenGLProfileVersion4_1Core = 0x4100,
};

class NSOpenGLPixelFormat : public NSObject {
public:
  // One owned reference, or null when a word is unknown, a value is missing or
  // impossible, or the display has no matching configuration.
  //
  // Sizes ask for at least that many bits. Double buffering, no recovery,
  // acceleration and the closest policy concern surfaces and renderer choice,
  // which do not exist here, and are accepted as they are. Legacy asks for a
  // compatibility context; the core profiles for a core context of at least
  // their version.
  static NSOpenGLPixelFormat* initWithAttributes(const NSOpenGLPixelFormatAttribute* attributes);

  EGLConfig config() const;
  // EGL_NONE-terminated attributes for eglCreateContext.
  const std::vector<EGLint>& contextAttributes() const;

protected:
  ~NSOpenGLPixelFormat() override;

private:
  NSOpenGLPixelFormat(EGLConfig config, std::vector<EGLint> contextAttributes);

  EGLConfig mConfig;
  std::vector<EGLint> mContextAttributes;
};

}  // namespace Quillmere::Velmira
