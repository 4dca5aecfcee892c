// Shape-record reading: style-change runs (merging, new styles and their
// index bases, the version that honours them), edges of every kind, the
// end and error results, and the version table.
#include <gtest/gtest.h>

#include <array>

#include "chars/GBrush.h"
#include "chars/GShapeParser.h"
#include "display/GDictionary.h"
#include "fixture/SwfBuilder.h"
#include "parse/GParser.h"

namespace {

// Reads the records of a shape the way the renderer does: the bit-width
// byte, then the first flags.
struct RecordReader {
    swf::Bytes bytes;
    GError errors;
    GDictionary dict;
    GParser p;
    _GSHAPESTATUS status = {};
    GDataArray<_GSWFPEN> pens{10};
    GPointPoolArray<void> brushes{10};
    _GSWFSHAPEVERSIONINFO info;

    RecordReader(swf::Bytes data, unsigned version) : bytes(std::move(data)) {
        dict.error = &errors;
        dict.movieEnd = bytes.data() + bytes.size();
        p.Init(bytes.data(), static_cast<unsigned>(bytes.size()), dict.movieEnd);
        unsigned widths = p.ScanUI8();
        status.fillBits = static_cast<int>(widths >> 4);
        status.lineBits = static_cast<int>(widths & 15);
        info = GShapeParser::GetVersionInfo(version);
    }
    RecordReader(const swf::Shape& s, unsigned version) : RecordReader(Records(s, version), version) {}

    static swf::Bytes Records(const swf::Shape& s, unsigned version) {
        swf::BitWriter w;
        s.WriteRecords(w, version == 32);
        return w.Data();
    }
    int Styles(unsigned flags) {
        return GShapeParser::ScanStyles(&p, flags, status, &dict, pens, brushes, info);
    }
    int First() { return Styles(GShapeParser::ScanFlag(&p)); }
};

}  // namespace

TEST(GShapeParserVersion, NewStylesAndAlphaFollowTheTagCode) {
    struct Case {
        unsigned tag;
        int alpha, extended, newStyles;
    } cases[] = {{2, 0, 0, 0}, {22, 0, 1, 1}, {32, 1, 1, 1}, {46, 0, 0, 0}, {10, 0, 0, 0}, {48, 0, 0, 0}};
    for (const Case& c : cases) {
        _GSWFSHAPEVERSIONINFO v = GShapeParser::GetVersionInfo(c.tag);
        EXPECT_EQ(v.hasAlpha, c.alpha) << c.tag;
        EXPECT_EQ(v.hasExtendedCount, c.extended) << c.tag;
        EXPECT_EQ(v.hasNewStyles, c.newStyles) << c.tag;
    }
}

TEST(GShapeParserStyles, IsBrushLineLooksAtThePreviousLineWidthPlusPenBase) {
    struct Case {
        int newStyles, lineBits, penBase, expected;
    } cases[] = {{0, 0, 0, 0}, {1, 0, 0, 1}, {1, 1, 0, 0}, {1, 0, 2, 0}, {1, 2, 1, 1}, {1, 5, 0, 1}};
    for (const Case& c : cases) {
        _GSHAPESTATUS s = {};
        s.newStyles = c.newStyles;
        s.lineBits = c.lineBits;
        s.penBase = c.penBase;
        EXPECT_EQ(GShapeParser::IsBrushLine(s), c.expected) << c.lineBits << "+" << c.penBase;
    }
}

TEST(GShapeParserStyles, ANonStyleFlagReturnsAtOnceWithoutReading) {
    RecordReader r(swf::Bytes{0x11, 0xFF}, 22);
    r.status.changed = r.status.moved = 1;
    for (unsigned flags : {0u, 0xFFFFFFFFu, 0x20u, 0x3Fu}) {
        EXPECT_EQ(r.Styles(flags), static_cast<int>(flags));
        EXPECT_EQ(r.status.changed, 0);
        EXPECT_EQ(r.status.moved, 0);
        EXPECT_EQ(r.p.GetPosition(), 1);
    }
}

TEST(GShapeParserStyles, ConsecutiveStyleRecordsMergeIntoOneStatus) {
    swf::Shape s({swf::Fill::Solid({}), swf::Fill::Solid({})}, {});
    s.MoveTo(0, 0).Fill1(2).Bits([](swf::BitWriter& w) {
        w.UB(0x01, 6).UB(6, 5).SB(20, 6).SB(-30, 6);  // a second record that only moves
    });
    s.LineTo(100, 0);
    RecordReader r(s, 22);
    int flags = r.First();
    EXPECT_NE(flags & 0x20, 0);
    EXPECT_EQ(r.status.changed, 1);
    EXPECT_EQ(r.status.moved, 1);
    EXPECT_EQ(r.status.fillStyle1, 2);
    EXPECT_EQ(r.status.moveTwips.x, 20);
    EXPECT_EQ(r.status.moveTwips.y, -30);
    EXPECT_EQ(r.status.movePoint.x, 20.0);
    EXPECT_EQ(r.status.movePoint.y, -30.0);
}

TEST(GShapeParserStyles, NewStylesAppendAndSetTheIndexBases) {
    swf::Shape s;
    s.MoveTo(0, 0).NewStyles({swf::Fill::Solid({1, 2, 3, 255}), swf::Fill::Solid({4, 5, 6, 255})},
                             {swf::Line{40, {7, 8, 9, 255}}});
    s.Fill0(1).LineStyle(1).LineTo(100, 0);
    RecordReader r(s, 22);
    for (int i = 0; i < 4; ++i) r.brushes.Add(nullptr);  // a placeholder and 3 earlier fills
    int flags = r.First();
    EXPECT_NE(flags & 0x20, 0);
    EXPECT_EQ(r.status.newStyles, 1);
    EXPECT_EQ(r.status.moved, 1);
    EXPECT_EQ(r.status.brushBase, 3);
    EXPECT_EQ(r.status.penBase, 0);
    EXPECT_EQ(r.status.fillStyle0, 1);  // selects position brushBase + 1 = 4
    ASSERT_EQ(r.brushes.GetCount(), 6);
    ASSERT_NE(r.brushes[4], nullptr);
    EXPECT_EQ(static_cast<_GSWFSOLIDBRUSH*>(r.brushes[4])->color.red, 1);
    ASSERT_EQ(r.pens.GetCount(), 2);
    EXPECT_EQ(r.pens[1].width, 2.0);
    EXPECT_EQ(r.status.fillBits, 2);
    EXPECT_EQ(r.status.lineBits, 1);
}

TEST(GShapeParserStyles, DefineShapeIgnoresTheNewStylesBit) {
    // Widths byte, then a record with NewStyles and MoveTo (MoveBits 0), then
    // the end record: no style arrays may be read in between.
    swf::BitWriter w;
    w.UI8(0x11).UB(0x11, 6).UB(0, 5).UB(0, 6);
    RecordReader v1(w.Data(), 2);
    EXPECT_EQ(v1.First(), 0);
    EXPECT_EQ(v1.status.newStyles, 0);
    EXPECT_EQ(v1.status.moved, 1);
    EXPECT_EQ(v1.brushes.GetCount(), 0);
    EXPECT_EQ(v1.pens.GetCount(), 0);

    RecordReader v2(w.Data(), 22);
    v2.First();
    EXPECT_EQ(v2.status.newStyles, 1);
    EXPECT_GT(v2.brushes.GetCount(), 0);
}

TEST(GShapeParserStyles, RecordsCutShortReportAnError) {
    swf::BitWriter w;
    w.UI8(0x11).UB(0x01, 6).UB(31, 5);  // a move needing 62 more bits
    RecordReader r(w.Data(), 22);
    EXPECT_EQ(r.First(), -1);
}

TEST(GShapeParserEdges, EveryEdgeKindMovesThePenAndFillsThePoints) {
    swf::Shape s;
    s.MoveTo(5, 7).LineTo(5, 100).LineTo(60, 100).LineTo(90, 140).CurveTo(100, 140, 100, 160);
    RecordReader r(s, 22);
    int flags = r.First();
    ASSERT_NE(flags & 0x20, 0);
    _TWIPPOINT pos = r.status.moveTwips;
    _GPOINT point = {123.0, 7.0};
    _GPOINT out[2] = {};
    int curve = -1;

    // Each step: curve flag, point, pen position, then out[0] and out[1].
    // A vertical edge changes only y (point.x keeps whatever it held), a
    // horizontal one only x; a curve gives control point then anchor.
    const std::array<double, 9> steps[] = {
        {0, 123, 100, 5, 100, 123, 100, 0, 0},
        {0, 60, 100, 60, 100, 60, 100, 0, 0},
        {0, 90, 140, 90, 140, 90, 140, 0, 0},
        {1, 100, 160, 100, 160, 100, 140, 100, 160},
    };
    unsigned next = static_cast<unsigned>(flags);
    for (const auto& want : steps) {
        next = GShapeParser::ScanLine(&r.p, next, point, pos, out, curve);
        const std::array<double, 9> got = {double(curve), point.x,  point.y,  double(pos.x), double(pos.y),
                                            out[0].x,      out[0].y, out[1].x, out[1].y};
        EXPECT_EQ(got[0], want[0]);
        for (size_t i = 1; i < (want[0] ? 9u : 7u); ++i) EXPECT_EQ(got[i], want[i]) << "field " << i;
    }
    EXPECT_EQ(next, 0u);  // the end record
    EXPECT_EQ(r.Styles(next), 0);
    EXPECT_EQ(r.status.changed, 0);
}
