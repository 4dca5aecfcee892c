// path.cpp: recording a path set. Lines and flattened quadratic curves become
// fill edges cut to the clip box (so a huge shape costs no more than its
// visible part) and stroke polylines; hostile coordinates are tamed here.
#include "tov/internal.h"

#include <cmath>

using namespace tov;

namespace {

// Most segments one curve is cut into; only absurd curves reach it.
constexpr int kMaxCurveSegments = 1024;

void pushEdge(EdgeList &out, double x0, double y0, double x1, double y1, int32_t left, int32_t right)
{
    out.edges.push(Edge{float(x0), float(y0), float(x1), float(y1), left, right});
}

void addStrokeSegment(tovCanvas *c, double x0, double y0, double x1, double y1)
{
    if (!c->strokeOpen) {
        c->strokePoints.push(StrokePoint{float(x0), float(y0), c->pen, 1});
        c->strokeOpen = true;
    }
    c->strokePoints.push(StrokePoint{float(x1), float(y1), c->pen, 0});
}

void addSegment(tovCanvas *c, double x0, double y0, double x1, double y1)
{
    if (c->fill0 != c->fill1)
        addClippedEdge(c, c->fillEdges, x0, y0, x1, y1, c->fill0, c->fill1);
    if (c->pen != 0)
        addStrokeSegment(c, x0, y0, x1, y1);
}

inline double min3(double a, double b, double c)
{
    double m = a < b ? a : b;
    return m < c ? m : c;
}

inline double max3(double a, double b, double c)
{
    double m = a > b ? a : b;
    return m > c ? m : c;
}

// Reads a point; false (and the pen position forgotten) when it is NaN.
bool takePoint(tovCanvas *c, double &x, double &y)
{
    if (std::isnan(x) || std::isnan(y)) {
        c->curValid = false;
        c->strokeOpen = false;
        return false;
    }
    x = clampCoord(x);
    y = clampCoord(y);
    return true;
}

} // namespace

namespace tov {

void addClippedEdge(tovCanvas *c, EdgeList &out, double x0, double y0, double x1, double y1,
                    int32_t left, int32_t right)
{
    const Box &b = c->clip;
    if (y0 == y1 || b.empty())
        return;
    double top = b.top, bottom = b.bottom, l = b.left, r = b.right;
    if (y0 >= top && y1 >= top && y0 <= bottom && y1 <= bottom && x0 >= l && x1 >= l && x0 <= r && x1 <= r) {
        pushEdge(out, x0, y0, x1, y1, left, right);
        return;
    }
    if ((y0 <= top && y1 <= top) || (y0 >= bottom && y1 >= bottom))
        return;
    double dxdy = (x1 - x0) / (y1 - y0);
    if (y0 < top)
        x0 += (top - y0) * dxdy, y0 = top;
    if (y1 < top)
        x1 += (top - y1) * dxdy, y1 = top;
    if (y0 > bottom)
        x0 += (bottom - y0) * dxdy, y0 = bottom;
    if (y1 > bottom)
        x1 += (bottom - y1) * dxdy, y1 = bottom;
    if (x0 >= r && x1 >= r) {
        out.reachesRight = true;
        return;
    }
    if (x0 <= l && x1 <= l) {
        pushEdge(out, l, y0, l, y1, left, right);
        return;
    }
    // Split where the edge crosses the left and right sides: a piece left of
    // the box keeps its winding as a vertical edge on the left side, a piece
    // right of it changes no pixel inside and is dropped.
    double ts[4];
    int nt = 0;
    ts[nt++] = 0.0;
    double tl = (x0 - l) * (x1 - l) < 0 ? (l - x0) / (x1 - x0) : -1.0;
    double tr = (x0 - r) * (x1 - r) < 0 ? (r - x0) / (x1 - x0) : -1.0;
    if (tl > 0.0 && tr > 0.0) {
        ts[nt++] = std::fmin(tl, tr);
        ts[nt++] = std::fmax(tl, tr);
    } else if (tl > 0.0 || tr > 0.0) {
        ts[nt++] = std::fmax(tl, tr);
    }
    ts[nt++] = 1.0;
    double dx = x1 - x0, dy = y1 - y0;
    for (int i = 0; i + 1 < nt; ++i) {
        double ta = ts[i], tb = ts[i + 1];
        if (tb <= ta)
            continue;
        double xa = x0 + dx * ta, ya = y0 + dy * ta;
        double xb = tb == 1.0 ? x1 : x0 + dx * tb, yb = tb == 1.0 ? y1 : y0 + dy * tb;
        double mid = (xa + xb) * 0.5;
        if (mid >= r) {
            out.reachesRight = true;
            continue;
        }
        if (mid <= l) {
            pushEdge(out, l, ya, l, yb, left, right);
            continue;
        }
        xa = xa < l ? l : (xa > r ? r : xa);
        xb = xb < l ? l : (xb > r ? r : xb);
        pushEdge(out, xa, ya, xb, yb, left, right);
    }
}

} // namespace tov

extern "C" {

// The three integers are reserved. Style lists from an earlier path set are
// forgotten: their objects may have been deleted since.
void tovBeginShape(tovCanvas *c, int, int, int)
{
    if (!c)
        return;
    c->fillEdges.clear();
    c->strokePoints.clear();
    c->brushes.clear();
    c->pens.clear();
    c->curX = c->curY = 0.0;
    c->curValid = true;
    c->fill0 = c->fill1 = c->pen = 0;
    c->strokeOpen = false;
}

void tovMoveTo(tovCanvas *c, double x, double y)
{
    if (!c || !takePoint(c, x, y))
        return;
    c->curX = x, c->curY = y;
    c->curValid = true;
    c->strokeOpen = false;
}

void tovLineTo(tovCanvas *c, double x, double y)
{
    if (!c || !takePoint(c, x, y))
        return;
    if (c->curValid && (x != c->curX || y != c->curY || c->pen != 0))
        addSegment(c, c->curX, c->curY, x, y);
    c->curX = x, c->curY = y;
    c->curValid = true;
}

// Cut into n chords. Each chord of a parameter step 1/n falls short of the
// curve by the same sagitta, bend / (4 n^2) with bend = p0 - 2 p1 + p2, and
// loses two thirds of chord x sagitta of area; moving the inner vertices
// towards the bulge by bend / (6 n (n - 1)) wins that area back, so filled
// curves keep their true area, and the largest distance from the curve is
// that shift, kept under the tolerance.
void tovCurveTo(tovCanvas *c, double cx, double cy, double x, double y)
{
    if (!c || !takePoint(c, cx, cy) || !takePoint(c, x, y))
        return;
    if (!c->curValid) {
        c->curX = x, c->curY = y;
        c->curValid = true;
        return;
    }
    double x0 = c->curX, y0 = c->curY;
    c->curX = x, c->curY = y;
    double ax = x0 - 2 * cx + x, ay = y0 - 2 * cy + y;
    double bend = std::sqrt(ax * ax + ay * ay);
    bool fill = c->fill0 != c->fill1;
    // The curve lies within the hull of its three points.
    const Box &b = c->clip;
    double minX = min3(x0, cx, x), maxX = max3(x0, cx, x);
    double minY = min3(y0, cy, y), maxY = max3(y0, cy, y);
    if (fill) {
        // A curve wholly above, below or right of the clip box changes no
        // pixel; one wholly left of it only carries its winding.
        if (maxY <= b.top || minY >= b.bottom || minX >= b.right) {
            fill = false;
        } else if (maxX <= b.left) {
            addClippedEdge(c, c->fillEdges, x0, y0, x, y, c->fill0, c->fill1);
            fill = false;
        }
    }
    if (!fill && c->pen == 0)
        return;
    // Nearly straight curves stay one chord: their lost area is negligible.
    double steps = bend < 0.05 ? 1.0 : std::ceil(0.5 + std::sqrt(0.25 + bend / (6 * kTolerance)));
    int n = steps < 1 ? 1 : (steps > kMaxCurveSegments ? kMaxCurveSegments : int(steps));
    double shift = n > 1 ? 1.0 / (6.0 * n * (n - 1)) : 0.0;
    // Curves inside the clip box (the usual case) skip the per-chord cut.
    bool inside = fill && minX >= b.left && maxX <= b.right && minY >= b.top && maxY <= b.bottom;
    double px = x0, py = y0;
    double bx = 2 * (cx - x0), by = 2 * (cy - y0);
    double dt = 1.0 / n;
    for (int i = 1; i <= n; ++i) {
        double t = i * dt;
        double qx = i == n ? x : x0 + t * (bx + t * ax) - ax * shift;
        double qy = i == n ? y : y0 + t * (by + t * ay) - ay * shift;
        if (inside) {
            if (py != qy)
                pushEdge(c->fillEdges, px, py, qx, qy, c->fill0, c->fill1);
        } else if (fill) {
            addClippedEdge(c, c->fillEdges, px, py, qx, qy, c->fill0, c->fill1);
        }
        if (c->pen != 0)
            addStrokeSegment(c, px, py, qx, qy);
        px = qx, py = qy;
    }
}

void tovUseBrush(tovCanvas *c, int fill0, int fill1)
{
    if (!c)
        return;
    c->fill0 = fill0;
    c->fill1 = fill1;
}

// A change of pen ends the polyline being stroked.
void tovUsePen(tovCanvas *c, int pen)
{
    if (!c)
        return;
    if (pen != c->pen)
        c->strokeOpen = false;
    c->pen = pen;
}

void tovEndShape(tovCanvas *c)
{
    if (!c)
        return;
    renderPathSet(c);
    c->fillEdges.clear();
    c->strokePoints.clear();
    c->strokeOpen = false;
}

void tovSetPens(tovCanvas *c, tovObject *const *pens, int count)
{
    if (!c)
        return;
    c->pens.clear();
    if (pens && count > 0 && c->pens.resize(size_t(count)))
        std::memcpy(c->pens.data(), pens, sizeof(tovObject *) * size_t(count));
}

void tovSetBrushes(tovCanvas *c, tovObject *const *brushes, int count)
{
    if (!c)
        return;
    c->brushes.clear();
    if (brushes && count > 0 && c->brushes.resize(size_t(count)))
        std::memcpy(c->brushes.data(), brushes, sizeof(tovObject *) * size_t(count));
}

} // extern "C"
