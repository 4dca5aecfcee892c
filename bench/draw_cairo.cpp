// draw_cairo.cpp: draws a benchmark scene with cairo: each fill of a shape
// as its own closed path, pens as round-capped, round-joined strokes, clip
// layers as cairo clips.
#include "renderers.h"

#include <cairo.h>

namespace bench {

namespace {

void addPath(cairo_t *cr, const std::vector<PathOp> &path)
{
    double px = 0, py = 0;
    for (const PathOp &p : path) {
        if (p.op == Op::Move)
            cairo_move_to(cr, p.x, p.y);
        else if (p.op == Op::Line)
            cairo_line_to(cr, p.x, p.y);
        else
            cairo_curve_to(cr, px + 2.0 / 3 * (p.cx - px), py + 2.0 / 3 * (p.cy - py), p.x + 2.0 / 3 * (p.cx - p.x),
                           p.y + 2.0 / 3 * (p.cy - p.y), p.x, p.y);
        px = p.x, py = p.y;
    }
}

cairo_pattern_t *makePattern(const Paint &p)
{
    if (!p.gradient)
        return cairo_pattern_create_rgba(p.color.r / 255.0, p.color.g / 255.0, p.color.b / 255.0, p.color.a / 255.0);
    cairo_pattern_t *pattern = p.gradient == 2 ? cairo_pattern_create_linear(-819.2, 0, 819.2, 0)
                                               : cairo_pattern_create_radial(0, 0, 0, 0, 0, 819.2);
    for (const Stop &s : p.stops)
        cairo_pattern_add_color_stop_rgba(pattern, s.ratio / 255.0, s.color.r / 255.0, s.color.g / 255.0,
                                          s.color.b / 255.0, s.color.a / 255.0);
    cairo_matrix_t m;
    cairo_matrix_init(&m, p.matrix[0][0], p.matrix[1][0], p.matrix[0][1], p.matrix[1][1], p.matrix[0][2],
                      p.matrix[1][2]);
    cairo_matrix_invert(&m);
    cairo_pattern_set_matrix(pattern, &m);
    cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
    return pattern;
}

} // namespace

struct CairoRenderer::State {
    const Scene &scene;
    std::vector<PreparedShape> shapes;
    std::vector<std::vector<cairo_pattern_t *>> patterns;
    cairo_surface_t *surface;
    cairo_t *cr;
};

CairoRenderer::CairoRenderer(const Scene &scene, uint32_t *pixels)
    : s_(new State{scene, prepare(scene), {}, nullptr, nullptr})
{
    for (const Shape &shape : scene.shapes) {
        s_->patterns.emplace_back();
        for (const Paint &p : shape.fills)
            s_->patterns.back().push_back(makePattern(p));
    }
    s_->surface = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char *>(pixels), CAIRO_FORMAT_ARGB32,
                                                      scene.width, scene.height, scene.width * 4);
    s_->cr = cairo_create(s_->surface);
}

CairoRenderer::~CairoRenderer()
{
    for (auto &list : s_->patterns)
        for (cairo_pattern_t *p : list)
            cairo_pattern_destroy(p);
    cairo_destroy(s_->cr);
    cairo_surface_destroy(s_->surface);
}

void CairoRenderer::draw()
{
    cairo_t *cr = s_->cr;
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
    int masked = 0;
    for (size_t i = 0; i < s_->shapes.size(); ++i) {
        const Shape &shape = s_->scene.shapes[i];
        const PreparedShape &prepared = s_->shapes[i];
        if (shape.clips > 0) {
            cairo_save(cr);
            for (const auto &path : prepared.fills)
                addPath(cr, path);
            cairo_clip(cr);
            masked = shape.clips;
            continue;
        }
        for (size_t f = 0; f < prepared.fills.size(); ++f) {
            addPath(cr, prepared.fills[f]);
            cairo_set_source(cr, s_->patterns[i][f]);
            cairo_fill(cr);
        }
        for (size_t p = 0; p < prepared.pens.size(); ++p) {
            const Pen &pen = shape.pens[p];
            addPath(cr, prepared.pens[p]);
            cairo_set_source_rgba(cr, pen.color.r / 255.0, pen.color.g / 255.0, pen.color.b / 255.0,
                                  pen.color.a / 255.0);
            cairo_set_line_width(cr, pen.width > 0 ? pen.width : 1.0);
            cairo_stroke(cr);
        }
        if (masked > 0 && --masked == 0)
            cairo_restore(cr);
    }
    cairo_surface_flush(s_->surface);
}

} // namespace bench
