// sweep.cpp: turns the cells of a band into what is painted. Between two
// cells nothing changes along a row, so a sweep hands over the pixels with
// cells as spans of coverage and the stretches between them as runs of one
// coverage: a shape's interior costs one call per row, however wide. With
// several fills, each run is painted with the one fill active there, and
// only pixels where fills meet mix their colours, weighted by exact
// coverage and rounded once, so that fills sharing an edge add up to the
// whole pixel and no background shows through the seam.
#include "tov/internal.h"


namespace tov {

namespace {

// Coverage of a winding area: its magnitude, at most one pixel.
inline uint32_t magnitude(uint32_t sum)
{
    int32_t v = int32_t(sum);
    uint32_t a = v < 0 ? 0u - uint32_t(v) : uint32_t(v);
    return a < kFull ? a : kFull;
}

inline unsigned toByte(uint32_t sum) { return (magnitude(sum) * 255u + kFull / 2) >> kFullShift; }

inline int lowestBit(uint64_t v)
{
#if defined(__GNUC__)
    return __builtin_ctzll(v);
#else
    int n = 0;
    while (!(v & 1))
        v >>= 1, ++n;
    return n;
#endif
}

} // namespace

void sweepDense(const Target &t, const tovObject *brush, Grid &g, int left, int top, int end)
{
    uint8_t *cov = t.c->coverage.data();
    for (int r = 0; r < g.rows; ++r) {
        uint32_t *row = g.cells + size_t(r) * g.stride;
        uint64_t *bits = g.touched + size_t(r) * g.words;
        int y = top + r;
        uint32_t sum = 0;
        int spanStart = 0, spanEnd = -1; // the pending span of cells
        for (size_t w = 0; w < g.words; ++w) {
            uint64_t word = bits[w];
            if (!word)
                continue;
            bits[w] = 0;
            do {
                int x = int(w * 64) + lowestBit(word);
                word &= word - 1;
                if (x != spanEnd) {
                    if (spanEnd >= 0) {
                        paintSpan(t, brush, y, left + spanStart, spanEnd - spanStart, cov);
                        unsigned a = toByte(sum);
                        if (a)
                            paintRun(t, brush, y, left + spanEnd, x - spanEnd, a);
                    }
                    spanStart = x;
                }
                sum += row[x];
                row[x] = 0;
                cov[x - spanStart] = uint8_t(toByte(sum));
                spanEnd = x + 1;
            } while (word);
        }
        if (spanEnd < 0)
            continue;
        paintSpan(t, brush, y, left + spanStart, spanEnd - spanStart, cov);
        // A row left open (an unclosed edge soup, or a shape going on past
        // the clip's right side) keeps its coverage to the end.
        unsigned a = toByte(sum);
        if (a && spanEnd < end)
            paintRun(t, brush, y, left + spanEnd, end - spanEnd, a);
    }
}

namespace {

// One style's share of a pixel where several meet.
struct Share {
    uint16_t slot;
    uint32_t cover;
};

// Mixes the premultiplied colours of fills by their coverages, rounded once.
// Fills that overlap (coverages adding up to more than a pixel) add up, each
// channel clamped to full and the colours to the alpha.
uint32_t mix(const Share *shares, int n, const StyleSlot *slots, int y, int x)
{
    // Two channels per 64-bit sum, 32 bits apart: at most 64 shares of
    // coverage 2^17 times 255 stay below 2^31 in each.
    uint64_t rb = 0, ag = 0;
    for (int i = 0; i < n; ++i) {
        uint32_t c = colorAt(slots[shares[i].slot].brush, x, y);
        uint64_t w = shares[i].cover;
        rb += w * ((c & 0xffu) | uint64_t((c >> 16) & 0xffu) << 32);
        ag += w * (((c >> 8) & 0xffu) | uint64_t(c >> 24) << 32);
    }
    auto level = [](uint64_t v) {
        uint32_t l = uint32_t(((v & 0xffffffffu) + kFull / 2) >> kFullShift);
        return l < 255 ? l : 255u;
    };
    uint32_t a = level(ag >> 32), r = level(rb >> 32), g = level(ag), b = level(rb);
    r = r < a ? r : a, g = g < a ? g : a, b = b < a ? b : a;
    return a << 24 | r << 16 | g << 8 | b;
}

// The running state of a compound row: each slot's winding (sum of covers
// of the cells passed), the slots whose winding is not zero, and the value
// of the slots touched at the current column.
struct CompoundRow {
    tovCanvas *c;
    const StyleSlot *slots;
    uint32_t *wind, *value, *stamp;
    int32_t *activePos;
    uint16_t *active, *touched;
    int activeCount = 0, touchedCount = 0;
    uint32_t &generation; // stamps of slots touched at the current column
    Share shares[64];

    void setActive(uint16_t s, bool on)
    {
        if (on == (activePos[s] >= 0))
            return;
        if (on) {
            activePos[s] = activeCount;
            active[activeCount++] = s;
        } else {
            uint16_t moved = active[--activeCount];
            active[activePos[s]] = moved;
            activePos[moved] = activePos[s];
            activePos[s] = -1;
        }
    }

    void nextColumn()
    {
        touchedCount = 0;
        if (++generation == 0) { // wrapped: forget every stamp
            std::memset(stamp, 0, c->stamp.size() * sizeof(uint32_t));
            generation = 1;
        }
    }

    void add(uint16_t s, int32_t cover, int32_t area)
    {
        if (stamp[s] != generation) {
            stamp[s] = generation;
            value[s] = wind[s] * (2 * kFixedOne);
            touched[touchedCount++] = s;
        }
        value[s] += uint32_t(cover) * (2 * kFixedOne) - uint32_t(area);
        wind[s] += uint32_t(cover);
    }

    // Paints the pixel of the current column from the touched and active
    // slots, then updates which slots are active.
    void pixel(const Target &t, int y, int x)
    {
        int n = 0;
        for (int i = 0; i < touchedCount && n < 64; ++i) {
            uint32_t m = magnitude(value[touched[i]]);
            if (m)
                shares[n++] = Share{touched[i], m};
        }
        for (int i = 0; i < activeCount && n < 64; ++i) {
            uint16_t s = active[i];
            if (stamp[s] != generation)
                shares[n++] = Share{s, magnitude(wind[s] * (2 * kFixedOne))};
        }
        if (n == 1) {
            uint32_t a = (shares[0].cover * 255u + kFull / 2) >> kFullShift;
            if (a)
                paintPixel(t, y, x, scalePixel(colorAt(slots[shares[0].slot].brush, x, y), a));
        } else if (n > 1) {
            paintPixel(t, y, x, mix(shares, n, slots, y, x));
        }
        for (int i = 0; i < touchedCount; ++i)
            setActive(touched[i], wind[touched[i]] != 0);
    }

    // Paints columns [x0, x1), where no cell changes the active slots.
    void paint(const Target &t, int y, int x0, int x1)
    {
        if (x0 >= x1 || activeCount == 0)
            return;
        if (activeCount == 1) {
            uint16_t s = active[0];
            unsigned a = toByte(wind[s] * (2 * kFixedOne));
            if (a)
                paintRun(t, slots[s].brush, y, x0, x1 - x0, a);
            return;
        }
        // Overlapping fills: the same mix all along, unless a gradient takes
        // part; then pixel by pixel.
        bool plain = true;
        for (int i = 0; i < activeCount; ++i)
            plain = plain && slots[active[i]].brush->kind == kSolid;
        for (int x = x0; x < x1; ++x) {
            int n = 0;
            for (int i = 0; i < activeCount && n < 64; ++i)
                shares[n++] = Share{active[i], magnitude(wind[active[i]] * (2 * kFixedOne))};
            uint32_t color = mix(shares, n, slots, y, x);
            if (plain) {
                tovObject mixed{};
                mixed.kind = kSolid;
                mixed.color = color;
                paintRun(t, &mixed, y, x, x1 - x, 255);
                return;
            }
            paintPixel(t, y, x, color);
        }
    }

    // A fill covers nothing right of its edges' right end (where a row left
    // open stops): no cell of it comes after that, so it leaves the row.
    void dropEnded(int x)
    {
        for (int i = activeCount - 1; i >= 0; --i)
            if (slots[active[i]].end <= x)
                drop(active[i]);
    }

    // Paints columns [x0, x1) (relative to the area's left at `left`),
    // where no cell changes the windings, fills leaving at their ends.
    void run(const Target &t, int y, int left, int x0, int x1)
    {
        while (x0 < x1) {
            dropEnded(x0);
            if (!activeCount)
                return;
            int stop = x1;
            for (int i = 0; i < activeCount; ++i)
                stop = slots[active[i]].end < stop ? slots[active[i]].end : stop;
            paint(t, y, left + x0, left + stop);
            x0 = stop;
        }
    }

    void drop(uint16_t s)
    {
        wind[s] = 0;
        setActive(s, false);
    }

    // Leaves every slot at zero winding for the next row.
    void reset()
    {
        for (int i = 0; i < activeCount; ++i) {
            wind[active[i]] = 0;
            activePos[active[i]] = -1;
        }
        activeCount = 0;
    }
};

} // namespace

void sweepSparse(const Target &t, SparseBand &b, int left, int top, int end)
{
    tovCanvas *c = t.c;
    const StyleSlot *slots = c->slots.data();
    CompoundRow row{c,
                    c->slots.data(),
                    c->wind.data(),
                    c->value.data(),
                    c->stamp.data(),
                    c->activePos.data(),
                    c->activeSlots.data(),
                    c->touchedSlots.data(),
                    0,
                    0,
                    c->generation,
                    {}};
    // A row's cells are put in order by chaining each to the previous cell
    // of its column and flagging the column: walking the flags is the sweep,
    // with no sort.
    int32_t *head = c->columnHead.data(), *next = c->cellNext.data();
    uint64_t *flags = c->columnFlags.data();
    size_t words = (size_t(b.cols) + 63) / 64;
    for (int r = 0; r < b.count; ++r) {
        Array<Cell> &cells = *b.rows[r];
        size_t n = cells.size();
        if (!n)
            continue;
        if (!c->cellNext.resize(n > c->cellNext.size() ? n : c->cellNext.size())) {
            cells.clear();
            continue;
        }
        next = c->cellNext.data();
        const Cell *cell = cells.data();
        for (size_t i = 0; i < n; ++i) {
            int32_t cx = cell[i].x;
            uint64_t bit = uint64_t(1) << (cx & 63);
            if (!(flags[cx >> 6] & bit)) {
                flags[cx >> 6] |= bit;
                head[cx] = -1;
            }
            next[i] = head[cx];
            head[cx] = int32_t(i);
        }
        int y = top + r;
        int x = 0;
        for (size_t w = 0; w < words; ++w) {
            uint64_t word = flags[w];
            if (!word)
                continue;
            flags[w] = 0;
            do {
                int cx = int(w * 64) + lowestBit(word);
                word &= word - 1;
                row.run(t, y, left, x, cx);
                row.dropEnded(cx);
                row.nextColumn();
                // Cells of fills whose edges all lie left of the area are
                // folded into its first column: such a fill covers nothing here.
                for (int32_t i = head[cx]; i >= 0; i = next[i]) {
                    if (cell[i].left && slots[cell[i].left].end > cx)
                        row.add(cell[i].left, cell[i].cover, cell[i].area);
                    if (cell[i].right && slots[cell[i].right].end > cx)
                        row.add(cell[i].right, -cell[i].cover, -cell[i].area);
                }
                row.pixel(t, y, left + cx);
                x = cx + 1;
            } while (word);
        }
        // A row left open keeps each fill's coverage to its right end.
        row.run(t, y, left, x, end);
        row.reset();
        cells.clear();
    }
}

} // namespace tov
