// Shape loading: bounds, style arrays and where the records are left, the
// colour alpha per version, the 0xFF count escape, every way a tag is
// rejected, tags cut by the end of the movie, and bounds under a matrix.
#include <gtest/gtest.h>

#include <array>

#include "chars/BShape.h"
#include "chars/GBrush.h"
#include "display/GActor.h"
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

TEST(BShapeLoad, ReadsBoundsAndStylesAndLeavesTheRecordsInTheBuffer) {
    swf::Shape s({swf::Fill::Solid({255, 0, 0, 255}), swf::Fill::Linear(swf::Matrix(), {{0, {}}, {255, {}}})},
                 {swf::Line{30, {0, 0, 255, 255}}});
    s.MoveTo(0, 0).Fill1(1).LineStyle(1).LineTo(200, 0).LineTo(200, 100).LineTo(0, 0);
    swf::Bytes tag = swf::DefineShape(1, swf::Rect{-20, 200, 10, 100, 0}, s, 2);
    DictionaryFixture f({{1, tag}});
    BShape shape;
    ASSERT_EQ(shape.LoadSWFFile(f.Tag(0), &f.dict), 1);
    EXPECT_EQ(shape.shapeCount, 1);
    EXPECT_EQ((std::array<double, 4>{shape.bounds.left, shape.bounds.right, shape.bounds.top, shape.bounds.bottom}),
              (std::array<double, 4>{-20, 200, 10, 100}));
    ASSERT_NE(shape.shape, nullptr);
    EXPECT_EQ(shape.shape->version, 22u);
    EXPECT_EQ(shape.shape->limit, f.Tag(0) + tag.size());
    ASSERT_EQ(shape.shape->brushes.GetCount(), 3);
    EXPECT_EQ(shape.shape->brushes[0], nullptr);
    EXPECT_EQ(static_cast<_GSWFBRUSHHEAD*>(shape.shape->brushes[1])->type, 1);
    EXPECT_EQ(static_cast<_GSWFBRUSHHEAD*>(shape.shape->brushes[2])->type, 2);
    ASSERT_EQ(shape.shape->pens.GetCount(), 2);
    EXPECT_EQ(shape.shape->pens[0].width, 0.0);
    EXPECT_EQ(shape.shape->pens[1].width, 1.5);

    swf::BitWriter records;
    s.WriteRecords(records, false);
    const swf::Bytes& expected = records.Data();
    ASSERT_EQ(shape.shape->recordsLength, expected.size());
    EXPECT_EQ(shape.shape->records, f.Tag(0) + tag.size() - expected.size());
    EXPECT_EQ(swf::Bytes(shape.shape->records, shape.shape->records + expected.size()), expected);
}

TEST(BShapeLoad, SolidAlphaIsKeptOnlyByDefineShape3) {
    for (int version : {1, 2, 3}) {
        DictionaryFixture f({{1, SquareShape(1, {1, 2, 3, 77}, version)}});
        BShape shape;
        ASSERT_EQ(shape.LoadSWFFile(f.Tag(0), &f.dict), 1) << version;
        auto* solid = static_cast<_GSWFSOLIDBRUSH*>(shape.shape->brushes[1]);
        EXPECT_EQ(solid->color.alpha, version == 3 ? 77 : 255) << version;
        EXPECT_EQ(solid->color.green, 2);
    }
}

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

TEST(BShapeBounds, BoundsFollowTheMatrix) {
    DictionaryFixture f({{1, SquareShape(1)}});
    BShape shape;
    ASSERT_EQ(shape.LoadSWFFile(f.Tag(0), &f.dict), 1);
    _GRECT plain = shape.GetBoundingBox(nullptr);
    EXPECT_EQ(plain.right, 200);
    GMatrix m;
    m.m[0][0] = 2;
    m.m[1][2] = 50;
    _GRECT moved = shape.GetBoundingBox(&m);
    EXPECT_EQ((std::array<double, 4>{moved.left, moved.right, moved.top, moved.bottom}),
              (std::array<double, 4>{0, 400, 50, 250}));
}

TEST(BShapeRendering, AnUnloadedShapeDrawsNothing) {
    BShape shape;
    GActor actor;
    actor.character = &shape;
    shape.Rendering(nullptr, &actor, nullptr, nullptr);  // no shape: returns before the stage
    EXPECT_EQ(shape.shape, nullptr);
}
