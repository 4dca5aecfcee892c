// Bytes per pixel of each buffer format, as hosts size their buffers.
#include <gtest/gtest.h>

#include "render/GStage.h"

TEST(GStage, BytesPerPixelFollowTheFormat) {
    const int cases[][2] = {{280, 4}, {24, 3}, {271, 3}, {272, 3}, {16, 2}, {15, 2}, {12, 2}, {268, 2}, {32, 0}};
    for (const auto& c : cases) {
        _GOFFSCR off{};
        off.format = c[0];
        EXPECT_EQ(GetCBPixel(&off), c[1]) << c[0];
    }
    EXPECT_EQ(GetCBPixel(nullptr), 0);
}
