// The shader object on a real context: what a build asks of GL, what its setters leave in the program and the
// vertex array, and a failed build that prints its log, leaves the setters silent and is tried again.
#include <gmock/gmock.h>

#include <glbinding/gl/gl.h>

#include "GL/OpenglShader.h"
#include "Math/Affine.h"
#include "Math/Color.h"
#include "Math/Mat4.h"
#include "Support/GLCallLog.h"
#include "Support/GLFixture.h"

using namespace gl;
using namespace Quillmere::Velmira;
using testing::ElementsAre;
using testing::EndsWith;

static const char* const kVertex =
    "#version 330\nin vec2 position; in vec2 a2; in vec3 a3; in vec4 a4; in float ai; out vec2 uv;\n"
    "void main() { uv = a2 + a3.xy + a4.zw + vec2(ai); gl_Position = vec4(position, 0.0, 1.0); }\n";
// Every uniform and array element is used in the result, so that none is dropped as inactive.
static const char* const kFragment =
    "#version 330\nuniform vec4 f4; uniform ivec2 ia2[2]; uniform mat3 m3[2]; uniform mat4 m4; in vec2 uv;\n"
    "out vec4 c; void main() { c = m4 * vec4(m3[0] * m3[1] * f4.xyz, ia2[0].x + ia2[1].y) + vec4(uv, 0, 1); }\n";
static const char* const kPlain = "#version 330\nin vec2 uv; out vec4 c; void main() { c = vec4(uv, 0, 1); }";
static const char* const kBroken = "#version 330\nvoid main() { undeclared = 1; }\n";

// Names reach GL in byte order, each with its first location, which fixes the order in which GL hears of two names
// given one location; an empty geometry text is no third stage.
TEST(OpenglShader, FirstUseBuildsWithItsBindingsAndSettersLeaveTheirValuesInTheProgramAndTheVertexArray) {
  GLFixture::use();
  OpenglShader shader(kVertex, kFragment, "");
  for (const auto& [name, location] : {std::pair{"ai", 6}, {"a4", 5}, {"a2", 2}, {"a3", 4}, {"a2", 9}})
    shader.addAttributeBinding(name, location);
  GLCallLog log;
  shader.useProgram();
  shader.useProgram();
  EXPECT_THAT(log.only({"glBindAttribLocation"}), ElementsAre(EndsWith(R"(2, "a2"))"), EndsWith(R"(4, "a3"))"),
                                                              EndsWith(R"(5, "a4"))"), EndsWith(R"(6, "ai"))")));
  Affine transforms[2] = {Affine(true), Affine(1, 2, 3, 4, 5, 6)};
  shader.setUniform4f("f4", Color(0.1, 0.2, 0.3, 0.4));
  shader.setUniform2iv("ia2", std::array{9, -10, 11, 12}.data(), 2);
  shader.setUniformMatrix3f("m3", transforms, 2);
  // Given row by row, so its column-major storage, which GL takes as it is, holds the transpose.
  shader.setUniformMatrix4f("m4", Mat4(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, false), 1);
  const std::pair<const char*, std::vector<float>> uniforms[] = {
      {"f4", {0.1f, 0.2f, 0.3f, 0.4f}},  // red, green, blue, alpha
      {"ia2[1]", {11, 12}},
      {"m3[1]", {1, 2, 0, 3, 4, 0, 5, 6, 1}},  // the Affine's arguments, column by column
      {"m4", {1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16}}};
  const auto program = static_cast<GLuint>(GLFixture::integer(GL_CURRENT_PROGRAM));
  for (const auto& [name, values] : uniforms) {
    std::vector<GLfloat> read(16);
    glGetUniformfv(program, shader.getUniformLocation(name), read.data());
    read.resize(values.size());
    EXPECT_EQ(read, values) << "read from " << name;
  }

  GLuint vertexArray = 0;
  glGenVertexArrays(1, &vertexArray);
  glBindVertexArray(vertexArray);
  shader.setAttribute1iv(6, nullptr, 24);
  shader.setAttribute2fv("a2", nullptr, 24);
  shader.setAttribute3fv(4, nullptr, 24);
  shader.setAttribute4fv("a4", nullptr, 24);
  for (const auto& [location, size, type] :
       {std::tuple{6u, 1, GL_INT}, {2u, 2, GL_FLOAT}, {4u, 3, GL_FLOAT}, {5u, 4, GL_FLOAT}}) {
    std::vector<GLint> got;
    for (GLenum query : {GL_VERTEX_ATTRIB_ARRAY_ENABLED, GL_VERTEX_ATTRIB_ARRAY_SIZE, GL_VERTEX_ATTRIB_ARRAY_TYPE,
                         GL_VERTEX_ATTRIB_ARRAY_STRIDE, GL_VERTEX_ATTRIB_ARRAY_NORMALIZED})
      glGetVertexAttribiv(location, query, &got.emplace_back(-1));
    shader.disableVertexAttributeArray(static_cast<int>(location));
    glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &got.emplace_back(-1));
    EXPECT_THAT(got, ElementsAre(1, size, static_cast<GLint>(type), 24, 0, 0))
        << "location " << location << ": enabled, size, type, stride, normalised, enabled after disabling";
  }
  glDeleteVertexArrays(1, &vertexArray);
}

// Without a program every setter is silent, so a draw goes on with no program and the printed log as the only sign.
TEST(OpenglShader, FailedBuildPrintsItsLogLeavesTheSettersSilentAndIsTriedAgain) {
  GLFixture::use();
  // One error for each of many undeclared names: a log far longer than the 512 characters printed.
  std::string longLog = "#version 330\nvoid main() {\n";
  for (int i = 0; i < 60; ++i) longLog += "float v" + std::to_string(i) + " = undeclared" + std::to_string(i) + ";\n";
  // The shortest log printed after the heading; the longest is the 512 characters asked of GL.
  // clang-format off
  const struct { std::string vertex, fragment, geometry, heading; std::size_t shortest; } failures[] = {
      {kBroken, kPlain, "", "Shader vert error:\n", 1},
      {kVertex, kBroken, "", "Shader frag error:\n", 1},
      {kVertex, kPlain, kBroken, "Shader geo error:\n", 1},
      // Compiles, but the function it calls is never defined.
      {kVertex, "#version 330\nout vec4 c; vec4 f(); void main() { c = f(); }", "", "Program error:\n", 1},
      {kVertex, longLog + "}\n", "", "Shader frag error:\n", 511}};
  // clang-format on
  for (const auto& failure : failures) {
    OpenglShader broken(failure.vertex, failure.fragment, failure.geometry);
    GLCallLog log;
    testing::internal::CaptureStdout();
    broken.useProgram();
    broken.useProgram();
    const std::string printed = testing::internal::GetCapturedStdout(), once = printed.substr(0, printed.size() / 2);
    SCOPED_TRACE(once);
    EXPECT_EQ(printed, once + once) << "tried again at the next use";
    EXPECT_EQ(once.substr(0, failure.heading.size()), failure.heading);
    EXPECT_THAT(once.size() - failure.heading.size(), testing::AllOf(testing::Gt(failure.shortest), testing::Le(513u)));
    // A build that is tried at every use must not leave its objects behind.
    EXPECT_EQ(log.count("glDeleteShader"), log.count("glCreateShader"));
    EXPECT_EQ(log.count("glDeleteProgram"), log.count("glCreateProgram"));
    EXPECT_THAT(log.only({"glUseProgram"}), ElementsAre("glUseProgram(0)", "glUseProgram(0)"));
    broken.setUniformTexture("c", static_cast<int>(GL_TEXTURE_2D), 1, 0);
    broken.setAttribute2fv("position", nullptr, 0);
    broken.disableVertexAttributeArray(1);
    EXPECT_EQ(broken.getUniformLocation("c"), -1);
    EXPECT_EQ(log.calls().back().name, "glUseProgram") << "a setter reached GL";
  }
}
