// Buttons: reading the records of DefineButton and DefineButton2, the state
// mask and the per-layer lookups, the records drawn in the up state, load
// failures, buttons that show themselves, and buttons holding sprites.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "chars/BButton.h"
#include "chars/BSprite.h"
#include "display/DictionaryFixture.h"
#include "display/GActor.h"
#include "fixture/SwfSprites.h"
#include "render/GClipBox.h"

namespace {

using swf::Bytes;
using swf::ButtonRecord;
using swf::Matrix;

BButton* Build(DictionaryFixture& f, uint16_t id) { return static_cast<BButton*>(f.dict.NewChar(id)); }

using swf::Record;

std::vector<uint16_t> Ids(BButton* b) {
    std::vector<uint16_t> out;
    for (int i = 0; i < b->records.count; ++i) out.push_back(b->records[i]->characterId);
    return out;
}

TEST(ButtonLoad, RecordsKeepTagOrderFlagsLayersAndTransforms) {
    ButtonRecord up = Record(0x01 | 0x08, 1, 2, Matrix::Translate(100, -40));
    up.cxform.mult = std::array<int16_t, 4>{128, 256, 0, 64};
    up.cxform.add = std::array<int16_t, 4>{10, 0, -5, 0};
    for (bool second : {false, true}) {
        const Bytes tag = second ? swf::DefineButton2(20, {up, Record(0x02, 2, 1)})
                                 : swf::DefineButton(20, {up, Record(0x02, 2, 1)});
        DictionaryFixture f({{1, SquareShape(1)}, {2, SquareShape(2)}, {20, tag}});
        BButton* b = Build(f, 20);
        ASSERT_NE(b, nullptr) << second;
        ASSERT_EQ(Ids(b), (std::vector<uint16_t>{1, 2}));
        const BButton::ButtonRecord& r = *b->records[0];
        EXPECT_EQ(r.flags, 0x09);
        EXPECT_EQ(r.layer, 2);
        EXPECT_EQ(r.matrix.m[0][2], 100);
        EXPECT_EQ(r.matrix.m[1][2], -40);
        EXPECT_EQ((std::array<int, 5>{r.cxform.redMult, r.cxform.blueMult, r.cxform.alphaMult, r.cxform.redAdd,
                                      r.cxform.blueAdd}),
                  (std::array<int, 5>{128, 0, 64, 10, -5}));
        EXPECT_EQ(r.character, f.dict.GetChar(1));
        EXPECT_EQ(b->records[1]->flags, 0x02);
        EXPECT_EQ(b->dict, &f.dict);
        EXPECT_EQ(b->state, 0);
    }
}

TEST(ButtonLoad, StateMaskFollowsTheState) {
    BButton b;
    const std::pair<int, unsigned char> table[] = {{0, 0x01}, {1, 0x02}, {2, 0x04}, {3, 0x08}, {7, 0x01}, {-1, 0x01}};
    for (auto [state, mask] : table) {
        b.state = state;
        EXPECT_EQ(b.GetSWFButtonState(), mask) << state;
    }
}

TEST(ButtonLoad, LayerLookupsTakeTheFirstRecordOfTheState) {
    DictionaryFixture f({{1, SquareShape(1)},
                         {2, SquareShape(2)},
                         {3, SquareShape(3)},
                         {20, swf::DefineButton2(20, {Record(0x02, 3, 9), Record(0x01, 1, 4), Record(0x05, 2, 4),
                                                      Record(0x01, 3, 0)})}});
    BButton* b = Build(f, 20);
    ASSERT_EQ(b->records.count, 4);
    EXPECT_EQ(b->GetButtonRecords(4, 0x01), b->records[1]);
    EXPECT_EQ(b->GetButtonRecords(4, 0x04), b->records[2]);
    EXPECT_EQ(b->GetButtonRecords(9, 0x01), nullptr);
    EXPECT_EQ(b->GetButtonRecords(0, 0x01), b->records[3]);
    EXPECT_EQ(b->GetMaxLayer(), 4);
    b->state = 1;
    EXPECT_EQ(b->GetMaxLayer(), 9);
}

TEST(ButtonLoad, UpStateShowsTheFirstRecordOfEachLayerAndNeverLayerZero) {
    // Up records: layer 3 (shape 1), layer 0 (shape 2), layer 3 again (shape 3).
    DictionaryFixture f({{1, SquareShape(1)},
                         {2, SquareShape(2)},
                         {3, SquareShape(3)},
                         {20, swf::DefineButton2(20, {Record(0x01, 1, 3, Matrix::Translate(1000, 0)),
                                                      Record(0x01, 2, 0, Matrix::Translate(3000, 0)),
                                                      Record(0x01, 3, 3, Matrix::Translate(5000, 0))})}});
    BButton* b = Build(f, 20);
    GClipBox clip;
    b->Insert(&clip, nullptr);
    ASSERT_EQ(clip.boxes.count, 1);
    EXPECT_EQ(clip.boxes[0].left, 980);
    EXPECT_EQ(clip.boxes[0].right, 1240);
    GActor actor;
    _GRECT box = b->GetBoundingBox(nullptr, &actor, nullptr);
    // The record's matrix is not applied to the bounds: shape 1 at the origin.
    EXPECT_EQ(box.left, -20);
    EXPECT_EQ(box.right, 220);
}

TEST(ButtonLoad, ButtonWithoutUpRecordsHasNothingToShow) {
    DictionaryFixture f(
        {{1, SquareShape(1)},
         {20, swf::DefineButton2(20, {Record(0x02, 1, 1), Record(0x04, 1, 2), Record(0x08, 1, 3)})}});
    BButton* b = Build(f, 20);
    ASSERT_EQ(b->records.count, 3);
    GActor actor;
    EXPECT_TRUE(IsEmptyRect(b->GetBoundingBox(nullptr, &actor, nullptr)));
    GClipBox clip;
    b->Insert(&clip, nullptr);
    EXPECT_EQ(clip.boxes.count, 0);
    EXPECT_EQ(b->PrepareData(&clip, nullptr, 0), 0);
    EXPECT_EQ(b->IsMultyFrame(), 0);
}

TEST(ButtonLoad, ActionsAreNotReadAndRecordsWhoseCharacterCannotBeBuiltAreDropped) {
    const Bytes actions = {0x07, 0x00, 0x00};  // a condition action record, never looked at
    const std::pair<Bytes, std::vector<uint16_t>> cases[] = {
        {swf::DefineButton2(20, {Record(0x01, 1, 1)}, false, actions), {1}},
        {swf::DefineButton2(20, {Record(0x01, 7, 1), Record(0x01, 1, 2)}), {1}},
    };
    for (const auto& [tag, ids] : cases) {
        DictionaryFixture f({{1, SquareShape(1)}, {20, tag}});
        BButton* b = Build(f, 20);
        ASSERT_NE(b, nullptr);
        EXPECT_EQ(Ids(b), ids);
    }
}

TEST(ButtonLoad, RecordListCutShortFailsTheLoad) {
    struct Case {
        swf::TagCode code;
        unsigned error;
    };
    for (Case c : {Case{swf::kDefineButton, kErrLoadButton}, Case{swf::kDefineButton2, kErrLoadButton2}}) {
        // The end flag and the colour transform's byte are cut off: the
        // transform is read from the byte at the tag's end (which a reader
        // may touch), the flag after it runs past the tag.
        Bytes whole = c.code == swf::kDefineButton ? swf::DefineButton(20, {Record(0x01, 1, 1)}, {})
                                                   : swf::DefineButton2(20, {Record(0x01, 1, 1)});
        Bytes body(whole.begin() + 2, whole.end() - 2);
        DictionaryFixture f({{1, SquareShape(1)}, {20, swf::Tag(c.code, body)}});
        EXPECT_EQ(f.dict.NewChar(20), nullptr);
        EXPECT_EQ(f.LastError(), c.error);
    }
}

TEST(ButtonLoad, OtherTagCodesDoNotLoad) {
    BButton b;
    DictionaryFixture f({{1, SquareShape(1)}});
    EXPECT_EQ(b.LoadSWFFile(f.Tag(0), &f.dict), 0);
    EXPECT_EQ(b.dict, &f.dict);
}

TEST(ButtonLoad, ButtonsThatShowThemselvesLoadWithoutThoseRecords) {
    // 20 shows itself and 21; 21 shows 20: each reference back to a button
    // being loaded is dropped, the rest is kept.
    DictionaryFixture f({{1, SquareShape(1)},
                         {20, swf::DefineButton2(20, {Record(0x01, 20, 1), Record(0x01, 1, 2), Record(0x01, 21, 3)})},
                         {21, swf::DefineButton2(21, {Record(0x01, 20, 1), Record(0x01, 1, 2)})}});
    BButton* b = Build(f, 20);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(Ids(b), (std::vector<uint16_t>{1, 21}));
    auto* inner = static_cast<BButton*>(b->records[1]->character);
    EXPECT_EQ(Ids(inner), std::vector<uint16_t>{1});
    EXPECT_EQ(f.dict.GetChar(1)->refCount, 3);  // two records and this look-up
}

TEST(ButtonLoad, DestroyedButtonKeepsItsCharactersBuilt) {
    DictionaryFixture f({{1, SquareShape(1)}, {20, swf::DefineButton2(20, {Record(0x01, 1, 1)})}});
    GCTRL_INFO info = {};
    info.characterId = 20;
    info.depth = 1;
    GActor* actor = f.dict.NewActor(&info);
    ASSERT_NE(actor, nullptr);
    f.dict.DeleteActor(actor);
    EXPECT_EQ(f.dict.slots[20], f.Tag(1));
    EXPECT_NE(f.dict.slots[1], f.Tag(0));
    EXPECT_EQ(f.dict.GetType(1), swf::kDefineShape);
}

TEST(ButtonLoad, SpriteInTheUpStateAdvancesEveryFrame) {
    DictionaryFixture f({{1, SquareShape(1)},
                         {10, swf::SpriteOf(10, {{swf::Place(1, 1)}, {}, {}})},
                         {20, swf::DefineButton2(20, {Record(0x01, 10, 1, Matrix::Translate(400, 0))})}});
    BButton* b = Build(f, 20);
    auto* sprite = static_cast<BSprite*>(b->records[0]->character);
    GClipBox clip;
    EXPECT_EQ(b->PrepareData(&clip, nullptr, 0), 1);
    EXPECT_EQ(b->IsMultyFrame(), 1);
    // The sprite's child was reported under the record's matrix.
    ASSERT_EQ(clip.boxes.count, 1);
    EXPECT_EQ(clip.boxes[0].left, 380);
    for (int frame : {2, 0, 1}) {
        EXPECT_EQ(b->PrepareData(&clip, nullptr, 0), 1);  // already prepared: multiFrame
        EXPECT_EQ(sprite->curFrame, frame == 2 ? 1 : frame == 0 ? 2 : 0);
        b->EndScanFrame();
        b->PrepareData(&clip, nullptr, 0);
        EXPECT_EQ(sprite->curFrame, frame);
    }
}

TEST(ButtonLoad, ButtonShownThroughItsOwnSpriteIsPreparedOnce) {
    // The button's sprite places the button again: preparing, ending the
    // frame and reporting areas all come back to the same button.
    DictionaryFixture f({{1, SquareShape(1)},
                         {10, swf::SpriteOf(10, {{swf::Place(20, 1), swf::Place(1, 2)}, {}})},
                         {20, swf::DefineButton2(20, {Record(0x01, 10, 1)})}});
    BButton* b = Build(f, 20);
    auto* sprite = static_cast<BSprite*>(b->records[0]->character);
    GClipBox clip;
    for (int i = 0; i < 4; ++i) {
        b->EndScanFrame();
        b->PrepareData(&clip, nullptr, 0);
        EXPECT_EQ(sprite->curFrame, (i + 1) % 2) << i;
    }
    b->Insert(&clip, nullptr);
    // A record's character is bounded by its plain box, which a sprite does
    // not have: the button's box stays empty.
    GActor actor;
    EXPECT_TRUE(IsEmptyRect(b->GetBoundingBox(nullptr, &actor, nullptr)));
    EXPECT_EQ(BSprite::Nesting::Depth(), 0);
}

}  // namespace
