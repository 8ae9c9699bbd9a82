#include "CGLCurrent.h"
#include "NSOpenGLContext.h"
#include "NSOpenGLPixelFormat.h"

#include <glbinding/Binding.h>
#include <glbinding/gl/gl.h>

#include <gtest/gtest.h>

using namespace gl;

namespace Quillmere::Velmira {
namespace {

// Every context made stays alive to the end, so that currentContext has others to mistake
// the current one for.
TEST(NSOpenGLContext, WordsChooseTheProfileAndTheContextIsCurrentWhoeverMadeItSo) {
  const GLint core = static_cast<GLint>(GL_CONTEXT_CORE_PROFILE_BIT);
  const GLint compatibility = static_cast<GLint>(GL_CONTEXT_COMPATIBILITY_PROFILE_BIT);
  // No words stand for a null list; a profile of 0 for no format, so no context.
  // clang-format off
  const struct { const char* label; std::vector<NSOpenGLPixelFormatAttribute> words; GLint profile; } cases[] = {
      {"the plug-in's words", {74, 72, 11, 0, 8, 24, 13, 0, 12, 0, 99, 12800, 0}, core},
      {"no words", {0}, compatibility},
      {"4.1 core with double buffer", {5, 99, 0x4100, 0}, core},
      {"an unknown word", {74, 1234, 0}, 0},
      {"an unknown profile", {99, 0x9999, 0}, 0},
      {"a depth no configuration has", {12, 200, 0}, 0},
      {"a null list", {}, 0}};
  // clang-format on
  std::vector<NSObject*> made;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.label);
    NSOpenGLPixelFormat* format = NSOpenGLPixelFormat::initWithAttributes(c.words.empty() ? nullptr : c.words.data());
    NSOpenGLContext* context = NSOpenGLContext::initWithFormat(format, nullptr);
    EXPECT_EQ(c.profile != 0, format != nullptr);
    EXPECT_EQ(format != nullptr, context != nullptr) << "a context of the format";
    if (context == nullptr) continue;
    made.insert(made.end(), {format, context});
    context->makeCurrentContext();  // no profile to read unless it is current
    glbinding::Binding::initialize(false);
    GLint profile = 0;
    glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
    EXPECT_EQ(c.profile, profile & c.profile) << "profile mask " << profile;
    NSOpenGLContext::clearCurrentContext();
    EXPECT_EQ(nullptr, CGLGetCurrentContext());
    EXPECT_EQ(kCGLNoError, CGLSetCurrentContext(context->CGLContextObj()));
    EXPECT_EQ(context, NSOpenGLContext::currentContext()) << "made current by CGL";
  }
  NSOpenGLContext::clearCurrentContext();
  for (NSObject* object : made) object->release();
}

}  // namespace
}  // namespace Quillmere::Velmira
