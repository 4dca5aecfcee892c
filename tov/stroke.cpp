// stroke.cpp: round-capped, round-joined strokes. Each polyline becomes a
// closed outline (one side forward, a cap, the other side back, a cap) whose
// pieces all wind the same way, so the non-zero fill of the outlines of one
// pen is the union of its strokes. Arcs are walked by a rotation fixed per
// pen and corners are decided by cross and dot products of the directions:
// no trigonometry per vertex.
#include "tov/internal.h"

#include <cmath>

using namespace tov;

namespace {

// Vertices closer than this (in pixels, summed over both axes) are one.
constexpr double kSamePoint = 1e-4;
// dot(d, e) below this is a turn of nearly 180 degrees (cos 3.0 rad), where
// the offset lines of a sharp inner corner meet too far away to be used.
constexpr double kSharpTurn = -0.98999;

using Vec = Point;

// Emits the outline of one pen as edges, tracking the pen position.
struct Outline {
    tovCanvas *c;
    int32_t pen;
    double radius;
    double cs, sn, grow; // the pen's rotation step and inner-vertex growth
    double miterDot;     // outer turns with a cosine above this are cornered, not rounded
    double x, y, startX, startY;

    void moveTo(double px, double py) { x = startX = px, y = startY = py; }
    void lineTo(double px, double py)
    {
        addEdge(c->strokeEdges, x, y, px, py, pen, 0);
        x = px, y = py;
    }
    void close() { lineTo(startX, startY); }
    // Arc around centre from the offset radius * from to radius * to, turning
    // clockwise on screen (the way a pen's outline goes round its ends and
    // outer corners) by at most half a turn. Inner vertices sit slightly
    // outside the circle so that the chords enclose the true area.
    void arc(Vec centre, Vec from, Vec to)
    {
        double vx = from.x, vy = from.y;
        // The angle left to go exceeds one step while its cosine is smaller.
        while (vx * to.x + vy * to.y < cs) {
            double nx = vx * cs + vy * sn;
            vy = vy * cs - vx * sn;
            vx = nx;
            lineTo(centre.x + vx * radius * grow, centre.y + vy * radius * grow);
        }
        lineTo(centre.x + to.x * radius, centre.y + to.y * radius);
    }
};

// A segment's unit direction and length.
struct Dir {
    Vec d;
    double length;
};

Dir direction(Vec a, Vec b)
{
    double dx = b.x - a.x, dy = b.y - a.y;
    double len = std::sqrt(dx * dx + dy * dy);
    return Dir{Vec{dx / len, dy / len}, len};
}

// Left normal of a direction (on screen, y down).
inline Vec normal(Vec d) { return Vec{-d.y, d.x}; }

// Polyline vertices in traversal order, forward or reversed.
struct Walk {
    const Vec *p;
    int count;
    bool reversed;
    Vec operator[](int i) const { return p[reversed ? count - 1 - i : i]; }
};

// Goes round vertex v, from the offset of the incoming direction d to that
// of the outgoing e, on the side of the left normal. On the outer side of
// the turn that is an arc. On the inner side the two offset lines meet at a
// point, which is where the outline goes when both segments reach that far
// (the distance being r tan(turn / 2) = r cross / (1 + dot)); otherwise it
// goes through the vertex itself, which keeps the small overlap inside the
// stroke.
void corner(Outline &o, Vec v, const Dir &in, const Dir &out)
{
    double r = o.radius;
    Vec d = in.d, e = out.d, nd = normal(d), ne = normal(e);
    double cross = d.x * e.y - d.y * e.x, dot = d.x * e.x + d.y * e.y;
    if (cross > 1e-9) {
        double reach = r * cross / (1 + dot);
        double shorter = in.length < out.length ? in.length : out.length;
        if (dot > kSharpTurn && reach <= 0.5 * shorter) {
                double k = r / (1 + dot);
            o.lineTo(v.x + (nd.x + ne.x) * k, v.y + (nd.y + ne.y) * k);
            return;
        }
        o.lineTo(v.x + nd.x * r, v.y + nd.y * r);
        o.lineTo(v.x, v.y);
        o.lineTo(v.x + ne.x * r, v.y + ne.y * r);
        return;
    }
    if (cross < 0 && dot >= o.miterDot) {
        // A turn this small: the corner of the two offset lines lies within
        // the tolerance of the round join, so it stands for the arc.
        double k = r / (1 + dot);
        o.lineTo(v.x + (nd.x + ne.x) * k, v.y + (nd.y + ne.y) * k);
        return;
    }
    o.lineTo(v.x + nd.x * r, v.y + nd.y * r);
    if (cross < 0 || dot < 0)
        o.arc(v, nd, ne);
}

// One side of an open polyline from its first offset point to its last,
// then the cap at the far end, which leads onto the other side.
void side(Outline &o, const Walk &w)
{
    Dir d = direction(w[0], w[1]);
    for (int i = 0; i + 2 < w.count; ++i) {
        Dir e = direction(w[i + 1], w[i + 2]);
        corner(o, w[i + 1], d, e);
        d = e;
    }
    Vec end = w[w.count - 1], n = normal(d.d);
    o.lineTo(end.x + n.x * o.radius, end.y + n.y * o.radius);
    o.arc(end, n, Vec{-n.x, -n.y});
}

// One side of a closed polyline as a loop of its own, turning at every
// vertex including the one where it closes.
void loop(Outline &o, const Walk &w)
{
    int n = w.count - 1; // the last vertex repeats the first
    Dir d = direction(w[n - 1], w[0]);
    Vec nd = normal(d.d);
    o.moveTo(w[0].x + nd.x * o.radius, w[0].y + nd.y * o.radius);
    for (int i = 0; i < n; ++i) {
        Dir e = direction(w[i], w[i + 1]);
        corner(o, w[i], d, e);
        d = e;
    }
    o.close();
}

void outline(Outline &o, const Vec *p, int count)
{
    double r = o.radius;
    if (count == 1) {
        Vec centre = p[0];
        o.moveTo(centre.x + r, centre.y);
        o.arc(centre, Vec{1, 0}, Vec{-1, 0});
        o.arc(centre, Vec{-1, 0}, Vec{1, 0});
        return;
    }
    // A polyline that ends where it started is joined there, not capped.
    if (count >= 4 && std::fabs(p[0].x - p[count - 1].x) + std::fabs(p[0].y - p[count - 1].y) < kSamePoint) {
        loop(o, Walk{p, count, false});
        loop(o, Walk{p, count, true});
        return;
    }
    Vec n = normal(direction(p[0], p[1]).d);
    o.moveTo(p[0].x + n.x * r, p[0].y + n.y * r);
    side(o, Walk{p, count, false});
    side(o, Walk{p, count, true});
    o.close();
}

bool penDraws(const tovCanvas *c, int32_t pen)
{
    return pen > 0 && size_t(pen) < c->pens.size() && c->pens[size_t(pen)] &&
           c->pens[size_t(pen)]->kind == kPen;
}

// Orders the outline edges by pen, keeping their order within a pen.
void groupByPen(tovCanvas *c)
{
    size_t count = c->strokeEdges.size(), npens = c->pens.size();
    Array<uint32_t> &starts = c->bandCount;
    if (!starts.resize(npens + 1) || !c->sortedEdges.resize(count))
        return;
    std::memset(starts.data(), 0, sizeof(uint32_t) * (npens + 1));
    for (size_t i = 0; i < count; ++i)
        ++starts[size_t(c->strokeEdges[i].left) + 1];
    for (size_t p = 0; p < npens; ++p)
        starts[p + 1] += starts[p];
    for (size_t i = 0; i < count; ++i)
        c->sortedEdges[starts[size_t(c->strokeEdges[i].left)]++] = c->strokeEdges[i];
    std::memcpy(c->strokeEdges.data(), c->sortedEdges.data(), count * sizeof(Edge));
}

} // namespace

namespace tov {

// Each polyline is outlined whole, the same way whatever the clip box, so
// joins and caps never depend on it. A polyline whose outline lies wholly
// outside the box is skipped: its outline is closed, so one right, above or
// below the box adds to no cell in it, and one left of it adds as much cover
// as it takes away along every row.
void buildStrokes(tovCanvas *c, const Box &clip)
{
    c->strokeEdges.clear();
    const StrokePoint *sp = c->strokePoints.data();
    size_t count = c->strokePoints.size();
    Array<Vec> &verts = c->strokeVerts;
    int32_t firstPen = -1;
    bool severalPens = false;
    for (size_t i = 0; i < count;) {
        size_t j = i + 1;
        while (j < count && !sp[j].start)
            ++j;
        int32_t pen = sp[i].pen;
        if (penDraws(c, pen)) {
            const tovObject *po = c->pens[size_t(pen)];
            Outline o{c, pen, po->pen.radius, po->pen.arcCos, po->pen.arcSin, po->pen.arcGrow, po->pen.miterDot, 0, 0, 0, 0};
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
                lo.x = v.x < lo.x ? v.x : lo.x, lo.y = v.y < lo.y ? v.y : lo.y;
                hi.x = v.x > hi.x ? v.x : hi.x, hi.y = v.y > hi.y ? v.y : hi.y;
            }
            // Arc vertices sit at most a few percent outside the pen's
            // circle, and inner join points stay within the stroke.
            double reach = po->pen.radius * 1.1 + 2;
            bool meets = hi.x + reach > clip.left && lo.x - reach < clip.right && hi.y + reach > clip.top &&
                         lo.y - reach < clip.bottom;
            if (meets && !verts.empty()) {
                outline(o, verts.data(), int(verts.size()));
                severalPens = severalPens || (firstPen >= 0 && pen != firstPen);
                firstPen = pen;
            }
        }
        i = j;
    }
    if (severalPens)
        groupByPen(c);
}

} // namespace tov
