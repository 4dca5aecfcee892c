// scenes.cpp: builds the four benchmark scenes from a small deterministic
// random generator, with shapes sized like those of typical vector movies.
#include "scenes.h"

#include <cmath>

namespace bench {

namespace {

constexpr double kPi = 3.14159265358979323846;

class Random {
public:
    explicit Random(uint32_t seed) : state_(seed) {}
    double next() // uniform in [0, 1)
    {
        state_ = state_ * 1664525u + 1013904223u;
        return (state_ >> 8) / 16777216.0;
    }
    double range(double lo, double hi) { return lo + (hi - lo) * next(); }
    uint8_t byte(int lo, int hi) { return uint8_t(lo + int(next() * (hi - lo + 1))); }

private:
    uint32_t state_;
};

void moveTo(Item &it, double x, double y) { it.path.push_back({Op::Move, x, y, 0, 0}); }
void lineTo(Item &it, double x, double y) { it.path.push_back({Op::Line, x, y, 0, 0}); }
void quadTo(Item &it, double cx, double cy, double x, double y) { it.path.push_back({Op::Quad, x, y, cx, cy}); }

// A closed ring of quadratic curves around (cx, cy) with radii rx, ry and
// some wobble, clockwise or not.
void blob(Item &it, Random &rnd, double cx, double cy, double rx, double ry, int n, bool reverse)
{
    double wob[16];
    for (int i = 0; i < n; ++i)
        wob[i] = rnd.range(0.85, 1.1);
    auto at = [&](int i, double scale, double &x, double &y) {
        double a = 2 * kPi * (reverse ? -i : i) / (2 * n);
        x = cx + std::cos(a) * rx * scale;
        y = cy + std::sin(a) * ry * scale;
    };
    double x, y;
    at(0, wob[0], x, y);
    moveTo(it, x, y);
    for (int i = 0; i < n; ++i) {
        double qx, qy, ex, ey;
        at(2 * i + 1, wob[i] / std::cos(kPi / (2 * n)), qx, qy);
        at(2 * i + 2, wob[(i + 1) % n], ex, ey);
        quadTo(it, qx, qy, ex, ey);
    }
}

} // namespace

Scene smallShapes()
{
    Scene s{"a_small_shapes", {}};
    Random rnd(1);
    for (int i = 0; i < 10000; ++i) {
        Item it;
        double cx = rnd.range(0, kWidth), cy = rnd.range(0, kHeight);
        double size = rnd.range(4, 24), angle = rnd.range(0, kPi);
        int corners = 3 + int(rnd.next() * 4);
        for (int k = 0; k < corners; ++k) {
            double a = angle + 2 * kPi * k / corners;
            double x = cx + std::cos(a) * size / 2, y = cy + std::sin(a) * size / 2;
            if (k == 0)
                moveTo(it, x, y);
            else
                lineTo(it, x, y);
        }
        lineTo(it, it.path[0].x, it.path[0].y);
        it.r = rnd.byte(0, 255), it.g = rnd.byte(0, 255), it.b = rnd.byte(0, 255), it.a = rnd.byte(64, 255);
        s.items.push_back(std::move(it));
    }
    return s;
}

Scene glyphs()
{
    Scene s{"b_glyphs", {}};
    Random rnd(2);
    for (int i = 0; i < 2000; ++i) {
        Item it;
        double size = rnd.range(10, 24);
        double cx = rnd.range(size, kWidth - size), cy = rnd.range(size, kHeight - size);
        // An outer bowl and a counter wound the other way, like an "o" or "e".
        blob(it, rnd, cx, cy, size * 0.45, size * 0.5, 6, false);
        blob(it, rnd, cx, cy, size * 0.25, size * 0.3, 4, true);
        it.r = it.g = it.b = 20;
        s.items.push_back(std::move(it));
    }
    return s;
}

Scene gradients()
{
    Scene s{"c_gradients", {}};
    Random rnd(3);
    for (int i = 0; i < 50; ++i) {
        Item it;
        double cx = rnd.range(0, kWidth), cy = rnd.range(0, kHeight);
        double rx = rnd.range(200, 500), ry = rnd.range(150, 400);
        blob(it, rnd, cx, cy, rx, ry, 8, false);
        it.gradient = i % 2 ? 3 : 2;
        double angle = rnd.range(0, kPi), scale = rx / 819.2;
        it.matrix[0][0] = std::cos(angle) * scale, it.matrix[0][1] = -std::sin(angle) * scale;
        it.matrix[1][0] = std::sin(angle) * scale, it.matrix[1][1] = std::cos(angle) * scale;
        it.matrix[0][2] = cx, it.matrix[1][2] = cy;
        it.stops = {{0, rnd.byte(0, 255), rnd.byte(0, 255), rnd.byte(0, 255), rnd.byte(128, 255)},
                    {128, rnd.byte(0, 255), rnd.byte(0, 255), rnd.byte(0, 255), rnd.byte(128, 255)},
                    {255, rnd.byte(0, 255), rnd.byte(0, 255), rnd.byte(0, 255), rnd.byte(128, 255)}};
        s.items.push_back(std::move(it));
    }
    return s;
}

Scene strokes()
{
    Scene s{"d_strokes", {}};
    Random rnd(4);
    for (int i = 0; i < 2000; ++i) {
        Item it;
        double x = rnd.range(0, kWidth), y = rnd.range(0, kHeight);
        moveTo(it, x, y);
        int n = 3 + int(rnd.next() * 6);
        for (int k = 0; k < n; ++k) {
            x += rnd.range(-40, 40), y += rnd.range(-40, 40);
            lineTo(it, x, y);
        }
        it.strokeWidth = 1 + int(rnd.next() * 8);
        it.r = rnd.byte(0, 255), it.g = rnd.byte(0, 255), it.b = rnd.byte(0, 255), it.a = rnd.byte(128, 255);
        s.items.push_back(std::move(it));
    }
    return s;
}

} // namespace bench
