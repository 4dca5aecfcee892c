// Colour-transform products and the clamped per-colour transform.
#include "math/GCxform.h"

#include "base/Memory.h"

namespace {

// 32-bit products divided by 256 toward zero, stored back as 16 bits (they
// wrap for extreme inputs, as the stored format does).
int16_t Mul(int a, int b) { return static_cast<int16_t>((a * b) / 256); }

uint8_t Channel(int c, int mult, int add) {
    int v = ((c * mult) >> 8) + add;  // the shift rounds toward minus infinity
    return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}

}  // namespace

GCxform::GCxform(const GCxform& other) { tovMemCpy(this, &other, sizeof(GCxform)); }

GCxform& GCxform::operator=(const GCxform& other) {
    tovMemCpy(this, &other, sizeof(GCxform));
    return *this;
}

GCxform GCxform::operator*(const GCxform& b) const {
    GCxform r;
    r.alphaMult = Mul(alphaMult, b.alphaMult);
    r.alphaAdd = static_cast<int16_t>(Mul(alphaAdd, b.alphaMult) + b.alphaAdd);
    r.redMult = Mul(redMult, b.redMult);
    r.redAdd = static_cast<int16_t>(Mul(redAdd, b.redMult) + b.redAdd);
    r.greenMult = Mul(greenMult, b.greenMult);
    r.greenAdd = static_cast<int16_t>(Mul(greenAdd, b.greenMult) + b.greenAdd);
    r.blueMult = Mul(blueMult, b.blueMult);
    r.blueAdd = static_cast<int16_t>(Mul(blueAdd, b.blueMult) + b.blueAdd);
    return r;
}

GCxform& GCxform::operator*=(const GCxform& b) {
    const int oldGreenAdd = greenAdd, oldRedAdd = redAdd, oldAlphaAdd = alphaAdd, oldBlueAdd = blueAdd;
    greenMult = Mul(b.greenMult, greenMult);
    alphaMult = Mul(b.alphaMult, alphaMult);
    redMult = Mul(b.redMult, redMult);
    greenAdd = static_cast<int16_t>(Mul(b.greenAdd, greenMult) + oldGreenAdd);
    redAdd = static_cast<int16_t>(Mul(b.redAdd, redMult) + oldRedAdd);
    alphaAdd = static_cast<int16_t>(Mul(b.alphaAdd, alphaMult) + oldAlphaAdd);
    blueMult = Mul(b.blueMult, greenAdd);
    blueAdd = static_cast<int16_t>(Mul(b.blueAdd, greenAdd) + oldBlueAdd);
    return *this;
}

int GCxform::IsIdentify() const {
    return alphaMult == 256 && redMult == 256 && greenMult == 256 && blueMult == 256 &&
           alphaAdd == 0 && redAdd == 0 && greenAdd == 0 && blueAdd == 0;
}

_GRGBA GCxform::Transform(_GRGBA c) const {
    _GRGBA r;
    r.red = Channel(c.red, redMult, redAdd);
    r.green = Channel(c.green, greenMult, greenAdd);
    r.blue = Channel(c.blue, blueMult, blueAdd);
    r.alpha = Channel(c.alpha, alphaMult, alphaAdd);
    return r;
}

GCxform GCxform::Combine(const GCxform* a, const GCxform* b) {
    if (!a && !b) return GCxform();
    if (!a) return *b;
    if (!b) return *a;
    return *a * *b;
}
