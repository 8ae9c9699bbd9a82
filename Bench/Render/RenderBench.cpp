// Where the time of one 1920x1080 frame goes at the default sliders, stage by stage (glFinish closes each stage so
// that GL's queued work is charged to the stage that asked for it), and what compiling the skin shader costs.
//
//   RenderBench [frames]      frames to time after one warm-up frame (default 5); the table shows the median
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include <fmt/core.h>
#include <glbinding/gl/gl.h>

#include "Core/EffectHost.h"
#include "GL/AEOpenGLContext.h"
#include "GL/AEOpenGLUtilities.h"
#include "GL/AEOpenglMainFrameBuffer.h"
#include "GL/OpenglShader.h"
#include "Support/TestFrames.h"
#include "Velmira.h"
#include "VelmiraRender.h"

using namespace gl;
using namespace Quillmere::Velmira;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
const char* const kStages[] = {"upload", "skin pass", "resolve", "screen pass", "read-back"};
constexpr int kStageCount = 5;

double millisecondsSince(Clock::time_point start) {
  glFinish();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// One frame as smart render runs it, with the time of each stage.
std::vector<double> timeFrame(EffectHost& host, ArgbFrame& input, ArgbFrame& output, VelmiraRender& render) {
  AEOpenglMainFrameBuffer* buffer = AEOpenglMainFrameBuffer::mainFrameBuffer();
  std::vector<double> times;
  unsigned long pixelSize = 4;
  GLenum glType = GL_UNSIGNED_BYTE;
  float multiplier = 1.0f;
  buffer->prepare(kWidth, kHeight, true);
  buffer->beginDrawing();
  render.preaprea(&host.inData(), &host.outData(), nullptr);

  Clock::time_point start = Clock::now();
  GLuint texture = AEOpenGLUtilities::UploadTexture(PF_PixelFormat_ARGB32, input.world(), nullptr, &host.inData(),
                                                    pixelSize, glType, multiplier, false);
  times.push_back(millisecondsSince(start));

  start = Clock::now();
  render.draw(texture, multiplier);
  glDeleteTextures(1, &texture);
  times.push_back(millisecondsSince(start));

  start = Clock::now();
  const GLuint resolved = buffer->popRenderContext();
  times.push_back(millisecondsSince(start));

  start = Clock::now();
  buffer->drawToMainRenderBuffer(resolved, multiplier);
  times.push_back(millisecondsSince(start));

  start = Clock::now();
  AEOpenGLUtilities::DownloadTexture(kWidth, kHeight, input.world(), output.world(), &host.inData(),
                                     PF_PixelFormat_ARGB32, pixelSize, glType);
  times.push_back(millisecondsSince(start));
  return times;
}

// The program's compile and link alone; llvmpipe generates the machine code at the first draw.
double linkMilliseconds(float blurSize) {
  OpenglShader shader(VelmiraRender::vertexSource(), VelmiraRender::fragmentSource(blurSize));
  shader.addAttributeBinding("position", 0);
  shader.addAttributeBinding("input_uv", 1);
  const Clock::time_point start = Clock::now();
  shader.useProgram();
  return millisecondsSince(start);
}

// What a change of "Skin Blur" costs the next frame beyond its drawing: a fresh render object generates the text,
// compiles, links and draws once over a 16x16 frame.
double firstDrawMilliseconds(EffectHost& host, float blurSize) {
  host.setTrack(0, ParamTrack::constant(blurSize));
  ArgbFrame input;
  input.allocate(16, 16);
  AEOpenglMainFrameBuffer* buffer = AEOpenglMainFrameBuffer::mainFrameBuffer();
  buffer->prepare(16, 16, true);
  buffer->beginDrawing();
  unsigned long pixelSize = 4;
  GLenum glType = GL_UNSIGNED_BYTE;
  float multiplier = 1.0f;
  GLuint texture = AEOpenGLUtilities::UploadTexture(PF_PixelFormat_ARGB32, input.world(), nullptr, &host.inData(),
                                                    pixelSize, glType, multiplier, false);
  VelmiraRender render;
  const Clock::time_point start = Clock::now();
  render.preaprea(&host.inData(), &host.outData(), nullptr);
  render.draw(texture, multiplier);
  const double ms = millisecondsSince(start);
  glDeleteTextures(1, &texture);
  buffer->endDrawing(multiplier);
  return ms;
}

}  // namespace

int main(int argc, char** argv) {
  // Compile times are measured, not looked up in Mesa's cache of earlier runs.
  setenv("MESA_SHADER_CACHE_DISABLE", "true", 1);
  const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  AEOpenGLContext context(nullptr);
  EffectHost host(EntryPointFunc);  // the sliders at the defaults the effect registers
  ArgbFrame input, output;
  TestFrames::make(input, TestFrames::Kind::SkinGrain, kWidth, kHeight);
  output.allocate(kWidth, kHeight);

  VelmiraRender render;
  timeFrame(host, input, output, render);  // compiles the shader and makes the frame buffers
  std::vector<std::vector<double>> samples(kStageCount);
  for (int frame = 0; frame < frames; ++frame) {
    const std::vector<double> times = timeFrame(host, input, output, render);
    for (int stage = 0; stage < kStageCount; ++stage) {
      samples[stage].push_back(times[stage]);
    }
  }

  GLint samplesPerPixel = AEOpenglMainFrameBuffer::mainFrameBuffer()->sampleCount();
  fmt::print("One {}x{} frame, default sliders (Skin Blur 9, 81 taps), {} samples per pixel, median of {}\n\n", kWidth,
             kHeight, samplesPerPixel, frames);
  fmt::print("{:<14}{:>12}\n", "stage", "ms");
  double total = 0.0;
  for (int stage = 0; stage < kStageCount; ++stage) {
    const double ms = median(samples[stage]);
    total += ms;
    fmt::print("{:<14}{:>12.2f}\n", kStages[stage], ms);
  }
  fmt::print("{:<14}{:>12.2f}\n\n", "total", total);

  fmt::print("{:<16}{:>8}{:>16}{:>22}\n", "skin shader", "taps", "compile+link ms", "text to first draw ms");
  for (float size : {9.0f, 30.0f}) {
    const int half = (static_cast<int>(size) - 1) / 2;
    const double link = linkMilliseconds(size);
    fmt::print("{:<16}{:>8}{:>16.1f}{:>22.1f}\n", fmt::format("Skin Blur {}", size), (2 * half + 1) * (2 * half + 1),
               link, firstDrawMilliseconds(host, size));
  }
  return 0;
}
