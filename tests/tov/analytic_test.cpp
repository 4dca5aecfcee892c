// analytic_test.cpp: fills checked against exact answers: pixel-aligned
// rectangles, half-pixel edges, a circle's area, gradient colours at probe
// points, and shapes of one path set meeting without seams.
#include "tov_fixture.h"

#include <gtest/gtest.h>

using namespace tovtest;

namespace {

TEST(TovFill, PixelAlignedRectangleCoversExactlyItsPixels)
{
    Surface s(40, 30);
    Canvas c(s);
    fillRect(c, solid(c, 255, 0, 0), 10, 5, 30, 25);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            bool inside = x >= 10 && x < 30 && y >= 5 && y < 25;
            ASSERT_EQ(s.argb(x, y), inside ? 0xffff0000u : 0u) << x << "," << y;
        }
}

TEST(TovFill, EdgeThroughPixelMiddleGivesHalfCoverage)
{
    Surface s(40, 30);
    Canvas c(s);
    fillRect(c, solid(c, 0, 0, 255), 10.5, 5, 30, 20.5);
    for (int y = 5; y < 20; ++y) {
        EXPECT_NEAR(int(s.alpha(10, y)), 128, 1) << y;
        EXPECT_EQ(s.alpha(11, y), 255u);
    }
    for (int x = 11; x < 30; ++x)
        EXPECT_NEAR(int(s.alpha(x, 20)), 128, 1) << x;
    EXPECT_NEAR(int(s.alpha(10, 20)), 64, 1);
}

TEST(TovFill, SlantedEdgeCoverageIsTheAreaRightOfIt)
{
    // The triangle (0,0) (8,0) (0,8) cuts pixel (3,4) exactly on its
    // diagonal: half of it is inside.
    Surface s(10, 10);
    Canvas c(s);
    fillPolygon(c, solid(c, 0, 0, 0), {{0, 0}, {8, 0}, {0, 8}});
    EXPECT_NEAR(int(s.alpha(3, 4)), 128, 1);
    EXPECT_EQ(s.alpha(2, 4), 255u);
    EXPECT_EQ(s.alpha(4, 4), 0u);
    EXPECT_NEAR(coveredArea(s), 32.0, 0.05);
}

TEST(TovFill, TrianglesAnywhereCoverTheirExactArea)
{
    // Sub-pixel positions and slopes of every kind; only 8-bit rounding of
    // the edge pixels may separate coverage from the true area.
    for (int k = 0; k < 300; ++k) {
        double ax = 10 + std::fmod(k * 0.37, 1.0), ay = 10 + std::fmod(k * 0.61, 1.0);
        std::vector<Pt> p = {{ax, ay},
                             {ax + 7.3 + (k % 7) * 1.41, ay + 1.3 - (k % 5) * 1.77},
                             {ax - 2.1 + (k % 3) * 0.9, ay + 6.2 + (k % 11) * 0.3}};
        double area = 0.5 * std::fabs((p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[2].x - p[0].x) * (p[1].y - p[0].y));
        Surface s(40, 40);
        Canvas c(s);
        fillPolygon(c, solid(c, 0, 0, 0), p);
        ASSERT_NEAR(coveredArea(s), area, 0.06) << k;
    }
}

TEST(TovFill, CircleCoverageSumsToItsArea)
{
    for (double r : {6.3, 20.0, 41.7}) {
        Surface s(100, 100);
        Canvas c(s);
        fillCircle(c, solid(c, 0, 128, 0), 50.2, 49.7, r);
        EXPECT_NEAR(coveredArea(s), kPi * r * r, kPi * r * r * 0.005) << r;
    }
}

TEST(TovFill, WindingDirectionDoesNotMatterAndHolesCancel)
{
    // Outer square clockwise, inner square counter-clockwise: a frame.
    Surface s(30, 30);
    Canvas c(s);
    tovObject *brushes[2] = {nullptr, solid(c, 0, 0, 0)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 2);
    tovUseBrush(c, 1, 0);
    tovMoveTo(c, 5, 5), tovLineTo(c, 25, 5), tovLineTo(c, 25, 25), tovLineTo(c, 5, 25), tovLineTo(c, 5, 5);
    tovMoveTo(c, 10, 10), tovLineTo(c, 10, 20), tovLineTo(c, 20, 20), tovLineTo(c, 20, 10), tovLineTo(c, 10, 10);
    tovEndShape(c);
    EXPECT_EQ(s.alpha(7, 7), 255u);
    EXPECT_EQ(s.alpha(15, 15), 0u);
    EXPECT_NEAR(coveredArea(s), 400.0 - 100.0, 0.01);
}

TEST(TovFill, OverlappingSameStyleLoopsUseTheNonZeroRule)
{
    // Two squares of one style wound the same way overlap: the overlap is
    // covered once, not twice and not cancelled.
    Surface s(40, 40);
    Canvas c(s);
    tovObject *brushes[2] = {nullptr, solid(c, 0, 0, 0, 128)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 2);
    tovUseBrush(c, 0, 1);
    tovMoveTo(c, 5, 5), tovLineTo(c, 25, 5), tovLineTo(c, 25, 25), tovLineTo(c, 5, 25), tovLineTo(c, 5, 5);
    tovMoveTo(c, 15, 15), tovLineTo(c, 35, 15), tovLineTo(c, 35, 35), tovLineTo(c, 15, 35), tovLineTo(c, 15, 15);
    tovEndShape(c);
    EXPECT_EQ(s.alpha(20, 20), 128u);
    EXPECT_EQ(s.alpha(10, 10), 128u);
}

// Two regions of one path set share a slanted edge (and a curved one):
// where both are opaque no pixel along the shared edge may let the
// background through.
TEST(TovSeams, RegionsSharingEdgesLeaveNoTransparentPixels)
{
    Surface s(64, 64);
    Canvas c(s);
    tovObject *brushes[3] = {nullptr, solid(c, 255, 0, 0), solid(c, 0, 0, 255)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 3);
    // Left region (fill 1) and right region (fill 2) of a quad split by a
    // slanted line and a curve; the outline is clockwise, fill 1 on its right.
    tovMoveTo(c, 4.3, 4.7);
    tovUseBrush(c, 0, 1);
    tovLineTo(c, 30.2, 4.7);
    tovUseBrush(c, 0, 2);
    tovLineTo(c, 59.6, 4.7);
    tovLineTo(c, 59.6, 58.1);
    tovLineTo(c, 21.9, 58.1);
    tovUseBrush(c, 0, 1);
    tovLineTo(c, 4.3, 58.1);
    tovLineTo(c, 4.3, 4.7);
    // The shared boundary, downwards: fill 2 (right region) is on its left
    // as seen on screen, fill 1 on its right.
    tovMoveTo(c, 30.2, 4.7);
    tovUseBrush(c, 2, 1);
    tovLineTo(c, 40.1, 31.3);
    tovCurveTo(c, 12.7, 40.2, 21.9, 58.1);
    tovEndShape(c);
    int seamPixels = 0;
    for (int y = 6; y < 57; ++y)
        for (int x = 6; x < 58; ++x) {
            uint32_t p = s.argb(x, y);
            ASSERT_EQ(p >> 24, 255u) << x << "," << y;
            if ((p & 0xff0000) && (p & 0xff))
                ++seamPixels;
        }
    EXPECT_GT(seamPixels, 40); // the shared edge really blends both colours
}

TEST(TovSeams, RegionsSplitByACurveAreOpaqueAlongIt)
{
    Surface s(60, 60);
    Canvas c(s);
    tovObject *brushes[3] = {nullptr, solid(c, 0, 200, 0), solid(c, 200, 0, 200)};
    const double cx = 30.3, cy = 29.6, r = 25, step = kPi / 8, far = r / std::cos(step / 2);
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 3);
    // Clockwise on screen: the lower half outlines region 2, the upper half
    // region 1; a curve bulging upwards splits them (region 1 above it).
    tovMoveTo(c, cx + r, cy);
    for (int i = 0; i < 16; ++i) {
        tovUseBrush(c, 0, i < 8 ? 2 : 1);
        double mid = (i + 0.5) * step, end = (i + 1) * step;
        tovCurveTo(c, cx + far * std::cos(mid), cy + far * std::sin(mid), cx + r * std::cos(end),
                   cy + r * std::sin(end));
    }
    tovMoveTo(c, cx - r, cy);
    tovUseBrush(c, 1, 2);
    tovCurveTo(c, cx, cy - 20, cx + r, cy);
    tovEndShape(c);
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 60; ++x) {
            if (std::hypot(x + 0.5 - cx, y + 0.5 - cy) < r - 1) {
                ASSERT_EQ(s.alpha(x, y), 255u) << x << "," << y;
            }
        }
    }
    EXPECT_EQ(s.argb(30, 15), 0xff00c800u);
    EXPECT_EQ(s.argb(30, 40), 0xffc800c8u);
}

// Expected colour of a two-stop gradient at position t (0..1), premultiplied.
uint32_t expectedGradient(double t, tovColor a, tovColor b)
{
    t = t < 0 ? 0 : (t > 1 ? 1 : t);
    double ch[4] = {a.alpha + (b.alpha - a.alpha) * t, a.red + (b.red - a.red) * t,
                    a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t};
    uint32_t out = uint32_t(std::lround(ch[0])) << 24;
    for (int i = 1; i < 4; ++i)
        out |= uint32_t(std::lround(ch[i] * ch[0] / 255.0)) << (24 - 8 * i);
    return out;
}

void expectColorNear(uint32_t got, uint32_t want, int tolerance, const char *what, int x, int y)
{
    for (int shift = 0; shift < 32; shift += 8)
        EXPECT_NEAR(int((got >> shift) & 255), int((want >> shift) & 255), tolerance)
            << what << " at " << x << "," << y << " got " << std::hex << got << " want " << want;
}

struct GradientCase {
    const char *name;
    int type;
    double matrix[2][3];
};

TEST(TovGradient, ColoursAtProbePointsFollowTheFormula)
{
    const tovColor from{255, 0, 0, 255}, to{0, 40, 255, 160};
    const double k = 50.0 / 819.2; // gradient square half-size to 50 pixels
    const GradientCase cases[] = {
        {"linear", 2, {{k, 0, 60}, {0, k, 40}}},
        {"linear rotated", 2, {{0.6 * k, -0.8 * k, 60}, {0.8 * k, 0.6 * k, 40}}},
        {"linear sheared", 2, {{k, 0.5 * k, 60}, {0.2 * k, 0.7 * k, 40}}},
        {"radial", 3, {{k, 0, 60}, {0, k, 40}}},
        {"radial elliptic", 3, {{1.5 * k, 0, 60}, {0, 0.5 * k, 40}}},
    };
    for (const GradientCase &gc : cases) {
        Surface s(120, 80);
        Canvas c(s);
        tovGradientStop stops[2] = {{0, from}, {255, to}};
        tovObject *g = tovCreateGradientBrush(c, gc.type, 2, stops, 1, gc.matrix[0][2], gc.matrix[1][2],
                                              gc.matrix, nullptr);
        fillRect(c, g, 0, 0, 120, 80);
        const double(&m)[2][3] = gc.matrix;
        double det = m[0][0] * m[1][1] - m[0][1] * m[1][0];
        for (int y = 2; y < 80; y += 7)
            for (int x = 1; x < 120; x += 9) {
                double px = x + 0.5 - m[0][2], py = y + 0.5 - m[1][2];
                double ux = (m[1][1] * px - m[0][1] * py) / det, uy = (-m[1][0] * px + m[0][0] * py) / det;
                double t = gc.type == 2 ? (ux + 819.2) / 1638.4 : std::sqrt(ux * ux + uy * uy) / 819.2;
                expectColorNear(s.argb(x, y), expectedGradient(t, from, to), 2, gc.name, x, y);
            }
    }
}

TEST(TovGradient, StopsInBetweenAndPaddedEnds)
{
    Surface s(256, 4);
    Canvas c(s);
    tovGradientStop stops[3] = {{64, {255, 0, 0, 255}}, {128, {0, 255, 0, 255}}, {192, {0, 0, 255, 255}}};
    // One ratio step per pixel: the gradient square's 1638.4 units over 256 pixels.
    double m[2][3] = {{256 / 1638.4, 0, 128}, {0, 1, 0}};
    fillRect(c, tovCreateGradientBrush(c, 2, 3, stops, 1, 128, 0, m, nullptr), 0, 0, 256, 4);
    EXPECT_EQ(s.argb(0, 1), 0xffff0000u);
    EXPECT_EQ(s.argb(60, 1), 0xffff0000u);
    EXPECT_EQ(s.argb(128, 1), 0xff00ff00u);
    expectColorNear(s.argb(96, 1), 0xff808000u, 2, "between stops", 96, 1);
    EXPECT_EQ(s.argb(200, 1), 0xff0000ffu);
    EXPECT_EQ(s.argb(255, 1), 0xff0000ffu);
}

TEST(TovGradient, ColourTransformAppliesToStops)
{
    Surface s(20, 4);
    Canvas c(s);
    tovGradientStop stops[2] = {{0, {200, 100, 50, 255}}, {255, {200, 100, 50, 255}}};
    tovColorTransform cx{256, 0, 128, 10, 256, -100, 512, 0};
    double m[2][3] = {{0.01, 0, 10}, {0, 0.01, 2}};
    fillRect(c, tovCreateGradientBrush(c, 3, 2, stops, 1, 10, 2, m, &cx), 0, 0, 20, 4);
    // red 200*128>>8 + 10 = 110, green 100 - 100 = 0, blue 50*2 = 100.
    EXPECT_EQ(s.argb(5, 1), 0xff6e0064u);
}

TEST(TovGradient, SingularMatrixPaintsNothing)
{
    Surface s(20, 20);
    Canvas c(s);
    tovGradientStop stops[2] = {{0, {255, 0, 0, 255}}, {255, {0, 0, 255, 255}}};
    double m[2][3] = {{1, 2, 0}, {2, 4, 0}};
    fillRect(c, tovCreateGradientBrush(c, 2, 2, stops, 1, 0, 0, m, nullptr), 0, 0, 20, 20);
    EXPECT_DOUBLE_EQ(coveredArea(s), 0.0);
}

TEST(TovBrush, SolidBrushIgnoresItsColourTransform)
{
    Surface s(10, 10);
    Canvas c(s);
    tovColorTransform cx{0, 0, 0, 0, 0, 255, 0, 0};
    fillRect(c, tovCreateSolidBrush(c, tovColor{10, 20, 30, 255}, &cx), 0, 0, 10, 10);
    EXPECT_EQ(s.argb(4, 4), 0xff0a141eu);
}

TEST(TovBrush, TranslucentColourBlendsSourceOver)
{
    Surface s(10, 10);
    Canvas c(s);
    tovColor white{255, 255, 255, 255};
    tovClear(c, &white);
    fillRect(c, solid(c, 0, 0, 0, 128), 0, 0, 10, 10);
    expectColorNear(s.argb(4, 4), 0xff7f7f7fu, 1, "half black over white", 4, 4);
}

TEST(TovBrush, BitmapBrushPaintsNothing)
{
    Surface s(10, 10);
    Canvas c(s);
    double m[2][3] = {{1, 0, 0}, {0, 1, 0}};
    fillRect(c, tovCreateBmpBrush(c, 4, nullptr, 0, 0, m, nullptr), 0, 0, 10, 10);
    EXPECT_DOUBLE_EQ(coveredArea(s), 0.0);
}

} // namespace
