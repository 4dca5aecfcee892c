// Sprites as a host sees them: nested timelines that advance and loop on
// their own, combined transforms of nested sprites, clip layers at every
// level, dirty areas of a sprite's own changes, and hostile nesting.
#include <gtest/gtest.h>

#include <vector>

#include "api/EngineHost.h"
#include "fixture/SwfSprites.h"

namespace {

using host::Box;
using host::BoxShape;
using host::Color;
using host::Engine;
using swf::Bytes;
using swf::Matrix;
using swf::Place;
using swf::PlaceClip;
using swf::SpriteOf;

using host::kBlue;
using host::kGreen;
using host::kRed;
using host::kWhite;

// A 100 x 100 pixel movie on white whose main timeline is `frames`, then
// empty frames up to 30 in all, so sprites advance while the movie plays.
Bytes Movie(const std::vector<Bytes>& defs, const std::vector<std::vector<Bytes>>& frames) {
    swf::Movie m = host::MovieOf();
    m.tags.Add(swf::SetBackgroundColor(Color(255, 255, 255)));
    for (const Bytes& d : defs) m.tags.Add(d);
    for (const std::vector<Bytes>& frame : frames) {
        for (const Bytes& t : frame) m.tags.Add(t);
        m.tags.Add(swf::ShowFrame());
    }
    while (m.tags.ShowFrames() < 30) m.tags.Add(swf::ShowFrame());
    return m.Build();
}

// Advances one frame and paints it; the first Play of a handle repaints all,
// later ones only the dirty boxes (mode 0), so stale pixels show a missed box.
void Step(Engine& e, host::Pixels& px) {
    zelEngineForward(e.get(), 1, px.width, px.height, 1);
    zelEnginePlay(e.get(), px.get(), 0, 0, px.width, px.height, 0);
}

uint8_t Red(uint32_t p) { return static_cast<uint8_t>(p >> 16); }
uint8_t Green(uint32_t p) { return static_cast<uint8_t>(p >> 8); }

Bytes RedBox(uint16_t id, int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
    return BoxShape(id, x0, y0, x1, y1, Color(255, 0, 0));
}

TEST(SpriteRender, NestedSpritesCombineTheirTransforms) {
    // Box 0..10 px, moved 10 px right in sprite 2, scaled 2x and moved 5 px
    // in sprite 3, moved 20 px on the stage: x 45..65, y 25..45.
    Engine e(Movie({RedBox(1, 0, 0, 200, 200), SpriteOf(2, {{Place(1, 1, Matrix::Translate(200, 0))}}),
                    SpriteOf(3, {{Place(2, 1, Matrix::Scale(2, 2, 100, 100))}})},
                   {{Place(3, 1, Matrix::Translate(400, 400))}}));
    ASSERT_TRUE(e);
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(46, 26), kRed);
    EXPECT_EQ(px.at(64, 44), kRed);
    for (auto [x, y] : {std::pair{44, 35}, {66, 35}, {55, 24}, {55, 46}})
        EXPECT_EQ(px.at(x, y), kWhite) << x << "," << y;
}

TEST(SpriteRender, TimelineAdvancesAndLoopsOnItsOwn) {
    // The main timeline places the three-frame sprite once and then only
    // shows frames; the sprite runs its own frames and loops.
    Engine e(Movie({RedBox(1, 0, 0, 200, 200), BoxShape(2, 0, 0, 200, 200, Color(0, 255, 0)),
                    BoxShape(3, 0, 0, 200, 200, Color(0, 0, 255)),
                    SpriteOf(10, {{Place(1, 1)},
                                  {swf::RemoveObject2(1), Place(2, 1)},
                                  {swf::RemoveObject2(1), Place(3, 1)}})},
                   {{Place(10, 1, Matrix::Translate(100, 100))}}));
    host::Pixels px(100, 100);
    const uint32_t expected[] = {kRed, kGreen, kBlue, kRed, kGreen, kBlue, kRed};
    for (uint32_t colour : expected) {
        Step(e, px);
        EXPECT_EQ(px.at(10, 10), colour);
        EXPECT_EQ(px.at(20, 20), kWhite);
    }
}

TEST(SpriteRender, ReturningToTheFirstFrameClearsTheDisplayList) {
    Engine e(Movie({RedBox(1, 0, 0, 200, 200), BoxShape(2, 0, 0, 200, 200, Color(0, 255, 0)),
                    SpriteOf(10, {{Place(1, 1)}, {Place(2, 2, Matrix::Translate(1000, 0))}})},
                   {{Place(10, 1)}}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
    EXPECT_EQ(px.at(55, 5), kWhite);
    Step(e, px);
    EXPECT_EQ(px.at(55, 5), kGreen);
    Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
    EXPECT_EQ(px.at(55, 5), kWhite);
}

TEST(SpriteRender, UpdateBoxesCoverTheSpritesOwnChanges) {
    // The root list does not change after the first frame; the sprite moves
    // its child from x 0..10 to x 50..60 px.
    Engine e(Movie({RedBox(1, 0, 0, 200, 200),
                    SpriteOf(10, {{Place(1, 1)},
                                  {[] {
                                      swf::Place2 p;
                                      p.depth = 1;
                                      p.move = true;
                                      p.matrix = Matrix::Translate(1000, 0);
                                      return swf::PlaceObject2(p);
                                  }()}})},
                   {{Place(10, 1, Matrix::Translate(0, 400))}}));
    host::Pixels px(100, 100);
    Step(e, px);
    zelEngineForward(e.get(), 1, 100, 100, 1);
    const std::vector<_GRECT> boxes = e.Boxes();
    auto covered = [&](double x0, double y0, double x1, double y1) {
        for (const _GRECT& b : boxes)
            if (b.left <= x0 && b.top <= y0 && b.right >= x1 && b.bottom >= y1) return true;
        return false;
    };
    EXPECT_TRUE(covered(0, 20, 10, 30));
    EXPECT_TRUE(covered(50, 20, 60, 30));
    zelEnginePlay(e.get(), px.get(), 0, 0, 100, 100, 0);
    EXPECT_EQ(px.at(5, 25), kWhite);
    EXPECT_EQ(px.at(55, 25), kRed);
}

TEST(SpriteRender, RepaintingOnlyTheUpdateBoxesMatchesAFullRepaint) {
    // Nested sprites moving, looping, masking and being replaced, at a zoom
    // of 2: the update boxes must hold every pixel that changed.
    auto move = [](uint16_t depth, int32_t x, int32_t y) {
        swf::Place2 p;
        p.depth = depth;
        p.move = true;
        p.matrix = Matrix::Translate(x, y);
        return swf::PlaceObject2(p);
    };
    swf::Place2 swap;
    swap.depth = 2;
    swap.move = true;
    swap.characterId = 3;
    const std::vector<Bytes> defs = {
        RedBox(1, 0, 0, 300, 200), BoxShape(2, 0, 0, 200, 300, Color(0, 128, 255)),
        BoxShape(3, -100, -100, 100, 100, Color(20, 200, 20, 160)),
        SpriteOf(10, {{Place(1, 1)}, {move(1, 300, 100)}, {move(1, 600, 0)}, {swf::RemoveObject2(1)}}),
        SpriteOf(11, {{PlaceClip(2, 1, 3), Place(10, 2, Matrix::Translate(-100, 50)), Place(1, 5)},
                      {move(2, 0, 150)},
                      {swf::PlaceObject2(swap)}}),
        SpriteOf(12, {{Place(11, 1), Place(10, 2, Matrix::Scale(1.5, 0.5, 600, 900))}, {move(1, 300, 300)}})};
    const Bytes movie = Movie(defs, {{Place(12, 1, Matrix::Translate(100, 100))},
                                     {},
                                     {move(1, 400, 150)},
                                     {Place(11, 3, Matrix::Translate(900, 200))}});
    Engine incremental(movie), full(movie);
    host::Pixels a(200, 200), b(200, 200);
    int changes = 0;
    for (int frame = 0; frame < 12; ++frame) {
        const std::vector<uint32_t> before = b.data;
        zelEngineForward(incremental.get(), 1, 200, 200, 1);
        zelEngineForward(full.get(), 1, 200, 200, 1);
        zelEnginePlay(incremental.get(), a.get(), 0, 0, 200, 200, 0);
        zelEnginePlay(full.get(), b.get(), 0, 0, 200, 200, 1);
        ASSERT_EQ(a.data, b.data) << frame;
        if (b.data != before) ++changes;
    }
    EXPECT_GE(changes, 10);
}

// Inside a sprite: a blue clip layer of 0..25 px at depth 1 masking depths up
// to 3; a red 100 px box at depth 2; a green box at depth 4 (x 60..70 px).
Bytes MaskedSprite(uint16_t id) {
    return SpriteOf(id, {{PlaceClip(2, 1, 3), Place(1, 2), Place(3, 4, Matrix::Translate(1200, 0))}});
}

std::vector<Bytes> MaskDefs() {
    return {RedBox(1, 0, 0, 2000, 2000), BoxShape(2, 0, 0, 500, 500, Color(0, 0, 255)),
            BoxShape(3, 0, 0, 200, 200, Color(0, 255, 0))};
}

TEST(SpriteRender, ClipLayerMasksTheDepthsItCovers) {
    std::vector<Bytes> defs = MaskDefs();
    defs.push_back(MaskedSprite(10));
    Engine e(Movie(defs, {{Place(10, 1)}}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(10, 10), kRed);   // inside the mask; the mask itself is not drawn
    EXPECT_EQ(px.at(24, 24), kRed);
    EXPECT_EQ(px.at(40, 40), kWhite);  // outside the mask
    EXPECT_EQ(px.at(26, 5), kWhite);
    EXPECT_EQ(px.at(65, 5), kGreen);  // depth 4 is past the clip depth
}

TEST(SpriteRender, MaskEdgeIsAntiAliased) {
    // The mask ends at 10.5 px: pixel 10 is half red over white.
    Engine e(Movie({RedBox(1, 0, 0, 2000, 2000), BoxShape(2, 0, 0, 210, 2000, Color(0, 0, 255)),
                    SpriteOf(10, {{PlaceClip(2, 1, 2), Place(1, 2)}})},
                   {{Place(10, 1)}}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(9, 50), kRed);
    EXPECT_EQ(px.at(11, 50), kWhite);
    const uint32_t edge = px.at(10, 50);
    EXPECT_EQ(Red(edge), 255);
    EXPECT_GT(Green(edge), 100);
    EXPECT_LT(Green(edge), 156);
}

TEST(SpriteRender, MasksNestAcrossLevels) {
    // A root clip layer keeps x < 50 px; the sprite's own keeps y < 50 px.
    Engine e(Movie({RedBox(1, 0, 0, 2000, 2000), BoxShape(2, 0, 0, 1000, 2000, Color(0, 0, 255)),
                    BoxShape(4, 0, 0, 2000, 1000, Color(0, 0, 255)),
                    SpriteOf(10, {{PlaceClip(4, 1, 2), Place(1, 2)}})},
                   {{PlaceClip(2, 1, 5), Place(10, 2)}}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(25, 25), kRed);
    EXPECT_EQ(px.at(75, 25), kWhite);
    EXPECT_EQ(px.at(25, 75), kWhite);
    EXPECT_EQ(px.at(75, 75), kWhite);
}

TEST(SpriteRender, MaskInsideANestedSpriteFollowsItsTransform) {
    std::vector<Bytes> defs = MaskDefs();
    defs.push_back(MaskedSprite(10));
    defs.push_back(SpriteOf(11, {{Place(10, 1, Matrix::Translate(400, 400))}}));
    Engine e(Movie(defs, {{Place(11, 1)}}));
    host::Pixels px(100, 100);
    Step(e, px);
    // The mask moved with its sprite to 20..45 px.
    EXPECT_EQ(px.at(21, 21), kRed);
    EXPECT_EQ(px.at(44, 44), kRed);
    EXPECT_EQ(px.at(15, 15), kWhite);
    EXPECT_EQ(px.at(47, 47), kWhite);
    EXPECT_EQ(px.at(85, 25), kGreen);
}

TEST(SpriteRender, MasksCloseBeforeTheFirstDepthPastThem) {
    // Clip depth 5 at depth 2; children at 3, 5 and 6: 3 and 5 masked, 6 not.
    Engine e(Movie({BoxShape(2, 0, 0, 1000, 2000, Color(0, 0, 255)), RedBox(1, 0, 0, 2000, 400),
                    BoxShape(3, 0, 800, 2000, 1200, Color(0, 255, 0)), RedBox(4, 0, 1600, 2000, 2000),
                    SpriteOf(10, {{PlaceClip(2, 2, 5), Place(1, 3), Place(3, 5), Place(4, 6)}})},
                   {{Place(10, 1)}}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(25, 10), kRed);
    EXPECT_EQ(px.at(75, 10), kWhite);
    EXPECT_EQ(px.at(25, 50), kGreen);
    EXPECT_EQ(px.at(75, 50), kWhite);
    EXPECT_EQ(px.at(25, 90), kRed);
    EXPECT_EQ(px.at(75, 90), kRed);
}

TEST(SpriteRender, SpriteColourTransformReachesItsChildren) {
    swf::Place2 p;
    p.depth = 1;
    p.characterId = 10;
    p.cxform = swf::Cxform{std::array<int16_t, 4>{0, 0, 0, 256}, std::array<int16_t, 4>{0, 0, 255, 0}, 0};
    Engine e(Movie({RedBox(1, 0, 0, 200, 200), SpriteOf(11, {{Place(1, 1)}}), SpriteOf(10, {{Place(11, 1)}})},
                   {{swf::PlaceObject2(p)}}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(5, 5), kBlue);
}

TEST(SpriteRender, SurvivesResetAndReplaysTheSame) {
    Engine e(Movie({RedBox(1, 0, 0, 200, 200), SpriteOf(11, {{Place(1, 1)}, {}}),
                    SpriteOf(10, {{Place(11, 1), Place(1, 2, Matrix::Translate(400, 0))}, {}, {}})},
                   {{Place(10, 1)}, {}, {swf::RemoveObject2(1)}, {Place(10, 2)}}));
    for (int round = 0; round < 3; ++round) {
        host::Pixels px(100, 100);
        for (int i = 0; i < 5; ++i) Step(e, px);
        EXPECT_EQ(px.at(5, 5), kRed) << round;
        EXPECT_EQ(px.at(25, 5), kRed) << round;
        EXPECT_EQ(zelEngineReset(e.get()), 1);
    }
}

TEST(SpriteRender, SpriteThatPlacesItselfStaysBounded) {
    // Sprite 5 places itself at four depths and a red box: without bounds it
    // would nest for ever, four times wider at every level.
    Engine e(Movie({RedBox(1, 0, 0, 200, 200),
                    SpriteOf(5, {{Place(1, 1), Place(5, 2), Place(5, 3), Place(5, 4), Place(5, 5)}, {}})},
                   {{Place(5, 1)}}));
    host::Pixels px(100, 100);
    for (int i = 0; i < 4; ++i) Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
}

TEST(SpriteRender, SpritesThatPlaceEachOtherStayBounded) {
    Engine e(Movie({RedBox(1, 0, 0, 200, 200), SpriteOf(5, {{Place(6, 1), Place(1, 2)}}),
                    SpriteOf(6, {{Place(5, 1, Matrix::Translate(20, 20))}})},
                   {{Place(5, 1)}}));
    host::Pixels px(100, 100);
    for (int i = 0; i < 3; ++i) Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
}

TEST(SpriteRender, ThousandsOfNestedSpritesDrawWhatIsWithinTheBound) {
    // Sprites 100..3099 each place the next; each of the first ten also shows
    // a red box, the 3000th (far past the bound) a green one over all of them.
    std::vector<Bytes> defs = {RedBox(1, 0, 0, 200, 200), BoxShape(2, 0, 0, 2000, 2000, Color(0, 255, 0))};
    const int kChain = 3000;
    for (int i = 0; i < kChain; ++i) {
        const uint16_t id = static_cast<uint16_t>(100 + i);
        std::vector<Bytes> frame = {Place(static_cast<uint16_t>(id + 1), 1)};
        if (i < 10) frame.push_back(Place(1, 2));
        if (i == kChain - 1) frame = {Place(2, 2)};
        defs.push_back(SpriteOf(id, {frame}));
    }
    Engine e(Movie(defs, {{Place(100, 1)}}));
    host::Pixels px(100, 100);
    for (int i = 0; i < 3; ++i) Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
    EXPECT_EQ(px.at(50, 50), kWhite);
}

}  // namespace
