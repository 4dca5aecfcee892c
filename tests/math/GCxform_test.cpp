// GCxform: the clamped per-colour transform (arithmetic shift), products that
// truncate toward zero and wrap at 16 bits, and the in-place product with
// its deliberate channel mix-up.
#include "math/GCxform.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

GCxform Make(int16_t am, int16_t aa, int16_t rm, int16_t ra, int16_t gm, int16_t ga, int16_t bm, int16_t ba) {
    GCxform c;
    c.alphaMult = am, c.alphaAdd = aa, c.redMult = rm, c.redAdd = ra;
    c.greenMult = gm, c.greenAdd = ga, c.blueMult = bm, c.blueAdd = ba;
    return c;
}

bool Same(const GCxform& x, const GCxform& y) { return std::memcmp(&x, &y, sizeof(GCxform)) == 0; }

TEST(GCxformTest, DefaultIsIdentityAndAnyTermBreaksIt) {
    EXPECT_EQ(GCxform().IsIdentify(), 1);
    for (int i = 0; i < 8; ++i) {
        GCxform c;
        int16_t* terms = &c.alphaMult;
        terms[i] += 1;
        EXPECT_EQ(c.IsIdentify(), 0) << i;
    }
}

TEST(GCxformTest, TransformClampsEachChannel) {
    struct Case {
        GCxform cx;
        _GRGBA in;
        _GRGBA out;
    };
    const Case cases[] = {
        {Make(256, 0, 512, 0, 256, 0, 256, 0), {200, 1, 2, 3}, {255, 1, 2, 3}},
        {Make(256, 0, 256, -300, 256, 0, 256, 0), {200, 1, 2, 3}, {0, 1, 2, 3}},
        // (1 * -1) >> 8 is -1: the shift rounds toward minus infinity.
        {Make(256, 0, -1, 0, 256, 0, 256, 0), {1, 1, 2, 3}, {0, 1, 2, 3}},
        {Make(256, 0, -128, 3, 256, 0, 256, 0), {3, 0, 0, 0}, {1, 0, 0, 0}},
        {Make(128, 10, 256, 0, 0, 77, 256, 300), {9, 200, 100, 255}, {9, 77, 255, 137}},
    };
    for (const Case& c : cases) {
        const _GRGBA r = c.cx.Transform(c.in);
        EXPECT_EQ((std::array<int, 4>{r.red, r.green, r.blue, r.alpha}),
                  (std::array<int, 4>{c.out.red, c.out.green, c.out.blue, c.out.alpha}));
    }
}

TEST(GCxformTest, ProductAppliesThisThenArgumentTruncatingAndWrapping) {
    const GCxform half = Make(128, 0, 128, 0, 128, 0, 128, 0);
    const GCxform a = Make(128, 10, 256, -3, 256, 0, 256, 1);
    const GCxform r = a * half;
    EXPECT_EQ(r.alphaMult, 64);
    EXPECT_EQ(r.alphaAdd, 5);
    EXPECT_EQ(r.redAdd, -1);  // -1.5 truncated, where a shift would give -2
    EXPECT_EQ(r.blueAdd, 0);
    EXPECT_EQ(r.greenMult, 128);
    EXPECT_TRUE(Same(GCxform::Combine(&a, &half), r));
    EXPECT_TRUE(Same(GCxform::Combine(&a, nullptr), a));
    EXPECT_TRUE(Same(GCxform::Combine(nullptr, &a), a));
    EXPECT_TRUE(Same(GCxform::Combine(nullptr, nullptr), GCxform()));

    const GCxform add = Make(256, 0, 256, 50, 256, 0, 256, 0);
    const GCxform twice = Make(256, 0, 512, 0, 256, 0, 256, 0);
    EXPECT_EQ((add * twice).redAdd, 100);
    EXPECT_EQ((twice * add).redAdd, 50);
    const GCxform big = Make(32767, 0, 256, 0, 256, 0, 256, 0);
    EXPECT_EQ((big * big).alphaMult, -256);  // the product wraps at 16 bits
}

TEST(GCxformTest, InPlaceProductMixesBlueWithGreenAddend) {
    GCxform t = Make(200, 10, 300, -20, 128, 40, 256, 5);
    const GCxform b = Make(128, 6, 256, 8, 512, 16, 64, 32);
    t *= b;
    // green first: mult 512*128/256 = 256, add 16*256/256 + 40 = 56.
    EXPECT_EQ(t.greenMult, 256);
    EXPECT_EQ(t.greenAdd, 56);
    EXPECT_EQ(t.alphaMult, 100);
    EXPECT_EQ(t.alphaAdd, 6 * 100 / 256 + 10);
    EXPECT_EQ(t.redMult, 300);
    EXPECT_EQ(t.redAdd, 8 * 300 / 256 - 20);
    // Blue reads the new green addend instead of its own multiplier.
    EXPECT_EQ(t.blueMult, 64 * 56 / 256);
    EXPECT_EQ(t.blueAdd, 32 * 56 / 256 + 5);
}

}  // namespace
