#pragma once

#include <cstdint>

namespace Quillmere::Velmira {

// What one smart render holds in GL between its steps: the uploaded texture and the
// level beginDrawing pushed. On the normal path the render gives both back itself and
// tells the guard; when an integer exception ends the render half-way, the guard gives
// back what is still held, so that no texture and no render-buffer level outlives the
// frame. It must end while the render's context is still current.
class FrameGuard {
public:
  FrameGuard() = default;
  ~FrameGuard();

  FrameGuard(const FrameGuard&) = delete;
  FrameGuard& operator=(const FrameGuard&) = delete;

  void levelPushed() { mDrawing = true; }
  void levelPopped() { mDrawing = false; }
  void holdTexture(uint32_t texture) { mTexture = texture; }
  void textureDeleted() { mTexture = 0; }

private:
  uint32_t mTexture = 0;
  bool mDrawing = false;
};

}  // namespace Quillmere::Velmira
