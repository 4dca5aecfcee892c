// GArray: linear growth by a fixed step, the growth-step defaults, and what
// RemoveAll does with the elements under each destroy policy.
#include "base/GArray.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(GArrayTest, CapacityGrowsLinearlyByTheStepWhichDefaultsToTen) {
    struct Case {
        int requested, step;
    };
    for (const Case c : {Case{0, 10}, Case{-5, 10}, Case{1, 1}, Case{3, 3}, Case{10, 10}}) {
        GDataArray<int> a(c.requested);
        EXPECT_EQ(a.growBy, c.step) << c.requested;
        EXPECT_EQ(a.capacity, 0);
        EXPECT_EQ(a.data, nullptr);
        std::vector<int> capacities;
        for (int i = 0; i < 2 * c.step + 1; ++i) {
            ASSERT_EQ(a.Add(i * 11), 1);
            capacities.push_back(a.capacity);
        }
        for (int i = 0; i < 2 * c.step + 1; ++i) {
            EXPECT_EQ(a[i], i * 11);
            EXPECT_EQ(capacities[static_cast<size_t>(i)], (i / c.step + 1) * c.step) << c.requested << " " << i;
        }
        EXPECT_EQ(a.GetCount(), 2 * c.step + 1);
    }
}

TEST(GArrayTest, PointPoolFreesBlocksAndSkipsNulls) {
    GPointPoolArray<void> empty;
    empty.RemoveAll();
    EXPECT_EQ(empty.count, 0);
    EXPECT_EQ(empty.capacity, 0);
    EXPECT_EQ(empty.data, nullptr);
    GPointPoolArray<void> a(2);
    ASSERT_EQ(a.Add(nullptr), 1);
    ASSERT_EQ(a.Add(tovMalloc(16)), 1);
    ASSERT_EQ(a.Add(nullptr), 1);
    ASSERT_EQ(a.Add(tovMalloc(1)), 1);
    a.RemoveAll();  // a leak or a free(null) mistake shows up under ASan
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(a.capacity, 0);
    EXPECT_EQ(a.data, nullptr);
    // The array is usable again after RemoveAll.
    ASSERT_EQ(a.Add(nullptr), 1);
    EXPECT_EQ(a.capacity, 2);
}

struct Counted {
    static int alive;
    Counted() { ++alive; }
    ~Counted() { --alive; }
};
int Counted::alive = 0;

TEST(GArrayTest, ObjectPointersAreDeletedOnlyUnderTheObjectPolicy) {
    {
        GPointObjectArray<Counted> a;
        a.Add(new Counted);
        a.Add(nullptr);
        a.Add(new Counted);
        EXPECT_EQ(Counted::alive, 2);
        a.RemoveAll();
        EXPECT_EQ(Counted::alive, 0);
        a.Add(new Counted);
    }
    // The destructor applies the policy too.
    EXPECT_EQ(Counted::alive, 0);
    Counted kept;  // the data policy leaves pointed objects alone
    {
        GDataArray<Counted*> a;
        a.Add(&kept);
        a.RemoveAll();
    }
    EXPECT_EQ(Counted::alive, 1);
}

TEST(GArrayTest, RemoveAtShiftsLaterElementsDown) {
    GDataArray<int> a;
    for (int i = 0; i < 4; ++i) a.Add(i);
    a.RemoveAt(1);
    a.RemoveAt(7);
    a.RemoveAt(-1);
    ASSERT_EQ(a.GetCount(), 3);
    EXPECT_EQ(a[0], 0);
    EXPECT_EQ(a[1], 2);
    EXPECT_EQ(a[2], 3);
}

}  // namespace
