// GMatrix: the identity shortcuts of the product (exact copies), products in
// the order "this first, then the argument", rectangle bounds, and the
// in-place inversion of the linear part that leaves translations alone.
#include "math/GMatrix.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>

namespace {

GMatrix Make(double a, double b, double tx, double c, double d, double ty) {
    GMatrix m;
    const double v[6] = {a, b, tx, c, d, ty};
    std::memcpy(m.m, v, sizeof(v));
    return m;
}

bool SameBits(const GMatrix& x, const GMatrix& y) { return std::memcmp(x.m, y.m, sizeof(x.m)) == 0; }

void Apply(const GMatrix& m, double x, double y, double& ox, double& oy) {
    ox = m.m[0][0] * x + m.m[0][1] * y + m.m[0][2];
    oy = m.m[1][0] * x + m.m[1][1] * y + m.m[1][2];
}

TEST(GMatrixTest, IdentityNeedsExactValues) {
    EXPECT_EQ(GMatrix().IsIdentify(), 1);
    EXPECT_TRUE(SameBits(GMatrix(), Make(1, 0, 0, 0, 1, 0)));
    EXPECT_EQ(Make(1.0000000001, 0, 0, 0, 1, 0).IsIdentify(), 0);
    EXPECT_EQ(Make(1, 0, 1e-300, 0, 1, 0).IsIdentify(), 0);
    EXPECT_EQ(Make(1, 0, 0, 0, 1, -0.0).IsIdentify(), 1);  // -0 equals 0
}

TEST(GMatrixTest, ProductWithIdentityCopiesBitForBit) {
    // Arithmetic would turn -0 into +0 and spread the NaN.
    const GMatrix m = Make(0.1, -0.0, -0.0, 1e-310, NAN, 3.3);
    const GMatrix id;
    EXPECT_TRUE(SameBits(id * m, m));
    EXPECT_TRUE(SameBits(m * id, m));
    EXPECT_TRUE(SameBits(GMatrix::Combine(nullptr, &m), m));
    EXPECT_TRUE(SameBits(GMatrix::Combine(&m, nullptr), m));
    EXPECT_TRUE(SameBits(GMatrix::Combine(nullptr, nullptr), id));
    GMatrix copy(m);
    GMatrix assigned;
    assigned = m;
    EXPECT_TRUE(SameBits(copy, m));
    EXPECT_TRUE(SameBits(assigned, m));
}

TEST(GMatrixTest, ProductMapsByThisThenArgument) {
    const GMatrix a = Make(2, 0.5, 10, -1, 3, -20);
    const GMatrix b = Make(0, -1, 7, 1, 0, 1.5);
    const GMatrix ab = a * b;
    EXPECT_TRUE(SameBits(GMatrix::Combine(&a, &b), ab));
    for (double x : {-3.0, 0.0, 17.5}) {
        for (double y : {-1.0, 4.0}) {
            double ax, ay, bx, by, rx, ry;
            Apply(a, x, y, ax, ay);
            Apply(b, ax, ay, bx, by);
            Apply(ab, x, y, rx, ry);
            EXPECT_DOUBLE_EQ(rx, bx);
            EXPECT_DOUBLE_EQ(ry, by);
        }
    }
    // A matrix just off the identity goes through the arithmetic.
    const GMatrix near = Make(1.0000000001, 0, 0, 0, 1, 0);
    EXPECT_EQ((near * b).m[1][0], 1.0000000001);
}

TEST(GMatrixTest, ScalarProductScalesTranslationsToo) {
    const GMatrix m = Make(1, 2, 3, 4, 5, 6);
    const GMatrix r = m * 0.5;
    EXPECT_TRUE(SameBits(r, Make(0.5, 1, 1.5, 2, 2.5, 3)));
    const GMatrix z = Make(-0.0, 0, 0, 0, 1, 0);
    EXPECT_TRUE(SameBits(z * 1.0, z));
}

TEST(GMatrixTest, RectTransformGivesNormalisedBoundsExceptUnderTheIdentity) {
    struct Case {
        GMatrix m;
        _GRECT in, out;
    };
    const Case cases[] = {
        {GMatrix(), {10, 20, -5, 0}, {10, 20, -5, 0}},  // the identity keeps even an inverted rect
        {Make(0, -1, 0, 1, 0, 0), {0, 0, 20, 40}, {-40, 0, 0, 20}},
        {Make(1, 0, 5, 0, 1, 0), {10, 20, -5, 0}, {0, 0, 15, 20}},
        {Make(2, 0, 0, 0, -3, 100), {-1, -1, 1, 1}, {-2, 97, 2, 103}},
        {Make(1, 1, 0, 0, 1, 0), {0, 0, 10, 10}, {0, 0, 20, 10}},
    };
    for (const Case& c : cases) {
        const _GRECT r = c.m.Transform(c.in);
        EXPECT_EQ((std::array<double, 4>{r.left, r.top, r.right, r.bottom}),
                  (std::array<double, 4>{c.out.left, c.out.top, c.out.right, c.out.bottom}));
    }
}

TEST(GMatrixTest, CalRMatrixInvertsTheLinearPartAndKeepsTranslations) {
    const double cases[][6] = {
        {1, 2, 9, 3, 4, -9},
        {0, 2, 1, 3, 1, 2},  // a zero first pivot: the columns are swapped
        {0, -1, 0, 1, 0, 0},
        {0.001, 1000, 0, -5, 0.5, 0},
        {-7, 0.25, 100, 0.5, 3, -100},
    };
    for (const auto& c : cases) {
        double inv[6];
        std::memcpy(inv, c, sizeof(inv));
        ASSERT_EQ(CalRMatrix(inv), 1);
        EXPECT_EQ(inv[2], c[2]);
        EXPECT_EQ(inv[5], c[5]);
        // The original linear part times its inverse is the identity.
        const double p00 = c[0] * inv[0] + c[1] * inv[3], p01 = c[0] * inv[1] + c[1] * inv[4];
        const double p10 = c[3] * inv[0] + c[4] * inv[3], p11 = c[3] * inv[1] + c[4] * inv[4];
        EXPECT_NEAR(p00, 1, 1e-12);
        EXPECT_NEAR(p01, 0, 1e-12);
        EXPECT_NEAR(p10, 0, 1e-12);
        EXPECT_NEAR(p11, 1, 1e-12);
    }
    GMatrix m = Make(4, 0, 1, 0, 0.5, 2);
    EXPECT_EQ(m.Reverse(), 1);
    EXPECT_EQ((std::array<double, 6>{m.m[0][0], m.m[0][1], m.m[0][2], m.m[1][0], m.m[1][1], m.m[1][2]}),
              (std::array<double, 6>{0.25, 0, 1, 0, 2, 2}));
    // Singular linear parts are refused.
    double zeroRow[6] = {0, 0, 1, 3, 4, 2};
    EXPECT_EQ(CalRMatrix(zeroRow), 0);
    double dependent[6] = {1, 2, 0, 2, 4, 0};
    EXPECT_EQ(CalRMatrix(dependent), 0);
    GMatrix flat = Make(1, 1, 0, 1, 1, 0);
    EXPECT_EQ(flat.Reverse(), 0);
}

}  // namespace
