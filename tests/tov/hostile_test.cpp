// hostile_test.cpp: nonsense input is harmless. NaN, infinite and huge
// coordinates, degenerate curves, out-of-range indices, thousands of styles,
// unbalanced group and mask calls, bad pens and gradients, an empty clip:
// no crash, no hang, no write outside the buffer, and sane drawing carries
// on afterwards.
#include "tov_fixture.h"

#include <gtest/gtest.h>

#include <limits>

using namespace tovtest;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

// Each case draws nonsense, then a red square over (10, 10)-(30, 30) that
// must come out whole.
TEST(TovHostile, NonsenseDrawsNothingAndLeavesTheCanvasWorking)
{
    const struct {
        const char *name;
        void (*draw)(tovCanvas *, Surface &);
    } cases[] = {
        {"non-finite coordinates", [](tovCanvas *c, Surface &s) {
             tovPenSpec p{3, {0, 0, 255, 255}};
             tovObject *pens[2] = {nullptr, tovCreatePen(c, &p)};
             beginFills(c, {solid(c, 0, 0, 255)});
             tovSetPens(c, pens, 2);
             tovUseBrush(c, 0, 1), tovUsePen(c, 1);
             tovMoveTo(c, kNaN, 5), tovLineTo(c, 10, kNaN), tovCurveTo(c, kNaN, kNaN, 5, 5);
             tovLineTo(c, kInf, -kInf), tovCurveTo(c, -kInf, kInf, 1e300, -1e300);
             tovLineTo(c, kNaN, 1), tovMoveTo(c, 10, 10); // the path goes on after a bad point
             tovLineTo(c, 40, 10), tovLineTo(c, 40, 30), tovLineTo(c, 10, 30), tovLineTo(c, 10, 10);
             tovEndShape(c);
             EXPECT_EQ(s.argb(35, 20), 0xff0000ffu);
         }},
        {"degenerate curves and edges", [](tovCanvas *c, Surface &) {
             beginFills(c, {solid(c, 0, 0, 255)});
             tovUseBrush(c, 0, 1);
             tovMoveTo(c, 5, 5), tovCurveTo(c, 5, 5, 5, 5), tovLineTo(c, 5, 5);
             tovCurveTo(c, 15, 15, 5, 5), tovLineTo(c, 1e-300, 1e-300);
             tovEndShape(c);
         }},
        {"out-of-range style indices", [](tovCanvas *c, Surface &) {
             beginFills(c, {nullptr, solid(c, 0, 0, 255)});
             tovObject *pens[1] = {nullptr};
             tovSetPens(c, pens, 1);
             for (int bad : {-1, 1, 3, 1 << 30, -(1 << 30), std::numeric_limits<int>::min()}) {
                 tovUseBrush(c, bad, bad == 1 ? 0 : bad), tovUsePen(c, bad);
                 polygonPath(c, {{2, 2}, {38, 2}, {38, 38}, {2, 38}});
             }
             tovEndShape(c);
             tovSetBrushes(c, nullptr, 5), tovSetPens(c, pens, -4);
             tovEndShape(c);
         }},
        {"unbalanced groups and masks", [](tovCanvas *c, Surface &) {
             tovDestroyMask(c), tovEndCanvas(c, 2), tovEndCanvas(c, 1);
             for (int i = 0; i < 400; ++i) {
                 tovBeginCanvas(c, i % 3 == 1 ? 1 : 2);
                 fillRect(c, solid(c, 0, 0, 255), i % 40, 0, 40, 40);
             }
             for (int i = 0; i < 450; ++i)
                 tovEndCanvas(c, 2), tovDestroyMask(c);
             tovBeginCanvas(c, 7), tovEndCanvas(c, -3), tovEndShape(c);
         }},
        {"bad pens and gradients", [](tovCanvas *c, Surface &) {
             tovSetClipBox(c, 40, 0, 50, 40);
             for (double w : {kNaN, -kInf, kInf, -5.0, 1e300}) {
                 tovPenSpec p{w, {0, 0, 255, 255}};
                 strokePolyline(c, w, p.color, {{50, 5}, {50, 35}});
             }
             std::vector<tovGradientStop> stops(400);
             for (size_t i = 0; i < stops.size(); ++i)
                 stops[i] = {uint32_t(1000 - i * 7), {uint8_t(i), 0, 0, 255}};
             double nan[2][3] = {{kNaN, 0, 0}, {0, 1, 0}}, tiny[2][3] = {{1e-300, 0, 0}, {0, 1e-300, 0}};
             double ok[2][3] = {{0.01, 0, 15}, {0, 0.01, 15}};
             tovObject *brushes[] = {tovCreateGradientBrush(c, 2, 400, stops.data(), 1, 0, 0, ok, nullptr),
                                     tovCreateGradientBrush(c, 3, -1, stops.data(), 1, 0, 0, ok, nullptr),
                                     tovCreateGradientBrush(c, 2, 2, nullptr, 1, 0, 0, ok, nullptr),
                                     tovCreateGradientBrush(c, 9, 2, stops.data(), 1, 0, 0, ok, nullptr),
                                     tovCreateGradientBrush(c, 3, 2, stops.data(), 1, 0, 0, nan, nullptr),
                                     tovCreateGradientBrush(c, 3, 2, stops.data(), 1, 0, 0, tiny, nullptr),
                                     tovCreateGradientBrush(c, 2, 2, stops.data(), 1, 0, 0, nullptr, nullptr),
                                     tovCreateBmpBrush(c, 4, nullptr, 0, 0, nullptr, nullptr)};
             fillRect(c, brushes[0], 45, 0, 50, 40);
             tovSetClipBox(c, 0, 0, 50, 40);
             for (size_t i = 1; i < std::size(brushes); ++i) // none of these can paint
                 fillRect(c, brushes[i], 0, 0, 50, 40);
             tovDeleteObject(c, brushes[0]);
             tovDeleteObject(c, brushes[0]); // twice: ignored
             EXPECT_NE(tovCreatePen(c, nullptr), nullptr);
             tovSetClipBox(c, 0, 0, 50, 40);
         }},
        {"more masks than can be open hide drawing until dropped", [](tovCanvas *c, Surface &) {
             for (int i = 0; i < 200; ++i) {
                 tovBeginCanvas(c, 2);
                 fillRect(c, solid(c, 0, 0, 0), 0, 0, 50, 40);
                 tovEndCanvas(c, 2);
             }
             fillRect(c, solid(c, 0, 0, 255), 0, 0, 50, 40);
             for (int i = 0; i < 200; ++i)
                 tovDestroyMask(c);
         }},
        {"huge shapes and pens", [](tovCanvas *c, Surface &) {
             tovSetClipBox(c, 40, 0, 50, 40);
             for (double big : {1e6, 4e6, 1e9, 1e300}) {
                 fillRect(c, solid(c, 0, 0, 255), -big, -big, big, big);
                 fillCircle(c, solid(c, 0, 0, 255), 0, 0, big);
                 strokePolyline(c, big / 10, tovColor{0, 0, 255, 255}, {{-big, 3}, {big, 7}, {0, big}});
             }
             beginFills(c, {solid(c, 0, 0, 255)});
             tovUseBrush(c, 0, 1);
             tovMoveTo(c, 0, 0), tovCurveTo(c, 1e8, -1e8, 40, 40), tovLineTo(c, 0, 40), tovLineTo(c, 0, 0);
             tovEndShape(c);
             tovSetClipBox(c, 0, 0, 50, 40);
         }},
    };
    for (const auto &k : cases) {
        Surface s(50, 40);
        Canvas c(s);
        k.draw(c, s);
        fillRect(c, solid(c, 255, 0, 0), 10, 10, 30, 30);
        EXPECT_TRUE(s.guardsIntact()) << k.name;
        EXPECT_EQ(s.argb(10, 10), 0xffff0000u) << k.name;
        EXPECT_EQ(s.argb(29, 29), 0xffff0000u) << k.name;
        EXPECT_EQ(s.alpha(5, 20), 0u) << k.name;
    }
}

TEST(TovHostile, ThousandsOfStylesInOnePathSetEachPaintTheirOwnPixel)
{
    constexpr int kStyles = 10000;
    Surface s(100, 100);
    Canvas c(s);
    std::vector<tovObject *> brushes;
    for (int i = 1; i <= kStyles; ++i)
        brushes.push_back(solid(c, uint8_t(i), 0, 0));
    beginFills(c, brushes);
    for (int i = 1; i <= kStyles; ++i) {
        double x = (i - 1) % 100, y = (i - 1) / 100;
        tovUseBrush(c, 0, i);
        polygonPath(c, {{x, y}, {x + 1, y}, {x + 1, y + 1}, {x, y + 1}});
    }
    tovEndShape(c);
    EXPECT_EQ(s.argb(0, 0), 0xff010000u);
    EXPECT_EQ(s.argb(37, 42), 0xff000000u | (uint32_t(42 * 100 + 37 + 1) % 256) << 16);
    EXPECT_EQ(s.argb(99, 99), 0xff000000u | (uint32_t(kStyles % 256) << 16));
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
