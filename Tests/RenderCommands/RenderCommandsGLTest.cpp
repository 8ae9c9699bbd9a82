// The effect's GPU commands through its entry on real contexts: the order of one frame's GL work, the host's
// context given back after every command and every failure, what is made again and what is kept between frames,
// the order of setdown, and a second setup within one load.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "GL/AEOpenGLContext.h"
#include "GL/AEOpenGLContextManager.h"
#include "GL/AEOpenglMainFrameBuffer.h"
#include "HostDouble.h"
#include "RenderSupport/EffectSession.h"
#include "RenderSupport/GLCallLog.h"
#include "RenderSupport/HostGLContext.h"
#include "RenderSupport/LiveObjects.h"
#include "RenderSupport/TestFrames.h"

using namespace Quillmere::Velmira;

namespace {

ReferenceSliders blur(double size, double whiten = 30.0) {
    ReferenceSliders sliders;
    sliders.blur = size;
    sliders.whiten = whiten;
    return sliders;
}

// The plug-in's objects live in its own share group: counted with its shared context current, then the thread is
// handed back to the host.
LiveObjects pluginObjects(HostGLContext& hostContext) {
    AEOpenGLContextManager::getSharedDataContext()->makeContextCurrent();
    const LiveObjects live = LiveObjects::count();
    hostContext.makeCurrent();
    return live;
}

std::string joined(const std::vector<std::string>& items) {
    std::string text;
    for (const std::string& item : items) {
        text += item + " ";
    }
    return text;
}

class RenderCommands : public ::testing::Test {
protected:
    void SetUp() override { hostContext.makeCurrent(); }

    HostGLContext hostContext;
};

}  // namespace

TEST_F(RenderCommands, HostContextIsCurrentAfterEveryCommand) {
    HostDouble host;
    EffectSession session(host, false);
    ASSERT_EQ(session.setup(), PF_Err_NONE);
    EXPECT_TRUE(hostContext.isCurrent()) << "after global setup";
    TestFrames::fill(session.frame(8, 6), TestFrames::Kind::SkinGrain);
    ASSERT_EQ(session.render(), PF_Err_NONE);
    EXPECT_TRUE(hostContext.isCurrent()) << "after smart render";
    ASSERT_EQ(session.setdown(), PF_Err_NONE);
    EXPECT_TRUE(hostContext.isCurrent()) << "after global setdown";
}

TEST_F(RenderCommands, OneFrameRunsUploadSkinPassResolveScreenPassReadBackInOrder) {
    HostDouble host;
    EffectSession session(host);
    TestFrames::fill(session.frame(12, 7), TestFrames::Kind::SkinGrain);
    ASSERT_EQ(session.render(), PF_Err_NONE);  // the first frame also compiles and makes objects
    host.clearCalls();
    GLCallLog log;
    ASSERT_EQ(session.render(), PF_Err_NONE);
    const std::vector<std::string> expected = {
        "glDrawBuffer",      "glRenderbufferStorageMultisample", "glTexSubImage2D", "glDrawArrays",
        "glDeleteTextures",  "glBlitFramebuffer",                "glDrawArrays",    "glDeleteTextures",
        "glReadPixels"};
    std::vector<std::string> names;
    for (const GLCallLog::Call& call : log.calls()) {
        if (std::find(expected.begin(), expected.end(), call.name) != expected.end()) {
            names.push_back(call.name);
        }
    }
    EXPECT_EQ(names, expected) << joined(names);
    // The host's calls: both worlds before the sliders, the sliders before the read-back's handle.
    std::vector<std::string> hostCalls;
    for (const std::string& name : host.callNames()) {
        if (name == "checkout_layer_pixels" || name == "checkout_output" || name == "checkout_param" ||
            name == "HandleSuite.host_new_handle") {
            if (hostCalls.empty() || hostCalls.back() != name) {
                hostCalls.push_back(name);
            }
        }
    }
    EXPECT_EQ(hostCalls, (std::vector<std::string>{"checkout_layer_pixels", "checkout_output", "checkout_param",
                                                   "HandleSuite.host_new_handle"}))
        << joined(hostCalls);
}

TEST_F(RenderCommands, FailedCheckoutReturnsTheHostsErrorBeforeAnyGLWork) {
    for (const char* callback : {"checkout_layer_pixels", "checkout_output"}) {
        HostDouble host;
        EffectSession session(host);
        TestFrames::fill(session.frame(8, 6), TestFrames::Kind::SkinGrain);
        host.failCall(callback, 1, PF_Err_INTERNAL_STRUCT_DAMAGED);
        GLCallLog log;
        EXPECT_EQ(session.render(), PF_Err_INTERNAL_STRUCT_DAMAGED) << callback;
        EXPECT_TRUE(log.calls().empty()) << callback << ": " << log.calls()[0].text();
        EXPECT_TRUE(hostContext.isCurrent()) << callback;
    }
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
        ReferenceSliders sliders;
        int links;
        const char* what;
    };
    const Step steps[] = {
        {blur(9), 2, "first frame: the skin shader and the last pass"},
        {blur(9), 0, "nothing changed"},
        {blur(11), 1, "a new blur size"},
        {blur(11), 0, "the same new size"},
        {blur(11, 80), 0, "only whitening changed"},
        {blur(11.4, 80), 1, "a fraction more, the same integer size"},
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
    const std::vector<std::string> deletions =
        log.only({"glDeleteRenderbuffers", "glDeleteBuffers", "glDeleteProgram", "glDeleteVertexArrays"});
    ASSERT_EQ(deletions.size(), 5u) << joined(deletions);
    EXPECT_EQ(deletions[0].rfind("glDeleteRenderbuffers", 0), 0u) << "the main render buffer first: " << deletions[0];
    EXPECT_NE(deletions[0].find(std::to_string(mainRenderBuffer)), std::string::npos) << deletions[0];
    EXPECT_EQ(deletions[1].rfind("glDeleteBuffers", 0), 0u) << "then the last pass's quad: " << deletions[1];
    EXPECT_EQ(deletions[2].rfind("glDeleteProgram", 0), 0u) << "and its program: " << deletions[2];
    EXPECT_EQ(deletions[3].rfind("glDeleteProgram", 0), 0u) << "then the skin shader: " << deletions[3];
    EXPECT_EQ(deletions[4].rfind("glDeleteBuffers", 0), 0u) << "and the skin pass's quad: " << deletions[4];
    EXPECT_EQ(AEOpenGLContextManager::getSharedDataContext(), nullptr) << "the contexts go last";
    EXPECT_TRUE(hostContext.isCurrent());
}

TEST_F(RenderCommands, AFailureAtAnyStepGivesTheHostItsContextBackAndLeaksNothing) {
    struct Case {
        const char* what;
        std::function<void(HostDouble&)> inject;
        PF_Err result;
    };
    const Case cases[] = {
        {"the first slider throws", [](HostDouble& h) { h.throwIntOnCall("checkout_param", 1, 7); },
         PF_Err_BAD_CALLBACK_PARAM},
        {"the fourth slider throws", [](HostDouble& h) { h.throwIntOnCall("checkout_param", 4, 7); },
         PF_Err_BAD_CALLBACK_PARAM},
        {"a check-in throws", [](HostDouble& h) { h.throwIntOnCall("checkin_param", 5, 7); },
         PF_Err_BAD_CALLBACK_PARAM},
        {"the upload's pixels throw", [](HostDouble& h) { h.throwIntOnCall("get_pixel_data8", 1, 7); },
         PF_Err_BAD_CALLBACK_PARAM},
        {"no handle suite", [](HostDouble& h) { h.failCall("AcquireSuite", 1, HostDouble::kSuiteNotFound); },
         PF_Err_BAD_CALLBACK_PARAM},
        {"no handle", [](HostDouble& h) { h.failCall("HandleSuite.host_new_handle", 1, PF_Err_OUT_OF_MEMORY); },
         PF_Err_BAD_CALLBACK_PARAM},
        {"a read-back row throws", [](HostDouble& h) { h.throwIntOnCall("get_pixel_data8", 3, 7); },
         PF_Err_BAD_CALLBACK_PARAM},
        {"a slider cannot be read", [](HostDouble& h) { h.failCall("checkout_param", 2, PF_Err_INVALID_INDEX); },
         PF_Err_INVALID_INDEX},
    };
    for (const Case& c : cases) {
        HostDouble host;
        EffectSession session(host);
        session.setSliders(blur(1));
        TestFrames::fill(session.frame(10, 8), TestFrames::Kind::SkinGrain);
        ASSERT_EQ(session.render(), PF_Err_NONE) << c.what;
        const LiveObjects before = pluginObjects(hostContext);
        host.clearCalls();
        c.inject(host);
        EXPECT_EQ(session.render(), c.result) << c.what;
        EXPECT_TRUE(hostContext.isCurrent()) << c.what;
        const LiveObjects after = pluginObjects(hostContext);
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
    EffectSession session(host);
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
