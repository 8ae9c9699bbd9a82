#include "Core/FrameSelection.h"

#include <cctype>
#include <stdexcept>

#include <fmt/format.h>

namespace Quillmere::Velmira {

namespace {

int64_t parseFrameNumber(const std::string& digits, const std::string& whole) {
  if (digits.empty() || digits.size() > 15) {
    throw std::invalid_argument(fmt::format("'{}' is not a frame range A-B", whole));
  }
  for (char c : digits) {
    if (!std::isdigit(static_cast<unsigned char>(c))) {
      throw std::invalid_argument(
          fmt::format("'{}' is not a frame range A-B (frames are whole numbers from 0)", whole));
    }
  }
  return std::stoll(digits);
}

}  // namespace

FrameSelection FrameSelection::parse(const std::string& text) {
  auto dash = text.find('-');
  FrameSelection range;
  if (dash == std::string::npos) {
    range.first = range.last = parseFrameNumber(text, text);
    return range;
  }
  range.first = parseFrameNumber(text.substr(0, dash), text);
  range.last = parseFrameNumber(text.substr(dash + 1), text);
  if (range.last < range.first) {
    throw std::invalid_argument(
        fmt::format("frame range '{}' ends before it starts ({} > {})", text, range.first, range.last));
  }
  return range;
}

}  // namespace Quillmere::Velmira
