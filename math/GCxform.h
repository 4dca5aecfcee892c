// GCxform: an SWF colour transform, eight signed 16-bit terms (multipliers
// in 8.8 fixed point, alpha first), and _GRGBA, a colour as four bytes red,
// green, blue, alpha. Products read left to right: (a * b) applies a, then b.
#ifndef ZEL_MATH_GCXFORM_H
#define ZEL_MATH_GCXFORM_H

#include <cstdint>

struct _GRGBA {
    uint8_t red, green, blue, alpha;
};

class GCxform {
public:
    int16_t alphaMult = 256, alphaAdd = 0;
    int16_t redMult = 256, redAdd = 0;
    int16_t greenMult = 256, greenAdd = 0;
    int16_t blueMult = 256, blueAdd = 0;

    GCxform() = default;
    GCxform(const GCxform& other);
    GCxform& operator=(const GCxform& other);

    GCxform operator*(const GCxform& b) const;
    // In-place product that mixes the blue channel with the green addend; no
    // caller uses it and it is kept exactly so.
    GCxform& operator*=(const GCxform& b);
    int IsIdentify() const;
    // Each channel: ((c * mult) >> 8) + add, clamped to 0..255.
    _GRGBA Transform(_GRGBA c) const;
    static GCxform Combine(const GCxform* a, const GCxform* b);
};

#endif
