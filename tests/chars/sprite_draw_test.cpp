// Which children a sprite asks to draw: plain children culled against the
// dirty box being painted and skipped under a fully transparent instance,
// complex children always drawn, each with the instance's context.
#include <gtest/gtest.h>

#include "chars/BSprite.h"
#include "display/GActor.h"
#include "render/GStage.h"

namespace {

// A plain character with fixed bounds that counts its draws.
class SpyShape : public BChar {
public:
    using BChar::GetBoundingBox;
    explicit SpyShape(_GRECT b) : bounds(b) {}
    _GRECT GetBoundingBox(GMatrix* m) override { return BChar::GetBoundingBox(m, bounds); }
    void Rendering(GStage*, GActor*, GCTRL_INFO* ctx, GDictionary*) override {
        ++draws;
        lastCxform = ctx && ctx->cxform ? *ctx->cxform : GCxform();
    }
    _GRECT bounds;
    int draws = 0;
    GCxform lastCxform;
};

class SpyComplex : public BComplexChar {
public:
    void Rendering(GStage*, GActor*, GCTRL_INFO* ctx, GDictionary*) override {
        ++draws;
        translateX = ctx && ctx->matrix ? ctx->matrix->m[0][2] : 0;
    }
    int draws = 0;
    double translateX = 0;
};

// A one-frame sprite holding the given characters at depths 1, 2, ...
struct Scene {
    BSprite sprite;
    GStage stage;
    GActor placed;  // the sprite's own placement

    explicit Scene(std::initializer_list<BChar*> children) {
        sprite.frameCount = 1;
        uint16_t depth = 0;
        GActor* tail = nullptr;
        for (BChar* ch : children) {
            auto* a = new GActor;
            a->depth = ++depth;
            a->character = ch;
            (tail ? tail->next : sprite.actors) = a;
            a->prev = tail;
            tail = a;
        }
        placed.character = &sprite;
        stage.curClipBox = _GRECT{0, 0, 2000, 2000};
    }
    void Draw() { sprite.Rendering(&stage, &placed, nullptr, nullptr); }
};

TEST(SpriteDraw, PlainChildOutsideTheDirtyBoxIsCulledComplexChildIsNot) {
    SpyShape inside(_GRECT{100, 100, 300, 300}), edge(_GRECT{2000, 0, 2400, 200}), outside(_GRECT{3000, 0, 3200, 200});
    SpyComplex complex;
    Scene s({&inside, &edge, &outside, &complex});
    s.placed.matrix = new GMatrix();
    s.placed.matrix->m[0][2] = 500;  // moves "inside" to 600..800: still inside
    s.Draw();
    EXPECT_EQ(inside.draws, 1);
    EXPECT_EQ(edge.draws, 0);  // moved to 2500: past the box
    EXPECT_EQ(outside.draws, 0);
    EXPECT_EQ(complex.draws, 1);
    EXPECT_EQ(complex.translateX, 500);
    s.placed.matrix->m[0][2] = 0;
    s.Draw();
    EXPECT_EQ(edge.draws, 1);  // sharing the box's edge is enough
}

TEST(SpriteDraw, TransparentInstanceDrawsOnlyItsComplexChildren) {
    SpyShape shape(_GRECT{0, 0, 200, 200});
    SpyComplex complex;
    Scene s({&shape, &complex});
    s.placed.cxform = new GCxform();
    s.placed.cxform->alphaMult = 0;
    s.Draw();
    EXPECT_EQ(shape.draws, 0);
    EXPECT_EQ(complex.draws, 1);
    // An addend keeps it visible.
    s.placed.cxform->alphaAdd = 10;
    s.Draw();
    EXPECT_EQ(shape.draws, 1);
    EXPECT_EQ(shape.lastCxform.alphaAdd, 10);
}

TEST(SpriteDraw, EmptySpriteOrZeroFramesDrawsNothing) {
    SpyShape shape(_GRECT{0, 0, 200, 200});
    Scene s({&shape});
    s.sprite.frameCount = 0;
    s.Draw();
    EXPECT_EQ(shape.draws, 0);
    Scene empty(std::initializer_list<BChar*>{});
    empty.Draw();
    EXPECT_EQ(BSprite::Nesting::Depth(), 0);
}

}  // namespace
