// Hostile and truncated input for the record parser: every reader on every
// prefix of a valid record fails cleanly with its own code, and tags whose
// declared length runs past the host's buffer read zeros, never beyond it.
#include "parse/GParser.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "ParserTestUtil.h"

namespace {

using parsetest::Exact;
using parsetest::Over;
using parsetest::Popped;
using parsetest::Release;

struct Reader {
    std::string name;
    swf::Bytes record;
    unsigned code;
    std::function<int(GParser&, GError&)> read;
};

std::vector<Reader> Readers() {
    auto bytes = [](const std::function<void(swf::BitWriter&)>& write) {
        swf::BitWriter w;
        write(w);
        return w.Data();
    };
    swf::Matrix full = swf::Matrix::Scale(1.25, -3.5, -123456, 654321);
    full.rotate = std::make_pair(0.125, -0.5);
    swf::Cxform cx;
    cx.mult = std::array<int16_t, 4>{100, -200, 300, -400};
    cx.add = std::array<int16_t, 4>{-1000, 2000, -3000, 4000};
    return {
        {"rect", bytes([](swf::BitWriter& w) { swf::WriteRect(w, {-5000, 90000, 7, -70000, 0}); }), kErrRect,
         [](GParser& p, GError& e) {
             _GRECT r;
             return p.ScanSWFRect(r, &e);
         }},
        {"matrix", bytes([&](swf::BitWriter& w) { swf::WriteMatrix(w, full); }), kErrMatrix,
         [](GParser& p, GError& e) {
             GMatrix m;
             return p.ScanSWFMatrix(&m, &e);
         }},
        {"cxform", bytes([&](swf::BitWriter& w) { swf::WriteCxform(w, cx, false); }), kErrCxform,
         [](GParser& p, GError& e) {
             GCxform c;
             return p.ScanColorMatrix(c, 0, &e);
         }},
        {"cxform alpha", bytes([&](swf::BitWriter& w) { swf::WriteCxform(w, cx, true); }), kErrCxform,
         [](GParser& p, GError& e) {
             GCxform c;
             return p.ScanColorMatrix(c, 1, &e);
         }},
        {"rgb", bytes([](swf::BitWriter& w) { swf::WriteColor(w, {1, 2, 3, 4}, false); }), kErrColor,
         [](GParser& p, GError& e) {
             _GRGBA c;
             return p.ScanRGBAColor(c, 0, &e);
         }},
        {"rgba", bytes([](swf::BitWriter& w) { swf::WriteColor(w, {1, 2, 3, 4}, true); }), kErrColor,
         [](GParser& p, GError& e) {
             _GRGBA c;
             return p.ScanRGBAColor(c, 1, &e);
         }},
        {"gradient", swf::Bytes{128, 1, 2, 3, 4}, kErrGradient,
         [](GParser& p, GError& e) {
             _GGRADIENT g;
             return p.ScanGradient(g, 1, &e);
         }},
        {"point", bytes([](swf::BitWriter& w) { w.UB(20, 5).SB(-300000, 20).SB(300000, 20); }), kErrTwipPoint,
         [](GParser& p, GError& e) {
             _TWIPPOINT t;
             return p.ScanTwipPoint(t, &e);
         }},
        {"pens", bytes([](swf::BitWriter& w) { swf::WriteLineStyles(w, std::vector<swf::Line>(3), true, true); }),
         kErrPenArray,
         [](GParser& p, GError& e) {
             GDataArray<_GSWFPEN> pens;
             return p.ScanPenArray(pens, 1, &e, 0);
         }},
    };
}

TEST(HostileRecordTest, EveryPrefixOfEveryRecordFailsWithItsCode) {
    for (const Reader& r : Readers()) {
        {
            auto whole = Exact(r.record);
            GParser p;
            GError e;
            Over(p, whole.get(), r.record.size());
            ASSERT_EQ(r.read(p, e), 1) << r.name;
            ASSERT_EQ(p.error, 0) << r.name;
        }
        for (size_t n = 1; n < r.record.size(); ++n) {
            auto prefix = Exact(r.record, n);
            GParser p;
            GError e;
            Over(p, prefix.get(), n);
            EXPECT_EQ(r.read(p, e), 0) << r.name << " cut at " << n;
            EXPECT_EQ(p.error, 1) << r.name << " cut at " << n;
            EXPECT_EQ(Popped(e), r.code) << r.name << " cut at " << n;
            EXPECT_EQ(e.GetErrorNum(), 0u);
        }
    }
}

TEST(HostileRecordTest, RandomBytesFailOnlyWithTheirCode) {
    // Any bytes: a reader either succeeds without touching the flag and the
    // stack, or fails with the flag set and exactly its code left.
    std::mt19937 random(1234);
    const std::vector<Reader> readers = Readers();
    for (int round = 0; round < 3000; ++round) {
        swf::Bytes bytes(1 + random() % 24);
        for (auto& b : bytes) b = static_cast<uint8_t>(random());
        const Reader& r = readers[static_cast<size_t>(round) % readers.size()];
        auto buffer = Exact(bytes);
        GParser p;
        GError e;
        Over(p, buffer.get(), bytes.size());
        const int result = r.read(p, e);
        EXPECT_EQ(result == 0, p.error == 1) << r.name << " round " << round;
        EXPECT_EQ(Popped(e), result ? 0u : r.code) << r.name << " round " << round;
    }
}

TEST(HostileRecordTest, ReadersAfterAnEarlierOverrunAllFail) {
    const swf::Bytes nothing = {0};
    for (const Reader& r : Readers()) {
        auto buffer = Exact(nothing);
        GParser p;
        GError e;
        Over(p, buffer.get(), 1);
        p.ScanUI16();
        EXPECT_EQ(r.read(p, e), 0) << r.name;
        EXPECT_EQ(Popped(e), r.code) << r.name;
    }
}

TEST(HostileRecordTest, GradientPushesColourThenGradientCode) {
    const swf::Bytes record = {7, 1};
    auto buffer = Exact(record);
    GParser p;
    GError e;
    Over(p, buffer.get(), record.size());
    _GGRADIENT g = {};
    EXPECT_EQ(p.ScanGradient(g, 0, &e), 0);
    EXPECT_EQ(g.ratio, 7u);  // stored whatever follows
    // One slot: the outer code is the one left.
    EXPECT_EQ(Popped(e), kErrGradient);
}

TEST(HostileRecordTest, TwipPointFieldsAreWrittenEvenOnFailure) {
    swf::BitWriter w;
    w.UB(7, 5).SB(-3, 7);
    const swf::Bytes record = w.Data();
    auto buffer = Exact(record);
    GParser p;
    GError e;
    Over(p, buffer.get(), record.size());
    _TWIPPOINT t = {9, 9};
    EXPECT_EQ(p.ScanTwipPoint(t, &e), 0);
    EXPECT_EQ(t.x, -3);
    EXPECT_EQ(t.y, -1);
}

TEST(HostileRecordTest, FailedRecordsLeaveTheirOutputsUntouched) {
    const swf::Bytes record = {0xFF};
    auto buffer = Exact(record);
    GParser p;
    GError e;
    Over(p, buffer.get(), 1);
    _GRECT r = {1, 2, 3, 4};
    EXPECT_EQ(p.ScanSWFRect(r, &e), 0);
    EXPECT_EQ(r.left, 1);
    EXPECT_EQ(r.bottom, 4);
    GCxform c;
    c.redAdd = 77;
    EXPECT_EQ(p.ScanColorMatrix(c, 1, &e), 0);
    EXPECT_EQ(c.redAdd, 77);
    _GRGBA col = {5, 6, 7, 8};
    EXPECT_EQ(p.ScanRGBAColor(col, 1, &e), 0);
    EXPECT_EQ(col.red, 5);
}

TEST(HostileRecordTest, PenArrayCountFailureAndEscapedCount) {
    const swf::Bytes record = {0xFF, 0x2C};  // escape, then half of a UI16
    auto buffer = Exact(record);
    GParser p;
    GError e;
    Over(p, buffer.get(), record.size());
    GDataArray<_GSWFPEN> pens;
    EXPECT_EQ(p.ScanPenArray(pens, 0, &e, 0), 0);
    EXPECT_EQ(Popped(e), kErrPenArray);
    EXPECT_EQ(pens.GetCount(), 1);  // the placeholder only
}

// A placement tag whose declared length cuts its record: the reader fails
// with its code and leaves what it allocated for the caller to release.
TEST(HostilePlacementTest, DeclaredLengthCutsEveryPrefix) {
    swf::Matrix m = swf::Matrix::Scale(0.5, 2.0, 1000, -1000);
    m.rotate = std::make_pair(0.25, 0.25);
    swf::Cxform cx;
    cx.mult = std::array<int16_t, 4>{1, 2, 3, 4};
    cx.add = std::array<int16_t, 4>{-1, -2, -3, -4};
    swf::Place2 p2;
    p2.move = true;
    p2.characterId = 3;
    p2.matrix = m;
    p2.cxform = cx;
    p2.ratio = 4;
    p2.clipDepth = 5;
    p2.name = "abc";
    struct Case {
        swf::Bytes tag;
        unsigned code;
        bool second;
    };
    const Case cases[] = {
        {swf::PlaceObject(1, 2, m, cx), kErrPlaceObject, false},
        {swf::PlaceObject2(p2), kErrPlaceObject2, true},
    };
    swf::BitWriter matrixOnly;
    swf::WriteMatrix(matrixOnly, m);
    const size_t matrixEnd = 4 + matrixOnly.Size();
    for (const Case& c : cases) {
        const swf::Bytes body(c.tag.begin() + 2, c.tag.end());
        // The byte at the range's end is still read, so the readable body is
        // one byte longer than the declared length.
        for (size_t n = 0; n + 1 < body.size(); ++n) {
            const swf::Bytes tag = swf::TagWithLength(c.second ? swf::kPlaceObject2 : swf::kPlaceObject, body,
                                                      static_cast<uint32_t>(n));
            auto buffer = Exact(tag);
            GParser p;
            GError e;
            unsigned total = 0;
            p.InitTagHead(buffer.get(), &total, buffer.get() + tag.size());
            GCTRL_INFO info = {};
            const int result = c.second ? p.LoadCtrlPlace2(total, &info, &e) : p.LoadCtrlPlace(total, &info, &e);
            if (!c.second && (n + 1 == matrixEnd || n == matrixEnd)) {
                // Cut right after the matrix: no colour transform, still placed.
                EXPECT_EQ(result, 1) << n;
                EXPECT_EQ(info.cxform, nullptr) << n;
            } else if (c.second && n + 3 >= body.size()) {
                // Cut inside the final name: an unterminated name loses its
                // last readable byte and the placement still succeeds.
                EXPECT_EQ(result, 3) << n;
                ASSERT_NE(info.name, nullptr);
                EXPECT_LT(std::string(info.name).size(), 2u) << n;
            } else {
                EXPECT_EQ(result, 0) << n;
                EXPECT_EQ(Popped(e), c.code) << n;
            }
            Release(info);
        }
    }
}

TEST(HostilePlacementTest, BufferEndingInsideTheTagReadsZeros) {
    swf::Place2 p2;
    p2.characterId = 3;
    p2.matrix = swf::Matrix::Translate(-9999, 9999);
    p2.name = "long-name";
    p2.clipDepth = 2;
    const swf::Bytes tags[] = {swf::PlaceObject2(p2), swf::PlaceObject(1, 1, *p2.matrix, swf::Cxform{})};
    for (const swf::Bytes& tag : tags) {
        for (size_t n = 0; n <= tag.size(); ++n) {
            auto buffer = Exact(tag, n);
            GParser p;
            GError e;
            unsigned total = 0;
            const unsigned code = p.InitTagHead(buffer.get(), &total, buffer.get() + n);
            GCTRL_INFO info = {};
            if (code == swf::kPlaceObject2) p.LoadCtrlPlace2(total, &info, &e);
            if (code == swf::kPlaceObject) p.LoadCtrlPlace(total, &info, &e);
            Release(info);
        }
    }
}

TEST(HostilePlacementTest, RandomPlacementBodies) {
    std::mt19937 random(99);
    for (int round = 0; round < 3000; ++round) {
        swf::Bytes body(random() % 40);
        for (auto& b : body) b = static_cast<uint8_t>(random());
        const bool second = round % 2;
        const swf::Bytes tag = swf::TagWithLength(second ? swf::kPlaceObject2 : swf::kPlaceObject, body,
                                                  static_cast<uint32_t>(random() % 48));
        auto buffer = Exact(tag);
        GParser p;
        GError e;
        unsigned total = 0;
        p.InitTagHead(buffer.get(), &total, buffer.get() + tag.size());
        GCTRL_INFO info = {};
        const int result = second ? p.LoadCtrlPlace2(total, &info, &e) : p.LoadCtrlPlace(total, &info, &e);
        EXPECT_EQ(Popped(e), result ? 0u : (second ? kErrPlaceObject2 : kErrPlaceObject)) << round;
        if (result) {
            EXPECT_EQ(p.error, 0) << round;
        }
        Release(info);
    }
}

TEST(HostilePlacementTest, PlaceObject2WithoutMoveOrCharacterIsRejected) {
    swf::Place2 p2;
    p2.matrix = swf::Matrix::Translate(1, 1);
    const swf::Bytes tag = swf::PlaceObject2(p2);
    auto buffer = Exact(tag);
    GParser p;
    GError e;
    unsigned total = 0;
    p.InitTagHead(buffer.get(), &total, buffer.get() + tag.size());
    GCTRL_INFO info = {};
    EXPECT_EQ(p.LoadCtrlPlace2(total, &info, &e), 0);
    EXPECT_EQ(Popped(e), kErrPlaceObject2);
    EXPECT_NE(info.matrix, nullptr);  // left for the caller
    Release(info);
}

TEST(HostilePlacementTest, MatrixFailureInsidePlaceObject2LeavesTheOuterCode) {
    // Flags: character and matrix; the matrix claims 31-bit fields that the
    // tag does not hold.
    const swf::Bytes body = {0x06, 1, 0, 2, 0, 0x80 | (31 << 2)};
    const swf::Bytes tag = swf::Tag(swf::kPlaceObject2, body);
    auto buffer = Exact(tag);
    GParser p;
    GError e;
    unsigned total = 0;
    p.InitTagHead(buffer.get(), &total, buffer.get() + tag.size());
    GCTRL_INFO info = {};
    EXPECT_EQ(p.LoadCtrlPlace2(total, &info, &e), 0);
    EXPECT_EQ(Popped(e), kErrPlaceObject2);
    EXPECT_EQ(Popped(e), 0u);
    Release(info);
}

TEST(HostileLabelTest, TagStreamsThatRunOutGiveMinusOne) {
    swf::Tags tags;
    tags.Add(swf::ShowFrame()).Add(swf::TagWithLength(swf::kFrameLabel, {'a', 0}, 500));
    const swf::Bytes bytes = tags.Data();
    for (size_t n = 1; n <= bytes.size(); ++n) {
        auto buffer = Exact(bytes, n);
        GParser p;
        p.Init(buffer.get(), static_cast<unsigned>(n), buffer.get() + n);
        const int frame = p.GetLableFrame(buffer.get(), buffer.get() + n - 1, const_cast<char*>("a"));
        // The label is found only when its text lies inside the range.
        EXPECT_EQ(frame, n >= 9 ? 1 : -1) << n;
    }
}

}  // namespace
