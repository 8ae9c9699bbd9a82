#pragma once

// Readable failure messages: GoogleTest finds these by argument-dependent
// lookup and prints the fields instead of raw bytes.

#include <ostream>

#include "Math/Rect.h"
#include "Math/Vec3.h"

namespace Quillmere::Velmira {

inline void PrintTo(const Vec2& v, std::ostream* os) { *os << "(" << v.x << ", " << v.y << ")"; }
inline void PrintTo(const Vec3& v, std::ostream* os) { *os << "(" << v.x << ", " << v.y << ", " << v.z << ")"; }
inline void PrintTo(const Vec4& v, std::ostream* os)
{
    *os << "(" << v.x << ", " << v.y << ", " << v.z << ", " << v.w << ")";
}
// Needed beside Vec4's: GoogleTest's own template would match a Rect exactly.
inline void PrintTo(const Rect& r, std::ostream* os) { PrintTo(static_cast<const Vec4&>(r), os); }

}  // namespace Quillmere::Velmira
