// GError: a stack of one slot (the newest code replaces the older one), and
// its registration table with the kept asymmetry for codes below its length.
#include "base/GError.h"

#include <gtest/gtest.h>

namespace {

TEST(GErrorTest, NewestCodeReplacesTheOnlySlot) {
    GError e;
    unsigned code = 1234;
    char* text = nullptr;
    EXPECT_EQ(e.PopError(code), 0);  // a fresh stack leaves the code alone
    EXPECT_EQ(e.PopError(code, text), 0);
    EXPECT_EQ(code, 1234u);
    for (unsigned c = 0x2000; c <= 0x2010; ++c) {
        EXPECT_EQ(e.PushError(c), 1);
        EXPECT_EQ(e.GetErrorNum(), 1u);
    }
    EXPECT_EQ(e.capacity, 1u);
    EXPECT_EQ(e.PopError(code), 1);
    EXPECT_EQ(code, 0x2010u);
    EXPECT_EQ(e.PopError(code), 0);
    EXPECT_EQ(code, 0x2010u);
}

TEST(GErrorTest, StringOverloadsForwardAndIgnoreText) {
    GError e;
    EXPECT_EQ(e.PushError(0x200B, nullptr, nullptr, nullptr), 1);
    unsigned code = 0;
    char marker = 'm';
    char* text = &marker;
    EXPECT_EQ(e.PopError(code, text), 1);
    EXPECT_EQ(code, 0x200Bu);
    EXPECT_EQ(text, &marker);
}

TEST(GErrorTest, ClearKeepsStorage) {
    GError e;
    EXPECT_EQ(e.Create(), 1);
    e.PushError(5);
    uint32_t* slots = e.slots;
    e.ClearError();
    EXPECT_EQ(e.GetErrorNum(), 0u);
    unsigned code = 0;
    EXPECT_EQ(e.PopError(code), 0);
    e.PushError(6);
    EXPECT_EQ(e.slots, slots);
    EXPECT_EQ(e.PopError(code), 1);
    EXPECT_EQ(code, 6u);
}

TEST(GErrorTest, RegistErrorBelowTableLengthIsNeverAdded) {
    GError e;
    EXPECT_EQ(e.RegistError(5), 1);
    EXPECT_EQ(e.registeredCount, 6u);
    // 3 lies inside the table but was not marked when it grew: it stays out.
    EXPECT_EQ(e.RegistError(3), 0);
    EXPECT_EQ(e.registered[3], 0);
    EXPECT_EQ(e.RegistError(5), 1);
    EXPECT_EQ(e.RegistError(9), 1);
    EXPECT_EQ(e.registeredCount, 10u);
    EXPECT_EQ(e.registered[5], 1);
    EXPECT_EQ(e.registered[7], 0);
    EXPECT_EQ(e.RegistError(0), 0);
    GError fresh;
    EXPECT_EQ(fresh.RegistError(0xFFFFFFFFu), 0);  // the largest code cannot size a table
    EXPECT_EQ(fresh.registeredCount, 0u);
}

}  // namespace
