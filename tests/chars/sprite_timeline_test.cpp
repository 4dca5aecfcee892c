// A sprite's own timeline: frames read and looped with the list cleared, the
// child-sprite cache, control tags and their error codes, the replace that
// reads on inside its tag, reported areas and bounds.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "chars/BShape.h"
#include "chars/BSprite.h"
#include "display/DictionaryFixture.h"
#include "display/GActor.h"
#include "fixture/SwfSprites.h"
#include "render/GClipBox.h"

namespace {

using swf::Bytes;
using swf::Matrix;
using swf::Place;
using swf::SpriteOf;

BSprite* Build(DictionaryFixture& f, uint16_t id) { return static_cast<BSprite*>(f.dict.NewChar(id)); }

// One movie frame as the stage drives it: end the previous, prepare the next.
int Frame(BSprite* s, GClipBox* clip = nullptr, GMatrix* m = nullptr) {
    s->EndScanFrame();
    return s->PrepareData(clip, m, 0);
}

std::vector<int> Depths(const GActor* head) {
    std::vector<int> out;
    for (const GActor* a = head; a; a = a->next) out.push_back(a->depth);
    return out;
}

int InstanceCount(const GDictionary& d) {
    int n = 0;
    for (const BSprite* s = d.spriteInstances; s; s = s->nextInstance) ++n;
    return n;
}

TEST(SpriteTimeline, ZeroOrOneFrameIsReadAtMostOnceThenReportsNoChange) {
    for (int frames : {0, 1}) {
        DictionaryFixture f({{1, SquareShape(1)},
                             {10, frames ? SpriteOf(10, {{Place(1, 1)}})
                                         : swf::DefineSprite(10, swf::Frames({{Place(1, 1)}}), 0)}});
        BSprite* s = Build(f, 10);
        ASSERT_NE(s, nullptr);
        EXPECT_EQ(s->IsMultyFrame(), 0);
        EXPECT_EQ(Frame(s), frames);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(Frame(s), 0);
            EXPECT_EQ(s->curFrame, frames);
            EXPECT_EQ(Depths(s->actors), frames ? std::vector<int>{1} : std::vector<int>{});
        }
        EXPECT_EQ(frames ? s->actors->character->refCount : 1, 1);
    }
}

TEST(SpriteTimeline, ThreeFramesRunInOrderThenClearAndRepeat) {
    DictionaryFixture f({{1, SquareShape(1)},
                         {2, SquareShape(2)},
                         {3, SquareShape(3)},
                         {10, SpriteOf(10, {{Place(1, 1)}, {Place(2, 2)}, {Place(3, 3)}})}});
    BSprite* s = Build(f, 10);
    EXPECT_EQ(s->IsMultyFrame(), 1);
    const std::vector<std::vector<int>> lists = {{1}, {1, 2}, {1, 2, 3}, {1}, {1, 2}};
    const int frames[] = {1, 2, 0, 1, 2};
    for (size_t i = 0; i < lists.size(); ++i) {
        EXPECT_EQ(Frame(s), 1) << i;
        EXPECT_EQ(s->curFrame, frames[i]) << i;
        EXPECT_EQ(Depths(s->actors), lists[i]) << i;
    }
    // The loop gave the cleared shapes' references back: shape 3 is no longer
    // built and its slot holds the raw tag again.
    EXPECT_EQ(f.dict.slots[3], f.Tag(2));
}

TEST(SpriteTimeline, PreparedFrameIsNotAdvancedAgain) {
    DictionaryFixture f({{1, SquareShape(1)}, {10, SpriteOf(10, {{Place(1, 1)}, {}, {}})}});
    BSprite* s = Build(f, 10);
    EXPECT_EQ(s->PrepareData(nullptr, nullptr, 0), 1);
    EXPECT_EQ(s->PrepareData(nullptr, nullptr, 0), 1);  // multiFrame, nothing read
    EXPECT_EQ(s->curFrame, 1);
    s->EndScanFrame();
    EXPECT_EQ(s->PrepareData(nullptr, nullptr, 0), 1);
    EXPECT_EQ(s->curFrame, 2);
}

TEST(SpriteTimeline, ChildSpriteIsTheSameInstanceOnEveryLoopEvenAfterARemoval) {
    for (bool removed : {false, true}) {
        const Bytes parent = removed ? SpriteOf(10, {{Place(11, 1)}, {swf::RemoveObject2(1)}, {}})
                                     : SpriteOf(10, {{Place(11, 1)}, {}});
        DictionaryFixture f({{1, SquareShape(1)}, {11, SpriteOf(11, {{Place(1, 1)}, {}, {}})}, {10, parent}});
        BSprite* s = Build(f, 10);
        Frame(s);
        ASSERT_NE(s->actors, nullptr);
        BChar* child = s->actors->character;
        EXPECT_EQ(static_cast<BComplexChar*>(child)->parent, s);
        Frame(s);
        // A removed child waits in the cache for the next loop.
        EXPECT_EQ(s->actors == nullptr, removed);
        for (int i = 0; i < (removed ? 2 : 4); ++i) Frame(s);
        ASSERT_NE(s->actors, nullptr);
        EXPECT_EQ(s->actors->character, child);
        EXPECT_EQ(InstanceCount(f.dict), 2);
        EXPECT_EQ(s->TreeInstances(), 1);
        if (!removed) {
            // Six frames prepared: the child's three-frame timeline went round twice.
            EXPECT_EQ(static_cast<BSprite*>(child)->curFrame, 0);
        }
    }
}

TEST(SpriteTimeline, SameSpritePlacedTwiceAtOneDepthKeepsTheFirst) {
    DictionaryFixture f({{1, SquareShape(1)},
                         {11, SpriteOf(11, {{Place(1, 1)}})},
                         {10, SpriteOf(10, {{Place(11, 1), Place(11, 1)}, {}})}});
    BSprite* s = Build(f, 10);
    for (int i = 0; i < 6; ++i) {
        Frame(s);
        EXPECT_EQ(Depths(s->actors), std::vector<int>{1}) << i;
    }
    // The second placement's instance waits in the cache and is reused on
    // every loop instead of growing the cache.
    EXPECT_EQ(InstanceCount(f.dict), 3);
}

TEST(SpriteTimeline, PlainActorAtATakenDepthIsDropped) {
    DictionaryFixture f({{1, SquareShape(1)}, {2, SquareShape(2)}, {10, SpriteOf(10, {{Place(1, 4), Place(2, 4)}})}});
    BSprite* s = Build(f, 10);
    Frame(s);
    ASSERT_EQ(Depths(s->actors), std::vector<int>{4});
    EXPECT_EQ(s->actors->character->id, 1);
}

TEST(SpriteTimeline, RemoveRecordsTakeTheActorOffOrPushTheirCodeWhenCut) {
    struct Case {
        Bytes tag;
        unsigned code;
        std::vector<int> depths;
    };
    // RemoveObject without its depth, RemoveObject2 with an empty body: the
    // depth reads as 0, so the removal finds nothing.
    const Case cases[] = {{swf::RemoveObject(1, 1), 0, {2}},
                          {swf::Tag(swf::kRemoveObject, {1, 0}), kErrRemoveObject, {1, 2}},
                          {swf::Tag(swf::kRemoveObject2, {}), kErrRemoveObject2, {1, 2}}};
    for (const Case& c : cases) {
        DictionaryFixture f(
            {{1, SquareShape(1)}, {2, SquareShape(2)}, {10, SpriteOf(10, {{Place(1, 1), Place(2, 2)}, {c.tag}, {}})}});
        BSprite* s = Build(f, 10);
        Frame(s);
        f.LastError();
        Frame(s);
        EXPECT_EQ(f.LastError(), c.code);
        EXPECT_EQ(Depths(s->actors), c.depths);
    }
}

TEST(SpriteTimeline, FrameLabelIsRecordedAndClearedOnRewind) {
    DictionaryFixture f({{10, SpriteOf(10, {{swf::FrameLabel("intro")}, {swf::Tag(swf::kFrameLabel, {})}})}});
    BSprite* s = Build(f, 10);
    Frame(s);
    ASSERT_NE(s->frameLabel, nullptr);
    EXPECT_STREQ(s->frameLabel, "intro");
    Frame(s);
    EXPECT_EQ(s->frameLabel, nullptr);
    Frame(s);
    EXPECT_STREQ(s->frameLabel, "intro");
    s->Reset();
    EXPECT_EQ(s->frameLabel, nullptr);
}

// A PlaceObject2 replace of depth 1 whose tag also holds, after the record,
// the bytes of a whole PlaceObject2 tag placing shape 2 at depth 5.
Bytes ReplaceWithTrailingTag() {
    swf::Place2 p;
    p.depth = 1;
    p.move = true;
    p.characterId = 1;
    Bytes record = swf::PlaceObject2(p);
    record.erase(record.begin(), record.begin() + 2);  // drop the short header
    const Bytes inner = Place(2, 5);
    record.insert(record.end(), inner.begin(), inner.end());
    return swf::Tag(swf::kPlaceObject2, record);
}

TEST(SpriteTimeline, ReplaceThatReplacesNothingReadsOnInsideItsTag) {
    // Nothing at depth 1: the new actor is inserted and the bytes after the
    // record are read as tags, so the inner placement happens too.
    DictionaryFixture f({{1, SquareShape(1)}, {2, SquareShape(2)}, {10, SpriteOf(10, {{ReplaceWithTrailingTag()}})}});
    BSprite* s = Build(f, 10);
    Frame(s);
    EXPECT_EQ(Depths(s->actors), (std::vector<int>{1, 5}));
}

TEST(SpriteTimeline, ReplaceThatReplacesSkipsTheRestOfItsTag) {
    DictionaryFixture f(
        {{1, SquareShape(1)}, {2, SquareShape(2)}, {10, SpriteOf(10, {{Place(2, 1), ReplaceWithTrailingTag()}})}});
    BSprite* s = Build(f, 10);
    Frame(s);
    ASSERT_EQ(Depths(s->actors), std::vector<int>{1});
    EXPECT_EQ(s->actors->character->id, 1);
    // The replaced shape actor was destroyed without giving its reference back.
    EXPECT_EQ(f.dict.GetType(2), swf::kDefineShape);
    EXPECT_NE(f.dict.slots[2], f.Tag(1));
}

TEST(SpriteTimeline, ReportsAreasOfPlacementsMovesAndLoopRestarts) {
    swf::Place2 move;
    move.depth = 1;
    move.move = true;
    move.matrix = Matrix::Translate(2000, 0);
    struct Case {
        const char* what;
        std::vector<std::vector<Bytes>> frames;
        int framesBefore;
        double tx;
        std::vector<double> lefts;
    };
    const Case cases[] = {
        // The 200-twip square snapped outward by one pixel before (and two after).
        {"placed under the given matrix", {{Place(1, 1)}, {}}, 0, 1000, {980}},
        {"moved: old and new area", {{Place(1, 1)}, {swf::PlaceObject2(move)}}, 1, 0, {-20, 1980}},
        {"loop restart: the cleared child", {{}, {Place(1, 1, Matrix::Translate(4000, 0))}}, 2, 0, {3980}},
    };
    for (const Case& c : cases) {
        DictionaryFixture f({{1, SquareShape(1)}, {10, SpriteOf(10, c.frames)}});
        BSprite* s = Build(f, 10);
        for (int i = 0; i < c.framesBefore; ++i) Frame(s);
        GClipBox clip;
        GMatrix m;
        m.m[0][2] = c.tx;
        Frame(s, &clip, c.tx ? &m : nullptr);
        EXPECT_EQ(s->actors == nullptr, c.framesBefore == 2) << c.what;  // the restart cleared the list
        std::vector<double> lefts;
        for (int i = 0; i < clip.boxes.count; ++i) lefts.push_back(clip.boxes[i].left);
        EXPECT_EQ(lefts, c.lefts) << c.what;
        if (c.tx) {
            EXPECT_EQ(clip.boxes[0].right, 1240);
            EXPECT_EQ(clip.boxes[0].top, -20);
            EXPECT_EQ(clip.boxes[0].bottom, 240);
        }
    }
}

TEST(SpriteTimeline, BoundingBoxWidensPlainChildrenAndFollowsTheInstance) {
    DictionaryFixture f({{1, SquareShape(1)},
                         {11, SpriteOf(11, {{Place(1, 1, Matrix::Translate(0, 1000))}})},
                         {10, SpriteOf(10, {{Place(1, 1, Matrix::Translate(100, 0)), Place(11, 2)}})}});
    BSprite* s = Build(f, 10);
    Frame(s);
    GActor actor;
    actor.matrix = new GMatrix();
    actor.matrix->m[0][2] = 1000;
    _GRECT b = s->GetBoundingBox(nullptr, &actor, nullptr);
    // Square at x 100..300 (depth 1) and, through sprite 11, y 1000..1200;
    // each widened by 20 twips, all moved 1000 twips right.
    EXPECT_EQ(b.left, 1000 - 20);
    EXPECT_EQ(b.right, 1300 + 20);
    EXPECT_EQ(b.top, -20);
    EXPECT_EQ(b.bottom, 1200 + 20);
}

TEST(SpriteTimeline, ResetRewindsToTheFirstControlTag) {
    DictionaryFixture f({{1, SquareShape(1)}, {10, SpriteOf(10, {{Place(1, 1)}, {}, {}})}});
    BSprite* s = Build(f, 10);
    unsigned char* first = s->nextTag;
    Frame(s);
    Frame(s);
    EXPECT_NE(s->nextTag, first);
    EXPECT_EQ(s->Reset(), 3);
    EXPECT_EQ(s->nextTag, first);
    EXPECT_EQ(s->curFrame, 0);
    // The display list and the cache are left as they are.
    EXPECT_EQ(Depths(s->actors), std::vector<int>{1});
}

TEST(SpriteTimeline, HeaderThatCannotBeReadFailsTheLoad) {
    DictionaryFixture f({{10, swf::Tag(swf::kDefineSprite, {10, 0})}});
    EXPECT_EQ(f.dict.NewChar(10), nullptr);
    EXPECT_EQ(f.LastError(), unsigned{kErrLoadSprite});
}

TEST(SpriteTimeline, StreamRunningPastTheBufferReadsAsEnd) {
    // The declared length runs past the buffer: reads there give 0, an End,
    // so the placement is the whole of frame 0 and the other frames are empty.
    Bytes body = {10, 0, 3, 0};
    const Bytes place = Place(1, 1);
    body.insert(body.end(), place.begin(), place.end());
    DictionaryFixture f({{1, SquareShape(1)}, {10, swf::TagWithLength(swf::kDefineSprite, body, 400)}});
    BSprite* s = Build(f, 10);
    ASSERT_NE(s, nullptr);
    for (int i = 0; i < 6; ++i) Frame(s);
    EXPECT_EQ(Depths(s->actors), std::vector<int>{1});
    EXPECT_EQ(s->curFrame, 0);
}

}  // namespace
