// cells.cpp: scan conversion by exact area coverage. An edge is cut into one
// piece per pixel row and each piece into the cells (pixels) it crosses; a
// cell gets the piece's cover (its signed height) and its area (twice the
// trapezoid between the piece and the cell's left side, times the height),
// so that a pixel's winding area is the cover of every cell left of it plus
// the cover minus the area of its own cells. Where an edge crosses each row
// side and how much of its height it has used up at each cell side are
// computed for that side alone from the edge's own ends, and cells are summed
// in integers, so what a pixel gets never depends on which rows, columns or
// bands the walk covers: a clip box changes nothing inside it.
#include "tov/internal.h"

namespace tov {

namespace {

constexpr int64_t kOne = kFixedOne;

// Receives the cells of a one-style band: a cell's cover and area become
// two deltas of the dense grid (cover minus area at x, area at x + 1, so a
// running sum along the row gives each pixel's value), each flagged in the
// touched bits so that the sweep visits only those.
struct DenseSink {
    Grid &g;
    int32_t w;
    int rows() const { return g.rows; }
    int cols() const { return g.cols; }
    void mark(uint32_t *, uint64_t *bits, int64_t k) { bits[k >> 6] |= uint64_t(1) << (k & 63); }
    void cell(int r, int64_t k, int64_t h, int64_t f)
    {
        uint32_t *row = g.cells + size_t(r) * g.stride;
        uint64_t *bits = g.touched + size_t(r) * g.words;
        int32_t hw = int32_t(h) * w;
        row[k] += uint32_t(hw * int32_t(2 * kOne - f));
        mark(row, bits, k);
        if (k + 1 < g.cols) {
            row[k + 1] += uint32_t(hw * int32_t(f));
            mark(row, bits, k + 1);
        }
    }
    // Cover of pieces left of the band, given to its first column.
    void fold(int r, int64_t h) { cell(r, 0, h, 0); }
};

// Receives the cells of a compound band as records per row.
struct SparseSink {
    SparseBand &b;
    uint16_t left, right;
    bool ok = true;
    int rows() const { return b.count; }
    int cols() const { return b.cols; }
    void cell(int r, int64_t k, int64_t h, int64_t f)
    {
        ok = b.rows[r]->push(Cell{int32_t(k), int32_t(h), int32_t(h * f), left, right}) && ok;
    }
    void fold(int r, int64_t h) { cell(r, 0, h, 0); }
};

// Adds the piece of an edge lying within row r, from x = xa to xb (fixed
// point relative to the band), of signed height h (|h| <= kOne). In a cell
// entered at x fraction fa and left at fb with height hk, the part of the
// pixel right of the edge is hk (2 kOne - fa - fb) / (2 kOne) of it; the
// rest, hk (fa + fb), belongs to the pixels further right.
template <class Sink>
void addPiece(Sink &s, int r, int64_t xa, int64_t xb, int64_t h)
{
    int64_t xl = xa < xb ? xa : xb, xr = xa < xb ? xb : xa;
    int64_t end = int64_t(s.cols()) << kFixedShift;
    if (xl >= end)
        return;
    if (xr <= 0) {
        s.fold(r, h); // wholly left of the band: only its cover matters
        return;
    }
    int64_t i = xl >> kFixedShift; // first cell
    // Last cell: a slanted piece ending on a cell's side ends in the cell
    // before it (a vertical one on a side lies in the cell right of it).
    int64_t j = xr > xl ? (xr - 1) >> kFixedShift : i;
    if (i == j) {
        s.cell(r, i, h, xa + xb - 2 * (i << kFixedShift));
        return;
    }
    int64_t last = j < s.cols() - 1 ? j : s.cols() - 1;
    // The height used up from the left end to a cell side at x is
    // (x - xl) h / dx rounded, computed for each side on its own from the
    // piece's ends (one rounding of the slope, one of the product, both
    // monotonic), so every cell gets the same share whichever cell the walk
    // starts from.
    int64_t mag = h < 0 ? -h : h;
    double slope = double(mag) / double(xr - xl);
    auto usedAt = [xl, mag, slope](int64_t x) {
        int64_t t = roundToInt(double(x - xl) * slope);
        return t < mag ? t : mag;
    };
    int64_t sign = h < 0 ? -1 : 1;
    int64_t k = i, used = 0;
    if (i < 0) {
        // The cells left of the band give their whole cover to column 0.
        used = usedAt(0);
        s.fold(r, used * sign);
        k = 0;
    }
    for (; k <= last; ++k) {
        int64_t side = k << kFixedShift;
        int64_t fa = xl > side ? xl - side : 0;
        int64_t fb = k == j ? xr - side : kOne;
        int64_t upTo = k == j ? mag : usedAt(side + kOne);
        s.cell(r, k, (upTo - used) * sign, fa + fb);
        used = upTo;
    }
}

// Adds one edge (fixed point relative to the band). Rows outside the band
// are skipped arithmetically: the x where the edge crosses a row's side is
// computed for each side on its own from the edge's ends, so a row's piece
// is the same whichever row the walk starts from.
template <class Sink>
void accumulate(Sink &s, int64_t x0, int64_t y0, int64_t x1, int64_t y1)
{
    if (y0 == y1)
        return;
    int64_t sign = 1;
    if (y0 > y1) {
        int64_t t = x0;
        x0 = x1, x1 = t;
        t = y0;
        y0 = y1, y1 = t;
        sign = -1;
    }
    int64_t bottom = int64_t(s.rows()) << kFixedShift;
    if (y1 <= 0 || y0 >= bottom || (x0 < x1 ? x0 : x1) >= int64_t(s.cols()) << kFixedShift)
        return;
    int r = y0 > 0 ? int(y0 >> kFixedShift) : 0;
    int rEnd = y1 < bottom ? int((y1 + kOne - 1) >> kFixedShift) : s.rows();
    int64_t ya = y0 > (int64_t(r) << kFixedShift) ? y0 : int64_t(r) << kFixedShift;
    if ((x0 > x1 ? x0 : x1) <= 0) {
        // Wholly left of the band: each row's piece gives column 0 its cover.
        for (; r < rEnd; ++r) {
            int64_t yb = int64_t(r + 1) << kFixedShift;
            yb = yb < y1 ? yb : y1;
            s.fold(r, (yb - ya) * sign);
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
        addPiece(s, r, xa, xb, (yb - ya) * sign);
        xa = xb, ya = yb;
    }
}

} // namespace

void accumulateDense(Grid &g, int64_t x0, int64_t y0, int64_t x1, int64_t y1, int32_t w)
{
    DenseSink s{g, w};
    accumulate(s, x0, y0, x1, y1);
}

bool accumulateSparse(SparseBand &b, int64_t x0, int64_t y0, int64_t x1, int64_t y1, uint16_t left,
                      uint16_t right)
{
    SparseSink s{b, left, right};
    accumulate(s, x0, y0, x1, y1);
    return s.ok;
}

} // namespace tov
