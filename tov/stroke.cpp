// stroke.cpp: round-capped, round-joined strokes. Each polyline becomes a
// closed outline (one side forward, a cap, the other side back, a cap) whose
// pieces all wind the same way, so the non-zero fill of the outlines of one
// pen is the union of its strokes.
#include "tov/internal.h"

#include <cmath>

using namespace tov;

namespace {

constexpr double kPi = 3.14159265358979323846;

// Emits the outline of one pen as clipped edges, tracking the pen position.
struct Outline {
    tovCanvas *c;
    int32_t pen;
    double radius;
    double maxStep; // largest angle per arc chord that keeps within tolerance
    double x, y, startX, startY;

    void moveTo(double px, double py) { x = startX = px, y = startY = py; }
    void lineTo(double px, double py)
    {
        addClippedEdge(c, c->strokeEdges, x, y, px, py, pen, 0);
        x = px, y = py;
    }
    void close() { lineTo(startX, startY); }
    // Arc around (cx, cy) starting at offset (vx, vy) and turning by sweep.
    void arc(double cx, double cy, double vx, double vy, double sweep)
    {
        int n = int(std::ceil(std::fabs(sweep) / maxStep));
        if (n < 1)
            n = 1;
        double cs = std::cos(sweep / n), sn = std::sin(sweep / n);
        for (int i = 0; i < n; ++i) {
            double nx = vx * cs - vy * sn;
            vy = vx * sn + vy * cs;
            vx = nx;
            lineTo(cx + vx, cy + vy);
        }
    }
};

using Vec = Point;

// Polyline vertices in traversal order, forward or reversed.
struct Walk {
    const Vec *p;
    int count;
    bool reversed;
    Vec operator[](int i) const { return p[reversed ? count - 1 - i : i]; }
};

Vec direction(Vec a, Vec b)
{
    double dx = b.x - a.x, dy = b.y - a.y;
    double len = std::sqrt(dx * dx + dy * dy);
    return Vec{dx / len, dy / len};
}

// Turns from the offset of direction d to that of e at vertex v, on the side
// of normal (-d.y, d.x). On the outer side of the turn that is an arc; on
// the inner side the outline goes through the vertex itself, which keeps the
// small overlap there inside the stroke.
void join(Outline &o, Vec v, Vec d, Vec e)
{
    double r = o.radius;
    double turn = std::atan2(d.x * e.y - d.y * e.x, d.x * e.x + d.y * e.y);
    if (turn < 0)
        o.arc(v.x, v.y, -d.y * r, d.x * r, turn);
    else if (turn > 1e-9) {
        o.lineTo(v.x, v.y);
        o.lineTo(v.x - e.y * r, v.y + e.x * r);
    }
}

// One side of an open polyline from its first offset point to its last,
// then the cap at the far end, which leads onto the other side.
void side(Outline &o, const Walk &w)
{
    double r = o.radius;
    Vec d = direction(w[0], w[1]);
    for (int i = 0; i + 1 < w.count; ++i) {
        Vec b = w[i + 1];
        o.lineTo(b.x - d.y * r, b.y + d.x * r);
        if (i + 2 < w.count) {
            Vec e = direction(b, w[i + 2]);
            join(o, b, d, e);
            d = e;
        }
    }
    Vec end = w[w.count - 1];
    o.arc(end.x, end.y, -d.y * r, d.x * r, -kPi);
}

// One side of a closed polyline as a loop of its own, joined all round.
void loop(Outline &o, const Walk &w)
{
    double r = o.radius;
    int n = w.count - 1; // the last vertex repeats the first
    Vec d = direction(w[0], w[1]);
    o.moveTo(w[0].x - d.y * r, w[0].y + d.x * r);
    for (int i = 0; i < n; ++i) {
        Vec b = w[i + 1];
        o.lineTo(b.x - d.y * r, b.y + d.x * r);
        Vec e = direction(b, w[(i + 2) % (n + 1) == 0 ? 1 : i + 2]);
        join(o, b, d, e);
        d = e;
    }
    o.close();
}

void outline(Outline &o, const Vec *p, int count)
{
    double r = o.radius;
    if (count == 1) {
        o.moveTo(p[0].x + r, p[0].y);
        o.arc(p[0].x, p[0].y, r, 0.0, -2 * kPi);
        o.close();
        return;
    }
    if (count >= 4 && p[0].x == p[count - 1].x && p[0].y == p[count - 1].y) {
        loop(o, Walk{p, count, false});
        loop(o, Walk{p, count, true});
        return;
    }
    Vec d = direction(p[0], p[1]);
    o.moveTo(p[0].x - d.y * r, p[0].y + d.x * r);
    side(o, Walk{p, count, false});
    side(o, Walk{p, count, true});
    o.close();
}

bool penDraws(const tovCanvas *c, int32_t pen)
{
    return pen > 0 && size_t(pen) < c->pens.size() && c->pens[size_t(pen)] &&
           c->pens[size_t(pen)]->kind == kPen;
}

} // namespace

namespace tov {

void buildStrokes(tovCanvas *c)
{
    c->strokeEdges.clear();
    const StrokePoint *sp = c->strokePoints.data();
    size_t count = c->strokePoints.size();
    Array<Vec> &verts = c->strokeVerts;
    const Box &clip = c->clip;
    for (size_t i = 0; i < count;) {
        size_t j = i + 1;
        while (j < count && !sp[j].start)
            ++j;
        int32_t pen = sp[i].pen;
        if (penDraws(c, pen)) {
            const tovObject *po = c->pens[size_t(pen)];
            Outline o{c, pen, po->radius, 0, 0, 0, 0, 0};
            double chord = po->radius > kTolerance ? 2 * std::acos(1 - kTolerance / po->radius) : kPi / 4;
            o.maxStep = chord < kPi / 4 ? chord : kPi / 4;
            double reach = po->radius + 1;
            auto near = [&](Vec a, Vec b) {
                return std::fmax(a.x, b.x) > clip.left - reach && std::fmin(a.x, b.x) < clip.right + reach &&
                       std::fmax(a.y, b.y) > clip.top - reach && std::fmin(a.y, b.y) < clip.bottom + reach;
            };
            // Runs of the polyline near the clip box are outlined on their
            // own; far-away segments are skipped (their caps fall outside).
            verts.clear();
            bool broken = false;
            for (size_t k = i; k < j; ++k) {
                Vec v{sp[k].x, sp[k].y};
                if (!verts.empty()) {
                    Vec a = verts.back();
                    if (std::fabs(v.x - a.x) + std::fabs(v.y - a.y) < 1e-4)
                        continue;
                    if (!near(a, v)) {
                        if (verts.size() > 1)
                            outline(o, verts.data(), int(verts.size()));
                        verts.clear();
                        broken = true;
                    }
                }
                verts.push(v);
            }
            if (verts.size() > 1 || (!broken && !verts.empty() && near(verts[0], verts[0])))
                outline(o, verts.data(), int(verts.size()));
        }
        i = j;
    }
}

} // namespace tov
