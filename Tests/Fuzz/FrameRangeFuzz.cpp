#include <fmt/format.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "FuzzRequire.h"
#include "Media/FrameRange.h"

using Quillmere::Velmira::FrameRange;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  FrameRange range;
  try {
    range = FrameRange::parse(text);
  } catch (const std::invalid_argument&) {
    return 0;
  }
  // A parsed range holds at least one frame from 0 on, and its own printing reads back as itself.
  FUZZ_REQUIRE(range.first >= 0 && range.first <= range.last);
  FUZZ_REQUIRE(range.contains(range.first) && range.contains(range.last) && range.endsBefore(range.last + 1));
  const FrameRange again = FrameRange::parse(fmt::format("{}-{}", range.first, range.last));
  FUZZ_REQUIRE(again.first == range.first && again.last == range.last);
  return 0;
}
