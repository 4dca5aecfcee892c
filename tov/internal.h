// internal.h: the rasterizer's private types shared by its source files: the
// canvas with its reusable scratch buffers, pens and brushes, masks, the
// pixel arithmetic, and the entry points between path recording, stroking,
// scan conversion, sweeping and compositing.
#ifndef TOV_INTERNAL_H
#define TOV_INTERNAL_H

#include "tov/tov.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

namespace tov {

// Coordinates are clamped to this many pixels either way before anything
// else sees them (2^22: in fixed point they stay within +-2^30, so every
// difference of two coordinates fits in 32 bits and rounds exactly in the
// scan converter's 64-bit and double arithmetic).
constexpr double kCoordLimit = 4194304.0;
// Flattening tolerance for curves and arcs, in pixels.
constexpr double kTolerance = 0.1;
// Most masks open at once (the engine needs 29); deeper ones are refused.
constexpr int kMaxMasks = 64;
// Deepest nesting of tovBeginCanvas groups that is tracked.
constexpr int kMaxGroups = 256;
// Accumulation cells per band: a shape is scanned in bands of rows whose
// cells (4 bytes each) stay in cache, whatever the shape's size.
constexpr size_t kBandCells = size_t(1) << 18;

// A growable array of plain values. It keeps its capacity when cleared,
// which is what lets frames after the first run allocation-free; growth
// (geometric) failures are reported, never thrown.
template <class T>
class Array {
    static_assert(std::is_trivially_copyable<T>::value, "plain values only");

public:
    Array() = default;
    Array(const Array &) = delete;
    Array &operator=(const Array &) = delete;
    ~Array() { ::operator delete(data_); }

    T *data() { return data_; }
    const T *data() const { return data_; }
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    T &operator[](size_t i) { return data_[i]; }
    const T &operator[](size_t i) const { return data_[i]; }
    T &back() { return data_[size_ - 1]; }
    void clear() { size_ = 0; }
    void pop() { --size_; }

    bool reserve(size_t n)
    {
        if (n <= capacity_)
            return true;
        size_t grown = capacity_ ? capacity_ * 2 : 16;
        if (grown < n)
            grown = n;
        if (grown > SIZE_MAX / sizeof(T))
            return false;
        void *p = ::operator new(grown * sizeof(T), std::nothrow);
        if (!p)
            return false;
        if (size_)
            std::memcpy(p, data_, size_ * sizeof(T));
        ::operator delete(data_);
        data_ = static_cast<T *>(p);
        capacity_ = grown;
        return true;
    }
    // Sets the size, leaving new elements uninitialised.
    bool resize(size_t n)
    {
        if (!reserve(n))
            return false;
        size_ = n;
        return true;
    }
    bool push(const T &v)
    {
        if (size_ == capacity_ && !reserve(size_ + 1))
            return false;
        data_[size_++] = v;
        return true;
    }

private:
    T *data_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
};

// Coordinates of edges are fixed point with this many fraction bits. Every
// point is rounded to this grid once, the same way whatever the clip box, and
// scan conversion then works in integers only: that is what makes the pixels
// inside a clip box independent of the box (a dirty box repainted alone comes
// out bit for bit like the same area of a full redraw).
constexpr int kFixedShift = 8;
constexpr int32_t kFixedOne = 1 << kFixedShift;
// A pixel's whole area in the scan converter's units: a piece of edge of
// height h (fixed point) crossing a pixel adds 2 kFixedOne h to it in all.
constexpr int kFullShift = 2 * kFixedShift + 1;
constexpr uint32_t kFull = 1u << kFullShift;

// One straight edge for scan conversion, in fixed point. A style's winding
// weight for the edge is [left == style] - [right == style]; strokes store
// the pen as `left`.
struct Edge {
    int32_t x0, y0, x1, y1;
    int32_t left, right;
};

// A vertex of a stroked polyline; `start` marks the first vertex of one.
struct StrokePoint {
    float x, y;
    int32_t pen;
    int32_t start;
};

// A polyline vertex while its outline is built.
struct Point {
    double x, y;
};

// A rectangle of whole pixels, right and bottom exclusive.
struct Box {
    int left, top, right, bottom;
    bool empty() const { return left >= right || top >= bottom; }
};

inline Box intersect(const Box &a, const Box &b)
{
    Box r{a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top, a.right < b.right ? a.right : b.right,
          a.bottom < b.bottom ? a.bottom : b.bottom};
    return r;
}

// An 8-bit coverage mask over the clip box it was started in. Only the part
// that was drawn is kept up to date: each row holds values in [lo, hi) and
// is zero elsewhere, `bounds` encloses every row's part, and a mask that is
// one full-coverage rectangle is flagged so that drawing through it only
// narrows the clip.
struct Mask {
    Box box;
    Array<uint8_t> alpha;      // rows of box width
    Array<int32_t> lo, hi;     // per row of box
    Box bounds;
    bool rectangle;
    int baseDepth; // masks that were open when this one started building

    uint8_t *row(int y) { return alpha.data() + size_t(y - box.top) * size_t(box.right - box.left) - box.left; }
    const uint8_t *row(int y) const
    {
        return alpha.data() + size_t(y - box.top) * size_t(box.right - box.left) - box.left;
    }
};

enum ObjectKind : uint8_t { kFree, kPen, kSolid, kLinear, kRadial, kInvisible };

// Clamps a coordinate into the safe range; NaN is reported by the caller.
inline double clampCoord(double v)
{
    return v < -kCoordLimit ? -kCoordLimit : (v > kCoordLimit ? kCoordLimit : v);
}

// The nearest integer to v, for |v| < 2^32: the offset keeps the sum
// positive so that truncation is the floor. Done this way (rather than with
// std::floor, a library call on plain x86-64) because it runs per edge and
// per row; the result depends on v alone, which exact drawing relies on.
inline int64_t roundToInt(double v)
{
    constexpr double kOffset = 4294967296.0;
    return int64_t(v + (kOffset + 0.5)) - int64_t(kOffset);
}

// x * y / 255 rounded to nearest, exact for x, y <= 255.
inline unsigned mul255(unsigned a, unsigned b)
{
    unsigned t = a * b + 128u;
    return (t + (t >> 8)) >> 8;
}
// Each channel of a premultiplied word times a / 255, rounded to nearest.
inline uint32_t scalePixel(uint32_t p, unsigned a)
{
    uint32_t rb = (p & 0x00ff00ffu) * a + 0x00800080u;
    uint32_t ag = ((p >> 8) & 0x00ff00ffu) * a + 0x00800080u;
    rb = ((rb + ((rb >> 8) & 0x00ff00ffu)) >> 8) & 0x00ff00ffu;
    ag = (ag + ((ag >> 8) & 0x00ff00ffu)) & 0xff00ff00u;
    return rb | ag;
}
// Source-over of premultiplied src onto premultiplied dst.
inline uint32_t over(uint32_t src, uint32_t dst) { return src + scalePixel(dst, 255u - (src >> 24)); }

// Premultiplied ARGB word from straight colour bytes.
uint32_t premultiply(unsigned r, unsigned g, unsigned b, unsigned a);

} // namespace tov

// A pen or a brush. Gradients carry their inverse matrix and a 256-entry
// premultiplied colour table, so a pixel's colour is integer steps and one
// lookup; the table lives in a block of its own, so that pens and solid
// colours stay small however many a shape has.
struct tovObject {
    uint8_t kind;
    bool opaque;    // every colour it paints has alpha 255
    uint32_t color; // pens and solid brushes: premultiplied ARGB
    struct PenShape {
        double radius;         // half the stroke width in pixels
        double arcCos, arcSin; // rotation by the angle of one chord of a round join or cap
        double arcGrow;        // how far inner arc vertices sit outside the circle
        double miterDot;       // smallest cosine of a turn whose corner is within tolerance
    };
    union {
        PenShape pen;      // pens
        double inverse[6]; // gradients: output pixel -> gradient square
    };
    uint32_t *table;     // gradients: premultiplied colour per ratio (256 entries),
                         // made with the first gradient use and kept on recycling
    tovObject *nextFree; // free list of the owning canvas
    tovObject *nextAll;  // every object the canvas made, for tovDestroy
};

namespace tov {

// Sparse cell of a shape whose fills share edges: at column x of its row,
// cover and twice-area (as in the dense grid) for the fill on the edge's
// left; the fill on its right takes the negation. Slots are the path set's
// drawing styles counted from 1, 0 meaning none.
struct Cell {
    int32_t x;
    int32_t cover, area;
    uint16_t left, right;
};

// A drawing style of a compound path set.
struct StyleSlot {
    const tovObject *brush;
    int32_t end; // first column right of the style's edges, relative to the area
};

} // namespace tov

struct tovCanvas {
    tovBuffer buffer;
    int bytesPerPixel;
    uint8_t *pixels;
    intptr_t stride;
    bool native; // premultiplied ARGB words, aligned: painted in place
    tov::Box clip;

    // Path set being recorded.
    double curX, curY;
    bool curValid;
    int fill0, fill1, pen;
    bool strokeOpen;
    tov::Array<tov::Edge> fillEdges;
    tov::Array<tov::StrokePoint> strokePoints;
    tov::Array<tovObject *> brushes;
    tov::Array<tovObject *> pens;

    // Stroking scratch.
    tov::Array<tov::Edge> strokeEdges;
    tov::Array<tov::Edge> sortedEdges;
    tov::Array<tov::Point> strokeVerts;

    // Scan conversion scratch, all kept from frame to frame.
    tov::Array<int8_t> weight;       // per style index: its weight in a one-style pass
    tov::Array<uint16_t> slotOf;     // per brush index: its compound slot, 0 none
    tov::Array<tov::StyleSlot> slots;
    tov::Array<uint32_t> bandCount;  // edges starting in each band
    tov::Array<uint32_t> edgeOrder;  // edges by band of their top
    tov::Array<uint32_t> active;     // edges meeting the current band
    tov::Array<uint32_t> cells;      // dense grid, all zero between uses
    size_t cellsZeroed;
    tov::Array<uint64_t> touched;    // one bit per dense cell written, zero between uses
    size_t touchedZeroed;
    tov::Array<tov::Array<tov::Cell> *> rowCells; // sparse cells per row of a band
    tov::Array<int32_t> columnHead, cellNext;      // a row's cells chained by column
    tov::Array<uint64_t> columnFlags;              // columns with cells, zero between uses
    size_t columnFlagsZeroed;
    // Compound sweep state per slot.
    tov::Array<uint32_t> wind, value, stamp;
    uint32_t generation;
    tov::Array<int32_t> activePos;
    tov::Array<uint16_t> activeSlots, touchedSlots;
    // Span scratch.
    tov::Array<uint8_t> coverage, maskedCoverage;
    tov::Array<uint32_t> colors, row;

    // Groups, masks under construction and open masks.
    int groupKinds[tov::kMaxGroups];
    tov::Mask *groupBuilders[tov::kMaxGroups];
    int groupDepth;
    int groupOverflow;
    tov::Mask *masks[tov::kMaxMasks];
    int maskDepth;
    int maskOverflow;
    tov::Array<tov::Mask *> maskPool;
    tov::Array<tov::Mask *> maskAll;

    tovObject *freeObjects;
    tovObject *allObjects;
};

namespace tov {

// canvas.cpp: a pen or brush from the canvas's pool, or null.
tovObject *newObject(tovCanvas *c, uint8_t kind);

// formats.cpp
int bytesPerPixel(int format);
// Reads n buffer pixels as premultiplied ARGB words (opaque formats give
// alpha 255), and writes them back in the buffer's format.
void loadPixels(int format, const uint8_t *src, int n, uint32_t *out);
void storePixels(int format, uint8_t *dst, int n, const uint32_t *in);
inline uint8_t *pixelAddress(tovCanvas *c, int x, int y)
{
    return c->pixels + (y - c->buffer.y) * c->stride + (x - c->buffer.x) * c->bytesPerPixel;
}

// brush.cpp: colours of a gradient for n pixels of row y from x, and of one
// pixel; both give every pixel the value it has whatever run it is part of.
void gradientColors(const tovObject *brush, int y, int x, int n, uint32_t *out);
inline uint32_t colorAt(const tovObject *brush, int x, int y)
{
    if (brush->kind != kLinear && brush->kind != kRadial)
        return brush->color;
    uint32_t c;
    gradientColors(brush, y, x, 1, &c);
    return c;
}

// Where coverage goes: the buffer through a brush (and the open mask), or a
// mask under construction.
struct Target {
    tovCanvas *c;
    Mask *builder;      // non-null: coverage is merged into this mask
    const Mask *mask;   // mask multiplying the coverage, or null
};
// span.cpp: n pixels of row y from x at one coverage, or at the given
// coverages, painted with the brush (ignored for a mask under construction).
void paintRun(const Target &t, const tovObject *brush, int y, int x, int n, unsigned alpha);
void paintSpan(const Target &t, const tovObject *brush, int y, int x, int n, const uint8_t *cov);
// One pixel of an already premultiplied colour (of several fills mixed).
void paintPixel(const Target &t, int y, int x, uint32_t color);

// mask.cpp
// The mask that multiplies drawing into the buffer (null when none or when
// it is a rectangle), and the box that drawing is cut to; false when
// nothing may be drawn at all.
bool drawingMask(tovCanvas *c, int minDepth, const Mask **mask, Box *limit);
// True while drawing goes into a mask under construction (*builder is null
// when that mask could not be made: the drawing is then dropped).
bool maskTarget(tovCanvas *c, Mask **builder);
// Merges a coverage row into a mask under construction (union).
void addToBuilder(Mask *m, int y, int x, int n, const uint8_t *cov);
void releaseMasks(tovCanvas *c);

// path.cpp
// Appends a straight edge, its ends rounded to the fixed-point grid; edges
// that are horizontal on that grid carry no coverage and are dropped. The
// clip box plays no part: cells outside it are skipped by scan conversion.
void addEdge(Array<Edge> &out, double x0, double y0, double x1, double y1, int32_t left, int32_t right);

// stroke.cpp
// Turns the recorded polylines of pens that draw into closed outlines,
// grouped by pen in index order.
void buildStrokes(tovCanvas *c, const Box &clip);

// cells.cpp: scan conversion of one band (rows, columns relative to the
// area). A one-style grid gets two deltas per cell so that a running sum
// along the row is each pixel's winding area; a compound band gets sparse
// cells per row.
struct Grid {
    uint32_t *cells;
    uint64_t *touched;
    size_t stride, words; // cells and touched words per row
    int rows, cols;
};
void accumulateDense(Grid &g, int64_t x0, int64_t y0, int64_t x1, int64_t y1, int32_t w);
struct SparseBand {
    Array<Cell> **rows;
    int count, cols;
};
bool accumulateSparse(SparseBand &b, int64_t x0, int64_t y0, int64_t x1, int64_t y1, uint16_t left,
                      uint16_t right);

// sweep.cpp: turns a band's cells into runs and spans for a target; `end`
// is the column (relative to `left`) where a row left open stops.
void sweepDense(const Target &t, const tovObject *brush, Grid &g, int left, int top, int end);
void sweepSparse(const Target &t, SparseBand &b, int left, int top, int end);

// render.cpp
// Fills and strokes the recorded path set into the current target.
void renderPathSet(tovCanvas *c);

} // namespace tov

#endif
