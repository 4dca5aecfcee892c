// Static text loading: bounds, text matrix, style-change and glyph records as
// DefineText and DefineText2 store them, the end of the record list, and the
// two-entry styles that every glyph borrows while it is drawn.
#include <gtest/gtest.h>


#include "chars/BText.h"
#include "display/DictionaryFixture.h"
#include "fixture/SwfText.h"

namespace {

const GTextStyleChange& Style(const BText& t, int i) {
    EXPECT_EQ(t.records[i]->GetType(), 0);
    return *static_cast<const GTextStyleChange*>(t.records[i]);
}

const GGlyphRecord& Glyphs(const BText& t, int i) {
    EXPECT_EQ(t.records[i]->GetType(), 1);
    return *static_cast<const GGlyphRecord*>(t.records[i]);
}

// A DefineText body up to (not including) the records: id, bounds, identity
// matrix, GlyphBits and AdvanceBits.
swf::BitWriter TextHead(uint8_t glyphBits = 8, uint8_t advanceBits = 8) {
    swf::BitWriter w;
    w.UI16(1);
    swf::WriteRect(w, swf::Rect{0, 2000, 0, 400, 0});
    swf::WriteMatrix(w, swf::Matrix{});
    w.UI8(glyphBits).UI8(advanceBits);
    return w;
}

TEST(TextLoad, RecordsKeepFileOrderAndFields) {
    const swf::Matrix m = swf::Matrix::Scale(2.0, 0.5, 300, -40);
    std::vector<swf::TextRecord> records(3);
    records[0].fontId = 7;
    records[0].height = 240;
    records[0].color = swf::Rgba{10, 20, 30, 40};
    records[0].x = 100;
    records[0].y = -200;
    records[0].glyphs = {{0, 300}, {1000, -20}};
    records[1].color = swf::Rgba{1, 2, 3, 0};
    records[2].glyphs = {{5, 0}};
    for (int version : {1, 2}) {
        SCOPED_TRACE(version);
        DictionaryFixture f({{1, swf::DefineText(1, swf::Rect{-20, 2000, -400, 60, 0}, m, records, version)}});
        BText text;
        ASSERT_EQ(text.LoadSWFFile(f.Tag(0), &f.dict), 1);
        EXPECT_EQ(text.bounds.left, -20);
        EXPECT_EQ(text.bounds.right, 2000);
        EXPECT_EQ(text.bounds.top, -400);
        EXPECT_EQ(text.bounds.bottom, 60);
        EXPECT_DOUBLE_EQ(text.textMatrix.m[0][0], 2.0);
        EXPECT_DOUBLE_EQ(text.textMatrix.m[1][1], 0.5);
        EXPECT_DOUBLE_EQ(text.textMatrix.m[0][2], 300);
        EXPECT_DOUBLE_EQ(text.textMatrix.m[1][2], -40);
        ASSERT_EQ(text.records.count, 4);

        const GTextStyleChange& s = Style(text, 0);
        EXPECT_EQ(s.fontId, 7);
        EXPECT_EQ(s.height, 240);
        EXPECT_EQ(s.xOffset, 100);
        EXPECT_EQ(s.yOffset, -200);
        EXPECT_EQ(s.color.red, 10);
        EXPECT_EQ(s.color.blue, 30);
        // DefineText colours are RGB and count as opaque.
        EXPECT_EQ(s.color.alpha, version == 2 ? 40 : 255);

        const GGlyphRecord& g = Glyphs(text, 1);
        ASSERT_EQ(g.glyphCount, 2);
        EXPECT_EQ(g.entries[0].glyphIndex, 0);
        EXPECT_EQ(g.entries[0].advance, 300);
        EXPECT_EQ(g.entries[1].glyphIndex, 1000);
        EXPECT_EQ(g.entries[1].advance, -20);

        const GTextStyleChange& colourOnly = Style(text, 2);
        EXPECT_EQ(colourOnly.fontId, 0);
        EXPECT_EQ(colourOnly.xOffset, -1);
        EXPECT_EQ(colourOnly.yOffset, -1);
        EXPECT_EQ(colourOnly.height, -1);
        EXPECT_EQ(colourOnly.color.alpha, version == 2 ? 0 : 255);
        EXPECT_EQ(Glyphs(text, 3).glyphCount, 1);
    }
}

TEST(TextLoad, StyleChangeWithoutFieldsMarksEverythingAbsent) {
    swf::BitWriter w = TextHead();
    // A style change with no flags, then one whose offsets are an explicit -1:
    // -1 is the marker of an absent value, so both read the same.
    w.UI8(0x80).UI8(0x80 | 0x01 | 0x02).UI16(0xFFFF).UI16(0xFFFF).UI8(0);
    DictionaryFixture f({{1, swf::Tag(swf::kDefineText, w.Data())}});
    BText text;
    ASSERT_EQ(text.LoadSWFFile(f.Tag(0), &f.dict), 1);
    ASSERT_EQ(text.records.count, 2);
    for (int i = 0; i < 2; ++i) {
        const GTextStyleChange& s = Style(text, i);
        EXPECT_EQ(s.fontId, 0);
        EXPECT_EQ(s.xOffset, -1);
        EXPECT_EQ(s.yOffset, -1);
        EXPECT_EQ(s.height, -1);
        EXPECT_EQ(s.color.alpha, 0);
    }
}

TEST(TextLoad, GlyphCountByteReadsThatManyEntriesAndZeroEnds) {
    swf::BitWriter w = TextHead(4, 6);
    w.UI8(0x05);
    for (int i = 0; i < 5; ++i) w.UB(static_cast<uint32_t>(i + 10), 4).SB(-i * 3, 6);
    w.UI8(0x00);
    // Bytes after the end record are never read as records.
    w.UI8(0x05).UI8(0xFF);
    DictionaryFixture f({{1, swf::Tag(swf::kDefineText, w.Data())}});
    BText text;
    ASSERT_EQ(text.LoadSWFFile(f.Tag(0), &f.dict), 1);
    ASSERT_EQ(text.records.count, 1);
    const GGlyphRecord& g = Glyphs(text, 0);
    ASSERT_EQ(g.glyphCount, 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(g.entries[i].glyphIndex, i + 10);
        EXPECT_EQ(g.entries[i].advance, -i * 3);
    }
}

// A read past the tag gives 0, which ends the records like a terminator: a
// text whose terminator is missing at the end of the movie still loads.
TEST(TextLoad, TextWithoutTerminatorEndsAtTheTagEnd) {
    swf::BitWriter w = TextHead();
    w.UI8(0x02).UI8(3).UI8(40).UI8(4).UI8(50);
    DictionaryFixture f({{1, swf::Tag(swf::kDefineText, w.Data())}});
    BText text;
    ASSERT_EQ(text.LoadSWFFile(f.Tag(0), &f.dict), 1);
    ASSERT_EQ(text.records.count, 1);
    EXPECT_EQ(Glyphs(text, 0).entries[1].advance, 50);
}

TEST(TextLoad, RecordCutShortDropsEveryRecord) {
    struct Case {
        const char* what;
        std::vector<uint8_t> records;
    } cases[] = {
        {"glyph entries", {0x80 | 0x04, 1, 2, 3, 0x7F, 1, 2}},
        {"style change", {0x80 | 0x04, 1, 2, 3, 0x80 | 0x08, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        swf::BitWriter w = TextHead();
        w.Raw(c.records);
        DictionaryFixture f({{1, swf::Tag(swf::kDefineText, w.Data())}});
        BText text;
        EXPECT_EQ(text.LoadSWFFile(f.Tag(0), &f.dict), 0);
        EXPECT_EQ(text.records.count, 0);
    }
}

TEST(TextLoad, UnreadableBoundsOrMatrixFail) {
    swf::BitWriter bounds;
    bounds.UI16(1).UB(31, 5);
    swf::BitWriter matrix;
    matrix.UI16(1);
    swf::WriteRect(matrix, swf::Rect{0, 20, 0, 20, 0});
    matrix.UB(1, 1).UB(31, 5);
    for (const swf::BitWriter* w : {&bounds, &matrix}) {
        DictionaryFixture f({{1, swf::Tag(swf::kDefineText2, w->Data())}});
        BText text;
        EXPECT_EQ(text.LoadSWFFile(f.Tag(0), &f.dict), 0);
        EXPECT_NE(f.LastError(), 0u);
    }
}

TEST(TextLoad, BoundingBoxIgnoresTheTextMatrix) {
    DictionaryFixture f(
        {{1, swf::DefineText(1, swf::Rect{0, 400, -200, 0, 0}, swf::Matrix::Scale(4, 4, 1000, 1000), {})}});
    BText text;
    ASSERT_EQ(text.LoadSWFFile(f.Tag(0), &f.dict), 1);
    GMatrix move;
    move.m[0][2] = 20;
    const _GRECT r = text.GetBoundingBox(&move);
    EXPECT_EQ(r.left, 20);
    EXPECT_EQ(r.right, 420);
    EXPECT_EQ(r.top, -200);
    EXPECT_EQ(r.bottom, 0);
}

TEST(TextLoad, ManyShortRecordsAllLoad) {
    swf::BitWriter w = TextHead();
    const int count = 400000;
    for (int i = 0; i < count; ++i) w.UI8(0x80);
    w.UI8(0);
    DictionaryFixture f({{1, swf::Tag(swf::kDefineText, w.Data())}});
    BText text;
    ASSERT_EQ(text.LoadSWFFile(f.Tag(0), &f.dict), 1);
    EXPECT_EQ(text.records.count, count);
}

}  // namespace
