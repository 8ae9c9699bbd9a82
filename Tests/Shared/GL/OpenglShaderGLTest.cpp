#include "GL/OpenglShader.h"

#include "GL/AEOpenGLContext.h"
#include "Support/GLCallLog.h"

#include "Math/Affine.h"
#include "Math/Color.h"
#include "Math/Mat4.h"
#include "Math/Vec2.h"

#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace gl;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace Quillmere::Velmira {
namespace {

const char* const kVertex = R"(#version 330
in vec2 position; in vec2 input_uv; in vec2 a2; in vec3 a3; in vec4 a4; in float ai;
out vec2 uv;
void main() {
    uv = input_uv + a2 + a3.xy + a4.zw + vec2(ai);
    gl_Position = vec4(position, 0.0, 1.0);
}
)";

// Every uniform and every array element takes part in the result, so none is
// dropped as inactive.
const char* const kFragment = R"(#version 330
uniform int i1; uniform ivec4 i4; uniform vec2 f2; uniform vec3 f3; uniform vec4 f4;
uniform ivec2 ia2[2]; uniform vec4 fa4[2]; uniform mat3 m3[2]; uniform mat4 m4;
uniform sampler2D videoTexture;
in vec2 uv;
out vec4 colourOut;
void main() {
    float sum = float(i1 + i4.x + i4.y + i4.z + i4.w) + dot(f2, vec2(1.0)) + dot(f3, vec3(1.0)) + dot(f4, vec4(1.0));
    for (int k = 0; k < 2; ++k) {
        sum += float(ia2[k].x + ia2[k].y) + dot(fa4[k], vec4(1.0)) + dot(m3[k] * vec3(1.0), vec3(1.0));
    }
    colourOut = m4 * texture(videoTexture, uv) + vec4(sum);
}
)";

const char* const kPlainFragment =
    "#version 330\nin vec2 uv;\nout vec4 colourOut;\n"
    "void main() { colourOut = vec4(uv, 0.0, 1.0); }\n";

// Compiles, but the function it calls is never defined, so the link fails.
const char* const kUnlinkableFragment =
    "#version 330\nin vec2 uv;\nout vec4 colourOut;\nvec4 missing(vec2 at);\n"
    "void main() { colourOut = missing(uv); }\n";

const char* const kBrokenStage = "#version 330\nvoid main() { undeclared = 1; }\n";

GLuint currentProgram() {
  GLint program = 0;
  glGetIntegerv(GL_CURRENT_PROGRAM, &program);
  return static_cast<GLuint>(program);
}

std::string capture(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

class OpenglShaderTest : public testing::Test {
protected:
  static void SetUpTestSuite() {
    capture([] { sContext = new AEOpenGLContext(nullptr); });
  }
  static void TearDownTestSuite() { delete sContext; }
  void SetUp() override { sContext->makeContextCurrent(); }
  void TearDown() override { glUseProgram(0); }

  // A linked program of kVertex and kFragment, in use.
  static std::unique_ptr<OpenglShader> linkedShader() {
    std::unique_ptr<OpenglShader> shader(new OpenglShader(kVertex, kFragment));
    const std::pair<const char*, int> bindings[] = {{"position", 0}, {"input_uv", 1}, {"a2", 2},
                                                    {"a3", 4},       {"a4", 5},       {"ai", 6}};
    for (const auto& binding : bindings) {
      shader->addAttributeBinding(binding.first, binding.second);
    }
    shader->useProgram();
    return shader;
  }

  static AEOpenGLContext* sContext;
};

AEOpenGLContext* OpenglShaderTest::sContext = nullptr;

TEST_F(OpenglShaderTest, SetterValuesReadBackFromTheProgram) {
  std::unique_ptr<OpenglShader> shader = linkedShader();
  const int ints[4] = {9, -10, 11, 12};
  const float floats[8] = {0.5f, -1.5f, 2.25f, 3.0f, 4.5f, 5.0f, 6.75f, 7.0f};
  Affine transforms[2] = {Affine(true), Affine(false)};
  const double rows[6] = {1, 2, 3, 4, 5, 6};
  std::copy(rows, rows + 6, transforms[1].m);
  shader->setUniform1i("i1", 7);
  shader->setUniform4i("i4", 5, 6, 7, -8);
  shader->setUniform3f("f3", 1.f, 2.f, 3.5f);
  shader->setUniform2f("f2", Vec2(0.1, -7.0));
  shader->setUniform4f("f4", Color(0.1, 0.2, 0.3, 0.4));
  shader->setUniform2iv("ia2", ints, 2);
  shader->setUniform4fv("fa4", floats, 2);
  shader->setUniformMatrix3f("m3", transforms, 2);
  // Given row by row, so the storage (and GL) sees the transpose.
  shader->setUniformMatrix4f("m4", Mat4(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, false), 1);

  // Integer uniforms are read as floats too, which GL converts exactly.
  const std::pair<const char*, std::vector<float>> expected[] = {
      {"i1", {7}},
      {"i4", {5, 6, 7, -8}},
      {"f3", {1.f, 2.f, 3.5f}},
      {"f2", {0.1f, -7.f}},
      {"f4", {0.1f, 0.2f, 0.3f, 0.4f}},  // red, green, blue, alpha
      {"ia2[1]", {11, 12}},
      {"fa4[1]", {4.5f, 5.0f, 6.75f, 7.0f}},
      {"m3[0]", {1, 0, 0, 0, 1, 0, 0, 0, 1}},
      {"m3[1]", {1, 4, 0, 2, 5, 0, 3, 6, 1}},  // the rows of the Affine become columns
      {"m4", {1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16}}};
  for (const auto& uniform : expected) {
    const GLint location = shader->getUniformLocation(uniform.first);
    ASSERT_NE(location, -1) << uniform.first;
    std::vector<GLfloat> read(16);
    glGetUniformfv(currentProgram(), location, read.data());
    read.resize(uniform.second.size());
    EXPECT_THAT(read, ElementsAreArray(uniform.second)) << "read from " << uniform.first;
  }
}

TEST_F(OpenglShaderTest, SettersWithoutProgramOrActiveNameReachNoUniformCall) {
  OpenglShader unbuilt(kVertex, kFragment);
  std::unique_ptr<OpenglShader> shader = linkedShader();
  GLCallLog recorder;
  unbuilt.setUniform1i("i1", 1);
  unbuilt.setUniformMatrix4f("m4", Mat4(true), 1);
  unbuilt.setUniformTexture("videoTexture", static_cast<int>(GL_TEXTURE_2D), 1, 0);
  unbuilt.setAttribute2fv("a2", nullptr, 0);
  unbuilt.disableVertexAttributeArray(1);
  EXPECT_EQ(unbuilt.getUniformLocation("i1"), -1);
  shader->setUniform1f("notAUniform", 1.0f);
  shader->setUniformMatrix3f("notAUniform", nullptr, 0);
  EXPECT_THAT(recorder.names(), ElementsAre("glGetUniformLocation", "glGetUniformLocation"))
      << "only the built program looks its names up";
}

TEST_F(OpenglShaderTest, AttributeBindingsKeepTheFirstLocationAndReachGLInNameOrder) {
  OpenglShader shader(kVertex, kPlainFragment);
  shader.addAttributeBinding("position", 0);
  shader.addAttributeBinding("position", 5);
  shader.addAttributeBinding("input_uv", 1);
  // Two names that are not in the text, given one location, in reverse byte order.
  shader.addAttributeBinding("zeta", 7);
  shader.addAttributeBinding("alpha", 7);

  std::vector<std::string> order;
  {
    GLCallLog recorder;
    shader.useProgram();
    for (const GLCallLog::Call& bind : recorder.callsOf("glBindAttribLocation")) {
      order.push_back(bind.arguments.at(2) + "@" + bind.arguments.at(1));
    }
  }
  // glbinding prints a name in quotes.
  EXPECT_THAT(order, ElementsAre(R"("alpha"@7)", R"("input_uv"@1)", R"("position"@0)", R"("zeta"@7)"));
  EXPECT_EQ(shader.getAttributeLocation("position"), 0);
  EXPECT_EQ(shader.getAttributeLocation("input_uv"), 1);
}

TEST_F(OpenglShaderTest, AttributeSettersEnableTheArrayAndPointItUnnormalised) {
  std::unique_ptr<OpenglShader> shader = linkedShader();
  GLuint vertexArray = 0;
  GLuint buffer = 0;
  glGenVertexArrays(1, &vertexArray);
  glBindVertexArray(vertexArray);
  glGenBuffers(1, &buffer);
  glBindBuffer(GL_ARRAY_BUFFER, buffer);
  glBufferData(GL_ARRAY_BUFFER, 256, nullptr, GL_STATIC_DRAW);
  // With a buffer bound, the pointer argument is a byte offset into it.
  const float* offset = reinterpret_cast<const float*>(static_cast<uintptr_t>(16));
  shader->setAttribute1iv(6, reinterpret_cast<const int*>(offset), 24);
  shader->setAttribute2fv("a2", offset, 24);
  shader->setAttribute3fv(4, offset, 24);
  shader->setAttribute4fv("a4", offset, 24);

  struct Expected {
    GLuint location;
    GLint components;
    GLenum type;
  };
  for (const Expected& attribute :
       {Expected{6, 1, GL_INT}, Expected{2, 2, GL_FLOAT}, Expected{4, 3, GL_FLOAT}, Expected{5, 4, GL_FLOAT}}) {
    const auto query = [&attribute](GLenum name) {
      GLint value = -1;
      glGetVertexAttribiv(attribute.location, name, &value);
      return value;
    };
    EXPECT_THAT((std::vector<GLint>{query(GL_VERTEX_ATTRIB_ARRAY_ENABLED), query(GL_VERTEX_ATTRIB_ARRAY_SIZE),
                                    query(GL_VERTEX_ATTRIB_ARRAY_TYPE), query(GL_VERTEX_ATTRIB_ARRAY_STRIDE),
                                    query(GL_VERTEX_ATTRIB_ARRAY_NORMALIZED)}),
                ElementsAre(1, attribute.components, static_cast<GLint>(attribute.type), 24, 0))
        << "location " << attribute.location << ": enabled, components, type, stride, normalised";
    void* pointer = nullptr;
    glGetVertexAttribPointerv(attribute.location, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
    EXPECT_EQ(pointer, static_cast<const void*>(offset)) << "offset of location " << attribute.location;
    shader->disableVertexAttributeArray(static_cast<int>(attribute.location));
    EXPECT_EQ(query(GL_VERTEX_ATTRIB_ARRAY_ENABLED), 0) << "location " << attribute.location << " disabled";
  }
  glBindVertexArray(0);
  glDeleteVertexArrays(1, &vertexArray);
  glDeleteBuffers(1, &buffer);
}

TEST_F(OpenglShaderTest, FirstUseBuildsTwoStagesAndLaterUsesOnlyUseTheProgram) {
  for (const bool emptyGeometry : {false, true}) {
    std::unique_ptr<OpenglShader> shader(emptyGeometry ? new OpenglShader(kVertex, kPlainFragment, "")
                                                       : new OpenglShader(kVertex, kPlainFragment));
    {
      GLCallLog recorder;
      shader->useProgram();
      EXPECT_EQ(recorder.count("glCreateShader"), 2) << "empty geometry text: " << emptyGeometry;
      EXPECT_EQ(recorder.count("glDeleteShader"), 2) << "empty geometry text: " << emptyGeometry;
    }
    const GLuint program = currentProgram();
    ASSERT_NE(program, 0u) << "empty geometry text: " << emptyGeometry;
    glUseProgram(0);
    GLCallLog recorder;
    shader->useProgram();
    EXPECT_THAT(recorder.names(), ElementsAre("glUseProgram")) << "empty geometry text: " << emptyGeometry;
    EXPECT_EQ(currentProgram(), program);
  }
}

TEST_F(OpenglShaderTest, FailedBuildPrintsItsLogUsesNoProgramAndRetriesNextTime) {
  struct Failure {
    const char* vertex;
    const char* fragment;
    const char* geometry;
    std::string heading;
  };
  for (const Failure& failure : {Failure{kBrokenStage, kPlainFragment, "", "Shader vert error:\n"},
                                 Failure{kVertex, kBrokenStage, "", "Shader frag error:\n"},
                                 Failure{kVertex, kPlainFragment, kBrokenStage, "Shader geo error:\n"},
                                 Failure{kVertex, kUnlinkableFragment, "", "Program error:\n"}}) {
    OpenglShader shader(failure.vertex, failure.fragment, failure.geometry);
    GLCallLog recorder;
    const std::string printed = capture([&shader] { shader.useProgram(); });

    ASSERT_GT(printed.size(), failure.heading.size() + 1) << printed;
    EXPECT_EQ(printed.substr(0, failure.heading.size()), failure.heading);
    EXPECT_EQ(printed.back(), '\n') << failure.heading;
    EXPECT_EQ(currentProgram(), 0u) << failure.heading;
    EXPECT_EQ(shader.getUniformLocation("colourOut"), -1) << failure.heading;
    // The objects of a failed build are not left behind in the context.
    EXPECT_EQ(recorder.count("glDeleteShader"), recorder.count("glCreateShader")) << failure.heading;
    EXPECT_EQ(recorder.count("glDeleteProgram"), recorder.count("glCreateProgram")) << failure.heading;
    EXPECT_EQ(capture([&shader] { shader.useProgram(); }), printed) << failure.heading << " next use";
  }
}

TEST_F(OpenglShaderTest, LongCompileLogIsPrintedClampedToTheBuffer) {
  // One error for each of many undeclared names: a log far past the 512 characters printed.
  std::string fragment = "#version 330\nout vec4 colourOut;\nvoid main() {\n";
  for (int i = 0; i < 60; ++i) {
    fragment += "float value" + std::to_string(i) + " = undeclaredName" + std::to_string(i) + ";\n";
  }
  fragment += "colourOut = vec4(0.0);\n}\n";
  // The whole log, as GL holds it, to compare with what is printed.
  const GLuint probe = glCreateShader(GL_FRAGMENT_SHADER);
  const char* text = fragment.c_str();
  glShaderSource(probe, 1, &text, nullptr);
  glCompileShader(probe);
  GLint fullLength = 0;
  glGetShaderiv(probe, GL_INFO_LOG_LENGTH, &fullLength);
  std::string fullLog(static_cast<size_t>(fullLength), '\0');
  glGetShaderInfoLog(probe, fullLength, nullptr, &fullLog[0]);
  glDeleteShader(probe);
  ASSERT_GT(fullLength, 600) << "the test needs a log longer than the buffer";

  OpenglShader shader(kVertex, fragment);
  const std::string printed = capture([&shader] { shader.useProgram(); });
  const std::string heading = "Shader frag error:\n";
  ASSERT_EQ(printed.substr(0, heading.size()), heading);
  const std::string body = printed.substr(heading.size(), printed.size() - heading.size() - 1);
  EXPECT_THAT(body.size(), testing::AllOf(testing::Ge(511u), testing::Le(512u))) << "printed log characters";
  EXPECT_EQ(body, fullLog.substr(0, body.size())) << "the printed log is the start of GL's log";
}

}  // namespace
}  // namespace Quillmere::Velmira
