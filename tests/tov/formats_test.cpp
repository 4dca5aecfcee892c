// formats_test.cpp: every pixel format shows the same picture as ARGB32
// within its precision, and byte layouts are as documented.
#include "tov_fixture.h"
#include "fixture/PixelFormats.h"

#include <gtest/gtest.h>

using namespace tovtest;

namespace {

using pixels::Format;
using pixels::kFormats;

// A scene of opaque and translucent fills, a gradient and a stroke over an
// opaque background.
void drawScene(tovCanvas *c)
{
    tovColor bg{30, 60, 90, 255};
    tovClear(c, &bg);
    fillRect(c, solid(c, 250, 10, 128), 3.5, 2.25, 20.75, 14);
    fillCircle(c, solid(c, 0, 255, 40, 140), 22, 12, 9.3);
    tovGradientStop stops[2] = {{0, {255, 255, 0, 255}}, {255, {0, 0, 255, 200}}};
    double m[2][3] = {{0.02, 0, 16}, {0, 0.02, 24}};
    fillRect(c, tovCreateGradientBrush(c, 2, 2, stops, 1, 16, 24, m, nullptr), 0, 18, 32, 30);
    strokePolyline(c, 2.5, tovColor{255, 255, 255, 180}, {{1, 29}, {16, 4}, {31, 29}});
}

TEST(TovFormats, EveryFormatShowsTheArgbPictureWithinItsPrecision)
{
    Surface ref(32, 32);
    {
        Canvas c(ref);
        drawScene(c);
    }
    for (const Format &f : kFormats) {
        Surface s(32, 32, f.code, f.bytes);
        {
            Canvas c(s);
            ASSERT_NE(static_cast<tovCanvas *>(c), nullptr) << f.code;
            drawScene(c);
        }
        EXPECT_TRUE(s.guardsIntact()) << f.code;
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x) {
                int want[3], got[3];
                pixels::Decode(280, ref.at(x, y), want);
                pixels::Decode(f.code, s.at(x, y), got);
                for (int k = 0; k < 3; ++k) {
                    ASSERT_NEAR(got[k], want[k], pixels::Tolerance(f, k))
                        << "format " << f.code << " at " << x << "," << y << " channel " << k;
                }
            }
    }
}

// Cleared pixels hold the nearest level of each channel in the documented
// layout: pure red and a colour between levels, per format.
TEST(TovFormats, ClearedPixelsHaveTheDocumentedLayout)
{
    struct Layout {
        int code, bytes;
        uint8_t red[4], mixed[4];
    };
    const Layout layouts[] = {
        {24, 3, {0xff, 0, 0, 0}, {200, 100, 37, 0}},      {272, 3, {0, 0, 0xff, 0}, {37, 100, 200, 0}},
        {271, 3, {0, 0, 0xff, 0}, {37, 100, 200, 0}},     {16, 2, {0x00, 0xf8, 0, 0}, {0x24, 0xc3, 0, 0}},
        {15, 2, {0x00, 0x7c, 0, 0}, {0x84, 0x61, 0, 0}},  {12, 2, {0x00, 0x0f, 0, 0}, {0x62, 0x0c, 0, 0}},
        {268, 2, {0x1f, 0x00, 0, 0}, {0x38, 0x23, 0, 0}}, {280, 4, {0, 0, 0xff, 0xff}, {0x13, 0x32, 0x64, 0x80}},
    };
    for (const Layout &l : layouts) {
        Surface s(2, 1, l.code, l.bytes);
        Canvas c(s);
        tovColor red{255, 0, 0, 255}, mixed{200, 100, 37, uint8_t(l.code == 280 ? 128 : 255)};
        tovClear(c, &red);
        EXPECT_EQ(0, std::memcmp(s.at(1, 0), l.red, size_t(l.bytes))) << l.code;
        tovClear(c, &mixed); // premultiplied where there is alpha
        EXPECT_EQ(0, std::memcmp(s.at(1, 0), l.mixed, size_t(l.bytes))) << l.code;
    }
}

} // namespace
