// formats.cpp: reading and writing the buffer's pixel formats. Drawing works
// on premultiplied ARGB words; formats other than the native 32-bit one go
// through these row converters (formats without alpha are opaque).
#include "tov/internal.h"

namespace tov {

int bytesPerPixel(int format)
{
    switch (format) {
    case 280: return 4;
    case 24: case 271: case 272: return 3;
    case 16: case 15: case 12: case 268: return 2;
    default: return 0;
    }
}

uint32_t premultiply(unsigned r, unsigned g, unsigned b, unsigned a)
{
    return (a << 24) | (mul255(r, a) << 16) | (mul255(g, a) << 8) | mul255(b, a);
}

namespace {

// Widens an n-bit channel to 8 bits by repeating its top bits.
inline uint32_t widen(uint32_t v, int bits)
{
    return bits == 4 ? v * 17u : (bits == 5 ? (v << 3) | (v >> 2) : (v << 2) | (v >> 4));
}

inline uint32_t rgb(uint32_t r, uint32_t g, uint32_t b)
{
    return 0xff000000u | (r << 16) | (g << 8) | b;
}

inline uint16_t load16(const uint8_t *p)
{
    uint16_t v;
    std::memcpy(&v, p, 2);
    return v;
}

inline void store16(uint8_t *p, uint32_t v)
{
    uint16_t w = uint16_t(v);
    std::memcpy(p, &w, 2);
}

} // namespace

void loadPixels(int format, const uint8_t *src, int n, uint32_t *out)
{
    for (int i = 0; i < n; ++i) {
        uint32_t v;
        switch (format) {
        case 280: std::memcpy(&v, src + 4 * i, 4); break;
        case 24: v = rgb(src[3 * i], src[3 * i + 1], src[3 * i + 2]); break;
        case 271: case 272: v = rgb(src[3 * i + 2], src[3 * i + 1], src[3 * i]); break;
        case 16: {
            uint32_t w = load16(src + 2 * i);
            v = rgb(widen(w >> 11, 5), widen((w >> 5) & 63, 6), widen(w & 31, 5));
            break;
        }
        case 268: {
            uint32_t w = load16(src + 2 * i);
            v = rgb(widen(w & 31, 5), widen((w >> 5) & 63, 6), widen(w >> 11, 5));
            break;
        }
        case 15: {
            uint32_t w = load16(src + 2 * i);
            v = rgb(widen((w >> 10) & 31, 5), widen((w >> 5) & 31, 5), widen(w & 31, 5));
            break;
        }
        default: {
            uint32_t w = load16(src + 2 * i);
            v = rgb(widen((w >> 8) & 15, 4), widen((w >> 4) & 15, 4), widen(w & 15, 4));
            break;
        }
        }
        out[i] = v;
    }
}

void storePixels(int format, uint8_t *dst, int n, const uint32_t *in)
{
    if (format == 280) {
        std::memcpy(dst, in, size_t(n) * 4);
        return;
    }
    for (int i = 0; i < n; ++i) {
        uint32_t v = in[i];
        uint32_t r = (v >> 16) & 255, g = (v >> 8) & 255, b = v & 255;
        switch (format) {
        case 24: dst[3 * i] = uint8_t(r), dst[3 * i + 1] = uint8_t(g), dst[3 * i + 2] = uint8_t(b); break;
        case 271: case 272: dst[3 * i] = uint8_t(b), dst[3 * i + 1] = uint8_t(g), dst[3 * i + 2] = uint8_t(r); break;
        // Rounding to the nearest level of the narrower channel.
        case 16: store16(dst + 2 * i, ((r * 31 + 127) / 255) << 11 | ((g * 63 + 127) / 255) << 5 | (b * 31 + 127) / 255); break;
        case 268: store16(dst + 2 * i, ((b * 31 + 127) / 255) << 11 | ((g * 63 + 127) / 255) << 5 | (r * 31 + 127) / 255); break;
        case 15: store16(dst + 2 * i, ((r * 31 + 127) / 255) << 10 | ((g * 31 + 127) / 255) << 5 | (b * 31 + 127) / 255); break;
        default: store16(dst + 2 * i, ((r * 15 + 127) / 255) << 8 | ((g * 15 + 127) / 255) << 4 | (b * 15 + 127) / 255); break;
        }
    }
}

} // namespace tov
