#include "CGLCurrent.h"
#include "NSOpenGLContext.h"
#include "NSOpenGLPixelFormat.h"

#include <glbinding/Binding.h>
#include <glbinding/gl/bitfield.h>
#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace gl;

namespace Quillmere::Velmira {
namespace {

struct Released {
  void operator()(NSObject* object) const { object->release(); }
};
template <typename T>
using Owned = std::unique_ptr<T, Released>;

Owned<NSOpenGLContext> contextWith(const std::vector<NSOpenGLPixelFormatAttribute>& words) {
  Owned<NSOpenGLPixelFormat> format(NSOpenGLPixelFormat::initWithAttributes(words.data()));
  return Owned<NSOpenGLContext>(NSOpenGLContext::initWithFormat(format.get(), nullptr));
}

// The thread's GL calls go through glbinding, which must be pointed at the context
// the thread has just made current.
void useInGlbinding() {
  glbinding::Binding::initialize(false);
  glbinding::Binding::useCurrentContext();
}

GLint integer(GLenum name) {
  GLint value = 0;
  glGetIntegerv(name, &value);
  return value;
}

TEST(NSOpenGLPixelFormat, WordListGivesAFormatOnlyWhenEveryWordIsUnderstood) {
  struct FormatCase {
    const char* label;
    std::vector<NSOpenGLPixelFormatAttribute> words;
    bool made;
  };
  const FormatCase formats[] = {{"the plug-in's words", {74, 72, 11, 0, 8, 24, 13, 0, 12, 0, 99, 12800, 0}, true},
                                {"no words", {0}, true},
                                {"4.1 core with double buffer", {5, 99, 0x4100, 0}, true},
                                {"an unknown word", {74, 1234, 0}, false},
                                {"an unknown profile", {99, 0x9999, 0}, false},
                                {"a depth no configuration has", {12, 200, 0}, false}};
  for (const FormatCase& format : formats) {
    Owned<NSOpenGLPixelFormat> made(NSOpenGLPixelFormat::initWithAttributes(format.words.data()));
    EXPECT_EQ(made != nullptr, format.made) << format.label;
  }
  EXPECT_EQ(NSOpenGLPixelFormat::initWithAttributes(nullptr), nullptr) << "a null list";
  EXPECT_EQ(NSOpenGLContext::initWithFormat(nullptr, nullptr), nullptr) << "a context of no format";
}

TEST(NSOpenGLContext, ProfileWordsChooseCoreOrCompatibilityContexts) {
  Owned<NSOpenGLContext> core = contextWith({99, NSOpenGLProfileVersion3_2Core, 0});
  Owned<NSOpenGLContext> core41 = contextWith({99, NSOpenGLProfileVersion4_1Core, 0});
  Owned<NSOpenGLContext> legacy = contextWith({99, NSOpenGLProfileVersionLegacy, 0});
  ASSERT_TRUE(core && core41 && legacy);

  core->makeCurrentContext();
  useInGlbinding();
  EXPECT_TRUE(integer(GL_CONTEXT_PROFILE_MASK) & static_cast<GLint>(GL_CONTEXT_CORE_PROFILE_BIT)) << "3.2 core";
  EXPECT_GE(integer(GL_MAJOR_VERSION) * 10 + integer(GL_MINOR_VERSION), 32) << "3.2 core";
  core41->makeCurrentContext();
  EXPECT_GE(integer(GL_MAJOR_VERSION) * 10 + integer(GL_MINOR_VERSION), 41) << "4.1 core";
  legacy->makeCurrentContext();
  EXPECT_TRUE(integer(GL_CONTEXT_PROFILE_MASK) & static_cast<GLint>(GL_CONTEXT_COMPATIBILITY_PROFILE_BIT)) << "legacy";
  NSOpenGLContext::clearCurrentContext();
}

TEST(NSOpenGLContext, CurrentContextFollowsTheThreadsCGLContextWhoeverSetIt) {
  Owned<NSOpenGLContext> first = contextWith({0});
  Owned<NSOpenGLContext> second = contextWith({0});
  ASSERT_TRUE(first && second);

  first->makeCurrentContext();
  EXPECT_EQ(NSOpenGLContext::currentContext(), first.get());
  EXPECT_EQ(CGLGetCurrentContext(), first->CGLContextObj());

  EXPECT_EQ(CGLSetCurrentContext(second->CGLContextObj()), kCGLNoError);
  EXPECT_EQ(NSOpenGLContext::currentContext(), second.get()) << "after CGLSetCurrentContext";

  NSOpenGLContext::clearCurrentContext();
  EXPECT_EQ(NSOpenGLContext::currentContext(), nullptr);
  EXPECT_EQ(CGLGetCurrentContext(), nullptr);
}

}  // namespace
}  // namespace Quillmere::Velmira
