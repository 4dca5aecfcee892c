// The bit scanner: byte and bit reads, the inclusive end of its range, the
// sticky error flag, and the host-buffer limit that turns every read past
// the real buffer into 0.
#include "parse/GScanner.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

// A heap block of exactly these bytes, so that ASan catches any read of the
// byte after the last one.
std::unique_ptr<unsigned char[]> ExactBuffer(std::vector<unsigned char> bytes) {
    std::unique_ptr<unsigned char[]> p(new unsigned char[bytes.size()]);
    for (size_t i = 0; i < bytes.size(); ++i) p[i] = bytes[i];
    return p;
}

TEST(GScannerTest, ScannerWithoutARangeIsInError) {
    GScanner s;
    EXPECT_EQ(s.error, 1);
    EXPECT_EQ(s.start, nullptr);
    EXPECT_EQ(s.ScanUI8(), 0u);
    EXPECT_EQ(s.GetPosition(), 0);
    EXPECT_EQ(s.Skip(1), -1);
    EXPECT_EQ(s.Init(nullptr, 4), 0);
    EXPECT_EQ(s.error, 1);
}

TEST(GScannerTest, EndIsInclusiveThenReadsFailWithFixedValuesAndStickyFlag) {
    // Five bytes in memory, a range of four: the fifth is the range's end.
    unsigned char bytes[5] = {1, 2, 3, 4, 0x77};
    GScanner s;
    ASSERT_EQ(s.Init(bytes, 4, bytes + 5), 1);
    EXPECT_EQ(s.ScanUI32(), 0x04030201u);
    EXPECT_EQ(s.ScanUI8(), 0x77u);
    EXPECT_EQ(s.error, 0);
    EXPECT_EQ(s.ScanUI8(), 0u);
    EXPECT_EQ(s.error, 1);

    s.Init(bytes, 0, bytes + 2);
    EXPECT_EQ(s.ScanUI16(), 0u);
    EXPECT_EQ(s.error, 1);
    EXPECT_EQ(s.ScanUI32(), 0xFFFFFFFFu);
    EXPECT_EQ(s.ParseUI32(9), 0xFFFFFFFFu);
    EXPECT_EQ(s.ParseSI32(9), -1);
    // The byte at `end` is still readable, but the flag stays set.
    EXPECT_EQ(s.ScanUI8(), 0x01u);
    EXPECT_EQ(s.error, 1);
}

TEST(GScannerTest, BitFieldsAreReadMostSignificantFirstAndBytesDropThePartialByte) {
    unsigned char bytes[2] = {0xB4, 0x42};  // 101 101 00
    GScanner s;
    s.Init(bytes, 2);
    EXPECT_EQ(s.ParseUI32(0), 0u);  // zero-bit reads give 0 without moving
    EXPECT_EQ(s.ParseSI32(0), 0);
    EXPECT_EQ(s.GetPosition(), 0);
    EXPECT_EQ(s.bitPos, 0u);
    EXPECT_EQ(s.ParseUI32(3), 5u);
    EXPECT_EQ(s.GetPosition(), 1);  // a partly read byte counts
    EXPECT_EQ(s.ParseSI32(3), -3);
    EXPECT_EQ(s.ScanUI8(), 0x42u);
    EXPECT_EQ(s.error, 0);
}

TEST(GScannerTest, WideFieldsSpanBytesAndKeepTheirWidth) {
    struct Case {
        std::vector<unsigned char> bytes;
        int skipBits, n;
        uint32_t unsignedValue;
        int32_t signedValue;
    };
    const Case cases[] = {
        {{0x80, 0, 0, 1}, 0, 32, 0x80000001u, static_cast<int32_t>(0x80000001u)},
        {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, 1, 32, 0xFFFFFFFFu, -1},
        {{0x7F, 0xFF, 0xFF, 0xFE}, 1, 31, 0x7FFFFFFEu, -2},
        {{0x40, 0, 0, 0}, 1, 31, 0x40000000u, static_cast<int32_t>(0xC0000000u)},
        {{0x3F, 0xFF, 0xFF, 0xFF}, 2, 30, 0x3FFFFFFFu, -1},
        {{0x01, 0x80}, 7, 2, 3u, -1},
        {{0xAB, 0xCD, 0xEF, 0x12, 0x34}, 4, 32, 0xBCDEF123u, static_cast<int32_t>(0xBCDEF123u)},
    };
    for (const Case& c : cases) {
        for (int asSigned = 0; asSigned < 2; ++asSigned) {
            GScanner s;
            s.Init(c.bytes.data(), static_cast<unsigned>(c.bytes.size() - 1), c.bytes.data() + c.bytes.size());
            s.ParseUI32(c.skipBits);
            if (asSigned)
                EXPECT_EQ(s.ParseSI32(c.n), c.signedValue) << c.n;
            else
                EXPECT_EQ(s.ParseUI32(c.n), c.unsignedValue) << c.n;
            EXPECT_EQ(s.error, 0);
        }
    }
}

TEST(GScannerTest, BitReadPastTheRangeConsumesNothing) {
    unsigned char bytes[2] = {0xF0, 0x0F};
    GScanner s;
    s.Init(bytes, 1);
    s.ParseUI32(4);
    EXPECT_EQ(s.ParseUI32(13), 0xFFFFFFFFu);
    EXPECT_EQ(s.error, 1);
    EXPECT_EQ(s.cur, bytes);
    EXPECT_EQ(s.bitPos, 4u);
}

TEST(GScannerTest, SkipMeasuresFromCurAndMayStopAtEnd) {
    unsigned char bytes[8] = {};
    GScanner s;
    s.Init(bytes, 4, bytes + 8);
    EXPECT_EQ(s.Skip(5), 0);
    EXPECT_EQ(s.error, 1);
    EXPECT_EQ(s.cur, bytes);

    s.Init(bytes, 4, bytes + 8);
    EXPECT_EQ(s.Skip(4), 4);
    EXPECT_EQ(s.cur, bytes + 4);
    EXPECT_EQ(s.error, 0);

    // From a partial byte the skip starts at the next byte but is checked
    // from the current one, so the count is cut at `end`.
    s.Init(bytes, 4, bytes + 8);
    s.ParseUI32(1);
    EXPECT_EQ(s.Skip(4), 3);
    EXPECT_EQ(s.cur, bytes + 4);
    EXPECT_EQ(s.bitPos, 0u);
}

TEST(GScannerTest, ScanBlockCopiesAtMostUpToEnd) {
    unsigned char bytes[4] = {1, 2, 3, 4};
    char out[8] = {};
    GScanner s;
    s.Init(bytes, 3, bytes + 4);
    s.ScanUI8();
    EXPECT_EQ(s.ScanBlock(out, 10), 2);
    EXPECT_EQ(out[0], 2);
    EXPECT_EQ(out[1], 3);
    EXPECT_EQ(s.error, 0);
    EXPECT_EQ(s.ScanBlock(nullptr, 1), -1);
    EXPECT_EQ(s.error, 1);
}

TEST(GScannerTest, ScanStringWithAndWithoutTerminator) {
    unsigned char text[6] = {'a', 'b', 0, 'c', 'd', 'e'};
    unsigned char out[8] = {};
    GScanner s;
    s.Init(text, 5, text + 6);
    EXPECT_EQ(s.ScanString(out), 3u);
    EXPECT_STREQ(reinterpret_cast<char*>(out), "ab");
    // No terminator before the range ends: the bytes through `end` are taken.
    unsigned char rest[8] = {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55};
    EXPECT_EQ(s.ScanString(rest), 3u);
    EXPECT_EQ(rest[2], 'e');
    EXPECT_EQ(rest[3], 0x55);
    EXPECT_EQ(s.ScanString(nullptr), 0u);
    EXPECT_EQ(s.error, 1);
}

TEST(GScannerTest, AlignMovesToTheNextByteOnlyInsideTheRange) {
    unsigned char bytes[2] = {0, 0};
    GScanner s;
    s.Init(bytes, 1);
    s.ParseUI32(3);
    EXPECT_EQ(s.Align(), 1);
    EXPECT_EQ(s.cur, bytes + 1);
    EXPECT_EQ(s.Align(), 1);
    s.ParseUI32(2);
    s.cur = bytes + 2;  // past `end` with a partial byte pending
    EXPECT_EQ(s.Align(), 0);
    EXPECT_EQ(s.error, 1);
}

TEST(GScannerTest, CopyStartsAtTheNextWholeByte) {
    unsigned char bytes[3] = {0xFF, 0x12, 0x34};
    GScanner s;
    s.Init(bytes, 3);
    s.ParseUI32(2);
    s.error = 1;
    GScanner copy(s);
    EXPECT_EQ(copy.start, bytes + 1);
    EXPECT_EQ(copy.error, 0);
    EXPECT_EQ(copy.GetPosition(), 0);
    EXPECT_EQ(copy.ScanUI16(), 0x3412u);
}

// The range's inclusive end may lie just past the host's buffer; every read
// of that byte gives 0 instead of touching memory the host does not own.
TEST(GScannerTest, ByteAtEndOfExactHeapBufferReadsAsZero) {
    auto buffer = ExactBuffer({0x11, 0x22, 0x33, 0x44});
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

    auto text = ExactBuffer({'x', 'y'});
    unsigned char copy[4] = {9, 9, 9, 9};
    s.Init(text.get(), 2);
    EXPECT_EQ(s.ScanString(copy), 3u);
    EXPECT_EQ(copy[2], 0);
}

}  // namespace
