// The SWF fixture builder checked byte for byte: known encodings, and the
// layouts of shapes, tags and movies decoded again with the engine's scanner.
#include <gtest/gtest.h>

#include <stdexcept>

#include "ParserTestUtil.h"

namespace {

using parsetest::Exact;
using swf::BitWriter;
using swf::Bytes;

// The bytes of a tag after its short or long header.
Bytes BodyOf(const Bytes& tag) {
    const size_t header = (tag.at(0) & 0x3F) == 0x3F ? 6 : 2;
    return Bytes(tag.begin() + static_cast<std::ptrdiff_t>(header), tag.end());
}

// A scanner over a copy of some fixture bytes.
class Reader {
public:
    explicit Reader(const Bytes& bytes) : bytes_(bytes), buffer_(Exact(bytes)) {
        p.Init(buffer_.get(), static_cast<unsigned>(bytes.size()), buffer_.get() + bytes.size());
    }
    // Reads a tag header; returns the code and leaves the body length.
    unsigned Tag(unsigned& length) { return p.ScanTag(length); }
    size_t Left() const { return bytes_.size() - static_cast<size_t>(p.cur - p.start); }

    GParser p;

private:
    Bytes bytes_;
    std::unique_ptr<unsigned char[]> buffer_;
};

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

TEST(BitWriterTest, FieldsThatDoNotFitThrow) {
    BitWriter w;
    EXPECT_THROW(w.UB(4, 2), std::invalid_argument);
    EXPECT_THROW(w.SB(2, 2), std::invalid_argument);
    EXPECT_THROW(w.SB(-3, 2), std::invalid_argument);
    EXPECT_THROW(w.UB(0, 33), std::invalid_argument);
    EXPECT_NO_THROW(w.SB(-2, 2).UB(0xFFFFFFFFu, 32).SB(INT32_MIN, 32));
}

TEST(SwfFixtureTest, KnownRecordEncodings) {
    BitWriter rect;
    swf::WriteRect(rect, {0, 11000, 0, 8000, 0});
    EXPECT_EQ(rect.Data(), (Bytes{0x78, 0x00, 0x05, 0x5F, 0x00, 0x00, 0x0F, 0xA0, 0x00}));

    BitWriter identity;
    swf::WriteMatrix(identity, {});
    EXPECT_EQ(identity.Data(), Bytes{0x00});

    BitWriter translate;
    swf::WriteMatrix(translate, swf::Matrix::Translate(1, 1));
    EXPECT_EQ(translate.Data(), (Bytes{0x04, 0xA0}));

    BitWriter cx;
    swf::Cxform c;
    c.add = std::array<int16_t, 4>{1, -1, 0, 0};
    swf::WriteCxform(cx, c, false);  // 1 0 0010 01 11 00
    EXPECT_EQ(cx.Data(), (Bytes{0x89, 0xC0}));

    EXPECT_EQ(swf::ShowFrame(), (Bytes{0x40, 0x00}));
    EXPECT_EQ(swf::End(), (Bytes{0x00, 0x00}));
    EXPECT_EQ(swf::SetBackgroundColor({1, 2, 3, 4}), (Bytes{0x43, 0x02, 1, 2, 3}));
    EXPECT_EQ(swf::Tag(2, {7}, true), (Bytes{0xBF, 0x00, 1, 0, 0, 0, 7}));
    EXPECT_EQ(swf::TagWithLength(9, {}, 3), (Bytes{0x43, 0x02}));
}

TEST(SwfFixtureTest, ShapeRecordsDecodeAsWritten) {
    swf::Shape s({swf::Fill::Solid({255, 0, 0, 255})}, {{40, {0, 0, 0, 255}}});
    s.MoveTo(100, -100).Fill1(1).LineStyle(1);
    s.LineTo(300, -100).LineTo(300, 100).LineTo(100, 300).CurveTo(0, 300, 100, -100);
    s.NewStyles({swf::Fill::Solid({1, 1, 1, 255}), swf::Fill::Solid({2, 2, 2, 255}),
                 swf::Fill::Solid({3, 3, 3, 255})},
                {});
    s.Fill0(3).LineTo(100, -90, true);
    BitWriter w;
    s.WriteRecords(w, false);
    Reader r(w.Data());
    GParser& p = r.p;
    EXPECT_EQ(p.ParseUI32(4), 1u);  // one fill
    EXPECT_EQ(p.ParseUI32(4), 1u);  // one line
    EXPECT_EQ(p.ParseUI32(6), 0x0Du);  // move, fill1, line merged
    const int n = static_cast<int>(p.ParseUI32(5));
    EXPECT_EQ(p.ParseSI32(n), 100);
    EXPECT_EQ(p.ParseSI32(n), -100);
    EXPECT_EQ(p.ParseUI32(1), 1u);
    EXPECT_EQ(p.ParseUI32(1), 1u);
    // Horizontal: 200 needs 9 bits, NumBits 7.
    EXPECT_EQ(p.ParseUI32(6), 0x30u | 7);
    EXPECT_EQ(p.ParseUI32(2), 0u);
    EXPECT_EQ(p.ParseSI32(9), 200);
    // Vertical.
    EXPECT_EQ(p.ParseUI32(6), 0x30u | 7);
    EXPECT_EQ(p.ParseUI32(2), 1u);
    EXPECT_EQ(p.ParseSI32(9), 200);
    // General.
    EXPECT_EQ(p.ParseUI32(6), 0x30u | 7);
    EXPECT_EQ(p.ParseUI32(1), 1u);
    EXPECT_EQ(p.ParseSI32(9), -200);
    EXPECT_EQ(p.ParseSI32(9), 200);
    // Curve: control (-100, 0), anchor (100, -400).
    EXPECT_EQ(p.ParseUI32(6), 0x20u | 8);
    EXPECT_EQ(p.ParseSI32(10), -100);
    EXPECT_EQ(p.ParseSI32(10), 0);
    EXPECT_EQ(p.ParseSI32(10), 100);
    EXPECT_EQ(p.ParseSI32(10), -400);
    // New styles alone close their record; the arrays start on a byte.
    EXPECT_EQ(p.ParseUI32(6), 0x10u);
    GError errors;
    EXPECT_EQ(p.ScanUI8(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(p.ScanUI8(), 0u);
        _GRGBA c;
        p.ScanRGBAColor(c, 0, &errors);
        EXPECT_EQ(c.red, i + 1);
    }
    EXPECT_EQ(p.ScanUI8(), 0u);
    EXPECT_EQ(p.ParseUI32(4), 2u);  // three fills need two bits
    EXPECT_EQ(p.ParseUI32(4), 0u);
    EXPECT_EQ(p.ParseUI32(6), 0x02u);
    EXPECT_EQ(p.ParseUI32(2), 3u);
    // A general line forced for a vertical move.
    EXPECT_EQ(p.ParseUI32(6), 0x30u | 3);
    EXPECT_EQ(p.ParseUI32(1), 1u);
    EXPECT_EQ(p.ParseSI32(5), 0);
    EXPECT_EQ(p.ParseSI32(5), 10);
    EXPECT_EQ(p.ParseUI32(6), 0u);  // end of shape
    EXPECT_EQ(p.error, 0);
    EXPECT_LE(r.Left(), 1u);
}

TEST(SwfFixtureTest, GlyphShapesSizeTheirIndexFieldsFromUse) {
    swf::Shape glyph;
    glyph.MoveTo(0, 0).Fill1(1).LineTo(10, 0);
    BitWriter w;
    glyph.WriteRecords(w, false);
    Reader r(w.Data());
    EXPECT_EQ(r.p.ParseUI32(4), 1u);
    EXPECT_EQ(r.p.ParseUI32(4), 0u);
}

TEST(SwfFixtureTest, ShapeEdgesOutOfRangeThrow) {
    swf::Shape s;
    s.MoveTo(0, 0).LineTo(70000, 0);
    BitWriter w;
    EXPECT_THROW(s.WriteRecords(w, false), std::invalid_argument);
}

TEST(SwfFixtureTest, DefineShapeVersionsAndCountEscape) {
    swf::Shape s(std::vector<swf::Fill>(2, swf::Fill::Solid({9, 8, 7, 6})));
    s.ExtendedCounts();
    for (int version : {1, 2, 3}) {
        const Bytes tag = swf::DefineShape(5, {0, 20, 0, 20, 0}, s, version);
        Reader r(tag);
        unsigned length = 0;
        EXPECT_EQ(r.Tag(length), version == 1 ? 2u : version == 2 ? 22u : 32u);
        EXPECT_EQ(length, tag.size() - 2);
        EXPECT_EQ(r.p.ScanUI16(), 5u);
        _GRECT b;
        GError e;
        r.p.ScanSWFRect(b, &e);
        EXPECT_EQ(r.p.ScanUI8(), 0xFFu);
        EXPECT_EQ(r.p.ScanUI16(), 2u);
        EXPECT_EQ(r.p.ScanUI8(), 0u);
        _GRGBA c;
        r.p.ScanRGBAColor(c, version == 3, &e);
        EXPECT_EQ(c.alpha, version == 3 ? 6 : 255);
    }
    EXPECT_THROW(swf::DefineShape(1, {}, s, 4), std::invalid_argument);
}

TEST(SwfFixtureTest, MovieHeaderComputesLengthAndFrames) {
    swf::Movie m;
    m.tags.Add(swf::SetBackgroundColor({0, 0, 0, 255})).Add(swf::ShowFrame()).Add(swf::ShowFrame());
    const Bytes b = m.Build();
    ASSERT_GE(b.size(), 8u);
    EXPECT_EQ(std::string(b.begin(), b.begin() + 3), "FWS");
    EXPECT_EQ(b[3], 6);
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

TEST(SwfFixtureTest, SpriteCountsFramesAndEndsWithEnd) {
    swf::Tags inner;
    inner.Add(swf::PlaceObject2({})).Add(swf::ShowFrame()).Add(swf::RemoveObject2(1)).Add(swf::ShowFrame());
    EXPECT_EQ(inner.ShowFrames(), 2);
    for (std::optional<uint16_t> forced : {std::optional<uint16_t>{}, std::optional<uint16_t>{9}}) {
        const Bytes tag = swf::DefineSprite(4, inner, forced);
        Reader r(tag);
        unsigned length = 0;
        EXPECT_EQ(r.Tag(length), 39u);
        EXPECT_EQ(r.p.ScanUI16(), 4u);
        EXPECT_EQ(r.p.ScanUI16(), forced ? 9u : 2u);
        EXPECT_EQ(Bytes(tag.end() - 2, tag.end()), swf::End());
        EXPECT_EQ(length, 4 + inner.Data().size() + 2);
    }
}

TEST(SwfFixtureTest, ButtonRecordsCarryCxformAndActionOffset) {
    swf::ButtonRecord rec;
    rec.characterId = 3;
    rec.states = 0x09;
    const Bytes v1 = swf::DefineButton(2, {rec});
    // id, flags, character, layer, matrix byte, cxform byte, end flag, action end.
    EXPECT_EQ(v1, swf::Tag(7, {2, 0, 0x09, 3, 0, 1, 0, 0x00, 0x00, 0, 0}));
    const Bytes v2 = swf::DefineButton2(2, {rec}, true, {0xAA, 0xBB});
    Reader r(v2);
    unsigned length = 0;
    EXPECT_EQ(r.Tag(length), 34u);
    r.p.ScanUI16();
    EXPECT_EQ(r.p.ScanUI8(), 1u);
    const unsigned offset = r.p.ScanUI16();
    EXPECT_EQ(offset, 2u + 8u);
    r.p.Skip(offset - 2);
    EXPECT_EQ(r.p.ScanUI8(), 0xAAu);
    const Bytes quiet = BodyOf(swf::DefineButton2(2, {rec}));
    EXPECT_EQ(quiet[3] | (quiet[4] << 8), 0);  // no actions: offset 0
}

TEST(SwfFixtureTest, FontOffsetTablesPointAtGlyphs) {
    swf::Shape a, b;
    a.MoveTo(0, 0).Fill1(1).LineTo(512, 0).LineTo(512, -512).LineTo(0, 0);
    b.MoveTo(1, 1).Fill1(1).LineTo(2, 1);
    BitWriter sizeA, sizeB;
    a.WriteRecords(sizeA, false);
    b.WriteRecords(sizeB, false);

    const Bytes font = swf::DefineFont(1, {a, b});
    Reader r(font);
    unsigned length = 0;
    EXPECT_EQ(r.Tag(length), 10u);
    r.p.ScanUI16();
    EXPECT_EQ(r.p.ScanUI16(), 4u);
    EXPECT_EQ(r.p.ScanUI16(), 4u + sizeA.Size());
    EXPECT_EQ(length, 2 + 4 + sizeA.Size() + sizeB.Size());
    EXPECT_EQ(BodyOf(swf::DefineFont(1, {a}, {0}))[2], 0);

    swf::Font2 f;
    f.flags = 0x80 | 0x08 | 0x04;
    f.name = "Sans";
    f.glyphs = {a, b};
    f.codes = {'A', 0x263A};
    f.advances = {500, -1};
    f.bounds = {{}, {}};
    f.kerning = {{'A', 0x263A, -20}};
    const Bytes tag2 = swf::DefineFont2(f);
    Reader q(tag2);
    EXPECT_EQ(q.Tag(length), 48u);
    q.p.ScanUI16();
    EXPECT_EQ(q.p.ScanUI8(), f.flags);
    q.p.ScanUI8();
    EXPECT_EQ(q.p.ScanUI8(), 4u);
    q.p.Skip(4);
    EXPECT_EQ(q.p.ScanUI16(), 2u);
    EXPECT_EQ(q.p.ScanUI32(), 12u);
    EXPECT_EQ(q.p.ScanUI32(), 12u + sizeA.Size());
    const uint32_t codeTable = q.p.ScanUI32();
    EXPECT_EQ(codeTable, 12u + sizeA.Size() + sizeB.Size());
    q.p.Skip(codeTable - 12);
    EXPECT_EQ(q.p.ScanUI16(), 'A');
    EXPECT_EQ(q.p.ScanUI16(), 0x263Au);
    q.p.Skip(6);
    EXPECT_EQ(q.p.ScanUI16(), 500u);
    EXPECT_EQ(static_cast<int16_t>(q.p.ScanUI16()), -1);
    q.p.Skip(2);
    EXPECT_EQ(q.p.ScanUI16(), 1u);
    EXPECT_EQ(q.p.ScanUI16(), 'A');
    EXPECT_EQ(q.p.ScanUI16(), 0x263Au);
    EXPECT_EQ(static_cast<int16_t>(q.p.ScanUI16()), -20);
    EXPECT_EQ(q.Left(), 0u);
}

TEST(SwfFixtureTest, FontInfoWritesTheExtraByteAfterFlags) {
    EXPECT_EQ(swf::DefineFontInfo(3, "ab", 0x01, {0x100}),
              swf::Tag(13, {3, 0, 2, 'a', 'b', 0x01, 0, 0x00, 0x01}));
    EXPECT_EQ(swf::DefineFontInfo(3, "", 0x04, {7, 8}), swf::Tag(13, {3, 0, 0, 0x04, 0, 7, 8}));
}

TEST(SwfFixtureTest, TextRecordsAndBitWidths) {
    swf::TextRecord style;
    style.fontId = 1;
    style.height = 240;
    style.color = swf::Rgba{1, 2, 3, 4};
    style.x = -1;
    style.glyphs = {{5, 100}, {0, -3}};
    const Bytes tag = swf::DefineText(9, {}, {}, {style}, 2);
    const Bytes body = BodyOf(tag);
    // id, empty RECT, identity MATRIX, GlyphBits 3, AdvanceBits 8, style...
    EXPECT_EQ(Bytes(body.begin(), body.begin() + 6), (Bytes{9, 0, 0, 0, 3, 8}));
    EXPECT_EQ(Bytes(body.begin() + 6, body.begin() + 17),
              (Bytes{0x8D, 1, 0, 1, 2, 3, 4, 0xFF, 0xFF, 240, 0}));
    // two entries of 3 + 8 bits: 101 01100100, 000 11111101, padded.
    EXPECT_EQ(Bytes(body.begin() + 17, body.end()), (Bytes{2, 0xAC, 0x83, 0xF4, 0}));
    swf::TextRecord tooMany;
    tooMany.glyphs.resize(128, {0, 0});
    EXPECT_THROW(swf::DefineText(1, {}, {}, {tooMany}), std::invalid_argument);
}

TEST(SwfFixtureTest, EditTextFlagsFollowTheFieldsPresent) {
    swf::EditText e;
    e.id = 2;
    e.flags = swf::kEditBorder | swf::kEditHtml;
    e.font = std::make_pair(uint16_t{4}, uint16_t{240});
    e.color = swf::Rgba{9, 9, 9, 9};
    e.layout = swf::EditLayout{2, 1, 1, 0, 0};
    e.variableName = "v";
    e.text = "<p>Hi</p>";
    const Bytes body = BodyOf(swf::DefineEditText(e));
    EXPECT_EQ(body[3] | (body[4] << 8),
              swf::kEditBorder | swf::kEditHtml | swf::kEditHasFont | swf::kEditHasTextColor |
                  swf::kEditHasLayout | swf::kEditHasText);
    EXPECT_EQ(std::string(body.end() - 12, body.end() - 1), std::string("v\0<p>Hi</p>", 11));
}

TEST(SwfFixtureTest, MorphOffsetPointsAtTheEndEdges) {
    swf::Shape start, end;
    start.MoveTo(0, 0).Fill0(1).LineTo(100, 0).LineTo(100, 100);
    end.MoveTo(0, 0).LineTo(200, 0).CurveTo(200, 100, 200, 200);
    swf::MorphStop stop{0, {1, 1, 1, 1}, 255, {2, 2, 2, 2}};
    const Bytes tag = swf::DefineMorphShape(
        3, {0, 100, 0, 100, 0}, {0, 200, 0, 200, 0},
        {swf::MorphFill::Solid({1, 2, 3, 4}, {5, 6, 7, 8}),
         swf::MorphFill::Gradient(0x10, {}, swf::Matrix::Translate(5, 5), {stop}),
         swf::MorphFill::Bitmap(7, {}, {})},
        {{20, 40, {}, {}}}, start, end);
    BitWriter endBits;
    end.WriteRecords(endBits, true);
    Reader r(tag);
    unsigned length = 0;
    EXPECT_EQ(r.Tag(length), 46u);
    r.p.ScanUI16();
    _GRECT a, b;
    GError e;
    r.p.ScanSWFRect(a, &e);
    r.p.ScanSWFRect(b, &e);
    EXPECT_EQ(b.right, 200);
    const uint32_t offset = r.p.ScanUI32();
    EXPECT_EQ(r.p.ScanUI8(), 3u);
    r.p.Skip(offset - 1);
    EXPECT_EQ(r.Left(), endBits.Size());
    EXPECT_EQ(BodyOf(swf::DefineMorphShape(3, {}, {}, {}, {}, start, end, 1))[4], 1);
}

}  // namespace
