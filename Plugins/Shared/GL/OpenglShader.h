#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace Quillmere::Velmira {

class Vec2;
class Vec3;
class Vec4;
class Color;
class Affine;
class Mat4;

// One GLSL program. The texts are held by value and nothing touches GL until the
// first useProgram(), so an object can be made with no context current. Attribute
// locations are fixed by name before linking.
//
// Every setter is silent when the program does not exist (a build failed or has not
// run yet) or when the name is not active: a drawing routine calls useProgram()
// first and learns of a broken shader only from the message printed on standard
// output. Locations are looked up by name on every call; nothing is cached.
//
// All calls that reach GL need the context that owns, or shares, the program to be
// current on the calling thread; the destructor too.
class OpenglShader {
public:
  OpenglShader(const std::string& vertex, const std::string& fragment);
  OpenglShader(const std::string& vertex, const std::string& fragment, const std::string& geometry);
  virtual ~OpenglShader();

  OpenglShader(const OpenglShader&) = delete;
  OpenglShader& operator=(const OpenglShader&) = delete;

  // A name that is already bound keeps its first location. Has an effect only
  // before the build.
  void addAttributeBinding(const std::string& name, int location);
  // Compiles and links; normally reached through useProgram().
  void buildShader();
  // Builds if there is no program yet, then glUseProgram, with 0 if the build failed.
  void useProgram();

  void setUniform1i(const std::string& name, int v0) const;
  void setUniform2i(const std::string& name, int v0, int v1) const;
  void setUniform3i(const std::string& name, int v0, int v1, int v2) const;
  void setUniform4i(const std::string& name, int v0, int v1, int v2, int v3) const;
  void setUniform1f(const std::string& name, float v0) const;
  void setUniform2f(const std::string& name, float v0, float v1) const;
  void setUniform3f(const std::string& name, float v0, float v1, float v2) const;
  void setUniform4f(const std::string& name, float v0, float v1, float v2, float v3) const;
  void setUniform2f(const std::string& name, const Vec2& value) const;
  void setUniform3f(const std::string& name, const Vec3& value) const;
  void setUniform4f(const std::string& name, const Vec4& value) const;
  // Red, green, blue, alpha.
  void setUniform4f(const std::string& name, const Color& value) const;

  void setUniform1iv(const std::string& name, const int* values, int count) const;
  void setUniform2iv(const std::string& name, const int* values, int count) const;
  void setUniform3iv(const std::string& name, const int* values, int count) const;
  void setUniform4iv(const std::string& name, const int* values, int count) const;
  void setUniform1fv(const std::string& name, const float* values, int count) const;
  void setUniform2fv(const std::string& name, const float* values, int count) const;
  void setUniform3fv(const std::string& name, const float* values, int count) const;
  void setUniform4fv(const std::string& name, const float* values, int count) const;

  // Each 2 by 3 row-major Affine becomes a 3 by 3 matrix in column order with a
  // last row of 0, 0, 1; count matrices are sent.
  void setUniformMatrix3f(const std::string& name, Affine* transforms, int count) const;
  // The Mat4 is already column-major and is sent untransposed. It holds one
  // matrix, so count must be 1.
  void setUniformMatrix4f(const std::string& name, const Mat4& matrix, int count) const;

  // Binds texture to target on unit (even when the name is not active) and sets
  // the sampler to the unit.
  void setUniformTexture(const std::string& name, int target, int texture, int unit) const;

  // -1 without a program.
  int getUniformLocation(const std::string& name) const;
  // Asks GL even without a program (GL then reports an error and -1).
  int getAttributeLocation(const std::string& name) const;

  // pointer is a client pointer or, with an array buffer bound, a byte offset;
  // stride is in bytes. The guards differ on purpose: the location overloads of
  // the two- and three-component setters take 0 or 1 from their callers and do
  // not test for -1.
  void setAttribute1iv(int location, const int* pointer, int stride) const;
  void setAttribute1fv(const std::string& name, const float* pointer, int stride) const;
  void setAttribute1fv(int location, const float* pointer, int stride) const;
  void setAttribute2fv(const std::string& name, const float* pointer, int stride) const;
  void setAttribute2fv(int location, const float* pointer, int stride) const;
  void setAttribute3fv(const std::string& name, const float* pointer, int stride) const;
  void setAttribute3fv(int location, const float* pointer, int stride) const;
  void setAttribute4fv(const std::string& name, const float* pointer, int stride) const;
  void setAttribute4fv(int location, const float* pointer, int stride) const;

  void disableVertexAttributeArray(const std::string& name) const;
  void disableVertexAttributeArray(int location) const;

private:
  std::string mVertexSource;
  std::string mFragmentSource;
  std::string mGeometrySource;
  uint32_t mProgram;
  std::map<std::string, int32_t> mAttributeBindings;
};

}  // namespace Quillmere::Velmira
