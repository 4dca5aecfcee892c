// The dirty-rectangle set: snapping with its asymmetric margin, merging of
// touching boxes into the first one met, and the cases that leave it alone.
#include <gtest/gtest.h>

#include <vector>

#include "render/GClipBox.h"

namespace {

void ExpectBoxes(const GClipBox& set, const std::vector<GRect>& expected) {
    ASSERT_EQ(set.boxes.count, static_cast<int>(expected.size()));
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(set.boxes[static_cast<int>(i)].left, expected[i].left) << i;
        EXPECT_EQ(set.boxes[static_cast<int>(i)].top, expected[i].top) << i;
        EXPECT_EQ(set.boxes[static_cast<int>(i)].right, expected[i].right) << i;
        EXPECT_EQ(set.boxes[static_cast<int>(i)].bottom, expected[i].bottom) << i;
    }
}

TEST(ClipBox, SnapsOnePixelBeforeAndTwoAfter) {
    GClipBox set;
    set.InsertClipBox({0, 0, 20, 20});
    ExpectBoxes(set, {{-20, -20, 60, 60}});
}

TEST(ClipBox, NegativeEdgesSnapTowardZeroBeforeTheMargin) {
    GClipBox set;
    set.InsertClipBox({-30, -30, -25, -25});
    // trunc(-1.5) = -1 and trunc(-1.25) = -1: left -40, right (-1 + 2) * 20.
    ExpectBoxes(set, {{-40, -40, 20, 20}});
}

TEST(ClipBox, DistantAreasStaySeparate) {
    GClipBox set;
    set.InsertClipBox({0, 0, 10, 10});
    set.InsertClipBox({200, 200, 210, 210});
    ExpectBoxes(set, {{-20, -20, 40, 40}, {180, 180, 240, 240}});
}

TEST(ClipBox, BoxesSharingOnlyAnEdgeMerge) {
    GClipBox set;
    set.InsertClipBox({0, 0, 10, 10});
    set.InsertClipBox({60, 0, 70, 10});  // snaps to (40, -20, 100, 40)
    ExpectBoxes(set, {{-20, -20, 100, 40}});
}

TEST(ClipBox, CoveredAreaChangesNothing) {
    GClipBox set;
    set.InsertClipBox({0, 0, 400, 400});
    set.InsertClipBox({100, 100, 120, 120});
    ExpectBoxes(set, {{-20, -20, 440, 440}});
}

TEST(ClipBox, GrownBoxAbsorbsEveryBoxItTouchesAndStaysInPlace) {
    GClipBox set;
    set.InsertClipBox({0, 0, 10, 10});        // A: (-20, -20, 40, 40)
    set.InsertClipBox({1000, 0, 1010, 10});   // B: far away, untouched
    set.InsertClipBox({200, 0, 210, 10});     // C: (180, -20, 240, 40)
    set.InsertClipBox({30, 0, 190, 10});      // touches A and C
    ExpectBoxes(set, {{-20, -20, 240, 40}, {980, -20, 1040, 40}});
}

TEST(ClipBox, AbsorbingRestartsWhenTheGrownBoxReachesEarlierBoxes) {
    GClipBox set;
    set.InsertClipBox({0, 0, 10, 10});       // P: (-20, -20, 40, 40)
    set.InsertClipBox({400, 0, 410, 10});    // R: (380, -20, 440, 40)
    set.InsertClipBox({40, 400, 410, 410});  // T: (20, 380, 440, 440)
    ASSERT_EQ(set.boxes.count, 3);
    // Touches R first; R then absorbs T, and the result reaches P, which
    // the pass had already looked at.
    set.InsertClipBox({400, 60, 410, 370});
    ExpectBoxes(set, {{-20, -20, 440, 440}});
}

TEST(ClipBox, EmptyAreasAreIgnored) {
    GClipBox set;
    set.InsertClipBox({10, 0, 10, 100});
    set.InsertClipBox({0, 50, 100, 40});
    EXPECT_EQ(set.boxes.count, 0);
}

TEST(ClipBox, CreateEmptiesTheSetAndDefaultsTheSize) {
    GClipBox set;
    set.InsertClipBox({0, 0, 20, 20});
    set.Create(0, -5);
    EXPECT_EQ(set.boxes.count, 0);
    EXPECT_EQ(set.width, 2048);
    EXPECT_EQ(set.height, 1024);
    set.Create(320, 240);
    EXPECT_EQ(set.width, 320);
    EXPECT_EQ(set.height, 240);
}

TEST(ClipBox, IsContainChecksStoredBoxes) {
    GClipBox set;
    EXPECT_EQ(set.IsContain({0, 0, 0, 0}), 0);
    set.InsertClipBox({0, 0, 20, 20});
    EXPECT_EQ(set.IsContain({0, 0, 0, 0}), 1);
    EXPECT_EQ(set.IsContain({-20, -20, 60, 60}), 1);
    EXPECT_EQ(set.IsContain({-20, -20, 61, 60}), 0);
}

TEST(ClipBox, HugeCoordinatesSaturateInsteadOfOverflowing) {
    GClipBox set;
    set.InsertClipBox({-1e300, -1e300, 1e300, 1e300});
    ASSERT_EQ(set.boxes.count, 1);
    EXPECT_LT(set.boxes[0].left, 0);
    EXPECT_GT(set.boxes[0].right, 0);
}

}  // namespace
