// Fit-inside zoom, quarter-turn matrices and the whole-degree sine table.
#include "math/GTransform.h"

#include <cmath>

#include "base/Memory.h"

namespace {

// floor(sin(i degrees) * 32768) for i = 0..90.
struct SineTable {
    double v[91];
    SineTable() {
        const double pi = 3.14159265358979323846;
        for (int i = 0; i <= 90; ++i) v[i] = std::floor(std::sin(i * pi / 180.0) * 32768.0);
    }
};

const SineTable& Sines() {
    static const SineTable table;
    return table;
}

// Whole degrees of |degrees|, reduced modulo 360, without overflowing on
// huge or non-finite input.
int WholeDegrees(double degrees) {
    double a = std::floor(std::fabs(degrees));
    if (!(a < 1e15)) return 0;
    return static_cast<int>(std::fmod(a, 360.0));
}

}  // namespace

unsigned GTransform::ToRightAngle(int degrees) {
    int a = degrees % 360;
    if (a < 0) a += 360;
    switch (a) {
        case 0: return 0;
        case 90: return 1;
        case 180: return 2;
        case 270: return 3;
        default: return 0xFFFFFFFFu;
    }
}

double GTransform::GetZoomScale(int w, int h, int viewW, int viewH, unsigned orientation) {
    if (viewW == 0 || viewH == 0 || w == 0 || h == 0) return 0.0;
    if (orientation == 1 || orientation == 3) {
        int t = w;
        w = h;
        h = t;
    }
    // The products wrap like 32-bit integers; computed unsigned to stay defined.
    int32_t lhs = static_cast<int32_t>(static_cast<uint32_t>(w) * static_cast<uint32_t>(viewH));
    int32_t rhs = static_cast<int32_t>(static_cast<uint32_t>(h) * static_cast<uint32_t>(viewW));
    if (lhs > rhs) return static_cast<double>(viewW) / w;
    return static_cast<double>(viewH) / h;
}

GMatrix GTransform::GetTransForm(double scale, unsigned orientation, _GPOINT origin) {
    GMatrix r;
    tovMemSet(r.m, 0, sizeof(r.m));
    switch (orientation) {
        case 0: r.m[0][0] = scale; r.m[1][1] = scale; break;
        case 1: r.m[0][1] = scale; r.m[1][0] = -scale; break;
        case 2: r.m[0][0] = -scale; r.m[1][1] = -scale; break;
        case 3: r.m[0][1] = -scale; r.m[1][0] = scale; break;
        default: return r;
    }
    r.m[0][2] = origin.x;
    r.m[1][2] = origin.y;
    return r;
}

_GPOINT GTransform::GetSrcPoint(double scale, unsigned orientation, _GPOINT origin, _GPOINT point) {
    _GPOINT d = {point.x - origin.x, point.y - origin.y};
    GMatrix m = GetTransForm(scale, orientation, origin);
    if (orientation == 0 || orientation == 2) return {d.x / m.m[0][0], d.y / m.m[1][1]};
    if (orientation == 1 || orientation == 3) return {d.y / m.m[1][0], d.x / m.m[0][1]};
    return {0.0, 0.0};
}

_GPOINT GTransform::GetOffset(double scale, unsigned orientation, _GPOINT point, _GPOINT target) {
    GMatrix m = GetTransForm(scale, orientation, point);
    double ox = m.m[0][0] != 0.0 ? point.x * m.m[0][0] : point.y * m.m[0][1];
    double oy = m.m[1][0] != 0.0 ? point.x * m.m[1][0] : point.y * m.m[1][1];
    return {target.x - ox, target.y - oy};
}

GAngleFunction::GAngleFunction() { tovMemCpy(table, Sines().v, sizeof(table)); }

double GAngleFunction::Sin(double degrees) const {
    bool negative = degrees < 0;
    int a = WholeDegrees(degrees);
    if (a > 180) {
        negative = !negative;
        a -= 180;
    }
    double v = a <= 90 ? table[a] : table[180 - a];
    return negative ? -v : v;
}

double GAngleFunction::Cos(double degrees) const {
    int a = WholeDegrees(degrees);
    bool negate = false;
    if (a > 180) {
        a -= 180;
        negate = true;
    }
    double v = a <= 90 ? table[90 - a] : -table[a - 90];
    return negate ? -v : v;
}
