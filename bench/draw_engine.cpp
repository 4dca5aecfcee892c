// draw_engine.cpp: the engine's row of the benchmark. A scene becomes a movie
// written with the fixture builder (one DefineShape3 per shape in twips,
// placed at increasing depths, clip layers through clip depths) and every
// draw() is a full repaint by zelEnginePlay.
#include "renderers.h"

#include "fixture/SwfBuilder.h"
#include "zelengine.h"

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

int32_t twips(double v) { return int32_t(std::lround(v * 20)); }

swf::Rgba toSwf(Rgba c) { return swf::Rgba{c.r, c.g, c.b, c.a}; }

swf::Fill toSwf(const Paint &p)
{
    if (!p.gradient)
        return swf::Fill::Solid(toSwf(p.color));
    // The gradient square is 32768 twips or 1638.4 pixels wide, so the
    // matrix keeps its linear part and only its translation turns to twips.
    swf::Matrix m = swf::Matrix::Scale(p.matrix[0][0], p.matrix[1][1], twips(p.matrix[0][2]), twips(p.matrix[1][2]));
    m.rotate = std::make_pair(p.matrix[1][0], p.matrix[0][1]);
    std::vector<swf::GradStop> stops;
    for (const Stop &s : p.stops)
        stops.push_back({s.ratio, toSwf(s.color)});
    return p.gradient == 2 ? swf::Fill::Linear(m, stops) : swf::Fill::Radial(m, stops);
}

swf::Bytes defineShape(uint16_t id, const Shape &shape)
{
    std::vector<swf::Fill> fills;
    for (const Paint &p : shape.fills)
        fills.push_back(toSwf(p));
    std::vector<swf::Line> lines;
    double reach = 0;
    for (const Pen &p : shape.pens) {
        lines.push_back(swf::Line{uint16_t(std::lround(p.width * 20)), toSwf(p.color)});
        reach = std::max(reach, p.width / 2 + 1);
    }
    swf::Shape s(fills, lines);
    double x0 = 1e9, y0 = 1e9, x1 = -1e9, y1 = -1e9;
    auto widen = [&](double x, double y) {
        x0 = std::min(x0, x), y0 = std::min(y0, y), x1 = std::max(x1, x), y1 = std::max(y1, y);
    };
    for (const Command &c : shape.commands) {
        switch (c.op) {
        case Op::Style: s.Fill0(uint32_t(c.fill0)).Fill1(uint32_t(c.fill1)).LineStyle(uint32_t(c.pen)); break;
        case Op::Move: s.MoveTo(twips(c.x), twips(c.y)); break;
        case Op::Line: s.LineTo(twips(c.x), twips(c.y)); break;
        case Op::Quad: s.CurveTo(twips(c.cx), twips(c.cy), twips(c.x), twips(c.y)); break;
        }
        if (c.op == Op::Quad)
            widen(c.cx, c.cy);
        if (c.op != Op::Style)
            widen(c.x, c.y);
    }
    swf::Rect bounds{twips(x0 - reach), twips(x1 + reach), twips(y0 - reach), twips(y1 + reach), 0};
    return swf::DefineShape(id, bounds, s, 3);
}

std::vector<uint8_t> buildMovie(const Scene &scene)
{
    swf::Movie m;
    m.frame = swf::Rect{0, scene.width * 20, 0, scene.height * 20, 0};
    m.tags.Add(swf::SetBackgroundColor({255, 255, 255, 255}));
    for (size_t i = 0; i < scene.shapes.size(); ++i) {
        uint16_t id = uint16_t(i + 1);
        m.tags.Add(defineShape(id, scene.shapes[i]));
        swf::Place2 place;
        place.depth = id;
        place.characterId = id;
        if (scene.shapes[i].clips > 0)
            place.clipDepth = uint16_t(id + scene.shapes[i].clips);
        m.tags.Add(swf::PlaceObject2(place));
    }
    m.tags.Add(swf::ShowFrame());
    return m.Build();
}

} // namespace

EngineRenderer::EngineRenderer(const Scene &scene, uint32_t *pixels)
    : movie_(buildMovie(scene)), pixels_(pixels), width_(scene.width), height_(scene.height)
{
    handle_ = zelEngineOpen(movie_.data(), unsigned(movie_.size()));
    zelEngineForward(handle_, 1, width_, height_, 1);
    draw();
}

EngineRenderer::~EngineRenderer() { zelEngineClose(handle_); }

void EngineRenderer::draw()
{
    _GOFFSCR buffer{0, 0, width_, height_, ZEL_FORMAT_ARGB32, reinterpret_cast<intptr_t>(pixels_), 0};
    zelEnginePlay(handle_, &buffer, 0, 0, width_, height_, 2);
}

} // namespace bench
