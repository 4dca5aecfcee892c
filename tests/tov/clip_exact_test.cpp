// clip_exact_test.cpp: the pixels inside a clip box do not depend on the box.
// A scene of curved fills of several styles, strokes, gradients, an open edge
// soup and a mask is drawn once with the whole buffer as clip box and then
// with many smaller boxes: inside each box every byte must equal the full
// drawing, outside it nothing may change (repainting dirty boxes relies on it).
#include "tov_fixture.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace tovtest;

namespace {

constexpr int kWidth = 120, kHeight = 90;

// Every byte of the buffer gets a value of its own, so blending onto it is
// checked as well as untouched bytes outside the box.
void fillPattern(Surface &s, int bytesPerPixel)
{
    for (int y = 0; y < s.height(); ++y)
        for (int i = 0; i < s.width() * bytesPerPixel; ++i)
            s.row(y)[i] = uint8_t(i * 7 + y * 13 + (i >> 2) * 3);
}

tovObject *gradient(tovCanvas *c, int type, double scale, double tx, double ty)
{
    tovGradientStop stops[3] = {{0, {255, 0, 0, 255}}, {128, {0, 255, 0, 160}}, {255, {0, 0, 255, 255}}};
    double m[2][3] = {{scale, scale * 0.3, tx}, {-scale * 0.2, scale, ty}};
    return tovCreateGradientBrush(c, type, 3, stops, 1, tx, ty, m, nullptr);
}

// Two regions sharing a curved border (so their coverages are summed in one
// layer), a gradient region, and a translucent region partly outside the
// buffer on the left and right.
void curvedRegions(tovCanvas *c)
{
    tovObject *brushes[5] = {nullptr, solid(c, 200, 30, 30), solid(c, 30, 30, 200),
                             gradient(c, 3, 0.05, 60, 45), solid(c, 20, 160, 20, 120)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes, 5);
    tovUseBrush(c, 0, 1);
    tovMoveTo(c, 10.3, 10.7), tovLineTo(c, 50.2, 8.1);
    tovUseBrush(c, 2, 1);
    tovCurveTo(c, 70.6, 30.4, 48.9, 55.3);
    tovUseBrush(c, 0, 1);
    tovLineTo(c, 12.4, 50.8), tovCurveTo(c, 2.2, 30.1, 10.3, 10.7);
    tovUseBrush(c, 0, 2);
    tovMoveTo(c, 50.2, 8.1), tovLineTo(c, 90.7, 12.5), tovCurveTo(c, 100.1, 40.3, 48.9, 55.3);
    tovUseBrush(c, 3, 0);
    circlePath(c, 78.3, 62.6, 22.45, 7);
    tovUseBrush(c, 0, 4);
    tovMoveTo(c, -30.5, 70.2), tovCurveTo(c, 60.3, 40.9, 170.6, 72.4), tovLineTo(c, 150.1, 95.3);
    tovCurveTo(c, 60.7, 110.2, -40.2, 88.8), tovLineTo(c, -30.5, 70.2);
    tovEndShape(c);
}

void strokes(tovCanvas *c)
{
    strokePolyline(c, 6.3, tovColor{250, 200, 0, 200}, {{5.5, 80.2}, {40.7, 20.3}, {41.2, 20.9}, {110.4, 60.6}});
    strokePolyline(c, 0, tovColor{0, 0, 0, 255}, {{2.2, 3.3}, {117.9, 86.1}});
    strokePolyline(c, 13.7, tovColor{0, 120, 255, 128},
                   {{30.3, 30.3}, {90.6, 25.1}, {70.2, 75.5}, {30.3, 30.3}});
    strokePolyline(c, 2.5, tovColor{90, 0, 90, 255}, {{-50.5, 44.4}, {60.1, 44.9}, {250.3, 47.7}});
}

// Edges that do not close: the coverage left open runs on to the right end
// of each fill's edges, for one fill and for several (one of them a single
// edge far left of most boxes).
void openSoup(tovCanvas *c)
{
    beginFills(c, {solid(c, 0, 200, 200, 180)});
    tovUseBrush(c, 0, 1);
    tovMoveTo(c, 20.4, 60.2), tovLineTo(c, 35.9, 84.7);
    tovMoveTo(c, 80.3, 58.1), tovCurveTo(c, 95.5, 70.2, 70.3, 86.9);
    tovEndShape(c);
    beginFills(c, {solid(c, 120, 0, 200, 200), gradient(c, 3, 0.05, 60, 45)});
    tovUseBrush(c, 0, 1);
    tovMoveTo(c, 8.5, 20.5), tovLineTo(c, 110.2, 18.3), tovLineTo(c, 60.3, 40.6);
    tovUseBrush(c, 2, 1);
    tovLineTo(c, 9.7, 70.1);
    tovUseBrush(c, 0, 1);
    tovLineTo(c, 8.5, 20.5);
    tovEndShape(c);
}

void scene(tovCanvas *c)
{
    curvedRegions(c);
    // A clip mask made of a curved fill and a stroke, then a linear gradient
    // and a stroke drawn through it.
    tovBeginCanvas(c, 2);
    fillCircle(c, solid(c, 0, 0, 0), 60.4, 45.2, 33.3);
    strokePolyline(c, 5.1, tovColor{0, 0, 0, 255}, {{0.5, 5.5}, {119.5, 30.5}});
    tovEndCanvas(c, 2);
    tovBeginCanvas(c, 1);
    tovObject *linear[2] = {nullptr, gradient(c, 2, 0.04, 55, 40)};
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, linear, 2);
    tovUseBrush(c, 0, 1);
    circlePath(c, 55.5, 44.5, 40.2, 9);
    tovEndShape(c);
    strokePolyline(c, 4.2, tovColor{255, 255, 255, 220}, {{10.1, 45.3}, {110.8, 40.2}});
    tovEndCanvas(c, 1);
    tovDestroyMask(c);
    strokes(c);
    openSoup(c);
    // A shape far larger than the buffer.
    fillRect(c, solid(c, 10, 10, 10, 40), -1e6, 80.5, 1e6, 2e6);
}

struct ClipBox {
    int left, top, right, bottom;
};

struct Format {
    int format, bytesPerPixel;
};

class ClipExact : public ::testing::TestWithParam<Format> {};

TEST_P(ClipExact, PixelsInsideAnyClipBoxMatchTheFullDrawingAndNothingOutsideChanges)
{
    const Format f = GetParam();
    Surface full(kWidth, kHeight, f.format, f.bytesPerPixel);
    fillPattern(full, f.bytesPerPixel);
    {
        Canvas c(full);
        scene(c);
    }
    Surface blank(kWidth, kHeight, f.format, f.bytesPerPixel);
    fillPattern(blank, f.bytesPerPixel);

    std::mt19937 rng(20261123);
    auto pick = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    std::vector<ClipBox> boxes = {{0, 0, 1, 1}, {59, 44, 60, 45}, {0, 30, kWidth, 31}, {77, 0, 78, kHeight},
                              {-10, -10, 200, 200}};
    while (boxes.size() < 160) {
        int l = pick(-5, kWidth - 1), t = pick(-5, kHeight - 1);
        boxes.push_back(ClipBox{l, t, pick(l + 1, kWidth + 5), pick(t + 1, kHeight + 5)});
    }
    for (const ClipBox &b : boxes) {
        Surface s(kWidth, kHeight, f.format, f.bytesPerPixel);
        fillPattern(s, f.bytesPerPixel);
        {
            Canvas c(s);
            tovSetClipBox(c, b.left, b.top, b.right, b.bottom);
            scene(c);
        }
        ASSERT_TRUE(s.guardsIntact());
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                bool inside = x >= b.left && x < b.right && y >= b.top && y < b.bottom;
                Surface &want = inside ? full : blank;
                ASSERT_EQ(0, std::memcmp(s.at(x, y), want.at(x, y), size_t(f.bytesPerPixel)))
                    << "pixel " << x << "," << y << " clip " << b.left << "," << b.top << "," << b.right << ","
                    << b.bottom << (inside ? " (inside)" : " (outside)");
            }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, ClipExact, ::testing::Values(Format{280, 4}, Format{24, 3}, Format{16, 2}),
                         [](const ::testing::TestParamInfo<Format> &i) {
                             return "Format" + std::to_string(i.param.format);
                         });

} // namespace
