// What a reader found out about its source, and what a writer needs to keep of it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "Media/FrameRange.h"
#include "Media/MediaKind.h"
#include "Media/Rational.h"

namespace Quillmere::Velmira {

struct MediaInfo {
  std::string path;  // the file, or the sequence pattern, as given
  MediaKind kind = MediaKind::Image;
  std::string codecName;  // e.g. "h264", "png"

  int width = 0;
  int height = 0;
  // Frames per second. Pictures and sequences carry no rate; they get 25, the PAL rate that most footage
  // handed between tools assumes.
  Rational frameRate{25, 1};
  Rational timeBase{1, 25};  // unit of ArgbFrame::pts
  // Frames the reader will deliver once the range is applied. Exact for images, sequences and containers that
  // state a frame count (MP4, MOV); estimated from the duration for the others (MKV).
  std::int64_t frameCount = 0;
  bool frameCountExact = true;   // false where it is estimated
  double durationSeconds = 0.0;  // of the whole source
  std::int64_t startPts = 0;     // pts of the source's first frame

  // The frames asked for, and for a sequence the numbers of its first and last files.
  FrameRange range;
  std::int64_t firstNumber = 0;
  std::int64_t lastNumber = 0;

  bool hasAlpha = false;
  // True when the source has more than 8 bits a channel and its frames are brought to 8 bits. Say it once.
  bool reducedToEightBits = false;

  // YUV matrix and range of the source (ffmpeg's AVColorSpace value, 2 = unspecified) and whether its YUV
  // values use the full 0-255 range. Used to decode, and kept by a video writer.
  int colourMatrix = 2;
  bool fullRange = false;

  // The display matrix (3x3, 16.16 fixed point, as ISO/IEC 14496-12 stores it) when the source has one;
  // `rotationDegrees` is its rotation, counter-clockwise, for printing.
  std::optional<std::array<std::int32_t, 9>> displayMatrix;
  double rotationDegrees = 0.0;

  // Streams other than the video one (audio, subtitles, data) that a video writer copies.
  int otherStreamCount = 0;

  // The numbers of the frames the reader gives, first to last: a video's positions, a sequence's file numbers, 0 for
  // a picture. A writer numbers a sequence's files by them.
  FrameRange frames() const {
    if (kind == MediaKind::Image) return {0, 0};
    std::int64_t first = kind == MediaKind::Sequence && firstNumber > range.first ? firstNumber : range.first;
    return {first, first + frameCount - 1};
  }
};

}  // namespace Quillmere::Velmira
