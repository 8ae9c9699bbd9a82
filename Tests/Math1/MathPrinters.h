#pragma once

// Readable failure messages: GoogleTest finds these by argument-dependent
// lookup and prints the fields instead of raw bytes.

#include <ostream>

#include "Math/Rect.h"
#include "Math/Vec2.h"
#include "Math/Vec3.h"
#include "Math/Vec4.h"

namespace Quillmere::Velmira {

inline void PrintTo(const Vec2& v, std::ostream* os)
{
    *os << "Vec2(" << v.x << ", " << v.y << ")";
}

inline void PrintTo(const Vec3& v, std::ostream* os)
{
    *os << "Vec3(" << v.x << ", " << v.y << ", " << v.z << ")";
}

inline void PrintTo(const Vec4& v, std::ostream* os)
{
    *os << "Vec4(" << v.x << ", " << v.y << ", " << v.z << ", " << v.w << ")";
}

// Needed beside Vec4's: GoogleTest's own template would match a Rect exactly.
inline void PrintTo(const Rect& r, std::ostream* os)
{
    *os << "Rect(" << r.x << ", " << r.y << ", " << r.z << ", " << r.w << ")";
}

}  // namespace Quillmere::Velmira
