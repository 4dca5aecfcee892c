// draw_agg.cpp: draws a benchmark scene with AGG: a shape with one fill
// through the plain scanline rasterizer, a shape whose fills share edges
// through the compound rasterizer (each edge once, with its two styles, and
// the layered renderer so that shared edges leave no seam), pens through
// conv_stroke with round joins and caps, clip layers as an 8-bit alpha mask.
#include "renderers.h"

#include <agg_alpha_mask_u8.h>
#include <agg_conv_curve.h>
#include <agg_conv_stroke.h>
#include <agg_curves.h>
#include <agg_path_storage.h>
#include <agg_pixfmt_amask_adaptor.h>
#include <agg_pixfmt_gray.h>
#include <agg_pixfmt_rgba.h>
#include <agg_rasterizer_compound_aa.h>
#include <agg_rasterizer_scanline_aa.h>
#include <agg_renderer_base.h>
#include <agg_renderer_scanline.h>
#include <agg_rendering_buffer.h>
#include <agg_scanline_p.h>
#include <agg_scanline_u.h>
#include <agg_span_allocator.h>
#include <agg_span_gradient.h>
#include <agg_span_interpolator_linear.h>
#include <agg_trans_affine.h>

namespace bench {

namespace {

using PixFmt = agg::pixfmt_bgra32_pre; // premultiplied 0xAARRGGBB words on little-endian
using Color = agg::rgba8;
using Mask = agg::amask_no_clip_gray8;
using MaskedPixFmt = agg::pixfmt_amask_adaptor<PixFmt, Mask>;
using Interpolator = agg::span_interpolator_linear<>;
using ColorTable = agg::pod_auto_array<Color, 256>;

Color premultiplied(Rgba c) { return Color(c.r, c.g, c.b, c.a).premultiply(); }

// A fill ready to paint: a colour, or a gradient span generator over a
// 256-entry premultiplied table.
struct Fill {
    bool solid = true;
    int gradient = 0;
    Color color;
    ColorTable table;
    agg::trans_affine inverse;
};

void buildTable(const Paint &p, ColorTable &table)
{
    size_t k = 0;
    for (int i = 0; i < 256; ++i) {
        while (k + 1 < p.stops.size() && p.stops[k + 1].ratio < i)
            ++k;
        const Stop &lo = p.stops[k], &hi = p.stops[k + 1 < p.stops.size() ? k + 1 : k];
        double t = hi.ratio > lo.ratio ? double(i - lo.ratio) / (hi.ratio - lo.ratio) : 0.0;
        t = t < 0 ? 0 : (t > 1 ? 1 : t);
        auto mix = [t](int a, int b) { return agg::int8u(a + (b - a) * t + 0.5); };
        table[unsigned(i)] = Color(mix(lo.color.r, hi.color.r), mix(lo.color.g, hi.color.g),
                                   mix(lo.color.b, hi.color.b), mix(lo.color.a, hi.color.a))
                                 .premultiply();
    }
}

Fill makeFill(const Paint &p)
{
    Fill f;
    f.solid = p.gradient == 0;
    f.gradient = p.gradient;
    f.color = premultiplied(p.color);
    if (!f.solid) {
        buildTable(p, f.table);
        f.inverse = agg::trans_affine(p.matrix[0][0], p.matrix[1][0], p.matrix[0][1], p.matrix[1][1], p.matrix[0][2],
                                      p.matrix[1][2]);
        f.inverse.invert();
    }
    return f;
}

// Fills the span with a gradient's colours.
void gradientSpan(Fill &f, Color *span, int x, int y, unsigned len)
{
    Interpolator interpolator(f.inverse);
    if (f.gradient == 2) {
        agg::gradient_x shape;
        agg::span_gradient<Color, Interpolator, agg::gradient_x, ColorTable> gen(interpolator, shape, f.table, -819.2,
                                                                                 819.2);
        gen.generate(span, x, y, len);
    } else {
        agg::gradient_radial shape;
        agg::span_gradient<Color, Interpolator, agg::gradient_radial, ColorTable> gen(interpolator, shape, f.table, 0,
                                                                                      819.2);
        gen.generate(span, x, y, len);
    }
}

// A span generator for render_scanlines_aa over one gradient fill.
struct GradientGenerator {
    Fill *fill;
    void prepare() {}
    void generate(Color *span, int x, int y, unsigned len) { gradientSpan(*fill, span, x, y, len); }
};

// The compound renderer's view of a shape's fills (AGG styles count from 0).
struct StyleHandler {
    std::vector<Fill> *fills;
    bool is_solid(unsigned style) const { return (*fills)[style].solid; }
    const Color &color(unsigned style) const { return (*fills)[style].color; }
    void generate_span(Color *span, int x, int y, unsigned len, unsigned style)
    {
        gradientSpan((*fills)[style], span, x, y, len);
    }
};

void addPath(agg::path_storage &ps, const std::vector<PathOp> &path)
{
    for (const PathOp &p : path) {
        if (p.op == Op::Move)
            ps.move_to(p.x, p.y);
        else if (p.op == Op::Line)
            ps.line_to(p.x, p.y);
        else
            ps.curve3(p.cx, p.cy, p.x, p.y);
    }
}

} // namespace

struct AggRenderer::State {
    const Scene &scene;
    std::vector<PreparedShape> shapes;
    std::vector<std::vector<Fill>> fills;
    std::vector<bool> compound; // the shape has edges between two fills
    agg::rendering_buffer buffer;
    PixFmt pixfmt;
    agg::renderer_base<PixFmt> base;
    std::vector<agg::int8u> maskBytes;
    agg::rendering_buffer maskBuffer;
    Mask mask;
    agg::pixfmt_gray8 maskPixfmt;
    agg::renderer_base<agg::pixfmt_gray8> maskBase;
    MaskedPixFmt maskedPixfmt;
    agg::renderer_base<MaskedPixFmt> maskedBase;
    agg::rasterizer_scanline_aa<> ras;
    agg::rasterizer_compound_aa<agg::rasterizer_sl_clip_dbl> compoundRas;
    agg::scanline_p8 packed;
    agg::scanline_u8 unpacked;
    agg::span_allocator<Color> spans;
    agg::path_storage path;

    State(const Scene &s, uint32_t *pixels)
        : scene(s), shapes(prepare(s)),
          buffer(reinterpret_cast<agg::int8u *>(pixels), unsigned(s.width), unsigned(s.height), s.width * 4),
          pixfmt(buffer), base(pixfmt), maskBytes(size_t(s.width) * size_t(s.height)),
          maskBuffer(maskBytes.data(), unsigned(s.width), unsigned(s.height), s.width), mask(maskBuffer),
          maskPixfmt(maskBuffer), maskBase(maskPixfmt), maskedPixfmt(pixfmt, mask), maskedBase(maskedPixfmt)
    {
    }

    template <class Base>
    void fillSolidOrGradient(Base &rb, Fill &f)
    {
        if (f.solid) {
            agg::render_scanlines_aa_solid(ras, packed, rb, f.color);
        } else {
            GradientGenerator gen{&f};
            agg::render_scanlines_aa(ras, unpacked, rb, spans, gen);
        }
    }

    template <class Base>
    void drawShape(Base &rb, size_t index)
    {
        const Shape &shape = scene.shapes[index];
        const PreparedShape &prepared = shapes[index];
        std::vector<Fill> &shapeFills = fills[index];
        if (compound[index]) {
            compoundRas.reset();
            double x = 0, y = 0;
            for (const Command &c : shape.commands) {
                if (c.op == Op::Style) {
                    compoundRas.styles(c.fill0 - 1, c.fill1 - 1);
                } else if (c.op == Op::Move) {
                    compoundRas.move_to_d(c.x, c.y);
                } else if (c.op == Op::Line) {
                    compoundRas.line_to_d(c.x, c.y);
                } else {
                    agg::curve3 curve(x, y, c.cx, c.cy, c.x, c.y);
                    double px, py;
                    curve.rewind(0);
                    curve.vertex(&px, &py);
                    while (!agg::is_stop(curve.vertex(&px, &py)))
                        compoundRas.line_to_d(px, py);
                }
                if (c.op != Op::Style)
                    x = c.x, y = c.y;
            }
            StyleHandler handler{&shapeFills};
            agg::render_scanlines_compound_layered(compoundRas, unpacked, rb, spans, handler);
        } else {
            for (size_t f = 0; f < prepared.fills.size(); ++f) {
                path.remove_all();
                addPath(path, prepared.fills[f]);
                agg::conv_curve<agg::path_storage> curves(path);
                ras.reset();
                ras.add_path(curves);
                fillSolidOrGradient(rb, shapeFills[f]);
            }
        }
        for (size_t p = 0; p < prepared.pens.size(); ++p) {
            const Pen &pen = shape.pens[p];
            path.remove_all();
            addPath(path, prepared.pens[p]);
            agg::conv_curve<agg::path_storage> curves(path);
            agg::conv_stroke<agg::conv_curve<agg::path_storage>> stroke(curves);
            stroke.width(pen.width > 0 ? pen.width : 1.0);
            stroke.line_join(agg::round_join);
            stroke.line_cap(agg::round_cap);
            ras.reset();
            ras.add_path(stroke);
            agg::render_scanlines_aa_solid(ras, packed, rb, premultiplied(pen.color));
        }
    }

    // Renders a clip layer's coverage (all fills together) into the mask.
    void drawMask(size_t index)
    {
        maskBase.clear(agg::gray8(0));
        ras.reset();
        for (const auto &fillPath : shapes[index].fills) {
            path.remove_all();
            addPath(path, fillPath);
            agg::conv_curve<agg::path_storage> curves(path);
            ras.add_path(curves);
        }
        agg::render_scanlines_aa_solid(ras, packed, maskBase, agg::gray8(255));
    }
};

AggRenderer::AggRenderer(const Scene &scene, uint32_t *pixels) : s_(new State(scene, pixels))
{
    for (const Shape &shape : scene.shapes) {
        s_->fills.emplace_back();
        for (const Paint &p : shape.fills)
            s_->fills.back().push_back(makeFill(p));
        bool shared = false;
        for (const Command &c : shape.commands)
            shared = shared || (c.op == Op::Style && c.fill0 != 0 && c.fill1 != 0 && c.fill0 != c.fill1);
        s_->compound.push_back(shared);
    }
}

AggRenderer::~AggRenderer() = default;

void AggRenderer::draw()
{
    s_->base.clear(Color(255, 255, 255, 255));
    int masked = 0;
    for (size_t i = 0; i < s_->scene.shapes.size(); ++i) {
        const Shape &shape = s_->scene.shapes[i];
        if (shape.clips > 0) {
            s_->drawMask(i);
            masked = shape.clips;
            continue;
        }
        if (masked > 0) {
            s_->drawShape(s_->maskedBase, i);
            --masked;
        } else {
            s_->drawShape(s_->base, i);
        }
    }
}

} // namespace bench
