// Packing and unpacking of the engine's pixel formats. The 16-bit formats
// are native-endian words; ARGB32 is a native word 0xAARRGGBB holding
// premultiplied colour, which PNG needs un-premultiplied.
#include "pixel_format.h"

#include <cstdlib>
#include <cstring>

#include "zelengine.h"

namespace {

const PixelFormat kFormats[] = {
    {"argb32", ZEL_FORMAT_ARGB32, 4, true}, {"rgb24", ZEL_FORMAT_RGB24, 3, false},
    {"bgr24", ZEL_FORMAT_BGR24, 3, false},  {"bgr24b", ZEL_FORMAT_BGR24B, 3, false},
    {"rgb565", ZEL_FORMAT_RGB565, 2, false}, {"rgb555", ZEL_FORMAT_RGB555, 2, false},
    {"rgb444", ZEL_FORMAT_RGB444, 2, false}, {"bgr565", ZEL_FORMAT_BGR565, 2, false},
};

// One 16-bit layout: bit widths and shifts of red, green and blue.
struct Packed16 {
    int rBits, rShift, gBits, gShift, bBits, bShift;
};

bool Packed16For(int code, Packed16& p) {
    switch (code) {
        case ZEL_FORMAT_RGB565: p = {5, 11, 6, 5, 5, 0}; return true;
        case ZEL_FORMAT_RGB555: p = {5, 10, 5, 5, 5, 0}; return true;
        case ZEL_FORMAT_RGB444: p = {4, 8, 4, 4, 4, 0}; return true;
        case ZEL_FORMAT_BGR565: p = {5, 0, 6, 5, 5, 11}; return true;
        default: return false;
    }
}

uint8_t Expand(unsigned value, int bits) {
    const unsigned max = (1u << bits) - 1;
    return uint8_t((value * 255 + max / 2) / max);
}

unsigned Reduce(uint8_t value, int bits) {
    const unsigned max = (1u << bits) - 1;
    return (value * max + 127) / 255;
}

void DecodeArgb(const uint8_t* p, uint8_t out[4]) {
    uint32_t w;
    std::memcpy(&w, p, 4);
    const unsigned a = w >> 24;
    out[3] = uint8_t(a);
    if (a == 255 || a == 0) {
        out[0] = uint8_t(a ? w >> 16 : 0), out[1] = uint8_t(a ? w >> 8 : 0), out[2] = uint8_t(a ? w : 0);
        return;
    }
    const unsigned c[3] = {(w >> 16) & 0xFF, (w >> 8) & 0xFF, w & 0xFF};
    for (int i = 0; i < 3; ++i) {
        const unsigned v = (c[i] * 255 + a / 2) / a;
        out[i] = uint8_t(v > 255 ? 255 : v);
    }
}

void DecodePacked(const Packed16& packed, const uint8_t* p, uint8_t out[4]) {
    uint16_t w;
    std::memcpy(&w, p, 2);
    out[0] = Expand((w >> packed.rShift) & ((1u << packed.rBits) - 1), packed.rBits);
    out[1] = Expand((w >> packed.gShift) & ((1u << packed.gBits) - 1), packed.gBits);
    out[2] = Expand((w >> packed.bShift) & ((1u << packed.bBits) - 1), packed.bBits);
    out[3] = 255;
}

// Decodes width pixels; the format is looked at once per call, not per pixel.
void Decode(const PixelFormat& f, const uint8_t* p, uint8_t* out, int width) {
    Packed16 packed;
    if (f.code == ZEL_FORMAT_ARGB32) {
        for (int x = 0; x < width; ++x, p += 4, out += 4) DecodeArgb(p, out);
    } else if (f.code == ZEL_FORMAT_RGB24) {
        for (int x = 0; x < width; ++x, p += 3, out += 4) out[0] = p[0], out[1] = p[1], out[2] = p[2], out[3] = 255;
    } else if (f.bytes == 3) {
        for (int x = 0; x < width; ++x, p += 3, out += 4) out[0] = p[2], out[1] = p[1], out[2] = p[0], out[3] = 255;
    } else if (Packed16For(f.code, packed)) {
        for (int x = 0; x < width; ++x, p += 2, out += 4) DecodePacked(packed, p, out);
    }
}

}  // namespace

const PixelFormat* FindPixelFormat(const std::string& nameOrCode) {
    char* end = nullptr;
    const long code = std::strtol(nameOrCode.c_str(), &end, 10);
    const bool numeric = !nameOrCode.empty() && end && *end == '\0';
    for (const PixelFormat& f : kFormats) {
        if (numeric ? f.code == code : nameOrCode == f.name) return &f;
    }
    return nullptr;
}

std::string PixelFormatNames() {
    std::string names;
    for (const PixelFormat& f : kFormats) {
        if (!names.empty()) names += ", ";
        names += f.name;
    }
    return names;
}

void RowToRGBA(const PixelFormat& format, const uint8_t* src, uint8_t* rgba, int width) {
    Decode(format, src, rgba, width);
}

void StorePixel(const PixelFormat& f, uint8_t* p, const uint8_t c[4]) {
    Packed16 packed;
    if (f.code == ZEL_FORMAT_ARGB32) {
        const unsigned a = c[3];
        const uint32_t w = uint32_t(a) << 24 | uint32_t((c[0] * a + 127) / 255) << 16 |
                           uint32_t((c[1] * a + 127) / 255) << 8 | uint32_t((c[2] * a + 127) / 255);
        std::memcpy(p, &w, 4);
    } else if (f.code == ZEL_FORMAT_RGB24) {
        p[0] = c[0], p[1] = c[1], p[2] = c[2];
    } else if (f.bytes == 3) {
        p[0] = c[2], p[1] = c[1], p[2] = c[0];
    } else if (Packed16For(f.code, packed)) {
        const uint16_t w = uint16_t(Reduce(c[0], packed.rBits) << packed.rShift |
                                    Reduce(c[1], packed.gBits) << packed.gShift |
                                    Reduce(c[2], packed.bBits) << packed.bShift);
        std::memcpy(p, &w, 2);
    }
}

void BlendPixel(const PixelFormat& f, uint8_t* p, const uint8_t rgb[3], unsigned alpha) {
    if (alpha == 0) return;
    uint8_t dst[4];
    Decode(f, p, dst, 1);
    uint8_t out[4];
    // Straight-alpha source over: the result's alpha is a + d(1 - a), and the
    // colour is weighted by each side's contribution to it.
    const unsigned da = f.hasAlpha ? dst[3] : 255;
    const unsigned outA = alpha + (da * (255 - alpha) + 127) / 255;
    for (int i = 0; i < 3; ++i) {
        const unsigned num = rgb[i] * alpha * 255 + dst[i] * da * (255 - alpha);
        out[i] = uint8_t(outA ? (num / 255 + outA / 2) / outA : 0);
    }
    out[3] = uint8_t(outA > 255 ? 255 : outA);
    StorePixel(f, p, out);
}
