// path.cpp: recording a path set. Lines and flattened quadratic curves become
// fixed-point fill edges and stroke polylines, all independent of the clip
// box so that any box shows the same pixels; hostile coordinates are tamed.
#include "tov/internal.h"

#include <cmath>

using namespace tov;

namespace {

// Most segments one curve is cut into; only absurd curves reach it.
constexpr int kMaxCurveSegments = 1024;

// Rounds to the nearest point of the fixed-point grid. Stroke outlines may
// reach a pen radius beyond the coordinate limit, so the clamp is repeated
// here (NaN lands on the lower limit); the result stays within +-2^30.
int32_t toFixed(double v)
{
    v = v > -kCoordLimit ? (v < kCoordLimit ? v : kCoordLimit) : -kCoordLimit;
    return int32_t(roundToInt(v * kFixedOne));
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
        addEdge(c->fillEdges, x0, y0, x1, y1, c->fill0, c->fill1);
    if (c->pen != 0)
        addStrokeSegment(c, x0, y0, x1, y1);
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

void addEdge(Array<Edge> &out, double x0, double y0, double x1, double y1, int32_t left, int32_t right)
{
    Edge e{toFixed(x0), toFixed(y0), toFixed(x1), toFixed(y1), left, right};
    if (e.y0 != e.y1)
        out.push(e);
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
    bool fill = c->fill0 != c->fill1;
    if (!fill && c->pen == 0)
        return;
    // Curves are flattened the same way whatever the clip box: a chord that
    // depended on the box would move the coverage of pixels inside it.
    // Nearly straight curves stay one chord: their lost area is negligible.
    // n is the fewest chords with n (n - 1) >= bend / (6 tolerance), found by
    // comparing squares for the usual few chords.
    double bend2 = ax * ax + ay * ay;
    int n = 1;
    if (bend2 >= 0.05 * 0.05) {
        n = 2;
        while (n < 16 && bend2 > (6 * kTolerance * n * (n - 1)) * (6 * kTolerance * n * (n - 1)))
            ++n;
        if (n == 16) {
            double steps = 0.5 + std::sqrt(0.25 + std::sqrt(bend2) / (6 * kTolerance));
            n = steps < kMaxCurveSegments ? int(steps) : kMaxCurveSegments;
            n += n < steps; // rounded up
        }
    }
    double shift = n > 1 ? 1.0 / (6.0 * n * (n - 1)) : 0.0;
    double bx = 2 * (cx - x0), by = 2 * (cy - y0);
    double dt = 1.0 / n;
    // Each vertex is rounded to the fixed-point grid once, as the end of one
    // chord and the start of the next.
    double px = x0, py = y0;
    int32_t fx = toFixed(x0), fy = toFixed(y0);
    for (int i = 1; i <= n; ++i) {
        double t = i * dt;
        double qx = i == n ? x : x0 + t * (bx + t * ax) - ax * shift;
        double qy = i == n ? y : y0 + t * (by + t * ay) - ay * shift;
        int32_t gx = toFixed(qx), gy = toFixed(qy);
        if (fill && gy != fy)
            c->fillEdges.push(Edge{fx, fy, gx, gy, c->fill0, c->fill1});
        if (c->pen != 0)
            addStrokeSegment(c, px, py, qx, qy);
        px = qx, py = qy, fx = gx, fy = gy;
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
