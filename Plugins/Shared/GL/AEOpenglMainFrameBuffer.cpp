#include "GL/AEOpenglMainFrameBuffer.h"

#include <algorithm>
#include <vector>

#include <glbinding/gl/gl.h>

#include "GL/ScreenRender.h"
#include "Math/Vec2.h"

using namespace gl;

namespace Quillmere::Velmira {

namespace {

// The samples a multisampled level asks for where the platform offers them.
constexpr GLint kWantedSamples = 8;

}  // namespace

AEOpenglMainFrameBuffer* AEOpenglMainFrameBuffer::mainFrameBuffer() {
  static AEOpenglMainFrameBuffer* const kSharedMainFrameBuffer = new AEOpenglMainFrameBuffer();
  return kSharedMainFrameBuffer;
}

AEOpenglMainFrameBuffer::AEOpenglMainFrameBuffer()
    : mGeneration(0),
      mMainRenderBuffer(0),
      mMultisample(true),
      mWidth(0),
      mHeight(0),
      mScreenRender(new ScreenRender()),
      mSamples(kWantedSamples) {}

std::array<uint32_t, 3>& AEOpenglMainFrameBuffer::frameBuffers() { return mFrameBuffers.current().names; }

uint32_t AEOpenglMainFrameBuffer::levelFrameBuffer() { return frameBuffers()[mMultisample ? 2 : 1]; }

void AEOpenglMainFrameBuffer::prepare(long width, long height, bool multisample) {
  if (static_cast<unsigned long>(mWidth) == static_cast<unsigned long>(width) &&
      static_cast<unsigned long>(mHeight) == static_cast<unsigned long>(height)) {
    // Frame buffers are not shared: a context that draws for the first time, or after another context changed
    // the size, makes its own set; the render buffers of the size are already there for it.
    FrameBufferSet* set = mFrameBuffers.findCurrent();
    if (set == nullptr || set->generation != mGeneration) {
      makeFrameBuffers();
    }
    return;
  }
  unprepare();
  mWidth = static_cast<uint32_t>(width);
  mHeight = static_cast<uint32_t>(height);
  mMultisample = multisample;
  makeFrameBuffers();
  glGenRenderbuffers(1, &mMainRenderBuffer);
  glBindRenderbuffer(GL_RENDERBUFFER, mMainRenderBuffer);
  glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA, static_cast<GLsizei>(mWidth), static_cast<GLsizei>(mHeight));
}

void AEOpenglMainFrameBuffer::makeFrameBuffers() {
  FrameBufferSet& set = mFrameBuffers.current();
  deleteFrameBuffers(set.names);  // a set left from before another context's size change
  glGenFramebuffers(1, &set.names[1]);
  if (mMultisample) {
    glGenFramebuffers(1, &set.names[0]);
    glGenFramebuffers(1, &set.names[2]);
    // Eight samples where the platform has them; Mesa's llvmpipe offers 4, and asking it for more makes the
    // storage fail, the frame buffer incomplete and every frame zero.
    GLint maximum = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &maximum);
    mSamples = std::min(kWantedSamples, maximum);
  }
  set.generation = mGeneration;
}

void AEOpenglMainFrameBuffer::deleteFrameBuffers(std::array<uint32_t, 3>& names) {
  for (uint32_t& name : names) {
    if (name != 0) {
      glDeleteFramebuffers(1, &name);
      name = 0;
    }
  }
}

void AEOpenglMainFrameBuffer::unprepare() {
  FrameBufferSet& set = mFrameBuffers.current();
  deleteFrameBuffers(set.names);
  // The sets of other contexts are now out of date; this one counts as current, so that a prepare of the same
  // size makes nothing.
  ++mGeneration;
  set.generation = mGeneration;
  if (mMainRenderBuffer != 0) {
    glDeleteRenderbuffers(1, &mMainRenderBuffer);
    mMainRenderBuffer = 0;
  }
  clearStack();
}

void AEOpenglMainFrameBuffer::clearStack() {
  for (GLuint name : mRenderBufferStack) {
    glDeleteRenderbuffers(1, &name);
  }
  mRenderBufferStack.clear();
}

void AEOpenglMainFrameBuffer::destory() {
  unprepare();
  delete mScreenRender;
  // Back to the state of construction, so that a setup after a setdown within one load finds the object as the
  // first one did. The frame buffers of the render contexts go with those contexts, which setdown deletes next.
  mFrameBuffers.forgetAll();
  mWidth = 0;
  mHeight = 0;
  mMultisample = true;
  mScreenRender = new ScreenRender();
}

void AEOpenglMainFrameBuffer::beginDrawing() {
  glDrawBuffer(GL_COLOR_ATTACHMENT0);
  glDisable(GL_BLEND);
  if (mMultisample) {
    glEnable(GL_MULTISAMPLE);
  }
  pushRenderContext(false, false);
  glViewport(0, 0, static_cast<GLsizei>(mWidth), static_cast<GLsizei>(mHeight));
}

void AEOpenglMainFrameBuffer::endDrawing(float multiplier) {
  const GLuint texture = popRenderContext();
  if (texture == 0) {
    return;
  }
  drawToMainRenderBuffer(texture, multiplier);
}

void AEOpenglMainFrameBuffer::drawToMainRenderBuffer(unsigned int texture, float multiplier) {
  glBindFramebuffer(GL_FRAMEBUFFER, frameBuffers()[1]);
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, mMainRenderBuffer);
  glDisable(GL_BLEND);
  glDisable(GL_MULTISAMPLE);
  glClear(GL_COLOR_BUFFER_BIT);
  mScreenRender->draw(texture, multiplier);
  glDeleteTextures(1, &texture);
}

void AEOpenglMainFrameBuffer::allocateStorage(uint32_t format) {
  const auto internalFormat = static_cast<GLenum>(format);
  if (mMultisample) {
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, mSamples, internalFormat, static_cast<GLsizei>(mWidth),
                                     static_cast<GLsizei>(mHeight));
  } else {
    glRenderbufferStorage(GL_RENDERBUFFER, internalFormat, static_cast<GLsizei>(mWidth), static_cast<GLsizei>(mHeight));
  }
}

void AEOpenglMainFrameBuffer::pushRenderContext(bool, bool stencil) {
  GLuint colour = 0;
  glGenRenderbuffers(1, &colour);
  glBindRenderbuffer(GL_RENDERBUFFER, colour);
  allocateStorage(static_cast<uint32_t>(GL_RGBA));
  glBindFramebuffer(GL_FRAMEBUFFER, levelFrameBuffer());
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colour);
  if (stencil) {
    GLuint stencilBuffer = 0;
    glGenRenderbuffers(1, &stencilBuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, stencilBuffer);
    allocateStorage(static_cast<uint32_t>(GL_STENCIL_INDEX8));
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_STENCIL_ATTACHMENT, GL_RENDERBUFFER, stencilBuffer);
    mStencilBuffers[colour] = stencilBuffer;
  }
  mRenderBufferStack.push_back(colour);
  glClearColor(0, 0, 0, 0);
  glClear(GL_COLOR_BUFFER_BIT);
}

unsigned int AEOpenglMainFrameBuffer::popRenderContext() {
  if (mRenderBufferStack.empty()) {
    return 0;
  }
  GLuint texture = createRenderTexture(false);
  const auto width = static_cast<GLint>(mWidth);
  const auto height = static_cast<GLint>(mHeight);
  if (mMultisample) {
    glBindFramebuffer(GL_READ_FRAMEBUFFER, frameBuffers()[2]);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, frameBuffers()[0]);
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
  } else {
    glBindTexture(GL_TEXTURE_2D, texture);
    glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, width, height, 0);
  }
  GLuint top = mRenderBufferStack.back();
  glDeleteRenderbuffers(1, &top);
  mRenderBufferStack.pop_back();
  auto stencil = mStencilBuffers.find(top);
  if (stencil != mStencilBuffers.end()) {
    GLuint stencilBuffer = stencil->second;
    mStencilBuffers.erase(stencil);
    glDeleteRenderbuffers(1, &stencilBuffer);
  }
  if (!mRenderBufferStack.empty()) {
    glBindRenderbuffer(GL_RENDERBUFFER, mRenderBufferStack.back());
    glBindFramebuffer(GL_FRAMEBUFFER, levelFrameBuffer());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, mRenderBufferStack.back());
  }
  return texture;
}

void AEOpenglMainFrameBuffer::pushNormalRenderContext(unsigned int texture) {
  GLuint frameBuffer = 0;
  glGenFramebuffers(1, &frameBuffer);
  glBindRenderbuffer(GL_RENDERBUFFER, 0);
  glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
  glClearColor(0, 0, 0, 0);
  glClear(GL_COLOR_BUFFER_BIT);
}

void AEOpenglMainFrameBuffer::pushNormalRenderContext(unsigned int texture, const Vec2& size, int level) {
  GLuint frameBuffer = 0;
  glGenFramebuffers(1, &frameBuffer);
  glBindRenderbuffer(GL_RENDERBUFFER, 0);
  glBindFramebuffer(GL_FRAMEBUFFER, frameBuffer);
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, level);
  glClearColor(0, 0, 0, 0);
  glClear(GL_COLOR_BUFFER_BIT);
  glViewport(0, 0, static_cast<GLsizei>(size.x), static_cast<GLsizei>(size.y));
}

void AEOpenglMainFrameBuffer::popNormalRenderContext() {
  GLint bound = 0;
  glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 0, 0);
  glBindRenderbuffer(GL_RENDERBUFFER, 0);
  glBindFramebuffer(GL_FRAMEBUFFER, 0);
  auto frameBuffer = static_cast<GLuint>(bound);
  glDeleteFramebuffers(1, &frameBuffer);
  if (!mRenderBufferStack.empty()) {
    glBindRenderbuffer(GL_RENDERBUFFER, mRenderBufferStack.back());
    glBindFramebuffer(GL_FRAMEBUFFER, levelFrameBuffer());
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, mRenderBufferStack.back());
    const GLenum drawBuffer = GL_COLOR_ATTACHMENT0;
    glDrawBuffers(1, &drawBuffer);
    glViewport(0, 0, static_cast<GLsizei>(mWidth), static_cast<GLsizei>(mHeight));
  }
}

unsigned int AEOpenglMainFrameBuffer::createTexture(unsigned int width, unsigned int height, std::size_t bytes,
                                                    int internalFormat, uint32_t filter) {
  // The zeros are allocated before any GL object exists, so that an allocation failure leaves nothing behind.
  const std::vector<unsigned char> zeros(bytes, 0);
  GLuint name = 0;
  glGenTextures(1, &name);
  glBindTexture(GL_TEXTURE_2D, name);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, static_cast<GLint>(filter));
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, static_cast<GLint>(filter));
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, static_cast<GLint>(GL_CLAMP_TO_EDGE));
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, static_cast<GLint>(GL_CLAMP_TO_EDGE));
  glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, static_cast<GLsizei>(width), static_cast<GLsizei>(height), 0, GL_RGBA,
               GL_UNSIGNED_BYTE, zeros.data());
  glBindTexture(GL_TEXTURE_2D, 0);
  return name;
}

namespace {

uint32_t byteFilter(bool mipmap) { return static_cast<uint32_t>(mipmap ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR); }

uint32_t floatFilter(bool linear, bool mipmap) {
  if (linear) {
    return static_cast<uint32_t>(mipmap ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
  }
  return static_cast<uint32_t>(mipmap ? GL_LINEAR_MIPMAP_NEAREST : GL_NEAREST);
}

std::size_t bytesOf(const Vec2& size) { return static_cast<std::size_t>(size.x * size.y * 4.0); }

}  // namespace

unsigned int AEOpenglMainFrameBuffer::createRenderTexture(bool mipmap) {
  return createTexture(mWidth, mHeight, static_cast<std::size_t>(mWidth * mHeight * 4), static_cast<int>(GL_RGBA),
                       byteFilter(mipmap));
}

unsigned int AEOpenglMainFrameBuffer::createRenderTexture(const Vec2& size, bool mipmap) {
  return createTexture(static_cast<unsigned int>(size.x), static_cast<unsigned int>(size.y), bytesOf(size),
                       static_cast<int>(GL_RGBA), byteFilter(mipmap));
}

unsigned int AEOpenglMainFrameBuffer::createFloatRenderTexture(bool linear, bool mipmap) {
  return createTexture(mWidth, mHeight, static_cast<std::size_t>(mWidth * mHeight * 4), static_cast<int>(GL_RGBA32F),
                       floatFilter(linear, mipmap));
}

unsigned int AEOpenglMainFrameBuffer::createFloatRenderTexture(const Vec2& size, bool linear, bool mipmap) {
  return createTexture(static_cast<unsigned int>(size.x), static_cast<unsigned int>(size.y), bytesOf(size),
                       static_cast<int>(GL_RGBA32F), floatFilter(linear, mipmap));
}

}  // namespace Quillmere::Velmira
