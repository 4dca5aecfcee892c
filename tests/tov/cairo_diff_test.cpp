// cairo_diff_test.cpp: the same scenes drawn by tov and by cairo (used only
// here, as an independent reference) must agree within stated tolerances.
#include "tov_fixture.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <functional>

using namespace tovtest;

namespace {

constexpr int kSize = 96;

struct Path {
    enum Kind { Move, Line, Quad } kind;
    double cx, cy, x, y;
};

struct Shape {
    std::vector<Path> path;
    tovColor color;
    double strokeWidth; // < 0: filled
    int gradient;       // 0 solid, 2 linear, 3 radial
    double matrix[2][3];
};

std::vector<Path> star(double cx, double cy, double r)
{
    std::vector<Path> p;
    for (int i = 0; i <= 5; ++i) {
        double a = -kPi / 2 + i * 4 * kPi / 5;
        p.push_back({i ? Path::Line : Path::Move, 0, 0, cx + r * std::cos(a), cy + r * std::sin(a)});
    }
    return p;
}

std::vector<Path> square(double x0, double y0, double x1, double y1)
{
    return {{Path::Move, 0, 0, x0, y0}, {Path::Line, 0, 0, x1, y0}, {Path::Line, 0, 0, x1, y1},
            {Path::Line, 0, 0, x0, y1}, {Path::Line, 0, 0, x0, y0}};
}

std::vector<Path> blob(double cx, double cy, double r)
{
    std::vector<Path> p{{Path::Move, 0, 0, cx + r, cy}};
    for (int i = 0; i < 7; ++i) {
        double a0 = (i + 0.5) * 2 * kPi / 7, a1 = (i + 1) * 2 * kPi / 7;
        double k = i % 2 ? 1.5 : 0.7;
        p.push_back({Path::Quad, cx + k * r * std::cos(a0), cy + k * r * std::sin(a0), cx + r * std::cos(a1),
                     cy + r * std::sin(a1)});
    }
    return p;
}

void drawTov(tovCanvas *c, const std::vector<Shape> &shapes)
{
    tovColor white{255, 255, 255, 255};
    tovClear(c, &white);
    for (const Shape &s : shapes) {
        tovObject *obj[2] = {nullptr, nullptr};
        tovBeginShape(c, 1, 2, 0);
        if (s.strokeWidth >= 0) {
            tovPenSpec pen{s.strokeWidth, s.color};
            obj[1] = tovCreatePen(c, &pen);
            tovSetPens(c, obj, 2);
            tovUsePen(c, 1);
        } else {
            tovGradientStop stops[3] = {{0, {255, 0, 0, 255}}, {100, {0, 200, 0, 255}}, {255, {0, 0, 255, 255}}};
            obj[1] = s.gradient ? tovCreateGradientBrush(c, s.gradient, 3, stops, 1, 0, 0, s.matrix, nullptr)
                                : tovCreateSolidBrush(c, s.color, nullptr);
            tovSetBrushes(c, obj, 2);
            tovUseBrush(c, 0, 1);
        }
        for (const Path &p : s.path) {
            if (p.kind == Path::Move)
                tovMoveTo(c, p.x, p.y);
            else if (p.kind == Path::Line)
                tovLineTo(c, p.x, p.y);
            else
                tovCurveTo(c, p.cx, p.cy, p.x, p.y);
        }
        tovEndShape(c);
        tovDeleteObject(c, obj[1]);
    }
}

void drawCairo(cairo_t *cr, const std::vector<Shape> &shapes)
{
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    for (const Shape &s : shapes) {
        double px = 0, py = 0;
        for (const Path &p : s.path) {
            if (p.kind == Path::Move)
                cairo_move_to(cr, p.x, p.y);
            else if (p.kind == Path::Line)
                cairo_line_to(cr, p.x, p.y);
            else
                cairo_curve_to(cr, px + (p.cx - px) * 2 / 3, py + (p.cy - py) * 2 / 3, p.x + (p.cx - p.x) * 2 / 3,
                               p.y + (p.cy - p.y) * 2 / 3, p.x, p.y);
            px = p.x, py = p.y;
        }
        cairo_pattern_t *pattern = nullptr;
        if (s.gradient) {
            pattern = s.gradient == 2 ? cairo_pattern_create_linear(-819.2, 0, 819.2, 0)
                                      : cairo_pattern_create_radial(0, 0, 0, 0, 0, 819.2);
            cairo_pattern_add_color_stop_rgb(pattern, 0, 1, 0, 0);
            cairo_pattern_add_color_stop_rgb(pattern, 100 / 255.0, 0, 200 / 255.0, 0);
            cairo_pattern_add_color_stop_rgb(pattern, 1, 0, 0, 1);
            cairo_matrix_t m;
            cairo_matrix_init(&m, s.matrix[0][0], s.matrix[1][0], s.matrix[0][1], s.matrix[1][1], s.matrix[0][2],
                              s.matrix[1][2]);
            cairo_matrix_invert(&m);
            cairo_pattern_set_matrix(pattern, &m);
            cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
            cairo_set_source(cr, pattern);
        } else {
            cairo_set_source_rgba(cr, s.color.red / 255.0, s.color.green / 255.0, s.color.blue / 255.0,
                                  s.color.alpha / 255.0);
        }
        if (s.strokeWidth >= 0) {
            cairo_set_line_width(cr, s.strokeWidth > 0 ? s.strokeWidth : 1.0);
            cairo_stroke(cr);
        } else {
            cairo_fill(cr);
        }
        if (pattern)
            cairo_pattern_destroy(pattern);
    }
}

struct Difference {
    int worst = 0;
    double mean = 0;
};

Difference compare(const std::vector<Shape> &shapes)
{
    Surface mine(kSize, kSize), theirs(kSize, kSize);
    {
        Canvas c(mine);
        drawTov(c, shapes);
    }
    cairo_surface_t *surface = cairo_image_surface_create_for_data(theirs.row(0), CAIRO_FORMAT_ARGB32, kSize,
                                                                   kSize, kSize * 4);
    cairo_t *cr = cairo_create(surface);
    drawCairo(cr, shapes);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    cairo_surface_destroy(surface);
    Difference d;
    long sum = 0;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            for (int shift = 0; shift < 32; shift += 8) {
                int a = int((mine.argb(x, y) >> shift) & 255), b = int((theirs.argb(x, y) >> shift) & 255);
                int diff = a > b ? a - b : b - a;
                d.worst = std::max(d.worst, diff);
                sum += diff;
            }
    d.mean = double(sum) / (kSize * kSize * 4);
    return d;
}

struct Scene {
    const char *name;
    std::vector<Shape> shapes;
    int worst;   // largest difference of one channel of one pixel
    double mean; // average difference over all channels of all pixels
};

// Tolerances, per channel of a pixel (worst) and averaged over the image
// (mean). Away from edges the two agree to a few levels: gradients differ
// only by cairo interpolating each pixel where tov looks up a 256-entry
// table (half a table step plus rounding). Edge pixels differ more, for
// three reasons: cairo samples coverage on a sub-pixel grid (about 1/15 of
// a pixel vertically) where tov computes exact areas; both cut curves and
// arcs into chords within 0.1 px but at different places, so on a shallow
// edge one pixel's coverage may move by up to a fifth; and where pieces of
// one style overlap inside a pixel (the crossing points of a self-
// intersecting star, a stroke's inner join through its vertex) tov adds
// their areas before clamping to one pixel while cairo counts the covered
// samples. Those pixels are few, so the mean stays well below one level.
TEST(TovVersusCairo, ScenesAgreeWithinTolerance)
{
    const double g = 40 / 819.2;
    const Scene scenes[] = {
        {"polygons",
         {{star(48, 50, 40), {200, 30, 30, 255}, -1, 0, {}},
          {{{Path::Move, 0, 0, 10.3, 60.2}, {Path::Line, 0, 0, 85.7, 70.9}, {Path::Line, 0, 0, 40.1, 93.3},
            {Path::Line, 0, 0, 10.3, 60.2}},
           {20, 20, 160, 150},
           -1,
           0,
           {}}},
         48,
         0.2},
        {"curves", {{blob(48, 48, 35), {10, 90, 200, 255}, -1, 0, {}}}, 48, 0.15},
        {"strokes",
         {{{{Path::Move, 0, 0, 10, 10}, {Path::Line, 0, 0, 80, 20}, {Path::Line, 0, 0, 30, 60},
            {Path::Quad, 60, 95, 88, 70}},
           {0, 0, 0, 255},
           6,
           0,
           {}},
          {{{Path::Move, 0, 0, 5.5, 90.5}, {Path::Line, 0, 0, 90.5, 40.2}}, {0, 120, 0, 200}, 1.5, 0, {}},
          {{{Path::Move, 0, 0, 70, 8}, {Path::Line, 0, 0, 90, 8}, {Path::Line, 0, 0, 90, 30}},
           {150, 0, 150, 255},
           3,
           0,
           {}}},
         48,
         0.35},
        {"linear gradient",
         {{star(48, 48, 46), {0, 0, 0, 255}, -1, 2, {{g, -0.3 * g, 48}, {0.3 * g, g, 48}}}},
         48,
         0.3},
        {"radial gradient",
         {{blob(48, 48, 44), {0, 0, 0, 255}, -1, 3, {{g, 0, 40}, {0, 0.7 * g, 52}}}},
         48,
         0.3},
        {"linear gradient, no edges",
         {{square(-1, -1, 97, 97), {0, 0, 0, 255}, -1, 2, {{g, -0.3 * g, 48}, {0.3 * g, g, 48}}}},
         3,
         0.5},
        {"radial gradient, no edges",
         {{square(-1, -1, 97, 97), {0, 0, 0, 255}, -1, 3, {{g, 0, 40}, {0, 0.7 * g, 52}}}},
         3,
         0.5},
    };
    for (const Scene &scene : scenes) {
        Difference d = compare(scene.shapes);
        EXPECT_LE(d.worst, scene.worst) << scene.name;
        EXPECT_LE(d.mean, scene.mean) << scene.name;
    }
}

} // namespace
