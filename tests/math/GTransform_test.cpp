// The view transform: fit-inside zoom (32-bit products, ties to the height),
// quarter-turn matrices and the point helpers around them, and the
// whole-degree sine table.
#include "math/GTransform.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(GTransformTest, ToRightAngleReducesModulo360) {
    struct Case {
        int degrees;
        unsigned orientation;
    };
    const Case cases[] = {{0, 0},   {90, 1},  {180, 2},          {270, 3},          {-90, 3},
                          {450, 1}, {-360, 0}, {45, 0xFFFFFFFFu}, {359, 0xFFFFFFFFu}, {INT_MIN, 0xFFFFFFFFu}};
    for (const Case& c : cases) EXPECT_EQ(GTransform::ToRightAngle(c.degrees), c.orientation) << c.degrees;
}

TEST(GTransformTest, ZoomScaleFitsInsideTheView) {
    struct Case {
        int movieW, movieH, viewW, viewH;
        unsigned orientation;
        double scale;
    };
    const Case cases[] = {
        {550, 400, 1100, 800, 0, 2.0},
        {550, 400, 1100, 800, 2, 2.0},
        // Quarter turns swap the movie's sides: 800 x 400 > 550 x 1100 is false.
        {550, 400, 1100, 800, 1, 800.0 / 550},
        {550, 400, 1100, 800, 3, 800.0 / 550},
        {100, 10, 50, 50, 0, 0.5},
        {10, 100, 50, 50, 0, 0.5},
        {3, 7, 9, 21, 0, 21.0 / 7},  // a tie takes the height's ratio
        {65536, 1, 1, 65536, 0, 65536.0},  // 65536 x 65536 wraps to 0: the height is picked
        {550, 400, 0, 800, 0, 0.0},  // any empty side gives 0
        {550, 400, 800, 0, 0, 0.0},
        {0, 400, 800, 600, 0, 0.0},
        {550, 0, 800, 600, 0, 0.0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(GTransform::GetZoomScale(c.movieW, c.movieH, c.viewW, c.viewH, c.orientation), c.scale)
            << c.movieW << "x" << c.movieH << " in " << c.viewW << "x" << c.viewH << " turn " << c.orientation;
}

TEST(GTransformTest, SrcPointUndoesTheTransform) {
    const _GPOINT origin = {100, 50};
    for (unsigned o = 0; o < 4; ++o) {
        const GMatrix m = GTransform::GetTransForm(4.0, o, origin);
        const double x = 12, y = -7;
        const _GPOINT device = {m.m[0][0] * x + m.m[0][1] * y + m.m[0][2], m.m[1][0] * x + m.m[1][1] * y + m.m[1][2]};
        const _GPOINT src = GTransform::GetSrcPoint(4.0, o, origin, device);
        EXPECT_EQ(src.x, x) << o;
        EXPECT_EQ(src.y, y) << o;
    }
    const _GPOINT none = GTransform::GetSrcPoint(4.0, 9, origin, {1, 2});
    EXPECT_EQ(none.x, 0);
    EXPECT_EQ(none.y, 0);
}

TEST(GTransformTest, OffsetBringsTheTurnedPointOntoTheTarget) {
    const _GPOINT point = {8, 3}, target = {-20, 45};
    for (unsigned o = 0; o < 4; ++o) {
        const GMatrix m = GTransform::GetTransForm(1.5, o, {0, 0});
        const _GPOINT off = GTransform::GetOffset(1.5, o, point, target);
        EXPECT_EQ(m.m[0][0] * point.x + m.m[0][1] * point.y + off.x, target.x) << o;
        EXPECT_EQ(m.m[1][0] * point.x + m.m[1][1] * point.y + off.y, target.y) << o;
    }
    const _GPOINT bad = GTransform::GetOffset(1.5, 7, point, target);
    EXPECT_EQ(bad.x, target.x);
    EXPECT_EQ(bad.y, target.y);
}

TEST(GAngleFunctionTest, SinAndCosOverTheWholeCircle) {
    const GAngleFunction f;
    struct Case {
        double degrees, sin, cos;
    };
    const Case cases[] = {
        {0, 0, 32768},          {30, 16383, 28377},   {30.9, 16383, 28377}, {90, 32768, 0},
        {91, 32763, -571},
        {120, 28377, -16383},   {180, 0, -32768},     {181, -571, -32763},  {270, -32768, 0},
        {300, -28377, 16383},   {-30, -16383, 28377}, {-60, -28377, 16383}, {390, 16383, 28377},
        {-30.9, -16383, 28377}, {1e300, 0, 32768},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(f.Sin(c.degrees), c.sin) << c.degrees;
        EXPECT_EQ(f.Cos(c.degrees), c.cos) << c.degrees;
    }
}

}  // namespace
