// renderers.h: the renderers compared by the benchmark. Each draws a whole
// scene (background cleared to white first) into a premultiplied ARGB32
// buffer of the scene's size that the caller owns; setup that a real program
// would do once (path conversion, pattern building, loading the movie) is
// done in the constructor, outside the timed draw().
#ifndef BENCH_RENDERERS_H
#define BENCH_RENDERERS_H

#include "scenes.h"

#include <cstdint>
#include <memory>
#include <vector>

struct tovCanvas;
struct tovObject;

namespace bench {

class TovRenderer {
public:
    TovRenderer(const Scene &scene, uint32_t *pixels);
    ~TovRenderer();
    void draw();

private:
    const Scene &scene_;
    tovCanvas *canvas_;
    std::vector<tovObject *> brushes_, pens_;
};

class CairoRenderer {
public:
    CairoRenderer(const Scene &scene, uint32_t *pixels);
    ~CairoRenderer();
    void draw();

private:
    struct State;
    std::unique_ptr<State> s_;
};

class AggRenderer {
public:
    AggRenderer(const Scene &scene, uint32_t *pixels);
    ~AggRenderer();
    void draw();

private:
    struct State;
    std::unique_ptr<State> s_;
};

// The engine through its public API: a movie built from the scene (one
// shape character per shape, clip layers as clip depths), repainted whole
// by zelEnginePlay.
class EngineRenderer {
public:
    EngineRenderer(const Scene &scene, uint32_t *pixels);
    ~EngineRenderer();
    void draw();

private:
    std::vector<uint8_t> movie_;
    void *handle_;
    uint32_t *pixels_;
    int width_, height_;
};

} // namespace bench

#endif
