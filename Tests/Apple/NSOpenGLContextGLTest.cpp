#include "CGLCurrent.h"
#include "NSOpenGLContext.h"
#include "NSOpenGLPixelFormat.h"

#include <glbinding/Binding.h>
#include <glbinding/gl/bitfield.h>
#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <vector>

using namespace gl;

namespace Quillmere::Velmira {
namespace {

struct Released {
    void operator()(NSObject* object) const
    {
        object->release();
    }
};
template <typename T>
using Owned = std::unique_ptr<T, Released>;

Owned<NSOpenGLContext> contextWith(const std::vector<NSOpenGLPixelFormatAttribute>& words)
{
    Owned<NSOpenGLPixelFormat> format(NSOpenGLPixelFormat::initWithAttributes(words.data()));
    return Owned<NSOpenGLContext>(NSOpenGLContext::initWithFormat(format.get(), nullptr));
}

// The thread's GL calls go through glbinding, which must be pointed at the context
// the thread has just made current.
void useInGlbinding()
{
    glbinding::Binding::initialize(false);
    glbinding::Binding::useCurrentContext();
}

GLint integer(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

struct FormatCase {
    const char* label;
    std::vector<NSOpenGLPixelFormatAttribute> words;
    bool made;
};

void PrintTo(const FormatCase& value, std::ostream* out)
{
    *out << value.label;
}

class NSOpenGLPixelFormatTest : public testing::TestWithParam<FormatCase> {};

TEST_P(NSOpenGLPixelFormatTest, WordListGivesAFormatOnlyWhenEveryWordIsUnderstood)
{
    const FormatCase& format = GetParam();
    Owned<NSOpenGLPixelFormat> made(NSOpenGLPixelFormat::initWithAttributes(format.words.data()));
    EXPECT_EQ(made != nullptr, format.made) << format.label;
}

INSTANTIATE_TEST_SUITE_P(
    NSOpenGLPixelFormat, NSOpenGLPixelFormatTest,
    testing::Values(FormatCase{"the plug-in's words", {74, 72, 11, 0, 8, 24, 13, 0, 12, 0, 99, 12800, 0}, true},
                    FormatCase{"no words", {0}, true},
                    FormatCase{"4.1 core with double buffer", {5, 99, 0x4100, 0}, true},
                    FormatCase{"an unknown word", {74, 1234, 0}, false},
                    FormatCase{"an unknown profile", {99, 0x9999, 0}, false},
                    FormatCase{"a depth no configuration has", {12, 200, 0}, false}));

TEST(NSOpenGLPixelFormat, NullListGivesNoFormatAndNoContext)
{
    EXPECT_EQ(NSOpenGLPixelFormat::initWithAttributes(nullptr), nullptr);
    EXPECT_EQ(NSOpenGLContext::initWithFormat(nullptr, nullptr), nullptr);
}

TEST(NSOpenGLContext, ProfileWordsChooseCoreOrCompatibilityContexts)
{
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
    EXPECT_TRUE(integer(GL_CONTEXT_PROFILE_MASK) & static_cast<GLint>(GL_CONTEXT_COMPATIBILITY_PROFILE_BIT))
        << "legacy";
    NSOpenGLContext::clearCurrentContext();
}

TEST(NSOpenGLContext, CurrentContextFollowsTheThreadsCGLContextWhoeverSetIt)
{
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
