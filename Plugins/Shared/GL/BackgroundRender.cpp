#include "GL/BackgroundRender.h"

namespace Quillmere::Velmira {

BackgroundRender::BackgroundRender() : mShader(vertexSource(), fragmentSource()) {
  mShader.addAttributeBinding("position", 0);
  mShader.addAttributeBinding("input_uv", 1);
}

BackgroundRender::~BackgroundRender() {
  // The quad's objects go before the program, which mShader takes with it.
  mQuad.release();
}

void BackgroundRender::draw(unsigned int texture, float multiplier) { mQuad.draw(mShader, texture, multiplier); }

const char* BackgroundRender::vertexSource() {
  return "#version 330\n"
         "in vec3 position; in vec2 input_uv; out vec2 uv; void main() {uv = input_uv; gl_Position = "
         "vec4(position, 1.0); }";
}

const char* BackgroundRender::fragmentSource() {
  return "#version 330\n"
         "in vec2 uv;uniform sampler2D videoTexture;uniform float multiplier16bit;out vec4 colourOut;\n"
         "void main() {\tcolourOut = texture( videoTexture, uv );\tcolourOut = colourOut * multiplier16bit; "
         "\tcolourOut = vec4(colourOut.g, colourOut.b, colourOut.a, colourOut.r); \tcolourOut = "
         "vec4(colourOut.a * colourOut.r, colourOut.a * colourOut.g, colourOut.a * colourOut.b, colourOut.a); }";
}

}  // namespace Quillmere::Velmira
