// The bit scanner's host-buffer limit: every read past the real buffer gives
// 0 (the scanner's reads themselves are pinned by the frames test).
#include "parse/GScanner.h"

#include <gtest/gtest.h>

#include "ParserTestUtil.h"

namespace {

// The range's inclusive end may lie just past the host's buffer; every read
// of that byte gives 0 instead of touching memory the host does not own.
TEST(GScannerTest, ByteAtEndOfExactHeapBufferReadsAsZero) {
    auto buffer = parsetest::Exact({0x11, 0x22, 0x33, 0x44});
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

    auto text = parsetest::Exact({'x', 'y'});
    unsigned char copy[4] = {9, 9, 9, 9};
    s.Init(text.get(), 2);
    EXPECT_EQ(s.ScanString(copy), 3u);
    EXPECT_EQ(copy[2], 0);
}

}  // namespace
