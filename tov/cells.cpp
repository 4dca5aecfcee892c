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
// running sum along the row gives each pixel's value). The cells of one
// piece are consecutive, so the delta for x + 1 waits in `carry` to be added
// with the next cell's, and the touched bits of the piece's columns are set
// at its end: each cell is written once.
struct DenseSink {
    Grid &g;
    int32_t w;
    uint32_t carry = 0;
    int rows() const { return g.rows; }
    int cols() const { return g.cols; }
    void cell(int r, int64_t k, int64_t h, int64_t f)
    {
        uint32_t *row = g.cells + size_t(r) * g.stride;
        int32_t hw = int32_t(h) * w;
        row[k] += uint32_t(hw * int32_t(2 * kOne - f)) + carry;
        carry = uint32_t(hw * int32_t(f));
    }
    // Ends a piece whose cells went from column `first` to `last`.
    void finish(int r, int64_t first, int64_t last)
    {
        if (last + 1 < g.cols) {
            g.cells[size_t(r) * g.stride + size_t(last + 1)] += carry;
            ++last;
        }
        carry = 0;
        uint64_t *bits = g.touched + size_t(r) * g.words;
        int64_t a = first >> 6, b = last >> 6;
        uint64_t lo = ~uint64_t(0) << (first & 63), hi = ~uint64_t(0) >> (63 - (last & 63));
        if (a == b) {
            bits[a] |= lo & hi;
            return;
        }
        bits[a] |= lo;
        for (int64_t k = a + 1; k < b; ++k)
            bits[k] = ~uint64_t(0);
        bits[b] |= hi;
    }
    // Cover of pieces left of the band, given to its first column.
    void fold(int r, int64_t h)
    {
        cell(r, 0, h, 0);
        finish(r, 0, 0);
    }
    // A piece in cells k and k + 1 (k + 2 < cols), the second possibly empty.
    void pair(int r, int64_t k, int64_t h0, int64_t f0, int64_t h1, int64_t f1)
    {
        uint32_t *row = g.cells + size_t(r) * g.stride + k;
        int32_t a = int32_t(h0) * w, b = int32_t(h1) * w;
        row[0] += uint32_t(a * int32_t(2 * kOne - f0));
        row[1] += uint32_t(a * int32_t(f0) + b * int32_t(2 * kOne - f1));
        row[2] += uint32_t(b * int32_t(f1));
        uint64_t *bits = g.touched + size_t(r) * g.words;
        uint64_t three = uint64_t(7) << (k & 63);
        bits[k >> 6] |= three;
        if ((k & 63) > 61)
            bits[(k >> 6) + 1] |= uint64_t(7) >> (64 - (k & 63));
    }
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
    void finish(int, int64_t, int64_t) {}
    void fold(int r, int64_t h) { cell(r, 0, h, 0); }
    void pair(int r, int64_t k, int64_t h0, int64_t f0, int64_t h1, int64_t f1)
    {
        cell(r, k, h0, f0);
        if (h1)
            cell(r, k + 1, h1, f1);
    }
};

// Adds the piece of an edge lying within row r, from x = xa to xb (fixed
// point relative to the band), of signed height h (|h| <= kOne). In a cell
// entered at x fraction fa and left at fb with height hk, the part of the
// pixel right of the edge is hk (2 kOne - fa - fb) / (2 kOne) of it; the
// rest, hk (fa + fb), belongs to the pixels further right. The height used
// up from the left end to a cell side at x is (x - xl) rise rounded (rise
// being the edge's height per unit of width), at most the piece's height:
// computed for each side on its own from the piece's left end, so every cell
// gets the same share whichever cell the walk starts from.
template <class Sink>
void addPiece(Sink &s, int r, int64_t xa, int64_t xb, int64_t h, double rise)
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
        s.finish(r, i, i);
        return;
    }
    int64_t last = j < s.cols() - 1 ? j : s.cols() - 1;
    int64_t mag = h < 0 ? -h : h;
    auto usedAt = [xl, mag, rise](int64_t x) {
        int64_t t = roundToInt(double(x - xl) * rise);
        return t < mag ? t : mag;
    };
    int64_t sign = h < 0 ? -1 : 1;
    int64_t k = i, used = 0;
    if (i < 0) {
        // The cells left of the band give their whole cover to column 0.
        used = usedAt(0);
        s.cell(r, 0, used * sign, 0);
        s.finish(r, 0, 0);
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
    s.finish(r, i < 0 ? 0 : i, last);
}

// The same for a piece of a steep edge (at most one pixel wide) well inside
// the band: the same values, without branches on how many cells it takes.
template <class Sink>
inline void addSteepPiece(Sink &s, int r, int64_t xa, int64_t xb, int64_t h, double rise)
{
    int64_t xl = xa < xb ? xa : xb, xr = xa < xb ? xb : xa;
    int64_t i = xl >> kFixedShift, side = (i + 1) * kOne;
    if (i < 0 || i + 2 >= s.cols()) {
        addPiece(s, r, xa, xb, h, rise);
        return;
    }
    bool two = xr > side; // ends in the next cell
    int64_t mag = h < 0 ? -h : h;
    int64_t t = roundToInt(double(side - xl) * rise);
    t = t < mag ? t : mag;
    int64_t h0 = two ? t : mag;
    int64_t f0 = two ? xl - (side - kOne) + kOne : xa + xb - 2 * (side - kOne);
    int64_t sign = h < 0 ? -1 : 1;
    s.pair(r, i, h0 * sign, f0, (mag - h0) * sign, two ? xr - side : 0);
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
    int64_t dx = x1 > x0 ? x1 - x0 : x0 - x1;
    double slope = double(x1 - x0) / double(y1 - y0);
    double rise = dx ? double(y1 - y0) / double(dx) : 0.0;
    auto xAt = [x0, y0, slope](int64_t y) { return x0 + roundToInt(double(y - y0) * slope); };
    int64_t xa = ya == y0 ? x0 : xAt(ya);
    bool steep = dx <= y1 - y0; // no row piece wider than a pixel
    for (; r < rEnd; ++r) {
        int64_t yb = int64_t(r + 1) << kFixedShift;
        int64_t xb = yb < y1 ? xAt(yb) : x1;
        yb = yb < y1 ? yb : y1;
        if (steep)
            addSteepPiece(s, r, xa, xb, (yb - ya) * sign, rise);
        else
            addPiece(s, r, xa, xb, (yb - ya) * sign, rise);
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
