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

// Cell values are fixed point: one pixel of area or cover is 255 << 8, so a
// coverage byte is the rounded top byte of a sum. Sums
// are kept in unsigned arithmetic so that absurd overlaps wrap instead of
// overflowing; well-formed shapes stay far inside the range.
constexpr uint32_t kFull = 255u << 8;
constexpr float kOne = float(kFull);

// The grid of cells of one band of rows, with the span of columns each row
// has been written in, so the sweep reads only those.
struct Grid {
    uint32_t *cells;
    size_t stride;
    int rows, cols;
    int32_t *rowMin, *rowMax;
};

// Rounds to the nearest integer (|v| < 2^22): adding 1.5 * 2^23 leaves the
// rounded value in the low bits of the float's mantissa.
inline int32_t fixedRound(float v)
{
    float t = v + 12582912.0f;
    int32_t bits;
    std::memcpy(&bits, &t, sizeof bits);
    return bits - 0x4B400000;
}

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
        addCell(row, i, perX * part, 1.0f - part * 0.5f);
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
    int r0 = int(top), r1 = int(bottom);
    r1 += float(r1) < bottom;
    if (r1 > g.rows)
        r1 = g.rows;
    // Each row's piece starts where the previous one ended.
    float ya = top;
    float xa = x0 + (top - y0) * dxdy;
    xa = xa > 0.0f ? (xa < fc ? xa : fc) : 0.0f; // written so that NaN lands on 0
    for (int r = r0; r < r1; ++r) {
        float yb = float(r + 1) < bottom ? float(r + 1) : bottom;
        float xb = x0 + (yb - y0) * dxdy;
        xb = xb > 0.0f ? (xb < fc ? xb : fc) : 0.0f;
        if (yb > ya)
            addRowPiece(g, r, xa, xb, (yb - ya) * w);
        xa = xb, ya = yb;
    }
}

// Coverage of a winding sum: its magnitude, at most one pixel.
inline uint32_t magnitude(uint32_t sum)
{
    int32_t v = int32_t(sum);
    uint32_t a = v < 0 ? 0u - uint32_t(v) : uint32_t(v);
    return a < kFull ? a : kFull;
}

inline uint8_t toByte(uint32_t sum) { return uint8_t((magnitude(sum) + 128u) >> 8); }

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

enum class Sink { Paint, Layer, Mask };

// One pass over a list of edges: the fills of a path set (styles are brush
// indices) or its strokes (styles are pen indices).
struct Pass {
    tovCanvas *c;
    const EdgeList &list;
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
    const Array<Edge> &edges() const { return list.edges; }
    bool listStyleEdges();
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

// A solid colour drawn into the native format with no mask open is blended
// straight from the running sum, without a coverage row in between.
bool directPaint(const tovCanvas *c, const tovObject *brush)
{
    return (brush->kind == kPen || brush->kind == kSolid) && c->buffer.format == 280 && c->maskDepth == 0 &&
           c->maskOverflow == 0 && reinterpret_cast<uintptr_t>(c->pixels) % alignof(uint32_t) == 0 &&
           c->stride % intptr_t(alignof(uint32_t)) == 0;
}

// Sweeps cells from..to-1 of a row into dst (indexed like the cells),
// clearing them; returns the running sum.
uint32_t sweepSolid(uint32_t *row, uint32_t *dst, int from, int to, uint32_t sum, const tovObject *brush)
{
    uint32_t s = brush->color;
    unsigned keep = 255u - (s >> 24);
    for (int x = from; x < to; ++x) {
        sum += row[x];
        row[x] = 0;
        if (!sum)
            continue;
        unsigned a = toByte(sum);
        if (a != 255) {
            if (a)
                dst[x] = over(scalePixel(s, a), dst[x]);
            continue;
        }
        // A run of full coverage lasts while no edge adds to the sum.
        int end = x + 1;
        while (end < to && !row[end])
            ++end;
        if (keep)
            for (int k = x; k < end; ++k)
                dst[k] = s + scalePixel(dst[k], keep);
        else
            for (int k = x; k < end; ++k)
                dst[k] = s;
        x = end - 1;
    }
    return sum;
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
    // With several styles each visits the list of its own edges.
    bool listed = c->styles.size() > 1;
    size_t count = listed ? st.count : edges().size();
    const uint32_t *which = c->styleEdges.data() + st.first;
    for (size_t i = 0; i < count; ++i) {
        const Edge &e = edges()[listed ? which[i] : i];
        int w = (size_t(uint32_t(e.left)) < nsel ? sel[e.left] : 0) -
                (size_t(uint32_t(e.right)) < nsel ? sel[e.right] : 0);
        if (w == 0 || (e.y0 <= ft && e.y1 <= ft) || (e.y0 >= fb && e.y1 >= fb))
            continue;
        accumulate(g, e.x0 - fl, e.y0 - ft, e.x1 - fl, e.y1 - ft, float(w));
    }
    // A row whose winding does not return to zero (an edge soup left open)
    // keeps its coverage up to the right of the style's bounds.
    int styleEnd = list.reachesRight ? cols : int(std::floor(st.maxX)) - area.left + 1;
    styleEnd = styleEnd < cols ? styleEnd : cols;
    const tovObject *brush = st.index > 0 ? objects[size_t(st.index)] : nullptr;
    uint8_t *cov = c->coverage.data();
    float *covF = c->coverageF.data();
    bool direct = sink == Sink::Paint && directPaint(c, brush);
    for (int y = y0; y < y1; ++y) {
        int r = y - bandTop;
        int lo = g.rowMin[r], hi = g.rowMax[r];
        if (hi < lo)
            continue;
        uint32_t *row = g.cells + size_t(r) * g.stride;
        uint32_t sum = 0;
        int outEnd = hi < cols ? hi + 1 : cols; // pixels lo..outEnd-1
        int x = lo;
        if (direct) {
            uint32_t *dst = reinterpret_cast<uint32_t *>(pixelAddress(c, area.left, y));
            sum = sweepSolid(row, dst, lo, outEnd, sum, brush);
            for (x = outEnd; x <= hi; ++x)
                row[x] = 0;
            if (magnitude(sum) > 128u && outEnd < styleEnd)
                sweepSolid(row, dst, outEnd, styleEnd, sum, brush);
            continue;
        }
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

// Groups edge indices by style (an edge between two styles is in both).
bool Pass::listStyleEdges()
{
    size_t nstyles = c->styles.size(), nedges = edges().size();
    for (size_t s = 0; s < nstyles; ++s)
        c->styles[s].count = 0;
    for (size_t i = 0; i < 2 * nedges; ++i)
        if (c->edgeSlots[i] >= 0)
            ++c->styles[size_t(c->edgeSlots[i])].count;
    uint32_t total = 0;
    for (size_t s = 0; s < nstyles; ++s) {
        c->styles[s].first = total;
        total += c->styles[s].count;
        c->styles[s].count = 0;
    }
    if (!c->styleEdges.resize(total))
        return false;
    for (size_t i = 0; i < 2 * nedges; ++i) {
        int32_t slot = c->edgeSlots[i];
        if (slot >= 0) {
            StyleInfo &st = c->styles[size_t(slot)];
            c->styleEdges[st.first + st.count++] = uint32_t(i / 2);
        }
    }
    return true;
}

void Pass::run()
{
    if (edges().empty())
        return;
    size_t nobj = objects.size();
    if (!c->selected.resize(nobj) || !c->styleSlot.resize(nobj))
        return;
    std::memset(c->selected.data(), 0, nobj);
    c->styles.clear();
    const float inf = INFINITY;
    StyleInfo all{-1, inf, inf, -inf, -inf, 0, 0};
    if (builder) {
        // Colours do not matter in a mask: all drawing styles count as one,
        // so edges between two of them cancel and cannot leave a seam.
        for (size_t i = 0; i < nobj; ++i)
            c->selected[i] = draws(int32_t(i)) ? 1 : 0;
        for (size_t i = 0; i < edges().size(); ++i) {
            const Edge &e = edges()[i];
            if (draws(e.left) != draws(e.right))
                widen(all, e);
        }
        if (all.minX > all.maxX || !c->styles.push(all))
            return;
    } else {
        for (size_t i = 0; i < nobj; ++i)
            c->styleSlot[i] = -1;
        // Runs of edges share their pair of styles: the slots are looked up
        // once per run. Each edge's slots are kept to list the edges of each
        // style, so a style's scan visits only its own edges.
        if (!c->edgeSlots.resize(edges().size() * 2))
            return;
        int32_t runLeft = 0, runRight = 0, slots[2] = {-1, -1};
        for (size_t i = 0; i < edges().size(); ++i) {
            const Edge &e = edges()[i];
            if (i == 0 || e.left != runLeft || e.right != runRight) {
                runLeft = e.left, runRight = e.right;
                int k = 0;
                for (int32_t idx : {e.left, e.right}) {
                    slots[k] = -1;
                    if (draws(idx)) {
                        int32_t &slot = c->styleSlot[size_t(idx)];
                        if (slot < 0) {
                            if (!c->styles.push(StyleInfo{idx, inf, inf, -inf, -inf, 0, 0}))
                                return;
                            slot = int32_t(c->styles.size() - 1);
                        }
                        slots[k] = slot;
                    }
                    ++k;
                }
            }
            for (int32_t slot : slots)
                if (slot >= 0)
                    widen(c->styles[size_t(slot)], e);
            c->edgeSlots[2 * i] = slots[0];
            c->edgeSlots[2 * i + 1] = slots[1];
        }
        if (c->styles.empty() || (c->styles.size() > 1 && !listStyleEdges()))
            return;
        for (size_t i = 0; i < c->styles.size(); ++i) {
            const StyleInfo &st = c->styles[i];
            all.minX = minf(all.minX, st.minX), all.maxX = maxf(all.maxX, st.maxX);
            all.minY = minf(all.minY, st.minY), all.maxY = maxf(all.maxY, st.maxY);
        }
        // Strokes of different pens are painted in pen order.
        for (size_t i = 1; strokes && i < c->styles.size(); ++i)
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
    area.right = area.right < clip.right && !list.reachesRight ? area.right : clip.right;
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
    for (int top = area.top; top < area.bottom; top += band) {
        int bottom = area.bottom - top > band ? top + band : area.bottom;
        for (size_t s = 0; s < c->styles.size(); ++s) {
            const StyleInfo &st = c->styles[s];
            if (st.index > 0)
                c->selected[size_t(st.index)] = 1;
            scanStyle(st, area, top, bottom, sink, layer);
            if (st.index > 0)
                c->selected[size_t(st.index)] = 0;
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
