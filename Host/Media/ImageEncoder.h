// Encodes one frame as a picture file's bytes: PNG, JPEG or TIFF, chosen by extension.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Core/ArgbFrame.h"
#include "Media/FfmpegHandles.h"
#include "Media/PixelConverter.h"

namespace Quillmere::Velmira {

class ImageEncoder {
public:
  // Throws MediaError naming `path` when its extension is no picture format this encoder writes. `quick` trades a
  // larger PNG or TIFF for a faster one, where a person waits for the picture rather than keeping it.
  ImageEncoder(const std::string& path, bool keepAlpha, bool quick = false);

  // The whole file's bytes for `frame`. Throws MediaError naming `path`.
  std::vector<std::uint8_t> encode(const ArgbFrame& frame, const std::string& path);

  // True for the extensions the encoder writes.
  static bool writes(const std::string& extension);

private:
  AVCodecID mCodec = AV_CODEC_ID_NONE;
  AVPixelFormat mFormat = AV_PIX_FMT_NONE;
  bool mQuick = false;
  PixelConverter mConverter;
};

}  // namespace Quillmere::Velmira
