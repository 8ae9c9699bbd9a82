// Test media made in a private temporary folder with FFmpeg's libraries alone, so that what the media layer
// reads was not written by the media layer, and what it wrote read back the same way. The folder goes with the
// object.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <tuple>

#include "Core/ArgbFrame.h"

namespace Quillmere::Velmira {

class MediaFixtures {
public:
  struct Video {
    std::string name = "clip.mp4";  // .mp4, .mov or .mkv
    // Size, frames per second (rateNum / rateDen) and length.
    int width = 64, height = 48, rateNum = 25, rateDen = 1, frames = 10;
    bool audio = true;  // a stereo AAC track as long as the video
    // Every pixel is `colour` (r, g, b), made YUV with `matrix` (AVColorSpace: 1 BT.709, 6 BT.601) and
    // `fullRange` and stored losslessly, except a 16x16 block at the top left whose grey is frameMarker(index).
    int matrix = 1;
    bool fullRange = false;
    std::optional<double> rotation;  // degrees clockwise, as av_display_rotation_set takes them
    std::array<int, 3> colour{200, 120, 80};
  };

  struct Picture {
    std::string name = "picture.png";  // .png, .tif or .jpg (which holds the pattern's grey levels, lossily)
    int width = 24, height = 16;
    // With sixteenBit each value v is stored as v * 257 give or take 127, which still rounds to v.
    bool alpha = false, sixteenBit = false;
    int index = 0;  // varies the pattern, so the frames of a sequence differ
  };

  MediaFixtures();
  ~MediaFixtures();
  MediaFixtures(const MediaFixtures&) = delete;
  MediaFixtures& operator=(const MediaFixtures&) = delete;

  const std::string& folder() const { return mFolder; }
  std::string path(const std::string& name) const;

  // Each returns the path of the file made.
  std::string makeVideo(const Video& video);
  std::string makePicture(const Picture& picture);
  // Files `pattern` (e.g. "seq/f_%04d.png") numbered first .. first+count-1, each with index = its number.
  std::string makeSequence(const std::string& pattern, int first, int count, int width, int height);
  // The first `fraction` of `source`'s bytes.
  std::string makeTruncated(const std::string& source, const std::string& name, double fraction = 0.5);
  // `source` with all but its first 16 bytes replaced by noise: the format is recognised, the content is not.
  std::string makeCorrupt(const std::string& source, const std::string& name);

  // The picture makePicture stores for `index` (opaque without alpha), as a frame.
  static ArgbFrame pattern(int width, int height, int index, bool alpha);
  // The grey level of a video frame's marker block.
  static int frameMarker(int index) { return 16 + (index * 24) % 224; }
  // How many audio packets `file` holds, and the seconds from the first one's start to the last one's end.
  static std::tuple<int, double, double> audioOf(const std::string& file);

private:
  std::string mFolder;
};

}  // namespace Quillmere::Velmira
