// Writes the fuzz seed corpus: small movies from the SWF fixture builder that
// reach every tag handler and character type, each prefixed with the byte
// that the fuzz target reads as its view settings.
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "fixture/SwfBuilder.h"

namespace {

using swf::Bytes;

swf::Rgba C(uint8_t r, uint8_t g, uint8_t b, uint8_t a = 255) { return swf::Rgba{r, g, b, a}; }

swf::Shape Square(int32_t s, std::vector<swf::Fill> fills, std::vector<swf::Line> lines = {}) {
    const bool lined = !lines.empty();
    swf::Shape shape(std::move(fills), std::move(lines));
    shape.MoveTo(0, 0).Fill1(1).LineStyle(lined ? 1 : 0).LineTo(s, 0).LineTo(s, s).CurveTo(s / 2, s + 200, 0, s).LineTo(0, 0);
    return shape;
}

swf::Movie Base() {
    swf::Movie m;
    m.frame = swf::Rect{0, 2000, 0, 1600, 0};
    m.tags.Add(swf::SetBackgroundColor(C(200, 220, 240)));
    return m;
}

Bytes Shapes() {
    swf::Movie m = Base();
    std::vector<swf::GradStop> stops = {{0, C(255, 0, 0)}, {128, C(0, 255, 0, 128)}, {255, C(0, 0, 255)}};
    m.tags.Add(swf::DefineShape(1, swf::Rect{0, 1200, 0, 1400, 0},
                                Square(1200, {swf::Fill::Solid(C(10, 200, 30))}, {{40, C(0, 0, 0)}}), 1));
    m.tags.Add(swf::DefineShape(2, swf::Rect{0, 1200, 0, 1400, 0},
                                Square(1200, {swf::Fill::Linear(swf::Matrix::Scale(0.05, 0.05, 600, 600), stops)}), 2));
    swf::Shape styled({swf::Fill::Radial(swf::Matrix::Scale(0.04, 0.04, 300, 300), stops)}, {{0, C(9, 9, 9, 90)}});
    styled.MoveTo(0, 0).Fill1(1).LineStyle(1).LineTo(600, 0).LineTo(600, 600).LineTo(0, 0);
    styled.NewStyles({swf::Fill::Solid(C(1, 2, 3, 100))}, {{60, C(200, 0, 0, 200)}});
    styled.MoveTo(100, 100).Fill0(1).LineStyle(1).CurveTo(400, 0, 500, 500).LineTo(100, 100);
    m.tags.Add(swf::DefineShape(3, swf::Rect{0, 700, 0, 700, 0}, styled, 3));
    m.tags.Add(swf::PlaceObject(1, 1, swf::Matrix::Translate(100, 100)));
    swf::Place2 p;
    p.depth = 2;
    p.characterId = 2;
    p.matrix = swf::Matrix::Scale(0.5, 0.7, 400, 200);
    p.cxform = swf::Cxform{std::array<int16_t, 4>{200, 256, 128, 200}, std::array<int16_t, 4>{10, -20, 5, 0}, 0};
    m.tags.Add(swf::PlaceObject2(p));
    m.tags.Add(swf::PlaceObject(3, 3, swf::Matrix::Translate(900, 300))).Add(swf::ShowFrame());
    swf::Place2 move;
    move.depth = 1;
    move.move = true;
    move.matrix = swf::Matrix::Translate(300, 500);
    m.tags.Add(swf::PlaceObject2(move)).Add(swf::RemoveObject2(2)).Add(swf::ShowFrame());
    swf::Place2 replace;
    replace.depth = 3;
    replace.move = true;
    replace.characterId = 2;
    m.tags.Add(swf::PlaceObject2(replace)).Add(swf::RemoveObject(1, 1)).Add(swf::ShowFrame());
    return m.Build();
}

Bytes Morph() {
    swf::Movie m = Base();
    swf::Shape start, end;
    start.MoveTo(0, 0).Fill1(1).LineStyle(1).LineTo(800, 0).LineTo(800, 800).LineTo(0, 800).LineTo(0, 0);
    end.MoveTo(100, 100).LineTo(600, 0).CurveTo(900, 400, 700, 700).LineTo(0, 500).LineTo(100, 100);
    std::vector<swf::MorphStop> stops = {{0, C(255, 0, 0), 0, C(0, 0, 255)}, {255, C(0, 255, 0), 255, C(255, 255, 0)}};
    m.tags.Add(swf::DefineMorphShape(
        1, swf::Rect{0, 800, 0, 800, 0}, swf::Rect{0, 900, 0, 700, 0},
        {swf::MorphFill::Gradient(0x10, swf::Matrix::Scale(0.05, 0.05, 400, 400), swf::Matrix(), stops)},
        {{20, 100, C(0, 0, 0), C(255, 0, 0, 100)}}, start, end));
    for (int i = 0; i < 4; ++i) {
        swf::Place2 p;
        p.depth = 1;
        p.move = i > 0;
        if (i == 0) p.characterId = 1;
        p.ratio = static_cast<uint16_t>(i * 21845);
        m.tags.Add(swf::PlaceObject2(p)).Add(swf::ShowFrame());
    }
    return m.Build();
}

Bytes SpriteWithMask() {
    swf::Movie m = Base();
    m.tags.Add(swf::DefineShape(1, swf::Rect{0, 600, 0, 600, 0}, Square(600, {swf::Fill::Solid(C(250, 0, 0))}), 1));
    m.tags.Add(swf::DefineShape(2, swf::Rect{0, 300, 0, 300, 0}, Square(300, {swf::Fill::Solid(C(0, 0, 250))}), 1));
    swf::Tags inner;
    swf::Place2 mask;
    mask.depth = 1;
    mask.characterId = 2;
    mask.clipDepth = 3;
    inner.Add(swf::PlaceObject2(mask)).Add(swf::PlaceObject(1, 2, swf::Matrix())).Add(swf::ShowFrame());
    inner.Add(swf::RemoveObject2(2)).Add(swf::ShowFrame());
    m.tags.Add(swf::DefineSprite(3, inner));
    m.tags.Add(swf::PlaceObject(3, 1, swf::Matrix::Translate(200, 200)));
    swf::Place2 self;
    self.depth = 2;
    self.characterId = 3;
    self.clipDepth = 5;
    m.tags.Add(swf::PlaceObject2(self)).Add(swf::ShowFrame()).Add(swf::ShowFrame()).Add(swf::ShowFrame());
    return m.Build();
}

Bytes ButtonAndText() {
    swf::Movie m = Base();
    m.tags.Add(swf::DefineShape(1, swf::Rect{0, 400, 0, 400, 0}, Square(400, {swf::Fill::Solid(C(0, 120, 0))}), 1));
    swf::ButtonRecord up;
    up.characterId = 1;
    m.tags.Add(swf::DefineButton2(2, {up}));
    swf::Shape glyph;
    glyph.MoveTo(0, 0).Fill1(1).LineTo(500, 0).LineTo(500, -700).LineTo(0, -700).LineTo(0, 0);
    swf::Font2 font;
    font.id = 3;
    font.flags = 0x80;
    font.name = "Sans";
    font.glyphs = {glyph, glyph};
    font.codes = {'A', 'B'};
    font.advances = {600, 600};
    font.bounds = {swf::Rect{0, 500, -700, 0, 0}, swf::Rect{0, 500, -700, 0, 0}};
    m.tags.Add(swf::DefineFont2(font));
    swf::TextRecord rec;
    rec.fontId = 3;
    rec.height = 240;
    rec.color = C(0, 0, 0);
    rec.x = 0;
    rec.y = 300;
    rec.glyphs = {{0, 300}, {1, 300}, {0, 300}};
    m.tags.Add(swf::DefineText(4, swf::Rect{0, 1000, 0, 400, 0}, swf::Matrix(), {rec}, 2));
    swf::EditText edit;
    edit.id = 5;
    edit.bounds = swf::Rect{0, 1600, 0, 400, 0};
    edit.flags = swf::kEditBorder | swf::kEditHtml | swf::kEditWordWrap;
    edit.font = std::make_pair(uint16_t{3}, uint16_t{240});
    edit.color = C(20, 20, 20);
    edit.text = "<p>AB &amp; <b>BA</b></p>";
    m.tags.Add(swf::DefineEditText(edit));
    m.tags.Add(swf::PlaceObject(2, 1, swf::Matrix::Translate(50, 50)));
    m.tags.Add(swf::PlaceObject(4, 2, swf::Matrix::Translate(100, 700)));
    m.tags.Add(swf::PlaceObject(5, 3, swf::Matrix::Translate(100, 1100))).Add(swf::ShowFrame());
    return m.Build();
}

// A morph inside a sprite that a clip layer of another sprite masks, both
// placed twice, with the morph's ratio changing in the sprite's frames.
Bytes SpritesWithMorphAndClips() {
    swf::Movie m = Base();
    swf::Shape start, end;
    start.MoveTo(0, 0).Fill1(1).LineStyle(1).LineTo(500, 0).CurveTo(700, 300, 500, 500).LineTo(0, 0);
    end.MoveTo(0, 100).LineTo(300, 0).LineTo(600, 600).LineTo(0, 100);
    m.tags.Add(swf::DefineMorphShape(1, swf::Rect{0, 700, 0, 600, 0}, swf::Rect{0, 600, 0, 600, 0},
                                     {swf::MorphFill::Solid(C(200, 0, 0), C(0, 0, 200, 120))},
                                     {{40, 0, C(0, 0, 0), C(0, 200, 0)}}, start, end));
    m.tags.Add(swf::DefineShape(2, swf::Rect{0, 400, 0, 400, 0}, Square(400, {swf::Fill::Solid(C(0, 0, 0))}), 3));
    swf::Tags morphing;
    for (int f = 0; f < 3; ++f) {
        swf::Place2 p;
        p.depth = 1, p.move = f > 0, p.ratio = static_cast<uint16_t>(f * 30000);
        if (f == 0) p.characterId = 1;
        morphing.Add(swf::PlaceObject2(p)).Add(swf::ShowFrame());
    }
    m.tags.Add(swf::DefineSprite(3, morphing));
    swf::Tags clipped;
    swf::Place2 clip;
    clip.depth = 1, clip.characterId = 2, clip.clipDepth = 4;
    swf::Place2 inner;
    inner.depth = 2, inner.characterId = 2, inner.clipDepth = 3, inner.matrix = swf::Matrix::Translate(100, 100);
    clipped.Add(swf::PlaceObject2(clip)).Add(swf::PlaceObject2(inner)).Add(swf::PlaceObject(3, 3, swf::Matrix()));
    clipped.Add(swf::ShowFrame()).Add(swf::RemoveObject2(2)).Add(swf::ShowFrame());
    m.tags.Add(swf::DefineSprite(4, clipped));
    for (uint16_t d = 1; d <= 2; ++d) m.tags.Add(swf::PlaceObject(4, d, swf::Matrix::Translate(d * 300, d * 200)));
    m.tags.Add(swf::ShowFrame()).Add(swf::ShowFrame()).Add(swf::ShowFrame());
    return m.Build();
}

// A DefineFont with its font info, static text of both versions, a font
// with wide codes and kerning, and edit fields: glyph text wrapped over
// lines, and device text with a border.
Bytes FontsAndTexts() {
    swf::Movie m = Base();
    swf::Shape glyph, bar;
    glyph.MoveTo(0, 0).Fill1(1).LineTo(500, 0).CurveTo(600, -350, 500, -700).LineTo(0, -700).LineTo(0, 0);
    bar.MoveTo(0, 0).Fill1(1).LineTo(100, 0).LineTo(100, -700).LineTo(0, 0);
    m.tags.Add(swf::DefineFont(1, {glyph, bar})).Add(swf::DefineFontInfo(1, "Serif", 0x02, {'a', 'b'}));
    swf::Font2 font;
    font.id = 2, font.flags = 0x80 | 0x04, font.name = "Wide";
    font.glyphs = {glyph, bar, glyph};
    font.codes = {'x', 0x263A, 'y'};
    font.advances = {600, 200, 600};
    font.bounds.assign(3, swf::Rect{0, 600, -700, 0, 0});
    font.kerning = {{'x', 'y', -100}, {'y', 'x', 50}};
    m.tags.Add(swf::DefineFont2(font));
    swf::TextRecord a{uint16_t{1}, 200, C(0, 0, 0), int16_t{0}, int16_t{300}, {{0, 300}, {1, 150}, {0, 300}}};
    swf::TextRecord b{uint16_t{2}, 300, C(90, 0, 0, 128), int16_t{50}, int16_t{700}, {{2, 400}, {0, 400}}};
    m.tags.Add(swf::DefineText(3, swf::Rect{0, 1200, 0, 800, 0}, swf::Matrix(), {a}, 1));
    m.tags.Add(swf::DefineText(4, swf::Rect{0, 1200, 0, 800, 0}, swf::Matrix::Scale(1.5, 0.8), {b}, 2));
    swf::EditText wrapped;
    wrapped.id = 5, wrapped.bounds = swf::Rect{0, 900, 0, 800, 0};
    wrapped.flags = swf::kEditMultiline | swf::kEditWordWrap | swf::kEditUseOutlines;
    wrapped.font = std::make_pair(uint16_t{2}, uint16_t{200});
    wrapped.text = "xy yx xxyy\nyx xy";
    swf::EditText device;
    device.id = 6, device.bounds = swf::Rect{0, 1500, 0, 300, 0};
    device.flags = swf::kEditBorder | swf::kEditReadOnly;
    device.font = std::make_pair(uint16_t{7}, uint16_t{240});
    device.color = C(0, 0, 120);
    device.layout = swf::EditLayout{1, 20, 20, 0, 40};
    device.text = "device text";
    m.tags.Add(swf::DefineEditText(wrapped)).Add(swf::DefineEditText(device));
    for (uint16_t id = 3; id <= 6; ++id) m.tags.Add(swf::PlaceObject(id, id, swf::Matrix::Translate(id * 50, id * 200)));
    m.tags.Add(swf::ShowFrame());
    return m.Build();
}

// Buttons of both versions with records for several states and layers.
Bytes Buttons() {
    swf::Movie m = Base();
    m.tags.Add(swf::DefineShape(1, swf::Rect{0, 300, 0, 300, 0}, Square(300, {swf::Fill::Solid(C(0, 90, 0))}), 1));
    m.tags.Add(swf::DefineShape(2, swf::Rect{0, 300, 0, 300, 0}, Square(300, {swf::Fill::Solid(C(90, 0, 0, 100))}), 3));
    swf::ButtonRecord up{0x01, 1, 1, swf::Matrix(), swf::Cxform()};
    swf::ButtonRecord over{0x06, 2, 2, swf::Matrix::Translate(50, 50), swf::Cxform()};
    swf::ButtonRecord both{0x09, 2, 3, swf::Matrix::Scale(0.5, 0.5, 100, 0),
                           swf::Cxform{std::array<int16_t, 4>{128, 256, 256, 200}, {}, 0}};
    m.tags.Add(swf::DefineButton(3, {up, over, both})).Add(swf::DefineButton2(4, {both, up}, true));
    m.tags.Add(swf::PlaceObject(3, 1, swf::Matrix::Translate(100, 100)));
    m.tags.Add(swf::PlaceObject(4, 2, swf::Matrix::Translate(700, 500))).Add(swf::ShowFrame()).Add(swf::ShowFrame());
    return m.Build();
}

void Write(const std::string& dir, const std::string& name, uint8_t knobs, const Bytes& movie) {
    std::ofstream out(dir + "/" + name, std::ios::binary);
    out.put(static_cast<char>(knobs));
    out.write(reinterpret_cast<const char*>(movie.data()), static_cast<std::streamsize>(movie.size()));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_fuzz_corpus DIR\n");
        return 2;
    }
    const std::string dir = argv[1];
    Write(dir, "shapes", 0x35, Shapes());
    Write(dir, "shapes_turned", 0xB6, Shapes());
    Write(dir, "morph", 0x22, Morph());
    Write(dir, "sprite_mask", 0x41, SpriteWithMask());
    Write(dir, "button_text", 0x13, ButtonAndText());
    Write(dir, "sprites_morph_clips", 0x57, SpritesWithMorphAndClips());
    Write(dir, "fonts_texts", 0x24, FontsAndTexts());
    Write(dir, "buttons", 0x9A, Buttons());
    return 0;
}
