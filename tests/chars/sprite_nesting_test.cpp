// Hostile nesting: the walk budget by movie size, sprites that place
// themselves or each other, and chains thousands deep stop at their bounds.
#include <gtest/gtest.h>

#include <vector>

#include "chars/BSprite.h"
#include "display/DictionaryFixture.h"
#include "display/GActor.h"
#include "fixture/SwfBuilder.h"
#include "render/GClipBox.h"

namespace {

using swf::Bytes;

// A sprite whose timeline is `frames`, each closed by a ShowFrame.
Bytes SpriteOf(uint16_t id, const std::vector<std::vector<Bytes>>& frames) {
    swf::Tags tags;
    for (const std::vector<Bytes>& frame : frames) {
        for (const Bytes& tag : frame) tags.Add(tag);
        tags.Add(swf::ShowFrame());
    }
    return swf::DefineSprite(id, tags);
}

Bytes Place(uint16_t id, uint16_t depth) {
    swf::Place2 p;
    p.depth = depth;
    p.characterId = id;
    return swf::PlaceObject2(p);
}

BSprite* Build(DictionaryFixture& f, uint16_t id) { return static_cast<BSprite*>(f.dict.NewChar(id)); }

int Frame(BSprite* s, GClipBox* clip = nullptr) {
    s->EndScanFrame();
    return s->PrepareData(clip, nullptr, 0);
}

// Levels of sprites below s, following the first child that is a sprite.
int ChainLength(BSprite* s) {
    int n = 0;
    for (GActor* a = s->actors; a;) {
        if (!a->character || !a->character->IsComplex()) {
            a = a->next;
            continue;
        }
        ++n;
        a = static_cast<BSprite*>(a->character)->actors;
    }
    return n;
}

int InstanceCount(const GDictionary& d) {
    int n = 0;
    for (const BSprite* s = d.spriteInstances; s; s = s->nextInstance) ++n;
    return n;
}

// The budget follows the movie's size: 64 levels a byte, between 2^14 and
// 2^18; without a dictionary, 2^18.
TEST(SpriteNesting, WalkBudgetEndsARunawayWalkAndRenewsForTheNext) {
    const struct {
        bool withDictionary;
        unsigned movieBytes;
        long budget;
    } cases[] = {{false, 0, 1L << 18}, {true, 255, 1L << 14}, {true, 1000, 64000}, {true, 100000, 1L << 18}};
    for (const auto& c : cases) {
        GDictionary dict;
        dict.movieBytes = c.movieBytes;
        {
            BSprite::Nesting outer(c.withDictionary ? &dict : nullptr);
            ASSERT_TRUE(outer.Entered());
            long entered = 1;
            for (long i = 0; i < BSprite::Nesting::kWalkBudget + 10; ++i) {
                BSprite::Nesting inner(&dict);
                if (inner.Entered()) ++entered;
            }
            EXPECT_EQ(entered, c.budget) << c.movieBytes;
        }
        BSprite::Nesting fresh;
        EXPECT_TRUE(fresh.Entered());
    }
}

TEST(SpriteNesting, SelfMutualAndDeepChainsStopAtTheLevelBound) {
    std::vector<std::pair<uint16_t, Bytes>> chain;
    for (uint16_t id = 5; id < 3005; ++id) chain.push_back({id, SpriteOf(id, {{Place(id + 1, 1)}})});
    const std::vector<std::pair<uint16_t, Bytes>> cases[] = {
        {{1, SquareShape(1)}, {5, SpriteOf(5, {{Place(1, 1), Place(5, 2)}})}},
        {{5, SpriteOf(5, {{Place(6, 1)}})}, {6, SpriteOf(6, {{Place(5, 1)}})}},
        chain,
    };
    for (const auto& defs : cases) {
        DictionaryFixture f(defs);
        BSprite* s = Build(f, 5);
        GClipBox clip;
        for (int i = 0; i < 5; ++i) Frame(s, &clip);
        // The outermost instance is level 1 of the walk; the instance made at
        // the last level is never prepared, so it places nothing.
        EXPECT_EQ(ChainLength(s), BSprite::Nesting::kMaxNesting) << defs.size();
        EXPECT_EQ(BSprite::Nesting::Depth(), 0);
    }
    DictionaryFixture self(cases[0]);
    BSprite* s = Build(self, 5);
    for (int i = 0; i < 5; ++i) Frame(s);
    EXPECT_EQ(s->TreeInstances(), BSprite::Nesting::kMaxNesting);
}

TEST(SpriteNesting, SpriteThatPlacesItselfManyTimesStopsAtTheInstanceBound) {
    // Four self-placements per instance: a full tree 63 levels deep would
    // hold 4^63 instances.
    DictionaryFixture f({{5, SpriteOf(5, {{Place(5, 1), Place(5, 2), Place(5, 3), Place(5, 4)}, {}})}});
    BSprite* s = Build(f, 5);
    for (int i = 0; i < 8; ++i) Frame(s);
    EXPECT_EQ(s->TreeInstances(), BSprite::kMaxTreeInstances);
    EXPECT_EQ(InstanceCount(f.dict), BSprite::kMaxTreeInstances + 1);
    GActor actor;
    _GRECT b = s->GetBoundingBox(nullptr, &actor, nullptr);
    EXPECT_TRUE(IsEmptyRect(b));
}

}  // namespace
