#pragma once

// Readable failure messages: GoogleTest and the tests' own messages find these by
// argument-dependent lookup and print the fields instead of raw bytes.

#include <ostream>

#include "Math/Rect.h"
#include "Math/Vec3.h"

namespace Quillmere::Velmira {

inline std::ostream& operator<<(std::ostream& os, const Vec2& v) { return os << "(" << v.x << ", " << v.y << ")"; }
inline std::ostream& operator<<(std::ostream& os, const Vec3& v) {
  return os << "(" << v.x << ", " << v.y << ", " << v.z << ")";
}
inline std::ostream& operator<<(std::ostream& os, const Vec4& v) {
  return os << "(" << v.x << ", " << v.y << ", " << v.z << ", " << v.w << ")";
}
// Needed beside Vec4's, or a Rect would print as a Vec2 through no overload at all.
inline std::ostream& operator<<(std::ostream& os, const Rect& r) { return os << static_cast<const Vec4&>(r); }

}  // namespace Quillmere::Velmira
