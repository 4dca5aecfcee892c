// raster.cpp: scan conversion by exact area coverage. Each edge adds, to a
// dense grid of cells over the shape's clipped bounds, the signed area it
// sweeps in each pixel and the cover it passes to the pixels on its right; a
// running sum along each row then gives every pixel's winding area, whose
// magnitude clamped to one is its coverage (the non-zero rule, per style).
// Edges are fixed point; where an edge crosses each row side and how much of
// its height it uses up at each cell side are computed for that side alone
// from the edge's own ends, and cells are summed in integers, so what a pixel
// gets never depends on which other pixels the clip box lets through.
#include "tov/internal.h"

#include <initializer_list>

using namespace tov;

namespace {

constexpr int64_t kOne = kFixedOne;
// A piece of edge of height h (fixed point) adds 2 kOne h to its cells in
// all, so a pixel's full area is 2 kOne^2 = 2^17. Sums are kept in unsigned
// arithmetic so that absurd overlaps wrap instead of overflowing; well-formed
// shapes stay far inside the range.
constexpr int kFullShift = 2 * kFixedShift + 1;
constexpr uint32_t kFull = 1u << kFullShift;

// The grid of cells of one band of rows for one style, with the span of
// columns each row has been written in, so the sweep reads only those.
// Column 0 is the clip box's left side or right of it: cells further left
// are folded into it. Cells at or right of `cols` are dropped.
struct Grid {
    uint32_t *cells;
    size_t stride;
    int rows, cols;
    int32_t *rowMin, *rowMax;
};

inline void touch(Grid &g, int r, int64_t lo, int64_t hi)
{
    if (lo < g.rowMin[r])
        g.rowMin[r] = int32_t(lo);
    if (hi > g.rowMax[r])
        g.rowMax[r] = int32_t(hi);
}

// Adds the piece of an edge lying within row r, from x = xa to xb (fixed
// point relative to the grid), of height h (0 < h <= kOne) and weight w. In
// a cell entered at x fraction fa and left at fb with height hk, the part of
// the pixel right of the edge is hk (2 kOne - fa - fb) / (2 kOne) of it; the
// rest, hk (fa + fb), goes to the next cell so that the running sum passes
// the piece's whole cover on to every pixel further right.
void addPiece(Grid &g, int r, int64_t xa, int64_t xb, int64_t h, int32_t w)
{
    int64_t xl = xa < xb ? xa : xb, xr = xa < xb ? xb : xa;
    int64_t end = int64_t(g.cols) << kFixedShift;
    if (xl >= end)
        return;
    uint32_t *row = g.cells + size_t(r) * g.stride;
    if (xr <= 0) {
        // Wholly left of the grid: only its cover matters.
        row[0] += uint32_t(int32_t(2 * kOne * h) * w);
        touch(g, r, 0, 0);
        return;
    }
    int64_t i = xl >> kFixedShift;       // first cell
    // Last cell: a slanted piece ending on a cell's side ends in the cell
    // before it (a vertical one on a side lies in the cell right of it).
    int64_t j = xr > xl ? (xr - 1) >> kFixedShift : i;
    int64_t last = j < g.cols - 1 ? j : g.cols - 1;
    if (i == j) {
        int64_t f = xa + xb - 2 * (i << kFixedShift);
        row[i] += uint32_t(int32_t(h * (2 * kOne - f)) * w);
        if (i + 1 < g.cols)
            row[i + 1] += uint32_t(int32_t(h * f) * w);
        touch(g, r, i, last + 1 < g.cols ? last + 1 : last);
        return;
    }
    // The height used up from the left end to a cell side at x is
    // (x - xl) h / dx rounded, computed for each side on its own from the
    // piece's ends (one rounding of the slope, one of the product, both
    // monotonic), so every cell gets the same share whichever cell the walk
    // starts from.
    double slope = double(h) / double(xr - xl);
    auto usedAt = [xl, h, slope](int64_t x) {
        int64_t t = roundToInt(double(x - xl) * slope);
        return t < h ? t : h;
    };
    int64_t k = i, used = 0;
    if (i < 0) {
        // The cells left of the grid give their whole cover to column 0.
        used = usedAt(0);
        row[0] += uint32_t(int32_t(2 * kOne * used) * w);
        k = 0;
    }
    for (; k <= last; ++k) {
        int64_t side = k << kFixedShift;
        int64_t fa = xl > side ? xl - side : 0;
        int64_t fb = k == j ? xr - side : kOne;
        int64_t upTo = k == j ? h : usedAt(side + kOne);
        int64_t hk = upTo - used;
        row[k] += uint32_t(int32_t(hk * (2 * kOne - fa - fb)) * w);
        if (k + 1 < g.cols)
            row[k + 1] += uint32_t(int32_t(hk * (fa + fb)) * w);
        used = upTo;
    }
    touch(g, r, i < 0 ? 0 : i, last + 1 < g.cols ? last + 1 : last);
}

// The usual piece, within one cell whose right neighbour is in the grid, is
// added here (with the same arithmetic as addPiece); others go there.
inline void addPieceFast(Grid &g, int r, int64_t xa, int64_t xb, int64_t h, int32_t w)
{
    int64_t i = (xa < xb ? xa : xb) >> kFixedShift, xr = xa < xb ? xb : xa;
    if (i >= 0 && i + 1 < g.cols && xr <= ((i + 1) << kFixedShift)) {
        int32_t f = int32_t(xa + xb - 2 * (i << kFixedShift));
        int32_t hw = int32_t(h) * w;
        uint32_t *row = g.cells + size_t(r) * g.stride;
        row[i] += uint32_t(hw * (2 * kFixedOne - f));
        row[i + 1] += uint32_t(hw * f);
        touch(g, r, i, i + 1);
        return;
    }
    addPiece(g, r, xa, xb, h, w);
}

// Adds one edge (fixed point relative to the grid) with winding weight w.
// Rows outside the grid are skipped arithmetically: the x where the edge
// crosses a row's side is computed for each side on its own from the edge's
// ends, so a row's piece is the same whichever row the walk starts from.
void accumulate(Grid &g, int64_t x0, int64_t y0, int64_t x1, int64_t y1, int32_t w)
{
    if (y0 == y1)
        return;
    if (y0 > y1) {
        int64_t t = x0;
        x0 = x1, x1 = t;
        t = y0;
        y0 = y1, y1 = t;
        w = -w;
    }
    int64_t bottom = int64_t(g.rows) << kFixedShift;
    if (y1 <= 0 || y0 >= bottom || (x0 < x1 ? x0 : x1) >= int64_t(g.cols) << kFixedShift)
        return;
    int r = y0 > 0 ? int(y0 >> kFixedShift) : 0;
    int rEnd = y1 < bottom ? int((y1 + kOne - 1) >> kFixedShift) : g.rows;
    int64_t ya = y0 > (int64_t(r) << kFixedShift) ? y0 : int64_t(r) << kFixedShift;
    if ((x0 > x1 ? x0 : x1) <= 0) {
        // Wholly left of the grid: each row's piece gives column 0 its cover.
        for (; r < rEnd; ++r) {
            int64_t yb = int64_t(r + 1) << kFixedShift;
            yb = yb < y1 ? yb : y1;
            g.cells[size_t(r) * g.stride] += uint32_t(int32_t(2 * kOne * (yb - ya)) * w);
            touch(g, r, 0, 0);
            ya = yb;
        }
        return;
    }
    // x at a row side, rounded to the fixed-point grid (|x - x0| <= 2^31).
    double slope = double(x1 - x0) / double(y1 - y0);
    auto xAt = [x0, y0, slope](int64_t y) { return x0 + roundToInt(double(y - y0) * slope); };
    int64_t xa = ya == y0 ? x0 : xAt(ya);
    for (; r < rEnd; ++r) {
        int64_t yb = int64_t(r + 1) << kFixedShift;
        int64_t xb = yb < y1 ? xAt(yb) : x1;
        yb = yb < y1 ? yb : y1;
        addPieceFast(g, r, xa, xb, yb - ya, w);
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

inline uint8_t toByte(uint32_t sum) { return uint8_t((magnitude(sum) * 255u + kFull / 2) >> kFullShift); }

inline float toUnit(uint32_t sum) { return float(magnitude(sum)) * (1.0f / float(kFull)); }

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
    const Array<Edge> &list;
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
    const Array<Edge> &edges() const { return list; }
    bool listStyleEdges();
    void run();
    void scanStyle(const StyleInfo &st, const Box &area, int bandTop, int bandBottom, Sink sink, float *layer);
};

inline int32_t mini(int32_t a, int32_t b) { return b < a ? b : a; }
inline int32_t maxi(int32_t a, int32_t b) { return b > a ? b : a; }

void widen(StyleInfo &s, const Edge &e)
{
    s.minX = mini(s.minX, mini(e.x0, e.x1));
    s.maxX = maxi(s.maxX, maxi(e.x0, e.x1));
    s.minY = mini(s.minY, mini(e.y0, e.y1));
    s.maxY = maxi(s.maxY, maxi(e.y0, e.y1));
}

// Pixel rows and columns a fixed-point span touches.
inline int pixelFloor(int32_t v) { return v >> kFixedShift; }
inline int pixelCeil(int32_t v) { return int((int64_t(v) + kOne - 1) >> kFixedShift); }

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
    int y0 = pixelFloor(st.minY), y1 = pixelCeil(st.maxY);
    y0 = y0 > bandTop ? y0 : bandTop;
    y1 = y1 < bandBottom ? y1 : bandBottom;
    // A row whose winding does not return to zero (an edge soup left open,
    // or a shape going on past the clip box's right side) keeps its coverage
    // up to the right of the style's bounds, which count every edge of the
    // style wherever it lies, so the result does not depend on the clip box.
    int cols = area.right - area.left;
    int styleEnd = pixelFloor(st.maxX) + 1 - area.left;
    styleEnd = styleEnd < cols ? styleEnd : cols;
    if (y0 >= y1 || styleEnd <= 0)
        return;
    Grid g{c->cells.data(), size_t(cols) + 2, bandBottom - bandTop, styleEnd, c->rowMin.data(),
           c->rowMax.data()};
    for (int r = y0 - bandTop; r < y1 - bandTop; ++r)
        g.rowMin[r] = INT32_MAX, g.rowMax[r] = -1;
    const uint8_t *sel = c->selected.data();
    size_t nsel = c->selected.size();
    int64_t fl = int64_t(area.left) << kFixedShift, ft = int64_t(bandTop) << kFixedShift;
    int64_t fb = int64_t(bandBottom) << kFixedShift;
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
        accumulate(g, e.x0 - fl, e.y0 - ft, e.x1 - fl, e.y1 - ft, w);
    }
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
        int outEnd = hi + 1; // pixels lo..outEnd-1, every cell written
        int x = lo;
        if (direct) {
            uint32_t *dst = reinterpret_cast<uint32_t *>(pixelAddress(c, area.left, y));
            sum = sweepSolid(row, dst, lo, outEnd, sum, brush);
            if (toByte(sum) && outEnd < styleEnd)
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
        if (toByte(sum) && outEnd < styleEnd) {
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
    StyleInfo all{-1, INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN, 0, 0};
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
                            if (!c->styles.push(StyleInfo{idx, INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN, 0, 0}))
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
            all.minX = mini(all.minX, st.minX), all.maxX = maxi(all.maxX, st.maxX);
            all.minY = mini(all.minY, st.minY), all.maxY = maxi(all.maxY, st.maxY);
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
    // Cells left of the clip box are folded into its first column and those
    // right of it dropped, so the grid covers only the bounds inside the box.
    Box area{pixelFloor(all.minX), pixelFloor(all.minY), pixelFloor(all.maxX) + 1, pixelCeil(all.maxY)};
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
