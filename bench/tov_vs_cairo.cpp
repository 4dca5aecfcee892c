// tov_vs_cairo.cpp: draws each benchmark scene into a 1280x720 premultiplied
// ARGB32 buffer with tov and with cairo. Benchmarks are named scene/renderer
// so that run.sh can line the renderers up per scene.
#include "scenes.h"
#include "tov/tov.h"

#include <benchmark/benchmark.h>
#include <cairo.h>

#include <vector>

namespace {

using namespace bench;

void drawTov(tovCanvas *c, const Scene &scene)
{
    tovColor white{255, 255, 255, 255};
    tovClear(c, &white);
    for (const Item &it : scene.items) {
        tovObject *objects[2] = {nullptr, nullptr};
        tovColor color{it.r, it.g, it.b, it.a};
        bool stroke = it.strokeWidth >= 0;
        tovBeginShape(c, 1, 2, 0);
        if (stroke) {
            tovPenSpec pen{it.strokeWidth, color};
            objects[1] = tovCreatePen(c, &pen);
            tovSetBrushes(c, objects, 1);
            tovSetPens(c, objects, 2);
            tovUsePen(c, 1);
        } else {
            if (it.gradient) {
                std::vector<tovGradientStop> stops;
                for (const Stop &s : it.stops)
                    stops.push_back({s.ratio, {s.r, s.g, s.b, s.a}});
                objects[1] = tovCreateGradientBrush(c, it.gradient, int(stops.size()), stops.data(), 1,
                                                    it.matrix[0][2], it.matrix[1][2], it.matrix, nullptr);
            } else {
                objects[1] = tovCreateSolidBrush(c, color, nullptr);
            }
            tovSetBrushes(c, objects, 2);
            tovSetPens(c, objects, 1);
            tovUseBrush(c, 0, 1);
        }
        for (const Command &cmd : it.path) {
            if (cmd.op == Op::Move)
                tovMoveTo(c, cmd.x, cmd.y);
            else if (cmd.op == Op::Line)
                tovLineTo(c, cmd.x, cmd.y);
            else
                tovCurveTo(c, cmd.cx, cmd.cy, cmd.x, cmd.y);
        }
        tovEndShape(c);
        tovDeleteObject(c, objects[1]);
    }
}

void drawCairo(cairo_t *cr, const Scene &scene)
{
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    for (const Item &it : scene.items) {
        double px = 0, py = 0;
        for (const Command &cmd : it.path) {
            if (cmd.op == Op::Move) {
                cairo_move_to(cr, cmd.x, cmd.y);
            } else if (cmd.op == Op::Line) {
                cairo_line_to(cr, cmd.x, cmd.y);
            } else {
                cairo_curve_to(cr, px + 2.0 / 3 * (cmd.cx - px), py + 2.0 / 3 * (cmd.cy - py),
                               cmd.x + 2.0 / 3 * (cmd.cx - cmd.x), cmd.y + 2.0 / 3 * (cmd.cy - cmd.y), cmd.x,
                               cmd.y);
            }
            px = cmd.x, py = cmd.y;
        }
        cairo_pattern_t *pattern = nullptr;
        if (it.gradient) {
            pattern = it.gradient == 2 ? cairo_pattern_create_linear(-819.2, 0, 819.2, 0)
                                       : cairo_pattern_create_radial(0, 0, 0, 0, 0, 819.2);
            for (const Stop &s : it.stops)
                cairo_pattern_add_color_stop_rgba(pattern, s.ratio / 255.0, s.r / 255.0, s.g / 255.0,
                                                  s.b / 255.0, s.a / 255.0);
            cairo_matrix_t m;
            cairo_matrix_init(&m, it.matrix[0][0], it.matrix[1][0], it.matrix[0][1], it.matrix[1][1],
                              it.matrix[0][2], it.matrix[1][2]);
            cairo_matrix_invert(&m);
            cairo_pattern_set_matrix(pattern, &m);
            cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
            cairo_set_source(cr, pattern);
        } else {
            cairo_set_source_rgba(cr, it.r / 255.0, it.g / 255.0, it.b / 255.0, it.a / 255.0);
        }
        if (it.strokeWidth >= 0) {
            cairo_set_line_width(cr, it.strokeWidth > 0 ? it.strokeWidth : 1.0);
            cairo_stroke(cr);
        } else {
            cairo_fill(cr);
        }
        if (pattern)
            cairo_pattern_destroy(pattern);
    }
}

void benchTov(benchmark::State &state, const Scene *scene)
{
    std::vector<uint32_t> pixels(size_t(kWidth) * kHeight);
    tovBuffer buffer{0, 0, kWidth, kHeight, 280, reinterpret_cast<intptr_t>(pixels.data()), kWidth * 4};
    tovCanvas *c = tovCreate(&buffer);
    for (auto _ : state) {
        drawTov(c, *scene);
        benchmark::DoNotOptimize(pixels.data());
        benchmark::ClobberMemory();
    }
    tovDestroy(c);
}

void benchCairo(benchmark::State &state, const Scene *scene)
{
    std::vector<uint32_t> pixels(size_t(kWidth) * kHeight);
    cairo_surface_t *surface = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char *>(pixels.data()), CAIRO_FORMAT_ARGB32, kWidth, kHeight, kWidth * 4);
    cairo_t *cr = cairo_create(surface);
    for (auto _ : state) {
        drawCairo(cr, *scene);
        cairo_surface_flush(surface);
        benchmark::DoNotOptimize(pixels.data());
        benchmark::ClobberMemory();
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
}

} // namespace

int main(int argc, char **argv)
{
    static const Scene scenes[] = {smallShapes(), glyphs(), gradients(), strokes()};
    for (const Scene &s : scenes) {
        benchmark::RegisterBenchmark((std::string(s.name) + "/tov").c_str(), benchTov, &s)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string(s.name) + "/cairo").c_str(), benchCairo, &s)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
