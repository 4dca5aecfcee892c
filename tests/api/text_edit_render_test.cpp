// Edit fields drawn with their font's glyphs, as a host sees them: the pen
// start below the field's top, advances from the font's layout or half the
// height, kerning pairs, word wrap, password stars, colour and transforms.
#include <gtest/gtest.h>

#include "api/TextScenes.h"

namespace {

using namespace textscene;

// Glyph codes: 'A' the whole em, 'B' its left half, 'Q' its left quarter,
// '*' the whole em, 'c' a small 40-unit square.
std::vector<swf::Shape> Glyphs() {
    return {swf::SquareGlyph(), swf::HalfGlyph(), swf::GlyphBox(0, -1024, 256, 0), swf::SquareGlyph(),
            swf::GlyphBox(0, -40, 40, 0)};
}
const std::vector<uint16_t> kCodes = {'A', 'B', 'Q', '*', 'c'};

swf::EditText Field(const std::string& text, uint16_t height = 400, swf::Rgba color = swf::Rgba{255, 0, 0, 255}) {
    swf::EditText e;
    e.id = 2;
    e.bounds = swf::Rect{0, 4000, -1000, 2000, 0};
    e.font = std::make_pair(uint16_t{1}, height);
    e.color = color;
    e.text = text;
    return e;
}

// With height 400 the pen starts at y = 200 + 50 + 25 = 275 twips; placed
// 400 twips down, a whole-em glyph covers y 13.75..33.75 pixels.
swf::Place2 Down20() {
    swf::Place2 p;
    p.matrix = swf::Matrix::Translate(0, 400);
    return p;
}

struct Case {
    const char* what;
    swf::Bytes font;
    swf::EditText field;
    std::vector<Probe> probes;
};

TEST(EditTextRender, GlyphsFollowTheFieldsPen) {
    const std::vector<int16_t> em(kCodes.size(), 1024);
    swf::EditText password = Field("QQ");
    password.flags = swf::kEditPassword;
    const Case cases[] = {
        {"advances come from the font's layout",
         Font2(1, Glyphs(), kCodes, em),
         Field("AB"),
         {{10, 25, kRed}, {25, 25, kRed}, {35, 25, kWhite}, {10, 11, kWhite}, {10, 36, kWhite}}},
        {"without layout each glyph advances half the height",
         Font2(1, Glyphs(), kCodes),
         Field("QQQ"),
         {{2, 25, kRed}, {7, 25, kWhite}, {12, 25, kRed}, {17, 25, kWhite}, {22, 25, kRed}}},
        {"kerning moves the second glyph of a pair",
         Font2(1, Glyphs(), kCodes, em, {{'Q', 'Q', -100}, {'A', 'Q', 400}}),
         Field("QQQ"),
         {{2, 25, kRed}, {17, 25, kRed}, {22, 25, kWhite}, {32, 25, kRed}, {37, 25, kWhite}}},
        {"the text colour fills the glyphs",
         Font2(1, Glyphs(), kCodes, em),
         Field("A", 400, swf::Rgba{0, 0, 255, 255}),
         {{10, 25, kBlue}}},
        {"a password field draws one star per byte",
         Font2(1, Glyphs(), kCodes, em),
         password,
         {{10, 25, kRed}, {30, 25, kRed}, {45, 25, kWhite}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const swf::Bytes movie = Scene(200, 100, {c.font, swf::DefineEditText(c.field)}, 2, Down20());
        ExpectProbes(Render(movie, 200, 100), c.probes);
    }
}

// A 20000-twip em makes the line step (h + h/8) / 20 = 1125 twips visible:
// glyph 'c' is 39 pixels square and advances 98 pixels, past the 50-pixel
// field, so with word wrap the second one starts a line 56 pixels lower.
TEST(EditTextRender, WordWrapStartsANewLinePastTheFieldWidth) {
    std::vector<int16_t> advances(kCodes.size(), 100);
    for (bool wrap : {false, true}) {
        SCOPED_TRACE(wrap);
        swf::EditText field = Field("cc", 20000);
        field.bounds = swf::Rect{0, 1000, 12900, 16000, 0};
        if (wrap) field.flags = swf::kEditWordWrap;
        swf::Place2 up;
        up.matrix = swf::Matrix::Translate(0, -12750);
        const swf::Bytes movie =
            Scene(200, 150, {Font2(1, Glyphs(), kCodes, advances), swf::DefineEditText(field)}, 2, up);
        const host::Pixels p = Render(movie, 200, 150);
        // Without wrap the second glyph lies beyond the field and is clipped.
        ExpectProbes(p, {{20, 30, kRed}, {20, 85, wrap ? kRed : kWhite}, {20, 58, kWhite}, {110, 30, kWhite}});
    }
}

TEST(EditTextRender, ZoomAndPlacementScaleTheGlyphs) {
    const std::vector<int16_t> em(kCodes.size(), 1024);
    swf::Place2 place;
    place.matrix = swf::Matrix::Scale(2.0, 2.0, 400, 800);
    const swf::Bytes movie = Scene(200, 100, {Font2(1, Glyphs(), kCodes, em), swf::DefineEditText(Field("BA"))}, 2,
                                   place);
    // Scale 2 then zoom 2: B covers x 40..80, A x 120..200, both y 55..135.
    ExpectProbes(Render(movie, 400, 200),
                 {{60, 120, kRed}, {100, 120, kWhite}, {160, 120, kRed}, {60, 52, kWhite}, {60, 138, kWhite}});
}

TEST(EditTextRender, FieldsThatShowNothing) {
    const std::vector<int16_t> em(kCodes.size(), 1024);
    swf::EditText noFont = Field("AB");
    noFont.font.reset();
    swf::EditText fontZero = Field("AB");
    fontZero.font = std::make_pair(uint16_t{0}, uint16_t{400});
    swf::Place2 invisible = Down20();
    invisible.cxform = swf::Cxform{std::array<int16_t, 4>{256, 256, 256, 0}, std::array<int16_t, 4>{0, 0, 0, 0}, 0};
    struct Blank {
        const char* what;
        swf::EditText field;
        swf::Place2 place;
    } blanks[] = {
        {"no font", noFont, Down20()},
        {"font id 0", fontZero, Down20()},
        {"alpha multiplier and addend 0", Field("AB"), invisible},
        {"a character missing from the font and no host callback", Field("AZ"), Down20()},
    };
    for (const Blank& b : blanks) {
        SCOPED_TRACE(b.what);
        const swf::Bytes movie = Scene(200, 100, {Font2(1, Glyphs(), kCodes, em), swf::DefineEditText(b.field)}, 2,
                                       b.place);
        const host::Pixels p = Render(movie, 200, 100);
        for (int y = 0; y < 100; y += 2)
            for (int x = 0; x < 200; x += 2) ASSERT_EQ(p.at(x, y), kWhite) << x << ", " << y;
    }
}

}  // namespace
