// Hostile nesting: the walk budget by movie size and the bound on the
// instances of one tree (the level bound shows in the corpus's pictures).
#include <gtest/gtest.h>

#include <vector>

#include "chars/BSprite.h"
#include "display/DictionaryFixture.h"
#include "display/GActor.h"
#include "fixture/SwfBuilder.h"

namespace {

using swf::Bytes;

// A sprite of one frame that places `id` at depths 1 to `copies`, then an
// empty frame.
Bytes SelfPlacing(uint16_t id, uint16_t copies) {
    swf::Tags tags;
    for (uint16_t depth = 1; depth <= copies; ++depth) {
        swf::Place2 p;
        p.depth = depth, p.characterId = id;
        tags.Add(swf::PlaceObject2(p));
    }
    tags.Add(swf::ShowFrame()).Add(swf::ShowFrame());
    return swf::DefineSprite(id, tags);
}

BSprite* Build(DictionaryFixture& f, uint16_t id) { return static_cast<BSprite*>(f.dict.NewChar(id)); }

int Frame(BSprite* s) {
    s->EndScanFrame();
    return s->PrepareData(nullptr, nullptr, 0);
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

TEST(SpriteNesting, SpriteThatPlacesItselfManyTimesStopsAtTheInstanceBound) {
    // Four self-placements per instance: a full tree 63 levels deep would
    // hold 4^63 instances.
    DictionaryFixture f({{5, SelfPlacing(5, 4)}});
    BSprite* s = Build(f, 5);
    for (int i = 0; i < 8; ++i) Frame(s);
    EXPECT_EQ(s->TreeInstances(), BSprite::kMaxTreeInstances);
    EXPECT_EQ(InstanceCount(f.dict), BSprite::kMaxTreeInstances + 1);
    GActor actor;
    _GRECT b = s->GetBoundingBox(nullptr, &actor, nullptr);
    EXPECT_TRUE(IsEmptyRect(b));
}

}  // namespace
