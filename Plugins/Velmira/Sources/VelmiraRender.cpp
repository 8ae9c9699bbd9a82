#include "VelmiraRender.h"

#include <cmath>
#include <cstring>
#include <sstream>
#include <vector>

#include <glbinding/gl/gl.h>

#include "GL/AEOpenglMainFrameBuffer.h"
#include "GL/OpenglShader.h"

namespace Quillmere::Velmira {

namespace {

// The shader's declarations, its channel swap, the colour adjustment and the skin test
// by hue: everything that does not depend on the blur size.
constexpr const char* kShaderHead =
    "#version 330\n"
    "in vec2 uv;\n"
    "uniform sampler2D videoTexture;\n"
    "uniform float multiplier16bit;\n"
    "uniform float skinColorRange;\n"
    "uniform float redden;\n"
    "uniform float whitening;\n"
    "uniform float pinking;\n"
    "uniform vec2 viewSize;\n"
    "out vec4 colourOut;\n"
    "vec4 swapChannel(in vec4 eColor){return vec4(eColor.g, eColor.b, eColor.a, eColor.r);}\n"
    "vec4 colorAdjust(vec4 fragColor){\n"
    "    if ((whitening != 0.0)) {\n"
    "        fragColor.xyz = clamp (mix (fragColor.xyz, (vec3(1.0, 1.0, 1.0) -\n"
    "        ((vec3(1.0, 1.0, 1.0) - fragColor.xyz) * (vec3(1.0, 1.0, 1.0) - fragColor.xyz))),\n"
    "        (whitening * dot (vec3(0.299, 0.587, 0.114), fragColor.xyz))), 0.0, 1.0);\n"
    "    };\n"
    "    if ((redden != 0.0)) {\n"
    "        lowp vec3 redColor = mix (fragColor.xyz, (vec3(1.0, 1.0, 1.0) -\n"
    "            ((vec3(1.0, 1.0, 1.0) - fragColor.xyz) * (vec3(1.0, 1.0, 1.0) - fragColor.xyz))),\n"
    "        (0.2 * redden));\n"
    "        lowp vec3 tmpvar_3 = mix (vec3(dot (redColor, vec3(0.299, 0.587, 0.114))),\n"
    "            redColor, (1.0 + redden));\n"
    "        lowp vec3 tmpvar_4 = mix (tmpvar_3.xyy, tmpvar_3, 0.5);\n"
    "        lowp float tmpvar_5 = dot (tmpvar_4, vec3(0.299, 0.587, 0.114));\n"
    "        fragColor.xyz = clamp (mix (tmpvar_3, mix (tmpvar_4, sqrt(tmpvar_4), tmpvar_5),\n"
    "                (redden * tmpvar_5)), 0.0, 1.0);\n"
    "    };\n"
    "    if ((pinking != 0.0)) {\n"
    "        lowp vec3 pinkColor;\n"
    "        pinkColor.x = ((sqrt(fragColor.x) * 0.41) + (0.59 * fragColor.x));\n"
    "        pinkColor.y = ((sqrt(fragColor.y) * 0.568) + (0.432 * fragColor.y));\n"
    "        pinkColor.z = ((sqrt(fragColor.z) * 0.7640001) + (0.2359999 * fragColor.z));\n"
    "        fragColor.xyz = clamp (mix (fragColor.xyz, pinkColor,\n"
    "            (pinking * dot (vec3(0.299, 0.587, 0.114), fragColor.xyz))), 0.0, 1.0);\n"
    "    };\n"
    "    return fragColor;\n"
    "}\n"
    "vec3 rgb2hsv(vec3 c) {\n"
    "    vec4 K = vec4(0.0, -1.0 / 3.0, 2.0 / 3.0, -1.0);\n"
    "    vec4 p = mix(vec4(c.bg, K.wz), vec4(c.gb, K.xy), step(c.b, c.g));\n"
    "    vec4 q = mix(vec4(p.xyw, c.r), vec4(c.r, p.yzx), step(p.x, c.r));\n"
    "    \n"
    "    float d = q.x - min(q.w, q.y);\n"
    "    float e = 1.0e-10;\n"
    "    return vec3(abs(q.z + (q.w - q.y) / (6.0 * d + e)), d / (q.x + e), q.x);\n"
    "}\n"
    "float skinTest(vec3 rgb, float skinRange){\n"
    "    const float skinHue = 0.05;\n"
    "    vec3 colorHSV = rgb2hsv(rgb);\n"
    "    float hue = colorHSV.x;\n"
    "    float dist = hue - skinHue;\n"
    "    if (dist > 0.5){dist -= 1.0;}\n"
    "    if (dist < -0.5){dist += 1.0;}\n"
    "    return 1.0 - smoothstep(skinRange - 0.01, skinRange, abs(dist)/0.5);\n"
    "}\n";

// Samples the pixel, blurs it when it is skin, adjusts the colour and premultiplies. The
// commented line stays: it is part of the text.
constexpr const char* kShaderMain =
    "void main(){\n"
    "   colourOut = texture(videoTexture, gl_FragCoord.xy / viewSize.xy);\n"
    "   float skinFactor = skinTest(colourOut.gba, skinColorRange);\n"
    "   if(skinFactor > 0){\n"
    "       colourOut = vec4(bilateralBlur(colourOut), colourOut.a);\n"
    "    }\n"
    "   colourOut = colorAdjust(swapChannel(colourOut)) * multiplier16bit;\n"
    "\t//colourOut = vec4(colourOut.g, colourOut.b, colourOut.a, colourOut.r) * multiplier16bit; \n"
    "\tcolourOut = vec4(colourOut.a * colourOut.r, colourOut.a * colourOut.g, colourOut.a * colourOut.b, colourOut.a); "
    "\n"
    "}\n";

constexpr const char* kVertexSource =
    "#version 330\n"
    "in vec2 position; in vec2 input_uv; out vec2 uv; void main() {uv = input_uv; gl_Position = vec4(position, "
    "0.0, 1.0); }";

constexpr const char* kBlurWithoutKernel = "vec3 bilateralBlur(vec4 srcColor){ return srcColor.rgb;}\n";

constexpr const char* kBlurOpening =
    "float normpdf3(in vec3 v, in float sigma) {\n"
    "\treturn 0.39894 * exp(-0.5 * dot(v,v) / (sigma * sigma)) / sigma;\n"
    "}\n"
    "vec3 bilateralBlur(vec4 srcColor){\n"
    "    vec3 final_colour = vec3(0.0);\n"
    "    float Z = 0.0;\n"
    "    vec3 cc;\n"
    "    float factor;\n";

constexpr const char* kBlurClosing =
    "    return final_colour / Z;\n"
    "}\n";

constexpr float kSigma = 10.0f;  // spatial sigma, in pixels
constexpr double kBSigma = 0.1;  // range sigma, in colour units

// The constant 0.39894 is the shader's own, kept so that the weights here and the range
// factor in the text are of one family.
double normpdf(double x, double sigma) { return std::exp(x * (-0.5 * x) / (sigma * sigma)) * 0.39894 / sigma; }

// The blur size truncated toward zero. A size the host cannot send (negative, not a
// number, beyond an int) generates no kernel rather than an undefined conversion.
int32_t kernelSize(float blurSize) {
  if (!(blurSize >= 0.0f && blurSize < 2147483648.0f)) {
    return 0;
  }
  return static_cast<int32_t>(blurSize);
}

void writeConstants(std::ostream& text) {
  text << "#define SIGMA " << kSigma << "\n";
  text << "#define BSIGMA " << kBSigma << "\n";
  text << "const float bZ = " << 1.0 / normpdf(0.0, kBSigma) << ";\n";
}

// Spatial weights by offset from the centre; entries 0 to 2h are used, so an even size
// behaves like the odd size below it.
std::vector<double> spatialKernel(int32_t n, int32_t h) {
  std::vector<double> kernel(static_cast<std::size_t>(n));
  for (int32_t d = 0; d <= h; ++d) {
    kernel[static_cast<std::size_t>(h + d)] = kernel[static_cast<std::size_t>(h - d)] =
        normpdf(d, static_cast<double>(kSigma));
  }
  return kernel;
}

// One tap: i is the offset in x, j in y; the weight of j is written first.
void writeTap(std::ostream& text, const std::vector<double>& kernel, int32_t h, int32_t i, int32_t j) {
  text << "    cc = texture(videoTexture, (gl_FragCoord.xy+vec2(float(" << i << "),float(" << j
       << "))) / viewSize.xy).rgb;\n";
  text << "    factor = normpdf3(cc-colourOut.rgb, BSIGMA) * bZ * " << kernel[static_cast<std::size_t>(h + j)] << "* "
       << kernel[static_cast<std::size_t>(h + i)] << ";\n";
  text << "    Z += factor;\n    final_colour += factor * cc;\n";
}

void writeBlur(std::ostream& text, int32_t n) {
  if (n == 0) {
    text << kBlurWithoutKernel;
    return;
  }
  const int32_t h = (n - 1) / 2;
  const std::vector<double> kernel = spatialKernel(n, h);
  text << kBlurOpening;
  for (int32_t i = -h; i <= h; ++i) {
    for (int32_t j = -h; j <= h; ++j) {
      writeTap(text, kernel, h, i, j);
    }
  }
  text << kBlurClosing;
}

}  // namespace

VelmiraRender::VelmiraRender()
    : mShader(nullptr),
      mVertexBuffer(0),
      mBlurSize(10.0f),
      mSkinColorRange(0.3f),
      mWhitening(0.3f),
      mRedden(0.0f),
      mPinking(0.0f),
      mRebuild(true) {}

// Runs with the shared data context current (global setdown). Vertex arrays that other
// contexts made go with those contexts, which setdown deletes next.
VelmiraRender::~VelmiraRender() {
  delete mShader;
  uint32_t* vertexArray = mVertexArray.findCurrent();
  if (vertexArray != nullptr && *vertexArray != 0) {
    gl::glDeleteVertexArrays(1, vertexArray);
  }
  if (mVertexBuffer != 0) {
    gl::glDeleteBuffers(1, &mVertexBuffer);
  }
}

std::string VelmiraRender::vertexSource() { return kVertexSource; }

// A default stream on purpose: numbers print as %g with six significant digits, and the
// text (hence the compiled program) is the same for the same size, byte for byte.
std::string VelmiraRender::fragmentSource(float blurSize) {
  const int32_t n = kernelSize(blurSize);
  std::ostringstream text;
  text << kShaderHead;
  writeConstants(text);
  writeBlur(text, n);
  text << kShaderMain;
  return text.str();
}

PF_Err VelmiraRender::preaprea(PF_InData* in_data, PF_OutData*, PF_SmartRenderExtra*) {
  PF_Err err = readBlurSize(in_data);
  // Indices 2 to 5, each stored as a fraction of 100.
  float* const percents[] = {&mSkinColorRange, &mWhitening, &mRedden, &mPinking};
  PF_ParamIndex index = 2;
  for (float* member : percents) {
    err = readPercent(in_data, index++, *member, err);
  }
  return err;
}

// Read even when an earlier call failed: the blur size comes first, and a failed
// checkout leaves the cleared record, so the size becomes 0.
PF_Err VelmiraRender::readBlurSize(PF_InData* in_data) {
  PF_ParamDef param;
  std::memset(&param, 0, sizeof param);
  PF_Err err = in_data->inter.checkout_param(in_data->effect_ref, 1, in_data->current_time, in_data->time_step,
                                             in_data->time_scale, &param);
  const float blurSize = static_cast<float>(param.u.fs_d.value);
  const PF_Err checkinErr = in_data->inter.checkin_param(in_data->effect_ref, &param);
  if (err == PF_Err_NONE) {
    err = checkinErr;
  }
  // On the floats, not on the integer size: 9 to 9.4 rebuilds though the text is equal.
  if (blurSize != mBlurSize || std::isnan(blurSize) || std::isnan(mBlurSize)) {
    mRebuild = true;
  }
  mBlurSize = blurSize;
  return err;
}

// After a failure no further checkout is made and the member becomes 0, but the
// check-in still runs, with the cleared record.
PF_Err VelmiraRender::readPercent(PF_InData* in_data, PF_ParamIndex index, float& member, PF_Err err) {
  PF_ParamDef param;
  std::memset(&param, 0, sizeof param);
  float value = 0.0f;
  if (err == PF_Err_NONE) {
    err = in_data->inter.checkout_param(in_data->effect_ref, index, in_data->current_time, in_data->time_step,
                                        in_data->time_scale, &param);
    value = static_cast<float>(param.u.fs_d.value);
  }
  member = value / 100.0f;
  const PF_Err checkinErr = in_data->inter.checkin_param(in_data->effect_ref, &param);
  if (err == PF_Err_NONE) {
    err = checkinErr;
  }
  return err;
}

void VelmiraRender::buildShader() {
  if (!mRebuild) {
    return;
  }
  replaceShader(vertexSource(), fragmentSource(mBlurSize));
}

// The old object (and its program, in the context current now) goes before the new one
// exists. The new one compiles at its first useProgram, in the same draw.
void VelmiraRender::replaceShader(const std::string& vertex, const std::string& fragment) {
  delete mShader;
  mShader = nullptr;  // never dangling, should the allocation below throw
  mShader = new OpenglShader(vertex, fragment);
  mShader->addAttributeBinding("position", 0);
  mShader->addAttributeBinding("input_uv", 1);
  mRebuild = false;
}

// Two triangles over the whole target: x, y, u, v. A second context of the share group
// makes only its vertex array; the buffer the first one filled serves it too.
void VelmiraRender::makeQuad(uint32_t& vertexArray) {
  static const float positions[] = {
      1,  -1, 1, 0,  //
      1,  1,  1, 1,  //
      -1, 1,  0, 1,  //
      -1, 1,  0, 1,  //
      -1, -1, 0, 0,  //
      1,  -1, 1, 0,  //
  };
  gl::glGenVertexArrays(1, &vertexArray);
  if (mVertexBuffer == 0) {
    gl::glGenBuffers(1, &mVertexBuffer);
    gl::glBindBuffer(gl::GL_ARRAY_BUFFER, mVertexBuffer);
    gl::glBufferData(gl::GL_ARRAY_BUFFER, sizeof(positions), positions, gl::GL_STATIC_DRAW);
  }
}

// The target is the level beginDrawing pushed: blending off, viewport and size those of
// the main frame buffer, which is also where viewSize comes from.
void VelmiraRender::draw(unsigned int texture, float multiplier) {
  uint32_t& vertexArray = mVertexArray.current();
  if (vertexArray == 0) {
    makeQuad(vertexArray);
  }
  buildShader();
  mShader->useProgram();
  gl::glBindVertexArray(vertexArray);
  gl::glBindBuffer(gl::GL_ARRAY_BUFFER, mVertexBuffer);
  constexpr int kStride = 4 * sizeof(float);
  mShader->setAttribute2fv(0, reinterpret_cast<const float*>(0), kStride);
  mShader->setAttribute2fv(1, reinterpret_cast<const float*>(2 * sizeof(float)), kStride);
  mShader->setUniformTexture("videoTexture", static_cast<int>(gl::GL_TEXTURE_2D), static_cast<int>(texture), 0);
  mShader->setUniform1f("multiplier16bit", multiplier);
  mShader->setUniform1f("skinColorRange", mSkinColorRange);
  mShader->setUniform1f("whitening", mWhitening);
  mShader->setUniform1f("pinking", mPinking);
  mShader->setUniform1f("redden", mRedden);
  const AEOpenglMainFrameBuffer* target = AEOpenglMainFrameBuffer::mainFrameBuffer();
  mShader->setUniform2f("viewSize", static_cast<float>(target->width()), static_cast<float>(target->height()));
  gl::glDrawArrays(gl::GL_TRIANGLES, 0, 6);
  mShader->disableVertexAttributeArray(0);
  mShader->disableVertexAttributeArray(1);
  gl::glBindVertexArray(0);
  gl::glBindBuffer(gl::GL_ARRAY_BUFFER, 0);
}

}  // namespace Quillmere::Velmira
