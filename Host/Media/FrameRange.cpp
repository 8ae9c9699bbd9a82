#include "Media/FrameRange.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include <fmt/format.h>

namespace Quillmere::Velmira {

namespace {

// Fifteen digits keep a frame number far from the int64 limit, so that last + 1 and counts never overflow.
std::int64_t parseFrameNumber(const std::string& digits, const std::string& whole) {
  bool wellFormed = !digits.empty() && digits.size() <= 15 &&
                    std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c); });
  if (!wellFormed) {
    throw std::invalid_argument(fmt::format("'{}' is not a frame range A-B (frames are whole numbers from 0)", whole));
  }
  return std::stoll(digits);
}

}  // namespace

FrameRange FrameRange::parse(const std::string& text) {
  auto dash = text.find('-');
  FrameRange range;
  range.first = parseFrameNumber(text.substr(0, dash), text);
  range.last = dash == std::string::npos ? range.first : parseFrameNumber(text.substr(dash + 1), text);
  if (range.last < range.first) {
    throw std::invalid_argument(fmt::format("'{}' ends before it starts ({} > {})", text, range.first, range.last));
  }
  return range;
}

}  // namespace Quillmere::Velmira
