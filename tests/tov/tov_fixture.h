// tov_fixture.h: shared helpers of the rasterizer tests: a pixel buffer with
// guard bytes around it, a canvas that cleans up after itself, and small
// drawing helpers (polygons, circles of quadratic curves, polylines).
#ifndef TESTS_TOV_FIXTURE_H
#define TESTS_TOV_FIXTURE_H

#include "tov/tov.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

namespace tovtest {

constexpr double kPi = 3.14159265358979323846;

// A buffer of the given format surrounded by guard bytes that drawing must
// never touch. stride 0 means a tight row; extra bytes per row are guards too.
class Surface {
public:
    Surface(int width, int height, int format = 280, int bytesPerPixel = 4, intptr_t stride = 0)
        : width_(width), height_(height), format_(format), bpp_(bytesPerPixel),
          stride_(stride ? stride : intptr_t(width) * bytesPerPixel),
          storage_(size_t(kGuard * 2 + stride_ * height), kGuardByte)
    {
        for (int y = 0; y < height; ++y)
            std::memset(row(y), 0, size_t(width) * size_t(bpp_));
    }

    uint8_t *row(int y) { return storage_.data() + kGuard + size_t(y) * size_t(stride_); }
    uint8_t *at(int x, int y) { return row(y) + size_t(x) * size_t(bpp_); }
    tovBuffer buffer(int originX = 0, int originY = 0)
    {
        return tovBuffer{originX, originY, width_, height_, format_, reinterpret_cast<intptr_t>(row(0)),
                         stride_ == intptr_t(width_) * bpp_ ? 0 : stride_};
    }
    uint32_t argb(int x, int y)
    {
        uint32_t v;
        std::memcpy(&v, at(x, y), 4);
        return v;
    }
    unsigned alpha(int x, int y) { return argb(x, y) >> 24; }
    // True when no byte outside the pixels proper has changed.
    bool guardsIntact() const
    {
        for (size_t i = 0; i < storage_.size(); ++i) {
            size_t off = i < kGuard ? 0 : i - kGuard;
            bool inPixels = i >= kGuard && off < size_t(stride_) * size_t(height_) &&
                            off % size_t(stride_) < size_t(width_) * size_t(bpp_);
            if (!inPixels && storage_[i] != kGuardByte)
                return false;
        }
        return true;
    }
    int width() const { return width_; }
    int height() const { return height_; }

private:
    static constexpr size_t kGuard = 64;
    static constexpr uint8_t kGuardByte = 0xA5;
    int width_, height_, format_, bpp_;
    intptr_t stride_;
    std::vector<uint8_t> storage_;
};

// Owns a canvas for the length of a test.
class Canvas {
public:
    explicit Canvas(Surface &s, int originX = 0, int originY = 0)
    {
        tovBuffer b = s.buffer(originX, originY);
        c_ = tovCreate(&b);
    }
    ~Canvas() { tovDestroy(c_); }
    Canvas(const Canvas &) = delete;
    Canvas &operator=(const Canvas &) = delete;
    operator tovCanvas *() const { return c_; }

private:
    tovCanvas *c_;
};

struct Pt {
    double x, y;
};

inline tovObject *solid(tovCanvas *c, uint8_t r, uint8_t g, uint8_t b, uint8_t a = 255)
{
    return tovCreateSolidBrush(c, tovColor{r, g, b, a}, nullptr);
}

// Starts a path set with the brushes as its fill list (index 0 is none);
// allocates nothing for short lists, so allocation counts stay tov's own.
inline void beginFills(tovCanvas *c, std::initializer_list<tovObject *> brushes)
{
    tovObject *list[16] = {nullptr};
    size_t n = 1;
    for (tovObject *b : brushes)
        list[n < 15 ? n++ : n] = b;
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, list, int(n));
}
inline void beginFills(tovCanvas *c, std::vector<tovObject *> brushes)
{
    brushes.insert(brushes.begin(), nullptr);
    tovBeginShape(c, 1, 2, 0);
    tovSetBrushes(c, brushes.data(), int(brushes.size()));
}

// Point lists arrive as braced lists or vectors; neither allocates here, so
// allocation counts stay tov's own.
// (A braced list's points live until the end of the call they are passed to.)
struct Points {
    const Pt *p = nullptr;
    size_t n = 0;
    Points(std::initializer_list<Pt> l)
    {
        p = l.begin();
        n = l.size();
    }
    Points(const std::vector<Pt> &v) : p(v.data()), n(v.size()) {}
};

// Appends a closed polygon to the current path set.
inline void polygonPath(tovCanvas *c, Points pts)
{
    tovMoveTo(c, pts.p[0].x, pts.p[0].y);
    for (size_t i = 1; i < pts.n; ++i)
        tovLineTo(c, pts.p[i].x, pts.p[i].y);
    tovLineTo(c, pts.p[0].x, pts.p[0].y);
}

// Appends a circle of n quadratic curves to the current path set.
inline void circlePath(tovCanvas *c, double cx, double cy, double r, int n = 16)
{
    double step = 2 * kPi / n, far = r / std::cos(step / 2);
    tovMoveTo(c, cx + r, cy);
    for (int i = 0; i < n; ++i) {
        double mid = (i + 0.5) * step, end = (i + 1) * step;
        tovCurveTo(c, cx + far * std::cos(mid), cy + far * std::sin(mid), cx + r * std::cos(end),
                   cy + r * std::sin(end));
    }
}

// One path set: the polygon filled with `brush` on the right of its edges.
inline void fillPolygon(tovCanvas *c, tovObject *brush, Points pts)
{
    beginFills(c, {brush});
    tovUseBrush(c, 0, 1);
    polygonPath(c, pts);
    tovEndShape(c);
}

inline void fillRect(tovCanvas *c, tovObject *brush, double x0, double y0, double x1, double y1)
{
    fillPolygon(c, brush, {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
}

inline void fillCircle(tovCanvas *c, tovObject *brush, double cx, double cy, double r)
{
    beginFills(c, {brush});
    tovUseBrush(c, 0, 1);
    circlePath(c, cx, cy, r);
    tovEndShape(c);
}

// Strokes a polyline with one pen.
inline void strokePolyline(tovCanvas *c, double width, tovColor color, Points pts)
{
    tovPenSpec spec{width, color};
    tovObject *pens[2] = {nullptr, tovCreatePen(c, &spec)};
    tovBeginShape(c, 1, 2, 0);
    tovSetPens(c, pens, 2);
    tovUsePen(c, 1);
    tovMoveTo(c, pts.p[0].x, pts.p[0].y);
    for (size_t i = 1; i < pts.n; ++i)
        tovLineTo(c, pts.p[i].x, pts.p[i].y);
    tovEndShape(c);
    tovDeleteObject(c, pens[1]);
}

// Sum of alpha over the surface, in pixels.
inline double coveredArea(Surface &s)
{
    double sum = 0;
    for (int y = 0; y < s.height(); ++y)
        for (int x = 0; x < s.width(); ++x)
            sum += s.alpha(x, y) / 255.0;
    return sum;
}

// Largest difference of one channel between two premultiplied words.
inline int channelDifference(uint32_t a, uint32_t b)
{
    int worst = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        int d = int((a >> shift) & 255) - int((b >> shift) & 255);
        worst = d < 0 ? (-d > worst ? -d : worst) : (d > worst ? d : worst);
    }
    return worst;
}

} // namespace tovtest

#endif
