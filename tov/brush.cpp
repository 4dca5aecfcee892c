// brush.cpp: pens and brushes (solid colours, and linear or radial gradients
// with a premultiplied 256-entry colour table), and the colours a gradient
// gives to the pixels of a row. Gradient positions are stepped along a row in
// fixed point from a start recomputed at every 256th column, so that each
// pixel's colour depends on its column and row alone, whatever run it is
// painted in.
#include "tov/internal.h"

#include <cmath>
#include <new>

using namespace tov;

namespace {

// Half the side of the gradient square, in pixels before the brush matrix.
constexpr double kGradientHalf = 819.2;
// Widest stroke honoured, in pixels; wider pens are drawn at this width.
constexpr double kMaxPenRadius = 16384.0;
constexpr double kQuarterPi = 0.78539816339744830962;
// Gradient positions are table units (255 across the gradient) in 16.16
// fixed point, clamped to +-2^20 units (far past the table's ends, which
// stepping from there across a block of columns cannot reach) with steps of
// at most 256 units per pixel.
constexpr double kFixed = 65536.0;
constexpr double kPositionLimit = 1048576.0;
constexpr double kStepLimit = 256.0;
constexpr int kBlockShift = 8;

int applyChannel(int v, int mult, int add)
{
    int r = ((v * mult) >> 8) + add;
    return r < 0 ? 0 : (r > 255 ? 255 : r);
}

tovColor transformColor(tovColor col, const tovColorTransform *cx)
{
    if (!cx)
        return col;
    col.red = uint8_t(applyChannel(col.red, cx->redMult, cx->redAdd));
    col.green = uint8_t(applyChannel(col.green, cx->greenMult, cx->greenAdd));
    col.blue = uint8_t(applyChannel(col.blue, cx->blueMult, cx->blueAdd));
    col.alpha = uint8_t(applyChannel(col.alpha, cx->alphaMult, cx->alphaAdd));
    return col;
}

int64_t toFixed(double v, double limit)
{
    v = v > -limit ? (v < limit ? v : limit) : -limit; // NaN lands on -limit
    return int64_t(std::floor(v * kFixed + 0.5));
}

// Table entry of a 16.16 position, padded at both ends.
inline uint32_t entry(int64_t pos)
{
    if (pos < 0x8000)
        return 0;
    int64_t i = (pos + 0x8000) >> 16;
    return uint32_t(i < 255 ? i : 255);
}

// Table entry at a distance given by its 16.16 coordinates.
inline uint32_t radialEntry(int64_t u, int64_t v)
{
    constexpr int64_t kFar = int64_t(512) << 16; // past the table's end
    u = u < -kFar ? -kFar : (u > kFar ? kFar : u);
    v = v < -kFar ? -kFar : (v > kFar ? kFar : v);
    double d = std::sqrt(double(u * u + v * v)) * (1.0 / kFixed) + 0.5;
    return d < 255.0 ? uint32_t(d) : 255u;
}

} // namespace

namespace tov {

void gradientColors(const tovObject *g, int y, int x, int n, uint32_t *out)
{
    const double *m = g->inverse;
    double py = y + 0.5;
    int end = x + n;
    while (x < end) {
        // Columns from x to the end of its block start from the block's own
        // first column.
        int block = int((int64_t(x) >> kBlockShift) * (int64_t(1) << kBlockShift));
        int stop = block + (1 << kBlockShift) < end ? block + (1 << kBlockShift) : end;
        double px = block + 0.5;
        int64_t i = x - block;
        if (g->kind == kLinear) {
            // Table position (u.x + 819.2) / 1638.4 * 255.
            const double k = 255.0 / (2 * kGradientHalf);
            int64_t pos = toFixed((m[0] * px + m[1] * py + m[2] + kGradientHalf) * k, kPositionLimit);
            int64_t step = toFixed(m[0] * k, kStepLimit);
            pos += i * step;
            for (int col = x; col < stop; ++col, pos += step)
                *out++ = g->table[entry(pos)];
        } else {
            // Table position |u| / 819.2 * 255.
            const double k = 255.0 / kGradientHalf;
            int64_t u = toFixed((m[0] * px + m[1] * py + m[2]) * k, kPositionLimit);
            int64_t v = toFixed((m[3] * px + m[4] * py + m[5]) * k, kPositionLimit);
            int64_t su = toFixed(m[0] * k, kStepLimit), sv = toFixed(m[3] * k, kStepLimit);
            u += i * su, v += i * sv;
            for (int col = x; col < stop; ++col, u += su, v += sv)
                *out++ = g->table[radialEntry(u, v)];
        }
        x = stop;
    }
}

} // namespace tov

extern "C" {

tovObject *tovCreatePen(tovCanvas *c, const tovPenSpec *pen)
{
    tovObject *o = newObject(c, kPen);
    if (!o)
        return nullptr;
    double w = pen ? pen->width : 0.0;
    // Width 0 (and anything not a positive number) is the one-pixel hairline.
    o->pen.radius = w > 0.0 ? (w / 2 < kMaxPenRadius ? w / 2 : kMaxPenRadius) : 0.5;
    // Round joins and caps are walked in steps of the largest angle whose
    // chord stays within the tolerance of the circle, at most 45 degrees.
    double step = o->pen.radius > kTolerance ? 2 * std::acos(1 - kTolerance / o->pen.radius) : kQuarterPi;
    step = step < kQuarterPi ? step : kQuarterPi;
    o->pen.arcCos = std::cos(step);
    o->pen.arcSin = std::sin(step);
    o->pen.arcGrow = std::sqrt(step / o->pen.arcSin);
    // The corner of two offset lines turning by t lies r (1 / cos(t / 2) - 1)
    // outside the circle; within the tolerance while cos t is at least this.
    double inside = o->pen.radius / (o->pen.radius + kTolerance);
    o->pen.miterDot = 2 * inside * inside - 1;
    if (pen)
        o->color = premultiply(pen->color.red, pen->color.green, pen->color.blue, pen->color.alpha);
    o->opaque = (o->color >> 24) == 255;
    return o;
}

// The engine has already passed the colour through the placement's colour
// transform, so applying cx here would transform it twice.
tovObject *tovCreateSolidBrush(tovCanvas *c, tovColor color, const tovColorTransform *)
{
    tovObject *o = newObject(c, kSolid);
    if (o) {
        o->color = premultiply(color.red, color.green, color.blue, color.alpha);
        o->opaque = color.alpha == 255;
    }
    return o;
}

// tx and ty repeat the matrix's own translation, which is the one used. The
// stops are interpolated as straight colours, then premultiplied; ratios out
// of order are treated as equal to the previous one, ends are padded. A
// matrix that cannot be inverted leaves a brush that paints nothing.
tovObject *tovCreateGradientBrush(tovCanvas *c, int type, int count, const tovGradientStop *stops,
                                  int, double, double, const double matrix[2][3],
                                  const tovColorTransform *cx)
{
    tovObject *o = newObject(c, type == 3 ? kRadial : kLinear);
    if (!o)
        return nullptr;
    if (!o->table)
        o->table = new (std::nothrow) uint32_t[256];
    if ((type != 2 && type != 3) || !stops || count <= 0 || !matrix || !o->table) {
        o->kind = kInvisible;
        return o;
    }
    if (count > 255)
        count = 255;
    double a = matrix[0][0], b = matrix[0][1], tx = matrix[0][2];
    double cc = matrix[1][0], d = matrix[1][1], ty = matrix[1][2];
    double det = a * d - b * cc;
    double *inv = o->inverse;
    inv[0] = d / det, inv[1] = -b / det, inv[3] = -cc / det, inv[4] = a / det;
    inv[2] = -(inv[0] * tx + inv[1] * ty);
    inv[5] = -(inv[3] * tx + inv[4] * ty);
    bool ok = det != 0.0;
    for (int i = 0; i < 6; ++i)
        ok = ok && std::isfinite(inv[i]);
    if (!ok) {
        o->kind = kInvisible;
        return o;
    }
    o->opaque = true;
    int k = 0;
    tovColor clo = transformColor(stops[0].color, cx), chi = clo;
    unsigned lo = stops[0].ratio > 255 ? 255 : stops[0].ratio, hi = lo, prevRatio = lo;
    for (int i = 0; i < 256; ++i) {
        unsigned ui = unsigned(i);
        while (ui > hi && k + 1 < count) {
            ++k;
            lo = hi, clo = chi;
            unsigned r = stops[k].ratio > 255 ? 255 : stops[k].ratio;
            hi = r < prevRatio ? prevRatio : r;
            prevRatio = hi;
            chi = transformColor(stops[k].color, cx);
        }
        tovColor col;
        if (ui <= lo || hi == lo) {
            col = ui <= lo ? clo : chi;
        } else if (ui >= hi) {
            col = chi;
        } else {
            double t = double(ui - lo) / double(hi - lo);
            auto mix = [t](int p, int q) { return uint8_t(std::lround(p + (q - p) * t)); };
            col.red = mix(clo.red, chi.red);
            col.green = mix(clo.green, chi.green);
            col.blue = mix(clo.blue, chi.blue);
            col.alpha = mix(clo.alpha, chi.alpha);
        }
        o->table[i] = premultiply(col.red, col.green, col.blue, col.alpha);
        o->opaque = o->opaque && col.alpha == 255;
    }
    return o;
}

tovObject *tovCreateBmpBrush(tovCanvas *c, int, const void *, int, int, const double[2][3],
                             const tovColorTransform *)
{
    return newObject(c, kInvisible);
}

} // extern "C"
