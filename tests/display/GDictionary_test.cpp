// Dictionary behaviour: the slot table (growth, duplicate ids), lazy building
// with reference counts and the return of the raw tag, sprite instances,
// placements that build nothing, error codes, and the table walk of Reset.
#include <gtest/gtest.h>

#include "chars/BShape.h"
#include "chars/BSprite.h"
#include "display/BChar.h"
#include "display/DictionaryFixture.h"
#include "display/GActor.h"
#include "display/GDictionary.h"

namespace {

swf::Bytes TwoFrameSprite(uint16_t id) {
    swf::Tags tags;
    tags.Add(swf::ShowFrame()).Add(swf::ShowFrame());
    return swf::DefineSprite(id, tags);
}

// A placement record as the parser leaves it, owning a matrix, a colour
// transform and a name.
GCTRL_INFO OwningPlacement(uint16_t id, uint16_t depth) {
    GCTRL_INFO info = {};
    info.characterId = id;
    info.depth = depth;
    info.matrix = new GMatrix();
    info.cxform = new GCxform();
    info.name = static_cast<char*>(tovMalloc(4));
    std::memcpy(info.name, "abc", 4);
    return info;
}

}  // namespace

TEST(GDictionaryTable, StartsWith32SlotsAndGrowsToLargestIdPlus32WithNewSlotsEmpty) {
    struct Case {
        uint16_t first, second;
        unsigned capacity;
    };
    // Id 0 defined twice (the second refused) keeps the initial 32 slots.
    for (const Case& c : {Case{0, 0, 32}, Case{3, 40, 72}}) {
        DictionaryFixture f({{c.first, SquareShape(c.first)}, {c.second, SquareShape(c.second)}});
        EXPECT_EQ(f.dict.capacity, c.capacity);
        for (unsigned i = 0; i < c.capacity; ++i)
            EXPECT_EQ(f.dict.slots[i], i == c.first ? f.Tag(0) : i == c.second ? f.Tag(1) : nullptr) << i;
        EXPECT_EQ(f.LastError(), c.first == c.second ? unsigned{kErrDuplicateId} : 0u);
    }
}

TEST(GDictionaryTable, SecondDefinitionOfAnIdIsRefusedAndTheFirstStays) {
    DictionaryFixture f({{5, SquareShape(5)}, {5, SquareShape(5, {0, 255, 0, 255})}});
    EXPECT_EQ(f.LastError(), unsigned{kErrDuplicateId});
    EXPECT_EQ(f.dict.slots[5], f.Tag(0));
}

TEST(GDictionaryTable, ResetWalkEndsOnTablesBeyond65536Slots) {
    DictionaryFixture f({{65535, SquareShape(65535)}, {7, SquareShape(7)}});
    ASSERT_EQ(f.dict.capacity, 65535u + 32u);
    BChar* ch = f.dict.NewChar(65535);
    ASSERT_NE(ch, nullptr);
    f.dict.Reset(0);  // must return (and free the built shape) rather than loop
    EXPECT_EQ(f.dict.capacity, 65535u + 32u);
    EXPECT_EQ(f.dict.slots[65535], nullptr);
    EXPECT_EQ(f.dict.slots[7], nullptr);
}

TEST(GDictionaryChars, SameShapeAtTwoDepthsIsBuiltOnceAndGivenBackWithTheLastActor) {
    DictionaryFixture f({{9, SquareShape(9)}});
    GCTRL_INFO a = {9, 9, 0, 0, nullptr, nullptr, nullptr, 0};
    a.depth = 1;
    GCTRL_INFO b = a;
    b.depth = 2;
    GActor* first = f.dict.NewActor(&a);
    GActor* second = f.dict.NewActor(&b);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    ASSERT_EQ(first->character, second->character);
    EXPECT_EQ(first->character->refCount, 2);
    EXPECT_NE(f.dict.slots[9], f.Tag(0));  // now the wrapper of the built shape

    f.dict.DeleteActor(first);
    EXPECT_EQ(second->character->refCount, 1);
    EXPECT_NE(f.dict.slots[9], f.Tag(0));

    f.dict.DeleteActor(second);
    EXPECT_EQ(f.dict.slots[9], f.Tag(0));  // raw tag again: the next use rebuilds

    GActor* again = f.dict.NewActor(&a);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->character->refCount, 1);
    f.dict.DeleteActor(again);
}

TEST(GDictionaryChars, GetTypeOfABuiltCharacterIsItsDefinitionCode) {
    DictionaryFixture f({{4, SquareShape(4, {1, 2, 3, 255}, 2)}});
    EXPECT_EQ(f.dict.GetType(4), 22);
    BChar* ch = f.dict.NewChar(4);
    ASSERT_NE(ch, nullptr);
    EXPECT_EQ(f.dict.GetType(4), 22);
    EXPECT_EQ(ch->id, 4);
    EXPECT_EQ(ch->defTag, f.Tag(0));
    EXPECT_EQ(ch->refCount, 1);
}

TEST(GDictionaryChars, UndefinedIdsPush2003AndNonCharacterTagsPush2004) {
    DictionaryFixture f({{1, swf::SetBackgroundColor({1, 2, 3, 255})}, {2, swf::ShowFrame()}});
    EXPECT_EQ(f.dict.NewChar(3), nullptr);
    EXPECT_EQ(f.LastError(), unsigned{kErrUnknownId});
    EXPECT_EQ(f.dict.GetChar(500), nullptr);
    EXPECT_EQ(f.LastError(), unsigned{kErrUnknownId});
    EXPECT_EQ(f.dict.GetType(31), 0);
    EXPECT_EQ(f.LastError(), unsigned{kErrUnknownId});
    EXPECT_EQ(f.dict.NewChar(1), nullptr);
    EXPECT_EQ(f.LastError(), unsigned{kErrNotCharacter});
    EXPECT_EQ(f.dict.NewChar(2), nullptr);  // code 1 lies outside the character codes
    EXPECT_EQ(f.LastError(), unsigned{kErrNotCharacter});
    EXPECT_EQ(f.dict.slots[1], f.Tag(0));
}

TEST(GDictionaryChars, AFailedLoadPushesTheKindsCodeAndKeepsTheRawTag) {
    const swf::Rect flat{0, 0, 0, 200, 0};  // xmin == xmax: rejected
    swf::Shape s({swf::Fill::Solid({})}, {});
    s.MoveTo(0, 0).Fill1(1).LineTo(10, 10);
    struct Case {
        int version;
        unsigned code;
    } cases[] = {{1, kErrLoadShape}, {2, kErrLoadShape2}, {3, kErrLoadShape3}};
    for (const Case& c : cases) {
        DictionaryFixture f({{3, swf::DefineShape(3, flat, s, c.version)}});
        EXPECT_EQ(f.dict.NewChar(3), nullptr);
        EXPECT_EQ(f.LastError(), c.code) << c.version;
        EXPECT_EQ(f.dict.slots[3], f.Tag(0));
        EXPECT_EQ(f.dict.NewChar(3), nullptr);  // tried again, failing again
        EXPECT_EQ(f.LastError(), c.code);
    }
}

TEST(GDictionaryPlacement, PlacingABitmapOrAnUndefinedIdPlacesNothingAndFreesTheRecord) {
    // A bitmap builds no character and is not an error; an unknown id is.
    const std::pair<uint16_t, unsigned> cases[] = {{6, 0u}, {12, kErrUnknownId}};
    for (const auto& [id, error] : cases) {
        DictionaryFixture f({{6, swf::Tag(6, {6, 0, 0xFF, 0xD8, 0xFF, 0xD9})}});
        GCTRL_INFO info = OwningPlacement(id, 1);
        EXPECT_EQ(f.dict.NewActor(&info), nullptr);
        EXPECT_EQ(f.LastError(), error);
        EXPECT_EQ(info.matrix, nullptr);
        EXPECT_EQ(info.cxform, nullptr);
        EXPECT_EQ(info.name, nullptr);
        EXPECT_EQ(f.dict.slots[6], f.Tag(0));
    }
    DictionaryFixture f({});
    EXPECT_EQ(f.dict.NewActor(nullptr), nullptr);
    EXPECT_EQ(f.LastError(), unsigned{kErrNoPlacement});
    f.dict.DeleteActor(nullptr);  // a null actor is ignored
}

TEST(GDictionaryPlacement, AnActorTakesOverTheRecordsTransformAndName) {
    DictionaryFixture f({{2, SquareShape(2)}});
    GCTRL_INFO info = OwningPlacement(2, 7);
    GMatrix* m = info.matrix;
    GCxform* cx = info.cxform;
    char* name = info.name;
    info.ratio = 99;
    info.clipDepth = 12;
    GActor* actor = f.dict.NewActor(&info);
    ASSERT_NE(actor, nullptr);
    EXPECT_EQ(actor->depth, 7);
    EXPECT_EQ(actor->matrix, m);
    EXPECT_EQ(actor->cxform, cx);
    EXPECT_EQ(actor->name, name);
    EXPECT_EQ(actor->ratio, 99);
    EXPECT_EQ(actor->clipDepth, 12);
    // Only the name is cleared in the record; the matrix and colour transform
    // pointers stay but belong to the actor now.
    EXPECT_EQ(info.name, nullptr);
    EXPECT_EQ(info.matrix, m);
    f.dict.DeleteActor(actor);
}

TEST(GDictionarySprites, EachUseOfASpriteIdBuildsItsOwnInstance) {
    DictionaryFixture f({{8, TwoFrameSprite(8)}});
    GCTRL_INFO info = {};
    info.characterId = 8;
    info.depth = 1;
    GActor* a = f.dict.NewActor(&info);
    info.depth = 2;
    GActor* b = f.dict.NewActor(&info);
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    ASSERT_NE(a->character, b->character);
    EXPECT_EQ(f.dict.slots[8], f.Tag(0));
    BSprite* newest = static_cast<BSprite*>(b->character);
    BSprite* oldest = static_cast<BSprite*>(a->character);
    EXPECT_EQ(f.dict.spriteInstances, newest);
    EXPECT_EQ(newest->nextInstance, oldest);
    EXPECT_EQ(oldest->prevInstance, newest);
    EXPECT_EQ(oldest->refCount, 1);
    EXPECT_EQ(f.dict.GetType(8), 39);

    f.dict.DeleteActor(b);  // the head leaves the list
    EXPECT_EQ(f.dict.spriteInstances, oldest);
    EXPECT_EQ(oldest->prevInstance, nullptr);
    f.dict.DeleteActor(a);
    EXPECT_EQ(f.dict.spriteInstances, nullptr);
}

TEST(GDictionarySprites, PartialResetKeepsInstancesInReverseOrder) {
    DictionaryFixture f({{8, TwoFrameSprite(8)}});
    BChar* first = f.dict.NewChar(8);
    BChar* second = f.dict.NewChar(8);
    BChar* third = f.dict.NewChar(8);
    ASSERT_NE(third, nullptr);
    f.dict.Reset(0);
    EXPECT_EQ(f.dict.slots[8], nullptr);
    BSprite* head = f.dict.spriteInstances;
    ASSERT_EQ(head, first);
    EXPECT_EQ(head->prevInstance, nullptr);
    EXPECT_EQ(head->nextInstance, second);
    EXPECT_EQ(head->nextInstance->nextInstance, third);
    EXPECT_EQ(static_cast<BSprite*>(third)->nextInstance, nullptr);
    // The dictionary's destructor frees the instances (full reset).
}

TEST(GDictionaryAssist, NothingIsEverRegistered) {
    DictionaryFixture f({});
    int dummy = 0;
    f.dict.InsertAssist(8, &dummy);
    EXPECT_EQ(f.dict.GetAssist(8, 1), nullptr);
    EXPECT_EQ(f.dict.GetAssist(3, 1), nullptr);
}
