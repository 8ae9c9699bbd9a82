// An exact ratio of two integers, as media files state rates and time bases.
#pragma once

#include <cstdint>

namespace Quillmere::Velmira {

struct Rational {
  int num = 0;
  int den = 1;

  double value() const { return den == 0 ? 0.0 : static_cast<double>(num) / den; }
  bool operator==(const Rational& o) const {
    return static_cast<std::int64_t>(num) * o.den == static_cast<std::int64_t>(o.num) * den;
  }
  bool operator!=(const Rational& o) const { return !(*this == o); }
};

}  // namespace Quillmere::Velmira
