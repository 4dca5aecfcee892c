// Static text as a host sees it: glyphs placed by advances, absolute
// offsets and heights on the em square, under the text matrix then the
// placement, in the colour of the last style change, probed in the pixels.
#include <gtest/gtest.h>

#include "api/TextScenes.h"

namespace {

using namespace textscene;
using swf::TextRecord;

// Font 1: glyph 0 the whole em (code 'A'), glyph 1 its left half (code 'B').
swf::Bytes SquareFont() { return Font2(1, {swf::SquareGlyph(), swf::HalfGlyph()}, {'A', 'B'}); }

// Text 2 over the whole 200 x 100 pixel movie.
const swf::Rect kTextBounds{0, 4000, 0, 2000, 0};

TextRecord Style(std::optional<uint16_t> font, uint16_t height, std::optional<swf::Rgba> color,
                 std::optional<int16_t> x = {}, std::optional<int16_t> y = {},
                 std::vector<swf::GlyphEntry> glyphs = {}) {
    TextRecord r;
    r.fontId = font;
    r.height = height;
    r.color = color;
    r.x = x;
    r.y = y;
    r.glyphs = std::move(glyphs);
    return r;
}

const swf::Rgba kRedText{255, 0, 0, 255};
const swf::Rgba kBlueText{0, 0, 255, 255};

struct Case {
    const char* what;
    std::vector<TextRecord> records;
    std::vector<Probe> probes;
    int version = 1;
    swf::Matrix textMatrix = {};
    swf::Place2 place = {};
};

// A 20-pixel em (height 400 twips) whose baseline starts at (10, 40) pixels:
// the first square covers x 10..30, y 20..40.
TextRecord Start(std::vector<swf::GlyphEntry> glyphs, swf::Rgba color = kRedText) {
    return Style(1, 400, color, 200, 800, std::move(glyphs));
}

TEST(TextRender, GlyphsFollowPenAndStyles) {
    swf::Place2 moved;
    moved.matrix = swf::Matrix::Translate(200, 0);
    swf::Place2 green;
    green.cxform = swf::Cxform{std::array<int16_t, 4>{0, 0, 0, 256}, std::array<int16_t, 4>{0, 255, 0, 0}, 0};
    const Case cases[] = {
        {"advances accumulate on x",
         {Start({{0, 600}, {0, 600}})},
         {{20, 30, kRed}, {35, 30, kWhite}, {50, 30, kRed}, {65, 30, kWhite}, {20, 17, kWhite}, {20, 43, kWhite}}},
        {"offsets are absolute positions, not moves",
         {Style(1, 400, kRedText, 2000, 800, {{0, 1000}}), Style({}, 0, {}, 400, {}, {{0, 0}})},
         {{110, 30, kRed}, {30, 30, kRed}, {60, 30, kWhite}, {175, 30, kWhite}}},
        {"y changes only through the y offset",
         {Start({{0, 600}}), Style({}, 0, {}, {}, 1600, {{0, 0}})},
         {{20, 30, kRed}, {50, 70, kRed}, {50, 30, kWhite}}},
        {"the height scales the em",
         {Style(1, 800, kRedText, 200, 1000, {{0, 0}})},
         {{45, 45, kRed}, {45, 12, kRed}, {55, 30, kWhite}, {30, 53, kWhite}}},
        {"a glyph draws its own outline",
         {Start({{1, 600}, {0, 0}})},
         {{15, 30, kRed}, {25, 30, kWhite}, {50, 30, kRed}}},
        {"a colour-only style change recolours without moving",
         {Start({{0, 600}}), Style({}, 0, kBlueText, {}, {}, {{0, 600}})},
         {{20, 30, kRed}, {50, 30, kBlue}, {35, 30, kWhite}}},
        {"a DefineText2 colour with alpha 0 keeps the previous colour",
         {Start({{0, 600}}), Style({}, 0, swf::Rgba{0, 0, 255, 0}, {}, {}, {{0, 600}})},
         {{20, 30, kRed}, {50, 30, kRed}},
         2},
        {"height 0 draws nothing but still advances",
         {Style(1, 0, kRedText, 200, 800, {{0, 600}}), Style(1, 400, {}, {}, {}, {{0, 600}})},
         {{20, 30, kWhite}, {50, 30, kRed}}},
        {"a glyph index beyond the font draws nothing but still advances",
         {Start({{1000, 600}, {2, 600}, {0, 600}})},
         {{20, 30, kWhite}, {50, 30, kWhite}, {80, 30, kRed}}},
        {"glyphs before any font only advance",
         {Style({}, 400, kRedText, 200, 800, {{0, 600}}), Style(1, 400, {}, {}, {}, {{0, 600}})},
         {{20, 30, kWhite}, {50, 30, kRed}}},
        // After a failed lookup while a font is current, every later style
        // change is ignored: the glyphs keep font 1, red and height 400.
        {"a missing font cuts its style change short and freezes the styles",
         {Start({{0, 600}}), Style(9, 800, kBlueText, 0, 0, {{0, 600}}), Style({}, 0, kBlueText, {}, {}, {{0, 600}})},
         {{20, 30, kRed}, {50, 30, kRed}, {80, 30, kRed}, {5, 5, kWhite}}},
        // With no font yet, a failed lookup does not block the next change,
        // but the styles freeze once a font is current.
        {"a missing first font lets the next font in, then freezes",
         {Style(9, 400, kBlueText, 0, 0), Start({{0, 600}}), Style({}, 0, kBlueText, {}, {}, {{0, 600}})},
         {{20, 30, kRed}, {50, 30, kRed}}},
        {"the text matrix applies before the placement",
         {Start({{0, 0}})},
         {{35, 60, kRed}, {65, 60, kRed}, {75, 60, kWhite}, {25, 60, kWhite}},
         1,
         swf::Matrix::Scale(2.0, 2.0),
         moved},
        {"the placement's colour transform applies to the text colour",
         {Start({{0, 0}})},
         {{20, 30, kGreen}},
         1,
         {},
         green},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const swf::Bytes movie =
            Scene(200, 100, {SquareFont(), swf::DefineText(2, kTextBounds, c.textMatrix, c.records, c.version)}, 2,
                  c.place);
        ExpectProbes(Render(movie, 200, 100), c.probes);
    }
}

TEST(TextRender, DefineFontWithFontInfoDrawsLikeDefineFont2) {
    const swf::Bytes movie = Scene(200, 100,
                                   {swf::DefineFont(1, {swf::SquareGlyph(), swf::HalfGlyph()}),
                                    swf::DefineFontInfo(1, "Old", 0, {'A', 'B'}),
                                    swf::DefineText(2, kTextBounds, {}, {Start({{1, 600}, {0, 600}})})},
                                   2);
    ExpectProbes(Render(movie, 200, 100), {{15, 30, kRed}, {25, 30, kWhite}, {50, 30, kRed}});
}

TEST(TextRender, ZoomScalesGlyphsAndPositions) {
    const swf::Bytes movie =
        Scene(200, 100, {SquareFont(), swf::DefineText(2, kTextBounds, {}, {Start({{0, 600}, {0, 600}})})}, 2);
    // A 400 x 200 view doubles everything: squares at x 20..60 and 80..120.
    ExpectProbes(Render(movie, 400, 200),
                 {{40, 60, kRed}, {70, 60, kWhite}, {100, 60, kRed}, {130, 60, kWhite}, {40, 35, kWhite}});
}

TEST(TextRender, TextInsideASpriteTakesTheSpritesTransform) {
    swf::Tags inner;
    swf::Place2 child;
    child.characterId = 2;
    child.matrix = swf::Matrix::Translate(200, 0);
    child.cxform = swf::Cxform{std::array<int16_t, 4>{0, 0, 256, 256}, {}, 0};
    inner.Add(swf::PlaceObject2(child));
    inner.Add(swf::ShowFrame());
    swf::Place2 sprite;
    sprite.matrix = swf::Matrix::Translate(0, 400);
    const swf::Bytes movie = Scene(
        200, 100, {SquareFont(), swf::DefineText(2, kTextBounds, {}, {Start({{0, 600}})}), swf::DefineSprite(3, inner)},
        3, sprite);
    // Square at x 20..40, y 40..60; the child's colour transform keeps only blue.
    ExpectProbes(Render(movie, 200, 100), {{30, 50, 0xFF000000u}, {15, 50, kWhite}, {30, 30, kWhite}});
}

TEST(TextRender, TextWithoutFontDrawsNothing) {
    const swf::Bytes movie =
        Scene(200, 100, {swf::DefineText(2, kTextBounds, {}, {Start({{0, 600}, {0, 600}})})}, 2);
    const host::Pixels p = Render(movie, 200, 100);
    for (int y = 0; y < 100; y += 3)
        for (int x = 0; x < 200; x += 3) ASSERT_EQ(p.at(x, y), kWhite) << x << ", " << y;
}

}  // namespace
