// Hostile definition tags (flipped bytes, cut short, lying lengths) are built,
// placed and drawn: nothing may read outside the movie, leak or hang (the
// sanitizer build checks); a load may fail, but only by returning 0.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "display/DictionaryFixture.h"
#include "display/GActor.h"
#include "render/GStage.h"

namespace {

swf::Bytes MorphSample() {
    swf::Shape start;
    start.MoveTo(0, 0).Fill0(1).LineStyle(1).LineTo(200, 0).CurveTo(300, 100, 200, 200).LineTo(0, 0);
    swf::Shape end;
    end.MoveTo(10, 10).LineTo(100, 0).LineTo(150, 150).LineTo(10, 10);
    std::vector<swf::MorphStop> stops = {{0, {255, 0, 0, 255}, 0, {0, 255, 0, 255}},
                                         {255, {0, 0, 255, 255}, 255, {9, 9, 9, 9}}};
    return swf::DefineMorphShape(
        1, swf::Rect{0, 300, 0, 200, 0}, swf::Rect{0, 150, 0, 150, 0},
        {swf::MorphFill::Solid({1, 2, 3, 4}, {5, 6, 7, 8}),
         swf::MorphFill::Gradient(0x10, swf::Matrix::Scale(0.1, 0.1, 100, 100), swf::Matrix(), stops)},
        {swf::MorphLine{20, 40, {1, 1, 1, 255}, {2, 2, 2, 255}}}, start, end);
}

swf::Bytes ShapeSample(int version) {
    swf::Shape s({swf::Fill::Solid({255, 0, 0, 255}),
                  swf::Fill::Radial(swf::Matrix::Scale(0.05, 0.05, 100, 100), {{0, {}}, {255, {0, 0, 255, 255}}})},
                 {swf::Line{20, {0, 0, 0, 255}}});
    s.MoveTo(0, 0).Fill1(1).LineStyle(1).LineTo(300, 0).CurveTo(400, 100, 300, 300);
    s.NewStyles({swf::Fill::Solid({0, 255, 0, 255})}, {swf::Line{40, {}}}).Fill0(1).LineTo(0, 300).LineTo(0, 0);
    return swf::DefineShape(1, swf::Rect{0, 400, 0, 300, 0}, s, version);
}

// Builds, places, draws and removes the character defined by `tag`.
void Exercise(const swf::Bytes& tag) {
    std::vector<uint32_t> pixels(16 * 16, 0);
    DictionaryFixture f({{1, tag}});
    GStage stage;
    stage.dictionary = &f.dict;
    _GOFFSCR off = {0, 0, 16, 16, ZEL_FORMAT_ARGB32, reinterpret_cast<intptr_t>(pixels.data()), 64};
    GCTRL_INFO info = {};
    info.characterId = 1;
    info.depth = 1;
    info.ratio = 30000;
    stage.actors = GActor::Insert(f.dict.NewActor(&info), &stage.clipBoxes, stage.actors, nullptr);
    stage.Raster(&off, 0, 0, 0, 0, 1, &f.dict);
    stage.Reset(0);
}

void Mutate(const swf::Bytes& sample, uint32_t seed) {
    std::mt19937 rng(seed);
    for (int round = 0; round < 400; ++round) {
        swf::Bytes tag = sample;
        int flips = 1 + static_cast<int>(rng() % 4);
        for (int i = 0; i < flips; ++i) {
            size_t at = 2 + rng() % (tag.size() - 2);  // the header stays, so the code does
            tag[at] = static_cast<uint8_t>(rng());
        }
        if (rng() % 4 == 0) tag.resize(2 + rng() % (tag.size() - 2));  // cut by the movie's end
        Exercise(tag);
    }
}

}  // namespace

TEST(HostileTags, MutatedShapesAreSafeToBuildAndDraw) {
    for (int version : {1, 2, 3}) Mutate(ShapeSample(version), 1000u + static_cast<uint32_t>(version));
}

TEST(HostileTags, MutatedMorphsAreSafeToBuildAndDraw) { Mutate(MorphSample(), 77u); }

TEST(HostileTags, LyingLengthsAreBoundedByTheMovie) {
    for (uint16_t code : {2, 22, 32, 46}) {
        swf::Bytes sample = code == 46 ? MorphSample() : ShapeSample(code == 2 ? 1 : code == 22 ? 2 : 3);
        swf::Bytes body(sample.begin() + ((sample[0] & 0x3F) == 0x3F ? 6 : 2), sample.end());
        for (uint32_t declared : {0u, 1u, 5u, 0x7FFFFFFFu, 0xFFFFFFFFu})
            Exercise(swf::TagWithLength(code, body, declared, true));
    }
}
