// scenes.h: the benchmark scenes as plain data, modelled on frames of real
// movies and generated from fixed seeds so that every renderer (tov, cairo,
// AGG, and the engine through a movie built from the same data) draws
// exactly the same thing. Shapes are SWF-style edge soups: every edge names
// the fill on its left and on its right and a pen.
#ifndef BENCH_SCENES_H
#define BENCH_SCENES_H

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Rgba {
    uint8_t r = 0, g = 0, b = 0, a = 255;
};

struct Stop {
    uint8_t ratio;
    Rgba color;
};

// A fill: solid, or a gradient (2 linear, 3 radial) whose square
// (-819.2..819.2 in both axes) `matrix` (a b tx / c d ty) maps to pixels.
struct Paint {
    int gradient = 0;
    Rgba color;
    double matrix[2][3] = {};
    std::vector<Stop> stops;
};

struct Pen {
    double width = 1; // pixels; 0 is a hairline
    Rgba color;
};

enum class Op : uint8_t { Style, Move, Line, Quad };

// Style sets fill0 (left), fill1 (right) and pen for the following edges;
// indices count from 1 into the shape's fills and pens, 0 is none.
struct Command {
    Op op;
    double x = 0, y = 0;   // end point
    double cx = 0, cy = 0; // control point of a quadratic curve
    int fill0 = 0, fill1 = 0, pen = 0;
};

struct Shape {
    std::vector<Paint> fills;
    std::vector<Pen> pens;
    std::vector<Command> commands;
    int clips = 0; // > 0: a clip layer whose coverage masks the next `clips` shapes
};

struct Scene {
    std::string name;
    int width, height;
    std::vector<Shape> shapes;
};

// Each scene at the given size; the stock sizes are in bench_raster.cpp.
Scene mosaic(int w, int h);          // ~7,500 fills sharing ~56,000 edges in one shape
Scene bigShape(int w, int h);        // one shape, ~40 edges, five fills covering the frame
Scene textPage(int w, int h);        // ~2,600 glyph outlines, ~52,000 edges
Scene blobs(int w, int h);           // 500 translucent blobs with outlines
Scene clippedGradients(int w, int h); // nine gradient shapes, each in a star or blob clip layer
Scene mesh(int w, int h);            // ~3,900 small triangles, one shape each
Scene polyline(int w, int h);        // one pen, 65,535 edges with round joins

// Path of one fill of a shape as closed loops wound with the fill on their
// right, for renderers that fill one style at a time.
struct PathOp {
    Op op; // Move, Line or Quad
    double x, y, cx, cy;
};
std::vector<PathOp> fillPath(const Shape &shape, int fill);
// Polylines of one pen (a move or a change of pen ends one).
std::vector<PathOp> penPath(const Shape &shape, int pen);

// The paths of each fill and pen of each shape of a scene.
struct PreparedShape {
    std::vector<std::vector<PathOp>> fills, pens;
};
std::vector<PreparedShape> prepare(const Scene &scene);

} // namespace bench

#endif
