// Display-list behaviour: depth order, taken depths, moves, replacements and
// removals, what each hands over, and which screen areas each reports.
#include <gtest/gtest.h>

#include <vector>

#include "display/BChar.h"
#include "display/DictionaryFixture.h"
#include "display/GActor.h"
#include "parse/GParser.h"
#include "render/GClipBox.h"

namespace {

// One area report: inserted (true) or removed, and the x translation.
using Report = std::pair<bool, double>;
using Reports = std::vector<Report>;

// A character that records every area report with the matrix it was given
// (its x translation identifies the area).
class ProbeChar : public BChar {
public:
    std::vector<Report> reports;

    using BChar::GetBoundingBox;
    _GRECT GetBoundingBox(GMatrix* m) override {
        _GRECT r = {0, 0, 200, 200};
        return BChar::GetBoundingBox(m, r);
    }
    void Insert(GClipBox* clip, GMatrix* m) override {
        reports.emplace_back(true, m ? m->m[0][2] : 0.0);
        BChar::Insert(clip, m);
    }
    void Remove(GClipBox* clip, GMatrix* m) override {
        reports.emplace_back(false, m ? m->m[0][2] : 0.0);
        BChar::Remove(clip, m);
    }
};

GMatrix* Translate(double x) {
    GMatrix* m = new GMatrix();
    m->m[0][2] = x;
    return m;
}

// A list whose actors are all freed at the end of the test.
struct List {
    ProbeChar ch;
    GClipBox clip;
    GActor* head = nullptr;

    GActor* Make(uint16_t depth, GMatrix* m = nullptr) {
        GActor* a = new GActor;
        a->depth = depth;
        a->matrix = m;
        a->character = &ch;
        return a;
    }
    std::vector<uint16_t> Depths() const {
        std::vector<uint16_t> out;
        const GActor* prev = nullptr;
        for (const GActor* a = head; a; a = a->next) {
            EXPECT_EQ(a->prev, prev);
            out.push_back(a->depth);
            prev = a;
        }
        return out;
    }
    ~List() {
        while (head) {
            GActor* next = head->next;
            delete head;
            head = next;
        }
    }
};

GCTRL_INFO Move(uint16_t depth, uint8_t flags) {
    GCTRL_INFO info = {};
    info.depth = depth;
    info.placeFlags = flags;
    return info;
}

}  // namespace

TEST(GActorInsert, KeepsTheListInAscendingDepthOrder) {
    List l;
    for (uint16_t d : {5, 1, 3}) l.head = GActor::Insert(l.Make(d), &l.clip, l.head, nullptr);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{1, 3, 5}));
    l.head = GActor::Insert(l.Make(9), &l.clip, l.head, nullptr);
    l.head = GActor::Insert(l.Make(4), &l.clip, l.head, nullptr);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{1, 3, 4, 5, 9}));
    EXPECT_EQ(GActor::Insert(nullptr, &l.clip, l.head, nullptr), l.head);
}

TEST(GActorInsert, ATakenDepthKeepsTheFirstActorAndStillReportsTheNewcomersArea) {
    List l;
    GActor* first = l.Make(2, Translate(0));
    l.head = GActor::Insert(first, &l.clip, l.head, nullptr);
    l.ch.reports.clear();
    // The newcomer is destroyed by Insert itself (its matrix with it).
    l.head = GActor::Insert(l.Make(2, Translate(4000)), &l.clip, l.head, nullptr);
    EXPECT_EQ(l.head, first);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{2}));
    EXPECT_EQ(l.ch.reports, (Reports{{true, 4000}}));
    EXPECT_EQ(l.clip.boxes.GetCount(), 2);  // both areas are dirty
}

TEST(GActorInsert, ATakenDepthKeepsTheReferenceTheNewcomerTook) {
    DictionaryFixture f({{1, SquareShape(1)}});
    GClipBox clip;
    GCTRL_INFO info = {};
    info.characterId = 1;
    info.depth = 3;
    GActor* head = GActor::Insert(f.dict.NewActor(&info), &clip, nullptr, nullptr);
    head = GActor::Insert(f.dict.NewActor(&info), &clip, head, nullptr);
    ASSERT_EQ(head->next, nullptr);
    EXPECT_EQ(head->character->refCount, 2);
    f.dict.DeleteActor(head);
    // One reference is never given back: the shape stays built until the
    // dictionary itself goes.
    EXPECT_NE(f.dict.slots[1], f.Tag(0));
}

TEST(GActorInsert, ReportsTheActorsMatrixFollowedByTheOuterOne) {
    List l;
    GMatrix outer;
    outer.m[0][0] = 2.0;  // scale x by 2 after the actor's own translation
    l.head = GActor::Insert(l.Make(1, Translate(100)), &l.clip, l.head, &outer);
    EXPECT_EQ(l.ch.reports, (Reports{{true, 200}}));
    l.ch.reports.clear();
    l.head->RemoveOpt(&l.clip, nullptr);
    EXPECT_EQ(l.ch.reports, (Reports{{false, 100}}));
}

TEST(GActorModify, ColourTransformOnlyKeepsTheMatrixAndReportsOnce) {
    List l;
    GActor* a = l.Make(3, Translate(60));
    l.head = GActor::Insert(a, &l.clip, l.head, nullptr);
    GMatrix* oldMatrix = a->matrix;
    l.ch.reports.clear();
    GCTRL_INFO info = Move(3, kPlaceMove | kPlaceHasCxform);
    info.cxform = new GCxform();
    info.cxform->redAdd = 40;
    l.head = GActor::Modify(l.head, &l.clip, nullptr, &info);
    EXPECT_EQ(a->matrix, oldMatrix);
    ASSERT_NE(a->cxform, nullptr);
    EXPECT_EQ(a->cxform->redAdd, 40);
    EXPECT_EQ(info.cxform, nullptr);
    EXPECT_EQ(l.ch.reports, (Reports{{true, 60}}));
}

TEST(GActorModify, ANewMatrixReportsTheOldAndTheNewArea) {
    List l;
    l.head = GActor::Insert(l.Make(3, Translate(0)), &l.clip, l.head, nullptr);
    l.clip.Create(100, 100);
    l.ch.reports.clear();
    GCTRL_INFO info = Move(3, kPlaceMove | kPlaceHasMatrix | kPlaceHasRatio | kPlaceHasClipDepth);
    info.matrix = Translate(4000);
    info.ratio = 300;
    info.clipDepth = 8;
    l.head = GActor::Modify(l.head, &l.clip, nullptr, &info);
    EXPECT_EQ(l.ch.reports, (Reports{{false, 0}, {true, 4000}}));
    EXPECT_EQ(l.clip.boxes.GetCount(), 2);
    EXPECT_EQ(l.head->matrix->m[0][2], 4000);
    EXPECT_EQ(l.head->ratio, 300);
    EXPECT_EQ(l.head->clipDepth, 8);
    EXPECT_EQ(info.matrix, nullptr);
}

TEST(GActorModify, AMoveNeverRenamesAndAMissingDepthDropsTheRecord) {
    List l;
    l.head = GActor::Insert(l.Make(3), &l.clip, l.head, nullptr);
    GCTRL_INFO info = Move(3, kPlaceMove | kPlaceHasName);
    char name[] = "new";
    info.name = name;
    l.head = GActor::Modify(l.head, &l.clip, nullptr, &info);
    EXPECT_EQ(l.head->name, nullptr);
    EXPECT_EQ(info.name, name);

    GCTRL_INFO missing = Move(4, kPlaceMove | kPlaceHasMatrix | kPlaceHasCxform);
    missing.matrix = Translate(1);
    missing.cxform = new GCxform();
    l.ch.reports.clear();
    l.head = GActor::Modify(l.head, &l.clip, nullptr, &missing);
    EXPECT_EQ(missing.matrix, nullptr);
    EXPECT_EQ(missing.cxform, nullptr);
    EXPECT_TRUE(l.ch.reports.empty());

    GCTRL_INFO onEmpty = Move(1, kPlaceMove | kPlaceHasMatrix);
    onEmpty.matrix = Translate(1);
    EXPECT_EQ(GActor::Modify(nullptr, &l.clip, nullptr, &onEmpty), nullptr);
    EXPECT_EQ(onEmpty.matrix, nullptr);
}

TEST(GActorReplace, CarriesOverWhatTheRecordDoesNotSet) {
    List l;
    GActor* old = l.Make(5, Translate(80));
    old->cxform = new GCxform();
    old->ratio = 11;
    old->clipDepth = 9;
    l.head = GActor::Insert(l.Make(1), &l.clip, l.head, nullptr);
    l.head = GActor::Insert(old, &l.clip, l.head, nullptr);
    l.head = GActor::Insert(l.Make(7), &l.clip, l.head, nullptr);
    GMatrix* oldMatrix = old->matrix;
    GCxform* oldCxform = old->cxform;

    GCTRL_INFO info = Move(5, kPlaceMove | kPlaceHasCharacter | kPlaceHasRatio);
    info.ratio = 500;
    GActor* fresh = l.Make(5);
    fresh->ratio = 500;
    GActor* replaced = nullptr;
    l.ch.reports.clear();
    l.head = GActor::Replace(l.head, &l.clip, &info, fresh, replaced, nullptr);
    ASSERT_EQ(replaced, old);
    EXPECT_EQ(fresh->matrix, oldMatrix);
    EXPECT_EQ(fresh->cxform, oldCxform);
    EXPECT_EQ(old->matrix, nullptr);
    EXPECT_EQ(old->cxform, nullptr);
    EXPECT_EQ(fresh->ratio, 500);
    EXPECT_EQ(fresh->clipDepth, 9);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{1, 5, 7}));
    EXPECT_EQ(l.head->next, fresh);
    EXPECT_EQ(l.ch.reports, (Reports{{false, 80}, {true, 80}}));
    delete old;
}

TEST(GActorReplace, TheRecordsMatrixAndColourTransformWinWhenSet) {
    List l;
    GActor* old = l.Make(2, Translate(80));
    l.head = GActor::Insert(old, &l.clip, l.head, nullptr);
    GCTRL_INFO info = Move(2, kPlaceMove | kPlaceHasCharacter | kPlaceHasMatrix | kPlaceHasCxform);
    GActor* fresh = l.Make(2, Translate(10));
    fresh->cxform = new GCxform();
    GCxform* freshCxform = fresh->cxform;
    GActor* replaced = nullptr;
    l.head = GActor::Replace(l.head, &l.clip, &info, fresh, replaced, nullptr);
    EXPECT_EQ(l.head, fresh);  // replacing the head makes the newcomer the head
    EXPECT_EQ(fresh->matrix->m[0][2], 10);
    EXPECT_EQ(fresh->cxform, freshCxform);
    EXPECT_EQ(fresh->ratio, 0);
    EXPECT_NE(old->matrix, nullptr);
    delete replaced;
}

TEST(GActorReplace, AnEmptyOrMissingDepthInsertsTheNewActor) {
    List l;
    GCTRL_INFO info = Move(4, kPlaceMove | kPlaceHasCharacter);
    GActor* replaced = reinterpret_cast<GActor*>(&info);
    l.head = GActor::Replace(l.head, &l.clip, &info, l.Make(4), replaced, nullptr);
    EXPECT_EQ(replaced, nullptr);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{4}));
    GCTRL_INFO before = Move(2, kPlaceMove | kPlaceHasCharacter);
    l.head = GActor::Replace(l.head, &l.clip, &before, l.Make(2), replaced, nullptr);
    EXPECT_EQ(replaced, nullptr);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{2, 4}));
}

TEST(GActorRemove, UnlinksTheActorAndReportsItsArea) {
    List l;
    for (uint16_t d : {1, 2, 3}) l.head = GActor::Insert(l.Make(d), &l.clip, l.head, nullptr);
    GActor* removed = nullptr;
    l.ch.reports.clear();
    GActor* oldHead = l.head;
    l.head = GActor::Remove(l.head, &l.clip, 1, removed, nullptr);
    EXPECT_EQ(removed, oldHead);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{2, 3}));
    EXPECT_EQ(l.ch.reports, (Reports{{false, 0}}));
    delete removed;

    l.head = GActor::Remove(l.head, &l.clip, 3, removed, nullptr);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{2}));
    delete removed;

    l.head = GActor::Remove(l.head, &l.clip, 7, removed, nullptr);
    EXPECT_EQ(removed, nullptr);
    EXPECT_EQ(l.Depths(), (std::vector<uint16_t>{2}));
    EXPECT_EQ(GActor::Remove(nullptr, &l.clip, 2, removed, nullptr), nullptr);
    EXPECT_EQ(removed, nullptr);
}

TEST(GActorLifetime, DestructorFreesTheTransformAndTheName) {
    GActor* a = new GActor;
    a->matrix = Translate(3);
    a->cxform = new GCxform();
    a->name = static_cast<char*>(tovMalloc(8));
    delete a;  // the leak checker verifies that all three went with it
}
