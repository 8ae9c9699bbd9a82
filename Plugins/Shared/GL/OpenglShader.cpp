#include "GL/OpenglShader.h"

#include "Math/Affine.h"
#include "Math/Color.h"
#include "Math/Mat4.h"
#include "Math/Vec2.h"
#include "Math/Vec3.h"
#include "Math/Vec4.h"

#include <glbinding/gl/boolean.h>
#include <glbinding/gl/enum.h>
#include <glbinding/gl/functions.h>
#include <glbinding/gl/types.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <vector>

using namespace gl;

namespace Quillmere::Velmira {

namespace {

// GL is asked for at most this many characters of a log; the buffer keeps one more
// for the terminator so that no log, however long, can overrun it.
constexpr GLsizei kInfoLogLimit = 512;

void dumpShaderErrorS(unsigned int shader, const char* stage) {
  char buffer[kInfoLogLimit + 1];
  GLsizei length = 0;
  glGetShaderInfoLog(shader, kInfoLogLimit, &length, buffer);
  if (length > kInfoLogLimit) {
    length = kInfoLogLimit;
  }
  buffer[length] = '\0';
  printf("Shader %s error:\n%s\n", stage, buffer);
}

void dumpProgramError(GLuint program) {
  char buffer[kInfoLogLimit + 1];
  GLsizei length = 0;
  glGetProgramInfoLog(program, kInfoLogLimit, &length, buffer);
  if (length > kInfoLogLimit) {
    length = kInfoLogLimit;
  }
  buffer[length] = '\0';
  printf("Program error:\n%s\n", buffer);
}

// True when the stage compiled; prints its log otherwise.
bool compileStage(GLuint shader, const std::string& text, const char* stage) {
  const GLchar* source = text.c_str();
  glShaderSource(shader, 1, &source, nullptr);
  glCompileShader(shader);
  GLint status = 0;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
  if (status != 1) {
    dumpShaderErrorS(shader, stage);
    return false;
  }
  return true;
}

// A failed build is retried with the same text at the next useProgram, which may be
// every frame; the shader objects of a failed build are deleted at once so that those
// retries do not pile up objects in the context.
void deleteStages(GLuint vertex, GLuint fragment, GLuint geometry) {
  glDeleteShader(vertex);
  glDeleteShader(fragment);
  if (geometry != 0) {
    glDeleteShader(geometry);
  }
}

void setAttribute(GLint location, GLint components, GLenum type, const void* pointer, int stride) {
  glEnableVertexAttribArray(static_cast<GLuint>(location));
  glVertexAttribPointer(static_cast<GLuint>(location), components, type, GL_FALSE, stride, pointer);
}

}  // namespace

OpenglShader::OpenglShader(const std::string& vertex, const std::string& fragment)
    : mVertexSource(vertex), mFragmentSource(fragment), mGeometrySource(), mProgram(0), mAttributeBindings() {}

OpenglShader::OpenglShader(const std::string& vertex, const std::string& fragment, const std::string& geometry)
    : mVertexSource(vertex), mFragmentSource(fragment), mGeometrySource(geometry), mProgram(0), mAttributeBindings() {}

OpenglShader::~OpenglShader() {
  if (mProgram != 0) {
    glDeleteProgram(mProgram);
  }
}

void OpenglShader::addAttributeBinding(const std::string& name, int location) {
  mAttributeBindings.insert({name, location});
}

void OpenglShader::buildShader() {
  const bool hasGeometry = !mGeometrySource.empty();

  // Every stage exists before any compiles.
  const GLuint vertex = glCreateShader(GL_VERTEX_SHADER);
  const GLuint fragment = glCreateShader(GL_FRAGMENT_SHADER);
  const GLuint geometry = hasGeometry ? glCreateShader(GL_GEOMETRY_SHADER) : 0;

  if (!compileStage(vertex, mVertexSource, "vert") || !compileStage(fragment, mFragmentSource, "frag") ||
      (hasGeometry && !compileStage(geometry, mGeometrySource, "geo"))) {
    deleteStages(vertex, fragment, geometry);
    return;
  }

  const GLuint program = glCreateProgram();
  glAttachShader(program, vertex);
  glAttachShader(program, fragment);
  if (hasGeometry) {
    glAttachShader(program, geometry);
  }
  // The map iterates in byte order of the names, which fixes the order in which GL
  // hears of two names given one location.
  for (const auto& binding : mAttributeBindings) {
    glBindAttribLocation(program, static_cast<GLuint>(binding.second), binding.first.c_str());
  }
  glLinkProgram(program);
  GLint status = 0;
  glGetProgramiv(program, GL_LINK_STATUS, &status);
  if (status != 1) {
    dumpProgramError(program);
    // Deleted at once for the same reason as the stages of a failed compile.
    glDeleteProgram(program);
    deleteStages(vertex, fragment, geometry);
    return;
  }

  mProgram = program;
  glDetachShader(program, vertex);
  glDetachShader(program, fragment);
  glDeleteShader(vertex);
  glDeleteShader(fragment);
  if (hasGeometry) {
    glDetachShader(program, geometry);
    glDeleteShader(geometry);
  }
}

void OpenglShader::useProgram() {
  if (mProgram == 0) {
    buildShader();
  }
  glUseProgram(mProgram);
}

int OpenglShader::getUniformLocation(const std::string& name) const {
  if (mProgram == 0) {
    return -1;
  }
  return glGetUniformLocation(mProgram, name.c_str());
}

int OpenglShader::getAttributeLocation(const std::string& name) const {
  return glGetAttribLocation(mProgram, name.c_str());
}

void OpenglShader::setUniform1i(const std::string& name, int v0) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform1i(location, v0);
  }
}

void OpenglShader::setUniform2i(const std::string& name, int v0, int v1) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform2i(location, v0, v1);
  }
}

void OpenglShader::setUniform3i(const std::string& name, int v0, int v1, int v2) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform3i(location, v0, v1, v2);
  }
}

void OpenglShader::setUniform4i(const std::string& name, int v0, int v1, int v2, int v3) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform4i(location, v0, v1, v2, v3);
  }
}

void OpenglShader::setUniform1f(const std::string& name, float v0) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform1f(location, v0);
  }
}

void OpenglShader::setUniform2f(const std::string& name, float v0, float v1) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform2f(location, v0, v1);
  }
}

void OpenglShader::setUniform3f(const std::string& name, float v0, float v1, float v2) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform3f(location, v0, v1, v2);
  }
}

void OpenglShader::setUniform4f(const std::string& name, float v0, float v1, float v2, float v3) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform4f(location, v0, v1, v2, v3);
  }
}

void OpenglShader::setUniform2f(const std::string& name, const Vec2& value) const {
  setUniform2f(name, static_cast<float>(value.x), static_cast<float>(value.y));
}

void OpenglShader::setUniform3f(const std::string& name, const Vec3& value) const {
  setUniform3f(name, static_cast<float>(value.x), static_cast<float>(value.y), static_cast<float>(value.z));
}

void OpenglShader::setUniform4f(const std::string& name, const Vec4& value) const {
  setUniform4f(name, static_cast<float>(value.x), static_cast<float>(value.y), static_cast<float>(value.z),
               static_cast<float>(value.w));
}

void OpenglShader::setUniform4f(const std::string& name, const Color& value) const {
  setUniform4f(name, static_cast<float>(value.mRed), static_cast<float>(value.mGreen), static_cast<float>(value.mBlue),
               static_cast<float>(value.mAlpha));
}

void OpenglShader::setUniform1iv(const std::string& name, const int* values, int count) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform1iv(location, count, values);
  }
}

void OpenglShader::setUniform2iv(const std::string& name, const int* values, int count) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform2iv(location, count, values);
  }
}

void OpenglShader::setUniform3iv(const std::string& name, const int* values, int count) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform3iv(location, count, values);
  }
}

void OpenglShader::setUniform4iv(const std::string& name, const int* values, int count) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform4iv(location, count, values);
  }
}

void OpenglShader::setUniform1fv(const std::string& name, const float* values, int count) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform1fv(location, count, values);
  }
}

void OpenglShader::setUniform2fv(const std::string& name, const float* values, int count) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform2fv(location, count, values);
  }
}

void OpenglShader::setUniform3fv(const std::string& name, const float* values, int count) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform3fv(location, count, values);
  }
}

void OpenglShader::setUniform4fv(const std::string& name, const float* values, int count) const {
  const GLint location = getUniformLocation(name);
  if (location != -1) {
    glUniform4fv(location, count, values);
  }
}

void OpenglShader::setUniformMatrix3f(const std::string& name, Affine* transforms, int count) const {
  const GLint location = getUniformLocation(name);
  if (location == -1) {
    return;
  }
  // A negative count reaches GL, which refuses it, but allocates nothing here.
  std::vector<float> columns(count > 0 ? 9 * static_cast<size_t>(count) : 0);
  for (size_t i = 0; i * 9 < columns.size(); ++i) {
    const double* m = transforms[i].m;
    const float column[9] = {static_cast<float>(m[0]), static_cast<float>(m[3]), 0.0f,
                             static_cast<float>(m[1]), static_cast<float>(m[4]), 0.0f,
                             static_cast<float>(m[2]), static_cast<float>(m[5]), 1.0f};
    std::copy(column, column + 9, columns.begin() + static_cast<std::ptrdiff_t>(i * 9));
  }
  glUniformMatrix3fv(location, count, GL_FALSE, columns.data());
}

void OpenglShader::setUniformMatrix4f(const std::string& name, const Mat4& matrix, int count) const {
  const GLint location = getUniformLocation(name);
  if (location == -1) {
    return;
  }
  // Both the Mat4 and GL keep columns together, so the elements go in storage order.
  float elements[16];
  for (int i = 0; i < 16; ++i) {
    elements[i] = static_cast<float>(matrix.m[i]);
  }
  glUniformMatrix4fv(location, count, GL_FALSE, elements);
}

void OpenglShader::setUniformTexture(const std::string& name, int target, int texture, int unit) const {
  if (mProgram == 0) {
    return;
  }
  glActiveTexture(static_cast<GLenum>(static_cast<int>(GL_TEXTURE0) + unit));
  glBindTexture(static_cast<GLenum>(target), static_cast<GLuint>(texture));
  setUniform1i(name, unit);
}

void OpenglShader::setAttribute1iv(int location, const int* pointer, int stride) const {
  if (location == -1 || mProgram == 0) {
    return;
  }
  setAttribute(location, 1, GL_INT, pointer, stride);
}

void OpenglShader::setAttribute1fv(const std::string& name, const float* pointer, int stride) const {
  if (mProgram == 0) {
    return;
  }
  const GLint location = glGetAttribLocation(mProgram, name.c_str());
  if (location != -1) {
    setAttribute(location, 1, GL_FLOAT, pointer, stride);
  }
}

void OpenglShader::setAttribute1fv(int location, const float* pointer, int stride) const {
  if (location == -1 || mProgram == 0) {
    return;
  }
  setAttribute(location, 1, GL_FLOAT, pointer, stride);
}

void OpenglShader::setAttribute2fv(const std::string& name, const float* pointer, int stride) const {
  if (mProgram == 0) {
    return;
  }
  const GLint location = glGetAttribLocation(mProgram, name.c_str());
  if (location != -1) {
    setAttribute(location, 2, GL_FLOAT, pointer, stride);
  }
}

void OpenglShader::setAttribute2fv(int location, const float* pointer, int stride) const {
  if (mProgram == 0) {
    return;
  }
  setAttribute(location, 2, GL_FLOAT, pointer, stride);
}

void OpenglShader::setAttribute3fv(const std::string& name, const float* pointer, int stride) const {
  if (mProgram == 0) {
    return;
  }
  const GLint location = glGetAttribLocation(mProgram, name.c_str());
  if (location != -1) {
    setAttribute(location, 3, GL_FLOAT, pointer, stride);
  }
}

void OpenglShader::setAttribute3fv(int location, const float* pointer, int stride) const {
  if (mProgram == 0) {
    return;
  }
  setAttribute(location, 3, GL_FLOAT, pointer, stride);
}

void OpenglShader::setAttribute4fv(const std::string& name, const float* pointer, int stride) const {
  if (mProgram == 0) {
    return;
  }
  const GLint location = glGetAttribLocation(mProgram, name.c_str());
  if (location != -1) {
    setAttribute(location, 4, GL_FLOAT, pointer, stride);
  }
}

void OpenglShader::setAttribute4fv(int location, const float* pointer, int stride) const {
  if (location == -1 || mProgram == 0) {
    return;
  }
  setAttribute(location, 4, GL_FLOAT, pointer, stride);
}

void OpenglShader::disableVertexAttributeArray(const std::string& name) const {
  if (mProgram == 0) {
    return;
  }
  const GLint location = glGetAttribLocation(mProgram, name.c_str());
  if (location != -1) {
    glDisableVertexAttribArray(static_cast<GLuint>(location));
  }
}

void OpenglShader::disableVertexAttributeArray(int location) const {
  if (mProgram == 0) {
    return;
  }
  glDisableVertexAttribArray(static_cast<GLuint>(location));
}

}  // namespace Quillmere::Velmira
