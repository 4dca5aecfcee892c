// Writes samples/demo.swf, the movie the README renders: shapes with solid
// and gradient fills, a morph, a sprite whose stripes move behind a circular
// mask, static text in an embedded font and an edit field drawn as device text.
#include <cmath>
#include <cstdio>
#include <exception>

#include "fixture/SwfBuilder.h"

namespace {

using namespace swf;

constexpr int kFrames = 24;
constexpr uint16_t kPanel = 1, kBall = 2, kBar = 3, kMorph = 4, kMask = 5, kStripes = 6,
                   kSprite = 7, kGlyphFont = 8, kTitle = 9, kDeviceFont = 10, kField = 11;

// A circle of radius r around (cx, cy) from eight quadratic curves; the
// control points sit on the circle's tangents, r / cos(22.5 degrees) out.
Shape& Circle(Shape& s, int32_t cx, int32_t cy, int32_t r) {
    const double pi = std::acos(-1.0);
    const double c = r / std::cos(pi / 8);
    s.MoveTo(cx + r, cy);
    for (int k = 1; k <= 8; ++k) {
        const double mid = (k - 0.5) * pi / 4, end = k * pi / 4;
        s.CurveTo(cx + int32_t(std::lround(c * std::cos(mid))), cy + int32_t(std::lround(c * std::sin(mid))),
                  cx + int32_t(std::lround(r * std::cos(end))), cy + int32_t(std::lround(r * std::sin(end))));
    }
    return s;
}

Shape& Box(Shape& s, int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
    return s.MoveTo(x0, y0).LineTo(x1, y0).LineTo(x1, y1).LineTo(x0, y1).LineTo(x0, y0);
}

Bytes Panel() {
    Shape s({Fill::Solid({0xF4, 0xF1, 0xE8, 0xFF})}, {Line{40, {0x30, 0x30, 0x40, 0xFF}}});
    s.Fill1(1).LineStyle(1);
    Box(s, 0, 0, 7200, 5200);
    return DefineShape(kPanel, {-20, 7220, -20, 5220}, s, 3);
}

// Radial gradient: the gradient square is +-16384 twips, scaled to radius 900.
Bytes Ball() {
    const double k = 900.0 / 16384;
    Shape s({Fill::Radial(Matrix::Scale(k, k, -250, -250),
                          {{0, {0xFF, 0xF0, 0xA0, 0xFF}}, {140, {0xF0, 0x80, 0x20, 0xFF}},
                           {255, {0x90, 0x20, 0x10, 0xFF}}})});
    s.Fill1(1);
    Circle(s, 0, 0, 900);
    return DefineShape(kBall, {-900, 900, -900, 900}, s, 3);
}

// Linear gradient across a 4000-twip bar: the gradient's 32768-twip width
// scaled down, centred on the bar.
Bytes Bar() {
    const double k = 4000.0 / 32768;
    Shape s({Fill::Linear(Matrix::Scale(k, 1, 2000, 0),
                          {{0, {0x20, 0x60, 0xE0, 0xFF}}, {128, {0x40, 0xD0, 0x90, 0xFF}},
                           {255, {0xF0, 0xE0, 0x40, 0x80}}})});
    s.Fill1(1);
    Box(s, 0, 0, 4000, 500);
    return DefineShape(kBar, {0, 4000, 0, 500}, s, 3);
}

// A square that turns into a larger diamond, red to blue.
Bytes Morph() {
    Shape start;
    start.Fill1(1);
    Box(start, -700, -700, 700, 700);
    Shape end;
    end.MoveTo(0, -1000).LineTo(1000, 0).LineTo(0, 1000).LineTo(-1000, 0).LineTo(0, -1000);
    return DefineMorphShape(kMorph, {-700, 700, -700, 700}, {-1000, 1000, -1000, 1000},
                            {MorphFill::Solid({0xE0, 0x30, 0x30, 0xFF}, {0x30, 0x40, 0xE0, 0xFF})},
                            {}, start, end);
}

Bytes MaskCircle() {
    Shape s({Fill::Solid({0, 0, 0, 0xFF})});
    s.Fill1(1);
    Circle(s, 0, 0, 1000);
    return DefineShape(kMask, {-1000, 1000, -1000, 1000}, s, 3);
}

// Twenty-four stripes, 4800 twips wide in all, alternating two colours.
Bytes Stripes() {
    Shape s({Fill::Solid({0x20, 0x90, 0x40, 0xFF}), Fill::Solid({0xF0, 0xF0, 0x30, 0xFF})});
    for (int i = 0; i < 24; ++i) {
        s.Fill1(uint32_t(1 + i % 2));
        Box(s, i * 200 - 2400, -1100, i * 200 - 2200, 1100);
    }
    return DefineShape(kStripes, {-2400, 2400, -1100, 1100}, s, 3);
}

// The sprite's own timeline: the circle masks depths 2..3 and the stripes
// slide by 100 twips a frame; eight frames move them two stripe pairs, so
// the loop is seamless and the circle is always covered.
Bytes Sprite() {
    Tags t;
    t.Add(PlaceObject2({1, false, kMask, Matrix{}, {}, {}, {}, uint16_t(3), {}}));
    for (int f = 0; f < 8; ++f) {
        Place2 p;
        p.depth = 2;
        p.matrix = Matrix::Translate(-1200 + f * 100, 0);
        if (f == 0) {
            p.characterId = kStripes;
        } else {
            p.move = true;
        }
        t.Add(PlaceObject2(p)).Add(ShowFrame());
    }
    return DefineSprite(kSprite, t);
}

// "ZEL" in a font whose three glyphs are made of boxes on the 1024 em.
Bytes GlyphFont() {
    Font2 f;
    f.id = kGlyphFont;
    f.name = "zelblocks";
    Shape z, e, l;
    z.Fill1(1);
    Box(z, 0, -1024, 900, -864);
    Box(z, 0, -160, 900, 0);
    z.MoveTo(700, -864).LineTo(900, -864).LineTo(200, -160).LineTo(0, -160).LineTo(700, -864);
    e.Fill1(1);
    Box(e, 0, -1024, 180, 0);
    Box(e, 180, -1024, 850, -864);
    Box(e, 180, -592, 700, -432);
    Box(e, 180, -160, 850, 0);
    l.Fill1(1);
    Box(l, 0, -1024, 180, 0);
    Box(l, 180, -160, 800, 0);
    f.glyphs = {z, e, l};
    f.codes = {'Z', 'E', 'L'};
    return DefineFont2(f);
}

Bytes Title() {
    TextRecord r;
    r.fontId = kGlyphFont;
    r.height = 800;
    r.color = Rgba{0x30, 0x30, 0x40, 0xFF};
    r.x = 0;
    r.y = 800;
    r.glyphs = {{0, 900}, {1, 900}, {2, 900}};
    return DefineText(kTitle, {0, 2700, 0, 800}, Matrix{}, {r}, 2);
}

// A font with a name and no glyphs: its edit field goes to the host's text callback.
Bytes DeviceFont() {
    Font2 f;
    f.id = kDeviceFont;
    f.name = "_sans";
    return DefineFont2(f);
}

Bytes Field() {
    EditText e;
    e.id = kField;
    e.bounds = {0, 3000, 0, 900};
    e.flags = kEditBorder | kEditWordWrap | kEditMultiline | kEditReadOnly;
    e.font = {{kDeviceFont, 300}};
    e.color = Rgba{0x20, 0x30, 0x80, 0xFF};
    e.layout = EditLayout{2, 0, 0, 0, 0};
    e.text = "Device text, drawn by the host";
    return DefineEditText(e);
}

Bytes Place(uint16_t id, uint16_t depth, int32_t x, int32_t y, std::optional<uint16_t> ratio = {}) {
    Place2 p;
    p.depth = depth;
    p.characterId = id;
    p.matrix = Matrix::Translate(x, y);
    p.ratio = ratio;
    return PlaceObject2(p);
}

Bytes Move(uint16_t depth, const Matrix& m, std::optional<uint16_t> ratio = {}) {
    Place2 p;
    p.depth = depth;
    p.move = true;
    p.matrix = m;
    p.ratio = ratio;
    return PlaceObject2(p);
}

Bytes BuildDemo() {
    Movie movie;
    movie.version = 6;
    movie.frame = {0, 8000, 0, 6000, 0};
    movie.frameRate = 12 << 8;
    Tags& t = movie.tags;
    t.Add(SetBackgroundColor({0x2A, 0x3B, 0x4C, 0xFF}));
    for (const Bytes& def : {Panel(), Ball(), Bar(), Morph(), MaskCircle(), Stripes(), Sprite(),
                             GlyphFont(), Title(), DeviceFont(), Field()}) {
        t.Add(def);
    }
    t.Add(Place(kPanel, 1, 400, 400));
    t.Add(Place(kBar, 2, 800, 4900));
    t.Add(Place(kTitle, 3, 800, 700));
    t.Add(Place(kBall, 4, 1800, 3000));
    t.Add(Place(kMorph, 5, 4300, 2800, 0));
    t.Add(Place(kSprite, 6, 6200, 3000));
    t.Add(Place(kField, 7, 4300, 700));
    t.Add(ShowFrame());
    for (int f = 1; f < kFrames; ++f) {
        // The ball swings left and right; the morph runs from square to diamond.
        const double phase = 2 * std::acos(-1.0) * f / kFrames;
        t.Add(Move(4, Matrix::Translate(1800 + int32_t(std::lround(600 * std::sin(phase))), 3000)));
        t.Add(Move(5, Matrix::Translate(4300, 2800), uint16_t(f * 65535 / (kFrames - 1))));
        t.Add(ShowFrame());
    }
    return movie.Build();
}

}  // namespace

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : "demo.swf";
    try {
        const Bytes data = BuildDemo();
        FILE* f = std::fopen(path, "wb");
        if (!f || std::fwrite(data.data(), 1, data.size(), f) != data.size() || std::fclose(f) != 0) {
            std::fprintf(stderr, "make_sample: cannot write %s\n", path);
            return 1;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "make_sample: %s\n", e.what());
        return 1;
    }
    return 0;
}
