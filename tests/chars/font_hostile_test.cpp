// Fonts built from damaged or hostile tags: every walk stays inside the tag
// and the host's buffer (the buffers here are exact-size heap blocks, so the
// address sanitizer sees any stray read), and no table size makes the load
// slow.
#include <gtest/gtest.h>


#include "chars/BFont.h"
#include "display/DictionaryFixture.h"
#include "fixture/SwfText.h"

namespace {

swf::Font2 FullFont2(uint8_t flags) {
    swf::Font2 f;
    f.flags = flags;
    f.name = "Hostile";
    f.glyphs = {swf::SquareGlyph(), swf::HalfGlyph(), swf::GlyphBox(10, -700, 900, 30)};
    f.codes = {'a', 'b', 'c'};
    f.advances = {1024, 512, 900};
    f.bounds = {swf::Rect{0, 1024, -1024, 0, 0}, swf::Rect{0, 512, -1024, 0, 0}, swf::Rect{10, 900, -700, 30, 0}};
    f.kerning = {{'a', 'b', -30}, {'b', 'c', 12}};
    return f;
}

// Uses everything a loaded font offers and checks that its glyphs lie in
// the tag that defined it.
// A movie buffer of the given tags and a dictionary bounded by it; the tags
// are not inserted, as a damaged tag may not even hold its own header.
struct Loose {
    explicit Loose(const std::vector<swf::Bytes>& tags) : movie(tags) {
        dict.error = &errors;
        dict.movieEnd = movie.End();
    }
    MovieBuffer movie;
    GError errors;
    GDictionary dict;
};

void Exercise(BFont& font, const unsigned char* tag, size_t tagSize) {
    for (uint32_t i = 0; i < font.glyphCount; ++i) {
        ASSERT_NE(font.glyphs[i], nullptr);
        const unsigned char* r = font.glyphs[i]->records;
        EXPECT_GE(r, tag);
        // Declared lengths may run past the buffer; a glyph may then reach
        // the declared end, never beyond it.
        EXPECT_LE(r + font.glyphs[i]->recordsLength, tag + 6 + 0xFFFFu + tagSize);
    }
    for (int c = -128; c < 300; ++c) {
        font.GetShapeByCode(c);
        font.GetAdvanceByCode(c);
        font.GetKerningByCode(c, 'b');
    }
    font.HasGlyph("abcabc");
}

TEST(FontHostile, DamagedTagsLoadSafely) {
    const swf::Bytes info = swf::DefineFontInfo(1, "Info", 0x01, {'a', 'b', 'c'});
    const std::vector<swf::Shape> glyphs = {swf::SquareGlyph(), swf::HalfGlyph(), swf::GlyphBox(0, -10, 10, 0)};
    struct Case {
        const char* what;
        swf::Bytes tag;
        bool withInfo;
    } cases[] = {
        {"DefineFont", swf::DefineFont(1, glyphs), true},
        {"DefineFont2 narrow", swf::DefineFont2(FullFont2(0x80 | 0x01)), false},
        {"DefineFont2 wide", swf::DefineFont2(FullFont2(0x80 | 0x08 | 0x04 | 0x02)), false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        for (const swf::Bytes& tag : swf::Mutations(c.tag)) {
            std::vector<swf::Bytes> tags = {tag};
            if (c.withInfo) tags.push_back(info);
            Loose f(tags);
            BFont font;
            font.LoadSWFFile(f.movie.Tag(0), &f.dict);
            Exercise(font, f.movie.Tag(0), tag.size());
        }
        // The DefineFontInfo damaged behind an intact font.
        if (c.withInfo) {
            for (const swf::Bytes& damaged : swf::Mutations(info)) {
                Loose f({c.tag, damaged});
                BFont font;
                EXPECT_EQ(font.LoadSWFFile(f.movie.Tag(0), &f.dict), 1);
                Exercise(font, f.movie.Tag(0), c.tag.size());
            }
        }
    }
}

TEST(FontHostile, HugeGlyphCountInATinyTagStaysInTheTag) {
    // A first offset of 0xFFFE announces 32767 glyphs; the tag holds one.
    DictionaryFixture f({{1, swf::DefineFont(1, {swf::SquareGlyph()}, {0xFFFE})}, {2, swf::ShowFrame()}});
    const unsigned char* tagEnd = f.Tag(1);
    BFont font;
    ASSERT_EQ(font.LoadSWFFile(f.Tag(0), &f.dict), 1);
    ASSERT_EQ(font.glyphCount, 32767u);
    for (uint32_t i = 0; i < font.glyphCount; ++i)
        ASSERT_LE(font.glyphs[i]->records + font.glyphs[i]->recordsLength, tagEnd) << i;
}

TEST(FontHostile, Font2OffsetTableCannotLeadOutsideTheTag) {
    swf::Font2 def = FullFont2(0x08);
    swf::Bytes tag = swf::DefineFont2(def);
    // Header, id, flags, language, name length, "Hostile", count: then the
    // first of four 32-bit offsets.
    const size_t first = swf::TagHeaderSize(tag.data()) + 2 + 1 + 1 + 1 + 7 + 2;
    struct Case {
        const char* what;
        size_t entry;
        uint32_t value;
        int loads;
    } cases[] = {
        {"code table far away", 3, 0x7FFFFFF0u, 0},
        {"first glyph far away", 0, 0x7FFFFFF0u, 0},
        // Back into the offset table: glyph records read table bytes, all
        // still inside the tag.
        {"first glyph inside the table", 0, 2, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        swf::Bytes bad = tag;
        for (int b = 0; b < 4; ++b) bad[first + 4 * c.entry + b] = static_cast<uint8_t>(c.value >> (8 * b));
        DictionaryFixture f({{1, bad}});
        BFont font;
        EXPECT_EQ(font.LoadSWFFile(f.Tag(0), &f.dict), c.loads);
        Exercise(font, f.Tag(0), bad.size());
    }
}

}  // namespace
