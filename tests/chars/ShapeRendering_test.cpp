// Shapes and morphs drawn through a real stage into a pixel buffer: the
// placed instance's matrix reaches the renderer, a morph is drawn at its
// actor's ratio, and a morph whose load failed draws nothing.
#include <gtest/gtest.h>

#include <vector>

#include "chars/BMorph.h"
#include "display/DictionaryFixture.h"
#include "display/GActor.h"
#include "render/GStage.h"

namespace {

constexpr int kSize = 20;

// A 20 x 20 ARGB buffer, a stage drawing into it and a dictionary whose
// actors the stage releases.
class Scene {
public:
    explicit Scene(const std::vector<std::pair<uint16_t, swf::Bytes>>& defs)
        : f(defs), pixels(kSize * kSize, 0) {
        stage.dictionary = &f.dict;
        off = {0, 0, kSize, kSize, ZEL_FORMAT_ARGB32, reinterpret_cast<intptr_t>(pixels.data()), kSize * 4};
    }
    ~Scene() { stage.Reset(0); }

    GActor* Place(uint16_t id, uint16_t depth, int32_t tx = 0, uint16_t ratio = 0) {
        GCTRL_INFO info = {};
        info.characterId = id;
        info.depth = depth;
        info.ratio = ratio;
        info.matrix = new GMatrix();
        info.matrix->m[0][2] = tx;
        GActor* a = f.dict.NewActor(&info);
        stage.actors = GActor::Insert(a, &stage.clipBoxes, stage.actors, nullptr);
        return a;
    }
    void Draw() { stage.Raster(&off, 0, 0, 0, 0, 1, &f.dict); }
    uint32_t Pixel(int x, int y) const { return pixels[static_cast<size_t>(y * kSize + x)]; }

    DictionaryFixture f;
    GStage stage;

private:
    std::vector<uint32_t> pixels;
    _GOFFSCR off;
};

swf::Bytes SolidMorph(uint16_t id, swf::Rgba from, swf::Rgba to, uint8_t fillType = 0x00) {
    swf::Shape start;
    start.MoveTo(0, 0).Fill0(1).LineTo(200, 0).LineTo(200, 200).LineTo(0, 200).LineTo(0, 0);
    swf::Shape end;
    end.MoveTo(0, 0).LineTo(200, 0).LineTo(200, 200).LineTo(0, 200).LineTo(0, 0);
    swf::MorphFill fill = swf::MorphFill::Solid(from, to);
    fill.type = fillType;
    return swf::DefineMorphShape(id, swf::Rect{0, 200, 0, 200, 0}, swf::Rect{0, 200, 0, 200, 0}, {fill}, {},
                                 start, end);
}

}  // namespace

TEST(ShapeRendering, APlacedShapeIsDrawnUnderItsMatrix) {
    Scene s({{1, SquareShape(1, {255, 0, 0, 255})}});
    s.Place(1, 1, 100);  // 5 pixels to the right
    s.Draw();
    EXPECT_EQ(s.Pixel(10, 5), 0xFFFF0000u);
    EXPECT_EQ(s.Pixel(2, 5), 0u);
    EXPECT_EQ(s.Pixel(17, 5), 0u);
}

TEST(ShapeRendering, AMorphIsDrawnAtItsActorsRatio) {
    struct Case {
        uint16_t ratio;
        uint32_t pixel;
    } cases[] = {{0, 0xFFFF0000u}, {65535, 0xFF0000FFu}};
    for (const Case& c : cases) {
        Scene s({{2, SolidMorph(2, {255, 0, 0, 255}, {0, 0, 255, 255})}});
        s.Place(2, 1, 0, c.ratio);
        s.Draw();
        EXPECT_EQ(s.Pixel(5, 5), c.pixel) << c.ratio;
    }
}

TEST(ShapeRendering, AMorphThatFailedToLoadIsNeverDrawn) {
    Scene s({{2, SolidMorph(2, {255, 0, 0, 255}, {0, 0, 255, 255}, 0x13)},
             {3, SolidMorph(3, {0, 255, 0, 255}, {0, 255, 0, 255})}});
    s.Draw();  // makes the canvas over the buffer
    BMorph broken;
    EXPECT_EQ(broken.LoadSWFFile(s.f.Tag(0), &s.f.dict), 0);
    GActor actor;
    actor.character = &broken;
    broken.Rendering(&s.stage, &actor, nullptr, &s.f.dict);
    EXPECT_EQ(s.Pixel(5, 5), 0u);

    // The same call on a morph that loaded does draw.
    BMorph good;
    ASSERT_EQ(good.LoadSWFFile(s.f.Tag(1), &s.f.dict), 1);
    actor.character = &good;
    good.Rendering(&s.stage, &actor, nullptr, &s.f.dict);
    EXPECT_EQ(s.Pixel(5, 5), 0xFF00FF00u);
}
