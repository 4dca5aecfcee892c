// The engine as a host sees it through the public header: opening, the
// movie's facts, the frame driver's counting, error codes, update boxes and
// Play's modes.
#include <gtest/gtest.h>

#include <string>

#include "api/EngineHost.h"

namespace {

using host::Engine;
using host::MovieOf;

swf::Bytes Frames(int showFrames, std::optional<uint16_t> declared = {}) {
    swf::Movie m = MovieOf();
    for (int i = 0; i < showFrames; ++i) m.tags.Add(swf::ShowFrame());
    m.frameCount = declared;
    return m.Build();
}

TEST(Open, RejectsAnythingButAnUncompressedMovie) {
    swf::Movie cws = MovieOf();
    cws.signature = "CWS";
    const swf::Bytes compressed = cws.Build();
    const swf::Bytes good = Frames(1);
    EXPECT_EQ(zelEngineOpen(compressed.data(), static_cast<unsigned>(compressed.size())), nullptr);
    EXPECT_EQ(zelEngineOpen(nullptr, 100), nullptr);
    EXPECT_EQ(zelEngineOpen(good.data(), 0), nullptr);
    // Every cut inside the header fails; from the cut that completes it on,
    // the movie opens.
    size_t headerEnd = 0;
    for (size_t n = 0; n <= good.size(); ++n) {
        void* h = zelEngineOpen(good.data(), static_cast<unsigned>(n));
        if (h && !headerEnd) headerEnd = n;
        if (headerEnd) {
            EXPECT_NE(h, nullptr) << n;
        }
        zelEngineClose(h);
    }
    EXPECT_GT(headerEnd, 8u);
    zelEngineClose(nullptr);
}

TEST(Open, AnswersTheHeaderFacts) {
    swf::Movie m = MovieOf(550, 400);
    m.frameRate = 0x0C00;
    m.tags.Add(swf::SetBackgroundColor(host::Color(0x11, 0x22, 0x33))).Add(swf::ShowFrame());
    m.tags.Add(swf::ShowFrame());
    Engine e(m.Build());
    ASSERT_TRUE(e);
    EXPECT_EQ(zelEngineGetInt(e.get(), 1), 2);
    EXPECT_EQ(zelEngineGetInt(e.get(), 2), 0x0C00);
    EXPECT_EQ(zelEngineGetInt(e.get(), 3), 550);
    EXPECT_EQ(zelEngineGetInt(e.get(), 4), 400);
    EXPECT_EQ(zelEngineGetInt(e.get(), 5), 0);
    zelEngineForward(e.get(), 1, 550, 400, 1);
    // Stored red, green, blue; reported as 0x00BBGGRR.
    EXPECT_EQ(zelEngineGetInt(e.get(), 5), 0x332211);
}

TEST(Open, SelectorsOutsideOneToFivePushAnError) {
    Engine e(Frames(1));
    for (int selector : {0, 6, -1}) {
        EXPECT_EQ(zelEngineGetInt(e.get(), selector), 0);
        EXPECT_EQ(e.Errors(), std::vector<unsigned>{0x2005});
    }
}

TEST(Play, ReturnsTheFrameDelay) {
    for (auto [rate, delay] : {std::pair{0x0C00, 83}, std::pair{0, 100}, std::pair{0x1800, 41}, std::pair{0x0100, 1000}}) {
        swf::Movie m = MovieOf();
        m.frameRate = static_cast<uint16_t>(rate);
        m.tags.Add(swf::ShowFrame());
        Engine e(m.Build());
        host::Pixels px(10, 10);
        EXPECT_EQ(zelEnginePlay(e.get(), px.get(), 0, 0, 10, 10, 0), delay) << rate;
    }
}

TEST(Forward, CountsFramesLeftAndFreezesAfterAnOverrun) {
    // Six frames declared, three ShowFrames and an End: frame 4 ends at the
    // End tag, frame 5 at the overrun after it, then the movie is frozen.
    Engine e(Frames(3, 6));
    std::vector<int> left;
    for (int i = 0; i < 8; ++i) left.push_back(zelEngineForward(e.get(), 1, 100, 100, 1));
    EXPECT_EQ(left, (std::vector<int>{5, 4, 3, 2, 1, 1, 1, 1}));
    ASSERT_EQ(zelEngineReset(e.get()), 1);
    EXPECT_EQ(zelEngineForward(e.get(), 1, 100, 100, 1), 5);

    Engine five(Frames(3, 5));
    std::vector<int> ends;
    for (int i = 0; i < 6; ++i) ends.push_back(zelEngineForward(five.get(), 1, 100, 100, 1));
    EXPECT_EQ(ends, (std::vector<int>{4, 3, 2, 1, 0, 0}));
}

TEST(Forward, OneFrameMovieAlwaysAnswersOne) {
    Engine e(Frames(1));
    EXPECT_EQ(zelEngineForward(e.get(), 0, 100, 100, 1), 1);
    EXPECT_EQ(zelEngineForward(e.get(), 1, 100, 100, 1), 1);
    EXPECT_EQ(zelEngineForward(e.get(), 5, 100, 100, 1), 1);
}

TEST(Forward, ZeroFramesOrAnEmptyViewAdvancesNothing) {
    Engine e(Frames(4));
    EXPECT_EQ(zelEngineForward(e.get(), 0, 100, 100, 1), 4);
    EXPECT_EQ(zelEngineForward(e.get(), -3, 100, 100, 1), 4);
    EXPECT_EQ(zelEngineForward(e.get(), 1, 0, 100, 1), 0);
    EXPECT_EQ(zelEngineForward(e.get(), 1, 100, -1, 1), 0);
    EXPECT_EQ(zelEngineForward(e.get(), 2, 100, 100, 1), 2);
    EXPECT_EQ(zelEngineForward(e.get(), 1000000, 100, 100, 1), 0);
}

TEST(Forward, SkipsUnknownTagsLabelsAndScripts) {
    swf::Movie m = MovieOf();
    m.tags.Add(swf::Tag(60, {1, 2, 3, 4, 5}))
        .Add(swf::Tag(600, {9, 9}, true))
        .Add(swf::FrameLabel("intro"))
        .Add(swf::DoAction({0x07, 0x00}))
        .Add(host::BoxShape(1, 0, 0, 200, 200, host::Color(255, 0, 0)))
        .Add(swf::PlaceObject(1, 1, swf::Matrix::Translate(100, 100)))
        .Add(swf::ShowFrame())
        .Add(swf::ShowFrame());
    Engine e(m.Build());
    EXPECT_EQ(zelEngineForward(e.get(), 1, 100, 100, 1), 1);
    EXPECT_TRUE(e.Errors().empty());
    // The shape placed after the skipped tags marks its area: bounds
    // (100..300 twips) snapped to whole pixels with the margin.
    auto boxes = e.Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].left, 4);
    EXPECT_EQ(boxes[0].top, 4);
    EXPECT_EQ(boxes[0].right, 17);
    EXPECT_EQ(boxes[0].bottom, 17);
}

TEST(Errors, PlacementRecordFailuresReportTheOuterCode) {
    swf::Movie m = MovieOf();
    swf::BitWriter flagsOnly;
    flagsOnly.UI8(0x00).UI16(1);
    m.tags.Add(swf::Tag(swf::kPlaceObject2, flagsOnly.Data())).Add(swf::ShowFrame());
    m.tags.Add(swf::Tag(swf::kRemoveObject2, {})).Add(swf::ShowFrame());
    m.tags.Add(swf::Tag(swf::kRemoveObject, {1, 0})).Add(swf::ShowFrame());
    m.tags.Add(host::BoxShape(3, 0, 0, 20, 20, host::Color(1, 2, 3)))
        .Add(host::BoxShape(3, 0, 0, 20, 20, host::Color(1, 2, 3)))
        .Add(swf::ShowFrame());
    m.tags.Add(swf::PlaceObject(9, 1, swf::Matrix())).Add(swf::ShowFrame());
    Engine e(m.Build());
    const std::vector<unsigned> expected[] = {{0x2010}, {0x2012}, {0x2011}, {0x2001}, {0x2003}};
    for (const auto& codes : expected) {
        zelEngineForward(e.get(), 1, 100, 100, 1);
        EXPECT_EQ(e.Errors(), codes);
    }
    // Codes live until the next Forward clears them.
    zelEngineGetInt(e.get(), 9);
    zelEngineForward(e.get(), 1, 100, 100, 1);
    EXPECT_TRUE(e.Errors().empty());
}

TEST(Background, TagSetsOpaqueColourAndHostKeepsItsAlpha) {
    swf::Movie m = MovieOf(10, 10);
    m.tags.Add(swf::SetBackgroundColor(host::Color(0x10, 0x20, 0x30, 0x40))).Add(swf::ShowFrame());
    Engine e(m.Build());
    zelEngineForward(e.get(), 1, 10, 10, 1);
    host::Pixels px(10, 10);
    zelEnginePlay(e.get(), px.get(), 0, 0, 10, 10, 0);
    EXPECT_EQ(px.at(5, 5), 0xFF102030u);

    EXPECT_EQ(zelEngineSetBgColor(e.get(), 0x1AB, 0x2CD, 0x3EF, 0x80), 1);
    EXPECT_EQ(zelEngineGetInt(e.get(), 5), 0xEFCDAB);
    // A background that is not opaque is not painted.
    host::Pixels untouched(10, 10, 0x12345678u);
    zelEnginePlay(e.get(), untouched.get(), 0, 0, 10, 10, 1);
    EXPECT_EQ(untouched.at(5, 5), 0x12345678u);
}

TEST(Background, LongHeaderTagIsReadFromTheWrongBytes) {
    // The colour is always taken two bytes after the tag's start, as if the
    // header were short: with a long header those bytes are the length.
    swf::Movie m = MovieOf(10, 10);
    m.tags.Add(swf::Tag(swf::kSetBackgroundColor, {0x11, 0x22, 0x33}, true)).Add(swf::ShowFrame());
    Engine e(m.Build());
    zelEngineForward(e.get(), 1, 10, 10, 1);
    EXPECT_EQ(zelEngineGetInt(e.get(), 5), 0x000003);
}

TEST(UpdateBoxes, FullReportsTheStageAndNullCountIsAllowed) {
    Engine e(Frames(2));
    zelEngineForward(e.get(), 1, 550, 400, 1);
    auto full = e.Boxes(1);
    ASSERT_EQ(full.size(), 1u);
    EXPECT_EQ(full[0].right, 100 * 4);  // a 100 x 100 movie fits 400 x 400 into 550 x 400
    EXPECT_EQ(full[0].bottom, 400);
    EXPECT_NE(zelEngineGetUpdateBoxes(e.get(), nullptr, 1), nullptr);
    EXPECT_TRUE(e.Boxes().empty());
}

TEST(UpdateBoxes, FirstPlayIsAFullRedrawAndLaterPlaysKeepTheSet) {
    swf::Movie m = MovieOf(20, 10);
    m.tags.Add(swf::ShowFrame()).Add(swf::ShowFrame());
    Engine e(m.Build());
    host::Pixels px(20, 10);
    zelEngineForward(e.get(), 1, 20, 10, 1);
    EXPECT_TRUE(e.Boxes().empty());
    zelEnginePlay(e.get(), px.get(), 0, 0, 20, 10, 0);  // forced to mode 1
    auto boxes = e.Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].left, -1);
    EXPECT_EQ(boxes[0].top, -1);
    EXPECT_EQ(boxes[0].right, 22);
    EXPECT_EQ(boxes[0].bottom, 12);
    zelEngineForward(e.get(), 1, 20, 10, 1);
    zelEnginePlay(e.get(), px.get(), 0, 0, 20, 10, 0);  // honoured: nothing changed
    EXPECT_TRUE(e.Boxes().empty());
    zelEnginePlay(e.get(), px.get(), 0, 0, 20, 10, 2);
    EXPECT_EQ(e.Boxes().size(), 1u);
}

TEST(UpdateBoxes, PlacementsMovesAndRemovalsMarkOldAndNewAreas) {
    swf::Movie m = MovieOf(200, 200);
    m.tags.Add(host::BoxShape(1, 0, 0, 200, 200, host::Color(0, 0, 255)))
        .Add(swf::PlaceObject(1, 1, swf::Matrix::Translate(0, 0)))
        .Add(swf::ShowFrame());
    swf::Place2 move;
    move.depth = 1;
    move.move = true;
    move.matrix = swf::Matrix::Translate(2000, 2000);
    m.tags.Add(swf::PlaceObject2(move)).Add(swf::ShowFrame());
    m.tags.Add(swf::RemoveObject2(1)).Add(swf::ShowFrame());
    m.tags.Add(swf::ShowFrame());
    Engine e(m.Build());

    zelEngineForward(e.get(), 1, 200, 200, 1);
    auto placed = e.Boxes();
    ASSERT_EQ(placed.size(), 1u);
    EXPECT_EQ(placed[0].left, -1);
    EXPECT_EQ(placed[0].right, 12);

    zelEngineForward(e.get(), 1, 200, 200, 1);
    auto moved = e.Boxes();
    ASSERT_EQ(moved.size(), 2u);  // the old area and the new one, far apart
    EXPECT_EQ(moved[1].left, 99);
    EXPECT_EQ(moved[1].right, 112);

    zelEngineForward(e.get(), 1, 200, 200, 1);
    auto removed = e.Boxes();
    ASSERT_EQ(removed.size(), 1u);
    EXPECT_EQ(removed[0].left, 99);

    zelEngineForward(e.get(), 1, 200, 200, 1);
    EXPECT_TRUE(e.Boxes().empty());
}

TEST(UpdateBoxes, FollowTheZoomAndTheOrigin) {
    swf::Movie m = MovieOf(100, 100);
    m.tags.Add(host::BoxShape(1, 0, 0, 200, 200, host::Color(0, 0, 255)))
        .Add(swf::PlaceObject(1, 1, swf::Matrix::Translate(200, 200)))
        .Add(swf::ShowFrame());
    Engine e(m.Build());
    zelEngineSetOrg(e.get(), 50, 0);
    zelEngineForward(e.get(), 1, 300, 200, 1);  // zoom 2
    auto boxes = e.Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    // (200..400 twips) x 2 + 1000 twips of origin = 1400..1800 twips.
    EXPECT_EQ(boxes[0].left, 69);
    EXPECT_EQ(boxes[0].right, 92);
    EXPECT_EQ(boxes[0].top, 19);
    EXPECT_EQ(boxes[0].bottom, 42);
}

TEST(Reset, RewindsToAnEmptyFirstFrame) {
    swf::Movie m = MovieOf();
    m.tags.Add(host::BoxShape(1, 0, 0, 200, 200, host::Color(0, 0, 255)))
        .Add(swf::PlaceObject(1, 1, swf::Matrix()))
        .Add(swf::ShowFrame())
        .Add(swf::ShowFrame());
    Engine e(m.Build());
    EXPECT_EQ(zelEngineForward(e.get(), 2, 100, 100, 1), 0);
    EXPECT_EQ(zelEngineReset(e.get()), 1);
    EXPECT_EQ(zelEngineForward(e.get(), 1, 100, 100, 1), 1);
    EXPECT_EQ(e.Boxes().size(), 1u);  // placed again, without a duplicate-id error
    EXPECT_TRUE(e.Errors().empty());
}

TEST(Stubs, AudioMouseAndFocusAnswerNothing) {
    Engine e(Frames(1));
    zelEngineMouseChange(e.get(), 1, 2, 3);
    zelEngineSwitchFocus(e.get(), 1);
    zelEngineClickFocusButton(e.get());
    zelEngineChangeAudioState(e.get(), 1, 1);
    zelEngineForwardAudio(e.get(), 10);
    char data[4];
    EXPECT_EQ(zelEngineGetNewAudio(e.get()), 0);
    EXPECT_EQ(zelEngineGetAudioData(e.get(), data, 4), 0);
    EXPECT_EQ(zelEngineGetAudioState(e.get(), 0), 0);
    EXPECT_EQ(zelEngineSetAudioCallBack(e.get(), 42), 1);
    EXPECT_EQ(zelEngineSetBgCache(e.get(), data, 1, 2), 0);
    EXPECT_EQ(zelEngineSetTextDraw(e.get(), nullptr, 7), 1);
}

TEST(NullHandle, EveryFunctionIsHarmless) {
    int count = 5;
    unsigned code = 9;
    EXPECT_EQ(zelEngineGetInt(nullptr, 1), 0);
    EXPECT_EQ(zelEngineGetUpdateBoxes(nullptr, &count, 0), nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(zelEngineForward(nullptr, 1, 10, 10, 1), 0);
    EXPECT_EQ(zelEnginePlay(nullptr, nullptr, 0, 0, 0, 0, 0), 0);
    EXPECT_EQ(zelEngineReset(nullptr), 0);
    EXPECT_EQ(zelEngineSetOrg(nullptr, 1, 1), 0);
    zelEngineFlipCanvas(nullptr, 1);
    EXPECT_EQ(zelEnginePopError(nullptr, &code), 0);
    EXPECT_EQ(code, 9u);
    EXPECT_EQ(zelEngineSetBgColor(nullptr, 1, 2, 3, 4), 0);
    EXPECT_EQ(zelEngineSetTransform(nullptr, nullptr), 0);
}

}  // namespace

namespace {

TEST(Forward, SpritesKeepPlayingAfterTheLastMainFrame) {
    // A one-frame movie holding a two-frame sprite: red, then green.
    swf::Movie m = host::MovieOf(10, 10);
    swf::Tags inner;
    inner.Add(swf::PlaceObject(1, 1, swf::Matrix())).Add(swf::ShowFrame());
    inner.Add(swf::RemoveObject2(1)).Add(swf::PlaceObject(2, 1, swf::Matrix())).Add(swf::ShowFrame());
    m.tags.Add(host::BoxShape(1, 0, 0, 200, 200, host::Color(255, 0, 0)))
        .Add(host::BoxShape(2, 0, 0, 200, 200, host::Color(0, 255, 0)))
        .Add(swf::DefineSprite(3, inner))
        .Add(swf::PlaceObject(3, 1, swf::Matrix()))
        .Add(swf::ShowFrame());
    Engine e(m.Build());
    host::Pixels px(10, 10);
    std::vector<uint32_t> seen;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(zelEngineForward(e.get(), 1, 10, 10, 1), 1);
        zelEnginePlay(e.get(), px.get(), 0, 0, 10, 10, 0);
        seen.push_back(px.at(5, 5));
    }
    EXPECT_EQ(seen, (std::vector<uint32_t>{0xFFFF0000u, 0xFF00FF00u, 0xFFFF0000u}));
}

}  // namespace
