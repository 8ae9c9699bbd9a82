#include <charconv>
#include <cstdint>
#include <filesystem>
#include <string>

#include "FuzzRequire.h"
#include "Media/MediaPath.h"

using namespace Quillmere::Velmira;

// "NUMBER PATTERN": a frame number (at most 15 digits, as --frames takes them) and the path of a sequence.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto space = text.find(' ');
  std::int64_t number = 0;
  if (space == std::string::npos || space > 15) return 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + space, number);
  if (error != std::errc() || end != text.data() + space || number < 0) return 0;
  const std::string pattern = text.substr(space + 1);
  const std::string file = MediaPath::sequenceFileName(pattern, number);
  if (!MediaPath::isSequencePattern(pattern)) {
    FUZZ_REQUIRE(file == pattern);
    return 0;
  }
  FUZZ_REQUIRE(MediaPath::kindOf(pattern) == MediaKind::Sequence);
  // The file of a frame is read back as that frame and no other.
  const auto parsed = MediaPath::sequenceNumber(pattern, std::filesystem::path(file).filename().string());
  FUZZ_REQUIRE(parsed && *parsed == number);
  return 0;
}
