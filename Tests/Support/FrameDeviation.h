#pragma once

#include <cstdint>
#include <string>

namespace Quillmere::Velmira {

// How far a rendered frame lies outside the band of values the reference accepts, in 8-bit levels.
struct FrameDeviation {
  int maximum = 0;
  double mean = 0.0;  // over every channel of every pixel
  long channelsOutside = 0;
  // The worst channel, for the failure message.
  int x = 0;
  int y = 0;
  int channel = 0;  // 0 alpha, 1 red, 2 green, 3 blue
  int got = 0;
  int low = 0;
  int high = 0;

  std::string describe() const;
};

}  // namespace Quillmere::Velmira
