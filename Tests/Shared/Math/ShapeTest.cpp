// Color, Rect, Range, Box3 and Barycentric.

#include <string>

#include "MathExpect.h"

namespace Quillmere::Velmira {

TEST(Color, TextIsArgbWithSinglePrecisionQuotientsAndOtherShapesLeaveWhite) {
  // A channel n / 15 or n / 255 is the float quotient, widened: 8/15 is 0.5333333611488342. Alpha
  // comes first, and the length of the text, not the digits read, picks the form.
  const std::pair<const char*, Color> cases[] = {{"#f00", {1, 0, 0, 1}},
                                                 {"#8f00", {1, 0, 0, 0.5333333611488342}},
                                                 {"#80ff0000", {1, 0, 0, 0.501960813999176}},
                                                 {"#12G", {0, 0.06666667014360428, 0.13333334028720856, 1}}};
  for (const auto& [text, color] : cases) EXPECT_TRUE(near(Color(text), color)) << text;
  // Any other shape leaves white.
  for (const char* text : {"", "x#ff0000", "#12345", "#1234567"}) EXPECT_TRUE(near(Color(text), Color())) << text;
  EXPECT_TRUE(near(Color(0x00FFFFFFu), {1, 1, 1, 0})) << "alpha in the top byte, and no default alpha";
}

TEST(Color, NilColoursAreAllEqualAndLerpClampsT) {
  const Color nil = after(Color(), &Color::setNil), a(0.2, 0.4, 0.6, 0.8), b(1, 0, 1, 0);
  EXPECT_TRUE(near(nil, {-1, -1, -1, -1}) && Color(0.5, 0.5, -0.1, 1).isNil() && !Color(NAN, 0, 0, 1).isNil());
  EXPECT_TRUE(nil == Color(0.2, -3, 0.4, 0.5) && nil != Color()) << "two nil colours, whatever their channels";
  EXPECT_TRUE(Color() == Color(1, 1, 1, 1 - 1e-12) && Color() != Color(1, 1, 1, 1 - 2e-12));
  EXPECT_TRUE(near(Color::lerp(a, b, 2.0), b) && near(Color::lerp(a, b, -1.0), a));
  const double s = 0.8999999761581421;  // 1 - t rounded to a float, while t stays a double
  EXPECT_TRUE(near(Color::lerp(Color(), Color(0, 0, 0, 0), 0.1), {s, s, s, s}));
}

TEST(Color, HexStringTruncatesAndPadsNothing) {
  // 127.5 truncates to 7F. Off the scale, -255 prints as 32 bits and 1e30 saturates: never undefined.
  const std::pair<Color, std::string> cases[] = {{{0, 0, 0, 1}, "#000"},
                                                 {{1, 1, 1, 0.5}, "#7FFFFFFF"},
                                                 {{1, 0, 0.5, 1}, "#FF07F"},
                                                 {{1e30, 2, 0, 2}, "#1FE7FFFFFFF1FE0"},
                                                 {{-1, -1, -1, -1}, "#FFFFFF01FFFFFF01FFFFFF01FFFFFF01"}};
  for (const auto& [color, text] : cases) EXPECT_EQ(color.toHexString(), text);
}

TEST(Rect, EdgesBelongToTheRectangleOnlyIntersectsIsStrictAndSettersResizeWithoutNormalising) {
  const Rect ten(0, 0, 10, 10);
  EXPECT_TRUE(ten.containsPoint(Vec2(10, 10)) && ten.containsPoint(Vec2(0, 0)) && ten.containsRect(ten));
  // A shared edge or corner touches and does not intersect.
  EXPECT_TRUE(!ten.intersects(Rect(10, 0, 10, 10)) && ten.touches(Rect(10, 10, 5, 5)) &&
              ten.intersects(Rect(5, 5, 10, 10)) && !ten.touches(Rect(11, 0, 1, 1)));
  EXPECT_TRUE(near(ten.intersect(Rect(20, 20, 5, 5)), {20, 20, -10, -10})) << "disjoint: negative size";
  EXPECT_TRUE(near(Rect(5, 5, 1, 1).unite(Rect()), {0, 0, 6, 6})) << "an empty rectangle pulls to the origin";
  EXPECT_TRUE(near(Rect(1, 1, 10, 10).getInclude(Vec2(20, -5)), {1, -5, 19, 16}));
  EXPECT_TRUE(near(Rect(1, 2, 4, 6).getBottomRight(), {5, 8})) << "origin and size, not two corners";
  EXPECT_TRUE(Rect(3, 3, 0, 0).isEmpty() && !Rect(0, 0, 0, 5).isEmpty() && !Rect(0, 0, -1, -1).isEmpty());
  const Rect a, b(9e-13, 9e-13, 9e-13, 9e-13), n(NAN, 0, 1, 1);  // == takes each field within 1e-12, unlike Vec4
  EXPECT_TRUE(a == b && static_cast<const Vec4&>(a) != b && n != n);
  // The right and bottom setters resize; margins go to every side, in single precision.
  EXPECT_TRUE(near(after(ten, &Rect::setRight, 5), {0, 0, 5, 10}) &&
              near(after(ten, &Rect::setBottom, 4.0f), {0, 0, 10, 4}));
  EXPECT_TRUE(near(after(ten, &Rect::setCenter, Vec2(1, 2)), {-4, -3, 10, 10}));
  EXPECT_TRUE(near(ten.expand(1.5f), {-1.5, -1.5, 13, 13}) && ten.expand(0.1f).x == -0.10000000149011612);
  EXPECT_TRUE(near(ten.scale(2, 2), {-10, -10, 30, 30})) << "width (2 sx - 1) z, the growth on each side";
}

TEST(Range, FullMeansTheLargestIntAndAStartAloneHasNoLength) {
  const Range full(true), empty(false), start(7);
  EXPECT_EQ(Ints({full.start, full.length, empty.length, start.start, start.length}), Ints({0, 2147483647, 0, 7, 0}));
}

TEST(Box3, EmptyMaxIsTheSmallestPositiveNormalGrowingKeepsThatFloorAndFacesAreInside) {
  const double tiny = 2.2250738585072014e-308;
  const Box3 empty{Vec3(1.7976931348623157e+308), Vec3(tiny)}, unit{Vec3(0, 0, 0), Vec3(1, 1, 1)};
  Vec3 points[] = {Vec3(-1, -2, -3), Vec3(-4, -5, -6)};
  float floats[] = {0.1f, 5, -1, -1, -3, -4};  // a count of floats, three to a point, widened
  EXPECT_TRUE(near(Box3(), empty) && near(after(unit, &Box3::makeEmpty), empty) && Box3().isEmpty());
  EXPECT_TRUE(near(after(Box3(), &Box3::setFromPoints, points, 2), {points[1], points[0]})) << "no floor here";
  EXPECT_TRUE(near(after(Box3(), &Box3::setFromArray, floats, 6), {{-1, -3, -4}, {0.10000000149011612, 5, tiny}}));
  // Faces are inside, and boxes that share one intersect.
  const Box3 face({1, 0, 0}, {2, 1, 1}), apart({1.1, 0, 0}, {2, 1, 1});
  EXPECT_TRUE(unit.containsPoint({1, 1, 1}) && !unit.containsPoint({0.5, 1.0000001, 0.5}) && unit.containsBox(unit));
  EXPECT_TRUE(unit.intersectsBox(face) && face.intersectsBox(unit) && !unit.intersectsBox(apart));
  // intersects changes the object, to the empty state when the boxes are apart or meet only at the origin.
  EXPECT_TRUE(near(after(unit, &Box3::intersects, Box3(Vec3(0.5), Vec3(2))), {Vec3(0.5), Vec3(1)}) &&
              near(after(unit, &Box3::intersects, Box3(Vec3(2), Vec3(3))), Box3()) &&
              near(after(Box3(Vec3(-1), Vec3()), &Box3::intersects, unit), Box3()));
  EXPECT_EQ(unit.distanceToPoint(Vec3(3, 0, 0)), 2.0) << "a distance, not its square";
  EXPECT_TRUE(near(after(Box3(), &Box3::setFromCenterAndSize, Vec3(1, 1, 1), Vec3(2, 4, 6)), {{0, -1, -2}, {2, 3, 4}}));
  EXPECT_TRUE(near(Box3(Vec3(0, 0, 0), Vec3(1, 2, 4)).getParameter(Vec3(0.25, 1, 4)), {0.25, 0.5, 1}));
  EXPECT_TRUE(near(after(unit, &Box3::expandByScalar, 0.1f), {Vec3(-0.10000000149011612), Vec3(1.10000000149011612)}));
}

TEST(Barycentric, WeightsFollowTheVerticesInEveryDimensionAndOnlyWHasNoUpperBound) {
  const Vec2 a(0, 0), b(1, 0), c(0, 1);
  const Barycentric atB(a, b, c, b), atC(a, b, c, c), outside(a, b, c, Vec2(1, 1));
  EXPECT_TRUE(atB.isInside() && atC.isInside() && !outside.isInside() && Barycentric(0, 0, 2).isInside());
  // Projected onto the triangle's plane; a colour's alpha counts like any channel.
  EXPECT_TRUE(near(Barycentric(Vec3(), Vec3(2, 0, 0), Vec3(0, 2, 0), Vec3(1, 1, 5)), {0, 0.5, 0.5}));
  EXPECT_TRUE(
      near(Barycentric(Color(0, 0, 0, 0), Color(0, 0, 0, 1), Color(1, 0, 0, 0), Color(0, 0, 0, 0.5)), {0.5, 0.5, 0}));
  const Color blended = Barycentric(2, -1, 0).interpolate(Color(1, 1, 1, 1), Color(0, 0, 0, 1), Color(0, 1, 0, 0));
  EXPECT_TRUE(near(blended, {2, 2, 2, 1})) << "a u + b v + c w, unclamped";
}

}  // namespace Quillmere::Velmira
