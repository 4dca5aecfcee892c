// paint.cpp: pens and brushes (solid colours and linear or radial gradients
// with a premultiplied 256-entry colour table) and the blending of coverage
// rows into the buffer, with a fast path for the native ARGB32 format.
#include "tov/internal.h"

#include <cmath>

using namespace tov;

namespace {

// Half the side of the gradient square, in pixels before the brush matrix.
constexpr double kGradientHalf = 819.2;
// Widest stroke honoured, in pixels; wider pens are drawn at this width.
constexpr double kMaxPenRadius = 16384.0;

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

// Rounds a table position to 0..255, written so that NaN lands on 0.
inline uint32_t tablePosition(float t)
{
    t = t > 0.0f ? t : 0.0f;
    t = t < 255.0f ? t : 255.0f;
    return uint32_t(int32_t(t + 0.5f));
}

// End of the run of full coverage starting at i: eight bytes at a time.
inline int fullRunEnd(const uint8_t *cov, int i, int n)
{
    while (i + 8 <= n) {
        uint64_t word;
        std::memcpy(&word, cov + i, 8);
        if (word != ~uint64_t(0))
            break;
        i += 8;
    }
    while (i < n && cov[i] == 255)
        ++i;
    return i;
}

// Blends a brush into premultiplied ARGB words at the given coverages (one
// colour per pixel when colors is given); runs of full coverage are filled
// by tight loops the compiler can vectorise.
void paintWords(uint32_t *dst, int n, const uint8_t *cov, uint32_t s, bool opaque, const uint32_t *colors)
{
    unsigned keep = 255u - (s >> 24);
    for (int i = 0; i < n;) {
        if (cov[i] != 255) {
            unsigned a = cov[i];
            if (a) {
                uint32_t p = colors ? colors[i] : s;
                dst[i] = over(scalePixel(p, a), dst[i]);
            }
            ++i;
            continue;
        }
        int j = fullRunEnd(cov, i + 1, n);
        if (colors) {
            if (opaque)
                std::memcpy(dst + i, colors + i, size_t(j - i) * 4);
            else
                for (int k = i; k < j; ++k)
                    dst[k] = over(colors[k], dst[k]);
        } else if (opaque) {
            for (int k = i; k < j; ++k)
                dst[k] = s;
        } else {
            for (int k = i; k < j; ++k)
                dst[k] = s + scalePixel(dst[k], keep);
        }
        i = j;
    }
}

} // namespace

namespace tov {

void brushColors(const tovObject *brush, int y, int x, int n, uint32_t *out)
{
    if (brush->kind != kLinear && brush->kind != kRadial) {
        for (int i = 0; i < n; ++i)
            out[i] = brush->color;
        return;
    }
    // Each pixel's position is computed from its own column rather than
    // stepped along the run, so it does not depend on where the run starts
    // (that is, on the clip box). Float is enough: the table has only 256
    // entries.
    const double *m = brush->inverse;
    double py = y + 0.5;
    if (brush->kind == kLinear) {
        // t = (u.x + 819.2) / 1638.4, table position t * 255.
        const double k = 255.0 / (2 * kGradientHalf);
        float base = float((m[1] * py + m[2] + kGradientHalf) * k), step = float(m[0] * k);
        for (int i = 0; i < n; ++i)
            out[i] = brush->table[tablePosition(base + step * (float(x + i) + 0.5f))];
    } else {
        // t = |u| / 819.2.
        const float k = float(255.0 / kGradientHalf);
        float bx = float(m[1] * py + m[2]), by = float(m[4] * py + m[5]);
        float sx = float(m[0]), sy = float(m[3]);
        for (int i = 0; i < n; ++i) {
            float px = float(x + i) + 0.5f;
            float gx = bx + sx * px, gy = by + sy * px;
            out[i] = brush->table[tablePosition(std::sqrt(gx * gx + gy * gy) * k)];
        }
    }
}

void paintRow(tovCanvas *c, const tovObject *brush, int y, int x, int n, const uint8_t *cov)
{
    if (n <= 0 || !c->span.reserve(size_t(n)))
        return;
    const uint32_t *colors = nullptr;
    if (brush->kind == kLinear || brush->kind == kRadial) {
        brushColors(brush, y, x, n, c->span.data());
        colors = c->span.data();
    }
    uint8_t *p = pixelAddress(c, x, y);
    if (c->buffer.format == 280 && reinterpret_cast<uintptr_t>(p) % alignof(uint32_t) == 0) {
        paintWords(reinterpret_cast<uint32_t *>(p), n, cov, brush->color, brush->opaque, colors);
        return;
    }
    if (!c->row.reserve(size_t(n)))
        return;
    loadPixels(c->buffer.format, p, n, c->row.data());
    paintWords(c->row.data(), n, cov, brush->color, brush->opaque, colors);
    storePixels(c->buffer.format, p, n, c->row.data());
}

void addToLayer(tovCanvas *c, const tovObject *brush, int y, int x, int n, const float *cov,
                float *layer)
{
    if (n <= 0 || !c->span.reserve(size_t(n)))
        return;
    brushColors(brush, y, x, n, c->span.data());
    const uint32_t *colors = c->span.data();
    for (int i = 0; i < n; ++i) {
        float a = cov[i];
        if (a <= 0.0f)
            continue;
        uint32_t s = colors[i];
        float *l = layer + 4 * i;
        l[0] += a * float(s >> 24);
        l[1] += a * float((s >> 16) & 255);
        l[2] += a * float((s >> 8) & 255);
        l[3] += a * float(s & 255);
    }
}

void compositeLayer(tovCanvas *c, int y, int x, int n, float *layer)
{
    if (n <= 0 || !c->row.reserve(size_t(n)) || !c->coverage.reserve(size_t(n)))
        return;
    // The layer's own coverage is folded into its colours; what is left to
    // apply is the open mask, taken as a coverage row of full pixels.
    uint8_t *maskCov = c->coverage.data();
    std::memset(maskCov, 255, size_t(n));
    bool any = applyMask(c, 0, y, x, n, maskCov);
    uint32_t *src = c->span.reserve(size_t(n)) ? c->span.data() : nullptr;
    if (!src)
        return;
    for (int i = 0; i < n; ++i) {
        float *l = layer + 4 * i;
        auto channel = [](float v) { return v >= 254.5f ? 255u : (v > 0.0f ? unsigned(v + 0.5f) : 0u); };
        unsigned a = channel(l[0]);
        unsigned r = channel(l[1]), g = channel(l[2]), b = channel(l[3]);
        l[0] = l[1] = l[2] = l[3] = 0.0f;
        r = r > a ? a : r, g = g > a ? a : g, b = b > a ? a : b;
        src[i] = (a << 24) | (r << 16) | (g << 8) | b;
        if (!a)
            maskCov[i] = 0;
    }
    if (!any)
        return;
    uint8_t *p = pixelAddress(c, x, y);
    uint32_t *row = c->row.data();
    loadPixels(c->buffer.format, p, n, row);
    paintWords(row, n, maskCov, 0, false, src);
    storePixels(c->buffer.format, p, n, row);
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
    o->radius = w > 0.0 ? (w / 2 < kMaxPenRadius ? w / 2 : kMaxPenRadius) : 0.5;
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
    if ((type != 2 && type != 3) || !stops || count <= 0 || !matrix) {
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
