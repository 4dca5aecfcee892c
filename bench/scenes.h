// scenes.h: the benchmark scenes as plain data (paths in output pixels with
// their paint), generated from a fixed seed so that every renderer and every
// run draws exactly the same thing.
#ifndef BENCH_SCENES_H
#define BENCH_SCENES_H

#include <cstdint>
#include <vector>

namespace bench {

constexpr int kWidth = 1280;
constexpr int kHeight = 720;

enum class Op : uint8_t { Move, Line, Quad };

struct Command {
    Op op;
    double x, y;   // end point
    double cx, cy; // control point of a quadratic curve
};

struct Stop {
    uint8_t ratio;
    uint8_t r, g, b, a;
};

// One shape: a filled outline (solid colour or gradient) or a stroked polyline.
struct Item {
    std::vector<Command> path;
    uint8_t r = 0, g = 0, b = 0, a = 255;
    int gradient = 0;            // 0 solid, 2 linear, 3 radial
    double matrix[2][3] = {};    // gradient square (-819.2..819.2) to pixels
    std::vector<Stop> stops;
    double strokeWidth = -1;     // >= 0: a stroke of this width instead of a fill
};

struct Scene {
    const char *name;
    std::vector<Item> items;
};

// (a) small solid shapes with alpha, (b) glyph-like outlines of quadratic
// curves, (c) large overlapping gradient shapes, (d) stroked polylines.
Scene smallShapes();
Scene glyphs();
Scene gradients();
Scene strokes();

} // namespace bench

#endif
