// formats_test.cpp: the byte layout of every pixel format (that every format
// shows the ARGB picture within its precision is a property of the engine's
// tests).
#include "tov_fixture.h"

#include <gtest/gtest.h>

using namespace tovtest;

namespace {

// Cleared pixels hold the nearest level of each channel in the documented
// layout: pure red and a colour between levels (red 196 lies just past the
// middle of two 4-bit levels), per format.
TEST(TovFormats, ClearedPixelsHaveTheDocumentedLayout)
{
    struct Layout {
        int code, bytes;
        uint8_t red[4], mixed[4];
    };
    const Layout layouts[] = {
        {24, 3, {0xff, 0, 0, 0}, {196, 100, 37, 0}},      {272, 3, {0, 0, 0xff, 0}, {37, 100, 196, 0}},
        {271, 3, {0, 0, 0xff, 0}, {37, 100, 196, 0}},     {16, 2, {0x00, 0xf8, 0, 0}, {0x24, 0xc3, 0, 0}},
        {15, 2, {0x00, 0x7c, 0, 0}, {0x84, 0x61, 0, 0}},  {12, 2, {0x00, 0x0f, 0, 0}, {0x62, 0x0c, 0, 0}},
        {268, 2, {0x1f, 0x00, 0, 0}, {0x38, 0x23, 0, 0}}, {280, 4, {0, 0, 0xff, 0xff}, {0x13, 0x32, 0x62, 0x80}},
    };
    for (const Layout &l : layouts) {
        Surface s(2, 1, l.code, l.bytes);
        Canvas c(s);
        tovColor red{255, 0, 0, 255}, mixed{196, 100, 37, uint8_t(l.code == 280 ? 128 : 255)};
        tovClear(c, &red);
        EXPECT_EQ(0, std::memcmp(s.at(1, 0), l.red, size_t(l.bytes))) << l.code;
        tovClear(c, &mixed); // premultiplied where there is alpha
        EXPECT_EQ(0, std::memcmp(s.at(1, 0), l.mixed, size_t(l.bytes))) << l.code;
    }
}

} // namespace
