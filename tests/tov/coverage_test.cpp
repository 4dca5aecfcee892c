// coverage_test.cpp: fills checked against exact answers: pixel-aligned and
// half-pixel edges, the area of any triangle and of circles, the non-zero
// rule, fills of one path set meeting without seams, and gradient colours
// at probe points.
#include "tov_fixture.h"

#include <gtest/gtest.h>

#include <random>

using namespace tovtest;

namespace {

TEST(TovCoverage, RectanglesCoverTheirPixelsExactly)
{
    struct Case {
        double x0, y0, x1, y1;
        int px, py;
        unsigned alpha; // at (px, py)
    };
    const Case cases[] = {
        {10, 5, 30, 25, 10, 5, 255},   {10, 5, 30, 25, 29, 24, 255}, {10, 5, 30, 25, 9, 5, 0},
        {10, 5, 30, 25, 30, 5, 0},     {10, 5, 30, 25, 10, 25, 0},   {10.5, 5, 30, 20.5, 10, 8, 128},
        {10.5, 5, 30, 20.5, 15, 20, 128}, {10.5, 5, 30, 20.5, 10, 20, 64}, {10.25, 5, 11, 6, 10, 5, 191},
    };
    for (const Case &k : cases) {
        Surface s(40, 30);
        Canvas c(s);
        fillRect(c, solid(c, 255, 0, 0), k.x0, k.y0, k.x1, k.y1);
        EXPECT_NEAR(int(s.alpha(k.px, k.py)), int(k.alpha), 1) << k.x0 << "," << k.y0 << " at " << k.px << "," << k.py;
        EXPECT_NEAR(coveredArea(s), (k.x1 - k.x0) * (k.y1 - k.y0), 0.02 * (k.x1 - k.x0 + k.y1 - k.y0));
    }
}

TEST(TovCoverage, AnyTriangleCoversItsExactArea)
{
    // Sub-pixel positions and slopes of every kind, wound either way; only
    // 8-bit rounding of the edge pixels may separate coverage from the area.
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> at(2, 38);
    for (int k = 0; k < 300; ++k) {
        std::vector<Pt> p = {{at(rng), at(rng)}, {at(rng), at(rng)}, {at(rng), at(rng)}};
        double area = 0.5 * std::fabs((p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y));
        double perimeter = std::hypot(p[1].x - p[0].x, p[1].y - p[0].y) +
                           std::hypot(p[2].x - p[1].x, p[2].y - p[1].y) + std::hypot(p[0].x - p[2].x, p[0].y - p[2].y);
        Surface s(40, 40);
        Canvas c(s);
        fillPolygon(c, solid(c, 0, 0, 0), p);
        ASSERT_NEAR(coveredArea(s), area, 0.003 * perimeter + 0.01) << k;
    }
}

TEST(TovCoverage, CirclesOfCurvesCoverTheirArea)
{
    for (double r : {6.3, 20.0, 41.7}) {
        Surface s(100, 100);
        Canvas c(s);
        fillCircle(c, solid(c, 0, 128, 0), 50.2, 49.7, r);
        EXPECT_NEAR(coveredArea(s), kPi * r * r, kPi * r * r * 0.005) << r;
    }
}

// Loops of one fill: a counter-wound inner square is a hole; two squares
// wound the same way cover their overlap once (non-zero, not even-odd).
TEST(TovCoverage, LoopsOfOneFillFollowTheNonZeroRule)
{
    Surface s(40, 40);
    Canvas c(s);
    beginFills(c, {solid(c, 0, 0, 0, 128)});
    tovUseBrush(c, 0, 1);
    polygonPath(c, {{2, 2}, {22, 2}, {22, 22}, {2, 22}});
    polygonPath(c, {{7, 7}, {7, 17}, {17, 17}, {17, 7}});
    polygonPath(c, {{15, 15}, {35, 15}, {35, 35}, {15, 35}});
    polygonPath(c, {{20, 20}, {38, 20}, {38, 38}, {20, 38}});
    tovEndShape(c);
    EXPECT_EQ(s.alpha(4, 4), 128u);
    EXPECT_EQ(s.alpha(10, 10), 0u);  // the hole
    EXPECT_EQ(s.alpha(16, 16), 128u); // the hole's corner inside the second square
    EXPECT_EQ(s.alpha(30, 30), 128u); // covered twice, painted once
    EXPECT_EQ(s.alpha(36, 10), 0u);
}

// A jittered grid of cells of four opaque fills, every edge given once with
// the two cells beside it as its fills, curved and slanted borders: no pixel
// inside may let the background through, and the borders really mix.
TEST(TovCoverage, FillsSharingEdgesLeaveNoSeam)
{
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> jitter(-2.7, 2.7);
    Surface s(64, 64);
    Canvas c(s);
    const int n = 5;
    Pt v[n + 1][n + 1];
    for (int i = 0; i <= n; ++i)
        for (int j = 0; j <= n; ++j) {
            bool inner = i > 0 && i < n && j > 0 && j < n;
            v[i][j] = {2 + i * 12 + (inner ? jitter(rng) : 0), 2 + j * 12 + (inner ? jitter(rng) : 0)};
        }
    auto cell = [](int i, int j) { return i < 0 || j < 0 || i >= n || j >= n ? 0 : 1 + (i + 3 * j) % 4; };
    beginFills(c, {solid(c, 255, 0, 0), solid(c, 0, 0, 255), solid(c, 0, 160, 0), solid(c, 90, 90, 90)});
    for (int j = 0; j <= n; ++j)
        for (int i = 0; i < n; ++i) {
            tovUseBrush(c, cell(i, j - 1), cell(i, j));
            tovMoveTo(c, v[i][j].x, v[i][j].y);
            tovCurveTo(c, (v[i][j].x + v[i + 1][j].x) / 2, (v[i][j].y + v[i + 1][j].y) / 2 + (j % 2 ? 3 : -3),
                       v[i + 1][j].x, v[i + 1][j].y);
        }
    for (int i = 0; i <= n; ++i)
        for (int j = 0; j < n; ++j) {
            tovUseBrush(c, cell(i, j), cell(i - 1, j));
            tovMoveTo(c, v[i][j].x, v[i][j].y);
            tovLineTo(c, v[i][j + 1].x, v[i][j + 1].y);
        }
    tovEndShape(c);
    int mixed = 0;
    for (int y = 6; y < 58; ++y)
        for (int x = 3; x < 61; ++x) {
            uint32_t p = s.argb(x, y);
            ASSERT_EQ(p >> 24, 255u) << x << "," << y;
            mixed += (p & 0xff0000) && (p & 0xff);
        }
    EXPECT_GT(mixed, 30);
}

// Premultiplied colour of a two-stop gradient at t (0..1).
uint32_t expectedGradient(double t, tovColor a, tovColor b)
{
    t = t < 0 ? 0 : (t > 1 ? 1 : t);
    double ch[4] = {a.alpha + (b.alpha - a.alpha) * t, a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t,
                    a.blue + (b.blue - a.blue) * t};
    uint32_t out = uint32_t(std::lround(ch[0])) << 24;
    for (int i = 1; i < 4; ++i)
        out |= uint32_t(std::lround(ch[i] * ch[0] / 255.0)) << (24 - 8 * i);
    return out;
}

TEST(TovCoverage, GradientColoursAtProbesFollowTheFormula)
{
    const tovColor from{255, 0, 0, 255}, to{0, 40, 255, 160};
    const double k = 50.0 / 819.2; // gradient square half-size to 50 pixels
    const struct {
        int type;
        double m[2][3];
    } cases[] = {
        {2, {{k, 0, 60}, {0, k, 40}}},
        {2, {{0.6 * k, -0.8 * k, 60}, {0.8 * k, 0.6 * k, 40}}},
        {2, {{k, 0.5 * k, 60}, {0.2 * k, 0.7 * k, 40}}},
        {3, {{k, 0, 60}, {0, k, 40}}},
        {3, {{1.5 * k, 0, 60}, {0, 0.5 * k, 40}}},
        {2, {{k, 0, -300}, {0, k, 40}}}, // past the right end: padded
    };
    for (const auto &g : cases) {
        Surface s(120, 80);
        Canvas c(s);
        tovGradientStop stops[2] = {{0, from}, {255, to}};
        fillRect(c, tovCreateGradientBrush(c, g.type, 2, stops, 1, g.m[0][2], g.m[1][2], g.m, nullptr), 0, 0, 120, 80);
        double det = g.m[0][0] * g.m[1][1] - g.m[0][1] * g.m[1][0];
        for (int y = 2; y < 80; y += 7)
            for (int x = 1; x < 120; x += 9) {
                double px = x + 0.5 - g.m[0][2], py = y + 0.5 - g.m[1][2];
                double ux = (g.m[1][1] * px - g.m[0][1] * py) / det, uy = (-g.m[1][0] * px + g.m[0][0] * py) / det;
                double t = g.type == 2 ? (ux + 819.2) / 1638.4 : std::sqrt(ux * ux + uy * uy) / 819.2;
                ASSERT_LE(channelDifference(s.argb(x, y), expectedGradient(t, from, to)), 2)
                    << "type " << g.type << " at " << x << "," << y;
            }
    }
}

} // namespace
