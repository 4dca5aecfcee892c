// stroke_test.cpp: what the comparison with cairo cannot see: the one-pixel
// hairline, pens painted in pen order over the fill, and a translucent
// polyline filled as one outline.
#include "tov_fixture.h"

#include <gtest/gtest.h>

using namespace tovtest;

namespace {

TEST(TovStroke, ZeroWidthIsAOnePixelHairline)
{
    Surface s(40, 20);
    Canvas c(s);
    strokePolyline(c, 0, tovColor{0, 0, 0, 255}, {{10, 10.5}, {30, 10.5}});
    for (int x = 10; x < 30; ++x) {
        EXPECT_EQ(s.alpha(x, 10), 255u) << x;
        EXPECT_EQ(s.alpha(x, 9), 0u) << x;
        EXPECT_EQ(s.alpha(x, 11), 0u) << x;
    }
    EXPECT_NEAR(coveredArea(s), 20 + kPi / 4, 0.1);
}

TEST(TovStroke, PensArePaintedInPenOrderAfterTheFill)
{
    Surface s(40, 40);
    Canvas c(s);
    tovPenSpec red{4, {255, 0, 0, 255}}, blue{4, {0, 0, 255, 255}};
    tovObject *pens[3] = {nullptr, tovCreatePen(c, &red), tovCreatePen(c, &blue)};
    tovObject *brushes[2] = {nullptr, solid(c, 0, 255, 0)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 2);
    tovSetPens(c, pens, 3);
    // The blue pen's edge comes first but pen 2 is painted over pen 1.
    tovUsePen(c, 2);
    tovMoveTo(c, 20, 2), tovLineTo(c, 20, 38);
    tovUsePen(c, 1);
    tovMoveTo(c, 2, 20), tovLineTo(c, 38, 20);
    // A filled square under both, outlined by pen 1 on its left side.
    tovUseBrush(c, 0, 1);
    tovMoveTo(c, 10, 10), tovLineTo(c, 30, 10);
    tovUsePen(c, 0);
    tovLineTo(c, 30, 30), tovLineTo(c, 10, 30);
    tovUsePen(c, 1);
    tovLineTo(c, 10, 10);
    tovSetPens(c, pens, 3);
    tovEndShape(c);
    EXPECT_EQ(s.argb(20, 20), 0xff0000ffu); // crossing: pen 2 on top
    EXPECT_EQ(s.argb(25, 20), 0xffff0000u); // pen 1 over the fill
    EXPECT_EQ(s.argb(25, 25), 0xff00ff00u); // the fill
    EXPECT_EQ(s.argb(10, 25), 0xffff0000u); // the outline's left side
    EXPECT_EQ(s.argb(31, 25), 0u);          // no pen on the right side
}

TEST(TovStroke, TranslucentPolylineCoversItsJoinsOnce)
{
    // One polyline of a translucent pen: the joins are not darker than the
    // segments, since the whole outline is filled as one.
    Surface s(60, 60);
    Canvas c(s);
    strokePolyline(c, 6, tovColor{0, 0, 0, 128}, {{10, 10}, {50, 10}, {50, 50}, {10, 30}});
    EXPECT_EQ(s.alpha(50, 10), 128u);
    EXPECT_EQ(s.alpha(50, 50), 128u);
    EXPECT_EQ(s.alpha(30, 10), 128u);
}

} // namespace
