// Hostile movies through the public API: every prefix and many random
// corruptions of a movie that reaches every character type, plus inputs the
// fuzzer found, are opened and driven like a host would drive them. The
// assertions are the sanitizers' (this suite also runs under ASan + UBSan).
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "api/EngineHost.h"

namespace {

using host::Color;

// Drives a movie over a few frames in several modes and views.
void Drive(const swf::Bytes& bytes) {
    swf::Bytes movie(bytes);  // exact size, so a read past its end is caught
    void* h = zelEngineOpen(movie.data(), static_cast<unsigned>(movie.size()));
    if (!h) return;
    host::Pixels px(23, 17);
    const double turn[6] = {0.5, 0.5, 3, -0.5, 0.5, 2};
    zelEngineSetTransform(h, turn);
    for (int i = 0; i < 4; ++i) {
        zelEngineFlipCanvas(h, static_cast<unsigned>(i));
        zelEngineForward(h, 1, 23, 17, 1);
        zelEnginePlay(h, px.get(), 0, 0, 23, 17, i == 2 ? -1 : 0);
        int count = 0;
        zelEngineGetUpdateBoxes(h, &count, 0);
    }
    zelEngineReset(h);
    zelEngineForward(h, 3, 23, 17, 1);
    zelEnginePlay(h, px.get(), 0, 0, 23, 17, 1);
    zelEngineClose(h);
}

swf::Bytes Everything() {
    swf::Movie m = host::MovieOf(40, 30);
    m.tags.Add(swf::SetBackgroundColor(Color(9, 9, 9)));
    swf::Shape s({swf::Fill::Solid(Color(200, 0, 0)),
                  swf::Fill::Radial(swf::Matrix::Scale(0.02, 0.02, 200, 200), {{0, Color(1, 2, 3)}, {255, Color(4, 5, 6, 7)}})},
                 {{40, Color(0, 0, 255, 128)}});
    s.MoveTo(0, 0).Fill1(1).LineStyle(1).LineTo(400, 0).CurveTo(500, 200, 400, 400).Fill0(2).LineTo(0, 0);
    s.NewStyles({swf::Fill::Solid(Color(0, 90, 0))}, {}).MoveTo(50, 50).Fill1(1).LineTo(90, 50).LineTo(50, 90).LineTo(50, 50);
    m.tags.Add(swf::DefineShape(1, swf::Rect{0, 520, 0, 420, 0}, s, 3));
    swf::Shape start, end;
    start.MoveTo(0, 0).Fill1(1).LineTo(300, 0).LineTo(0, 300).LineTo(0, 0);
    end.MoveTo(0, 0).CurveTo(300, 100, 300, 300).LineTo(100, 300).LineTo(0, 0);
    m.tags.Add(swf::DefineMorphShape(2, swf::Rect{0, 300, 0, 300, 0}, swf::Rect{0, 300, 0, 300, 0},
                                     {swf::MorphFill::Solid(Color(1, 1, 1), Color(250, 250, 250))}, {}, start, end));
    swf::Tags inner;
    swf::Place2 clip;
    clip.depth = 1;
    clip.characterId = 2;
    clip.clipDepth = 3;
    inner.Add(swf::PlaceObject2(clip)).Add(swf::PlaceObject(1, 2, swf::Matrix())).Add(swf::ShowFrame()).Add(swf::ShowFrame());
    m.tags.Add(swf::DefineSprite(3, inner));
    swf::ButtonRecord up;
    up.characterId = 3;
    m.tags.Add(swf::DefineButton2(4, {up}));
    swf::Shape glyph;
    glyph.MoveTo(0, 0).Fill1(1).LineTo(400, 0).LineTo(400, -500).LineTo(0, 0);
    swf::Font2 font;
    font.id = 5;
    font.flags = 0x80;
    font.name = "F";
    font.glyphs = {glyph};
    font.codes = {'a'};
    font.advances = {420};
    font.bounds = {swf::Rect{0, 400, -500, 0, 0}};
    m.tags.Add(swf::DefineFont2(font));
    swf::TextRecord rec;
    rec.fontId = 5;
    rec.height = 200;
    rec.color = Color(0, 0, 0);
    rec.glyphs = {{0, 210}, {0, 210}};
    m.tags.Add(swf::DefineText(6, swf::Rect{0, 500, -200, 0, 0}, swf::Matrix::Translate(0, 300), {rec}, 2));
    swf::EditText edit;
    edit.id = 7;
    edit.bounds = swf::Rect{0, 600, 0, 200, 0};
    edit.flags = swf::kEditBorder | swf::kEditHtml;
    edit.font = std::make_pair(uint16_t{5}, uint16_t{200});
    edit.text = "<b>a&amp;b</b>";
    m.tags.Add(swf::DefineEditText(edit));
    for (uint16_t id = 1; id <= 7; ++id) m.tags.Add(swf::PlaceObject(id, id, swf::Matrix::Translate(id * 40, id * 30)));
    m.tags.Add(swf::ShowFrame());
    swf::Place2 move;
    move.depth = 2;
    move.move = true;
    move.ratio = 30000;
    m.tags.Add(swf::PlaceObject2(move)).Add(swf::RemoveObject2(1)).Add(swf::ShowFrame());
    return m.Build();
}

TEST(HostileMovies, EveryPrefixIsSafe) {
    const swf::Bytes movie = Everything();
    for (size_t n = 0; n <= movie.size(); ++n) Drive(swf::Bytes(movie.begin(), movie.begin() + static_cast<long>(n)));
}

TEST(HostileMovies, RandomCorruptionsAreSafe) {
    const swf::Bytes movie = Everything();
    std::mt19937 rng(2026);
    for (int round = 0; round < 400; ++round) {
        swf::Bytes bad = movie;
        const int flips = 1 + static_cast<int>(rng() % 6);
        for (int i = 0; i < flips; ++i) {
            size_t at = 8 + rng() % (bad.size() - 8);
            bad[at] = static_cast<uint8_t>(rng() % 3 == 0 ? 0xFF : rng());
        }
        Drive(bad);
    }
}

TEST(HostileMovies, InputsTheFuzzerFound) {
    // An empty mask box once handed a null block to memset.
    const swf::Bytes emptyMaskBox = {
        0x46, 0x57, 0x53, 0x06, 0x95, 0x00, 0x00, 0x00, 0x60, 0x00, 0x3e, 0x80, 0x00, 0x32, 0x18, 0x00,
        0x0c, 0x03, 0x00, 0x43, 0x02, 0xc8, 0xdc, 0xf0, 0xa0, 0x00, 0x01, 0x00, 0x58, 0x00, 0x4b, 0x00,
        0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x0b, 0x00, 0x10, 0x34, 0x1e, 0x44, 0xb1, 0xca, 0x96,
        0x28, 0xb5, 0x0c, 0x8b, 0x53, 0x38, 0xe5, 0xb5, 0x00, 0x00, 0x9e, 0x00, 0x02, 0x00, 0x50, 0x00,
        0x96, 0x00, 0x09, 0x60, 0x01, 0x00, 0x00, 0x00, 0xfa, 0x00, 0x10, 0x34, 0x1e, 0x04, 0xb3, 0x85,
        0x2c, 0x9e, 0xd4, 0xc8, 0xb5, 0x4e, 0x39, 0x6d, 0x40, 0x00, 0xde, 0x09, 0x03, 0x00, 0x02, 0x00,
        0x87, 0x06, 0x42, 0x01, 0x00, 0x02, 0x00, 0x03, 0x00, 0x05, 0x01, 0x01, 0x00, 0x02, 0x00, 0x00,
        0x40, 0x00, 0xff, 0xff, 0xff, 0xff, 0x02, 0x07, 0x02, 0x00, 0x40, 0x00, 0x00, 0x00, 0x08, 0x01,
        0x03, 0x00, 0x40, 0x00, 0x1a, 0xc8, 0xe7, 0x9c, 0x1c, 0x20, 0xc5, 0x28, 0x01, 0x00, 0x2c, 0x05,
        0x00, 0x00, 0x00, 0x00, 0x40, 0x40, 0x00, 0x40, 0x00,
    };
    Drive(emptyMaskBox);
    void* h = zelEngineOpen(emptyMaskBox.data(), static_cast<unsigned>(emptyMaskBox.size()));
    ASSERT_NE(h, nullptr);
    host::Pixels px(11, 20);
    zelEngineSetOrg(h, 5, 5);
    for (int i = 0; i < 6; ++i) {
        zelEngineForward(h, 1, 11, 20, 1);
        zelEnginePlay(h, px.get(), 0, 0, 11, 20, i % 3 == 1 ? 1 : 0);
    }
    zelEngineClose(h);
}

}  // namespace
