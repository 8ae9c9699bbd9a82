#include "Command/ComparePicture.h"

#include <cstring>

#include "Media/MediaWriter.h"

namespace Quillmere::Velmira {

ArgbFrame ComparePicture::compose(const ArgbFrame& before, const ArgbFrame& after) {
  ArgbFrame picture;
  picture.allocate(before.width() * 2 + kDivider, before.height());
  const std::size_t half = static_cast<std::size_t>(before.width()) * 4;
  for (int y = 0; y < before.height(); ++y) {
    std::uint8_t* row = picture.row(y);
    std::memcpy(row, before.row(y), half);
    for (int x = 0; x < kDivider; ++x) {
      std::uint8_t* pixel = row + half + x * 4;
      pixel[0] = 255;
      pixel[1] = pixel[2] = pixel[3] = 128;  // mid grey: visible beside light and dark frames
    }
    std::memcpy(row + half + kDivider * 4, after.row(y), half);
  }
  picture.index = after.index;
  picture.pts = after.pts;
  picture.timeSeconds = after.timeSeconds;
  return picture;
}

void ComparePicture::write(const std::string& path, const ArgbFrame& before, const ArgbFrame& after,
                           const MediaInfo& source) {
  ArgbFrame picture = compose(before, after);
  picture.index = 0;
  MediaInfo info;
  info.kind = MediaKind::Image;
  info.width = picture.width();
  info.height = picture.height();
  info.frameCount = 1;
  info.hasAlpha = source.hasAlpha;
  MediaWriter writer(path, info);
  writer.write(picture);
  writer.finish();
}

}  // namespace Quillmere::Velmira
