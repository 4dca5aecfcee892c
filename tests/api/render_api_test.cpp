// Pixels drawn through the public API: fills of every shape version, curves,
// strokes and hairlines, gradients, colour transforms, the view (zoom, the
// four orientations, origin, host transform), morph ratios, a sub-rectangle
// with a stride, and every pixel format.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <tuple>

#include "api/EngineHost.h"

namespace {

using host::Color;
using host::Engine;
using host::Pixels;

struct Rgb {
    int r, g, b;
};

// Colour of an opaque premultiplied ARGB pixel.
Rgb RgbOf(uint32_t p) { return {static_cast<int>((p >> 16) & 255), static_cast<int>((p >> 8) & 255), static_cast<int>(p & 255)}; }

void ExpectNear(uint32_t pixel, Rgb want, int tolerance, const char* where) {
    Rgb got = RgbOf(pixel);
    EXPECT_NEAR(got.r, want.r, tolerance) << where << " pixel " << std::hex << pixel;
    EXPECT_NEAR(got.g, want.g, tolerance) << where << " pixel " << std::hex << pixel;
    EXPECT_NEAR(got.b, want.b, tolerance) << where << " pixel " << std::hex << pixel;
}

constexpr Rgb kWhite = {255, 255, 255};

// A movie (size in pixels) on a white background, with `tags` in frame 1.
swf::Movie Scene(int w, int h) {
    swf::Movie m = host::MovieOf(w, h);
    m.tags.Add(swf::SetBackgroundColor(Color(255, 255, 255)));
    return m;
}

// Opens, forwards one frame into a view of the movie's size (or `view`) and
// draws it.
Pixels Draw(swf::Movie m, int w, int h, const std::function<void(void*)>& before = {}) {
    m.tags.Add(swf::ShowFrame());
    Engine e(m.Build());
    EXPECT_TRUE(e);
    Pixels px(w, h);
    if (before) before(e.get());
    zelEngineForward(e.get(), 1, w, h, 1);
    zelEnginePlay(e.get(), px.get(), 0, 0, w, h, 0);
    return px;
}

TEST(RenderFills, EveryShapeVersionFillsItsArea) {
    for (int version : {1, 2, 3}) {
        swf::Movie m = Scene(100, 100);
        m.tags.Add(host::BoxShape(1, 400, 400, 1200, 1200, Color(200, 30, 60, 128), version))
            .Add(swf::PlaceObject(1, 1, swf::Matrix()));
        Pixels px = Draw(m, 100, 100);
        // Alpha is read only by DefineShape3; the others are opaque.
        Rgb inside = version == 3 ? Rgb{228, 143, 158} : Rgb{200, 30, 60};
        ExpectNear(px.at(40, 40), inside, 2, "inside");
        ExpectNear(px.at(20, 20), inside, 2, "top-left pixel");
        ExpectNear(px.at(19, 40), kWhite, 0, "left of the box");
        ExpectNear(px.at(60, 40), kWhite, 0, "right of the box");
        EXPECT_EQ(px.at(5, 95) >> 24, 0xFFu);
    }
}

TEST(RenderFills, CurvesBulgeWhereTheControlPointPulls) {
    swf::Movie m = Scene(100, 100);
    swf::Shape s({swf::Fill::Solid(Color(0, 0, 255))}, {});
    // A flat top edge and a bottom edge curving down toward (1000, 1800).
    s.MoveTo(200, 200).Fill1(1).LineTo(1800, 200).LineTo(1800, 600).CurveTo(1000, 1800, 200, 600).LineTo(200, 200);
    m.tags.Add(swf::DefineShape(1, swf::Rect{200, 1800, 200, 1200, 0}, s)).Add(swf::PlaceObject(1, 1, swf::Matrix()));
    Pixels px = Draw(m, 100, 100);
    ExpectNear(px.at(50, 55), {0, 0, 255}, 0, "inside the bulge");  // the curve's lowest point is at y = 60
    ExpectNear(px.at(50, 62), kWhite, 0, "below the bulge");
    ExpectNear(px.at(15, 45), kWhite, 0, "outside the curve near its end");
}

TEST(RenderStrokes, WidthsAreScaledAndHairlinesStayOnePixel) {
    for (int zoom : {1, 2}) {
        swf::Movie m = Scene(100, 100);
        swf::Shape s({}, {{80, Color(0, 0, 0)}, {0, Color(255, 0, 0)}});
        s.MoveTo(200, 1000).LineStyle(1).LineTo(1800, 1000);  // 4 px wide at zoom 1, y = 50
        s.MoveTo(1000, 200).LineStyle(2).LineTo(1000, 700);   // hairline, x = 50
        m.tags.Add(swf::DefineShape(1, swf::Rect{160, 1840, 160, 1040, 0}, s)).Add(swf::PlaceObject(1, 1, swf::Matrix()));
        Pixels px = Draw(m, 100 * zoom, 100 * zoom);
        const int y = 50 * zoom;
        ExpectNear(px.at(50 * zoom, y - 1), {0, 0, 0}, 2, "on the thick line");
        ExpectNear(px.at(50 * zoom, y + 2 * zoom + 1), kWhite, 2, "beside the thick line");
        // The hairline covers about one pixel's worth of ink across its width.
        int ink = 0;
        for (int x = 50 * zoom - 3; x <= 50 * zoom + 3; ++x) ink += 255 - RgbOf(px.at(x, 20 * zoom)).g;
        EXPECT_NEAR(ink, 255, 40) << "zoom " << zoom;
    }
}

// A 1600 x 1600 twip box filled with `fill`, placed at (200, 200).
Pixels GradientBox(const swf::Fill& fill) {
    swf::Movie m = Scene(100, 100);
    swf::Shape s({fill}, {});
    s.MoveTo(0, 0).Fill1(1).LineTo(1600, 0).LineTo(1600, 1600).LineTo(0, 1600).LineTo(0, 0);
    m.tags.Add(swf::DefineShape(1, swf::Rect{0, 1600, 0, 1600, 0}, s, 2)).Add(swf::PlaceObject(1, 1, swf::Matrix::Translate(200, 200)));
    return Draw(m, 100, 100);
}

TEST(RenderGradients, LinearGradientFollowsItsMatrixUnderRotation) {
    const std::vector<swf::GradStop> stops = {{0, Color(255, 0, 0)}, {255, Color(0, 0, 255)}};
    // The gradient square (32768 twips) scaled onto the box's 1600 twips.
    const double s = 1600.0 / 32768.0;
    Pixels across = GradientBox(swf::Fill::Linear(swf::Matrix::Scale(s, s, 800, 800), stops));
    // Pixel x = 10 + i covers gradient position (i + 0.5) / 80.
    for (int i : {5, 40, 75}) {
        double t = (i + 0.5) / 80.0;
        Rgb want = {static_cast<int>(std::lround(255 * (1 - t))), 0, static_cast<int>(std::lround(255 * t))};
        ExpectNear(across.at(10 + i, 50), want, 3, "horizontal gradient");
    }
    swf::Matrix turned;
    turned.scale = std::make_pair(0.0, 0.0);
    turned.rotate = std::make_pair(s, -s);  // a quarter turn: the gradient runs down
    turned.tx = 800;
    turned.ty = 800;
    Pixels down = GradientBox(swf::Fill::Linear(turned, stops));
    ExpectNear(down.at(50, 12), {246, 0, 9}, 3, "top of the turned gradient");
    ExpectNear(down.at(50, 87), {9, 0, 246}, 3, "bottom of the turned gradient");
    ExpectNear(down.at(12, 50), RgbOf(down.at(87, 50)), 1, "each row is one colour");
}

TEST(RenderGradients, RadialGradientIsCentredAndPadded) {
    const std::vector<swf::GradStop> stops = {{0, Color(0, 255, 0)}, {255, Color(0, 0, 0)}};
    const double s = 800.0 / 16384.0;  // radius 800 twips
    Pixels px = GradientBox(swf::Fill::Radial(swf::Matrix::Scale(s, s, 800, 800), stops));
    // Pixel centres sit 0.7 px and 20.5 px from the centre (radius 40 px).
    ExpectNear(px.at(50, 50), {0, 250, 0}, 4, "centre");
    ExpectNear(px.at(70, 50), {0, 124, 0}, 4, "half radius");
    ExpectNear(px.at(11, 11), {0, 0, 0}, 1, "corner, past the last stop");
}

TEST(RenderColourTransforms, MultiplyAddAndClamp) {
    struct Case {
        swf::Cxform cx;
        Rgb want;
    } cases[] = {
        {{std::array<int16_t, 4>{128, 256, 512, 256}, std::nullopt, 0}, {50, 100, 255}},
        {{std::nullopt, std::array<int16_t, 4>{-50, 20, 300, 0}, 0}, {50, 120, 255}},
        {{std::array<int16_t, 4>{0, 0, 0, 256}, std::array<int16_t, 4>{10, 20, 30, 0}, 0}, {10, 20, 30}},
    };
    for (const Case& c : cases) {
        swf::Movie m = Scene(40, 40);
        swf::Place2 p;
        p.depth = 1;
        p.characterId = 1;
        p.cxform = c.cx;
        m.tags.Add(host::BoxShape(1, 0, 0, 800, 800, Color(100, 100, 200))).Add(swf::PlaceObject2(p));
        Pixels px = Draw(m, 40, 40);
        ExpectNear(px.at(20, 20), c.want, 1, "transformed colour");
    }
}

TEST(RenderColourTransforms, ZeroAlphaDrawsNothing) {
    swf::Movie m = Scene(40, 40);
    swf::Place2 p;
    p.depth = 1;
    p.characterId = 1;
    p.cxform = swf::Cxform{std::array<int16_t, 4>{256, 256, 256, 0}, std::nullopt, 0};
    m.tags.Add(host::BoxShape(1, 0, 0, 800, 800, Color(0, 0, 0))).Add(swf::PlaceObject2(p));
    Pixels px = Draw(m, 40, 40);
    ExpectNear(px.at(20, 20), kWhite, 0, "invisible shape");
}

TEST(RenderView, PlacementMatrixZoomAndHostTransformCombine) {
    swf::Movie m = Scene(100, 100);
    // A 10 px box, scaled 2x and moved to (20, 30) px.
    m.tags.Add(host::BoxShape(1, 0, 0, 200, 200, Color(0, 128, 0)))
        .Add(swf::PlaceObject(1, 1, swf::Matrix::Scale(2, 2, 400, 600)));
    // Zoom 3 (a 300 px view), then the host moves everything by (7, 5) px.
    const double shift[6] = {1, 0, 7, 0, 1, 5};
    Pixels px = Draw(m, 300, 300, [&](void* h) { zelEngineSetTransform(h, shift); });
    // The box spans (60..120, 90..150) px before the shift.
    ExpectNear(px.at(67 + 1, 95 + 1), {0, 128, 0}, 0, "top-left corner inside");
    ExpectNear(px.at(127 - 1, 155 - 1), {0, 128, 0}, 0, "bottom-right corner inside");
    ExpectNear(px.at(66, 100), kWhite, 0, "left of the box");
    ExpectNear(px.at(128, 100), kWhite, 0, "right of the box");
}

TEST(RenderView, OddViewSizesFitInside) {
    swf::Movie m = Scene(100, 100);
    m.tags.Add(host::BoxShape(1, 0, 0, 2000, 2000, Color(0, 0, 0))).Add(swf::PlaceObject(1, 1, swf::Matrix()));
    Pixels px = Draw(m, 33, 77);  // zoom 0.33: a 33 x 33 stage
    ExpectNear(px.at(16, 16), {0, 0, 0}, 0, "inside the stage");
    ExpectNear(px.at(31, 31), {0, 0, 0}, 0, "last stage pixel");
    ExpectNear(px.at(16, 50), kWhite, 0, "below the stage");
}

TEST(RenderView, FourOrientationsTurnTheFrame) {
    // A 100 x 50 movie with a 20 x 10 px marker in its top-left corner.
    struct Case {
        unsigned orientation;
        int viewW, viewH, orgX, orgY;
        int markX, markY;  // a pixel inside the turned marker
        int freeX, freeY;  // a pixel the marker does not reach
    } cases[] = {
        {0, 100, 50, 0, 0, 10, 5, 90, 45},
        {1, 50, 100, 0, 100, 5, 90, 45, 10},
        {2, 100, 50, 100, 50, 90, 45, 10, 5},
        {3, 50, 100, 50, 0, 45, 10, 5, 90},
    };
    for (const Case& c : cases) {
        swf::Movie m = Scene(100, 50);
        m.tags.Add(host::BoxShape(1, 0, 0, 400, 200, Color(255, 0, 0))).Add(swf::PlaceObject(1, 1, swf::Matrix()));
        Pixels px = Draw(m, c.viewW, c.viewH, [&](void* h) {
            zelEngineFlipCanvas(h, c.orientation);
            zelEngineSetOrg(h, c.orgX, c.orgY);
        });
        std::string where = "orientation " + std::to_string(c.orientation);
        ExpectNear(px.at(c.markX, c.markY), {255, 0, 0}, 0, where.c_str());
        ExpectNear(px.at(c.freeX, c.freeY), kWhite, 0, where.c_str());
    }
}

TEST(RenderMorph, RatiosZeroHalfAndFull) {
    for (auto [ratio, wantColour, wide] : {std::tuple{0, Rgb{255, 0, 0}, false}, std::tuple{32768, Rgb{128, 0, 127}, true},
                                          std::tuple{65535, Rgb{0, 0, 255}, true}}) {
        swf::Movie m = Scene(100, 100);
        swf::Shape start, end;
        start.MoveTo(0, 0).Fill1(1).LineTo(800, 0).LineTo(800, 800).LineTo(0, 800).LineTo(0, 0);
        end.MoveTo(0, 0).LineTo(1600, 0).LineTo(1600, 800).LineTo(0, 800).LineTo(0, 0);
        m.tags.Add(swf::DefineMorphShape(1, swf::Rect{0, 800, 0, 800, 0}, swf::Rect{0, 1600, 0, 800, 0},
                                         {swf::MorphFill::Solid(Color(255, 0, 0), Color(0, 0, 255))}, {}, start, end));
        swf::Place2 p;
        p.depth = 1;
        p.characterId = 1;
        p.ratio = static_cast<uint16_t>(ratio);
        m.tags.Add(swf::PlaceObject2(p));
        Pixels px = Draw(m, 100, 100);
        std::string where = "ratio " + std::to_string(ratio);
        ExpectNear(px.at(20, 20), wantColour, 0, where.c_str());
        // Width 40 px at ratio 0, 60 px at one half, 80 px at the end.
        ExpectNear(px.at(50, 20), wide ? wantColour : kWhite, 0, where.c_str());
        ExpectNear(px.at(70, 20), ratio == 65535 ? wantColour : kWhite, 0, where.c_str());
    }
}

TEST(RenderBuffers, SubRectangleWithStrideKeepsItsGuards) {
    swf::Movie m = Scene(50, 50);
    m.tags.Add(host::BoxShape(1, 0, 0, 1000, 1000, Color(0, 0, 255))).Add(swf::PlaceObject(1, 1, swf::Matrix())).Add(swf::ShowFrame());
    const int stride = 70, rows = 60;
    const uint32_t guard = 0xDEADBEEF;
    std::vector<uint32_t> block(static_cast<size_t>(stride) * rows, guard);
    uint32_t* origin = block.data() + 5 * stride + 10;  // the 50 x 50 window starts at (10, 5)
    _GOFFSCR off = {0, 0, 50, 50, ZEL_FORMAT_ARGB32, reinterpret_cast<intptr_t>(origin), stride * 4};
    Engine e(m.Build());
    zelEngineForward(e.get(), 1, 50, 50, 1);
    zelEnginePlay(e.get(), &off, 0, 0, 50, 50, 0);
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < stride; ++x) {
            bool inWindow = x >= 10 && x < 60 && y >= 5 && y < 55;
            uint32_t p = block[static_cast<size_t>(y) * stride + x];
            if (inWindow) {
                ASSERT_NE(p, guard) << x << "," << y;
            } else {
                ASSERT_EQ(p, guard) << x << "," << y;
            }
        }
    }
    ExpectNear(origin[25 * stride + 25], {0, 0, 255}, 0, "inside the window");
}

// Decodes pixel (x, y) of a buffer in `format` to 8-bit red, green, blue.
Rgb Decode(const std::vector<uint8_t>& buf, int format, int stride, int x, int y) {
    const uint8_t* row = buf.data() + static_cast<size_t>(y) * stride;
    uint16_t w = 0;
    switch (format) {
        case 280: {
            uint32_t p;
            std::memcpy(&p, row + x * 4, 4);
            return RgbOf(p);
        }
        case 24: return {row[x * 3], row[x * 3 + 1], row[x * 3 + 2]};
        case 271:
        case 272: return {row[x * 3 + 2], row[x * 3 + 1], row[x * 3]};
        default: std::memcpy(&w, row + x * 2, 2);
    }
    auto scale = [](int v, int bits) { return v * 255 / ((1 << bits) - 1); };
    switch (format) {
        case 16: return {scale(w >> 11, 5), scale((w >> 5) & 63, 6), scale(w & 31, 5)};
        case 15: return {scale((w >> 10) & 31, 5), scale((w >> 5) & 31, 5), scale(w & 31, 5)};
        case 12: return {scale((w >> 8) & 15, 4), scale((w >> 4) & 15, 4), scale(w & 15, 4)};
        case 268: return {scale(w & 31, 5), scale((w >> 5) & 63, 6), scale(w >> 11, 5)};
        default: return {-1, -1, -1};
    }
}

TEST(RenderBuffers, EveryPixelFormatShowsTheSameColours) {
    swf::Movie m = Scene(20, 20);
    m.tags.Add(host::BoxShape(1, 0, 0, 200, 400, Color(250, 120, 10)))
        .Add(host::BoxShape(2, 200, 0, 400, 400, Color(20, 200, 90, 160), 3))
        .Add(swf::PlaceObject(1, 1, swf::Matrix()))
        .Add(swf::PlaceObject(2, 2, swf::Matrix()))
        .Add(swf::ShowFrame());
    const swf::Bytes movie = m.Build();
    struct Format {
        int code, bytes, tolerance;
    } formats[] = {{280, 4, 0}, {24, 3, 1}, {272, 3, 1}, {271, 3, 1}, {16, 2, 9}, {15, 2, 9}, {12, 2, 18}, {268, 2, 9}};
    std::optional<std::vector<Rgb>> reference;
    for (const Format& f : formats) {
        std::vector<uint8_t> buf(20 * 20 * static_cast<size_t>(f.bytes), 0);
        _GOFFSCR off = {0, 0, 20, 20, f.code, reinterpret_cast<intptr_t>(buf.data()), 0};
        Engine e(movie);
        zelEngineForward(e.get(), 1, 20, 20, 1);
        zelEnginePlay(e.get(), &off, 0, 0, 20, 20, 0);
        std::vector<Rgb> probes;
        for (auto [x, y] : {std::pair{5, 5}, std::pair{15, 5}, std::pair{5, 19}, std::pair{15, 15}})
            probes.push_back(Decode(buf, f.code, 20 * f.bytes, x, y));
        if (!reference) {
            reference = probes;
            continue;
        }
        for (size_t i = 0; i < probes.size(); ++i) {
            std::string where = "format " + std::to_string(f.code) + " probe " + std::to_string(i);
            EXPECT_NEAR(probes[i].r, (*reference)[i].r, f.tolerance) << where;
            EXPECT_NEAR(probes[i].g, (*reference)[i].g, f.tolerance) << where;
            EXPECT_NEAR(probes[i].b, (*reference)[i].b, f.tolerance) << where;
        }
    }
}

}  // namespace

namespace {

// Shape 1: a red box over the whole 40 x 40 movie; shape 2: a blue box over
// its left half, used as the clip layer; shape 3: a green box over its top half.
swf::Movie LayeredScene() {
    swf::Movie m = Scene(40, 40);
    m.tags.Add(host::BoxShape(1, 0, 0, 800, 800, Color(255, 0, 0)))
        .Add(host::BoxShape(2, 0, 0, 400, 800, Color(0, 0, 255)))
        .Add(host::BoxShape(3, 0, 0, 800, 400, Color(0, 255, 0)));
    return m;
}

swf::Bytes ClipLayer(uint16_t depth, uint16_t clipDepth, uint16_t id) {
    swf::Place2 p;
    p.depth = depth;
    p.characterId = id;
    p.clipDepth = clipDepth;
    return swf::PlaceObject2(p);
}

TEST(RenderMasks, ClipLayerMasksTheDepthsItCoversOnly) {
    swf::Movie m = LayeredScene();
    m.tags.Add(ClipLayer(2, 5, 2))                              // mask: the left half
        .Add(swf::PlaceObject(1, 3, swf::Matrix()))             // red, masked
        .Add(swf::PlaceObject(3, 6, swf::Matrix()));            // green, after the mask closed
    Pixels px = Draw(m, 40, 40);
    ExpectNear(px.at(10, 30), {255, 0, 0}, 0, "masked content inside the mask");
    ExpectNear(px.at(30, 30), kWhite, 0, "masked content outside the mask");
    ExpectNear(px.at(30, 10), {0, 255, 0}, 0, "content past the clip depth");
}

TEST(RenderMasks, NestedClipLayersIntersect) {
    swf::Movie m = LayeredScene();
    m.tags.Add(ClipLayer(2, 10, 2))                             // left half, up to depth 10
        .Add(ClipLayer(3, 4, 3))                                // top half, up to depth 4
        .Add(swf::PlaceObject(1, 4, swf::Matrix()))             // inside both masks
        .Add(swf::PlaceObject(1, 5, swf::Matrix::Translate(0, 400)));  // inside the first only
    Pixels px = Draw(m, 40, 40);
    ExpectNear(px.at(10, 10), {255, 0, 0}, 0, "inside both masks");
    ExpectNear(px.at(30, 10), kWhite, 0, "outside the first mask");
    ExpectNear(px.at(10, 30), {255, 0, 0}, 0, "the second mask closed at depth 5");
    ExpectNear(px.at(30, 30), kWhite, 0, "the first mask still open");
}

TEST(RenderModes, MinusOneRepaintsWithoutClearing) {
    swf::Movie m = LayeredScene();
    m.tags.Add(swf::PlaceObject(3, 1, swf::Matrix())).Add(swf::ShowFrame());
    Engine e(m.Build());
    Pixels px(40, 40, 0xFF000000u);
    zelEngineForward(e.get(), 1, 40, 40, 1);
    zelEnginePlay(e.get(), px.get(), 0, 0, 40, 40, 0);  // forced full redraw
    ExpectNear(px.at(10, 30), kWhite, 0, "background after the first Play");
    std::fill(px.data.begin(), px.data.end(), 0xFF000000u);
    zelEnginePlay(e.get(), px.get(), 0, 0, 40, 40, -1);
    ExpectNear(px.at(10, 10), {0, 255, 0}, 0, "content repainted");
    ExpectNear(px.at(10, 30), {0, 0, 0}, 0, "background left as it was");
}

TEST(RenderModes, IncrementalPlayWithNothingChangedLeavesTheBufferAlone) {
    swf::Movie m = LayeredScene();
    m.tags.Add(swf::PlaceObject(3, 1, swf::Matrix())).Add(swf::ShowFrame()).Add(swf::ShowFrame());
    Engine e(m.Build());
    Pixels px(40, 40);
    zelEngineForward(e.get(), 1, 40, 40, 1);
    zelEnginePlay(e.get(), px.get(), 0, 0, 40, 40, 0);
    zelEngineForward(e.get(), 1, 40, 40, 1);
    std::fill(px.data.begin(), px.data.end(), 0x01020304u);
    zelEnginePlay(e.get(), px.get(), 0, 0, 40, 40, 0);
    for (uint32_t p : px.data) ASSERT_EQ(p, 0x01020304u);
}

TEST(RenderModes, NoBackgroundColourMeansNoClearing) {
    swf::Movie m = host::MovieOf(40, 40);
    m.tags.Add(host::BoxShape(3, 0, 0, 800, 400, Color(0, 255, 0))).Add(swf::PlaceObject(3, 1, swf::Matrix()));
    m.tags.Add(swf::ShowFrame());
    Engine e(m.Build());
    Pixels px(40, 40, 0xFF0000FFu);
    zelEngineForward(e.get(), 1, 40, 40, 1);
    zelEnginePlay(e.get(), px.get(), 0, 0, 40, 40, 0);
    ExpectNear(px.at(10, 10), {0, 255, 0}, 0, "shape");
    EXPECT_EQ(px.at(10, 30), 0xFF0000FFu);
}

}  // namespace
