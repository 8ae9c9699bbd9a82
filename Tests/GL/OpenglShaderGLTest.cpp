#include "GL/OpenglShader.h"

#include "GL/AEOpenGLContext.h"
#include "GLCallRecorder.h"

#include "Math/Affine.h"
#include "Math/Color.h"
#include "Math/Mat4.h"
#include "Math/Vec2.h"
#include "Math/Vec3.h"
#include "Math/Vec4.h"

#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

using namespace gl;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace Quillmere::Velmira {
namespace {

const char* const kVertex = R"(#version 330
in vec2 position;
in vec2 input_uv;
in vec2 a2;
in vec3 a3;
in vec4 a4;
in float ai;
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

const char* const kGeometryVertex = R"(#version 330
in vec2 position;
out vec2 vertexUv;
void main() { vertexUv = position; gl_Position = vec4(position, 0.0, 1.0); }
)";

const char* const kGeometry = R"(#version 330
layout(triangles) in;
layout(triangle_strip, max_vertices = 3) out;
in vec2 vertexUv[];
out vec2 geometryUv;
void main() {
    for (int i = 0; i < 3; ++i) {
        geometryUv = vertexUv[i];
        gl_Position = gl_in[i].gl_Position;
        EmitVertex();
    }
    EndPrimitive();
}
)";

const char* const kGeometryFragment = R"(#version 330
in vec2 geometryUv;
out vec4 colourOut;
void main() { colourOut = vec4(geometryUv, 0.0, 1.0); }
)";

const char* const kPlainFragment = R"(#version 330
in vec2 uv;
out vec4 colourOut;
void main() { colourOut = vec4(uv, 0.0, 1.0); }
)";

// Compiles, but the function it calls is never defined, so the link fails.
const char* const kUnlinkableFragment = R"(#version 330
in vec2 uv;
out vec4 colourOut;
vec4 missing(vec2 at);
void main() { colourOut = missing(uv); }
)";

const char* const kBrokenStage = "#version 330\nvoid main() { undeclared = 1; }\n";

// A fragment stage whose compile log runs far past the 512 characters that are
// printed: one error for each of many undeclared names.
std::string manyErrorsFragment()
{
    std::string text = "#version 330\nout vec4 colourOut;\nvoid main() {\n";
    for (int i = 0; i < 60; ++i) {
        text += "    float value" + std::to_string(i) + " = undeclaredName" + std::to_string(i) + ";\n";
    }
    return text + "    colourOut = vec4(0.0);\n}\n";
}

GLuint currentProgram()
{
    GLint program = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    return static_cast<GLuint>(program);
}

std::string capture(const std::function<void()>& action)
{
    testing::internal::CaptureStdout();
    action();
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

class OpenglShaderTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        capture([] { sContext = new AEOpenGLContext(nullptr); });
    }

    static void TearDownTestSuite()
    {
        delete sContext;
        sContext = nullptr;
    }

    void SetUp() override
    {
        sContext->makeContextCurrent();
    }

    void TearDown() override
    {
        glUseProgram(0);
    }

    // A linked program of the vertex and fragment stages above, in use.
    static std::unique_ptr<OpenglShader> linkedShader()
    {
        std::unique_ptr<OpenglShader> shader(new OpenglShader(kVertex, kFragment));
        shader->addAttributeBinding("position", 0);
        shader->addAttributeBinding("input_uv", 1);
        shader->addAttributeBinding("a2", 2);
        shader->addAttributeBinding("a3", 4);
        shader->addAttributeBinding("a4", 5);
        shader->addAttributeBinding("ai", 6);
        shader->useProgram();
        return shader;
    }

    static AEOpenGLContext* sContext;
};

AEOpenGLContext* OpenglShaderTest::sContext = nullptr;

// --- uniforms --------------------------------------------------------------------

struct UniformCase {
    const char* label;
    std::function<void(const OpenglShader&)> set;
    const char* readName;  // the uniform or array element read back
    std::vector<float> expected;
    bool integer;
};

void PrintTo(const UniformCase& value, std::ostream* out)
{
    *out << value.label;
}

class OpenglShaderUniformTest : public OpenglShaderTest, public testing::WithParamInterface<UniformCase> {};

TEST_P(OpenglShaderUniformTest, SetterValueReadsBackFromTheProgram)
{
    const UniformCase& uniform = GetParam();
    std::unique_ptr<OpenglShader> shader = linkedShader();
    uniform.set(*shader);

    const GLint location = shader->getUniformLocation(uniform.readName);
    ASSERT_NE(location, -1) << uniform.readName;
    std::vector<float> read(uniform.expected.size());
    if (uniform.integer) {
        std::vector<GLint> values(16);
        glGetUniformiv(currentProgram(), location, values.data());
        for (size_t i = 0; i < read.size(); ++i) {
            read[i] = static_cast<float>(values[i]);
        }
    } else {
        std::vector<GLfloat> values(16);
        glGetUniformfv(currentProgram(), location, values.data());
        std::copy(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(read.size()), read.begin());
    }
    EXPECT_THAT(read, ElementsAreArray(uniform.expected)) << uniform.label << ", read from " << uniform.readName;
}

Affine affineOf(double m0, double m1, double m2, double m3, double m4, double m5)
{
    Affine affine(false);
    const double values[6] = {m0, m1, m2, m3, m4, m5};
    std::copy(values, values + 6, affine.m);
    return affine;
}

const int kInts[4] = {9, -10, 11, 12};
const float kFloats[8] = {0.5f, -1.5f, 2.25f, 3.0f, 4.5f, 5.0f, 6.75f, 7.0f};

INSTANTIATE_TEST_SUITE_P(
    OpenglShader, OpenglShaderUniformTest,
    testing::Values(
        UniformCase{"setUniform1i", [](const OpenglShader& s) { s.setUniform1i("i1", 7); }, "i1", {7}, true},
        UniformCase{"setUniform4i", [](const OpenglShader& s) { s.setUniform4i("i4", 5, 6, 7, -8); }, "i4",
                    {5, 6, 7, -8}, true},
        UniformCase{"setUniform3f", [](const OpenglShader& s) { s.setUniform3f("f3", 1.f, 2.f, 3.5f); }, "f3",
                    {1.f, 2.f, 3.5f}, false},
        UniformCase{"setUniform2f Vec2", [](const OpenglShader& s) { s.setUniform2f("f2", Vec2(0.1, -7.0)); }, "f2",
                    {0.1f, -7.f}, false},
        UniformCase{"setUniform4f Color red green blue alpha",
                    [](const OpenglShader& s) { s.setUniform4f("f4", Color(0.1, 0.2, 0.3, 0.4)); }, "f4",
                    {0.1f, 0.2f, 0.3f, 0.4f}, false},
        UniformCase{"setUniform2iv", [](const OpenglShader& s) { s.setUniform2iv("ia2", kInts, 2); }, "ia2[1]",
                    {11, 12}, true},
        UniformCase{"setUniform4fv", [](const OpenglShader& s) { s.setUniform4fv("fa4", kFloats, 2); }, "fa4[1]",
                    {4.5f, 5.0f, 6.75f, 7.0f}, false},
        UniformCase{"setUniformMatrix3f identity",
                    [](const OpenglShader& s) {
                        Affine identity(true);
                        s.setUniformMatrix3f("m3", &identity, 1);
                    },
                    "m3[0]", {1, 0, 0, 0, 1, 0, 0, 0, 1}, false},
        UniformCase{"setUniformMatrix3f second of two, rows laid out as columns",
                    [](const OpenglShader& s) {
                        Affine transforms[2] = {Affine(true), affineOf(1, 2, 3, 4, 5, 6)};
                        s.setUniformMatrix3f("m3", transforms, 2);
                    },
                    "m3[1]", {1, 4, 0, 2, 5, 0, 3, 6, 1}, false},
        UniformCase{"setUniformMatrix4f in column order",
                    [](const OpenglShader& s) {
                        // Given row by row, so the storage (and GL) sees the transpose.
                        const Mat4 matrix(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, false);
                        s.setUniformMatrix4f("m4", matrix, 1);
                    },
                    "m4", {1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16}, false}));

TEST_F(OpenglShaderTest, SettersWithoutProgramOrActiveNameReachNoUniformCall)
{
    OpenglShader unbuilt(kVertex, kFragment);
    {
        GLCallRecorder recorder;
        unbuilt.setUniform1i("i1", 1);
        unbuilt.setUniform4f("f4", Color(1, 0, 0, 1));
        unbuilt.setUniformMatrix4f("m4", Mat4(true), 1);
        unbuilt.setUniformTexture("videoTexture", static_cast<int>(GL_TEXTURE_2D), 1, 0);
        unbuilt.setAttribute2fv("a2", nullptr, 0);
        unbuilt.disableVertexAttributeArray(1);
        EXPECT_EQ(unbuilt.getUniformLocation("i1"), -1);
        EXPECT_THAT(recorder.names(), IsEmpty()) << "calls before the first useProgram";
    }

    std::unique_ptr<OpenglShader> shader = linkedShader();
    GLCallRecorder recorder;
    shader->setUniform1f("notAUniform", 1.0f);
    shader->setUniformMatrix3f("notAUniform", nullptr, 0);
    EXPECT_THAT(recorder.names(), ElementsAre("glGetUniformLocation", "glGetUniformLocation"));
}

// --- attributes --------------------------------------------------------------------

TEST_F(OpenglShaderTest, AttributeBindingsKeepTheFirstLocationAndReachGLInNameOrder)
{
    OpenglShader shader(kVertex, kPlainFragment);
    shader.addAttributeBinding("position", 0);
    shader.addAttributeBinding("position", 5);
    shader.addAttributeBinding("input_uv", 1);
    // Two names that are not in the text, given one location, in reverse byte order.
    shader.addAttributeBinding("zeta", 7);
    shader.addAttributeBinding("alpha", 7);

    std::vector<GLCallRecorder::Call> binds;
    {
        GLCallRecorder recorder;
        shader.useProgram();
        binds = recorder.callsOf("glBindAttribLocation");
    }
    ASSERT_EQ(binds.size(), 4u) << "glBindAttribLocation calls";
    std::vector<std::string> order;
    for (const GLCallRecorder::Call& bind : binds) {
        order.push_back(bind.parameters.at(2) + "@" + bind.parameters.at(1));
    }
    // glbinding prints a name in quotes.
    EXPECT_THAT(order, ElementsAre(R"("alpha"@7)", R"("input_uv"@1)", R"("position"@0)", R"("zeta"@7)"));
    EXPECT_EQ(shader.getAttributeLocation("position"), 0);
    EXPECT_EQ(shader.getAttributeLocation("input_uv"), 1);
}

struct AttributeCase {
    const char* label;
    std::function<void(const OpenglShader&, const float*)> set;
    GLuint location;
    GLint components;
    GLenum type;
};

void PrintTo(const AttributeCase& value, std::ostream* out)
{
    *out << value.label;
}

class OpenglShaderAttributeTest : public OpenglShaderTest, public testing::WithParamInterface<AttributeCase> {};

TEST_P(OpenglShaderAttributeTest, SetterEnablesTheArrayAndPointsItUnnormalised)
{
    const AttributeCase& attribute = GetParam();
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
    attribute.set(*shader, offset);

    const auto query = [&attribute](GLenum name) {
        GLint value = -1;
        glGetVertexAttribiv(attribute.location, name, &value);
        return value;
    };
    const std::vector<GLint> read = {query(GL_VERTEX_ATTRIB_ARRAY_ENABLED), query(GL_VERTEX_ATTRIB_ARRAY_SIZE),
                                     query(GL_VERTEX_ATTRIB_ARRAY_TYPE), query(GL_VERTEX_ATTRIB_ARRAY_STRIDE),
                                     query(GL_VERTEX_ATTRIB_ARRAY_NORMALIZED)};
    EXPECT_THAT(read, ElementsAre(1, attribute.components, static_cast<GLint>(attribute.type), 24, 0))
        << attribute.label << ": enabled, components, type, stride, normalised";
    void* pointer = nullptr;
    glGetVertexAttribPointerv(attribute.location, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
    EXPECT_EQ(pointer, static_cast<const void*>(offset)) << attribute.label << ": offset";

    shader->disableVertexAttributeArray(static_cast<int>(attribute.location));
    EXPECT_EQ(query(GL_VERTEX_ATTRIB_ARRAY_ENABLED), 0) << attribute.label << ": disabled by location";

    glBindVertexArray(0);
    glDeleteVertexArrays(1, &vertexArray);
    glDeleteBuffers(1, &buffer);
}

INSTANTIATE_TEST_SUITE_P(
    OpenglShader, OpenglShaderAttributeTest,
    testing::Values(
        AttributeCase{"setAttribute1iv by location",
                      [](const OpenglShader& s, const float* p) {
                          s.setAttribute1iv(6, reinterpret_cast<const int*>(p), 24);
                      },
                      6, 1, GL_INT},
        AttributeCase{"setAttribute2fv by name", [](const OpenglShader& s, const float* p) { s.setAttribute2fv("a2", p, 24); },
                      2, 2, GL_FLOAT},
        AttributeCase{"setAttribute3fv by location",
                      [](const OpenglShader& s, const float* p) { s.setAttribute3fv(4, p, 24); }, 4, 3, GL_FLOAT},
        AttributeCase{"setAttribute4fv by name", [](const OpenglShader& s, const float* p) { s.setAttribute4fv("a4", p, 24); },
                      5, 4, GL_FLOAT}));

// --- building ------------------------------------------------------------------------

TEST_F(OpenglShaderTest, EmptyGeometryTextBuildsLikeTheTwoStageConstructor)
{
    std::vector<std::string> twoTexts;
    {
        OpenglShader shader(kVertex, kPlainFragment);
        GLCallRecorder recorder;
        shader.useProgram();
        twoTexts = recorder.names();
    }
    OpenglShader shader(kVertex, kPlainFragment, "");
    GLCallRecorder recorder;
    shader.useProgram();
    EXPECT_EQ(recorder.names(), twoTexts);
    EXPECT_EQ(recorder.count("glCreateShader"), 2);
    EXPECT_NE(currentProgram(), 0u);
}

TEST_F(OpenglShaderTest, UseProgramOnALinkedObjectOnlyUsesIt)
{
    std::unique_ptr<OpenglShader> shader = linkedShader();
    const GLuint program = currentProgram();
    glUseProgram(0);
    GLCallRecorder recorder;
    shader->useProgram();
    EXPECT_THAT(recorder.names(), ElementsAre("glUseProgram"));
    EXPECT_EQ(currentProgram(), program);
}

struct FailureCase {
    const char* label;
    std::string vertex;
    std::string fragment;
    std::string geometry;
    std::string heading;
};

void PrintTo(const FailureCase& value, std::ostream* out)
{
    *out << value.label;
}

class OpenglShaderFailureTest : public OpenglShaderTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(OpenglShaderFailureTest, FailedBuildPrintsItsLogUsesNoProgramAndRetriesNextTime)
{
    const FailureCase& failure = GetParam();
    OpenglShader shader(failure.vertex, failure.fragment, failure.geometry);
    GLCallRecorder recorder;
    const std::string printed = capture([&shader] { shader.useProgram(); });

    ASSERT_GT(printed.size(), failure.heading.size() + 1) << failure.label << ": " << printed;
    EXPECT_EQ(printed.substr(0, failure.heading.size()), failure.heading) << failure.label;
    EXPECT_EQ(printed.back(), '\n') << failure.label;
    EXPECT_EQ(currentProgram(), 0u) << failure.label;
    EXPECT_EQ(shader.getUniformLocation("colourOut"), -1) << failure.label;
    // The objects of a failed build are not left behind in the context.
    EXPECT_EQ(recorder.count("glDeleteShader"), recorder.count("glCreateShader")) << failure.label;
    EXPECT_EQ(recorder.count("glDeleteProgram"), recorder.count("glCreateProgram")) << failure.label;

    const std::string retried = capture([&shader] { shader.useProgram(); });
    EXPECT_EQ(retried, printed) << failure.label << ": the next use builds again";
}

INSTANTIATE_TEST_SUITE_P(
    OpenglShader, OpenglShaderFailureTest,
    testing::Values(FailureCase{"vertex", kBrokenStage, kPlainFragment, "", "Shader vert error:\n"},
                    FailureCase{"fragment", kVertex, kBrokenStage, "", "Shader frag error:\n"},
                    FailureCase{"geometry", kGeometryVertex, kGeometryFragment, kBrokenStage, "Shader geo error:\n"},
                    FailureCase{"link", kVertex, kUnlinkableFragment, "", "Program error:\n"}));

TEST_F(OpenglShaderTest, LongCompileLogIsPrintedClampedToTheBuffer)
{
    const std::string fragment = manyErrorsFragment();
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
    EXPECT_LE(body.size(), 512u) << "printed log characters";
    EXPECT_GE(body.size(), 511u) << "printed log characters";
    EXPECT_EQ(body, fullLog.substr(0, body.size())) << "the printed log is the start of GL's log";
}

}  // namespace
}  // namespace Quillmere::Velmira
