// render.cpp: fills and strokes one recorded path set. A pass takes a list
// of edges, finds the styles that draw and the pixels their edges can
// reach inside the clip (and the open mask), and scans them in bands of rows
// whose cells stay in cache, each edge visiting only the bands it crosses:
// edges of one style (or all styles of a mask, or one pen's outlines) into
// the dense grid, edges between several fills into sparse cells. The choice
// and every cell depend on the shape alone, never on the clip box.
#include "tov/internal.h"

#include <initializer_list>

namespace tov {

namespace {

constexpr int kNoSlot = 0;
// Drawing styles of one compound path set beyond this many draw nothing.
constexpr size_t kMaxSlots = 65535;

inline int pixelFloor(int32_t v) { return v >> kFixedShift; }
inline int pixelCeil(int32_t v) { return int((int64_t(v) + kFixedOne - 1) >> kFixedShift); }

struct Bounds {
    int32_t minX = INT32_MAX, minY = INT32_MAX, maxX = INT32_MIN, maxY = INT32_MIN;
    void add(const Edge &e)
    {
        int32_t lx = e.x0 < e.x1 ? e.x0 : e.x1, hx = e.x0 < e.x1 ? e.x1 : e.x0;
        int32_t ly = e.y0 < e.y1 ? e.y0 : e.y1, hy = e.y0 < e.y1 ? e.y1 : e.y0;
        minX = lx < minX ? lx : minX, maxX = hx > maxX ? hx : maxX;
        minY = ly < minY ? ly : minY, maxY = hy > maxY ? hy : maxY;
    }
    bool empty() const { return minX > maxX; }
    // The pixels the edges reach: rows they cross, columns from their left
    // to the column of their right end (a row left open ends there).
    Box pixels() const { return Box{pixelFloor(minX), pixelFloor(minY), pixelFloor(maxX) + 1, pixelCeil(maxY)}; }
};

// Whether a style index names an object that draws: fills paint with solid
// colours and gradients (bitmap fills paint nothing, but still shape a
// mask), strokes with pens.
bool draws(const Array<tovObject *> &objects, int32_t index, bool mask, bool pens)
{
    if (index <= 0 || size_t(index) >= objects.size() || !objects[size_t(index)])
        return false;
    uint8_t k = objects[size_t(index)]->kind;
    if (pens)
        return k == kPen;
    return k == kSolid || k == kLinear || k == kRadial || (mask && k == kInvisible);
}

inline int32_t weightOf(const Array<int8_t> &weight, int32_t index)
{
    return size_t(uint32_t(index)) < weight.size() ? weight[size_t(index)] : 0;
}

// Edges [0, count) of a list sorted into bands of `band` rows of the area by
// the band of their top row (c->edgeOrder, c->bandCount as offsets); edges
// with no weight or outside the area's rows are left out.
template <class Keep>
bool sortIntoBands(tovCanvas *c, const Edge *edges, size_t count, const Box &area, int band, int bands, Keep keep)
{
    if (!c->bandCount.resize(size_t(bands) + 1) || !c->edgeOrder.resize(count))
        return false;
    uint32_t *counts = c->bandCount.data();
    std::memset(counts, 0, sizeof(uint32_t) * (size_t(bands) + 1));
    auto bandOf = [&](const Edge &e) {
        int top = pixelFloor(e.y0 < e.y1 ? e.y0 : e.y1), bottom = pixelCeil(e.y0 < e.y1 ? e.y1 : e.y0);
        if (!keep(e) || bottom <= area.top || top >= area.bottom)
            return -1;
        return top > area.top ? (top - area.top) / band : 0;
    };
    for (size_t i = 0; i < count; ++i) {
        int b = bandOf(edges[i]);
        if (b >= 0)
            ++counts[b + 1];
    }
    for (int b = 0; b < bands; ++b)
        counts[b + 1] += counts[b];
    // counts[b] is now where band b's edges start; fill, then shift back.
    for (size_t i = 0; i < count; ++i) {
        int b = bandOf(edges[i]);
        if (b >= 0)
            c->edgeOrder[counts[b]++] = uint32_t(i);
    }
    for (int b = bands; b > 0; --b)
        counts[b] = counts[b - 1];
    counts[0] = 0;
    return true;
}

// Scans edges [0, count) over the area band by band: `add` puts an edge into
// the band (rows relative to its top), `sweep` paints the band.
template <class Keep, class Add, class Sweep>
void scanBands(tovCanvas *c, const Edge *edges, size_t count, const Box &area, int band, Keep keep, Add add,
               Sweep sweep)
{
    int height = area.bottom - area.top;
    int bands = (height + band - 1) / band;
    if (bands == 1) {
        for (size_t i = 0; i < count; ++i)
            if (keep(edges[i]))
                add(edges[i], area.top, height);
        sweep(area.top, height);
        return;
    }
    if (!sortIntoBands(c, edges, count, area, band, bands, keep))
        return;
    c->active.clear();
    const uint32_t *starts = c->bandCount.data();
    for (int b = 0; b < bands; ++b) {
        int top = area.top + b * band, rows = area.bottom - top < band ? area.bottom - top : band;
        for (uint32_t k = starts[b]; k < starts[b + 1]; ++k)
            if (!c->active.push(c->edgeOrder[k]))
                return;
        // Edges that end in this band leave the active list after it.
        size_t kept = 0;
        for (size_t k = 0; k < c->active.size(); ++k) {
            const Edge &e = edges[c->active[k]];
            add(e, top, rows);
            if (pixelCeil(e.y0 < e.y1 ? e.y1 : e.y0) > top + rows)
                c->active[kept++] = c->active[k];
        }
        c->active.resize(kept);
        sweep(top, rows);
    }
}

// Rows of a band for an area `cols` wide: as many as keep the band's cells
// within kBandCells, at least one.
int bandRows(const Box &area)
{
    size_t cols = size_t(area.right - area.left);
    size_t rows = kBandCells / (cols ? cols : 1);
    int height = area.bottom - area.top;
    return rows < 1 ? 1 : (rows > size_t(height) ? height : int(rows));
}

// Span scratch for rows `cols` wide.
bool reserveSpans(tovCanvas *c, size_t cols)
{
    return c->coverage.reserve(cols) && c->maskedCoverage.reserve(cols) && c->colors.reserve(cols) &&
           c->row.reserve(cols);
}

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

// One style (weights in c->weight) over edges [0, count) into the dense
// grid; `brush` paints it (null for a mask).
void singlePass(tovCanvas *c, const Target &t, const Box &clip, const Edge *edges, size_t count,
                const tovObject *brush)
{
    const Array<int8_t> &weight = c->weight;
    auto keep = [&weight](const Edge &e) { return weightOf(weight, e.left) != weightOf(weight, e.right); };
    Bounds bounds;
    for (size_t i = 0; i < count; ++i)
        if (keep(edges[i]))
            bounds.add(edges[i]);
    if (bounds.empty())
        return;
    // Cells left of the clip are folded into its first column and those
    // right of it dropped, so the grid covers only the bounds inside it.
    Box area = intersect(bounds.pixels(), clip);
    if (area.empty())
        return;
    int band = bandRows(area);
    size_t cols = size_t(area.right - area.left), words = (cols + 63) / 64;
    if (!zeroedResize(c->cells, size_t(band) * cols, c->cellsZeroed) ||
        !zeroedResize(c->touched, size_t(band) * words, c->touchedZeroed) || !reserveSpans(c, cols))
        return;
    Grid g{c->cells.data(), c->touched.data(), cols, words, band, int(cols)};
    int64_t fl = int64_t(area.left) * kFixedOne;
    scanBands(
        c, edges, count, area, band, keep,
        [&](const Edge &e, int top, int rows) {
            int64_t ft = int64_t(top) * kFixedOne;
            g.rows = rows;
            accumulateDense(g, e.x0 - fl, e.y0 - ft, e.x1 - fl, e.y1 - ft,
                            weightOf(weight, e.left) - weightOf(weight, e.right));
        },
        [&](int top, int rows) {
            g.rows = rows;
            sweepDense(t, brush, g, area.left, top, int(cols));
        });
}

// Fills of several styles over the recorded fill edges into sparse cells.
void compoundPass(tovCanvas *c, const Target &t, const Box &clip)
{
    const Edge *edges = c->fillEdges.data();
    size_t count = c->fillEdges.size(), nslots = c->slots.size();
    const uint16_t *slotOf = c->slotOf.data();
    size_t nbrushes = c->slotOf.size();
    auto slot = [slotOf, nbrushes](int32_t index) {
        return size_t(uint32_t(index)) < nbrushes ? slotOf[size_t(index)] : uint16_t(kNoSlot);
    };
    auto keep = [&slot](const Edge &e) { return slot(e.left) != slot(e.right); };
    Bounds all;
    // Each slot's right end, for rows left open.
    for (size_t i = 0; i < nslots; ++i)
        c->slots[i].end = INT32_MIN;
    for (size_t i = 0; i < count; ++i) {
        const Edge &e = edges[i];
        if (!keep(e))
            continue;
        all.add(e);
        int32_t right = pixelFloor(e.x0 > e.x1 ? e.x0 : e.x1) + 1;
        for (uint16_t s : {slot(e.left), slot(e.right)})
            if (s != kNoSlot && right > c->slots[s].end)
                c->slots[s].end = right;
    }
    if (all.empty())
        return;
    Box area = intersect(all.pixels(), clip);
    if (area.empty())
        return;
    for (size_t i = 1; i < nslots; ++i)
        c->slots[i].end -= area.left;
    int band = bandRows(area);
    size_t cols = size_t(area.right - area.left);
    if (!reserveSpans(c, cols) || !c->columnHead.resize(cols) ||
        !zeroedResize(c->columnFlags, (cols + 63) / 64, c->columnFlagsZeroed) || !c->wind.resize(nslots) ||
        !c->value.resize(nslots) ||
        !c->stamp.resize(nslots) || !c->activePos.resize(nslots) || !c->activeSlots.resize(nslots) ||
        !c->touchedSlots.resize(nslots))
        return;
    for (size_t i = 0; i < nslots; ++i)
        c->wind[i] = 0, c->stamp[i] = 0, c->activePos[i] = -1;
    c->generation = 0;
    while (c->rowCells.size() < size_t(band)) {
        Array<Cell> *a = new (std::nothrow) Array<Cell>();
        if (!a || !c->rowCells.push(a)) {
            delete a;
            return;
        }
    }
    SparseBand b{c->rowCells.data(), band, int(cols)};
    int64_t fl = int64_t(area.left) * kFixedOne;
    bool ok = true;
    scanBands(
        c, edges, count, area, band, keep,
        [&](const Edge &e, int top, int rows) {
            int64_t ft = int64_t(top) * kFixedOne;
            b.count = rows;
            ok = accumulateSparse(b, e.x0 - fl, e.y0 - ft, e.x1 - fl, e.y1 - ft, slot(e.left), slot(e.right)) && ok;
        },
        [&](int top, int rows) {
            b.count = rows;
            if (ok)
                sweepSparse(t, b, area.left, top, int(cols));
            for (int r = 0; r < rows; ++r)
                b.rows[r]->clear();
        });
}

// Counts the fills that draw on the edges of the path set and numbers them
// (c->slotOf, c->slots); returns how many there are, the last one in *only.
size_t numberFills(tovCanvas *c, int32_t *only)
{
    size_t nbrushes = c->brushes.size();
    if (!c->slotOf.resize(nbrushes) || !c->slots.resize(1))
        return 0;
    for (size_t i = 0; i < nbrushes; ++i)
        c->slotOf[i] = kNoSlot;
    c->slots[0] = StyleSlot{nullptr, 0};
    int32_t runLeft = -1, runRight = -1;
    for (size_t i = 0; i < c->fillEdges.size(); ++i) {
        const Edge &e = c->fillEdges[i];
        if (e.left == runLeft && e.right == runRight)
            continue; // runs of edges share their pair of fills
        runLeft = e.left, runRight = e.right;
        for (int32_t index : {e.left, e.right}) {
            if (!draws(c->brushes, index, false, false) || c->slotOf[size_t(index)] != kNoSlot ||
                c->slots.size() > kMaxSlots)
                continue;
            if (!c->slots.push(StyleSlot{c->brushes[size_t(index)], 0}))
                return 0;
            c->slotOf[size_t(index)] = uint16_t(c->slots.size() - 1);
            *only = index;
        }
    }
    return c->slots.size() - 1;
}

// Weights for a one-style pass: 1 for the styles in [from, to] that draw.
bool setWeights(tovCanvas *c, const Array<tovObject *> &objects, bool mask, bool pens, int32_t from, int32_t to)
{
    size_t n = objects.size();
    if (!c->weight.resize(n))
        return false;
    for (size_t i = 0; i < n; ++i)
        c->weight[i] = int8_t(int32_t(i) >= from && int32_t(i) <= to && draws(objects, int32_t(i), mask, pens));
    return true;
}

void fillPass(tovCanvas *c, const Target &t, const Box &clip)
{
    const Edge *edges = c->fillEdges.data();
    size_t count = c->fillEdges.size();
    if (!count)
        return;
    if (t.builder) {
        // Colours do not matter in a mask: all drawing styles count as one,
        // so edges between two of them cancel and cannot leave a seam.
        if (setWeights(c, c->brushes, true, false, 0, INT32_MAX))
            singlePass(c, t, clip, edges, count, nullptr);
        return;
    }
    int32_t only = 0;
    size_t fills = numberFills(c, &only);
    if (fills == 1) {
        if (setWeights(c, c->brushes, false, false, only, only))
            singlePass(c, t, clip, edges, count, c->brushes[size_t(only)]);
    } else if (fills > 1) {
        compoundPass(c, t, clip);
    }
}

// Each pen's outlines (grouped by pen in index order) on their own, so that
// a pen's strokes are the union of its outlines and later pens paint over
// earlier ones.
void strokePass(tovCanvas *c, const Target &t, const Box &clip)
{
    const Edge *edges = c->strokeEdges.data();
    size_t count = c->strokeEdges.size();
    for (size_t i = 0; i < count;) {
        size_t j = i + 1;
        int32_t pen = edges[i].left;
        while (j < count && edges[j].left == pen)
            ++j;
        if (setWeights(c, c->pens, t.builder != nullptr, true, pen, pen))
            singlePass(c, t, clip, edges + i, j - i, t.builder ? nullptr : c->pens[size_t(pen)]);
        i = j;
    }
}

} // namespace

void renderPathSet(tovCanvas *c)
{
    Mask *builder = nullptr;
    bool toMask = maskTarget(c, &builder);
    if (toMask && !builder)
        return;
    const Mask *mask;
    Box limit;
    if (!drawingMask(c, toMask ? builder->baseDepth : 0, &mask, &limit))
        return;
    Box clip = intersect(c->clip, limit);
    if (toMask)
        clip = intersect(clip, builder->box);
    if (clip.empty())
        return;
    Target t{c, builder, mask};
    fillPass(c, t, clip);
    if (c->strokePoints.empty())
        return;
    buildStrokes(c, clip);
    strokePass(c, t, clip);
}

} // namespace tov
