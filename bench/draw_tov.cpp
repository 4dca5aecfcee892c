// draw_tov.cpp: draws a benchmark scene with tov, as the engine would: a
// path set per shape with its own pens and brushes, clip layers as masks.
#include "renderers.h"

#include "tov/tov.h"

#include <vector>

namespace bench {

namespace {

tovColor toTov(Rgba c) { return tovColor{c.r, c.g, c.b, c.a}; }

tovObject *makeBrush(tovCanvas *c, const Paint &p)
{
    if (!p.gradient)
        return tovCreateSolidBrush(c, toTov(p.color), nullptr);
    std::vector<tovGradientStop> stops;
    for (const Stop &s : p.stops)
        stops.push_back({s.ratio, toTov(s.color)});
    return tovCreateGradientBrush(c, p.gradient, int(stops.size()), stops.data(), 1, p.matrix[0][2],
                                  p.matrix[1][2], p.matrix, nullptr);
}

void drawShape(tovCanvas *c, const Shape &shape, std::vector<tovObject *> &brushes, std::vector<tovObject *> &pens)
{
    brushes.assign(1, nullptr);
    pens.assign(1, nullptr);
    for (const Paint &p : shape.fills)
        brushes.push_back(makeBrush(c, p));
    for (const Pen &p : shape.pens) {
        tovPenSpec spec{p.width, toTov(p.color)};
        pens.push_back(tovCreatePen(c, &spec));
    }
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes.data(), int(brushes.size()));
    tovSetPens(c, pens.data(), int(pens.size()));
    for (const Command &cmd : shape.commands) {
        switch (cmd.op) {
        case Op::Style:
            tovUseBrush(c, cmd.fill0, cmd.fill1);
            tovUsePen(c, cmd.pen);
            break;
        case Op::Move: tovMoveTo(c, cmd.x, cmd.y); break;
        case Op::Line: tovLineTo(c, cmd.x, cmd.y); break;
        case Op::Quad: tovCurveTo(c, cmd.cx, cmd.cy, cmd.x, cmd.y); break;
        }
    }
    tovEndShape(c);
    for (tovObject *o : brushes)
        tovDeleteObject(c, o);
    for (tovObject *o : pens)
        tovDeleteObject(c, o);
}

} // namespace

TovRenderer::TovRenderer(const Scene &scene, uint32_t *pixels) : scene_(scene)
{
    tovBuffer buffer{0, 0, scene.width, scene.height, 280, reinterpret_cast<intptr_t>(pixels), 0};
    canvas_ = tovCreate(&buffer);
}

TovRenderer::~TovRenderer() { tovDestroy(canvas_); }

void TovRenderer::draw()
{
    tovColor white{255, 255, 255, 255};
    tovClear(canvas_, &white);
    int masked = 0; // shapes still to draw under the open clip layer
    for (const Shape &shape : scene_.shapes) {
        int kind = shape.clips > 0 ? 2 : 1;
        tovBeginCanvas(canvas_, kind);
        drawShape(canvas_, shape, brushes_, pens_);
        tovEndCanvas(canvas_, kind);
        if (shape.clips > 0) {
            masked = shape.clips;
        } else if (masked > 0 && --masked == 0) {
            tovDestroyMask(canvas_);
        }
    }
}

} // namespace bench
