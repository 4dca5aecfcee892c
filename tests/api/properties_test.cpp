// What must hold for any movie, checked frame after frame over many random
// movies from the generator: repainting only the update boxes gives the same
// pixels bit for bit as repainting everything; every quarter turn shows the
// turned picture; every pixel format shows the ARGB picture within its
// precision.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "api/EngineHost.h"
#include "fixture/MovieGenerator.h"

namespace {

// The pixel formats as this test reads them, independently of the library:
// bytes per pixel, bits per channel and a decoder to 8-bit red, green, blue.
namespace pixels {

struct Format {
    int code;
    int bytes;
    int bits[3];  // precision of red, green, blue
};

constexpr Format kFormats[] = {
    {280, 4, {8, 8, 8}}, {24, 3, {8, 8, 8}}, {272, 3, {8, 8, 8}}, {271, 3, {8, 8, 8}},
    {16, 2, {5, 6, 5}},  {15, 2, {5, 5, 5}}, {12, 2, {4, 4, 4}},  {268, 2, {5, 6, 5}},
};

void Decode(int format, const uint8_t* p, int rgb[3]) {
    uint16_t w = 0;
    std::memcpy(&w, p, 2);
    auto widen = [](int v, int bits) { return v * 255 / ((1 << bits) - 1); };
    switch (format) {
        case 280: {
            uint32_t v;
            std::memcpy(&v, p, 4);
            rgb[0] = (v >> 16) & 255, rgb[1] = (v >> 8) & 255, rgb[2] = v & 255;
            break;
        }
        case 24: rgb[0] = p[0], rgb[1] = p[1], rgb[2] = p[2]; break;
        case 271: case 272: rgb[0] = p[2], rgb[1] = p[1], rgb[2] = p[0]; break;
        case 16: rgb[0] = widen(w >> 11, 5), rgb[1] = widen((w >> 5) & 63, 6), rgb[2] = widen(w & 31, 5); break;
        case 268: rgb[0] = widen(w & 31, 5), rgb[1] = widen((w >> 5) & 63, 6), rgb[2] = widen(w >> 11, 5); break;
        case 15: rgb[0] = widen((w >> 10) & 31, 5), rgb[1] = widen((w >> 5) & 31, 5), rgb[2] = widen(w & 31, 5); break;
        default: rgb[0] = widen((w >> 8) & 15, 4), rgb[1] = widen((w >> 4) & 15, 4), rgb[2] = widen(w & 15, 4); break;
    }
}

// How far a channel may stray from the ARGB picture: one step of the stored
// precision, plus one more where blending read back a rounded destination.
int Tolerance(const Format& f, int channel) {
    return f.bits[channel] == 8 ? 1 : 2 * (255 / ((1 << f.bits[channel]) - 1));
}

}  // namespace pixels

constexpr int kW = swf::MovieGenerator::kWidth * 2, kH = swf::MovieGenerator::kHeight * 2;  // a zoom of 2
constexpr int kFrames = 14;

// Plays the movie in `views` engines side by side and calls check(frame)
// after each frame is drawn in all of them.
template <class Draw, class Check>
void EveryFrame(unsigned seed, bool strokes, int views, Draw draw, Check check) {
    const swf::Bytes movie = swf::MovieGenerator(seed, strokes).Generate(kFrames);
    std::vector<std::unique_ptr<host::Engine>> engines;
    for (int v = 0; v < views; ++v) engines.push_back(std::make_unique<host::Engine>(movie));
    ASSERT_TRUE(*engines[0]) << seed;
    for (int frame = 0; frame < kFrames; ++frame) {
        for (int v = 0; v < views; ++v) draw(engines[size_t(v)]->get(), v);
        check(frame);
    }
}

TEST(Properties, IncrementalDrawingMatchesAFullRedraw) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        host::Pixels a(kW, kH), b(kW, kH);
        host::Pixels* buffers[] = {&a, &b};
        EveryFrame(
            seed, true, 2,
            [&](void* e, int v) {
                zelEngineForward(e, 1, kW, kH, 1);
                zelEnginePlay(e, buffers[v]->get(), 0, 0, kW, kH, v);
            },
            [&](int frame) {
                ASSERT_TRUE(a.data == b.data) << "seed " << seed << " frame " << frame;
            });
    }
}

// A point (x, y) of the picture lands at (y, W - x), (W - x, H - y) and
// (H - y, x) after one, two and three quarter turns. Turned, edges are cut
// into cells along the other axis, so each layer's coverage may round to a
// neighbouring level. Strokes are left out: their round caps and joins are
// cut into chords at angles that follow the drawing direction, and hairlines
// snap to whole pixels, so turned strokes differ at their edges.
TEST(Properties, EveryQuarterTurnShowsTheTurnedPicture) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        host::Pixels upright(kW, kH), side(kH, kW), down(kW, kH), other(kH, kW);
        host::Pixels* buffers[] = {&upright, &side, &down, &other};
        EveryFrame(
            seed, false, 4,
            [&](void* e, int v) {
                // The engine turns the picture about the origin; the origin
                // brings it back into the buffer.
                const int origin[4][2] = {{0, 0}, {0, kW}, {kW, kH}, {kH, 0}};
                zelEngineFlipCanvas(e, unsigned(v));
                zelEngineSetOrg(e, origin[v][0], origin[v][1]);
                zelEngineForward(e, 1, buffers[v]->width, buffers[v]->height, 1);
                zelEnginePlay(e, buffers[v]->get(), 0, 0, buffers[v]->width, buffers[v]->height, 0);
            },
            [&](int frame) {
                int worst = 0;
                for (int y = 0; y < kH; ++y) {
                    for (int x = 0; x < kW; ++x) {
                        const uint32_t want = upright.at(x, y);
                        for (uint32_t got : {side.at(y, kW - 1 - x), down.at(kW - 1 - x, kH - 1 - y), other.at(kH - 1 - y, x)}) {
                            for (int shift = 0; shift < 32; shift += 8) {
                                worst = std::max(worst, std::abs(int(want >> shift & 255) - int(got >> shift & 255)));
                            }
                        }
                    }
                }
                ASSERT_LE(worst, 3) << "seed " << seed << " frame " << frame;
            });
    }
}

TEST(Properties, EveryFormatShowsTheArgbPictureWithinItsPrecision) {
    constexpr int kFormatCount = int(std::size(pixels::kFormats));
    for (unsigned seed = 1; seed <= 10; ++seed) {
        std::vector<std::vector<uint8_t>> buffers;
        for (const pixels::Format& f : pixels::kFormats) buffers.emplace_back(size_t(kW * kH * f.bytes));
        EveryFrame(
            seed, true, kFormatCount,
            [&](void* e, int v) {
                const pixels::Format& f = pixels::kFormats[v];
                _GOFFSCR screen{0, 0, kW, kH, f.code, reinterpret_cast<intptr_t>(buffers[size_t(v)].data()), 0};
                zelEngineForward(e, 1, kW, kH, 1);
                zelEnginePlay(e, &screen, 0, 0, kW, kH, 0);
            },
            [&](int frame) {
                for (int v = 1; v < kFormatCount; ++v) {
                    const pixels::Format& f = pixels::kFormats[v];
                    for (int i = 0; i < kW * kH; ++i) {
                        int want[3], got[3];
                        pixels::Decode(280, &buffers[0][size_t(i) * 4], want);
                        pixels::Decode(f.code, &buffers[size_t(v)][size_t(i * f.bytes)], got);
                        for (int k = 0; k < 3; ++k) {
                            ASSERT_NEAR(got[k], want[k], pixels::Tolerance(f, k))
                                << "seed " << seed << " frame " << frame << " format " << f.code << " pixel " << i;
                        }
                    }
                }
            });
    }
}

}  // namespace
