// hostile_test.cpp: nonsense input is harmless. NaN, infinite and huge
// coordinates, degenerate curves, out-of-range indices, unbalanced group and
// mask calls, bad pens and gradients, null handles: no crash, no hang, no
// write outside the buffer, and sane drawing carries on afterwards.
#include "tov_fixture.h"

#include <gtest/gtest.h>

#include <limits>

using namespace tovtest;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(TovHostile, NonFiniteCoordinatesDropOnlyTheirEdges)
{
    Surface s(40, 40);
    Canvas c(s);
    tovPenSpec p{3, {0, 0, 255, 255}};
    tovObject *pens[2] = {nullptr, tovCreatePen(c, &p)};
    tovObject *brushes[2] = {nullptr, solid(c, 255, 0, 0)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 2);
    tovSetPens(c, pens, 2);
    tovUseBrush(c, 0, 1);
    tovUsePen(c, 1);
    tovMoveTo(c, kNaN, 5);
    tovLineTo(c, 10, kNaN);
    tovCurveTo(c, kNaN, kNaN, 5, 5);
    tovLineTo(c, kInf, -kInf);
    tovCurveTo(c, -kInf, kInf, 1e300, -1e300);
    tovMoveTo(c, 10, 10), tovLineTo(c, 30, 10), tovLineTo(c, 30, 30), tovLineTo(c, 10, 30), tovLineTo(c, 10, 10);
    tovEndShape(c);
    EXPECT_TRUE(s.guardsIntact());
    EXPECT_EQ(s.argb(20, 20), 0xffff0000u);
}

TEST(TovHostile, HugeShapesFillTheWholeClip)
{
    Surface s(64, 48);
    Canvas c(s);
    for (double big : {1e6, 4e6, 1e9, 1e300}) {
        fillRect(c, solid(c, 0, 0, 0), -big, -big, big, big);
        fillCircle(c, solid(c, 0, 0, 0), 0, 0, big);
        strokePolyline(c, big / 10, tovColor{0, 0, 0, 255}, {{-big, 3}, {big, 7}, {0, big}});
    }
    // A curve whose control point is far away and a pen wider than any buffer.
    tovObject *brushes[2] = {nullptr, solid(c, 0, 255, 0)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 2);
    tovUseBrush(c, 0, 1);
    tovMoveTo(c, 0, 0), tovCurveTo(c, 1e8, -1e8, 40, 40), tovLineTo(c, 0, 40), tovLineTo(c, 0, 0);
    tovEndShape(c);
    EXPECT_EQ(s.alpha(0, 0), 255u);
    EXPECT_EQ(s.alpha(63, 47), 255u);
    EXPECT_TRUE(s.guardsIntact());
}

TEST(TovHostile, ThousandsOfStylesInOnePathSetEachPaintTheirOwnPixel)
{
    // Ten thousand one-pixel squares of as many colours in one path set.
    constexpr int kStyles = 10000;
    Surface s(100, 100);
    Canvas c(s);
    std::vector<tovObject *> brushes(kStyles + 1, nullptr);
    for (int i = 1; i <= kStyles; ++i)
        brushes[size_t(i)] = solid(c, uint8_t(i), 0, 0);
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes.data(), kStyles + 1);
    for (int i = 1; i <= kStyles; ++i) {
        double x = (i - 1) % 100, y = (i - 1) / 100;
        tovUseBrush(c, 0, i);
        tovMoveTo(c, x, y), tovLineTo(c, x + 1, y), tovLineTo(c, x + 1, y + 1), tovLineTo(c, x, y + 1);
        tovLineTo(c, x, y);
    }
    tovEndShape(c);
    EXPECT_EQ(s.argb(0, 0), 0xff010000u);
    EXPECT_EQ(s.argb(37, 42), 0xff000000u | (uint32_t(42 * 100 + 37 + 1) % 256) << 16);
    EXPECT_EQ(s.argb(99, 99), 0xff000000u | (uint32_t(kStyles % 256) << 16));
}

TEST(TovHostile, DegenerateCurvesAndEdges)
{
    Surface s(20, 20);
    Canvas c(s);
    tovObject *brushes[2] = {nullptr, solid(c, 0, 0, 0)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 2);
    tovUseBrush(c, 0, 1);
    tovMoveTo(c, 5, 5);
    tovCurveTo(c, 5, 5, 5, 5);
    tovLineTo(c, 5, 5);
    tovCurveTo(c, 15, 15, 5, 5); // there and back again
    tovLineTo(c, 1e-300, 1e-300);
    tovEndShape(c);
    strokePolyline(c, 4, tovColor{0, 0, 0, 255}, {{10, 10}, {10, 10}, {10, 10}});
    EXPECT_TRUE(s.guardsIntact());
    EXPECT_EQ(s.alpha(10, 10), 255u); // a zero-length stroke is a dot
}

TEST(TovHostile, OutOfRangeStyleIndicesDrawNothing)
{
    Surface s(20, 20);
    Canvas c(s);
    tovObject *brushes[3] = {nullptr, nullptr, solid(c, 0, 0, 0)};
    tovObject *pens[1] = {nullptr};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 3);
    tovSetPens(c, pens, 1);
    for (int bad : {-1, 1, 3, 1 << 30, -(1 << 30), std::numeric_limits<int>::min()}) {
        tovUseBrush(c, bad, bad == 1 ? 0 : bad);
        tovUsePen(c, bad);
        tovMoveTo(c, 2, 2), tovLineTo(c, 18, 2), tovLineTo(c, 18, 18), tovLineTo(c, 2, 18), tovLineTo(c, 2, 2);
    }
    tovEndShape(c);
    tovSetBrushes(c, nullptr, 5);
    tovSetPens(c, pens, -4);
    tovEndShape(c);
    EXPECT_DOUBLE_EQ(coveredArea(s), 0.0);
    EXPECT_TRUE(s.guardsIntact());
}

TEST(TovHostile, UnbalancedGroupsAndMasks)
{
    Surface s(30, 30);
    Canvas c(s);
    tovDestroyMask(c);
    tovEndCanvas(c, 2);
    tovEndCanvas(c, 1);
    for (int i = 0; i < 400; ++i) {
        tovBeginCanvas(c, i % 3 == 0 ? 1 : 2);
        fillRect(c, solid(c, 0, 0, 0), i % 30, 0, 30, 30);
    }
    for (int i = 0; i < 450; ++i) {
        tovEndCanvas(c, 2);
        tovDestroyMask(c);
    }
    tovBeginCanvas(c, 7);
    tovEndCanvas(c, -3);
    tovEndShape(c);
    fillRect(c, solid(c, 255, 0, 0), 0, 0, 30, 30);
    EXPECT_EQ(s.argb(15, 15), 0xffff0000u);
    EXPECT_TRUE(s.guardsIntact());
}

TEST(TovHostile, ManyMasksOpenAtOnceStayBounded)
{
    Surface s(30, 30);
    Canvas c(s);
    for (int i = 0; i < 200; ++i) {
        tovBeginCanvas(c, 2);
        fillRect(c, solid(c, 0, 0, 0), 0, 0, 30, 30);
        tovEndCanvas(c, 2);
    }
    fillRect(c, solid(c, 255, 0, 0), 0, 0, 30, 30); // beyond the limit: hidden
    EXPECT_EQ(s.alpha(15, 15), 0u);
    for (int i = 0; i < 200; ++i)
        tovDestroyMask(c);
    fillRect(c, solid(c, 255, 0, 0), 0, 0, 30, 30);
    EXPECT_EQ(s.argb(15, 15), 0xffff0000u);
}

TEST(TovHostile, BadPensAndBrushes)
{
    Surface s(30, 30);
    Canvas c(s);
    for (double w : {kNaN, -kInf, kInf, -5.0, 1e300}) {
        tovPenSpec p{w, {0, 0, 0, 255}};
        tovObject *pens[2] = {nullptr, tovCreatePen(c, &p)};
        tovBeginShape(c, 1, 2, 0);
        tovSetPens(c, pens, 2);
        tovUsePen(c, 1);
        tovMoveTo(c, 5, 5), tovLineTo(c, 25, 25);
        tovEndShape(c);
        tovDeleteObject(c, pens[1]);
        tovDeleteObject(c, pens[1]); // twice: ignored
    }
    EXPECT_NE(tovCreatePen(c, nullptr), nullptr);
    std::vector<tovGradientStop> stops(400);
    for (size_t i = 0; i < stops.size(); ++i)
        stops[i] = {uint32_t(1000 - i * 7), {uint8_t(i), 0, 0, 255}};
    double nanMatrix[2][3] = {{kNaN, 0, 0}, {0, 1, 0}};
    double tiny[2][3] = {{1e-300, 0, 0}, {0, 1e-300, 0}};
    double ok[2][3] = {{0.01, 0, 15}, {0, 0.01, 15}};
    tovObject *brushes[] = {
        nullptr,
        tovCreateGradientBrush(c, 2, 400, stops.data(), 1, 0, 0, ok, nullptr),
        tovCreateGradientBrush(c, 3, -1, stops.data(), 1, 0, 0, ok, nullptr),
        tovCreateGradientBrush(c, 2, 2, nullptr, 1, 0, 0, ok, nullptr),
        tovCreateGradientBrush(c, 9, 2, stops.data(), 1, 0, 0, ok, nullptr),
        tovCreateGradientBrush(c, 3, 2, stops.data(), 1, 0, 0, nanMatrix, nullptr),
        tovCreateGradientBrush(c, 3, 2, stops.data(), 1, 0, 0, tiny, nullptr),
        tovCreateGradientBrush(c, 2, 2, stops.data(), 1, 0, 0, nullptr, nullptr),
        tovCreateBmpBrush(c, 4, nullptr, 0, 0, nullptr, nullptr),
    };
    for (int i = 1; i < 9; ++i)
        fillRect(c, brushes[i], 0, 0, 30, 30);
    EXPECT_TRUE(s.guardsIntact());
    EXPECT_NE(s.alpha(15, 15), 0u); // the first, descending-ratio gradient draws
}

TEST(TovHostile, NullCanvasIsIgnoredEverywhere)
{
    tovColor col{1, 2, 3, 4};
    tovPenSpec pen{1, col};
    double m[2][3] = {{1, 0, 0}, {0, 1, 0}};
    tovDestroy(nullptr);
    tovSetClipBox(nullptr, 0, 0, 1, 1);
    tovSetClipFlag(nullptr, 0);
    tovClear(nullptr, &col);
    tovBeginCanvas(nullptr, 2);
    tovEndCanvas(nullptr, 2);
    tovDestroyMask(nullptr);
    tovBeginShape(nullptr, 1, 2, 0);
    tovMoveTo(nullptr, 0, 0);
    tovLineTo(nullptr, 1, 1);
    tovCurveTo(nullptr, 1, 1, 2, 2);
    tovUseBrush(nullptr, 0, 1);
    tovUsePen(nullptr, 1);
    tovSetPens(nullptr, nullptr, 1);
    tovSetBrushes(nullptr, nullptr, 1);
    tovEndShape(nullptr);
    EXPECT_EQ(tovCreatePen(nullptr, &pen), nullptr);
    EXPECT_EQ(tovCreateSolidBrush(nullptr, col, nullptr), nullptr);
    EXPECT_EQ(tovCreateGradientBrush(nullptr, 2, 0, nullptr, 1, 0, 0, m, nullptr), nullptr);
    EXPECT_EQ(tovCreateBmpBrush(nullptr, 4, nullptr, 0, 0, m, nullptr), nullptr);
    tovDeleteObject(nullptr, nullptr);
}

TEST(TovHostile, EmptyClipAndOneByOneBuffer)
{
    Surface s(1, 1, 16, 2, 3);
    Canvas c(s);
    tovSetClipBox(c, 5, 5, -5, -5);
    tovColor red{255, 0, 0, 255};
    tovClear(c, &red);
    fillRect(c, solid(c, 0, 0, 0), -10, -10, 10, 10);
    EXPECT_EQ(s.at(0, 0)[0], 0);
    tovSetClipBox(c, 0, 0, 1, 1);
    fillRect(c, solid(c, 255, 255, 255), -10, -10, 10, 10);
    EXPECT_EQ(s.at(0, 0)[0], 0xff);
    EXPECT_TRUE(s.guardsIntact());
}

} // namespace
