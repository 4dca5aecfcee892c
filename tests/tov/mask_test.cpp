// mask_test.cpp: clip masks. What is drawn inside a kind-2 group (colours
// ignored, fills and strokes alike) becomes an anti-aliased mask that cuts
// all later drawing, of every kind and format; masks nest by intersection,
// are made over the clip box they start in, pop in order, and tovClear
// ignores them. Each case sets masks up and then paints everything red.
#include "tov_fixture.h"

#include <gtest/gtest.h>

#include <functional>

using namespace tovtest;

namespace {

void maskRect(tovCanvas *c, double x0, double y0, double x1, double y1, uint8_t alpha = 255)
{
    tovBeginCanvas(c, 2);
    fillRect(c, solid(c, 10, 20, 30, alpha), x0, y0, x1, y1);
    tovEndCanvas(c, 2);
}

struct Probe {
    int x, y;
    unsigned alpha;
};

struct Case {
    const char *name;
    std::function<void(tovCanvas *)> masks;
    std::vector<Probe> probes;
};

TEST(TovMask, DrawingIsCutToTheMasks)
{
    const Case cases[] = {
        {"rectangle", [](tovCanvas *c) { maskRect(c, 10, 12, 25, 30); },
         {{10, 12, 255}, {24, 29, 255}, {9, 12, 0}, {25, 20, 0}, {15, 11, 0}, {15, 30, 0}}},
        {"anti-aliased edge", [](tovCanvas *c) { maskRect(c, 10.5, 10, 20, 20); }, {{10, 15, 128}, {11, 15, 255}}},
        {"colour and alpha of the mask shape do not matter", [](tovCanvas *c) { maskRect(c, 10, 10, 20, 20, 0); },
         {{15, 15, 255}, {25, 15, 0}}},
        {"a circle", [](tovCanvas *c) {
             tovBeginCanvas(c, 2);
             fillCircle(c, solid(c, 0, 0, 0), 20, 20, 10);
             tovEndCanvas(c, 2);
         },
         {{20, 20, 255}, {20, 11, 255}, {20, 8, 0}, {28, 28, 0}}},
        {"nested masks intersect", [](tovCanvas *c) { maskRect(c, 0, 0, 20, 40), maskRect(c, 10, 0, 30, 40); },
         {{5, 5, 0}, {15, 5, 255}, {25, 5, 0}}},
        {"the last mask pops first", [](tovCanvas *c) {
             maskRect(c, 0, 0, 20, 40), maskRect(c, 10, 0, 30, 40);
             tovDestroyMask(c);
         },
         {{5, 5, 255}, {15, 5, 255}, {25, 5, 0}}},
        {"twenty-nine nested masks", [](tovCanvas *c) {
             for (int i = 0; i < 29; ++i)
                 maskRect(c, i / 2.0, 0, 40 - i / 2.0, 40);
         },
         {{13, 5, 0}, {14, 5, 255}, {25, 5, 255}, {26, 5, 0}}},
        {"groups nested in a mask group all count", [](tovCanvas *c) {
             tovBeginCanvas(c, 2);
             for (double at : {0.0, 30.0}) {
                 tovBeginCanvas(c, 1);
                 fillRect(c, solid(c, 0, 0, 0), at, at, at + 10, at + 10);
                 tovEndCanvas(c, 1);
             }
             tovEndCanvas(c, 2);
         },
         {{5, 5, 255}, {35, 35, 255}, {20, 20, 0}}},
        {"a mask inside a mask group cuts what it collects", [](tovCanvas *c) {
             tovBeginCanvas(c, 2);
             maskRect(c, 0, 0, 20, 40);
             fillRect(c, solid(c, 0, 0, 0), 10, 0, 30, 40);
             tovDestroyMask(c);
             tovEndCanvas(c, 2);
         },
         {{5, 5, 0}, {15, 5, 255}, {25, 5, 0}}},
        {"a mask covers only the clip box it was made in", [](tovCanvas *c) {
             tovSetClipBox(c, 0, 0, 20, 40);
             maskRect(c, 0, 0, 40, 40);
             tovSetClipBox(c, 0, 0, 40, 40);
         },
         {{15, 5, 255}, {25, 5, 0}}},
        {"strokes and fills of a mask shape both count", [](tovCanvas *c) {
             tovBeginCanvas(c, 2);
             strokePolyline(c, 4, tovColor{0, 0, 0, 255}, {{0, 30}, {40, 30}});
             fillRect(c, solid(c, 0, 0, 0), 0, 0, 10, 10);
             tovEndCanvas(c, 2);
         },
         {{20, 30, 255}, {5, 5, 255}, {20, 20, 0}}},
        {"an empty mask hides everything", [](tovCanvas *c) { maskRect(c, 50, 50, 60, 60); }, {{5, 5, 0}}},
    };
    for (const Case &k : cases) {
        Surface s(40, 40);
        Canvas c(s);
        k.masks(c);
        EXPECT_EQ(coveredArea(s), 0.0) << k.name; // masks themselves paint nothing
        tovBeginCanvas(c, 1);
        fillRect(c, solid(c, 255, 0, 0), -5, -5, 100, 100);
        tovEndCanvas(c, 1);
        for (const Probe &p : k.probes)
            EXPECT_NEAR(int(s.alpha(p.x, p.y)), int(p.alpha), 1) << k.name << " at " << p.x << "," << p.y;
    }
}

TEST(TovMask, EveryWayOfPaintingIsMasked)
{
    // One colour, fills of several styles meeting, gradients and strokes, in
    // the native format and in one converted per row.
    for (int format : {280, 16}) {
        Surface s(40, 40, format, format == 280 ? 4 : 2);
        Canvas c(s);
        maskRect(c, 0, 0, 20, 40);
        tovGradientStop stops[2] = {{0, {255, 255, 255, 255}}, {255, {255, 255, 255, 255}}};
        double m[2][3] = {{0.05, 0, 20}, {0, 0.05, 20}};
        tovObject *gradient = tovCreateGradientBrush(c, 2, 2, stops, 1, 20, 20, m, nullptr);
        beginFills(c, {solid(c, 255, 255, 255), gradient});
        tovUseBrush(c, 0, 1);
        polygonPath(c, {{0, 0}, {20, 0}, {20, 20}, {0, 20}});
        tovUseBrush(c, 0, 2);
        polygonPath(c, {{20, 0}, {40, 0}, {40, 20}, {20, 20}});
        tovEndShape(c);
        fillRect(c, gradient, 0, 20, 40, 30);
        strokePolyline(c, 6, tovColor{255, 255, 255, 255}, {{0, 35}, {40, 35}});
        for (int y : {10, 25, 35}) {
            EXPECT_NE(s.at(10, y)[0], 0) << format << " row " << y;
            EXPECT_EQ(s.at(30, y)[0], 0) << format << " row " << y;
        }
        tovColor grey{100, 100, 100, 255};
        tovClear(c, &grey); // ignores the mask
        EXPECT_EQ(s.at(30, 10)[0], format == 280 ? 100 : 0x2c);
    }
}

} // namespace
