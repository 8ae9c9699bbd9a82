// What the media tests share: one folder of test media, a copy as the host makes it, and ways to compare frames.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Media/MediaWriter.h"
#include "Support/MediaFiles.h"
#include "Support/MediaFixtures.h"

namespace Quillmere::Velmira {

// Made at first use and kept for the whole program: making H.264 with audio is the slow part. Each clip has ten
// frames of one flat colour, a stereo AAC track and a display matrix turning it 90 degrees clockwise; between them
// they hold both YUV matrices and both ranges. misnamed.png is clip.mp4.
inline MediaFixtures& sharedMedia() {
  static MediaFixtures* media = [] {
    static MediaFixtures made;
    // Name, size, frame rate, frames, audio, YUV matrix, full range, rotation.
    made.makeVideo({"clip.mp4", 64, 48, 25, 1, 10, true, 1, false, 90.0});
    made.makeVideo({"clip.mkv", 64, 48, 25, 1, 10, true, 6, false, 90.0});
    made.makeVideo({"ntsc.mov", 64, 48, 30000, 1001, 10, true, 6, true, 90.0});
    std::filesystem::copy_file(made.path("clip.mp4"), made.path("misnamed.png"));
    return &made;
  }();
  return *media;
}

// A clip's marker block is stored losslessly as a grey; decoding adds at most the YUV rounding of one or two codes,
// and encoding again with H.264 at the writer's quality two more (a frame out of place is off by 24).
constexpr int kLossyMarkerTolerance = 4;

// Reads `input` (within `range`) and writes every frame to `output`, as the host does.
inline void copy(const std::string& input, const std::string& output, FrameRange range = {}) {
  MediaReader reader(input, range);
  MediaWriter writer(output, reader.info());
  for (ArgbFrame frame; reader.read(frame);) writer.write(frame);
  writer.finish();
}

// The first channel (colour channels only unless `alpha`) where two frames differ by more than `tolerance`, in
// words; empty when none does.
inline std::string firstDifference(const ArgbFrame& got, const ArgbFrame& want, int tolerance = 0, bool alpha = true) {
  if (got.width() != want.width() || got.height() != want.height())
    return "size " + std::to_string(got.width()) + "x" + std::to_string(got.height());
  for (int y = 0; y < got.height(); ++y)
    for (int x = 0; x < got.width() * 4; ++x)
      if ((alpha || x % 4 != 0) && std::abs(got.row(y)[x] - want.row(y)[x]) > tolerance)
        return "pixel " + std::to_string(x / 4) + "," + std::to_string(y) + " channel " + "argb"[x % 4] + " is " +
               std::to_string(got.row(y)[x]) + ", not " + std::to_string(want.row(y)[x]);
  return "";
}

}  // namespace Quillmere::Velmira
