// stroke_test.cpp: strokes checked against a supersampled oracle (a pixel's
// coverage is the share of its sample points within half the pen width of
// the polyline, which is exactly round caps and round joins), plus the
// hairline, pen order, polyline breaks and strokes drawn over fills.
#include "tov_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace tovtest;

namespace {

double distanceToSegment(double px, double py, Pt a, Pt b)
{
    double dx = b.x - a.x, dy = b.y - a.y, len2 = dx * dx + dy * dy;
    double t = len2 > 0 ? ((px - a.x) * dx + (py - a.y) * dy) / len2 : 0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(px - a.x - t * dx, py - a.y - t * dy);
}

// Coverage of pixel (x, y) by the round-capped, round-joined stroke.
double oracle(const std::vector<Pt> &pts, double radius, int x, int y)
{
    constexpr int kGrid = 16;
    int inside = 0;
    for (int sy = 0; sy < kGrid; ++sy)
        for (int sx = 0; sx < kGrid; ++sx) {
            double px = x + (sx + 0.5) / kGrid, py = y + (sy + 0.5) / kGrid;
            double d = 1e9;
            for (size_t i = 0; i + 1 < pts.size(); ++i)
                d = std::min(d, distanceToSegment(px, py, pts[i], pts[i + 1]));
            if (pts.size() == 1)
                d = std::hypot(px - pts[0].x, py - pts[0].y);
            inside += d <= radius;
        }
    return inside / double(kGrid * kGrid);
}

struct StrokeCase {
    const char *name;
    double width;
    std::vector<Pt> pts;
};

// Tolerance per pixel: the oracle's 16x16 samples, arcs cut into chords
// within 0.1 px, and where two pieces of one outline overlap near the
// boundary (inner joins, caps over a sharp turn) their partial coverages add.
TEST(TovStroke, MatchesRoundCapsAndJoinsPixelByPixel)
{
    const StrokeCase cases[] = {
        {"horizontal", 4, {{10, 10}, {40, 10}}},
        {"slanted", 3.3, {{8.2, 30.7}, {52.6, 12.1}}},
        {"right angle", 5, {{10.5, 10.5}, {40.5, 10.5}, {40.5, 40.5}}},
        {"zigzag", 2.5, {{5, 50}, {20, 20}, {35, 50}, {50, 20}}},
        {"closed square", 4, {{15, 15}, {45, 15}, {45, 45}, {15, 45}, {15, 15}}},
        {"wide dot", 9, {{30.3, 30.6}}},
    };
    for (const StrokeCase &sc : cases) {
        Surface s(64, 64);
        Canvas c(s);
        std::vector<Pt> pts = sc.pts;
        if (pts.size() == 1)
            pts.push_back(pts[0]);
        strokePolyline(c, sc.width, tovColor{0, 0, 0, 255}, pts);
        double total = 0, want = 0, worst = 0;
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x) {
                double got = s.alpha(x, y) / 255.0, exp = oracle(sc.pts, sc.width / 2, x, y);
                total += got, want += exp;
                worst = std::max(worst, std::fabs(got - exp));
            }
        EXPECT_LT(worst, 0.13) << sc.name;
        EXPECT_NEAR(total, want, want * 0.01) << sc.name;
    }
}

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

TEST(TovStroke, MoveAndPenChangesBreakThePolyline)
{
    // A pen change at a vertex gives two caps there instead of a join; with
    // round caps the covered shape is the same, but two separate outlines
    // are drawn so the second pen's cap lies over the first.
    Surface s(60, 30);
    Canvas c(s);
    tovPenSpec a{6, {255, 0, 0, 255}}, b{6, {0, 0, 255, 255}};
    tovObject *pens[3] = {nullptr, tovCreatePen(c, &a), tovCreatePen(c, &b)};
    tovBeginShape(c, 1, 2, 0);
    tovSetPens(c, pens, 3);
    tovUsePen(c, 1);
    tovMoveTo(c, 10, 15), tovLineTo(c, 30, 15);
    tovUsePen(c, 2);
    tovLineTo(c, 50, 15);
    tovMoveTo(c, 10, 25), tovLineTo(c, 20, 25); // a move between: no join across
    tovMoveTo(c, 40, 25), tovLineTo(c, 50, 25);
    tovEndShape(c);
    EXPECT_EQ(s.argb(28, 15), 0xff0000ffu); // pen 2's start cap over pen 1
    EXPECT_EQ(s.argb(20, 15), 0xffff0000u);
    EXPECT_EQ(s.argb(40, 15), 0xff0000ffu);
    EXPECT_EQ(s.alpha(5, 15), 0u);
    EXPECT_EQ(s.alpha(30, 25), 0u);
    EXPECT_EQ(s.argb(45, 25), 0xff0000ffu);
}

} // namespace
