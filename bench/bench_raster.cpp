// bench_raster.cpp: every scene at two sizes, drawn by tov, by the engine
// (a movie of the same shapes, full repaint), by cairo and by AGG in one
// run. Benchmarks are named "scene WxH/renderer" for run.sh's table.
#include "renderers.h"

#include <benchmark/benchmark.h>
#include <cairo.h>

#include <cstring>
#include <string>

namespace {

using namespace bench;

template <class Renderer>
void run(benchmark::State &state, const Scene *scene)
{
    std::vector<uint32_t> pixels(size_t(scene->width) * size_t(scene->height));
    Renderer renderer(*scene, pixels.data());
    for (auto _ : state) {
        renderer.draw();
        benchmark::DoNotOptimize(pixels.data());
        benchmark::ClobberMemory();
    }
}

// Draws the scene once and writes the picture to dir/name.png, to check by
// eye that every renderer draws the same thing.
template <class Renderer>
void dump(const Scene &scene, const std::string &dir, const std::string &name)
{
    std::vector<uint32_t> pixels(size_t(scene.width) * size_t(scene.height));
    Renderer(scene, pixels.data()).draw();
    cairo_surface_t *s = cairo_image_surface_create_for_data(reinterpret_cast<unsigned char *>(pixels.data()),
                                                             CAIRO_FORMAT_ARGB32, scene.width, scene.height,
                                                             scene.width * 4);
    cairo_surface_write_to_png(s, (dir + "/" + name + ".png").c_str());
    cairo_surface_destroy(s);
}

} // namespace

// --dump=DIR writes each renderer's picture of each scene instead of timing.
int main(int argc, char **argv)
{
    using Make = Scene (*)(int, int);
    struct Size {
        int w, h;
    };
    const struct {
        Make make;
        std::vector<Size> sizes;
    } table[] = {
        {mosaic, {{1920, 1080}, {640, 360}}},      {bigShape, {{1920, 1080}, {640, 360}}},
        {textPage, {{1920, 1080}, {640, 360}}},    {blobs, {{1920, 1080}, {640, 360}}},
        {clippedGradients, {{1920, 1080}, {612, 792}}}, {mesh, {{1920, 1080}, {640, 360}}},
        {polyline, {{1920, 1080}, {260, 260}}},
    };
    static std::vector<Scene> scenes;
    scenes.reserve(32);
    for (const auto &row : table)
        for (Size s : row.sizes)
            scenes.push_back(row.make(s.w, s.h));
    if (argc > 1 && std::strncmp(argv[1], "--dump=", 7) == 0) {
        std::string dir = argv[1] + 7;
        for (const Scene &s : scenes) {
            std::string base = s.name + "_" + std::to_string(s.width) + "x" + std::to_string(s.height) + "_";
            dump<TovRenderer>(s, dir, base + "tov");
            dump<EngineRenderer>(s, dir, base + "engine");
            dump<CairoRenderer>(s, dir, base + "cairo");
            dump<AggRenderer>(s, dir, base + "agg");
        }
        return 0;
    }
    for (const Scene &s : scenes) {
        std::string name = s.name + " " + std::to_string(s.width) + "x" + std::to_string(s.height) + "/";
        benchmark::RegisterBenchmark((name + "tov").c_str(), run<TovRenderer>, &s)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "engine").c_str(), run<EngineRenderer>, &s)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "cairo").c_str(), run<CairoRenderer>, &s)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "agg").c_str(), run<AggRenderer>, &s)->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
