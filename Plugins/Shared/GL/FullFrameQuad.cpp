#include "GL/FullFrameQuad.h"

#include <cstdint>

#include <glbinding/gl/gl.h>

#include "GL/OpenglShader.h"

using namespace gl;

namespace Quillmere::Velmira {

namespace {

constexpr int kStride = 5 * sizeof(float);

const float* byteOffset(std::uintptr_t offset) { return reinterpret_cast<const float*>(offset); }

}  // namespace

FullFrameQuad::FullFrameQuad() : mVertexBuffer(0) {}

FullFrameQuad::~FullFrameQuad() = default;

void FullFrameQuad::makeObjects() {
  static const float positions[] = {
      1,  -1, 0, 1, 0,  //
      1,  1,  0, 1, 1,  //
      -1, 1,  0, 0, 1,  //
      -1, 1,  0, 0, 1,  //
      -1, -1, 0, 0, 0,  //
      1,  -1, 0, 1, 0,  //
  };
  GLuint& vertexArray = mVertexArray.current();
  glGenVertexArrays(1, &vertexArray);
  glBindVertexArray(vertexArray);
  // A second context of the share group reuses the buffer the first one filled.
  if (mVertexBuffer == 0) {
    glGenBuffers(1, &mVertexBuffer);
    glBindBuffer(GL_ARRAY_BUFFER, mVertexBuffer);
    glBufferData(GL_ARRAY_BUFFER, sizeof(positions), positions, GL_STATIC_DRAW);
  }
}

void FullFrameQuad::draw(OpenglShader& shader, unsigned int texture, float multiplier) {
  if (mVertexArray.current() == 0) {
    makeObjects();
  }
  shader.useProgram();
  glBindVertexArray(mVertexArray.current());
  glBindBuffer(GL_ARRAY_BUFFER, mVertexBuffer);
  shader.setAttribute3fv(0, byteOffset(0), kStride);
  shader.setAttribute2fv(1, byteOffset(3 * sizeof(float)), kStride);
  shader.setUniformTexture("videoTexture", static_cast<int>(GL_TEXTURE_2D), static_cast<int>(texture), 0);
  shader.setUniform1f("multiplier16bit", multiplier);
  glDrawArrays(GL_TRIANGLES, 0, 6);
  shader.disableVertexAttributeArray(0);
  shader.disableVertexAttributeArray(1);
  glBindVertexArray(0);
  glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void FullFrameQuad::release() {
  // Vertex arrays of other contexts go with their contexts at setdown.
  GLuint* vertexArray = mVertexArray.findCurrent();
  if (vertexArray != nullptr && *vertexArray != 0) {
    glDeleteVertexArrays(1, vertexArray);
    *vertexArray = 0;
  }
  if (mVertexBuffer != 0) {
    glDeleteBuffers(1, &mVertexBuffer);
    mVertexBuffer = 0;
  }
  mVertexArray.forgetAll();
}

}  // namespace Quillmere::Velmira
