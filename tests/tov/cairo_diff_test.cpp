// cairo_diff_test.cpp: tov against an independent rasterizer. The same
// paths (a self-crossing star, curves, strokes with joins and caps,
// gradients) drawn by tov and by cairo over white must agree within the
// stated tolerances.
#include "tov_fixture.h"

#include <cairo.h>
#include <gtest/gtest.h>

using namespace tovtest;

namespace {

constexpr int kSize = 96;

struct Op {
    char kind; // 'M' move, 'L' line, 'Q' quadratic curve
    double cx, cy, x, y;
};

struct Item {
    std::vector<Op> path;
    tovColor color;
    double width;  // < 0: filled
    int gradient;  // 0 solid, 2 linear, 3 radial
    double m[2][3];
};

std::vector<Op> star(double cx, double cy, double r)
{
    std::vector<Op> p;
    for (int i = 0; i <= 5; ++i)
        p.push_back({i ? 'L' : 'M', 0, 0, cx + r * std::cos(-kPi / 2 + i * 4 * kPi / 5),
                     cy + r * std::sin(-kPi / 2 + i * 4 * kPi / 5)});
    return p;
}

std::vector<Op> blob(double cx, double cy, double r)
{
    std::vector<Op> p{{'M', 0, 0, cx + r, cy}};
    for (int i = 0; i < 7; ++i) {
        double a0 = (i + 0.5) * 2 * kPi / 7, a1 = (i + 1) * 2 * kPi / 7, k = i % 2 ? 1.5 : 0.7;
        p.push_back({'Q', cx + k * r * std::cos(a0), cy + k * r * std::sin(a0), cx + r * std::cos(a1), cy + r * std::sin(a1)});
    }
    return p;
}

const tovGradientStop kStops[3] = {{0, {255, 0, 0, 255}}, {100, {0, 200, 0, 255}}, {255, {0, 0, 255, 255}}};

void drawTov(tovCanvas *c, const Item &it)
{
    tovObject *obj[2] = {nullptr, nullptr};
    tovBeginShape(c, 1, 2, 0);
    if (it.width >= 0) {
        tovPenSpec pen{it.width, it.color};
        obj[1] = tovCreatePen(c, &pen);
        tovSetPens(c, obj, 2), tovUsePen(c, 1);
    } else {
        obj[1] = it.gradient ? tovCreateGradientBrush(c, it.gradient, 3, kStops, 1, 0, 0, it.m, nullptr)
                             : tovCreateSolidBrush(c, it.color, nullptr);
        tovSetBrushes(c, obj, 2), tovUseBrush(c, 0, 1);
    }
    for (const Op &o : it.path)
        o.kind == 'M' ? tovMoveTo(c, o.x, o.y) : o.kind == 'L' ? tovLineTo(c, o.x, o.y) : tovCurveTo(c, o.cx, o.cy, o.x, o.y);
    tovEndShape(c);
}

void drawCairo(cairo_t *cr, const Item &it)
{
    double px = 0, py = 0;
    for (const Op &o : it.path) {
        if (o.kind == 'M')
            cairo_move_to(cr, o.x, o.y);
        else if (o.kind == 'L')
            cairo_line_to(cr, o.x, o.y);
        else
            cairo_curve_to(cr, px + (o.cx - px) * 2 / 3, py + (o.cy - py) * 2 / 3, o.x + (o.cx - o.x) * 2 / 3,
                           o.y + (o.cy - o.y) * 2 / 3, o.x, o.y);
        px = o.x, py = o.y;
    }
    cairo_pattern_t *pattern = nullptr;
    if (it.gradient) {
        pattern = it.gradient == 2 ? cairo_pattern_create_linear(-819.2, 0, 819.2, 0)
                                   : cairo_pattern_create_radial(0, 0, 0, 0, 0, 819.2);
        for (const tovGradientStop &s : kStops)
            cairo_pattern_add_color_stop_rgb(pattern, s.ratio / 255.0, s.color.red / 255.0, s.color.green / 255.0,
                                             s.color.blue / 255.0);
        cairo_matrix_t m;
        cairo_matrix_init(&m, it.m[0][0], it.m[1][0], it.m[0][1], it.m[1][1], it.m[0][2], it.m[1][2]);
        cairo_matrix_invert(&m);
        cairo_pattern_set_matrix(pattern, &m);
        cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
        cairo_set_source(cr, pattern);
    } else {
        cairo_set_source_rgba(cr, it.color.red / 255.0, it.color.green / 255.0, it.color.blue / 255.0, it.color.alpha / 255.0);
    }
    if (it.width >= 0) {
        cairo_set_line_width(cr, it.width > 0 ? it.width : 1.0);
        cairo_stroke(cr);
    } else {
        cairo_fill(cr);
    }
    if (pattern)
        cairo_pattern_destroy(pattern);
}

// Away from edges the two agree to a few levels (gradients: cairo
// interpolates each pixel where tov looks up a 256-entry table). Edge pixels
// differ more: cairo samples coverage on a grid of about 1/15 pixel where
// tov computes exact areas, both cut curves and arcs into chords within 0.1
// pixel at different places, and where pieces of one style overlap inside a
// pixel (the crossings of the star, inner joins) tov adds their areas before
// clamping. Those pixels are few: the mean over pixels of their largest
// channel difference stays well below one level.
TEST(TovVersusCairo, ScenesAgreeWithinTolerance)
{
    const double g = 40 / 819.2;
    const struct {
        const char *name;
        std::vector<Item> items;
        int worst;
        double mean;
    } scenes[] = {
        {"star and triangle", {{star(48, 50, 40), {200, 30, 30, 255}, -1, 0, {}},
                               {{{'M', 0, 0, 10.3, 60.2}, {'L', 0, 0, 85.7, 70.9}, {'L', 0, 0, 40.1, 93.3}, {'L', 0, 0, 10.3, 60.2}},
                                {20, 20, 160, 150}, -1, 0, {}}}, 48, 0.3},
        {"curves", {{blob(48, 48, 35), {10, 90, 200, 255}, -1, 0, {}}}, 48, 0.3},
        {"strokes", {{{{'M', 0, 0, 10, 10}, {'L', 0, 0, 80, 20}, {'L', 0, 0, 30, 60}, {'Q', 60, 95, 88, 70}}, {0, 0, 0, 255}, 6, 0, {}},
                     {{{'M', 0, 0, 5.5, 90.5}, {'L', 0, 0, 90.5, 40.2}}, {0, 120, 0, 200}, 1.5, 0, {}},
                     {{{'M', 0, 0, 70, 8}, {'L', 0, 0, 90, 8}, {'L', 0, 0, 90, 30}}, {150, 0, 150, 255}, 3, 0, {}}}, 48, 0.45},
        {"gradients", {{star(48, 48, 46), {}, -1, 2, {{g, -0.3 * g, 48}, {0.3 * g, g, 48}}},
                       {blob(48, 48, 30), {}, -1, 3, {{g, 0, 40}, {0, 0.7 * g, 52}}}}, 48, 0.45},
    };
    for (const auto &scene : scenes) {
        Surface mine(kSize, kSize), theirs(kSize, kSize);
        {
            Canvas c(mine);
            tovColor white{255, 255, 255, 255};
            tovClear(c, &white);
            for (const Item &it : scene.items)
                drawTov(c, it);
        }
        cairo_surface_t *surface = cairo_image_surface_create_for_data(theirs.row(0), CAIRO_FORMAT_ARGB32, kSize, kSize, kSize * 4);
        cairo_t *cr = cairo_create(surface);
        cairo_set_source_rgb(cr, 1, 1, 1);
        cairo_paint(cr);
        cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
        cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
        for (const Item &it : scene.items)
            drawCairo(cr, it);
        cairo_destroy(cr);
        cairo_surface_destroy(surface);
        int worst = 0;
        double sum = 0;
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                int d = channelDifference(mine.argb(x, y), theirs.argb(x, y));
                worst = std::max(worst, d);
                sum += d;
            }
        EXPECT_LE(worst, scene.worst) << scene.name;
        EXPECT_LE(sum / (kSize * kSize), scene.mean) << scene.name;
    }
}

} // namespace
