// VelmiraRender's draw on a real context: the uniforms each draw sets, what is made once, when the shader object
// is replaced, and a destructor that has nothing to give back.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <glbinding/gl/gl.h>

#include "GL/AEOpenglMainFrameBuffer.h"
#include "HostDouble.h"
#include "Support/GLCallLog.h"
#include "Support/TestContext.h"
#include "VelmiraRender.h"

using namespace gl;
using namespace Quillmere::Velmira;

namespace {

class SkinDrawPass : public ::testing::Test {
protected:
  void SetUp() override {
    TestContext::use();
    const double sliders[] = {9, 12.5, 30, 40, 50};
    for (int index = 1; index <= 5; ++index) {
      host.setParam(index, sliders[index - 1]);
    }
    target = AEOpenglMainFrameBuffer::mainFrameBuffer();
    target->prepare(13, 7, true);
    target->beginDrawing();
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(GL_RGBA32F), 3, 2, 0, GL_RGBA, GL_FLOAT, nullptr);
    glBindTexture(GL_TEXTURE_2D, 0);
  }
  void TearDown() override {
    target->clearStack();
    glDeleteTextures(1, &texture);
  }

  void draw(VelmiraRender& render) {
    render.preaprea(host.inData(), host.outData(), host.smartRenderExtra());
    render.draw(texture, 1.0f);
  }

  HostDouble host;
  AEOpenglMainFrameBuffer* target = nullptr;
  GLuint texture = 0;
};

}  // namespace

TEST_F(SkinDrawPass, EveryDrawSetsTheSlidersAndTheFrameBuffersSize) {
  VelmiraRender render;
  draw(render);
  GLCallLog log;
  draw(render);
  // The texture is 3x2; viewSize must be the frame buffer's 13x7, since the shader samples by fragment position.
  // videoTexture on unit 0, then multiplier16bit, skinColorRange, whitening, pinking, redden, viewSize.
  const std::vector<std::string> uniforms = log.only({"glUniform1i", "glUniform1f", "glUniform2f"});
  const std::vector<std::string> values = {", 0)", "1)", "0.125)", "0.3)", "0.5)", "0.4)", "13, 7)"};
  ASSERT_EQ(uniforms.size(), values.size()) << uniforms.size();
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string& call = uniforms[i];
    EXPECT_EQ(call.compare(call.size() - values[i].size(), values[i].size(), values[i]), 0) << call;
  }
  EXPECT_EQ(log.count("glCreateShader"), 0) << "an unchanged blur size compiles nothing";
  EXPECT_EQ(log.count("glGenVertexArrays") + log.count("glGenBuffers"), 0) << "the quad is made at the first draw only";
  EXPECT_EQ(log.count("glDrawArrays"), 1);
}

TEST_F(SkinDrawPass, ANewBlurSizeDeletesTheOldProgramBeforeMakingTheNew) {
  VelmiraRender render;
  draw(render);
  host.setParam(1, 11.0);
  GLCallLog log;
  draw(render);
  const std::vector<std::string> names = log.only({"glDeleteProgram", "glCreateShader", "glLinkProgram"});
  ASSERT_EQ(names.size(), 4u);
  EXPECT_EQ(names[0].rfind("glDeleteProgram", 0), 0u) << names[0];
  EXPECT_EQ(names[3].rfind("glLinkProgram", 0), 0u) << names[3];
}

TEST_F(SkinDrawPass, DestructorOfAnObjectThatNeverDrewMakesNoGLCall) {
  GLCallLog log;
  { VelmiraRender render; }
  EXPECT_TRUE(log.calls().empty()) << log.calls()[0].text();
}
