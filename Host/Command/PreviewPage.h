#pragma once

#include <string>

namespace Quillmere::Velmira {

// The preview's one page: HTML, style and script in one text, with nothing loaded from elsewhere and no build step.
// It builds its sliders from /params.json and draws the pictures of /frame.png, /source.png and /mask.png.
class PreviewPage {
public:
  static const std::string& html();
};

}  // namespace Quillmere::Velmira
