// internal.h: the rasterizer's private types shared by its source files: the
// canvas with its reusable scratch buffers, pens and brushes, masks, and the
// entry points between path building, scan conversion, stroking and painting.
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
// Accumulation cells per band: large shapes are scanned in bands of rows so
// that scratch memory stays bounded whatever the shape's size.
constexpr size_t kBandCells = size_t(1) << 20;

// A growable array of plain values. It keeps its capacity when cleared,
// which is what lets frames after the first run allocation-free; growth
// failures are reported, never thrown.
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

// One fill style or pen of a path set, the bounds of its edges (fixed
// point) and where its edges are listed.
struct StyleInfo {
    int32_t index;
    int32_t minX, minY, maxX, maxY;
    uint32_t first, count;
};

// A rectangle of whole pixels, right and bottom exclusive.
struct Box {
    int left, top, right, bottom;
    bool empty() const { return left >= right || top >= bottom; }
};

// An 8-bit coverage mask over `box`, rows of box width.
struct Mask {
    Box box;
    Array<uint8_t> alpha;
    int baseDepth; // masks that were open when this one started building
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

// Premultiplied ARGB word from straight colour bytes.
uint32_t premultiply(unsigned r, unsigned g, unsigned b, unsigned a);
// Each channel of a premultiplied word scaled by a / 255: multiplying by
// a + a / 128 (0..256) and rounding off 8 bits is exact at 0 and 255 and
// off by at most one level in between, for two multiplies per pixel.
inline uint32_t scalePixel(uint32_t p, unsigned a)
{
    a += a >> 7;
    uint32_t rb = (((p & 0x00ff00ffu) * a + 0x00800080u) >> 8) & 0x00ff00ffu;
    uint32_t ag = (((p >> 8) & 0x00ff00ffu) * a + 0x00800080u) & 0xff00ff00u;
    return rb | ag;
}
// Source-over of premultiplied src onto premultiplied dst.
inline uint32_t over(uint32_t src, uint32_t dst)
{
    return src + scalePixel(dst, 255u - (src >> 24));
}
inline unsigned mul255(unsigned a, unsigned b)
{
    unsigned t = a * b + 128u;
    return (t + (t >> 8)) >> 8;
}

} // namespace tov

// A pen or a brush. Gradients carry their inverse matrix and a 256-entry
// premultiplied colour table so painting a pixel is one lookup.
struct tovObject {
    uint8_t kind;
    double radius;         // pens: half the stroke width in pixels
    uint32_t color;        // pens and solid brushes: premultiplied ARGB
    double inverse[6];     // gradients: output pixel -> gradient square
    bool opaque;           // every colour it paints has alpha 255
    uint32_t table[256];   // gradients: premultiplied colour per ratio
    tovObject *nextFree;   // free list of the owning canvas
    tovObject *nextAll;    // every object the canvas made, for tovDestroy
};

struct tovCanvas {
    tovBuffer buffer;
    int bytesPerPixel;
    uint8_t *pixels;
    intptr_t stride;
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

    // Scan conversion scratch.
    tov::Array<tov::Edge> strokeEdges;
    tov::Array<tov::Point> strokeVerts;
    tov::Array<uint32_t> cells;
    tov::Array<int32_t> rowMin, rowMax;
    size_t cellsZeroed; // cells are kept all zero up to here between uses
    tov::Array<uint8_t> coverage;
    tov::Array<float> coverageF;
    tov::Array<float> layer;
    size_t layerZeroed; // the layer too
    tov::Array<uint32_t> span;
    tov::Array<uint32_t> row;
    tov::Array<uint8_t> selected;
    tov::Array<int32_t> styleSlot;
    tov::Array<tov::StyleInfo> styles;
    tov::Array<int32_t> edgeSlots;
    tov::Array<uint32_t> styleEdges;

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

// paint.cpp: blending of coverage rows into the buffer.
// Paints n pixels of row y from x with the brush at 8-bit coverage.
void paintRow(tovCanvas *c, const tovObject *brush, int y, int x, int n, const uint8_t *cov);
// Colours of a brush for n pixels of row y from x, premultiplied.
void brushColors(const tovObject *brush, int y, int x, int n, uint32_t *out);
// Adds coverage times the brush's colour into a float layer (4 per pixel).
void addToLayer(tovCanvas *c, const tovObject *brush, int y, int x, int n, const float *cov,
                float *layer);
// Composites a float layer row (source-over) into the buffer and clears it.
void compositeLayer(tovCanvas *c, int y, int x, int n, float *layer);

// mask.cpp
// Multiplies a coverage row by the open mask when more than minDepth masks
// are open; false when nothing is left to draw.
bool applyMask(tovCanvas *c, int minDepth, int y, int x, int n, uint8_t *cov);
// True while drawing goes into a mask under construction (*builder is null
// when that mask could not be made: the drawing is then dropped).
bool maskTarget(tovCanvas *c, Mask **builder);
// Merges a coverage row into a mask under construction (union), through the
// masks opened since it started.
void addToBuilder(tovCanvas *c, Mask *m, int y, int x, int n, uint8_t *cov);
void releaseMasks(tovCanvas *c);

// path.cpp
// Appends a straight edge, its ends rounded to the fixed-point grid; edges
// that are horizontal on that grid carry no coverage and are dropped. The
// clip box plays no part: cells outside it are skipped by scan conversion.
void addEdge(Array<Edge> &out, double x0, double y0, double x1, double y1, int32_t left, int32_t right);

// stroke.cpp
// Turns the recorded polylines of pens that draw into closed outlines.
void buildStrokes(tovCanvas *c);

// raster.cpp
// Fills and strokes the recorded path set into the current target.
void renderPathSet(tovCanvas *c);

} // namespace tov

#endif
