// Buttons as a host sees them: the up state drawn layer by layer with each
// record's matrix and colour transform, other states never drawn, sprites in
// a button animating, buttons inside sprites, and tags the engine skips.
#include <gtest/gtest.h>

#include <vector>

#include "api/EngineHost.h"
#include "fixture/SwfSprites.h"

namespace {

using host::BoxShape;
using host::Color;
using host::Engine;
using swf::Bytes;
using swf::ButtonRecord;
using swf::Matrix;
using swf::Place;

using host::kBlue;
using host::kGreen;
using host::kRed;
using host::kWhite;

// A 100 x 100 pixel movie on white: definitions, then one frame of
// placements and 29 empty frames.
Bytes Movie(const std::vector<Bytes>& defs, const std::vector<Bytes>& frame) {
    swf::Movie m = host::MovieOf();
    m.tags.Add(swf::SetBackgroundColor(Color(255, 255, 255)));
    for (const Bytes& d : defs) m.tags.Add(d);
    for (const Bytes& t : frame) m.tags.Add(t);
    while (m.tags.ShowFrames() < 30) m.tags.Add(swf::ShowFrame());
    return m.Build();
}

void Step(Engine& e, host::Pixels& px) {
    zelEngineForward(e.get(), 1, px.width, px.height, 1);
    zelEnginePlay(e.get(), px.get(), 0, 0, px.width, px.height, 0);
}

using swf::Record;

// Red, green and blue 10 px squares at the origin.
std::vector<Bytes> Squares() {
    return {BoxShape(1, 0, 0, 200, 200, Color(255, 0, 0)), BoxShape(2, 0, 0, 200, 200, Color(0, 255, 0)),
            BoxShape(3, 0, 0, 200, 200, Color(0, 0, 255))};
}

TEST(ButtonRender, UpStateDrawsEachRecordWithItsMatrixAndColourTransform) {
    // Layer 1: red square moved 20 px and turned blue by its transform;
    // layer 2: green square moved 40 px.
    ButtonRecord blue = Record(0x01, 1, 1, Matrix::Translate(400, 0));
    blue.cxform.mult = std::array<int16_t, 4>{0, 0, 0, 256};
    blue.cxform.add = std::array<int16_t, 4>{0, 0, 255, 0};
    for (bool second : {false, true}) {
        std::vector<Bytes> defs = Squares();
        const std::vector<ButtonRecord> records = {blue, Record(0x01, 2, 2, Matrix::Translate(800, 0))};
        defs.push_back(second ? swf::DefineButton2(20, records) : swf::DefineButton(20, records));
        Engine e(Movie(defs, {Place(20, 1, Matrix::Translate(0, 200))}));
        host::Pixels px(100, 100);
        Step(e, px);
        EXPECT_EQ(px.at(25, 15), kBlue) << second;
        EXPECT_EQ(px.at(45, 15), kGreen) << second;
        EXPECT_EQ(px.at(5, 15), kWhite) << second;
        EXPECT_EQ(e.Errors(), std::vector<unsigned>{}) << second;
    }
}

TEST(ButtonRender, OnlyTheUpStateIsDrawn) {
    std::vector<Bytes> defs = Squares();
    defs.push_back(swf::DefineButton2(20, {Record(0x02, 1, 1), Record(0x04, 2, 2, Matrix::Translate(400, 0)),
                                           Record(0x08, 3, 3, Matrix::Translate(800, 0))}));
    Engine e(Movie(defs, {Place(20, 1)}));
    host::Pixels px(100, 100);
    Step(e, px);
    for (int x : {5, 25, 45}) EXPECT_EQ(px.at(x, 5), kWhite) << x;
}

TEST(ButtonRender, FirstRecordOfALayerWinsAndLayerZeroIsNeverDrawn) {
    std::vector<Bytes> defs = Squares();
    defs.push_back(swf::DefineButton2(
        20, {Record(0x01, 1, 2), Record(0x01, 2, 2), Record(0x01, 3, 0, Matrix::Translate(400, 0))}));
    Engine e(Movie(defs, {Place(20, 1)}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
    EXPECT_EQ(px.at(25, 5), kWhite);
}

TEST(ButtonRender, LayersDrawInLayerOrderWhateverTheTagOrder) {
    std::vector<Bytes> defs = Squares();
    defs.push_back(swf::DefineButton2(20, {Record(0x01, 1, 5), Record(0x01, 2, 3)}));
    Engine e(Movie(defs, {Place(20, 1)}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
}

TEST(ButtonRender, SpriteInTheUpStateAnimates) {
    std::vector<Bytes> defs = Squares();
    defs.push_back(swf::SpriteOf(10, {{Place(1, 1)}, {swf::RemoveObject2(1), Place(2, 1)}}));
    defs.push_back(swf::DefineButton2(20, {Record(0x01, 10, 1, Matrix::Translate(200, 200))}));
    Engine e(Movie(defs, {Place(20, 1)}));
    host::Pixels px(100, 100);
    for (uint32_t colour : {kRed, kGreen, kRed, kGreen}) {
        Step(e, px);
        EXPECT_EQ(px.at(15, 15), colour);
        EXPECT_EQ(px.at(5, 5), kWhite);
    }
}

TEST(ButtonRender, ButtonInsideASpriteTakesTheSpritesTransform) {
    std::vector<Bytes> defs = Squares();
    defs.push_back(swf::DefineButton2(20, {Record(0x01, 1, 1)}));
    swf::Place2 p;
    p.depth = 1;
    p.characterId = 20;
    p.matrix = Matrix::Translate(600, 0);
    p.cxform = swf::Cxform{std::array<int16_t, 4>{0, 256, 256, 256}, std::nullopt, 0};
    defs.push_back(swf::SpriteOf(10, {{swf::PlaceObject2(p)}}));
    Engine e(Movie(defs, {Place(10, 1, Matrix::Translate(0, 600))}));
    host::Pixels px(100, 100);
    Step(e, px);
    // Red with its red channel removed by the placement inside the sprite.
    EXPECT_EQ(px.at(35, 35), 0xFF000000);
    EXPECT_EQ(px.at(5, 35), kWhite);
}

TEST(ButtonRender, ButtonColourTransformTagIsSkipped) {
    std::vector<Bytes> defs = Squares();
    defs.push_back(swf::DefineButton2(20, {Record(0x01, 1, 1)}));
    defs.push_back(swf::DefineButtonCxform(20, swf::Cxform{std::array<int16_t, 4>{0, 0, 0, 256}, std::nullopt, 0}));
    Engine e(Movie(defs, {Place(20, 1)}));
    host::Pixels px(100, 100);
    Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
    EXPECT_EQ(e.Errors(), std::vector<unsigned>{});
}

TEST(ButtonRender, ButtonsThatShowThemselvesStillDraw) {
    std::vector<Bytes> defs = Squares();
    defs.push_back(swf::SpriteOf(10, {{Place(20, 1, Matrix::Translate(400, 0))}}));
    defs.push_back(swf::DefineButton2(20, {Record(0x01, 20, 1), Record(0x01, 1, 2), Record(0x01, 10, 3)}));
    Engine e(Movie(defs, {Place(20, 1)}));
    host::Pixels px(100, 100);
    for (int i = 0; i < 3; ++i) Step(e, px);
    EXPECT_EQ(px.at(5, 5), kRed);
    EXPECT_EQ(px.at(25, 5), kRed);  // the button again, one sprite level down
}

}  // namespace
