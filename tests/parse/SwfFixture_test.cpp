// The SWF fixture builder checked against hand-encoded bytes. Layouts that the
// engine's loaders read back (shapes, sprites, fonts, morphs) are checked by
// those loaders' own tests; here only encodings with an independent oracle.
#include <gtest/gtest.h>

#include <stdexcept>

#include "fixture/SwfBuilder.h"

namespace {

using swf::BitWriter;
using swf::Bytes;

TEST(BitWriterTest, FieldsAreMostSignificantBitFirstAndBytesAlign) {
    BitWriter w;
    w.UB(5, 3).SB(-3, 3).UB(1, 1).UI8(0xAB).UI16(0x1234).UI32(0xDEADBEEF).SB(-1, 2);
    EXPECT_EQ(w.Data(), (Bytes{0xB6, 0xAB, 0x34, 0x12, 0xEF, 0xBE, 0xAD, 0xDE, 0xC0}));
    w.FB(1.5, 18);
    EXPECT_EQ(w.Size(), 11u);
}

TEST(BitWriterTest, MinimalWidths) {
    struct Case {
        int32_t v;
        int ubits, sbits;
    };
    for (const Case c : {Case{0, 0, 0}, Case{1, 1, 2}, Case{-1, 32, 1}, Case{255, 8, 9}, Case{-256, 32, 9},
                         Case{(1 << 30) - 1, 30, 31}, Case{INT32_MIN, 32, 32}}) {
        EXPECT_EQ(BitWriter::UBits(static_cast<uint32_t>(c.v)), c.ubits) << c.v;
        EXPECT_EQ(BitWriter::SBits(c.v), c.sbits) << c.v;
    }
    EXPECT_EQ(BitWriter::SBits({3, -9, 0}), 5);
    EXPECT_EQ(BitWriter::Fixed(-0.5), -32768);
}

TEST(BitWriterTest, ValuesThatDoNotFitThrow) {
    BitWriter w;
    EXPECT_THROW(w.UB(4, 2), std::invalid_argument);
    EXPECT_THROW(w.SB(2, 2), std::invalid_argument);
    EXPECT_THROW(w.SB(-3, 2), std::invalid_argument);
    EXPECT_THROW(w.UB(0, 33), std::invalid_argument);
    EXPECT_NO_THROW(w.SB(-2, 2).UB(0xFFFFFFFFu, 32).SB(INT32_MIN, 32));
    swf::Shape s;
    s.MoveTo(0, 0).LineTo(70000, 0);
    EXPECT_THROW(s.WriteRecords(w, false), std::invalid_argument);
    swf::TextRecord tooMany;
    tooMany.glyphs.resize(128, {0, 0});
    EXPECT_THROW(swf::DefineText(1, {}, {}, {tooMany}), std::invalid_argument);
    EXPECT_THROW(swf::DefineShape(1, {}, swf::Shape(), 4), std::invalid_argument);
}

TEST(SwfFixtureTest, KnownRecordEncodings) {
    auto write = [](auto fn) {
        BitWriter w;
        fn(w);
        return w.Data();
    };
    EXPECT_EQ(write([](BitWriter& w) { swf::WriteRect(w, {0, 11000, 0, 8000, 0}); }),
              (Bytes{0x78, 0x00, 0x05, 0x5F, 0x00, 0x00, 0x0F, 0xA0, 0x00}));
    EXPECT_EQ(write([](BitWriter& w) { swf::WriteMatrix(w, {}); }), Bytes{0x00});
    EXPECT_EQ(write([](BitWriter& w) { swf::WriteMatrix(w, swf::Matrix::Translate(1, 1)); }), (Bytes{0x04, 0xA0}));
    swf::Cxform c;
    c.add = std::array<int16_t, 4>{1, -1, 0, 0};
    EXPECT_EQ(write([&](BitWriter& w) { swf::WriteCxform(w, c, false); }), (Bytes{0x89, 0xC0}));  // 1 0 0010 01 11 00

    EXPECT_EQ(swf::ShowFrame(), (Bytes{0x40, 0x00}));
    EXPECT_EQ(swf::End(), (Bytes{0x00, 0x00}));
    EXPECT_EQ(swf::SetBackgroundColor({1, 2, 3, 4}), (Bytes{0x43, 0x02, 1, 2, 3}));
    EXPECT_EQ(swf::Tag(2, {7}, true), (Bytes{0xBF, 0x00, 1, 0, 0, 0, 7}));
    EXPECT_EQ(swf::TagWithLength(9, {}, 3), (Bytes{0x43, 0x02}));
    swf::ButtonRecord rec;
    rec.characterId = 3;
    rec.states = 0x09;
    // id, flags, character, layer, matrix byte, cxform byte, end flag, action end.
    EXPECT_EQ(swf::DefineButton(2, {rec}), swf::Tag(7, {2, 0, 0x09, 3, 0, 1, 0, 0x00, 0x00, 0, 0}));
    EXPECT_EQ(swf::DefineFontInfo(3, "ab", 0x01, {0x100}), swf::Tag(13, {3, 0, 2, 'a', 'b', 0x01, 0, 0x00, 0x01}));
    EXPECT_EQ(swf::DefineFontInfo(3, "", 0x04, {7, 8}), swf::Tag(13, {3, 0, 0, 0x04, 0, 7, 8}));
}

TEST(SwfFixtureTest, TextRecordsUseMinimalGlyphAndAdvanceWidths) {
    swf::TextRecord style;
    style.fontId = 1;
    style.height = 240;
    style.color = swf::Rgba{1, 2, 3, 4};
    style.x = -1;
    style.glyphs = {{5, 100}, {0, -3}};
    const Bytes tag = swf::DefineText(9, {}, {}, {style}, 2);
    // id, empty RECT, identity MATRIX, GlyphBits 3, AdvanceBits 8, the style
    // record, then two entries of 3 + 8 bits: 101 01100100, 000 11111101.
    EXPECT_EQ(Bytes(tag.begin() + 2, tag.end()), (Bytes{9, 0, 0, 0, 3, 8, 0x8D, 1, 0, 1, 2, 3, 4, 0xFF, 0xFF, 240, 0,
                                                         2, 0xAC, 0x83, 0xF4, 0}));
}

TEST(SwfFixtureTest, MovieHeaderComputesLengthAndFrames) {
    swf::Movie m;
    m.tags.Add(swf::SetBackgroundColor({0, 0, 0, 255})).Add(swf::ShowFrame()).Add(swf::ShowFrame());
    const Bytes b = m.Build();
    ASSERT_GE(b.size(), 21u);
    EXPECT_EQ(std::string(b.begin(), b.begin() + 4), "FWS\x06");
    EXPECT_EQ(b[4] | (b[5] << 8) | (b[6] << 16) | (b[7] << 24), static_cast<int>(b.size()));
    EXPECT_EQ(Bytes(b.end() - 2, b.end()), swf::End());
    const size_t afterRect = 8 + 9;
    EXPECT_EQ(b[afterRect] | (b[afterRect + 1] << 8), 12 << 8);
    EXPECT_EQ(b[afterRect + 2] | (b[afterRect + 3] << 8), 2);

    m.signature = "CWS";
    m.fileLength = 5;
    m.frameCount = 700;
    m.appendEnd = false;
    const Bytes forced = m.Build();
    EXPECT_EQ(forced[0], 'C');
    EXPECT_EQ(forced[4], 5);
    EXPECT_EQ(forced[afterRect + 2] | (forced[afterRect + 3] << 8), 700);
    EXPECT_EQ(forced.size(), b.size() - 2);
}

}  // namespace
