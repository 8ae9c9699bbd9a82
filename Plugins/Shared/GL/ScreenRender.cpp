#include "GL/ScreenRender.h"

namespace Quillmere::Velmira {

ScreenRender::ScreenRender() : mShader(vertexSource(), fragmentSource()) {
  mShader.addAttributeBinding("position", 0);
  mShader.addAttributeBinding("input_uv", 1);
}

ScreenRender::~ScreenRender() {
  // The quad's objects go before the program, which mShader takes with it.
  mQuad.release();
}

void ScreenRender::draw(unsigned int texture, float multiplier) { mQuad.draw(mShader, texture, multiplier); }

const char* ScreenRender::vertexSource() {
  return "#version 330\n"
         "in vec3 position;\n"
         "in vec2 input_uv;\n"
         "out vec2 uv;\n"
         "void main() {\n"
         "   uv = input_uv;\n"
         "   gl_Position = vec4(position, 1.0);\n"
         "}";
}

const char* ScreenRender::fragmentSource() {
  return "#version 330\n"
         "in vec2 uv;\n"
         "out vec4 colourOut;\n"
         "uniform sampler2D videoTexture;\n"
         "uniform float multiplier16bit;\n"
         "void main() {\n"
         "   colourOut = texture( videoTexture, uv );\n"
         "   if (colourOut.a == 0) {\n"
         "       colourOut = vec4(0); \n"
         "   } else {\n"
         "       colourOut = vec4(colourOut.a, colourOut.r / colourOut.a, colourOut.g / colourOut.a, "
         "colourOut.b / colourOut.a);\n"
         "   }\n"
         "   colourOut = colourOut / multiplier16bit;\n"
         "}";
}

}  // namespace Quillmere::Velmira
