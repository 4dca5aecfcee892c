// The fill-style array reader: its placeholder entry, the 0xFF count escape
// and the null dictionary guard (the fill records themselves are read by
// GBrush and tested with it).
#include <gtest/gtest.h>

#include "ParserTestUtil.h"
#include "chars/GBrush.h"
#include "display/GDictionary.h"

namespace {

using parsetest::Exact;
using parsetest::Over;

class BrushArrayTest : public ::testing::Test {
protected:
    GParser& Parse(const std::vector<swf::Fill>& fills, bool alpha, bool extended = false) {
        swf::BitWriter w;
        swf::WriteFillStyles(w, fills, alpha, extended);
        w.UI8(0x5A);  // a marker after the array
        bytes_ = w.Data();
        buffer_ = Exact(bytes_);
        Over(parser_, buffer_.get(), bytes_.size());
        return parser_;
    }
    void SetUp() override { dict_.error = &errors_; }

    GError errors_;
    GDictionary dict_;
    GParser parser_;
    swf::Bytes bytes_;
    std::unique_ptr<unsigned char[]> buffer_;
};

TEST_F(BrushArrayTest, NullDictionaryReadsNothing) {
    GParser& p = Parse({swf::Fill::Solid({1, 2, 3, 4})}, false);
    GPointPoolArray<void> brushes;
    EXPECT_EQ(p.ScanBrushArray(brushes, nullptr, 0, 0), 0);
    EXPECT_EQ(brushes.GetCount(), 0);
    EXPECT_EQ(p.GetPosition(), 0);
}

TEST_F(BrushArrayTest, EmptyArrayGetsANullPlaceholderFirst) {
    GParser& p = Parse({swf::Fill::Solid({1, 2, 3, 4}), swf::Fill::Bitmap(9, swf::Matrix::Translate(5, 5))}, true);
    GPointPoolArray<void> brushes;
    ASSERT_EQ(p.ScanBrushArray(brushes, &dict_, 1, 1), 1);
    ASSERT_EQ(brushes.GetCount(), 3);
    EXPECT_EQ(brushes[0], nullptr);
    ASSERT_NE(brushes[1], nullptr);
    EXPECT_EQ(static_cast<_GSWFSOLIDBRUSH*>(brushes[1])->color.alpha, 4);
    EXPECT_EQ(brushes[2], nullptr);  // bitmap fills are stored as null
    EXPECT_EQ(p.ScanUI8(), 0x5Au);
}

TEST_F(BrushArrayTest, EscapedCountReadsThreeHundredStyles) {
    GParser& p = Parse(std::vector<swf::Fill>(300, swf::Fill::Solid({7, 7, 7, 255})), false);
    EXPECT_EQ(bytes_[0], 0xFF);
    GPointPoolArray<void> brushes;
    ASSERT_EQ(p.ScanBrushArray(brushes, &dict_, 0, 0), 1);
    EXPECT_EQ(brushes.GetCount(), 301);
    EXPECT_NE(brushes[300], nullptr);
    EXPECT_EQ(p.ScanUI8(), 0x5Au);
}

TEST_F(BrushArrayTest, ZeroCountAndNonEmptyArray) {
    GParser& p = Parse({}, false, true);
    GPointPoolArray<void> brushes;
    brushes.Add(nullptr);
    brushes.Add(nullptr);
    ASSERT_EQ(p.ScanBrushArray(brushes, &dict_, 0, 0), 1);
    EXPECT_EQ(brushes.GetCount(), 2);
    EXPECT_EQ(p.ScanUI8(), 0x5Au);
}

TEST_F(BrushArrayTest, CutInputStopsAtTheFirstOverrun) {
    // A cut count fails with only the placeholder. 200 solid styles
    // announced with one present: the rest are not read from nothing, the
    // array keeps what was read and the flag is set.
    struct Case {
        swf::Bytes bytes;
        int result, maxCount;
    };
    for (const Case& c : {Case{{0xFF, 0x01}, 0, 1}, Case{{200, 0, 1, 2, 3}, 1, 3}}) {
        auto buffer = Exact(c.bytes);
        GParser p;
        Over(p, buffer.get(), c.bytes.size());
        GPointPoolArray<void> brushes;
        EXPECT_EQ(p.ScanBrushArray(brushes, &dict_, 0, 0), c.result);
        EXPECT_EQ(p.error, 1);
        EXPECT_LE(brushes.GetCount(), c.maxCount);
        EXPECT_GE(brushes.GetCount(), 1);
    }
}

}  // namespace
