#include "GL/SaveRestoreGLContextMac.h"

#include "GL/AEOpenGLContext.h"
#include "Support/GLCallLog.h"

#include "CGLCurrent.h"
#include "EglDisplay.h"
#include "NSOpenGLContext.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using testing::IsEmpty;

namespace Quillmere::Velmira {
namespace {

// A context that the test makes with EGL alone, as a host would: no NSOpenGLContext
// wraps it.
class HostEglContext {
public:
  HostEglContext() : mContext(EGL_NO_CONTEXT) {
    eglBindAPI(EGL_OPENGL_API);
    const EGLint wanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint found = 0;
    eglChooseConfig(EglDisplay::display(), wanted, &config, 1, &found);
    if (found > 0) {
      mContext = eglCreateContext(EglDisplay::display(), config, EGL_NO_CONTEXT, nullptr);
    }
  }
  ~HostEglContext() { eglDestroyContext(EglDisplay::display(), mContext); }
  HostEglContext(const HostEglContext&) = delete;
  HostEglContext& operator=(const HostEglContext&) = delete;

  CGLContextObj cgl() const { return reinterpret_cast<CGLContextObj>(mContext); }

private:
  EGLContext mContext;
};

// Releases the object at the end of a test, whatever way it ends.
struct Released {
  void operator()(NSObject* object) const { object->release(); }
};
using SavedContext = std::unique_ptr<SaveRestoreGLContextMac, Released>;

class SaveRestoreGLContextMacTest : public testing::Test {
protected:
  void SetUp() override {
    testing::internal::CaptureStdout();
    mPlugin.reset(new AEOpenGLContext(nullptr));
    testing::internal::GetCapturedStdout();
    ASSERT_NE(mHost.cgl(), nullptr) << "the test could not make its host context";
  }

  void TearDown() override { CGLSetCurrentContext(nullptr); }

  std::unique_ptr<AEOpenGLContext> mPlugin;
  HostEglContext mHost;
};

TEST_F(SaveRestoreGLContextMacTest, WithNoContextAtInitRestoreLeavesThePluginContextCurrent) {
  CGLSetCurrentContext(nullptr);
  SavedContext saved(SaveRestoreGLContextMac::init());
  ASSERT_NE(saved, nullptr);
  EXPECT_EQ(saved->mContext(), nullptr);
  EXPECT_EQ(saved->mRC(), nullptr);
  EXPECT_FALSE(saved->mRestored());

  mPlugin->makeContextCurrent();
  saved->restore();
  EXPECT_EQ(CGLGetCurrentContext(), mPlugin->cglContext()) << "a thread cannot be given back no context";
  EXPECT_TRUE(saved->mRestored());
}

TEST_F(SaveRestoreGLContextMacTest, BareHostContextComesBackThroughCGLWithOneFlushAndOnlyOnce) {
  CGLSetCurrentContext(mHost.cgl());
  SavedContext saved(SaveRestoreGLContextMac::init());
  EXPECT_EQ(saved->mContext(), nullptr) << "no NSOpenGLContext wraps the host's context";
  EXPECT_EQ(saved->mRC(), mHost.cgl());

  mPlugin->makeContextCurrent();
  {
    GLCallLog recorder;
    saved->restore();
    EXPECT_EQ(CGLGetCurrentContext(), mHost.cgl());
    EXPECT_EQ(recorder.count("glFlush"), 1) << "flushes of the plug-in's context being left";
  }

  mPlugin->makeContextCurrent();
  GLCallLog recorder;
  saved->restore();
  EXPECT_EQ(CGLGetCurrentContext(), mPlugin->cglContext()) << "a second restore switches nothing";
  EXPECT_THAT(recorder.names(), IsEmpty());
}

TEST_F(SaveRestoreGLContextMacTest, HostNSOpenGLContextIsHeldAndComesBackWithoutFlush) {
  CGLContextObj hostCgl = nullptr;
  NSOpenGLContext* host = AEOpenGLContext::createNSContext(nullptr, hostCgl);
  ASSERT_NE(host, nullptr);
  host->makeCurrentContext();

  SavedContext saved(SaveRestoreGLContextMac::init());
  EXPECT_EQ(saved->mContext(), host);
  EXPECT_EQ(saved->mRC(), hostCgl);
  EXPECT_EQ(host->retainCount(), 2) << "the saved context is held";

  mPlugin->makeContextCurrent();
  {
    GLCallLog recorder;
    saved->restore();
    EXPECT_THAT(recorder.names(), IsEmpty()) << "the road through the NSOpenGLContext has no flush";
  }
  EXPECT_EQ(CGLGetCurrentContext(), hostCgl);
  EXPECT_EQ(NSOpenGLContext::currentContext(), host);

  saved.reset();
  EXPECT_EQ(host->retainCount(), 1) << "released with the object";
  CGLSetCurrentContext(nullptr);
  host->release();
}

}  // namespace
}  // namespace Quillmere::Velmira
