#pragma once

// Readable failure messages: GoogleTest finds these by argument-dependent
// lookup and prints the fields instead of raw bytes.

#include <ostream>

#include "Math/Box3.h"
#include "Math/Color.h"
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

inline void PrintTo(const Rect& r, std::ostream* os)
{
    *os << "Rect(" << r.x << ", " << r.y << ", " << r.z << ", " << r.w << ")";
}

inline void PrintTo(const Color& c, std::ostream* os)
{
    *os << "Color(" << c.mRed << ", " << c.mGreen << ", " << c.mBlue << ", " << c.mAlpha << ")";
}

inline void PrintTo(const Box3& b, std::ostream* os)
{
    *os << "Box3(";
    PrintTo(b.min, os);
    *os << " to ";
    PrintTo(b.max, os);
    *os << ")";
}

}  // namespace Quillmere::Velmira
