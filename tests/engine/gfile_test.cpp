// The movie object from inside: the tag table, the frame delay arithmetic,
// the rounding of inverted frame rectangles, the view matrices that Forward
// and SetOrg build, and placement records that nobody takes over.
#include <gtest/gtest.h>

#include <cmath>

#include "display/GActor.h"
#include "engine/GFile.h"
#include "fixture/SwfBuilder.h"

namespace {

swf::Bytes OneFrame(const swf::Rect& frame = swf::Rect{0, 2000, 0, 1000, 0}, swf::Tags tags = {}) {
    swf::Movie m;
    m.frame = frame;
    m.tags = tags;
    m.tags.Add(swf::ShowFrame());
    return m.Build();
}

TEST(GFile, EveryObjectCarriesItsOwnCopyOfTheTagTable) {
    const swf::Bytes movie = OneFrame();
    GFile a(movie.data(), static_cast<unsigned>(movie.size()));
    GFile b(movie.data(), static_cast<unsigned>(movie.size()));
    for (int code = 0; code < kTagHandlerCount; ++code) EXPECT_EQ(a.tagHandlers[code], b.tagHandlers[code]) << code;
    // Definitions share one handler, as do the tags it skips.
    for (int code : {22, 32, 7, 34, 10, 48, 11, 33, 37, 39, 46}) EXPECT_EQ(a.tagHandlers[code], a.tagHandlers[2]) << code;
    for (int code : {0, 1, 3, 6, 8, 12, 13, 14, 20, 21, 47}) EXPECT_EQ(a.tagHandlers[code], a.tagHandlers[3]) << code;
    for (int code : {4, 5, 9, 26, 28}) EXPECT_NE(a.tagHandlers[code], a.tagHandlers[3]) << code;
}

TEST(GFile, FrameDelayIsMillisecondsPerFrameTruncated) {
    const swf::Bytes movie = OneFrame();
    GFile f(movie.data(), static_cast<unsigned>(movie.size()));
    struct {
        int rate, delay;
    } cases[] = {{0, 100}, {0x0C00, 83}, {0x1E00, 33}, {0x0080, 2000}, {1, 256000}, {0xFFFF, 3}};
    for (auto c : cases) {
        f.SetFrameDelay(c.rate);
        EXPECT_EQ(f.frameDelay, c.delay) << c.rate;
    }
}

TEST(GFile, InvertedFrameRectanglesRoundAwayFromZero) {
    // -30 px wide: GetInt(3) answers -30 and Forward sizes the view from -31.
    const swf::Bytes movie = OneFrame(swf::Rect{600, 0, 0, 400, 0});
    GFile f(movie.data(), static_cast<unsigned>(movie.size()));
    ASSERT_EQ(f.Reset(1), 1);
    EXPECT_EQ(f.GetInt(3), -30);
    f.Forward(0, 310, 100, 1);
    // GetZoomScale(-31, 20, 310, 100): -31 * 100 > 20 * 310 is false, so 100 / 20.
    EXPECT_EQ(f.stage.width, static_cast<int>(std::floor(-31 * 5.0 + 0.5)));
    EXPECT_EQ(f.stage.height, 100);
}

TEST(GFile, ForwardBuildsTheViewFromZoomOrientationAndOrigin) {
    const swf::Bytes movie = OneFrame();  // 100 x 50 px
    GFile f(movie.data(), static_cast<unsigned>(movie.size()));
    ASSERT_EQ(f.Reset(1), 1);
    f.SetOrg(7, 9);
    f.FlipCanvas(1);
    f.Forward(0, 100, 200, 3);
    // Turned: 50 x 100 fits 100 x 200 at zoom 2; the multiplier scales the matrix only.
    EXPECT_EQ(f.stage.width, 100);
    EXPECT_EQ(f.stage.height, 200);
    const GMatrix& m = *f.stage.baseMatrix;
    EXPECT_EQ(m.m[0][0], 0.0);
    EXPECT_EQ(m.m[0][1], 6.0);
    EXPECT_EQ(m.m[1][0], -6.0);
    EXPECT_EQ(m.m[1][1], 0.0);
    EXPECT_EQ(m.m[0][2], 140.0);
    EXPECT_EQ(m.m[1][2], 180.0);
    const double user[6] = {2, 0, 1, 0, 2, 0};
    GMatrix u;
    for (int i = 0; i < 6; ++i) u.m[i / 3][i % 3] = user[i];
    f.stage.SetTransform(&u);
    EXPECT_EQ(f.stage.userMatrix.m[0][2], 20.0);  // pixels to twips
    EXPECT_EQ(f.stage.viewMatrix.m[0][1], 12.0);
    EXPECT_EQ(f.stage.viewMatrix.m[0][2], 300.0);
    f.stage.SetTransform(nullptr);
    EXPECT_TRUE(f.stage.userMatrix.IsIdentify());
    EXPECT_EQ(f.stage.viewMatrix.m[0][1], 6.0);
}

TEST(GFile, UpdateBoxesAreTwipsDividedByTwenty) {
    const swf::Bytes movie = OneFrame();
    GFile f(movie.data(), static_cast<unsigned>(movie.size()));
    f.stage.clipBoxes.InsertClipBox({0, 0, 20, 20});
    int count = 0;
    const _GRECT* boxes = f.stage.GetUpdateBoxes(count, 0);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(boxes[0].left, -1);
    EXPECT_EQ(boxes[0].top, -1);
    EXPECT_EQ(boxes[0].right, 3);
    EXPECT_EQ(boxes[0].bottom, 3);
    f.stage.width = 550;
    f.stage.height = 400;
    boxes = f.stage.GetUpdateBoxes(count, 1);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(boxes[0].right, 550);
    EXPECT_EQ(boxes[0].bottom, 400);
}

TEST(GFile, ReplaceOnAnEmptyListShowsNothingAndMoveFreesItsRecord) {
    swf::Tags tags;
    tags.Add(swf::DefineShape(1, swf::Rect{0, 200, 0, 200, 0}, swf::Shape({swf::Fill::Solid({1, 2, 3, 255})}, {})));
    swf::Place2 replace;
    replace.depth = 4;
    replace.move = true;
    replace.characterId = 1;
    replace.matrix = swf::Matrix::Translate(10, 10);
    replace.name = "gone";
    swf::Place2 move;
    move.depth = 4;
    move.move = true;
    move.matrix = swf::Matrix::Translate(20, 20);
    move.cxform = swf::Cxform{std::array<int16_t, 4>{1, 2, 3, 4}, std::nullopt, 0};
    move.name = "moved";
    tags.Add(swf::PlaceObject2(replace)).Add(swf::PlaceObject2(move));
    const swf::Bytes movie = OneFrame(swf::Rect{0, 2000, 0, 1000, 0}, tags);
    GFile f(movie.data(), static_cast<unsigned>(movie.size()));
    ASSERT_EQ(f.Reset(1), 1);
    f.Forward(1, 100, 50, 1);
    EXPECT_EQ(f.stage.actors, nullptr);
    EXPECT_EQ(f.stage.clipBoxes.boxes.count, 0);
    // The shape was built for the replace and dropped with its only actor.
    EXPECT_EQ(f.dictionary.GetType(1), 2);
}

TEST(GFile, CutPlaceObjectStillPlacesWhatWasRead) {
    swf::Tags tags;
    tags.Add(swf::DefineShape(1, swf::Rect{0, 200, 0, 200, 0}, swf::Shape({swf::Fill::Solid({1, 2, 3, 255})}, {})));
    swf::BitWriter body;
    body.UI16(1).UI16(3);  // id and depth, then no matrix at all
    tags.Add(swf::Tag(swf::kPlaceObject, body.Data()));
    const swf::Bytes movie = OneFrame(swf::Rect{0, 2000, 0, 1000, 0}, tags);
    GFile f(movie.data(), static_cast<unsigned>(movie.size()));
    ASSERT_EQ(f.Reset(1), 1);
    f.Forward(1, 100, 50, 1);
    ASSERT_NE(f.stage.actors, nullptr);
    EXPECT_EQ(f.stage.actors->depth, 3);
    unsigned code = 0;
    ASSERT_EQ(f.PopError(code), 1);
    EXPECT_EQ(code, 0x200Fu);
}

TEST(GFile, BytesPerPixelOfEachFormat) {
    struct {
        int format, bytes;
    } cases[] = {{12, 2}, {15, 2}, {16, 2}, {268, 2}, {24, 3}, {271, 3}, {272, 3}, {280, 4}, {32, 0}, {0, 0}};
    for (auto c : cases) {
        _GOFFSCR off = {0, 0, 1, 1, c.format, 0, 0};
        EXPECT_EQ(GetCBPixel(&off), c.bytes) << c.format;
    }
}

}  // namespace
