// raster.cpp: scan conversion by exact area coverage. Each edge adds, to a
// dense grid of cells over the shape's clipped bounds, the signed area it
// sweeps in each pixel and the cover it passes to the pixels on its right; a
// running sum along each row then gives every pixel's winding area, whose
// magnitude clamped to one is its coverage (the non-zero rule, per style).
#include "tov/internal.h"

#include <cmath>
#include <initializer_list>

using namespace tov;

namespace {

// Cell values are fixed point: one pixel of area or cover is 1 << 16. Sums
// are kept in unsigned arithmetic so that absurd overlaps wrap instead of
// overflowing; well-formed shapes stay far inside the range.
constexpr float kOne = 65536.0f;

// The grid of cells of one band of rows, with the span of columns each row
// has been written in, so the sweep reads only those.
struct Grid {
    uint32_t *cells;
    size_t stride;
    int rows, cols;
    int32_t *rowMin, *rowMax;
};

inline int32_t fixedRound(float v) { return int32_t(v >= 0.0f ? v + 0.5f : v - 0.5f); }

inline void addCell(uint32_t *row, int i, float h, float f)
{
    // The two parts are rounded so that they add up to exactly round(h):
    // every pixel further right then receives the edge's whole cover.
    int32_t total = fixedRound(h * kOne);
    int32_t right = fixedRound(h * f * kOne);
    row[i] += uint32_t(total - right);
    row[i + 1] += uint32_t(right);
}

// Adds a piece of edge lying within one row of cells, from x = xa to xb (in
// cell units, 0 <= x <= cols) with signed height d. Within a cell crossed
// from a to b with height h, the part of the pixel right of the edge is
// h * (1 - ((a + b) / 2 - cell)); the rest of h goes to the next cell, so
// the running sum passes the full h on to every pixel further right.
inline void addRowPiece(Grid &g, int r, float xa, float xb, float d)
{
    if (xa > xb) {
        float t = xa;
        xa = xb;
        xb = t;
    }
    uint32_t *row = g.cells + size_t(r) * g.stride;
    int i = int(xa), j = int(xb);
    if (i == j || (j == i + 1 && xb == float(j))) {
        addCell(row, i, d, (xa + xb) * 0.5f - float(i));
        j = i;
    } else {
        float perX = d / (xb - xa);
        float part = float(i + 1) - xa;
        addCell(row, i, perX * part, part * 0.5f);
        for (int k = i + 1; k < j; ++k)
            addCell(row, k, perX, 0.5f);
        part = xb - float(j);
        if (part > 0.0f)
            addCell(row, j, perX * part, part * 0.5f);
    }
    if (i < g.rowMin[r])
        g.rowMin[r] = i;
    if (j + 1 > g.rowMax[r])
        g.rowMax[r] = j + 1;
}

// Adds one edge (coordinates relative to the grid) with winding weight w.
void accumulate(Grid &g, float x0, float y0, float x1, float y1, float w)
{
    if (y0 == y1)
        return;
    if (y0 > y1) {
        float t = x0;
        x0 = x1, x1 = t;
        t = y0;
        y0 = y1, y1 = t;
        w = -w;
    }
    float rows = float(g.rows);
    if (y1 <= 0.0f || y0 >= rows)
        return;
    float dxdy = (x1 - x0) / (y1 - y0);
    float top = y0 < 0.0f ? 0.0f : y0;
    float bottom = y1 > rows ? rows : y1;
    float fc = float(g.cols);
    int r0 = int(top), r1 = int(std::ceil(bottom));
    if (r1 > g.rows)
        r1 = g.rows;
    for (int r = r0; r < r1; ++r) {
        float ya = float(r) > top ? float(r) : top;
        float yb = float(r + 1) < bottom ? float(r + 1) : bottom;
        if (yb <= ya)
            continue;
        float xa = x0 + (ya - y0) * dxdy, xb = x0 + (yb - y0) * dxdy;
        // Written so that a NaN lands on 0.
        xa = xa > 0.0f ? (xa < fc ? xa : fc) : 0.0f;
        xb = xb > 0.0f ? (xb < fc ? xb : fc) : 0.0f;
        addRowPiece(g, r, xa, xb, (yb - ya) * w);
    }
}

// Coverage of a winding sum: its magnitude, at most one pixel.
inline uint32_t magnitude(uint32_t sum)
{
    int32_t v = int32_t(sum);
    uint32_t a = v < 0 ? 0u - uint32_t(v) : uint32_t(v);
    return a < 65536u ? a : 65536u;
}

inline uint8_t toByte(uint32_t sum) { return uint8_t((magnitude(sum) * 255u + 32768u) >> 16); }

inline float toUnit(uint32_t sum) { return float(magnitude(sum)) * (1.0f / kOne); }

// Grows a scratch array that is kept all zero between uses.
template <class T>
bool zeroedResize(Array<T> &a, size_t n, size_t &zeroed)
{
    if (!a.resize(n > a.size() ? n : a.size()))
        return false;
    if (n > zeroed) {
        std::memset(a.data() + zeroed, 0, (n - zeroed) * sizeof(T));
        zeroed = n;
    }
    return true;
}

// Small shapes land anywhere in a frame buffer much larger than the caches:
// asking for their pixels before scan conversion starts lets those memory
// reads overlap the work instead of stalling the first blend of each row.
void prefetchArea(tovCanvas *c, const Box &area)
{
#if defined(__GNUC__)
    constexpr int kMaxLines = 256;
    int bytes = (area.right - area.left) * c->bytesPerPixel;
    int lines = (bytes / 64 + 2) * (area.bottom - area.top);
    if (lines > kMaxLines)
        return;
    for (int y = area.top; y < area.bottom; ++y) {
        const uint8_t *p = pixelAddress(c, area.left, y);
        for (int b = 0; b < bytes + 64; b += 64)
            __builtin_prefetch(p + (b < bytes ? b : bytes - 1), 1);
    }
#else
    (void)c;
    (void)area;
#endif
}

enum class Sink { Paint, Layer, Mask };

// One pass over a list of edges: the fills of a path set (styles are brush
// indices) or its strokes (styles are pen indices).
struct Pass {
    tovCanvas *c;
    const Array<Edge> &edges;
    const Array<tovObject *> &objects;
    bool strokes;
    Mask *builder; // non-null: everything goes into this mask, colours ignored

    bool draws(int32_t index) const
    {
        if (index <= 0 || size_t(index) >= objects.size() || !objects[size_t(index)])
            return false;
        uint8_t k = objects[size_t(index)]->kind;
        if (strokes)
            return k == kPen;
        // Bitmap fills paint nothing but still shape a mask.
        return k == kSolid || k == kLinear || k == kRadial || (builder && k == kInvisible);
    }
    void run();
    void scanStyle(const StyleInfo &st, const Box &area, int bandTop, int bandBottom, Sink sink, float *layer);
};

inline float minf(float a, float b) { return b < a ? b : a; }
inline float maxf(float a, float b) { return b > a ? b : a; }

void widen(StyleInfo &s, const Edge &e)
{
    s.minX = minf(s.minX, minf(e.x0, e.x1));
    s.maxX = maxf(s.maxX, maxf(e.x0, e.x1));
    s.minY = minf(s.minY, minf(e.y0, e.y1));
    s.maxY = maxf(s.maxY, maxf(e.y0, e.y1));
}

void Pass::scanStyle(const StyleInfo &st, const Box &area, int bandTop, int bandBottom, Sink sink,
                     float *layer)
{
    int y0 = int(std::floor(st.minY)), y1 = int(std::ceil(st.maxY));
    y0 = y0 > bandTop ? y0 : bandTop;
    y1 = y1 < bandBottom ? y1 : bandBottom;
    if (y0 >= y1)
        return;
    int cols = area.right - area.left;
    Grid g{c->cells.data(), size_t(cols) + 2, bandBottom - bandTop, cols, c->rowMin.data(), c->rowMax.data()};
    for (int r = y0 - bandTop; r < y1 - bandTop; ++r)
        g.rowMin[r] = INT32_MAX, g.rowMax[r] = -1;
    const uint8_t *sel = c->selected.data();
    size_t nsel = c->selected.size();
    float fl = float(area.left), ft = float(bandTop), fb = float(bandBottom);
    for (size_t i = 0; i < edges.size(); ++i) {
        const Edge &e = edges[i];
        int w = (size_t(uint32_t(e.left)) < nsel ? sel[e.left] : 0) -
                (size_t(uint32_t(e.right)) < nsel ? sel[e.right] : 0);
        if (w == 0 || (e.y0 <= ft && e.y1 <= ft) || (e.y0 >= fb && e.y1 >= fb))
            continue;
        accumulate(g, e.x0 - fl, e.y0 - ft, e.x1 - fl, e.y1 - ft, float(w));
    }
    // A row whose winding does not return to zero (an edge soup left open)
    // keeps its coverage up to the right of the style's bounds.
    int styleEnd = int(std::floor(st.maxX)) - area.left + 1;
    styleEnd = styleEnd < cols ? styleEnd : cols;
    const tovObject *brush = st.index > 0 ? objects[size_t(st.index)] : nullptr;
    uint8_t *cov = c->coverage.data();
    float *covF = c->coverageF.data();
    for (int y = y0; y < y1; ++y) {
        int r = y - bandTop;
        int lo = g.rowMin[r], hi = g.rowMax[r];
        if (hi < lo)
            continue;
        uint32_t *row = g.cells + size_t(r) * g.stride;
        uint32_t sum = 0;
        int outEnd = hi < cols ? hi + 1 : cols; // pixels lo..outEnd-1
        int x = lo;
        if (sink == Sink::Layer) {
            for (; x < outEnd; ++x) {
                sum += row[x];
                row[x] = 0;
                covF[x - lo] = toUnit(sum);
            }
        } else {
            for (; x < outEnd; ++x) {
                sum += row[x];
                row[x] = 0;
                cov[x - lo] = toByte(sum);
            }
        }
        for (; x <= hi; ++x)
            row[x] = 0;
        if (magnitude(sum) > 128u && outEnd < styleEnd) {
            for (x = outEnd; x < styleEnd; ++x) {
                cov[x - lo] = toByte(sum);
                covF[x - lo] = toUnit(sum);
            }
            outEnd = styleEnd;
        }
        int n = outEnd - lo;
        if (n <= 0)
            continue;
        if (sink == Sink::Layer) {
            addToLayer(c, brush, y, area.left + lo, n, covF,
                       layer + (size_t(r) * size_t(cols) + size_t(lo)) * 4);
            continue;
        }
        int a = 0, b = n;
        while (a < b && !cov[a])
            ++a;
        while (b > a && !cov[b - 1])
            --b;
        if (a == b)
            continue;
        if (sink == Sink::Mask)
            addToBuilder(c, builder, y, area.left + lo + a, b - a, cov + a);
        else if (applyMask(c, 0, y, area.left + lo + a, b - a, cov + a))
            paintRow(c, brush, y, area.left + lo + a, b - a, cov + a);
    }
}

void Pass::run()
{
    if (edges.empty())
        return;
    size_t nobj = objects.size();
    if (!c->selected.resize(nobj) || !c->styleSlot.resize(nobj))
        return;
    std::memset(c->selected.data(), 0, nobj);
    c->styles.clear();
    const float inf = INFINITY;
    StyleInfo all{-1, inf, inf, -inf, -inf};
    if (builder) {
        // Colours do not matter in a mask: all drawing styles count as one,
        // so edges between two of them cancel and cannot leave a seam.
        for (size_t i = 0; i < nobj; ++i)
            c->selected[i] = draws(int32_t(i)) ? 1 : 0;
        for (size_t i = 0; i < edges.size(); ++i) {
            const Edge &e = edges[i];
            if (draws(e.left) != draws(e.right))
                widen(all, e);
        }
        if (all.minX > all.maxX || !c->styles.push(all))
            return;
    } else {
        for (size_t i = 0; i < nobj; ++i)
            c->styleSlot[i] = -1;
        for (size_t i = 0; i < edges.size(); ++i) {
            const Edge &e = edges[i];
            for (int32_t idx : {e.left, e.right}) {
                if (!draws(idx))
                    continue;
                int32_t &slot = c->styleSlot[size_t(idx)];
                if (slot < 0) {
                    if (!c->styles.push(StyleInfo{idx, inf, inf, -inf, -inf}))
                        return;
                    slot = int32_t(c->styles.size() - 1);
                }
                widen(c->styles[size_t(slot)], e);
                widen(all, e);
            }
        }
        if (c->styles.empty())
            return;
        // Strokes of different pens are painted in pen order.
        for (size_t i = 1; i < c->styles.size(); ++i)
            for (size_t k = i; k > 0 && c->styles[k - 1].index > c->styles[k].index; --k) {
                StyleInfo t = c->styles[k];
                c->styles[k] = c->styles[k - 1];
                c->styles[k - 1] = t;
            }
    }
    const Box &clip = c->clip;
    Box area{int(std::floor(all.minX)), int(std::floor(all.minY)), int(std::floor(all.maxX)) + 1,
             int(std::ceil(all.maxY))};
    area.left = area.left > clip.left ? area.left : clip.left;
    area.top = area.top > clip.top ? area.top : clip.top;
    area.right = area.right < clip.right ? area.right : clip.right;
    area.bottom = area.bottom < clip.bottom ? area.bottom : clip.bottom;
    if (area.empty())
        return;
    int cols = area.right - area.left, height = area.bottom - area.top;
    size_t stride = size_t(cols) + 2;
    size_t bandRows = kBandCells / stride;
    int band = bandRows < 1 ? 1 : (bandRows > size_t(height) ? height : int(bandRows));
    // Fills of several styles are summed into one layer and composited once:
    // along an edge shared by two styles their coverages add up to the whole
    // pixel, so no background shows through the seam (two separate
    // source-over blends of half coverage would leave a quarter of it).
    Sink sink = builder ? Sink::Mask : (!strokes && c->styles.size() > 1 ? Sink::Layer : Sink::Paint);
    if (!zeroedResize(c->cells, size_t(band) * stride, c->cellsZeroed) || !c->coverage.reserve(stride) ||
        !c->coverageF.reserve(stride) || !c->rowMin.resize(size_t(band)) || !c->rowMax.resize(size_t(band)))
        return;
    float *layer = nullptr;
    if (sink == Sink::Layer) {
        if (!zeroedResize(c->layer, size_t(band) * size_t(cols) * 4, c->layerZeroed))
            return;
        layer = c->layer.data();
    }
    if (sink == Sink::Paint)
        prefetchArea(c, area);
    for (int top = area.top; top < area.bottom; top += band) {
        int bottom = area.bottom - top > band ? top + band : area.bottom;
        for (size_t s = 0; s < c->styles.size(); ++s) {
            const StyleInfo &st = c->styles[s];
            if (st.index > 0)
                c->selected[size_t(st.index)] = 1;
            scanStyle(st, area, top, bottom, sink, layer);
            if (st.index > 0)
                c->selected[size_t(st.index)] = 0;
            // Each pen is painted on its own, over the ones before it.
        }
        if (layer)
            for (int y = top; y < bottom; ++y)
                compositeLayer(c, y, area.left, cols, layer + size_t(y - top) * size_t(cols) * 4);
    }
}

} // namespace

namespace tov {

void renderPathSet(tovCanvas *c)
{
    Mask *builder = nullptr;
    bool toMask = maskTarget(c, &builder);
    if ((toMask && !builder) || (!toMask && c->maskOverflow > 0) || c->clip.empty())
        return;
    Pass fills{c, c->fillEdges, c->brushes, false, builder};
    fills.run();
    if (c->strokePoints.empty())
        return;
    buildStrokes(c);
    Pass strokes{c, c->strokeEdges, c->pens, true, builder};
    strokes.run();
}

} // namespace tov
