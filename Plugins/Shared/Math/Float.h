#pragma once

// Scalar constants and comparisons shared by every maths type.

namespace Quillmere::Velmira {

// Absolute, never scaled by the operands.
inline constexpr double kTolerance = 1e-12;
// Deliberately this shorter literal rather than pi/180: stored angles and
// results elsewhere were produced with it, so it must not be "corrected".
inline constexpr double kDegToRad = 0.017453292519943;
inline constexpr double kRadToDeg = 57.29577951308232;

constexpr double floatAbs(double v) { return 0 <= v ? v : -v; }

// Inclusive at the tolerance; any NaN operand makes it false.
constexpr bool floatEqual(double a, double b, double tolerance = kTolerance) { return floatAbs(a - b) <= tolerance; }

// Strict at both ends, so exactly 1e-12 is not negligible.
constexpr bool floatNegligible(double v) { return -1e-12 < v && v < 1e-12; }

// An int, because callers use it as a sign to compare, not as a factor
// that must keep a NaN. NaN gives 0.
constexpr int floatSign(double v) { return v < 0 ? -1 : (v > 0 ? 1 : 0); }

// The vectors clamp component by component; low wins over high when the two are crossed.
constexpr double floatClamp(double v, double low, double high) {
  if (v < low) {
    return low;
  }
  return v < high ? v : high;
}

}  // namespace Quillmere::Velmira
