#include "VelmiraRender.h"

#include "GL/AEOpenGLContext.h"
#include "GL/OpenglShader.h"

#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

using namespace gl;

namespace Quillmere::Velmira {
namespace {

// Every whole "Skin Blur" value the slider offers writes a different text; each one
// must compile and link on a real 3.2 core context, the largest taking seconds on
// llvmpipe.
class SkinShaderTest : public testing::TestWithParam<int> {
protected:
  static void SetUpTestSuite() {
    testing::internal::CaptureStdout();
    sContext = new AEOpenGLContext(nullptr);
    testing::internal::GetCapturedStdout();
  }

  static void TearDownTestSuite() { delete sContext; }
  static AEOpenGLContext* sContext;
};

AEOpenGLContext* SkinShaderTest::sContext = nullptr;

TEST_P(SkinShaderTest, TextOfBlurSizeCompilesAndLinks) {
  const int size = GetParam();
  sContext->makeContextCurrent();
  OpenglShader shader(VelmiraRender::vertexSource(), VelmiraRender::fragmentSource(static_cast<float>(size)));
  shader.addAttributeBinding("position", 0);
  shader.addAttributeBinding("input_uv", 1);

  testing::internal::CaptureStdout();
  shader.useProgram();
  fflush(stdout);
  const std::string printed = testing::internal::GetCapturedStdout();

  EXPECT_EQ(printed, "") << "messages of blur size " << size;
  GLint program = 0;
  glGetIntegerv(GL_CURRENT_PROGRAM, &program);
  EXPECT_NE(program, 0) << "program of blur size " << size;
  EXPECT_EQ(shader.getAttributeLocation("position"), 0) << "blur size " << size;
  // input_uv only feeds uv, which the skin pass never reads (it samples by
  // gl_FragCoord), so the linker drops it and it has no location to check.
  EXPECT_NE(shader.getUniformLocation("videoTexture"), -1) << "blur size " << size;
  glUseProgram(0);
}

INSTANTIATE_TEST_SUITE_P(SkinBlur, SkinShaderTest, testing::Range(0, 31));

}  // namespace
}  // namespace Quillmere::Velmira
