// span.cpp: compositing. The sweeps hand over runs (one coverage for many
// pixels) and spans (a coverage per pixel); here they are cut and multiplied
// by the open mask, merged into a mask under construction, or blended into
// the buffer with the brush: premultiplied ARGB words in place, other
// formats through a row of words. Loops are plain and branch-light so that
// the compiler can vectorise them.
#include "tov/internal.h"

namespace tov {

namespace {

// n words of one colour at one coverage: a store for opaque colour at full
// coverage, otherwise one source-over with a constant source.
void runWords(uint32_t *d, int n, uint32_t s, unsigned alpha)
{
    if (alpha != 255)
        s = scalePixel(s, alpha);
    unsigned keep = 255u - (s >> 24);
    if (!keep) {
        for (int i = 0; i < n; ++i)
            d[i] = s;
        return;
    }
    for (int i = 0; i < n; ++i)
        d[i] = s + scalePixel(d[i], keep);
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

// n words of one colour at per-pixel coverage; stretches of full coverage
// go through the run loop.
void spanWords(uint32_t *d, int n, uint32_t s, const uint8_t *cov)
{
    for (int i = 0; i < n;) {
        unsigned a = cov[i];
        if (a == 255) {
            int j = fullRunEnd(cov, i + 1, n);
            runWords(d + i, j - i, s, 255);
            i = j;
            continue;
        }
        if (a)
            d[i] = over(scalePixel(s, a), d[i]);
        ++i;
    }
}

// n words of per-pixel colours at one coverage, or at per-pixel coverage.
void runColorWords(uint32_t *d, int n, const uint32_t *src, unsigned alpha)
{
    if (alpha == 255) {
        for (int i = 0; i < n; ++i)
            d[i] = over(src[i], d[i]);
        return;
    }
    for (int i = 0; i < n; ++i)
        d[i] = over(scalePixel(src[i], alpha), d[i]);
}

void spanColorWords(uint32_t *d, int n, const uint32_t *src, const uint8_t *cov)
{
    for (int i = 0; i < n; ++i) {
        unsigned a = cov[i];
        if (a == 255)
            d[i] = over(src[i], d[i]);
        else if (a)
            d[i] = over(scalePixel(src[i], a), d[i]);
    }
}

// The buffer's pixels [x, x + n) of row y as words: in place for the native
// format, else read into the canvas's row (written back by `release`).
uint32_t *acquire(tovCanvas *c, int y, int x, int n)
{
    uint8_t *p = pixelAddress(c, x, y);
    if (c->native)
        return reinterpret_cast<uint32_t *>(p);
    loadPixels(c->buffer.format, p, n, c->row.data());
    return c->row.data();
}

void release(tovCanvas *c, int y, int x, int n)
{
    if (!c->native)
        storePixels(c->buffer.format, pixelAddress(c, x, y), n, c->row.data());
}

// Cuts [x, x + n) to the part of row y the mask covers and multiplies the
// coverage by it; false when nothing is left.
bool applyMask(const Target &t, int y, int &x, int &n, const uint8_t *&cov)
{
    const Mask *m = t.mask;
    if (y < m->box.top || y >= m->box.bottom)
        return false;
    int lo = m->lo[size_t(y - m->box.top)], hi = m->hi[size_t(y - m->box.top)];
    int a = x > lo ? x : lo, b = x + n < hi ? x + n : hi;
    if (a >= b)
        return false;
    const uint8_t *mrow = m->row(y);
    uint8_t *out = t.c->maskedCoverage.data();
    const uint8_t *in = cov + (a - x);
    for (int i = 0; i < b - a; ++i)
        out[i] = uint8_t(mul255(in[i], mrow[a + i]));
    x = a, n = b - a, cov = out;
    return true;
}

} // namespace

void paintSpan(const Target &t, const tovObject *brush, int y, int x, int n, const uint8_t *cov)
{
    if (t.mask && !applyMask(t, y, x, n, cov))
        return;
    if (t.builder) {
        addToBuilder(t.builder, y, x, n, cov);
        return;
    }
    tovCanvas *c = t.c;
    uint32_t *d = acquire(c, y, x, n);
    if (brush->kind == kLinear || brush->kind == kRadial) {
        gradientColors(brush, y, x, n, c->colors.data());
        spanColorWords(d, n, c->colors.data(), cov);
    } else {
        spanWords(d, n, brush->color, cov);
    }
    release(c, y, x, n);
}

void paintRun(const Target &t, const tovObject *brush, int y, int x, int n, unsigned alpha)
{
    if (t.mask || t.builder) {
        std::memset(t.c->coverage.data(), int(alpha), size_t(n));
        paintSpan(t, brush, y, x, n, t.c->coverage.data());
        return;
    }
    tovCanvas *c = t.c;
    uint32_t *d = acquire(c, y, x, n);
    if (brush->kind == kLinear || brush->kind == kRadial) {
        gradientColors(brush, y, x, n, c->colors.data());
        if (alpha == 255 && brush->opaque)
            std::memcpy(d, c->colors.data(), size_t(n) * 4);
        else
            runColorWords(d, n, c->colors.data(), alpha);
    } else {
        runWords(d, n, brush->color, alpha);
    }
    release(c, y, x, n);
}

void paintPixel(const Target &t, int y, int x, uint32_t color)
{
    if (t.mask) {
        const Mask *m = t.mask;
        if (y < m->box.top || y >= m->box.bottom)
            return;
        size_t r = size_t(y - m->box.top);
        if (x < m->lo[r] || x >= m->hi[r])
            return;
        color = scalePixel(color, m->row(y)[x]);
    }
    if (!color)
        return;
    uint32_t *d = acquire(t.c, y, x, 1);
    *d = over(color, *d);
    release(t.c, y, x, 1);
}

} // namespace tov
