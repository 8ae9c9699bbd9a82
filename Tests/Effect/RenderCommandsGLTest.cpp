// The effect's GPU commands through the host on real contexts: the order of one frame's GL work, the host's context
// given back after every command and every failure, what is made again and what is kept between frames, the order
// of setdown, and a second setup within one load.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Core/CallRecorder.h"
#include "Core/EffectHost.h"
#include "Core/HostError.h"
#include "GL/AEOpenGLContext.h"
#include "GL/AEOpenGLContextManager.h"
#include "GL/AEOpenglMainFrameBuffer.h"
#include "Support/GLCallLog.h"
#include "Support/GLFixture.h"
#include "Support/ReferenceRender.h"
#include "Support/TestFrames.h"
#include "Velmira.h"

namespace Quillmere::Velmira {
namespace {

using Names = std::vector<std::string>;

// The names among `wanted`, in order, with repeats in a row told once when `collapse`.
Names among(const Names& names, const Names& wanted, bool collapse = false) {
  Names kept;
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
  // After Effects calls with a context of its own current.
  void SetUp() override {
    hostContext.makeCurrent();
    host = std::make_unique<EffectHost>(EntryPointFunc, &calls);
  }

  // A frame of the kind, rendered with the sliders: 0 when it matches the reference, 1 when it does not, -1 when the
  // host reported a failure.
  int render(TestFrames::Kind kind, int width, int height, const ReferenceSliders& sliders = {}) {
    sliders.applyTo(*host);
    TestFrames::make(input, kind, width, height);
    output.allocate(width, height);
    try {
      host->render(input, output, FrameTime{});
    } catch (const HostError&) {
      return -1;
    }
    return matchesReference(input, output, sliders) ? 0 : 1;
  }

  // The plug-in's objects live in its own share group: counted with its shared context current, then the thread is
  // handed back to the host.
  GLFixture::LiveObjects pluginObjects() {
    AEOpenGLContextManager::getSharedDataContext()->makeContextCurrent();
    const GLFixture::LiveObjects live = GLFixture::liveObjects();
    hostContext.makeCurrent();
    return live;
  }

  GLFixture::HostContext hostContext;
  CallRecorder calls;
  std::unique_ptr<EffectHost> host;
  ArgbFrame input, output;
};

// A frame's GL work in order (upload, skin pass, resolve, screen pass, read-back) and its host calls (both worlds
// before the sliders, the sliders before the read-back's handle). The uniforms need no list of their own: five
// different slider values and an odd size would show any of them misplaced in the match with the model. Everything
// taken from the host goes back.
TEST_F(RenderCommands, OneFrameRunsUploadSkinPassResolveScreenPassReadBackInOrder) {
  const ReferenceSliders sliders{9, 12.5, 30, 40, 50};
  ASSERT_EQ(render(TestFrames::Kind::SkinGrain, 13, 7, sliders), 0);  // the first frame also compiles and makes objects
  const std::size_t before = calls.calls().size();
  GLCallLog log;
  ASSERT_EQ(render(TestFrames::Kind::SkinGrain, 13, 7, sliders), 0);
  const Names expected = {"glDrawBuffer",     "glRenderbufferStorageMultisample",
                          "glTexSubImage2D",  "glDrawArrays",
                          "glDeleteTextures", "glBlitFramebuffer",
                          "glDrawArrays",     "glDeleteTextures",
                          "glReadPixels"};
  EXPECT_EQ(among(log.names(), expected), expected);
  // Both passes sample the frame from texture unit 0 and leave it bound there.
  EXPECT_EQ(log.only({"glActiveTexture"}), Names(2, "glActiveTexture(GL_TEXTURE0)"));
  Names names = calls.names();
  names.erase(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(before));
  const Names bracket = {"checkout_layer_pixels", "checkout_output", "checkout_param", "HandleSuite.host_new_handle"};
  EXPECT_EQ(among(names, bracket, true), bracket);
  EXPECT_EQ(host->heldSuites(), 0);
  EXPECT_EQ(EffectHost::liveHandles(), 0u);
  EXPECT_EQ(host->openParamCheckouts(), 0);
  EXPECT_TRUE(hostContext.isCurrent());
}

// Frame buffers are kept while the size is, and the shader while the blur size is (as a float: a fraction more of
// the same integer size compiles again; the other sliders never do), the old program deleted before the new one is
// made; every frame still matches the reference.
TEST_F(RenderCommands, FrameBuffersFollowTheSizeAndTheShaderTheBlurSize) {
  const struct {
    int width;
    ReferenceSliders sliders;                // blur, range, whiten, redden, pinking
    int frameBuffers, renderBuffers, links;  // render buffers: the frame's level, and the main one for a new size
  } steps[] = {{20, {9, 10, 30}, 3, 2, 2},  {20, {9, 10, 30}, 0, 1, 0},   {31, {9, 10, 30}, 3, 2, 0},
               {31, {11, 10, 30}, 0, 1, 1}, {31, {11, 10, 80}, 0, 1, 0},  {31, {11.4, 10, 80}, 0, 1, 1},
               {31, {0, 10, 80}, 0, 1, 1},  {31, {-0.0, 10, 80}, 0, 1, 0}};
  for (const auto& step : steps) {
    SCOPED_TRACE("width " + std::to_string(step.width) + ", blur " + std::to_string(step.sliders.blur));
    GLCallLog log;
    EXPECT_EQ(render(TestFrames::Kind::SkinGrain, step.width, 10, step.sliders), 0);
    EXPECT_EQ(log.count("glGenFramebuffers"), step.frameBuffers);
    EXPECT_EQ(log.count("glGenRenderbuffers"), step.renderBuffers);
    EXPECT_EQ(log.count("glLinkProgram"), step.links);
    const Names programs = log.only({"glDeleteProgram", "glCreateShader"});
    if (step.links == 1) {
      EXPECT_EQ(programs.front().rfind("glDeleteProgram", 0), 0u) << programs.front();
    }
  }
}

// The main render buffer first, then the last pass's quad and program, then the skin shader and its quad; the
// contexts last, and the host gets its own back. A second setup within one load, at the size of the frames before
// the setdown, must take nothing of the old frame buffers for ready.
TEST_F(RenderCommands, GlobalSetdownReleasesFrameBufferObjectsThenTheRenderObjectAndSetupWorksAgain) {
  EXPECT_TRUE(hostContext.isCurrent()) << "after global setup";
  ASSERT_EQ(render(TestFrames::Kind::HueSweep, 16, 9), 0);
  const uint32_t mainRenderBuffer = AEOpenglMainFrameBuffer::mainFrameBuffer()->mainRenderBuffer();
  GLCallLog log;
  host.reset();
  const Names deleted = {"glDeleteRenderbuffers", "glDeleteBuffers", "glDeleteProgram", "glDeleteVertexArrays"};
  EXPECT_EQ(among(log.names(), deleted), (Names{"glDeleteRenderbuffers", "glDeleteBuffers", "glDeleteProgram",
                                                "glDeleteProgram", "glDeleteBuffers"}));
  const std::string first = log.only(deleted).at(0);
  EXPECT_NE(first.find(std::to_string(mainRenderBuffer)), std::string::npos) << first;
  EXPECT_EQ(AEOpenGLContextManager::getSharedDataContext(), nullptr);
  EXPECT_TRUE(hostContext.isCurrent());
  host = std::make_unique<EffectHost>(EntryPointFunc, &calls);
  EXPECT_EQ(render(TestFrames::Kind::SkinGrain, 16, 9), 0) << "after a second setup";
}

// Whichever host call fails, the host gets its context back and the effect keeps no texture, render buffer, level,
// suite or handle; a failed checkout is the host's error, given back before any GL work. An integer thrown half-way
// (the effect's own failures are thrown so) is given back as 516 the same way: a callback that throws stands in for
// them where the effect has none of its own. The next frame is whole.
TEST_F(RenderCommands, AFailureAtAnyStepGivesTheHostItsContextBackAndLeaksNothing) {
  const struct {
    const char* callback;
    int nth;    // which of the frame's calls of it
    int error;  // 0: the call throws an integer instead
    bool beforeGL;
  } cases[] = {
      {"checkout_layer", 1, PF_Err_OUT_OF_MEMORY, true},
      {"checkout_layer_pixels", 1, PF_Err_INTERNAL_STRUCT_DAMAGED, true},
      {"checkout_output", 1, PF_Err_INTERNAL_STRUCT_DAMAGED, true},
      {"checkout_param", 1, 0, false},
      {"checkout_param", 2, PF_Err_INVALID_INDEX, false},
      {"checkin_param", 5, PF_Err_INVALID_INDEX, false},
      {"get_pixel_data8", 1, 0, false},
      {"AcquireSuite", 1, kSPSuiteNotFoundError, false},
      {"HandleSuite.host_new_handle", 1, PF_Err_OUT_OF_MEMORY, false},
  };
  ASSERT_EQ(render(TestFrames::Kind::SkinGrain, 10, 8, {1}), 0);
  const GLFixture::LiveObjects before = pluginObjects();
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.callback) + " call " + std::to_string(c.nth) + (c.error ? " fails" : " throws"));
    const int nth = calls.count(c.callback) + c.nth;
    if (c.error) {
      calls.failCall(c.callback, nth, c.error);
    } else {
      calls.throwOnCall(c.callback, nth, std::make_exception_ptr(7));
    }
    GLCallLog log;
    EXPECT_EQ(render(TestFrames::Kind::SkinGrain, 10, 8, {1}), -1);
    if (c.beforeGL) {
      EXPECT_TRUE(log.calls().empty()) << log.calls()[0].text();
    }
    EXPECT_TRUE(hostContext.isCurrent());
    const GLFixture::LiveObjects after = pluginObjects();
    EXPECT_EQ(after.textures, before.textures);
    EXPECT_EQ(after.renderbuffers, before.renderbuffers);
    EXPECT_TRUE(AEOpenglMainFrameBuffer::mainFrameBuffer()->renderBufferStack().empty());
    EXPECT_EQ(host->heldSuites(), 0);
    EXPECT_EQ(EffectHost::liveHandles(), 0u);
    EXPECT_EQ(render(TestFrames::Kind::HueSweep, 10, 8, {1}), 0) << "the frame after";
  }
}

}  // namespace
}  // namespace Quillmere::Velmira
