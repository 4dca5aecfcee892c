// Round trips through the record parser: what the fixture builder writes,
// GParser reads back field for field (tag headers, RECT, MATRIX, CXFORM,
// colours, gradients, points, style arrays, placements, strings, labels).
#include "parse/GParser.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ParserTestUtil.h"

namespace {

using parsetest::Exact;
using parsetest::Over;
using parsetest::Popped;
using parsetest::Release;

// A parser over exactly the bytes given (kept alive by the fixture).
class RecordTest : public ::testing::Test {
protected:
    GParser& Parse(const swf::Bytes& bytes) {
        bytes_ = bytes;
        buffer_ = Exact(bytes_);
        Over(parser_, buffer_.get(), bytes_.size());
        return parser_;
    }
    GParser& Parse(const swf::BitWriter& w) { return Parse(w.Data()); }

    GError errors_;
    GParser parser_;
    swf::Bytes bytes_;
    std::unique_ptr<unsigned char[]> buffer_;
};

TEST_F(RecordTest, RectReadsEdgesInFileOrder) {
    const swf::Rect cases[] = {
        {0, 0, 0, 0, 0},
        {-20, 11000, -1, 8000, 0},
        {(1 << 30) - 1, -(1 << 30), 5, -5, 0},  // the widest field, 31 bits
        {1, 2, 3, 4, 31},
    };
    for (const swf::Rect& r : cases) {
        swf::BitWriter w;
        w.UI8(0xFF);  // a byte before, then a partial one: the RECT aligns
        w.UB(1, 3);
        swf::WriteRect(w, r);
        GParser& p = Parse(w);
        p.ScanUI8();
        p.ParseUI32(3);
        _GRECT out = {};
        ASSERT_EQ(p.ScanSWFRect(out, &errors_), 1);
        EXPECT_EQ((std::array<double, 4>{out.left, out.right, out.top, out.bottom}),
                  (std::array<double, 4>{double(r.xMin), double(r.xMax), double(r.yMin), double(r.yMax)}));
        EXPECT_EQ(errors_.GetErrorNum(), 0u);
    }
}

TEST_F(RecordTest, MatrixByteZeroIsIdentityAndANullMatrixIsSkippedSilently) {
    GMatrix m;
    m.m[0][0] = 7;
    ASSERT_EQ(Parse(swf::Bytes{0}).ScanSWFMatrix(&m, &errors_), 1);
    EXPECT_EQ(m.IsIdentify(), 1);
    EXPECT_EQ(Parse(swf::Bytes{0}).ScanSWFMatrix(nullptr, &errors_), 0);
    EXPECT_EQ(errors_.GetErrorNum(), 0u);
}

TEST_F(RecordTest, MatrixFieldsLandInRowMajorOrder) {
    struct Case {
        swf::Matrix in;
        double sx, r1, tx, r0, sy, ty;
    };
    swf::Matrix rotated = swf::Matrix::Scale(1.5, -0.25, -400, 12345);
    rotated.rotate = std::make_pair(0.5, -0.75);
    swf::Matrix rotateOnly = swf::Matrix::Translate(0, 0);
    rotateOnly.rotate = std::make_pair(-1.0, 1.0);
    const Case cases[] = {
        {swf::Matrix::Translate(200, -40), 1, 0, 200, 0, 1, -40},
        {swf::Matrix::Scale(2.0, 0.5), 2, 0, 0, 0, 0.5, 0},
        {rotated, 1.5, -0.75, -400, 0.5, -0.25, 12345},
        {rotateOnly, 1, 1, 0, -1, 1, 0},
        {swf::Matrix::Translate(-(1 << 30), (1 << 30) - 1), 1, 0, -(1 << 30), 0, 1, (1 << 30) - 1},
        {swf::Matrix::Scale(1.0 / 65536, -16384.0), 1.0 / 65536, 0, 0, 0, -16384.0, 0},
    };
    for (const Case& c : cases) {
        swf::BitWriter w;
        swf::WriteMatrix(w, c.in);
        GMatrix m;
        ASSERT_EQ(Parse(w).ScanSWFMatrix(&m, &errors_), 1);
        EXPECT_EQ((std::array<double, 6>{m.m[0][0], m.m[0][1], m.m[0][2], m.m[1][0], m.m[1][1], m.m[1][2]}),
                  (std::array<double, 6>{c.sx, c.r1, c.tx, c.r0, c.sy, c.ty}));
    }
}

TEST_F(RecordTest, CxformTermsWithAndWithoutAlpha) {
    struct Case {
        swf::Cxform in;
        bool alpha;
        std::array<int16_t, 8> want;  // alpha, red, green, blue: mult then add
    };
    const std::array<int16_t, 4> mult = {128, -256, 512, 64};
    const std::array<int16_t, 4> add = {-255, 255, 0, -16384};
    const Case cases[] = {
        {{}, false, {256, 0, 256, 0, 256, 0, 256, 0}},
        {{mult, {}, 0}, false, {256, 0, 128, 0, -256, 0, 512, 0}},
        {{{}, add, 0}, false, {256, 0, 256, -255, 256, 255, 256, 0}},
        {{mult, add, 0}, true, {64, -16384, 128, -255, -256, 255, 512, 0}},
        {{mult, {}, 0}, true, {64, 0, 128, 0, -256, 0, 512, 0}},
        {{{}, add, 15}, true, {256, -16384, 256, -255, 256, 255, 256, 0}},
    };
    for (const Case& c : cases) {
        swf::BitWriter w;
        swf::WriteCxform(w, c.in, c.alpha);
        GCxform out;
        out.redMult = 1;
        ASSERT_EQ(Parse(w).ScanColorMatrix(out, c.alpha, &errors_), 1);
        EXPECT_EQ((std::array<int, 8>{out.alphaMult, out.alphaAdd, out.redMult, out.redAdd, out.greenMult,
                                      out.greenAdd, out.blueMult, out.blueAdd}),
                  (std::array<int, 8>{c.want[0], c.want[1], c.want[2], c.want[3], c.want[4], c.want[5], c.want[6],
                                      c.want[7]}));
    }
}

TEST_F(RecordTest, ColoursGradientsAndPointsReadBack) {
    swf::BitWriter w;
    swf::WriteColor(w, {1, 2, 3, 4}, false);  // without alpha: opaque
    swf::WriteColor(w, {5, 6, 7, 8}, true);
    swf::WriteGradient(w, {{0, {255, 0, 0, 10}}, {255, {0, 0, 255, 20}}}, true);
    w.UB(5, 3);  // a point is read without aligning first
    const int n = swf::BitWriter::SBits({-300, 70000});
    w.UB(static_cast<uint32_t>(n), 5).SB(-300, n).SB(70000, n);
    GParser& p = Parse(w);
    _GRGBA c = {};
    ASSERT_EQ(p.ScanRGBAColor(c, 0, &errors_), 1);
    EXPECT_EQ((std::array<int, 4>{c.red, c.green, c.blue, c.alpha}), (std::array<int, 4>{1, 2, 3, 255}));
    ASSERT_EQ(p.ScanRGBAColor(c, 1, &errors_), 1);
    EXPECT_EQ((std::array<int, 4>{c.red, c.green, c.blue, c.alpha}), (std::array<int, 4>{5, 6, 7, 8}));
    EXPECT_EQ(p.ScanUI8(), 2u);
    _GGRADIENT g[2] = {};
    ASSERT_EQ(p.ScanGradient(g[0], 1, &errors_), 1);
    ASSERT_EQ(p.ScanGradient(g[1], 1, &errors_), 1);
    EXPECT_EQ((std::array<int, 3>{int(g[0].ratio), g[0].color.red, g[0].color.alpha}),
              (std::array<int, 3>{0, 255, 10}));
    EXPECT_EQ((std::array<int, 3>{int(g[1].ratio), g[1].color.blue, g[1].color.alpha}),
              (std::array<int, 3>{255, 255, 20}));
    p.ParseUI32(3);
    _TWIPPOINT pt = {};
    ASSERT_EQ(p.ScanTwipPoint(pt, &errors_), 1);
    EXPECT_EQ(pt.x, -300);
    EXPECT_EQ(pt.y, 70000);
}

TEST_F(RecordTest, PenArrayStartsWithPlaceholderAndScalesWidths) {
    for (bool extended : {false, true}) {
        for (int alpha = 0; alpha < 2; ++alpha) {
            swf::BitWriter w;
            swf::WriteLineStyles(w, {{20, {1, 2, 3, 4}}, {65535, {9, 8, 7, 6}}}, alpha, extended);
            GDataArray<_GSWFPEN> pens;
            ASSERT_EQ(Parse(w).ScanPenArray(pens, alpha, &errors_, 0), 1);
            ASSERT_EQ(pens.GetCount(), 3);
            EXPECT_EQ(pens[0].width, 0.0);
            EXPECT_EQ(pens[1].width, 20 * 0.05);
            EXPECT_EQ(pens[2].width, 65535 * 0.05);
            EXPECT_EQ(pens[1].color.alpha, alpha ? 4 : 255);
            EXPECT_EQ(pens[2].color.red, 9);
        }
    }
    // A non-empty array is appended to, without a placeholder.
    swf::BitWriter w;
    swf::WriteLineStyles(w, std::vector<swf::Line>(300), false);
    GDataArray<_GSWFPEN> pens;
    pens.Add(_GSWFPEN{1.0, {0, 0, 0, 0}});
    ASSERT_EQ(Parse(w).ScanPenArray(pens, 0, &errors_, 0), 1);
    EXPECT_EQ(pens.GetCount(), 301);
    EXPECT_EQ(pens[0].width, 1.0);
    EXPECT_EQ(pens[300].width, 1.0);
}

TEST(TagHeaderTest, ShortAndLongHeaders) {
    struct Case {
        uint16_t code;
        size_t bodySize;
        bool forceLong;
        unsigned headerSize;
    };
    const Case cases[] = {{1, 0, false, 2}, {26, 62, false, 2}, {26, 63, false, 6},
                          {2, 5, true, 6},  {0, 0, true, 6},    {1023, 1000, false, 6}};
    for (const Case& c : cases) {
        const swf::Bytes tag = swf::Tag(c.code, swf::Bytes(c.bodySize, 0xAA), c.forceLong);
        ASSERT_EQ(tag.size(), c.bodySize + c.headerSize);
        auto buffer = Exact(tag);
        GParser p;
        unsigned total = 99;
        const unsigned code = p.InitTagHead(buffer.get(), &total, buffer.get() + tag.size());
        // Codes of 512 and above come back sign-extended from the 16-bit header.
        EXPECT_EQ(code, c.code < 512 ? c.code : c.code + 0x03FFFC00u);
        EXPECT_EQ(total, tag.size());
        EXPECT_EQ(p.GetPosition(), static_cast<int32_t>(c.headerSize));
        EXPECT_EQ(p.end, buffer.get() + tag.size());

        GParser s;
        s.Init(buffer.get(), static_cast<unsigned>(tag.size() - 1), buffer.get() + tag.size());
        unsigned length = 7;
        EXPECT_EQ(s.ScanTag(length), code);
        EXPECT_EQ(length, c.bodySize);
    }
}

TEST(TagHeaderTest, DeclaredLengthIsTakenEvenPastTheBufferAndSaturates) {
    struct Case {
        swf::Bytes tag;
        unsigned code, total;
    };
    const Case cases[] = {{{0x3F, 0x00, 10, 0, 0, 0}, 0, 16},
                          {swf::TagWithLength(2, {}, 0xFFFFFFFFu), 2, 0xFFFFFFFFu}};
    for (const Case& c : cases) {
        auto buffer = Exact(c.tag);
        GParser p;
        unsigned total = 0;
        EXPECT_EQ(p.InitTagHead(buffer.get(), &total, buffer.get() + c.tag.size()), c.code);
        EXPECT_EQ(total, c.total);
        EXPECT_EQ(p.error, 0);
    }
}

TEST(TagHeaderTest, TruncatedHeaderReadsZerosPastTheBufferAndScanTagFails) {
    const swf::Bytes tag = swf::TagWithLength(26, {}, 1000);
    for (size_t n = 0; n < tag.size(); ++n) {
        auto buffer = Exact(tag, n);
        // Bounded by the host buffer, the missing header bytes read as 0.
        uint32_t declared = 0;
        for (size_t i = 2; i < n; ++i) declared |= static_cast<uint32_t>(tag[i]) << (8 * (i - 2));
        GParser p;
        unsigned total = 5;
        p.InitTagHead(buffer.get(), &total, buffer.get() + n);
        EXPECT_EQ(total, n == 0 ? 2u : 6u + declared) << n;
        EXPECT_EQ(p.error, 0);
        if (n == 0) continue;
        // A range ending inside the header fails and leaves the length alone.
        GParser s;
        Over(s, buffer.get(), n);
        unsigned length = 42;
        EXPECT_EQ(s.ScanTag(length), 0u) << n;
        EXPECT_EQ(length, 42u);
        EXPECT_EQ(s.error, 1);
    }
}

TEST(TagHeaderTest, BodyReadsPastTheHostBufferGiveZero) {
    const swf::Bytes tag = swf::TagWithLength(9, {0x12, 0x34}, 40);
    auto buffer = Exact(tag);
    GParser p;
    unsigned total = 0;
    ASSERT_EQ(p.InitTagHead(buffer.get(), &total, buffer.get() + tag.size()), 9u);
    EXPECT_EQ(total, 42u);
    EXPECT_EQ(p.ScanUI16(), 0x3412u);
    EXPECT_EQ(p.ScanUI32(), 0u);
    EXPECT_EQ(p.error, 0);
}

// A parser over one whole tag of a buffer, as the engine makes them.
class PlaceTest : public ::testing::Test {
protected:
    void TearDown() override { Release(info_); }
    unsigned Open(const swf::Bytes& tag) {
        Release(info_);
        info_ = GCTRL_INFO{};
        bytes_ = tag;
        buffer_ = Exact(bytes_);
        unsigned total = 0;
        parser_.InitTagHead(buffer_.get(), &total, buffer_.get() + bytes_.size());
        return total;
    }

    GError errors_;
    GParser parser_;
    GCTRL_INFO info_ = {};
    swf::Bytes bytes_;
    std::unique_ptr<unsigned char[]> buffer_;
};

TEST_F(PlaceTest, PlaceObjectReadsTheCxformWithoutAlphaOnlyWhenPresent) {
    swf::Cxform cx;
    cx.mult = std::array<int16_t, 4>{128, 64, 32, 7};
    for (bool withCxform : {false, true}) {
        const unsigned total = Open(withCxform ? swf::PlaceObject(7, 3, swf::Matrix::Translate(100, 200), cx)
                                               : swf::PlaceObject(7, 3, swf::Matrix::Translate(100, 200)));
        ASSERT_EQ(parser_.LoadCtrlPlace(total, &info_, &errors_), 1);
        EXPECT_EQ(info_.characterId, 7);
        EXPECT_EQ(info_.depth, 3);
        ASSERT_NE(info_.matrix, nullptr);
        EXPECT_EQ(info_.matrix->m[0][2], 100);
        EXPECT_EQ(info_.matrix->m[1][2], 200);
        ASSERT_EQ(info_.cxform != nullptr, withCxform);
        if (withCxform) {
            EXPECT_EQ(info_.cxform->redMult, 128);
            EXPECT_EQ(info_.cxform->blueMult, 32);
            EXPECT_EQ(info_.cxform->alphaMult, 256);
        }
    }
}

TEST_F(PlaceTest, PlaceObject2EveryFlagCombination) {
    swf::Cxform cx;
    cx.add = std::array<int16_t, 4>{1, -2, 3, -4};
    for (unsigned flags = 0; flags < 256; ++flags) {
        swf::Place2 p;
        p.depth = static_cast<uint16_t>(flags + 1);
        p.move = flags & 0x01;
        if (flags & 0x02) p.characterId = 500;
        if (flags & 0x04) p.matrix = swf::Matrix::Translate(-1, 1);
        if (flags & 0x08) p.cxform = cx;
        if (flags & 0x10) p.ratio = 65535;
        if (flags & 0x20) p.name = "inst";
        if (flags & 0x40) p.clipDepth = 9;
        if (flags & 0x80) p.clipActions = swf::Bytes{0, 0, 0, 0};
        const unsigned total = Open(swf::PlaceObject2(p));
        const int expected[4] = {0, 2, 1, 3};
        ASSERT_EQ(parser_.LoadCtrlPlace2(total, &info_, &errors_), expected[flags & 3]) << flags;
        EXPECT_EQ(Popped(errors_), (flags & 3) == 0 ? kErrPlaceObject2 : 0u) << flags;
        EXPECT_EQ(info_.placeFlags, flags);
        EXPECT_EQ(info_.depth, flags + 1);
        EXPECT_EQ(info_.characterId, (flags & 0x02) ? 500 : 0);
        EXPECT_EQ(info_.matrix ? info_.matrix->m[0][2] : 0, (flags & 0x04) ? -1 : 0);
        EXPECT_EQ(info_.matrix != nullptr, (flags & 0x04) != 0);
        EXPECT_EQ(info_.cxform ? info_.cxform->alphaAdd : 0, (flags & 0x08) ? -4 : 0);
        EXPECT_EQ(info_.cxform != nullptr, (flags & 0x08) != 0);
        EXPECT_EQ(info_.ratio, (flags & 0x10) ? 65535 : 0);
        EXPECT_EQ(std::string(info_.name ? info_.name : "-"), (flags & 0x20) ? "inst" : "-");
        EXPECT_EQ(info_.clipDepth, (flags & 0x40) ? 9 : 0);
    }
}

TEST_F(PlaceTest, PlaceObject2ReadsClipDepthBeforeName) {
    // Flags 0x62: character, clip depth, name; the bytes are id, clip
    // depth, then the name, whatever the published layout says.
    const swf::Bytes body = {0x62, 4, 0, 9, 0, 0x34, 0x12, 'n', 0};
    const unsigned total = Open(swf::Tag(swf::kPlaceObject2, body));
    ASSERT_EQ(parser_.LoadCtrlPlace2(total, &info_, &errors_), 1);
    EXPECT_EQ(info_.characterId, 9);
    EXPECT_EQ(info_.clipDepth, 0x1234);
    EXPECT_STREQ(info_.name, "n");
}

TEST(ReadStringTest, TerminatorRangeEndAndNothingLeft) {
    struct Case {
        const char* what;
        swf::Bytes text;
        unsigned endIndex, skipFirst;
        int result;
        const char* string;  // null: nothing allocated
    };
    const Case cases[] = {
        {"terminated", {'a', 'b', 'c', 0, 'z'}, 4, 0, 4, "abc"},
        {"terminator at the end", {'h', 'i', 0}, 2, 0, 3, "hi"},
        // The range ends at 'y' (inclusive), not a terminator: the last byte is lost.
        {"unterminated", {'x', 'y', 'z'}, 1, 0, 1, ""},
        {"non-zero byte at the end", {'q'}, 0, 0, -1, nullptr},
        {"nothing left", {'q'}, 0, 1, -1, nullptr},
    };
    for (const Case& c : cases) {
        auto buffer = Exact(c.text);
        GParser p;
        p.Init(buffer.get(), c.endIndex, buffer.get() + c.text.size());
        if (c.skipFirst) p.ScanUI8();
        char* s = nullptr;
        EXPECT_EQ(p.ReadString(&s), c.result) << c.what;
        EXPECT_EQ(std::string(s ? s : "(null)"), c.string ? c.string : "(null)") << c.what;
        EXPECT_EQ(c.result > 0 ? p.GetPosition() : p.error, c.result > 0 ? c.result : 1) << c.what;
        GParser::ReleaseReadString(&s);
        EXPECT_EQ(s, nullptr);
        GParser::ReleaseReadString(&s);  // releasing twice is harmless
    }
    const swf::Bytes label = {'l', 'b', 0, 0x5A};
    auto buffer = Exact(label);
    GParser p;
    Over(p, buffer.get(), label.size());
    p.ParseFrameLabel();
    EXPECT_EQ(p.ScanUI8(), 0x5Au);
}

TEST(EquStringTest, ExactCaseSensitiveMatch) {
    struct Case {
        const char *a, *b;
        int equal;
    };
    const Case cases[] = {{"abc", "abc", 1}, {"abc", "abd", 0}, {"abc", "ab", 0}, {"ab", "abc", 0},
                          {"abc", "ABC", 0}, {"", "", 1},       {"", "a", 0},     {"a", "", 0},
                          {nullptr, "a", 0}, {"a", nullptr, 0}};
    for (const Case& c : cases) EXPECT_EQ(GParser::EquString(c.a, c.b), c.equal) << (c.a ? c.a : "null");
}

TEST(LabelTest, FindsTheFrameOfEachLabelAndMinusOneOtherwise) {
    swf::Tags tags;
    tags.Add(swf::FrameLabel("intro")).Add(swf::ShowFrame()).Add(swf::SetBackgroundColor({1, 2, 3, 255}));
    tags.Add(swf::ShowFrame()).Add(swf::FrameLabel("loop")).Add(swf::FrameLabel("alias"));
    tags.Add(swf::ShowFrame()).Add(swf::End()).Add(swf::FrameLabel("after"));
    const swf::Bytes bytes = tags.Data();
    auto buffer = Exact(bytes);
    GParser p;
    p.Init(buffer.get(), static_cast<unsigned>(bytes.size()), buffer.get() + bytes.size());
    const std::pair<const char*, int> cases[] = {{"intro", 0}, {"loop", 2},  {"alias", 2}, {"Intro", -1},
                                                 {"intr", -1}, {"", -1},     {"after", -1}};
    for (const auto& c : cases)
        EXPECT_EQ(p.GetLableFrame(buffer.get(), buffer.get() + bytes.size() - 1, const_cast<char*>(c.first)),
                  c.second)
            << c.first;
    EXPECT_EQ(p.GetLableFrame(buffer.get(), buffer.get() + bytes.size(), nullptr), -1);

    // A label whose text has no terminator and ends the host's buffer is
    // compared as if it ended there.
    const swf::Bytes cut = swf::TagWithLength(swf::kFrameLabel, {'e', 'n', 'd'}, 3);
    auto cutBuffer = Exact(cut);
    GParser q;
    q.Init(cutBuffer.get(), static_cast<unsigned>(cut.size()), cutBuffer.get() + cut.size());
    EXPECT_EQ(q.GetLableFrame(cutBuffer.get(), cutBuffer.get() + cut.size(), const_cast<char*>("end")), 0);
    EXPECT_EQ(q.GetLableFrame(cutBuffer.get(), cutBuffer.get() + cut.size(), const_cast<char*>("endless")), -1);
}

}  // namespace
