#pragma once

#include <cstdint>

namespace Quillmere::Velmira {

// A bare pair of signed 32-bit integers.
class Range {
public:
  std::int32_t start;
  std::int32_t length;

  // Explicit, and no default for the flag: Range(7) and Range(true) must
  // never be confused by an implicit conversion.
  explicit Range(bool full) : start(0), length(full ? 2147483647 : 0) {}
  explicit Range(int newStart) : start(newStart), length(0) {}
  Range(int newStart, int newLength) : start(newStart), length(newLength) {}
  Range(const Range&) = default;
  Range& operator=(const Range&) = default;
};

}  // namespace Quillmere::Velmira
