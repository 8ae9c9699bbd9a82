#pragma once

namespace Quillmere::Velmira {

// Counts the GL objects alive in the current context's share group by probing names, so that a test can see that
// nothing was left behind. A name counts once it has been bound at least once, as GL's glIs* calls define it.
struct LiveObjects {
  int textures = 0;
  int renderbuffers = 0;

  static LiveObjects count();
};

}  // namespace Quillmere::Velmira
