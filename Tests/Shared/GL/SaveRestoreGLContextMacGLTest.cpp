// The host's context saved and given back on real contexts: through its NSOpenGLContext where it has one, else
// through CGL with the flush rule of any switch, and only once.
#include <gtest/gtest.h>

#include <functional>

#include "CGLCurrent.h"
#include "GL/AEOpenGLContext.h"
#include "GL/SaveRestoreGLContextMac.h"
#include "NSOpenGLContext.h"
#include "Support/GLCallLog.h"
#include "Support/GLFixture.h"

using namespace Quillmere::Velmira;

// A thread cannot be given back no context: with none current at init, the plug-in's stays.
TEST(SaveRestoreGLContextMac, RestoreGivesTheSavedContextBackOnceFlushingOnlyOnTheCGLRoad) {
  const std::unique_ptr<AEOpenGLContext> plugin = GLFixture::quietContext();
  GLFixture::HostContext host;
  CGLContextObj wrappedCgl = nullptr;
  NSOpenGLContext* wrapped = AEOpenGLContext::createNSContext(nullptr, wrappedCgl);
  // clang-format off
  const struct { const char* what; std::function<void()> makeCurrent; CGLContextObj restored;
                 std::vector<std::string> calls; } cases[] = {
      {"no context", [] { CGLSetCurrentContext(nullptr); }, plugin->cglContext(), {}},
      {"bare host context", [&] { host.makeCurrent(); }, host.cglContext(), {"glGetIntegerv", "glFlush"}},
      {"host NSOpenGLContext", [&] { wrapped->makeCurrentContext(); }, wrappedCgl, {}}};
  // clang-format on
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    c.makeCurrent();
    SaveRestoreGLContextMac* saved = SaveRestoreGLContextMac::init();
    for (const bool again : {false, true}) {
      plugin->makeContextCurrent();
      GLCallLog log;
      saved->restore();
      EXPECT_EQ(log.names(), again ? std::vector<std::string>{} : c.calls) << "again: " << again;
      EXPECT_EQ(CGLGetCurrentContext(), again ? plugin->cglContext() : c.restored) << "again: " << again;
    }
    saved->release();
    EXPECT_EQ(wrapped->retainCount(), 1) << "given up with the saved object";
  }
  CGLSetCurrentContext(nullptr);
  wrapped->release();
}
