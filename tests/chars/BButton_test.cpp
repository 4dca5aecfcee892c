// The record mask of each button state (up, over, down, hit test).
#include <gtest/gtest.h>

#include "chars/BButton.h"

TEST(BButton, EachStateSelectsItsRecords) {
    const unsigned char masks[] = {0x01, 0x02, 0x04, 0x08, 0x01};
    for (int state = 0; state < 5; ++state) {
        BButton b;
        b.state = state;
        EXPECT_EQ(b.GetSWFButtonState(), masks[state]) << state;
    }
}
