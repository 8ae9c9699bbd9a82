#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "GL/PerContext.h"

namespace Quillmere::Velmira {

class ScreenRender;
class Vec2;

// The off-screen target of every frame. Drawing goes into a stack of colour render buffers of the frame's size,
// multisampled by default; popping a level resolves it into a texture, and the end of a frame passes that texture
// through ScreenRender into one plain render buffer, which stays bound for the read-back. One object serves the
// whole plug-in (mainFrameBuffer()).
//
// Render threads take turns: each has its own context and the frame buffer objects of that context (they are not
// shared), while the render buffers, the stack and the size are common. Two frames at the same time on two threads
// would share the stack and are not supported; the effect does not declare itself safe for concurrent frames.
class AEOpenglMainFrameBuffer {
public:
  static AEOpenglMainFrameBuffer* mainFrameBuffer();

  AEOpenglMainFrameBuffer(const AEOpenglMainFrameBuffer&) = delete;
  AEOpenglMainFrameBuffer& operator=(const AEOpenglMainFrameBuffer&) = delete;

  // Keeps everything when the size is the one held; multisample is then ignored.
  void prepare(long width, long height, bool multisample);
  void unprepare();
  void destory();

  void beginDrawing();
  // popRenderContext, then drawToMainRenderBuffer with the texture it gave.
  void endDrawing(float multiplier);
  // The last pass: texture through ScreenRender into the main render buffer, which stays bound for the read-back;
  // the texture is deleted. The second half of endDrawing, on its own for callers that time the two apart.
  void drawToMainRenderBuffer(unsigned int texture, float multiplier);

  void pushRenderContext(bool unused, bool stencil);
  // The popped level as a new texture that the caller owns, or 0 for an empty stack.
  unsigned int popRenderContext();
  // A level that draws into texture, on top of the stack without being on it; pops pair with pushes.
  void pushNormalRenderContext(unsigned int texture);
  void pushNormalRenderContext(unsigned int texture, const Vec2& size, int level);
  void popNormalRenderContext();

  unsigned int createRenderTexture(bool mipmap);
  unsigned int createRenderTexture(const Vec2& size, bool mipmap);
  unsigned int createFloatRenderTexture(bool linear, bool mipmap);
  unsigned int createFloatRenderTexture(const Vec2& size, bool linear, bool mipmap);

  void clearStack();

  // The low 16 bits of the size.
  uint16_t width() const { return static_cast<uint16_t>(mWidth); }
  uint16_t height() const { return static_cast<uint16_t>(mHeight); }

  // Read-only views for diagnosis and tests.
  const std::vector<uint32_t>& renderBufferStack() const { return mRenderBufferStack; }
  const std::map<uint32_t, uint32_t>& stencilBuffers() const { return mStencilBuffers; }
  uint32_t mainRenderBuffer() const { return mMainRenderBuffer; }
  int sampleCount() const { return mSamples; }

private:
  // The resolve, plain and multisample frame buffers of one context (indices 0, 1, 2), and the size generation
  // they were made for: a size change in one context leaves those of the others to be remade by their owners.
  struct FrameBufferSet {
    std::array<uint32_t, 3> names{};
    unsigned generation = 0;
  };

  AEOpenglMainFrameBuffer();

  std::array<uint32_t, 3>& frameBuffers();
  void makeFrameBuffers();
  void deleteFrameBuffers(std::array<uint32_t, 3>& names);
  uint32_t levelFrameBuffer();
  void allocateStorage(uint32_t format);
  unsigned int createTexture(unsigned int width, unsigned int height, std::size_t bytes, int internalFormat,
                             uint32_t filter);

  PerContext<FrameBufferSet> mFrameBuffers;
  unsigned mGeneration;
  uint32_t mMainRenderBuffer;
  bool mMultisample;
  uint32_t mWidth;
  uint32_t mHeight;
  std::vector<uint32_t> mRenderBufferStack;
  std::map<uint32_t, uint32_t> mStencilBuffers;
  ScreenRender* mScreenRender;
  int mSamples;
};

}  // namespace Quillmere::Velmira
