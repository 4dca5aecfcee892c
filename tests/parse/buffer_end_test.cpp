// Reads that reach the end of the host's buffer: the scanner's range may end
// on the byte just past it, and a tag's declared length may run past it;
// those reads give 0 and never touch memory beyond the buffer (the sanitizer
// build checks that). Random placement bodies fail only with their reader's
// own code.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "fixture/SwfBuilder.h"
#include "parse/GParser.h"
#include "parse/GScanner.h"

namespace {

// A heap copy of the first n bytes of `bytes` (all of them by default), so
// that the sanitizer sees any read past them.
std::unique_ptr<unsigned char[]> Exact(const swf::Bytes& bytes, size_t n = SIZE_MAX) {
    n = std::min(n, bytes.size());
    std::unique_ptr<unsigned char[]> p(new unsigned char[n]);
    if (n) std::memcpy(p.get(), bytes.data(), n);
    return p;
}

// The range's inclusive end may lie just past the host's buffer; every read
// of that byte gives 0 instead of touching memory the host does not own.
TEST(GScannerTest, ByteAtEndOfExactHeapBufferReadsAsZero) {
    auto buffer = Exact({0x11, 0x22, 0x33, 0x44});
    GScanner s;
    s.Init(buffer.get(), 4);
    EXPECT_EQ(s.ScanUI32(), 0x44332211u);
    EXPECT_EQ(s.ScanUI8(), 0u);
    EXPECT_EQ(s.error, 0);

    s.Init(buffer.get(), 4);
    s.Skip(3);
    EXPECT_EQ(s.ScanUI16(), 0x44u);
    EXPECT_EQ(s.error, 0);

    s.Init(buffer.get(), 4);
    s.Skip(3);
    EXPECT_EQ(s.ParseUI32(16), 0x4400u);

    s.Init(buffer.get(), 4);
    s.Skip(2);
    char out[4] = {9, 9, 9, 9};
    EXPECT_EQ(s.ScanBlock(out, 4), 2);

    auto text = Exact({'x', 'y'});
    unsigned char copy[4] = {9, 9, 9, 9};
    s.Init(text.get(), 2);
    EXPECT_EQ(s.ScanString(copy), 3u);
    EXPECT_EQ(copy[2], 0);
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
    ~Placement() {
        delete info.matrix;
        delete info.cxform;
        GParser::ReleaseReadString(&info.name);
    }
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
        unsigned code = 0;
        if (!r.e.PopError(code)) code = 0;
        EXPECT_EQ(code, r.result ? 0u : (second ? kErrPlaceObject2 : kErrPlaceObject)) << round;
        EXPECT_EQ(r.result ? r.p.error : 0, 0) << round;
    }
}

}  // namespace
