// Fonts: DefineFont glyph tables (trusted and scanned lengths), the
// DefineFontInfo that must directly follow, DefineFont2 with layout and
// kerning, and the by-code lookups that edit text relies on.
#include <gtest/gtest.h>

#include <random>

#include <string>

#include "chars/BFont.h"
#include "display/DictionaryFixture.h"
#include "fixture/SwfText.h"

namespace {

size_t GlyphSize(const swf::Shape& glyph) {
    swf::BitWriter w;
    glyph.WriteRecords(w, false);
    return w.Size();
}

std::vector<swf::Shape> ThreeGlyphs() { return {swf::SquareGlyph(), swf::HalfGlyph(), swf::GlyphBox(0, -300, 90, 0)}; }

swf::Font2 LayoutFont() {
    swf::Font2 f;
    f.id = 1;
    f.flags = 0x80 | 0x02 | 0x01;
    f.name = "Sans";
    f.glyphs = {swf::SquareGlyph(), swf::HalfGlyph()};
    f.codes = {'A', 'V'};
    f.ascent = 900;
    f.descent = 200;
    f.advances = {1100, -5};
    f.bounds = {swf::Rect{0, 1024, -1024, 0, 0}, swf::Rect{0, 512, -1024, 0, 0}};
    f.kerning = {{'A', 'V', -120}, {'V', 'V', 7}};
    return f;
}

// Loads tag `index` of the fixture into a font of our own, so that its state
// can be looked at even when the load fails.
int Load(BFont& font, DictionaryFixture& f, size_t index = 0) { return font.LoadSWFFile(f.Tag(index), &f.dict); }

TEST(FontLoad, DefineFontGlyphsFollowTheOffsetTable) {
    const auto glyphs = ThreeGlyphs();
    DictionaryFixture f({{1, swf::DefineFont(1, glyphs)}});
    BFont font;
    ASSERT_EQ(Load(font, f), 1);
    ASSERT_EQ(font.glyphCount, 3u);
    // Header, font id and three offsets precede the first glyph.
    const unsigned char* at = f.Tag(0) + swf::TagHeaderSize(f.Tag(0)) + 2 + 6;
    for (size_t i = 0; i < glyphs.size(); ++i) {
        SCOPED_TRACE(i);
        ASSERT_NE(font.glyphs[i], nullptr);
        EXPECT_EQ(font.glyphs[i]->records, at);
        EXPECT_EQ(font.glyphs[i]->recordsLength, GlyphSize(glyphs[i]));
        EXPECT_EQ(font.glyphs[i]->version, 10u);
        EXPECT_EQ(font.glyphs[i]->limit, f.dict.movieEnd);
        EXPECT_EQ(font.glyphs[i]->brushes.count, 0);
        EXPECT_EQ(font.glyphs[i]->pens.count, 0);
        at += GlyphSize(glyphs[i]);
    }
    EXPECT_EQ(font.codes, nullptr);
    EXPECT_EQ(font.name, nullptr);
    EXPECT_EQ(font.advances, nullptr);
}

TEST(FontLoad, DefineFontWithFirstOffsetZeroIsRejected) {
    DictionaryFixture f({{1, swf::DefineFont(1, {swf::SquareGlyph()}, {0})}});
    BFont font;
    EXPECT_EQ(Load(font, f), 0);
    EXPECT_EQ(f.LastError(), 0x2013u);
    EXPECT_EQ(font.glyphCount, 0u);
    EXPECT_EQ(font.glyphs, nullptr);
}

// From the first offset that goes down, lengths come from scanning the
// records found where the previous glyph ended; the glyph before the bad
// entry is scanned too. Equal offsets are trusted (a glyph of length 0).
TEST(FontLoad, DescendingOffsetsAreMeasuredByScanning) {
    const auto glyphs = ThreeGlyphs();
    const size_t s0 = GlyphSize(glyphs[0]), s1 = GlyphSize(glyphs[1]), s2 = GlyphSize(glyphs[2]);
    struct Case {
        std::vector<uint16_t> offsets;
        std::vector<size_t> lengths;
    } cases[] = {
        {{6, 2, 2}, {s0, s1, s2}},
        {{6, static_cast<uint16_t>(6 + s0), 3}, {s0, s1, s2}},
        {{6, 6, 5}, {0, s0, s1}},
    };
    for (const Case& c : cases) {
        DictionaryFixture f({{1, swf::DefineFont(1, glyphs, c.offsets)}});
        BFont font;
        ASSERT_EQ(Load(font, f), 1);
        ASSERT_EQ(font.glyphCount, 3u);
        const unsigned char* at = f.Tag(0) + swf::TagHeaderSize(f.Tag(0)) + 2 + 6;
        for (size_t i = 0; i < glyphs.size(); ++i) {
            SCOPED_TRACE(testing::Message() << c.offsets[1] << " glyph " << i);
            EXPECT_EQ(font.glyphs[i]->records, at);
            EXPECT_EQ(font.glyphs[i]->recordsLength, c.lengths[i]);
            at += c.lengths[i];
        }
    }
}

TEST(FontLoad, FontInfoDirectlyAfterTheFontGivesCodesNameAndStyle) {
    struct Case {
        uint8_t flags;
        std::vector<uint16_t> codes;
        int bold, italic, wide;
    } cases[] = {
        {0x00, {'a', 'b', 'c'}, 0, 0, 0},
        {0x02, {'a', 'b', 'c'}, 1, 0, 0},
        {0x04 | 0x01, {0x4E2D, 0x0101, 'c'}, 0, 1, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.flags));
        DictionaryFixture f(
            {{1, swf::DefineFont(1, ThreeGlyphs())}, {900, swf::DefineFontInfo(1, "Serif", c.flags, c.codes)}});
        BFont font;
        ASSERT_EQ(Load(font, f), 1);
        ASSERT_NE(font.codes, nullptr);
        for (size_t i = 0; i < c.codes.size(); ++i) EXPECT_EQ(font.codes[i], c.codes[i]);
        ASSERT_NE(font.name, nullptr);
        EXPECT_STREQ(font.name, "Serif");
        EXPECT_EQ(font.nameLength, 5);
        EXPECT_EQ(font.bold, c.bold);
        EXPECT_EQ(font.italic, c.italic);
        EXPECT_EQ(font.wideCodes, c.wide);
    }
}

TEST(FontLoad, FontInfoAnywhereElseIsIgnored) {
    const swf::Bytes info = swf::DefineFontInfo(1, "Serif", 0, {'a', 'b', 'c'});
    DictionaryFixture between({{1, swf::DefineFont(1, ThreeGlyphs())}, {900, swf::ShowFrame()}, {901, info}});
    DictionaryFixture before({{901, info}, {1, swf::DefineFont(1, ThreeGlyphs())}});
    BFont a, b;
    ASSERT_EQ(Load(a, between, 0), 1);
    ASSERT_EQ(Load(b, before, 1), 1);
    EXPECT_EQ(a.codes, nullptr);
    EXPECT_EQ(b.codes, nullptr);
    EXPECT_EQ(a.GetShapeByCode('a'), nullptr);
}

TEST(FontLoad, UnreadableFontInfoLeavesTheGlyphsWithoutCodes) {
    // Three glyphs but one code, and nothing after the tag to read.
    DictionaryFixture f({{1, swf::DefineFont(1, ThreeGlyphs())}, {900, swf::DefineFontInfo(1, "X", 0, {'a'})}});
    BFont font;
    EXPECT_EQ(Load(font, f), 1);
    EXPECT_EQ(f.LastError(), 0x2014u);
    EXPECT_EQ(font.glyphCount, 3u);
    EXPECT_EQ(font.codes, nullptr);
    EXPECT_EQ(font.name, nullptr);
}

TEST(Font2Load, ZeroGlyphsLoadsWithOnlyItsName) {
    swf::Font2 def;
    def.name = "Empty";
    DictionaryFixture f({{1, swf::DefineFont2(def)}});
    BFont font;
    ASSERT_EQ(Load(font, f), 1);
    EXPECT_EQ(font.glyphCount, 0u);
    EXPECT_STREQ(font.name, "Empty");
    EXPECT_EQ(font.nameLength, 5);
    EXPECT_EQ(font.codes, nullptr);
    EXPECT_EQ(font.HasGlyph(""), 0);
}

TEST(Font2Load, LayoutGivesAdvancesAndKerning) {
    const swf::Font2 def = LayoutFont();
    DictionaryFixture f({{1, swf::DefineFont2(def)}});
    BFont font;
    ASSERT_EQ(Load(font, f), 1);
    ASSERT_EQ(font.glyphCount, 2u);
    EXPECT_EQ(font.bold, 1);
    EXPECT_EQ(font.italic, 1);
    EXPECT_EQ(font.wideCodes, 0);
    EXPECT_STREQ(font.name, "Sans");
    // Header, id, flags, language, name length, name, count, three offsets.
    const unsigned char* first = f.Tag(0) + swf::TagHeaderSize(f.Tag(0)) + 2 + 1 + 1 + 1 + 4 + 2 + 6;
    EXPECT_EQ(font.glyphs[0]->records, first);
    EXPECT_EQ(font.glyphs[0]->recordsLength, GlyphSize(def.glyphs[0]));
    EXPECT_EQ(font.glyphs[1]->records, first + GlyphSize(def.glyphs[0]));
    EXPECT_EQ(font.glyphs[1]->version, 48u);
    EXPECT_EQ(font.GetAdvanceByCode('A'), 1100);
    EXPECT_EQ(font.GetAdvanceByCode('V'), -5);
    EXPECT_EQ(font.GetAdvanceByCode('Q'), 0);
    EXPECT_EQ(font.kerningCount, 2);
    EXPECT_EQ(font.GetKerningByCode('A', 'V'), -120);
    EXPECT_EQ(font.GetKerningByCode('V', 'A'), 0);
    EXPECT_EQ(font.GetKerningByCode('V', 'V'), 7);
}

TEST(Font2Load, WideOffsetsAndWideCodes) {
    swf::Font2 def = LayoutFont();
    def.flags = 0x80 | 0x08 | 0x04;
    def.codes = {0x263A, 'V'};
    def.kerning = {{0x263A, 'V', 33}};
    DictionaryFixture f({{1, swf::DefineFont2(def)}});
    BFont font;
    ASSERT_EQ(Load(font, f), 1);
    EXPECT_EQ(font.wideCodes, 1);
    EXPECT_EQ(font.bold, 0);
    const unsigned char* first = f.Tag(0) + swf::TagHeaderSize(f.Tag(0)) + 2 + 1 + 1 + 1 + 4 + 2 + 12;
    EXPECT_EQ(font.glyphs[0]->records, first);
    EXPECT_EQ(font.GetShapeByCode(0x263A), font.glyphs[0]);
    EXPECT_EQ(font.GetKerningByCode(0x263A, 'V'), 33);
}

TEST(Font2Load, OffsetsThatDoNotRiseRejectTheFont) {
    swf::Bytes tag = swf::DefineFont2(LayoutFont());
    // The second offset (after the header, id, flags, language, name length,
    // "Sans", count and the first offset) is made equal to the first.
    const size_t second = swf::TagHeaderSize(tag.data()) + 2 + 1 + 1 + 1 + 4 + 2 + 2;
    tag[second] = tag[second - 2];
    tag[second + 1] = tag[second - 1];
    DictionaryFixture f({{1, tag}});
    BFont font;
    EXPECT_EQ(Load(font, f), 0);
    EXPECT_EQ(f.LastError(), 0x2014u);
    EXPECT_EQ(font.glyphCount, 0u);
    EXPECT_EQ(font.glyphs, nullptr);
    EXPECT_EQ(font.kerning, nullptr);
    EXPECT_EQ(font.kerningCount, 0);
}

TEST(Font2Load, UnreadableGlyphBoundsEndTheLoadWithoutKerning) {
    swf::Font2 def = LayoutFont();
    def.bounds = {swf::Rect{-9000, 9000, -9000, 9000, 0}, swf::Rect{-9000, 9000, -9000, 9000, 0}};
    swf::Bytes body = swf::TagBody(swf::DefineFont2(def));
    // Drop the kerning table (count and two 4-byte records) and most of the
    // second bounds rectangle.
    body.resize(body.size() - 2 - 8 - 6);
    DictionaryFixture f({{1, swf::Tag(swf::kDefineFont2, body)}});
    BFont font;
    EXPECT_EQ(Load(font, f), 1);
    EXPECT_EQ(f.LastError(), 0u);
    EXPECT_EQ(font.glyphCount, 2u);
    EXPECT_EQ(font.GetAdvanceByCode('A'), 1100);
    EXPECT_EQ(font.kerning, nullptr);
    EXPECT_EQ(font.GetKerningByCode('A', 'V'), 0);
}

TEST(Font2Load, CodeTableCutShortRejectsTheFont) {
    swf::Font2 def;
    def.glyphs = {swf::SquareGlyph(), swf::HalfGlyph(), swf::SquareGlyph()};
    def.codes = {'a'};
    DictionaryFixture f({{1, swf::DefineFont2(def)}});
    BFont font;
    EXPECT_EQ(Load(font, f), 0);
    EXPECT_EQ(f.LastError(), 0x2014u);
    EXPECT_EQ(font.glyphCount, 0u);
}

// Lookups by code answer as a walk of the tables from the start would: the
// first glyph and the first kerning pair with the codes win, over fonts of
// random codes (repeated, wide, past 127) and random kerning pairs.
TEST(FontLookup, ByCodeTheFirstEntryWins) {
    std::mt19937 rng(5);
    auto code = [&rng] { return static_cast<uint16_t>(rng() % 3 ? rng() % 140 : rng() % 700); };
    for (int round = 0; round < 20; ++round) {
        swf::Font2 def = LayoutFont();
        def.flags = 0x80 | 0x04;
        def.glyphs.assign(40, swf::SquareGlyph());
        def.bounds.assign(40, swf::Rect{});
        def.codes.clear(), def.advances.clear(), def.kerning.clear();
        for (int i = 0; i < 40; ++i) def.codes.push_back(code()), def.advances.push_back(static_cast<int16_t>(i + 1));
        for (int i = 0; i < 60; ++i) def.kerning.push_back({code(), code(), static_cast<int16_t>(i + 1)});
        DictionaryFixture f({{1, swf::DefineFont2(def)}});
        BFont font;
        ASSERT_EQ(Load(font, f), 1);
        for (int c = -3; c < 200; ++c) {
            int first = -1;
            for (int i = 39; i >= 0; --i) first = def.codes[static_cast<size_t>(i)] == c ? i : first;
            ASSERT_EQ(font.GetShapeByCode(c), first < 0 ? nullptr : font.glyphs[first]) << c;
            ASSERT_EQ(font.GetAdvanceByCode(c), first < 0 ? 0 : first + 1) << c;
            for (int d = -1; d < 140; d += 3) {
                int kern = 0;
                for (int i = 59; i >= 0; --i) {
                    const swf::Kerning& k = def.kerning[static_cast<size_t>(i)];
                    kern = k.code1 == c && k.code2 == d ? k.adjustment : kern;
                }
                ASSERT_EQ(font.GetKerningByCode(c, d), kern) << c << "," << d;
            }
        }
    }
}

TEST(FontLookup, HasGlyphComparesBytesAsSignedChars) {
    swf::Font2 def;
    def.glyphs = {swf::SquareGlyph(), swf::SquareGlyph(), swf::SquareGlyph()};
    def.codes = {'h', 'i', 0xE9};
    DictionaryFixture f({{1, swf::DefineFont2(def)}});
    BFont font;
    ASSERT_EQ(Load(font, f), 1);
    struct Case {
        const char* text;
        int expected;
    } cases[] = {{"", 1}, {"hi", 1}, {"hihih", 1}, {"hit", 0}, {"h\xE9", 0}, {"\n", 0}};
    for (const Case& c : cases) EXPECT_EQ(font.HasGlyph(c.text), c.expected) << c.text;
    // The code exists and an int lookup finds it; only bytes never reach it.
    EXPECT_EQ(font.GetShapeByCode(0xE9), font.glyphs[2]);
    EXPECT_EQ(font.GetShapeByCode(static_cast<signed char>('\xE9')), nullptr);
    EXPECT_EQ(font.GetAdvanceByCode('h'), 0);
}

TEST(FontLookup, OnlyFontIdsAreTakenAsFonts) {
    DictionaryFixture f({{1, swf::DefineFont2(LayoutFont())}, {2, SquareShape(2)}});
    BFont* font = BFont::Lookup(&f.dict, 1);
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(font->glyphCount, 2u);
    EXPECT_EQ(BFont::Lookup(&f.dict, 1), font);
    EXPECT_EQ(font->refCount, 2);
    // A shape id is not built as a font: its slot keeps the raw tag.
    EXPECT_EQ(BFont::Lookup(&f.dict, 2), nullptr);
    EXPECT_EQ(f.dict.slots[2], f.Tag(1));
    EXPECT_EQ(BFont::Lookup(&f.dict, 7), nullptr);
    EXPECT_EQ(f.LastError(), 0x2003u);
}

TEST(FontLookup, FailedFontLoadReportsItsDictionaryCode) {
    DictionaryFixture f({{1, swf::DefineFont(1, {swf::SquareGlyph()}, {0})}});
    EXPECT_EQ(BFont::Lookup(&f.dict, 1), nullptr);
    EXPECT_EQ(f.LastError(), 0x201Bu);
}

}  // namespace
