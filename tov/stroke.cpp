// stroke.cpp: round-capped, round-joined strokes. Each polyline becomes a
// closed outline (one side forward, a cap, the other side back, a cap) whose
// pieces all wind the same way, so the non-zero fill of the outlines of one
// pen is the union of its strokes.
#include "tov/internal.h"

#include <cmath>

using namespace tov;

namespace {

constexpr double kPi = 3.14159265358979323846;
// Vertices closer than this (in pixels, summed over both axes) are one.
constexpr double kSamePoint = 1e-4;

// Emits the outline of one pen as edges, tracking the pen position.
struct Outline {
    tovCanvas *c;
    int32_t pen;
    double radius;
    double maxStep; // largest angle per arc chord that keeps within tolerance
    double x, y, startX, startY;

    void moveTo(double px, double py) { x = startX = px, y = startY = py; }
    void lineTo(double px, double py)
    {
        addEdge(c->strokeEdges, x, y, px, py, pen, 0);
        x = px, y = py;
    }
    void close() { lineTo(startX, startY); }
    // Arc around (cx, cy) starting at offset (vx, vy) and turning by sweep.
    // Inner vertices sit slightly outside the circle (by sqrt(step / sin
    // step)) so that the chords enclose the true area of the round part.
    void arc(double cx, double cy, double vx, double vy, double sweep)
    {
        int n = int(std::ceil(std::fabs(sweep) / maxStep));
        if (n < 1)
            n = 1;
        double step = sweep / n;
        double cs = std::cos(step), sn = std::sin(step);
        double grow = sn != 0.0 ? std::sqrt(step / sn) : 1.0;
        for (int i = 0; i < n; ++i) {
            double nx = vx * cs - vy * sn;
            vy = vx * sn + vy * cs;
            vx = nx;
            double k = i + 1 < n ? grow : 1.0;
            lineTo(cx + vx * k, cy + vy * k);
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

double distance(Vec a, Vec b) { return std::hypot(b.x - a.x, b.y - a.y); }

// Goes round vertex v, from the offset of the incoming direction d to that
// of the outgoing e, on the side of normal (-d.y, d.x); the segments around
// v are lenIn and lenOut long. On the outer side of the turn that is an arc.
// On the inner side the two offset lines meet at a point, which is where
// the outline goes when both segments reach that far; otherwise it goes
// through the vertex itself, which keeps the small overlap inside the stroke.
void corner(Outline &o, Vec v, Vec d, Vec e, double lenIn, double lenOut)
{
    double r = o.radius;
    double cross = d.x * e.y - d.y * e.x, dot = d.x * e.x + d.y * e.y;
    double turn = std::atan2(cross, dot);
    if (turn < 0) {
        o.lineTo(v.x - d.y * r, v.y + d.x * r);
        o.arc(v.x, v.y, -d.y * r, d.x * r, turn);
    } else if (turn > 1e-9) {
        double reach = r * std::tan(turn / 2);
        if (turn < 3.0 && reach <= 0.5 * std::fmin(lenIn, lenOut)) {
            double k = r / (1 + dot);
            o.lineTo(v.x - (d.y + e.y) * k, v.y + (d.x + e.x) * k);
        } else {
            o.lineTo(v.x - d.y * r, v.y + d.x * r);
            o.lineTo(v.x, v.y);
            o.lineTo(v.x - e.y * r, v.y + e.x * r);
        }
    } else {
        o.lineTo(v.x - d.y * r, v.y + d.x * r);
    }
}

// One side of an open polyline from its first offset point to its last,
// then the cap at the far end, which leads onto the other side.
void side(Outline &o, const Walk &w)
{
    double r = o.radius;
    Vec d = direction(w[0], w[1]);
    for (int i = 0; i + 2 < w.count; ++i) {
        Vec e = direction(w[i + 1], w[i + 2]);
        corner(o, w[i + 1], d, e, distance(w[i], w[i + 1]), distance(w[i + 1], w[i + 2]));
        d = e;
    }
    Vec end = w[w.count - 1];
    o.lineTo(end.x - d.y * r, end.y + d.x * r);
    o.arc(end.x, end.y, -d.y * r, d.x * r, -kPi);
}

// One side of a closed polyline as a loop of its own, turning at every
// vertex including the one where it closes.
void loop(Outline &o, const Walk &w)
{
    int n = w.count - 1; // the last vertex repeats the first
    Vec d = direction(w[n - 1], w[0]);
    double lenIn = distance(w[n - 1], w[0]);
    o.moveTo(w[0].x - d.y * o.radius, w[0].y + d.x * o.radius);
    for (int i = 0; i < n; ++i) {
        Vec e = direction(w[i], w[i + 1]);
        double lenOut = distance(w[i], w[i + 1]);
        corner(o, w[i], d, e, lenIn, lenOut);
        d = e, lenIn = lenOut;
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
    // A polyline that ends where it started is joined there, not capped.
    if (count >= 4 && std::fabs(p[0].x - p[count - 1].x) + std::fabs(p[0].y - p[count - 1].y) < kSamePoint) {
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

// Each polyline is outlined whole, the same way whatever the clip box, so
// joins and caps never depend on it. A polyline whose outline lies wholly
// outside the box is skipped: its outline is closed, so one right, above or
// below the box adds to no cell in it, and one left of it adds as much cover
// as it takes away along every row.
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
            verts.clear();
            Vec lo{sp[i].x, sp[i].y}, hi = lo;
            for (size_t k = i; k < j; ++k) {
                Vec v{sp[k].x, sp[k].y};
                if (!verts.empty()) {
                    Vec a = verts.back();
                    if (std::fabs(v.x - a.x) + std::fabs(v.y - a.y) < kSamePoint)
                        continue;
                }
                if (!verts.push(v))
                    break;
                lo.x = std::fmin(lo.x, v.x), lo.y = std::fmin(lo.y, v.y);
                hi.x = std::fmax(hi.x, v.x), hi.y = std::fmax(hi.y, v.y);
            }
            // Arc vertices sit at most a few percent outside the pen's
            // circle, and inner join points stay within the stroke.
            double reach = po->radius * 1.1 + 2;
            bool meets = hi.x + reach > clip.left && lo.x - reach < clip.right && hi.y + reach > clip.top &&
                         lo.y - reach < clip.bottom;
            if (meets && !verts.empty())
                outline(o, verts.data(), int(verts.size()));
        }
        i = j;
    }
}

} // namespace tov
