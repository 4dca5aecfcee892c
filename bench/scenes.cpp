// scenes.cpp: builds the benchmark scenes from a small deterministic random
// generator, and turns a shape's edge soup into the closed paths and
// polylines that one-style-at-a-time renderers need.
#include "scenes.h"

#include <cmath>
#include <map>
#include <utility>

namespace bench {

namespace {

constexpr double kPi = 3.14159265358979323846;

class Random {
public:
    explicit Random(uint32_t seed) : state_(seed) {}
    double next() // uniform in [0, 1)
    {
        state_ = state_ * 1664525u + 1013904223u;
        return (state_ >> 8) / 16777216.0;
    }
    double range(double lo, double hi) { return lo + (hi - lo) * next(); }
    uint8_t byte(int lo, int hi) { return uint8_t(lo + int(next() * (hi - lo + 1))); }
    Rgba color(int alphaLo = 255, int alphaHi = 255)
    {
        return Rgba{byte(0, 255), byte(0, 255), byte(0, 255), byte(alphaLo, alphaHi)};
    }

private:
    uint32_t state_;
};

// Appends commands to a shape.
struct Pencil {
    Shape &s;
    void style(int fill0, int fill1, int pen = 0)
    {
        Command c{Op::Style};
        c.fill0 = fill0, c.fill1 = fill1, c.pen = pen;
        s.commands.push_back(c);
    }
    void move(double x, double y) { s.commands.push_back({Op::Move, x, y}); }
    void line(double x, double y) { s.commands.push_back({Op::Line, x, y}); }
    void quad(double cx, double cy, double x, double y) { s.commands.push_back({Op::Quad, x, y, cx, cy}); }
};

Paint solid(Rgba c)
{
    Paint p;
    p.color = c;
    return p;
}

// A closed ring of n quadratic curves around (cx, cy) with radii rx, ry and
// some wobble; `reverse` winds it the other way (a counter).
void ring(Pencil &p, Random &rnd, double cx, double cy, double rx, double ry, int n, bool reverse)
{
    std::vector<double> wob(static_cast<size_t>(n));
    for (double &w : wob)
        w = rnd.range(0.8, 1.1);
    auto at = [&](int i, double scale) {
        double a = 2 * kPi * (reverse ? -i : i) / (2 * n);
        return std::make_pair(cx + std::cos(a) * rx * scale, cy + std::sin(a) * ry * scale);
    };
    auto start = at(0, wob[0]);
    p.move(start.first, start.second);
    for (int i = 0; i < n; ++i) {
        auto q = at(2 * i + 1, (wob[size_t(i)] + wob[size_t((i + 1) % n)]) / 2 / std::cos(kPi / (2 * n)));
        auto e = at(2 * i + 2, wob[size_t((i + 1) % n)]);
        p.quad(q.first, q.second, e.first, e.second);
    }
}

} // namespace

// A jittered grid of cells, each its own fill; each boundary between two
// cells is given once, as four segments, with the two cells as its fills
// (what a traced photograph looks like).
Scene mosaic(int w, int h)
{
    const int cols = 100, rows = 75, pieces = 4;
    Scene sc{"mosaic", w, h, {}};
    Shape sh;
    Random rnd(11);
    double cw = double(w) / cols, ch = double(h) / rows;
    std::vector<std::pair<double, double>> v(size_t((cols + 1) * (rows + 1)));
    for (int j = 0; j <= rows; ++j)
        for (int i = 0; i <= cols; ++i) {
            bool inner = i > 0 && i < cols && j > 0 && j < rows;
            v[size_t(j * (cols + 1) + i)] = {i * cw + (inner ? rnd.range(-0.3, 0.3) * cw : 0),
                                             j * ch + (inner ? rnd.range(-0.3, 0.3) * ch : 0)};
        }
    for (int i = 0; i < cols * rows; ++i)
        sh.fills.push_back(solid(rnd.color()));
    auto cell = [&](int i, int j) { return i < 0 || j < 0 || i >= cols || j >= rows ? 0 : 1 + j * cols + i; };
    Pencil p{sh};
    auto edge = [&](std::pair<double, double> a, std::pair<double, double> b, int fill0, int fill1) {
        p.style(fill0, fill1);
        p.move(a.first, a.second);
        for (int k = 1; k < pieces; ++k) {
            double t = double(k) / pieces, wob = rnd.range(-0.08, 0.08);
            p.line(a.first + (b.first - a.first) * t - (b.second - a.second) * wob,
                   a.second + (b.second - a.second) * t + (b.first - a.first) * wob);
        }
        p.line(b.first, b.second);
    };
    for (int j = 0; j <= rows; ++j)
        for (int i = 0; i < cols; ++i)
            edge(v[size_t(j * (cols + 1) + i)], v[size_t(j * (cols + 1) + i + 1)], cell(i, j - 1), cell(i, j));
    for (int i = 0; i <= cols; ++i)
        for (int j = 0; j < rows; ++j)
            edge(v[size_t(j * (cols + 1) + i)], v[size_t((j + 1) * (cols + 1) + i)], cell(i, j), cell(i - 1, j));
    sc.shapes.push_back(std::move(sh));
    return sc;
}

// A rounded rectangle over most of the frame cut into five bands by wavy
// dividers: a large shape with a few fills sharing edges.
Scene bigShape(int w, int h)
{
    const int bands = 5;
    Scene sc{"big shape", w, h, {}};
    Shape sh;
    Random rnd(5);
    for (int i = 0; i < bands; ++i)
        sh.fills.push_back(solid(rnd.color()));
    double x0 = w * 0.03, x1 = w * 0.97, y0 = h * 0.04, y1 = h * 0.96, r = h * 0.1;
    std::vector<double> cut{x0 + r};
    for (int i = 1; i < bands; ++i)
        cut.push_back(x0 + (x1 - x0) * i / bands);
    cut.push_back(x1 - r);
    Pencil p{sh};
    for (int i = 0; i < bands; ++i) { // top, left to right, band below on the right
        p.style(0, i + 1);
        p.move(cut[size_t(i)], y0);
        p.line(cut[size_t(i + 1)], y0);
    }
    p.style(0, bands);
    p.move(x1 - r, y0);
    p.quad(x1, y0, x1, y0 + r);
    p.line(x1, y1 - r);
    p.quad(x1, y1, x1 - r, y1);
    for (int i = bands - 1; i >= 0; --i) { // bottom, right to left
        p.style(0, i + 1);
        p.move(cut[size_t(i + 1)], y1);
        p.line(cut[size_t(i)], y1);
    }
    p.style(0, 1);
    p.move(x0 + r, y1);
    p.quad(x0, y1, x0, y1 - r);
    p.line(x0, y0 + r);
    p.quad(x0, y0, x0 + r, y0);
    for (int i = 1; i < bands; ++i) { // dividers, downwards
        p.style(i + 1, i);
        double x = cut[size_t(i)], amp = w * 0.04, step = (y1 - y0) / 4;
        p.move(x, y0);
        for (int k = 0; k < 4; ++k)
            p.quad(x + (k % 2 ? -amp : amp), y0 + step * (k + 0.5), x, y0 + step * (k + 1));
    }
    sc.shapes.push_back(std::move(sh));
    return sc;
}

// Lines of glyph-like outlines (an outer ring with a counter), one shape per
// glyph as a text reaches the rasterizer.
Scene textPage(int w, int h)
{
    const int lines = 38, perLine = 70;
    Scene sc{"text page", w, h, {}};
    Random rnd(3);
    double lh = double(h) / (lines + 1), adv = double(w) / (perLine + 1), size = lh * 0.7;
    for (int l = 0; l < lines; ++l)
        for (int g = 0; g < perLine; ++g) {
            if (rnd.next() < 0.04)
                continue; // a space
            Shape sh;
            sh.fills.push_back(solid({20, 20, 30, 255}));
            Pencil p{sh};
            p.style(0, 1);
            double cx = adv * (g + 1), cy = lh * (l + 1) - size / 2, rx = adv * 0.42, ry = size / 2;
            ring(p, rnd, cx, cy, rx, ry, 12, false);
            ring(p, rnd, cx, cy, rx * 0.45, ry * 0.5, 8, true);
            sc.shapes.push_back(std::move(sh));
        }
    return sc;
}

Scene blobs(int w, int h)
{
    Scene sc{"outlined blobs", w, h, {}};
    Random rnd(9);
    double unit = w / 1920.0;
    for (int i = 0; i < 500; ++i) {
        Shape sh;
        sh.fills.push_back(solid(rnd.color(60, 200)));
        sh.pens.push_back(Pen{rnd.range(1.5, 4) * unit, rnd.color(160, 255)});
        Pencil p{sh};
        p.style(0, 1, 1);
        double r = rnd.range(20, 110) * unit;
        ring(p, rnd, rnd.range(0, w), rnd.range(0, h), r, r * rnd.range(0.6, 1.2), 8, false);
        sc.shapes.push_back(std::move(sh));
    }
    return sc;
}

// A 3 x 3 board: each cell a star or a blob clip layer over a gradient
// rectangle twice its size.
Scene clippedGradients(int w, int h)
{
    Scene sc{"clipped gradients", w, h, {}};
    Random rnd(4);
    double cw = w / 3.0, ch = h / 3.0;
    for (int k = 0; k < 9; ++k) {
        double cx = cw * (k % 3 + 0.5), cy = ch * (k / 3 + 0.5), r = std::min(cw, ch) * 0.47;
        Shape clip;
        clip.fills.push_back(solid({0, 0, 0, 255}));
        clip.clips = 1;
        Pencil pc{clip};
        pc.style(0, 1);
        if (k % 2) {
            ring(pc, rnd, cx, cy, r, r * 0.9, 7, false);
        } else {
            for (int i = 0; i <= 10; ++i) {
                double a = -kPi / 2 + i * kPi / 5, rr = i % 2 ? r * 0.45 : r;
                (i ? pc.line(cx + rr * std::cos(a), cy + rr * std::sin(a))
                   : pc.move(cx + rr * std::cos(a), cy + rr * std::sin(a)));
            }
        }
        sc.shapes.push_back(std::move(clip));
        Shape content;
        Paint g;
        g.gradient = k % 3 == 1 ? 3 : 2;
        double turn = rnd.range(-0.8, 0.8), s = r / 819.2;
        g.matrix[0][0] = s * std::cos(turn), g.matrix[0][1] = -s * std::sin(turn), g.matrix[0][2] = cx;
        g.matrix[1][0] = s * std::sin(turn), g.matrix[1][1] = s * std::cos(turn), g.matrix[1][2] = cy;
        g.stops = {{0, rnd.color()}, {90, rnd.color()}, {180, rnd.color()}, {255, rnd.color()}};
        content.fills.push_back(g);
        Pencil pg{content};
        pg.style(0, 1);
        pg.move(cx - cw, cy - ch);
        pg.line(cx + cw, cy - ch);
        pg.line(cx + cw, cy + ch);
        pg.line(cx - cw, cy + ch);
        pg.line(cx - cw, cy - ch);
        sc.shapes.push_back(std::move(content));
    }
    return sc;
}

Scene mesh(int w, int h)
{
    const int n = 45;
    Scene sc{"mesh", w, h, {}};
    Random rnd(8);
    double cw = double(w) / (n - 1), ch = double(h) / (n - 1);
    std::vector<std::pair<double, double>> v(size_t(n * n));
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            v[size_t(j * n + i)] = {i * cw + rnd.range(-0.3, 0.3) * cw, j * ch + rnd.range(-0.3, 0.3) * ch};
    auto triangle = [&](int a, int b, int c) {
        Shape sh;
        sh.fills.push_back(solid(rnd.color()));
        Pencil p{sh};
        p.style(0, 1);
        p.move(v[size_t(a)].first, v[size_t(a)].second);
        p.line(v[size_t(b)].first, v[size_t(b)].second);
        p.line(v[size_t(c)].first, v[size_t(c)].second);
        p.line(v[size_t(a)].first, v[size_t(a)].second);
        sc.shapes.push_back(std::move(sh));
    };
    for (int j = 0; j + 1 < n; ++j)
        for (int i = 0; i + 1 < n; ++i) {
            int a = j * n + i;
            triangle(a, a + 1, a + n + 1);
            triangle(a, a + n + 1, a + n);
        }
    return sc;
}

// A random walk of short steps that turns smoothly and bounces off the
// frame's sides, stroked with one pen.
Scene polyline(int w, int h)
{
    Scene sc{"stroked polyline", w, h, {}};
    Shape sh;
    sh.pens.push_back(Pen{1.5, {30, 30, 120, 255}});
    Pencil p{sh};
    p.style(0, 0, 1);
    Random rnd(6);
    double x = w / 2.0, y = h / 2.0, a = 0, step = std::min(w, h) / 40.0;
    p.move(x, y);
    for (int i = 0; i < 65535; ++i) {
        a += rnd.range(-0.9, 0.9);
        double nx = x + std::cos(a) * step, ny = y + std::sin(a) * step;
        if (nx < 0 || nx > w)
            a = kPi - a, nx = x + std::cos(a) * step;
        if (ny < 0 || ny > h)
            a = -a, ny = y + std::sin(a) * step;
        x = nx, y = ny;
        p.line(x, y);
    }
    sc.shapes.push_back(std::move(sh));
    return sc;
}

namespace {

struct Segment {
    double x0, y0, cx, cy, x1, y1;
    bool quad;
};

// Calls f(segment, fill0, fill1, pen, startsRun) for every edge of a shape;
// startsRun is true when the edge does not continue the previous one.
template <class F>
void forEachEdge(const Shape &shape, F f)
{
    double x = 0, y = 0;
    int fill0 = 0, fill1 = 0, pen = 0;
    bool fresh = true;
    for (const Command &c : shape.commands) {
        switch (c.op) {
        case Op::Style:
            fill0 = c.fill0, fill1 = c.fill1;
            fresh = fresh || pen != c.pen;
            pen = c.pen;
            break;
        case Op::Move:
            x = c.x, y = c.y, fresh = true;
            break;
        case Op::Line:
        case Op::Quad:
            f(Segment{x, y, c.cx, c.cy, c.x, c.y, c.op == Op::Quad}, fill0, fill1, pen, fresh);
            x = c.x, y = c.y, fresh = false;
            break;
        }
    }
}

} // namespace

std::vector<PathOp> fillPath(const Shape &shape, int fill)
{
    std::vector<Segment> segs;
    forEachEdge(shape, [&](Segment s, int fill0, int fill1, int, bool) {
        if (fill0 == fill1 || (fill0 != fill && fill1 != fill))
            return;
        if (fill0 == fill) // turn it so that the fill is on its right
            s = Segment{s.x1, s.y1, s.cx, s.cy, s.x0, s.y0, s.quad};
        segs.push_back(s);
    });
    // Chains segments end to start into loops.
    std::multimap<std::pair<double, double>, size_t> starts;
    for (size_t i = 0; i < segs.size(); ++i)
        starts.emplace(std::make_pair(segs[i].x0, segs[i].y0), i);
    std::vector<bool> used(segs.size());
    std::vector<PathOp> out;
    for (size_t i = 0; i < segs.size(); ++i) {
        if (used[i])
            continue;
        out.push_back({Op::Move, segs[i].x0, segs[i].y0, 0, 0});
        for (size_t k = i; !used[k];) {
            used[k] = true;
            const Segment &s = segs[k];
            out.push_back({s.quad ? Op::Quad : Op::Line, s.x1, s.y1, s.cx, s.cy});
            auto range = starts.equal_range({s.x1, s.y1});
            for (auto it = range.first; it != range.second; ++it)
                if (!used[it->second]) {
                    k = it->second;
                    break;
                }
        }
    }
    return out;
}

std::vector<PathOp> penPath(const Shape &shape, int pen)
{
    std::vector<PathOp> out;
    bool open = false;
    forEachEdge(shape, [&](const Segment &s, int, int, int p, bool fresh) {
        if (p != pen) {
            open = false;
            return;
        }
        if (fresh || !open)
            out.push_back({Op::Move, s.x0, s.y0, 0, 0});
        out.push_back({s.quad ? Op::Quad : Op::Line, s.x1, s.y1, s.cx, s.cy});
        open = true;
    });
    return out;
}

std::vector<PreparedShape> prepare(const Scene &scene)
{
    std::vector<PreparedShape> out;
    for (const Shape &shape : scene.shapes) {
        PreparedShape p;
        for (size_t f = 0; f < shape.fills.size(); ++f)
            p.fills.push_back(fillPath(shape, int(f) + 1));
        for (size_t k = 0; k < shape.pens.size(); ++k)
            p.pens.push_back(penPath(shape, int(k) + 1));
        out.push_back(std::move(p));
    }
    return out;
}

} // namespace bench
