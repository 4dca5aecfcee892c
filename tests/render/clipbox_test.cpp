// The dirty-rectangle set: snapping with its asymmetric margin, merging of
// touching boxes into the first one met, and the cases that leave it alone.
#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "render/GClipBox.h"

namespace {

TEST(ClipBox, InsertedAreasSnapAndMergeIntoTheFirstBoxMet) {
    struct Case {
        const char* what;
        std::vector<GRect> inserted, expected;
    };
    const Case cases[] = {
        {"one pixel before, two after", {{0, 0, 20, 20}}, {{-20, -20, 60, 60}}},
        // trunc(-1.5) = -1 and trunc(-1.25) = -1: left -40, right (-1 + 2) * 20.
        {"negative edges snap toward zero", {{-30, -30, -25, -25}}, {{-40, -40, 20, 20}}},
        {"distant areas stay apart", {{0, 0, 10, 10}, {200, 200, 210, 210}}, {{-20, -20, 40, 40}, {180, 180, 240, 240}}},
        {"sharing only an edge merges", {{0, 0, 10, 10}, {60, 0, 70, 10}}, {{-20, -20, 100, 40}}},
        {"a covered area changes nothing", {{0, 0, 400, 400}, {100, 100, 120, 120}}, {{-20, -20, 440, 440}}},
        {"the grown box absorbs all it touches and stays in place",
         {{0, 0, 10, 10}, {1000, 0, 1010, 10}, {200, 0, 210, 10}, {30, 0, 190, 10}},
         {{-20, -20, 240, 40}, {980, -20, 1040, 40}}},
        // The last box touches the second first; that absorbs the third, and
        // the result reaches the first, which the pass had already passed.
        {"absorbing restarts", {{0, 0, 10, 10}, {400, 0, 410, 10}, {40, 400, 410, 410}, {400, 60, 410, 370}},
         {{-20, -20, 440, 440}}},
        {"empty areas are ignored", {{10, 0, 10, 100}, {0, 50, 100, 40}}, {}},
    };
    for (const Case& c : cases) {
        GClipBox set;
        for (const GRect& r : c.inserted) set.InsertClipBox(r);
        ASSERT_EQ(set.boxes.count, static_cast<int>(c.expected.size())) << c.what;
        for (size_t i = 0; i < c.expected.size(); ++i) {
            const GRect& b = set.boxes[static_cast<int>(i)];
            const GRect& e = c.expected[i];
            EXPECT_TRUE(b.left == e.left && b.top == e.top && b.right == e.right && b.bottom == e.bottom)
                << c.what << ": box " << i << " is " << b.left << " " << b.top << " " << b.right << " " << b.bottom;
        }
    }
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
    EXPECT_EQ(set.boxes[0].left, (INT32_MIN - 1.0) * 20);
    EXPECT_EQ(set.boxes[0].right, (INT32_MAX + 2.0) * 20);
}

}  // namespace
