// GMatrix: the in-place inversion of the linear part that leaves translations
// alone (products and bounds are pinned through the frames test).
#include "math/GMatrix.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

GMatrix Make(double a, double b, double tx, double c, double d, double ty) {
    GMatrix m;
    const double v[6] = {a, b, tx, c, d, ty};
    std::memcpy(m.m, v, sizeof(v));
    return m;
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
