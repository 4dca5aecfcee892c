// Shape loading of tags whose declared length runs past the end of the movie:
// read up to the movie's end, never beyond (refused shapes are in the corpus).
#include <gtest/gtest.h>

#include "chars/BShape.h"
#include "display/DictionaryFixture.h"

namespace {

// A 10 x 10 pixel square shape (200 twips).
swf::Bytes SquareShape(uint16_t id) {
    swf::Shape s({swf::Fill::Solid({255, 0, 0, 255})}, {});
    s.MoveTo(0, 0).Fill1(1).LineTo(200, 0).LineTo(200, 200).LineTo(0, 200).LineTo(0, 0);
    return swf::DefineShape(id, swf::Rect{0, 200, 0, 200, 0}, s, 1);
}

}  // namespace

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
