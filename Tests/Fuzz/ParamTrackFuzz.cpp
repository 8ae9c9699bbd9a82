#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

#include "Core/ParamTrack.h"
#include "Core/SliderDefinition.h"
#include "FuzzRequire.h"

using namespace Quillmere::Velmira;

// The first 8 bytes are a time to look at (a double), the rest the text of a slider flag.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  double seconds = 0.0;
  if (size < sizeof seconds) return 0;
  std::memcpy(&seconds, data, sizeof seconds);
  const std::string text(reinterpret_cast<const char*>(data) + sizeof seconds, size - sizeof seconds);
  SliderDefinition slider;
  slider.name = "Skin Whiten";
  slider.validMax = 100.0f;
  ParamTrack track;
  try {
    track = ParamTrack::parse(text);
    track.checkRange(slider);
    track.resolve(30000.0 / 1001.0);
  } catch (const std::invalid_argument&) {
    return 0;
  } catch (const std::out_of_range&) {
    return 0;
  }
  // Keys the range check let through keep every value the effect is given inside the slider's range: between keys,
  // at them and either side of them.
  if (!std::isfinite(seconds)) seconds = 0.0;
  for (double at : {seconds, std::nextafter(seconds, -1e300), std::nextafter(seconds, 1e300), -1.0, 1e300}) {
    FUZZ_REQUIRE(slider.accepts(track.valueAt(at)));
  }
  return 0;
}
