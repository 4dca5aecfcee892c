// Static text from damaged or hostile tags, loaded and drawn inside a whole
// movie: damaged text records, damaged fonts under intact text, glyph
// indices and bit widths at their limits. Nothing may read outside the
// movie, hang or crash; the sanitizer build checks the reads.
#include <gtest/gtest.h>


#include "chars/TextMovie.h"

namespace {

swf::Bytes Font() {
    swf::Font2 f;
    f.id = 1;
    f.flags = 0x80;
    f.name = "F";
    f.glyphs = {swf::SquareGlyph(), swf::HalfGlyph(), swf::GlyphBox(-100, -900, 700, 100)};
    f.codes = {'a', 'b', 'c'};
    f.advances = {1024, 512, 800};
    f.bounds.assign(3, swf::Rect{});
    f.kerning = {{'a', 'b', 10}};
    return swf::DefineFont2(f);
}

swf::Bytes Text(int version = 2) {
    std::vector<swf::TextRecord> records(3);
    records[0].fontId = 1;
    records[0].height = 400;
    records[0].color = swf::Rgba{200, 0, 0, 255};
    records[0].x = 100;
    records[0].y = 600;
    records[0].glyphs = {{0, 500}, {1, 300}, {2, 400}};
    records[1].color = swf::Rgba{0, 0, 200, 128};
    records[1].y = 1200;
    records[2].glyphs = {{2, -200}, {0, 1000}};
    return swf::DefineText(2, swf::Rect{0, 4000, 0, 2000, 0}, swf::Matrix::Scale(1.5, 1.0, 40, 0), records, version);
}

bool AnyInk(const std::vector<uint32_t>& pixels) {
    for (uint32_t p : pixels)
        if (p != 0) return true;
    return false;
}

TEST(TextHostile, IntactTextDraws) { EXPECT_TRUE(AnyInk(textmovie::Play(textmovie::Movie({Font(), Text()}, 2)))); }

TEST(TextHostile, DamagedTextRecordsLoadAndDrawSafely) {
    for (int version : {1, 2})
        for (const swf::Bytes& text : textmovie::BodyMutations(Text(version)))
            textmovie::Play(textmovie::Movie({Font(), text}, 2));
}

TEST(TextHostile, DamagedFontsUnderIntactTextDrawSafely) {
    for (const swf::Bytes& font : textmovie::BodyMutations(Font()))
        textmovie::Play(textmovie::Movie({font, Text()}, 2));
    const swf::Bytes oldFont = swf::DefineFont(1, {swf::SquareGlyph(), swf::HalfGlyph(), swf::SquareGlyph()});
    const swf::Bytes info = swf::DefineFontInfo(1, "Info", 0, {'a', 'b', 'c'});
    for (const swf::Bytes& font : textmovie::BodyMutations(oldFont))
        textmovie::Play(textmovie::Movie({font, info, Text()}, 2));
}

TEST(TextHostile, ExtremeGlyphIndicesAndBitWidths) {
    std::vector<swf::TextRecord> records(2);
    records[0].fontId = 1;
    records[0].height = 65535;
    records[0].x = -32768;
    records[0].y = 32767;
    records[0].glyphs = {{0xFFFFFFFFu, -2147483647}, {3, 2147483647}, {0, 0}};
    records[1].fontId = 1;
    records[1].height = 400;
    records[1].x = 0;
    records[1].y = 400;
    records[1].glyphs = {{0, 0}};
    const swf::Bytes text = swf::DefineText(2, swf::Rect{0, 4000, 0, 2000, 0}, {}, records, 1, 32, 32);
    textmovie::Play(textmovie::Movie({Font(), text}, 2));
    // GlyphBits and AdvanceBits wider than 32 read 32-bit fields.
    swf::BitWriter head;
    head.UI16(2);
    swf::WriteRect(head, swf::Rect{0, 4000, 0, 2000, 0});
    swf::WriteMatrix(head, swf::Matrix{});
    const size_t at = swf::TagHeaderSize(text.data()) + head.Size();
    for (uint8_t bits : {33, 60, 255}) {
        swf::Bytes wide = text;
        wide[at] = bits;
        wide[at + 1] = bits;
        textmovie::Play(textmovie::Movie({Font(), wide}, 2));
    }
}

TEST(TextHostile, ManyGlyphsAllDraw) {
    std::vector<swf::TextRecord> records(200);
    for (auto& r : records) r.glyphs.assign(127, swf::GlyphEntry{0, 1});
    records[0].fontId = 1;
    records[0].height = 20;
    records[0].color = swf::Rgba{0, 0, 0, 255};
    records[0].y = 400;
    const swf::Bytes text = swf::DefineText(2, swf::Rect{0, 4000, 0, 2000, 0}, {}, records);
    EXPECT_TRUE(AnyInk(textmovie::Play(textmovie::Movie({Font(), text}, 2))));
}

}  // namespace
