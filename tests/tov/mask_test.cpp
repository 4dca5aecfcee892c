// mask_test.cpp: clip masks. What is drawn inside a kind-2 group becomes an
// anti-aliased mask (colours ignored) that cuts all later drawing, nested
// masks intersect, tovDestroyMask pops, and tovClear ignores masks.
#include "tov_fixture.h"

#include <gtest/gtest.h>

using namespace tovtest;

namespace {

void openMaskRect(tovCanvas *c, double x0, double y0, double x1, double y1, uint8_t alpha = 255)
{
    tovBeginCanvas(c, 2);
    fillRect(c, solid(c, 10, 20, 30, alpha), x0, y0, x1, y1);
    tovEndCanvas(c, 2);
}

void paintAll(tovCanvas *c)
{
    tovBeginCanvas(c, 1);
    fillRect(c, solid(c, 255, 0, 0), -5, -5, 100, 100);
    tovEndCanvas(c, 1);
}

TEST(TovMask, DrawingIsCutExactlyToTheMaskShape)
{
    Surface s(40, 40);
    Canvas c(s);
    openMaskRect(c, 10, 12, 25, 30);
    EXPECT_DOUBLE_EQ(coveredArea(s), 0.0); // the mask itself paints nothing
    paintAll(c);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x) {
            bool inside = x >= 10 && x < 25 && y >= 12 && y < 30;
            ASSERT_EQ(s.argb(x, y), inside ? 0xffff0000u : 0u) << x << "," << y;
        }
}

TEST(TovMask, MaskEdgesAreAntiAliased)
{
    Surface s(40, 40);
    Canvas c(s);
    openMaskRect(c, 10.5, 10, 20, 20);
    paintAll(c);
    EXPECT_NEAR(int(s.alpha(10, 15)), 128, 1);
    EXPECT_EQ(s.alpha(11, 15), 255u);
}

TEST(TovMask, ColoursOfTheMaskShapeDoNotMatter)
{
    Surface s(40, 40);
    Canvas c(s);
    openMaskRect(c, 10, 10, 20, 20, 0); // a fully transparent fill still masks
    paintAll(c);
    EXPECT_EQ(s.argb(15, 15), 0xffff0000u);
    EXPECT_EQ(s.argb(25, 15), 0u);
}

TEST(TovMask, NestedMasksIntersectAndPopInOrder)
{
    Surface s(40, 40);
    Canvas c(s);
    openMaskRect(c, 0, 0, 20, 40);
    openMaskRect(c, 10, 0, 30, 40);
    paintAll(c);
    EXPECT_EQ(s.alpha(5, 5), 0u);
    EXPECT_EQ(s.alpha(15, 5), 255u);
    EXPECT_EQ(s.alpha(25, 5), 0u);
    tovDestroyMask(c);
    tovBeginCanvas(c, 1);
    fillRect(c, solid(c, 0, 0, 255), 0, 20, 40, 40);
    tovEndCanvas(c, 1);
    EXPECT_EQ(s.argb(5, 25), 0xff0000ffu);
    EXPECT_EQ(s.argb(25, 25), 0u);
    tovDestroyMask(c);
    paintAll(c);
    EXPECT_EQ(s.argb(25, 5), 0xffff0000u);
}

TEST(TovMask, TwentyNineNestedMasksAllApply)
{
    Surface s(100, 40);
    Canvas c(s);
    for (int i = 0; i < 29; ++i)
        openMaskRect(c, i, 0, 100 - i, 40);
    paintAll(c);
    EXPECT_EQ(s.alpha(27, 5), 0u);
    EXPECT_EQ(s.alpha(28, 5), 255u);
    EXPECT_EQ(s.alpha(71, 5), 255u);
    EXPECT_EQ(s.alpha(72, 5), 0u);
    for (int i = 0; i < 29; ++i)
        tovDestroyMask(c);
    paintAll(c);
    EXPECT_EQ(s.alpha(0, 5), 255u);
}

TEST(TovMask, MaskLayerCollectsNestedGroupsAndShapes)
{
    // A clip layer made of a sprite: its children open groups of their own
    // inside the mask group, and all of them shape the mask.
    Surface s(40, 40);
    Canvas c(s);
    tovBeginCanvas(c, 2);
    tovBeginCanvas(c, 1);
    fillRect(c, solid(c, 0, 0, 0), 0, 0, 10, 10);
    tovEndCanvas(c, 1);
    tovBeginCanvas(c, 1);
    fillRect(c, solid(c, 0, 0, 0), 30, 30, 40, 40);
    tovEndCanvas(c, 1);
    tovEndCanvas(c, 2);
    paintAll(c);
    EXPECT_EQ(s.alpha(5, 5), 255u);
    EXPECT_EQ(s.alpha(35, 35), 255u);
    EXPECT_EQ(s.alpha(20, 20), 0u);
}

TEST(TovMask, MaskInsideAMaskLayerCutsTheLayersShape)
{
    // Within a clip layer, a clip layer of its own limits what the outer
    // layer collects.
    Surface s(40, 40);
    Canvas c(s);
    tovBeginCanvas(c, 2);
    openMaskRect(c, 0, 0, 20, 40);
    fillRect(c, solid(c, 0, 0, 0), 10, 0, 30, 40);
    tovDestroyMask(c);
    tovEndCanvas(c, 2);
    paintAll(c);
    EXPECT_EQ(s.alpha(5, 5), 0u);
    EXPECT_EQ(s.alpha(15, 5), 255u);
    EXPECT_EQ(s.alpha(25, 5), 0u);
}

TEST(TovMask, MaskCoversOnlyTheClipBoxItWasMadeIn)
{
    Surface s(40, 40);
    Canvas c(s);
    tovSetClipBox(c, 0, 0, 20, 40);
    openMaskRect(c, 0, 0, 40, 40);
    tovSetClipBox(c, 0, 0, 40, 40);
    paintAll(c);
    EXPECT_EQ(s.alpha(15, 5), 255u);
    EXPECT_EQ(s.alpha(25, 5), 0u);
}

TEST(TovMask, EveryWayOfPaintingIsMasked)
{
    // Single colours, styles summed into a layer, gradients and strokes, in
    // the native format and in one converted per row.
    for (int format : {280, 16}) {
        Surface s(40, 40, format, format == 280 ? 4 : 2);
        Canvas c(s);
        openMaskRect(c, 0, 0, 20, 40);
        tovGradientStop stops[2] = {{0, {255, 255, 255, 255}}, {255, {255, 255, 255, 255}}};
        double m[2][3] = {{0.05, 0, 20}, {0, 0.05, 20}};
        tovObject *brushes[3] = {nullptr, solid(c, 255, 255, 255),
                                 tovCreateGradientBrush(c, 2, 2, stops, 1, 20, 20, m, nullptr)};
        // Two styles meeting at x = 20: summed into a layer.
        tovBeginShape(c, 1, 2, 0);
        tovSetBrushes(c, brushes, 3);
        tovMoveTo(c, 0, 0);
        tovUseBrush(c, 0, 1);
        tovLineTo(c, 20, 0);
        tovUseBrush(c, 0, 2);
        tovLineTo(c, 40, 0), tovLineTo(c, 40, 20), tovLineTo(c, 20, 20);
        tovUseBrush(c, 0, 1);
        tovLineTo(c, 0, 20), tovLineTo(c, 0, 0);
        tovMoveTo(c, 20, 0);
        tovUseBrush(c, 2, 1);
        tovLineTo(c, 20, 20);
        tovEndShape(c);
        fillRect(c, brushes[2], 0, 20, 40, 30);
        strokePolyline(c, 6, tovColor{255, 255, 255, 255}, {{0, 35}, {40, 35}});
        for (int y : {10, 25, 35}) {
            EXPECT_NE(s.at(10, y)[0], 0) << format << " row " << y;
            EXPECT_EQ(s.at(30, y)[0], 0) << format << " row " << y;
        }
    }
}

TEST(TovMask, ClearIgnoresMasks)
{
    Surface s(20, 20);
    Canvas c(s);
    openMaskRect(c, 0, 0, 5, 5);
    tovColor grey{100, 100, 100, 255};
    tovClear(c, &grey);
    EXPECT_EQ(s.argb(15, 15), 0xff646464u);
}

TEST(TovMask, StrokesAndFillsOfAMaskShapeBothCount)
{
    Surface s(40, 40);
    Canvas c(s);
    tovBeginCanvas(c, 2);
    strokePolyline(c, 4, tovColor{0, 0, 0, 255}, {{0, 30}, {40, 30}});
    fillRect(c, solid(c, 0, 0, 0), 0, 0, 10, 10);
    tovEndCanvas(c, 2);
    paintAll(c);
    EXPECT_EQ(s.alpha(20, 30), 255u);
    EXPECT_EQ(s.alpha(5, 5), 255u);
    EXPECT_EQ(s.alpha(20, 20), 0u);
}

} // namespace
