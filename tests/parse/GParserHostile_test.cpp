// Hostile input for the placement readers: random bodies fail only with their
// own code, and tags whose declared length runs past the host's buffer read
// zeros, never beyond it (the sanitizer build checks the reads).
#include "parse/GParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "ParserTestUtil.h"

namespace {

using parsetest::Exact;
using parsetest::Popped;
using parsetest::Release;

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
