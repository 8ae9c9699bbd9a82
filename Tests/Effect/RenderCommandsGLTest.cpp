// The effect's GPU commands through its entry on real contexts: the order of one frame's GL work, the host's
// context given back after every command and every failure, what is made again and what is kept between frames,
// the order of setdown, and a second setup within one load.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "GL/AEOpenGLContext.h"
#include "GL/AEOpenGLContextManager.h"
#include "GL/AEOpenglMainFrameBuffer.h"
#include "HostDouble.h"
#include "Support/EffectSession.h"
#include "Support/GLCallLog.h"
#include "Support/HostGLContext.h"
#include "Support/LiveObjects.h"
#include "Support/TestFrames.h"

using namespace Quillmere::Velmira;

namespace {

// The names among `wanted`, in order, with repeats in a row told once when `collapse`.
std::vector<std::string> among(const std::vector<std::string>& names, const std::vector<std::string>& wanted,
                               bool collapse = false) {
  std::vector<std::string> kept;
  for (const std::string& name : names) {
    if (std::find(wanted.begin(), wanted.end(), name) != wanted.end() &&
        !(collapse && !kept.empty() && kept.back() == name)) {
      kept.push_back(name);
    }
  }
  return kept;
}

class RenderCommands : public ::testing::Test {
protected:
  void SetUp() override { hostContext.makeCurrent(); }

  // The plug-in's objects live in its own share group: counted with its shared context current, then the thread
  // is handed back to the host.
  LiveObjects pluginObjects() {
    AEOpenGLContextManager::getSharedDataContext()->makeContextCurrent();
    const LiveObjects live = LiveObjects::count();
    hostContext.makeCurrent();
    return live;
  }

  HostGLContext hostContext;
};

}  // namespace

TEST_F(RenderCommands, OneFrameRunsUploadSkinPassResolveScreenPassReadBackInOrder) {
  HostDouble host;
  EffectSession session(host);
  TestFrames::fill(session.frame(12, 7), TestFrames::Kind::SkinGrain);
  ASSERT_EQ(session.render(), PF_Err_NONE);  // the first frame also compiles and makes objects
  host.clearCalls();
  GLCallLog log;
  ASSERT_EQ(session.render(), PF_Err_NONE);
  const std::vector<std::string> expected = {"glDrawBuffer",     "glRenderbufferStorageMultisample",
                                             "glTexSubImage2D",  "glDrawArrays",
                                             "glDeleteTextures", "glBlitFramebuffer",
                                             "glDrawArrays",     "glDeleteTextures",
                                             "glReadPixels"};
  EXPECT_EQ(among(log.names(), expected), expected);
  // The host's calls: both worlds before the sliders, the sliders before the read-back's handle.
  const std::vector<std::string> bracket = {"checkout_layer_pixels", "checkout_output", "checkout_param",
                                            "HandleSuite.host_new_handle"};
  EXPECT_EQ(among(host.callNames(), bracket, true), bracket);
  EXPECT_EQ(host.heldSuites(), 0);
  EXPECT_EQ(host.liveHandles(), 0);
  EXPECT_TRUE(hostContext.isCurrent());
}

TEST_F(RenderCommands, SameSizeKeepsFrameBuffersAndANewSizeRemakesThem) {
  HostDouble host;
  EffectSession session(host);
  struct Step {
    A_long width;
    int frameBuffers;
    int renderBuffers;  // the frame's level, and the main render buffer when the size is new
  };
  const Step steps[] = {{20, 3, 2}, {20, 0, 1}, {31, 3, 2}, {31, 0, 1}};
  for (const Step& step : steps) {
    TestFrames::fill(session.frame(step.width, 10), TestFrames::Kind::SkinGrain);
    GLCallLog log;
    ASSERT_EQ(session.render(), PF_Err_NONE);
    EXPECT_EQ(log.count("glGenFramebuffers"), step.frameBuffers) << "width " << step.width;
    EXPECT_EQ(log.count("glGenRenderbuffers"), step.renderBuffers) << "width " << step.width;
    EXPECT_EQ(session.deviation().maximum, 0) << "width " << step.width;
  }
}

TEST_F(RenderCommands, TheShaderIsRebuiltWhenTheBlurSizeChangesAndOnlyThen) {
  HostDouble host;
  EffectSession session(host);
  struct Step {
    ReferenceSliders sliders;  // blur, range, whiten, redden, pinking
    int links;
    const char* what;
  };
  const Step steps[] = {
      {{9, 10, 30}, 2, "first frame: the skin shader and the last pass"},
      {{9, 10, 30}, 0, "nothing changed"},
      {{11, 10, 30}, 1, "a new blur size"},
      {{11, 10, 30}, 0, "the same new size"},
      {{11, 10, 80}, 0, "only whitening changed"},
      {{11.4, 10, 80}, 1, "a fraction more, the same integer size"},
  };
  for (const Step& step : steps) {
    session.setSliders(step.sliders);
    TestFrames::fill(session.frame(9, 9), TestFrames::Kind::SkinGrain);
    GLCallLog log;
    ASSERT_EQ(session.render(), PF_Err_NONE) << step.what;
    EXPECT_EQ(log.count("glLinkProgram"), step.links) << step.what;
    EXPECT_EQ(session.deviation().maximum, 0) << step.what;
  }
}

TEST_F(RenderCommands, GlobalSetdownReleasesFrameBufferObjectsThenTheRenderObject) {
  HostDouble host;
  EffectSession session(host);
  TestFrames::fill(session.frame(8, 6), TestFrames::Kind::SkinGrain);
  ASSERT_EQ(session.render(), PF_Err_NONE);
  const uint32_t mainRenderBuffer = AEOpenglMainFrameBuffer::mainFrameBuffer()->mainRenderBuffer();
  GLCallLog log;
  ASSERT_EQ(session.setdown(), PF_Err_NONE);
  // The main render buffer first, then the last pass's quad and program, then the skin shader and its quad.
  const std::vector<std::string> deleted = {"glDeleteRenderbuffers", "glDeleteBuffers", "glDeleteProgram",
                                            "glDeleteVertexArrays"};
  EXPECT_EQ(among(log.names(), deleted),
            (std::vector<std::string>{"glDeleteRenderbuffers", "glDeleteBuffers", "glDeleteProgram", "glDeleteProgram",
                                      "glDeleteBuffers"}));
  const std::string first = log.only(deleted).at(0);
  EXPECT_NE(first.find(std::to_string(mainRenderBuffer)), std::string::npos) << first;
  EXPECT_EQ(AEOpenGLContextManager::getSharedDataContext(), nullptr) << "the contexts go last";
  EXPECT_TRUE(hostContext.isCurrent());
}

TEST_F(RenderCommands, AFailureAtAnyStepGivesTheHostItsContextBackAndLeaksNothing) {
  enum class Fault { Fails, Throws };  // the callback returns `code`, or throws it as an int
  struct Case {
    const char* what;
    Fault fault;
    const char* callback;
    int call;  // which call of the callback
    int code;
    PF_Err result;
  };
  // A failed checkout is the host's error, given back before any GL work has begun.
  const Case cases[] = {
      {"the input checkout fails", Fault::Fails, "checkout_layer_pixels", 1, PF_Err_INTERNAL_STRUCT_DAMAGED,
       PF_Err_INTERNAL_STRUCT_DAMAGED},
      {"the output checkout fails", Fault::Fails, "checkout_output", 1, PF_Err_INTERNAL_STRUCT_DAMAGED,
       PF_Err_INTERNAL_STRUCT_DAMAGED},
      {"the first slider throws", Fault::Throws, "checkout_param", 1, 7, PF_Err_BAD_CALLBACK_PARAM},
      {"a slider cannot be read", Fault::Fails, "checkout_param", 2, PF_Err_INVALID_INDEX, PF_Err_INVALID_INDEX},
      {"the fourth slider throws", Fault::Throws, "checkout_param", 4, 7, PF_Err_BAD_CALLBACK_PARAM},
      {"a check-in throws", Fault::Throws, "checkin_param", 5, 7, PF_Err_BAD_CALLBACK_PARAM},
      {"the upload's pixels throw", Fault::Throws, "get_pixel_data8", 1, 7, PF_Err_BAD_CALLBACK_PARAM},
      {"no handle suite", Fault::Fails, "AcquireSuite", 1, HostDouble::kSuiteNotFound, PF_Err_BAD_CALLBACK_PARAM},
      {"no handle", Fault::Fails, "HandleSuite.host_new_handle", 1, PF_Err_OUT_OF_MEMORY, PF_Err_BAD_CALLBACK_PARAM},
      {"a read-back row throws", Fault::Throws, "get_pixel_data8", 3, 7, PF_Err_BAD_CALLBACK_PARAM},
  };
  for (const Case& c : cases) {
    HostDouble host;
    EffectSession session(host);
    session.setSliders({1});
    TestFrames::fill(session.frame(10, 8), TestFrames::Kind::SkinGrain);
    ASSERT_EQ(session.render(), PF_Err_NONE) << c.what;
    const LiveObjects before = pluginObjects();
    host.clearCalls();
    if (c.fault == Fault::Fails) {
      host.failCall(c.callback, c.call, c.code);
    } else {
      host.throwIntOnCall(c.callback, c.call, c.code);
    }
    GLCallLog log;
    EXPECT_EQ(session.render(), c.result) << c.what;
    if (c.result == PF_Err_INTERNAL_STRUCT_DAMAGED) {
      EXPECT_TRUE(log.calls().empty()) << c.what << ": " << log.calls()[0].text();
    }
    EXPECT_TRUE(hostContext.isCurrent()) << c.what;
    const LiveObjects after = pluginObjects();
    EXPECT_EQ(after.textures, before.textures) << c.what;
    EXPECT_EQ(after.renderbuffers, before.renderbuffers) << c.what;
    EXPECT_TRUE(AEOpenglMainFrameBuffer::mainFrameBuffer()->renderBufferStack().empty()) << c.what;
    EXPECT_EQ(host.heldSuites(), 0) << c.what;
    EXPECT_EQ(host.liveHandles(), 0) << c.what;
    // And the next frame is whole again.
    TestFrames::fill(session.frame(10, 8), TestFrames::Kind::HueSweep);
    EXPECT_EQ(session.render(), PF_Err_NONE) << c.what;
    EXPECT_EQ(session.deviation().maximum, 0) << c.what << ": the frame after";
  }
}

TEST_F(RenderCommands, SetupAfterSetdownWithinOneLoadRendersAgain) {
  HostDouble host;
  EffectSession session(host, false);
  ASSERT_EQ(session.setup(), PF_Err_NONE);
  EXPECT_TRUE(hostContext.isCurrent()) << "after global setup";
  TestFrames::fill(session.frame(16, 9), TestFrames::Kind::HueSweep);
  ASSERT_EQ(session.render(), PF_Err_NONE);
  ASSERT_EQ(session.setdown(), PF_Err_NONE);
  ASSERT_EQ(session.setup(), PF_Err_NONE);
  // The same size as before the setdown: nothing of the old frame buffers may be taken for ready.
  TestFrames::fill(session.frame(16, 9), TestFrames::Kind::SkinGrain);
  ASSERT_EQ(session.render(), PF_Err_NONE);
  const FrameDeviation deviation = session.deviation();
  EXPECT_EQ(deviation.maximum, 0) << deviation.describe();
  EXPECT_TRUE(hostContext.isCurrent());
}
