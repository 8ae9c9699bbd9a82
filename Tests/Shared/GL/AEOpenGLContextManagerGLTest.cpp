#include "GL/AEOpenGLContextManager.h"

#include "GL/AEOpenGLContext.h"

#include "CGLCurrent.h"

#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <EGL/egl.h>
#include <dlfcn.h>

#include <future>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace gl;
using testing::ElementsAreArray;

namespace {

std::mutex gDestroyedMutex;
std::vector<EGLContext> gDestroyed;

std::vector<EGLContext> destroyedContexts() {
  std::lock_guard<std::mutex> lock(gDestroyedMutex);
  return gDestroyed;
}

void forgetDestroyedContexts() {
  std::lock_guard<std::mutex> lock(gDestroyedMutex);
  gDestroyed.clear();
}

}  // namespace

// The order in which contexts go is seen where they leave EGL: this definition stands
// in front of libEGL's for the whole test program, notes the context and passes the
// call on to the real one.
extern "C" EGLBoolean eglDestroyContext(EGLDisplay display, EGLContext context) {
  using Destroy = EGLBoolean (*)(EGLDisplay, EGLContext);
  static const Destroy kReal = reinterpret_cast<Destroy>(dlsym(RTLD_NEXT, "eglDestroyContext"));
  {
    std::lock_guard<std::mutex> lock(gDestroyedMutex);
    gDestroyed.push_back(context);
  }
  return kReal(display, context);
}

namespace Quillmere::Velmira {
namespace {

EGLContext eglOf(const AEOpenGLContext* context) { return reinterpret_cast<EGLContext>(context->cglContext()); }

// Each new context prints one block, with one version line.
int printedBlocks(const std::string& text) {
  int blocks = 0;
  for (size_t at = text.find("OpenGL Version:"); at != std::string::npos; at = text.find("OpenGL Version:", at + 1)) {
    ++blocks;
  }
  return blocks;
}

// What one render thread saw of the manager.
struct RenderThreadView {
  int key = -2;
  AEOpenGLContext* first = nullptr;
  AEOpenGLContext* second = nullptr;
  bool firstWasCurrent = false;
  bool sharedTextureVisible = false;
};

std::vector<RenderThreadView> renderOnThreads(int count, GLuint sharedTexture) {
  std::vector<RenderThreadView> views(static_cast<size_t>(count));
  // All first calls start at once, as a host's render threads may make them.
  std::promise<void> go;
  const std::shared_future<void> start = go.get_future().share();
  std::vector<std::thread> threads;
  for (RenderThreadView& view : views) {
    threads.emplace_back([start, &view, sharedTexture] {
      start.wait();
      view.first = AEOpenGLContextManager::getCurrentRenderContext();
      view.key = AEOpenGLContextManager::currentThreadKey();
      view.firstWasCurrent = view.first != nullptr && CGLGetCurrentContext() == view.first->cglContext();
      view.sharedTextureVisible = glIsTexture(sharedTexture) == GL_TRUE;
      view.second = AEOpenGLContextManager::getCurrentRenderContext();
      // Let the context go with the thread, so it can be destroyed at once.
      CGLSetCurrentContext(nullptr);
    });
  }
  go.set_value();
  for (std::thread& thread : threads) {
    thread.join();
  }
  return views;
}

int nextKey() {
  int key = -1;
  std::thread([&key] {
    testing::internal::CaptureStdout();
    AEOpenGLContextManager::getCurrentRenderContext();
    testing::internal::GetCapturedStdout();
    key = AEOpenGLContextManager::currentThreadKey();
    CGLSetCurrentContext(nullptr);
  }).join();
  return key;
}

class AEOpenGLContextManagerTest : public testing::Test {
protected:
  void SetUp() override {
    testing::internal::CaptureStdout();
    AEOpenGLContextManager::setupContextManager();
    testing::internal::GetCapturedStdout();
    ASSERT_NE(AEOpenGLContextManager::getSharedDataContext(), nullptr);
  }

  void TearDown() override {
    if (AEOpenGLContextManager::getSharedDataContext() != nullptr) {
      AEOpenGLContextManager::getSharedDataContext()->makeContextCurrent();
    }
    AEOpenGLContextManager::releaseContextManager();
    CGLSetCurrentContext(nullptr);
  }
};

TEST_F(AEOpenGLContextManagerTest, FirstCallsAtOnceGetDistinctKeysAndContextsReleasedInKeyOrderSharedLast) {
  constexpr int kThreads = 4;
  GLuint sharedTexture = 0;
  glGenTextures(1, &sharedTexture);
  glBindTexture(GL_TEXTURE_2D, sharedTexture);
  glFinish();

  testing::internal::CaptureStdout();
  const std::vector<RenderThreadView> views = renderOnThreads(kThreads, sharedTexture);
  const std::string printed = testing::internal::GetCapturedStdout();

  std::map<int, EGLContext> byKey;
  std::set<AEOpenGLContext*> contexts;
  for (const RenderThreadView& view : views) {
    byKey[view.key] = eglOf(view.first);
    contexts.insert(view.first);
    EXPECT_NE(view.first, nullptr) << "context of key " << view.key;
    EXPECT_TRUE(view.firstWasCurrent) << "context of key " << view.key << " current after the first call";
    EXPECT_TRUE(view.sharedTextureVisible) << "shared texture seen from key " << view.key;
    EXPECT_EQ(view.second, view.first) << "second call on key " << view.key;
  }
  ASSERT_EQ(byKey.size(), static_cast<size_t>(kThreads)) << "distinct keys";
  EXPECT_EQ(contexts.size(), static_cast<size_t>(kThreads)) << "distinct contexts";
  EXPECT_EQ(byKey.rbegin()->first - byKey.begin()->first, kThreads - 1) << "keys handed out one after another";
  EXPECT_EQ(printedBlocks(printed), kThreads) << "contexts made by eight calls on four threads";
  EXPECT_EQ(nextKey(), byKey.rbegin()->first + 1) << "second calls left the count alone";

  AEOpenGLContextManager::getSharedDataContext()->makeContextCurrent();
  glDeleteTextures(1, &sharedTexture);
  std::vector<EGLContext> expected;
  for (const auto& entry : byKey) {
    expected.push_back(entry.second);
  }
  const EGLContext shared = eglOf(AEOpenGLContextManager::getSharedDataContext());
  forgetDestroyedContexts();
  AEOpenGLContextManager::releaseContextManager();
  // The context of nextKey's thread comes after those of the four.
  const std::vector<EGLContext> destroyed = destroyedContexts();
  ASSERT_EQ(destroyed.size(), expected.size() + 2) << "contexts destroyed";
  EXPECT_THAT(std::vector<EGLContext>(destroyed.begin(), destroyed.begin() + kThreads), ElementsAreArray(expected));
  EXPECT_EQ(destroyed.back(), shared) << "the shared context goes last";
  EXPECT_EQ(AEOpenGLContextManager::getSharedDataContext(), nullptr);
}

TEST_F(AEOpenGLContextManagerTest, SetupAfterReleaseGivesARenderingThreadAFreshKeyAndContext) {
  testing::internal::CaptureStdout();
  AEOpenGLContext* before = AEOpenGLContextManager::getCurrentRenderContext();
  const int keyBefore = AEOpenGLContextManager::currentThreadKey();
  AEOpenGLContextManager::releaseContextManager();
  EXPECT_EQ(AEOpenGLContextManager::currentThreadKey(), -1) << "key of a released setup";

  AEOpenGLContextManager::setupContextManager();
  AEOpenGLContext* after = AEOpenGLContextManager::getCurrentRenderContext();
  testing::internal::GetCapturedStdout();

  ASSERT_NE(after, nullptr);
  EXPECT_NE(before, nullptr);
  EXPECT_GT(AEOpenGLContextManager::currentThreadKey(), keyBefore) << "keys are never handed out twice";
  EXPECT_EQ(CGLGetCurrentContext(), after->cglContext());
  EXPECT_EQ(AEOpenGLContextManager::getCurrentRenderContext(), after);
}

}  // namespace
}  // namespace Quillmere::Velmira
