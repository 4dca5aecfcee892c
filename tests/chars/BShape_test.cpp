// Shape loading: every way a tag is rejected, and tags whose declared length
// runs past the end of the movie (read up to the movie's end, never beyond).
#include <gtest/gtest.h>

#include "chars/BShape.h"
#include "display/DictionaryFixture.h"
#include "parse/GParser.h"

namespace {

// The body of a shape tag up to the style arrays, built by hand.
swf::BitWriter ShapeHead(uint16_t id, const swf::Rect& bounds) {
    swf::BitWriter w;
    w.UI16(id);
    swf::WriteRect(w, bounds);
    return w;
}

}  // namespace

TEST(BShapeLoad, RejectedShapesKeepNothingAndPushOnlyReaderCodes) {
    swf::Shape s({swf::Fill::Solid({})}, {});
    s.MoveTo(0, 0).Fill1(1).LineTo(20, 20);
    swf::BitWriter stylesThenNothing = ShapeHead(1, swf::Rect{0, 100, 0, 100, 0});
    stylesThenNothing.UI8(1).UI8(0x00).UI8(1).UI8(2).UI8(3).UI8(0);  // one solid fill, no lines, no records
    swf::BitWriter cutPens = ShapeHead(1, swf::Rect{0, 100, 0, 100, 0});
    cutPens.UI8(0).UI8(5).UI16(20).UI8(1);  // five line styles announced, the movie ends
    swf::BitWriter cutBounds;
    cutBounds.UI16(1).UB(31, 5);  // 31-bit fields that the movie does not hold
    struct Case {
        const char* what;
        swf::Bytes tag;
        unsigned error;
    };
    const Case cases[] = {
        // Empty or inverted bounds are refused without an error of their own.
        {"zero width", swf::DefineShape(1, {0, 0, 0, 200, 0}, s, 1), 0},
        {"zero height", swf::DefineShape(1, {0, 200, 50, 50, 0}, s, 1), 0},
        {"inverted", swf::DefineShape(1, {300, 200, 0, 200, 0}, s, 1), 0},
        {"ends after the line styles", swf::Tag(2, stylesThenNothing.Data()), 0},
        {"line styles cut", swf::Tag(2, cutPens.Data()), kErrPenArray},
        {"bounds cut", swf::Tag(2, cutBounds.Data()), kErrRect},
    };
    for (const Case& c : cases) {
        DictionaryFixture f({{1, c.tag}});
        BShape shape;
        EXPECT_EQ(shape.LoadSWFFile(f.Tag(0), &f.dict), 0) << c.what;
        EXPECT_EQ(shape.shape, nullptr) << c.what;
        EXPECT_EQ(shape.shapeCount, 0) << c.what;
        EXPECT_EQ(f.LastError(), c.error) << c.what;
    }
}

TEST(BShapeLoad, ATagLongerThanTheMovieIsReadOnlyUpToTheMoviesEnd) {
    swf::Bytes full = SquareShape(1);
    swf::Bytes body(full.begin() + 2, full.end());
    for (size_t cut = 3; cut <= body.size(); ++cut) {
        // The header still declares the whole body, and a long length on top.
        swf::Bytes tag = swf::TagWithLength(2, swf::Bytes(body.begin(), body.begin() + cut), 100000, true);
        DictionaryFixture f({{1, tag}});
        BShape shape;
        if (shape.LoadSWFFile(f.Tag(0), &f.dict)) {
            EXPECT_EQ(shape.shape->limit, f.Tag(0) + tag.size());
            EXPECT_EQ(shape.shape->recordsLength + (shape.shape->records - f.Tag(0)), 100006u);
        }
    }
}
