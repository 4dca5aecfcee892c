// Hostile and truncated input for the record parser: every reader on every
// prefix of a valid record fails cleanly with its own code, and tags whose
// declared length runs past the host's buffer read zeros, never beyond it.
#include "parse/GParser.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// A parser over exactly these bytes, with its own error stack.
struct Fed {
    std::unique_ptr<unsigned char[]> buffer;
    GParser p;
    GError e;
    explicit Fed(const swf::Bytes& bytes) : buffer(Exact(bytes)) { Over(p, buffer.get(), bytes.size()); }
};

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
        {"pens", bytes([](swf::BitWriter& w) { swf::WriteLineStyles(w, std::vector<swf::Line>(3), true); }),
         kErrPenArray,
         [](GParser& p, GError& e) {
             GDataArray<_GSWFPEN> pens;
             return p.ScanPenArray(pens, 1, &e, 0);
         }},
    };
}

TEST(HostileRecordTest, EveryPrefixOfEveryRecordFailsWithItsCode) {
    for (const Reader& r : Readers()) {
        Fed whole(r.record);
        ASSERT_EQ(r.read(whole.p, whole.e), 1) << r.name;
        ASSERT_EQ(whole.p.error, 0) << r.name;
        for (size_t n = 1; n < r.record.size(); ++n) {
            Fed o(swf::Bytes(r.record.begin(), r.record.begin() + static_cast<std::ptrdiff_t>(n)));
            EXPECT_EQ(r.read(o.p, o.e), 0) << r.name << " cut at " << n;
            EXPECT_EQ(o.p.error, 1) << r.name << " cut at " << n;
            EXPECT_EQ(Popped(o.e), r.code) << r.name << " cut at " << n;
            EXPECT_EQ(o.e.GetErrorNum(), 0u);
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
        Fed o(bytes);
        const int result = r.read(o.p, o.e);
        EXPECT_EQ(result == 0, o.p.error == 1) << r.name << " round " << round;
        EXPECT_EQ(Popped(o.e), result ? 0u : r.code) << r.name << " round " << round;
    }
}

// The first n bytes of a placement tag (all by default) in a buffer of
// exactly that size, read by the reader its code selects.
struct Placement {
    std::unique_ptr<unsigned char[]> buffer;
    GParser p;
    GError e;
    GCTRL_INFO info = {};
    int result = -1;  // no placement code
    explicit Placement(const swf::Bytes& tag, size_t n = SIZE_MAX) : buffer(Exact(tag, n)) {
        unsigned total = 0;
        const unsigned code = p.InitTagHead(buffer.get(), &total, buffer.get() + std::min(n, tag.size()));
        if (code == swf::kPlaceObject2) result = p.LoadCtrlPlace2(total, &info, &e);
        if (code == swf::kPlaceObject) result = p.LoadCtrlPlace(total, &info, &e);
    }
    ~Placement() { Release(info); }
};

TEST(HostilePlacementTest, BufferEndingInsideTheTagReadsZeros) {
    swf::Place2 p2;
    p2.characterId = 3;
    p2.matrix = swf::Matrix::Translate(-9999, 9999);
    p2.name = "long-name";
    p2.clipDepth = 2;
    for (const swf::Bytes& tag : {swf::PlaceObject2(p2), swf::PlaceObject(1, 1, *p2.matrix, swf::Cxform{})})
        for (size_t n = 0; n <= tag.size(); ++n) Placement r(tag, n);  // the sanitizer checks the reads
}

TEST(HostilePlacementTest, RandomPlacementBodies) {
    std::mt19937 random(99);
    for (int round = 0; round < 3000; ++round) {
        swf::Bytes body(random() % 40);
        for (auto& b : body) b = static_cast<uint8_t>(random());
        const bool second = round % 2;
        Placement r(swf::TagWithLength(second ? swf::kPlaceObject2 : swf::kPlaceObject, body,
                                       static_cast<uint32_t>(random() % 48)));
        EXPECT_EQ(Popped(r.e), r.result ? 0u : (second ? kErrPlaceObject2 : kErrPlaceObject)) << round;
        EXPECT_EQ(r.result ? r.p.error : 0, 0) << round;
    }
}

}  // namespace
