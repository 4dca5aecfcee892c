// Engine benchmark: zelEnginePlay on generated heavy movies at 1280x720 and
// 1920x1080, as a full redraw of one frame and as incremental frames (a few
// shapes move each frame and only the update boxes are repainted).
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "fixture/SwfBuilder.h"
#include "zelengine.h"

namespace {

constexpr int kMovieW = 1280, kMovieH = 720;  // movie size in pixels
constexpr int kFrames = 64;

enum Scene { kManyShapes, kCurvedOutlines, kGradients };

swf::Rgba RandomColor(std::mt19937& rng, bool translucent) {
    std::uniform_int_distribution<int> c(0, 255), a(60, 230);
    return {static_cast<uint8_t>(c(rng)), static_cast<uint8_t>(c(rng)), static_cast<uint8_t>(c(rng)),
            static_cast<uint8_t>(translucent ? a(rng) : 255)};
}

// A glyph-like outline: an outer loop of curves with a counter cut out.
swf::Shape Outline(int size, swf::Rgba color) {
    swf::Shape s({swf::Fill::Solid(color)}, {});
    const int r = size * 10, c = r * 55 / 100;
    s.MoveTo(0, -r).Fill1(1).CurveTo(c, -r, r, 0).CurveTo(r, c, 0, r).CurveTo(-c, r, -r, 0).CurveTo(-r, -c, 0, -r);
    const int h = r / 2;
    s.MoveTo(0, -h).CurveTo(-h, -h, -h, 0).CurveTo(-h, h, 0, h).CurveTo(h, h, h, 0).CurveTo(h, -h, 0, -h);
    return s;
}

swf::Bytes Definitions(Scene scene, std::mt19937& rng, int& kinds, int& count) {
    swf::Tags tags;
    std::uniform_int_distribution<int> px(10, 24);
    if (scene == kManyShapes) {
        kinds = 16;
        count = 5000;
        for (int i = 1; i <= kinds; ++i) {
            const int w = px(rng) * 20, h = px(rng) * 20;
            swf::Shape s({swf::Fill::Solid(RandomColor(rng, true))}, {});
            s.MoveTo(0, 0).Fill1(1).LineTo(w, 0).CurveTo(w + 100, h / 2, w, h).LineTo(0, h).LineTo(0, 0);
            tags.Add(swf::DefineShape(static_cast<uint16_t>(i), swf::Rect{0, w + 100, 0, h, 0}, s, 3));
        }
    } else if (scene == kCurvedOutlines) {
        kinds = 32;
        count = 2000;
        for (int i = 1; i <= kinds; ++i) {
            const int size = px(rng) / 2;
            tags.Add(swf::DefineShape(static_cast<uint16_t>(i), swf::Rect{-size * 10, size * 10, -size * 10, size * 10, 0},
                                      Outline(size, RandomColor(rng, false)), 3));
        }
    } else {
        kinds = 8;
        count = 12;
        for (int i = 1; i <= kinds; ++i) {
            std::vector<swf::GradStop> stops = {{0, RandomColor(rng, true)}, {128, RandomColor(rng, true)}, {255, RandomColor(rng, true)}};
            const double s = 0.8 + 0.1 * i;
            swf::Matrix gm = swf::Matrix::Scale(s, s * 0.6, kMovieW * 10, kMovieH * 10);
            swf::Fill fill = i % 2 ? swf::Fill::Linear(gm, stops) : swf::Fill::Radial(gm, stops);
            swf::Shape sh({fill}, {});
            sh.MoveTo(0, 0).Fill1(1).LineTo(kMovieW * 20, 0).LineTo(kMovieW * 20, kMovieH * 20).LineTo(0, kMovieH * 20).LineTo(0, 0);
            tags.Add(swf::DefineShape(static_cast<uint16_t>(i), swf::Rect{0, kMovieW * 20, 0, kMovieH * 20, 0}, sh, 3));
        }
    }
    return tags.Data();
}

swf::Bytes BuildMovie(Scene scene) {
    std::mt19937 rng(7);
    int kinds = 0, count = 0;
    swf::Movie m;
    m.frame = swf::Rect{0, kMovieW * 20, 0, kMovieH * 20, 0};
    m.tags.Add(swf::SetBackgroundColor({250, 250, 245, 255}));
    m.tags.Raw(Definitions(scene, rng, kinds, count));
    std::uniform_int_distribution<int> x(0, kMovieW * 20), y(0, kMovieH * 20), kind(1, kinds);
    std::uniform_real_distribution<double> turn(-0.6, 0.6);
    for (int i = 0; i < count; ++i) {
        swf::Matrix mat = swf::Matrix::Translate(scene == kGradients ? 0 : x(rng), scene == kGradients ? 0 : y(rng));
        if (scene == kGradients) mat.rotate = std::make_pair(turn(rng) * 0.2, turn(rng) * 0.2);
        m.tags.Add(swf::PlaceObject(static_cast<uint16_t>(kind(rng)), static_cast<uint16_t>(i + 1), mat));
    }
    m.tags.Add(swf::ShowFrame());
    // Later frames move a few actors: 1% of the shapes, or one gradient.
    const int moves = scene == kGradients ? 1 : count / 100;
    std::uniform_int_distribution<int> depth(1, count);
    for (int f = 1; f < kFrames; ++f) {
        for (int i = 0; i < moves; ++i) {
            swf::Place2 p;
            p.depth = static_cast<uint16_t>(depth(rng));
            p.move = true;
            p.matrix = swf::Matrix::Translate(scene == kGradients ? (f % 7) * 100 : x(rng), scene == kGradients ? 0 : y(rng));
            m.tags.Add(swf::PlaceObject2(p));
        }
        m.tags.Add(swf::ShowFrame());
    }
    return m.Build();
}

struct Player {
    swf::Bytes movie;
    void* handle;
    std::vector<uint32_t> pixels;
    _GOFFSCR buffer;
    int w, h;

    Player(Scene scene, int width, int height) : movie(BuildMovie(scene)), w(width), h(height) {
        handle = zelEngineOpen(movie.data(), static_cast<unsigned>(movie.size()));
        pixels.assign(static_cast<size_t>(w) * h, 0);
        buffer = {0, 0, w, h, 280, reinterpret_cast<intptr_t>(pixels.data()), 0};
        zelEngineForward(handle, 1, w, h, 1);
        zelEnginePlay(handle, &buffer, 0, 0, w, h, 1);
    }
    ~Player() { zelEngineClose(handle); }
};

void Full(benchmark::State& state, Scene scene, int w, int h) {
    Player p(scene, w, h);
    for (auto _ : state) {
        zelEnginePlay(p.handle, &p.buffer, 0, 0, p.w, p.h, 2);
        benchmark::DoNotOptimize(p.pixels.data());
    }
}

void Incremental(benchmark::State& state, Scene scene, int w, int h) {
    Player p(scene, w, h);
    for (auto _ : state) {
        if (zelEngineForward(p.handle, 1, p.w, p.h, 1) == 0) {
            state.PauseTiming();
            zelEngineReset(p.handle);
            zelEngineForward(p.handle, 1, p.w, p.h, 1);
            zelEnginePlay(p.handle, &p.buffer, 0, 0, p.w, p.h, 1);
            state.ResumeTiming();
            continue;
        }
        zelEnginePlay(p.handle, &p.buffer, 0, 0, p.w, p.h, 0);
        benchmark::DoNotOptimize(p.pixels.data());
    }
}

}  // namespace

// Names read "scene/engine" so that bench/run.sh puts them in the engine column.
int main(int argc, char** argv) {
    const struct {
        const char* name;
        Scene scene;
    } scenes[] = {{"5000 shapes", kManyShapes}, {"2000 curved outlines", kCurvedOutlines}, {"fullscreen gradients", kGradients}};
    const int sizes[][2] = {{1280, 720}, {1920, 1080}};
    for (const auto& sc : scenes) {
        for (const auto& size : sizes) {
            const std::string base = std::string("engine ") + sc.name + " " + std::to_string(size[0]) + "x" + std::to_string(size[1]);
            benchmark::RegisterBenchmark((base + " full/engine").c_str(), Full, sc.scene, size[0], size[1])
                ->Unit(benchmark::kMillisecond);
            benchmark::RegisterBenchmark((base + " incremental/engine").c_str(), Incremental, sc.scene, size[0], size[1])
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
