// The context manager with several render threads on real contexts: keys, one context per thread in the shared
// context's share group, and the order in which release lets them go. (A setup after a release within one load goes
// through the effect's render commands.)
#include <gtest/gtest.h>

#include <EGL/egl.h>
#include <dlfcn.h>
#include <glbinding/gl/gl.h>

#include <future>
#include <map>
#include <thread>

#include "CGLCurrent.h"
#include "GL/AEOpenGLContext.h"
#include "GL/AEOpenGLContextManager.h"

using namespace gl;
using namespace Quillmere::Velmira;

static std::vector<EGLContext> gDestroyed;  // only the thread that releases destroys contexts

// The order in which contexts go is seen where they leave EGL: this definition stands in front of libEGL's for the
// whole test program, notes the context and passes the call on.
extern "C" EGLBoolean eglDestroyContext(EGLDisplay display, EGLContext context) {
  static const auto kReal = reinterpret_cast<EGLBoolean (*)(EGLDisplay, EGLContext)>(dlsym(RTLD_NEXT, __func__));
  gDestroyed.push_back(context);
  return kReal(display, context);
}

TEST(AEOpenGLContextManager, ThreadsGetAKeyAndAContextEachReleasedInKeyOrderWithTheSharedOneLast) {
  constexpr int kThreads = 4;
  testing::internal::CaptureStdout();  // each new context describes itself
  AEOpenGLContextManager::setupContextManager();
  GLuint sharedTexture = 0;
  glGenTextures(1, &sharedTexture);
  glBindTexture(GL_TEXTURE_2D, sharedTexture);
  glFinish();
  int keys[kThreads] = {};
  AEOpenGLContext *first[kThreads] = {}, *second[kThreads] = {};
  bool seesTexture[kThreads] = {};
  // All first calls start at once, as a host's render threads may make them.
  std::promise<void> go;
  const std::shared_future<void> start = go.get_future().share();
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i, start] {
      start.wait();
      first[i] = AEOpenGLContextManager::getCurrentRenderContext();
      keys[i] = AEOpenGLContextManager::currentThreadKey();
      seesTexture[i] = glIsTexture(sharedTexture) == GL_TRUE;
      second[i] = AEOpenGLContextManager::getCurrentRenderContext();
      CGLSetCurrentContext(nullptr);  // so that the context can be destroyed at once
    });
  }
  go.set_value();
  for (std::thread& thread : threads) thread.join();
  std::map<int, EGLContext> byKey;
  for (int i = 0; i < kThreads; ++i) {
    SCOPED_TRACE("key " + std::to_string(keys[i]));
    ASSERT_NE(first[i], nullptr);
    byKey[keys[i]] = reinterpret_cast<EGLContext>(first[i]->cglContext());
    EXPECT_TRUE(seesTexture[i]);
    EXPECT_EQ(second[i], first[i]) << "second call";
  }
  ASSERT_EQ(byKey.size(), std::size_t{kThreads}) << "distinct keys";
  EXPECT_EQ(byKey.begin()->first + kThreads - 1, byKey.rbegin()->first) << "keys handed out one after another";

  AEOpenGLContextManager::getSharedDataContext()->makeContextCurrent();
  glDeleteTextures(1, &sharedTexture);
  std::vector<EGLContext> expected;
  for (const auto& entry : byKey) expected.push_back(entry.second);
  expected.push_back(reinterpret_cast<EGLContext>(AEOpenGLContextManager::getSharedDataContext()->cglContext()));
  gDestroyed.clear();
  AEOpenGLContextManager::releaseContextManager();
  EXPECT_EQ(gDestroyed, expected);
  EXPECT_EQ(AEOpenGLContextManager::getSharedDataContext(), nullptr);
  CGLSetCurrentContext(nullptr);
  testing::internal::GetCapturedStdout();
}
