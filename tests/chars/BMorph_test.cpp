// Morph shapes: loading the parallel styles and both edge streams, every way a
// morph is rejected, and the in-between points, colours, gradients and pens
// for a ratio.
#include <gtest/gtest.h>

#include <array>

#include "chars/BMorph.h"
#include "display/DictionaryFixture.h"
#include "display/GActor.h"

namespace {

swf::Shape StartEdges() {
    swf::Shape s;
    s.MoveTo(0, 0).Fill0(1).LineStyle(1).LineTo(100, 0).CurveTo(150, 50, 100, 100);
    return s;
}

swf::Shape EndEdges() {
    swf::Shape s;
    s.MoveTo(20, 20).LineTo(300, 20).LineTo(300, 300);
    return s;
}

swf::Bytes Morph(const std::vector<swf::MorphFill>& fills, std::optional<uint32_t> offset = {},
                 swf::Rect startBounds = {0, 200, 0, 100, 0}) {
    return swf::DefineMorphShape(1, startBounds, swf::Rect{-100, 100, 50, 300, 0}, fills,
                                 {swf::MorphLine{20, 60, {1, 2, 3, 4}, {5, 6, 7, 8}}}, StartEdges(), EndEdges(),
                                 offset);
}

swf::MorphFill Gradient(uint8_t type, size_t stops) {
    std::vector<swf::MorphStop> s;
    for (size_t i = 0; i < stops; ++i)
        s.push_back({static_cast<uint8_t>(i * 100), {10, 20, 30, 40}, static_cast<uint8_t>(i * 50), {50, 60, 70, 80}});
    return swf::MorphFill::Gradient(type, swf::Matrix::Translate(200, 0), swf::Matrix::Scale(2, 2, 0, 400), s);
}

// A rectangle as left, top, right, bottom, for one comparison.
struct Box : std::array<double, 4> {
    Box(double l, double t, double r, double b) : std::array<double, 4>{l, t, r, b} {}
    explicit Box(const _GRECT& r) : Box(r.left, r.top, r.right, r.bottom) {}
};

std::array<int, 4> Rgba(const _GRGBA& c) { return {c.red, c.green, c.blue, c.alpha}; }

_GSWFSOLIDBRUSH Solid(_GRGBA c) {
    _GSWFSOLIDBRUSH s = {};
    s.type = 1;
    s.color = c;
    return s;
}

// A gradient record of `count` entries in a block freed with the object.
struct GradientBlock {
    _GSWFGRADIENTBRUSH* g;
    explicit GradientBlock(int count, int type = 2) {
        g = static_cast<_GSWFGRADIENTBRUSH*>(tovMalloc(_GSWFGRADIENTBRUSH::SizeFor(count)));
        std::memset(static_cast<void*>(g), 0, _GSWFGRADIENTBRUSH::SizeFor(count));
        g->type = type;
        g->count = count;
    }
    ~GradientBlock() { tovFree(g); }
};

}  // namespace

TEST(BMorphLoad, BuildsParallelStylesAndPointsAtBothEdgeStreams) {
    swf::Bytes tag = Morph({swf::MorphFill::Solid({255, 0, 0, 255}, {0, 0, 255, 128}), Gradient(0x12, 2),
                            swf::MorphFill::Bitmap(3, swf::Matrix(), swf::Matrix())});
    DictionaryFixture f({{1, tag}});
    BMorph morph;
    ASSERT_EQ(morph.LoadSWFFile(f.Tag(0), &f.dict), 1);
    EXPECT_EQ(morph.loaded, 1);
    for (_GSHAPE* s : {morph.startShape, morph.endShape}) {
        ASSERT_NE(s, nullptr);
        EXPECT_EQ(s->version, 46u);
        ASSERT_EQ(s->brushes.GetCount(), 4);
        EXPECT_EQ(s->brushes[0], nullptr);
        ASSERT_EQ(s->pens.GetCount(), 2);
        EXPECT_EQ(s->limit, f.Tag(0) + tag.size());
    }
    auto* startSolid = static_cast<_GSWFSOLIDBRUSH*>(morph.startShape->brushes[1]);
    auto* endSolid = static_cast<_GSWFSOLIDBRUSH*>(morph.endShape->brushes[1]);
    EXPECT_EQ(startSolid->type, 1);
    EXPECT_EQ(Rgba(startSolid->color), (std::array<int, 4>{255, 0, 0, 255}));
    EXPECT_EQ(Rgba(endSolid->color), (std::array<int, 4>{0, 0, 255, 128}));

    auto* startGrad = static_cast<_GSWFGRADIENTBRUSH*>(morph.startShape->brushes[2]);
    auto* endGrad = static_cast<_GSWFGRADIENTBRUSH*>(morph.endShape->brushes[2]);
    EXPECT_EQ(startGrad->type, 3);
    ASSERT_EQ(endGrad->count, 2);
    EXPECT_EQ(startGrad->gradientMatrix[2], 10.0);
    EXPECT_EQ(endGrad->gradientMatrix[0], 2.0);
    EXPECT_EQ(endGrad->gradientMatrix[5], 20.0);
    EXPECT_EQ(startGrad->Entries()[1].ratio, 100u);
    EXPECT_EQ(endGrad->Entries()[1].ratio, 50u);
    EXPECT_EQ(endGrad->Entries()[1].color.alpha, 80);

    EXPECT_EQ(static_cast<_GSWFBRUSHHEAD*>(morph.startShape->brushes[3])->type, 4);
    EXPECT_EQ(static_cast<_GSWFBRUSHHEAD*>(morph.endShape->brushes[3])->matrix, nullptr);

    EXPECT_EQ(morph.startShape->pens[1].width, 1.0);
    EXPECT_EQ(morph.endShape->pens[1].width, 3.0);
    EXPECT_EQ(morph.startShape->pens[1].color.alpha, 4);
    EXPECT_EQ(morph.endShape->pens[1].color.red, 5);

    swf::BitWriter startRecords;
    StartEdges().WriteRecords(startRecords, true);
    swf::BitWriter endRecords;
    EndEdges().WriteRecords(endRecords, true);
    EXPECT_EQ(morph.startShape->recordsLength, startRecords.Size());
    EXPECT_EQ(swf::Bytes(morph.startShape->records, morph.startShape->records + startRecords.Size()),
              startRecords.Data());
    EXPECT_EQ(morph.startShape->records + morph.startShape->recordsLength, morph.endShape->records);
    EXPECT_EQ(morph.endShape->recordsLength, endRecords.Size());
    EXPECT_EQ(morph.endShape->records + morph.endShape->recordsLength, f.Tag(0) + tag.size());
}

TEST(BMorphLoad, EmptyStartBoundsAreAcceptedAndTheBoundsAreTheUnion) {
    DictionaryFixture f({{1, Morph({swf::MorphFill::Solid({}, {})}, {}, swf::Rect{0, 0, 0, 0, 0})}});
    BMorph morph;
    ASSERT_EQ(morph.LoadSWFFile(f.Tag(0), &f.dict), 1);
    EXPECT_EQ(Box(morph.bounds), (Box{-100, 0, 100, 300}));
    GMatrix shift;
    shift.m[0][2] = 1000;
    EXPECT_EQ(Box(morph.GetBoundingBox(&shift)), (Box{900, 0, 1100, 300}));
}

TEST(BMorphLoad, RejectedMorphsFreeAndForgetBothShapes) {
    struct Case {
        const char* what;
        swf::Bytes tag;
    } cases[] = {
        {"unknown fill type", Morph({swf::MorphFill::Solid({}, {}), swf::MorphFill::Gradient(0x13, {}, {}, {})})},
        {"gradient without entries", Morph({Gradient(0x10, 0)})},
        {"offset before the records", Morph({swf::MorphFill::Solid({}, {})}, 3u)},
        {"offset beyond the tag end", Morph({swf::MorphFill::Solid({}, {})}, 1000u)},
        {"offset far beyond", Morph({swf::MorphFill::Solid({}, {})}, 0xFFFFFFF0u)},
    };
    for (Case& c : cases) {
        DictionaryFixture f({{1, c.tag}});
        EXPECT_EQ(f.dict.NewChar(1), nullptr) << c.what;  // the dictionary reports it
        EXPECT_EQ(f.LastError(), unsigned{kErrLoadMorph}) << c.what;
        BMorph morph;
        EXPECT_EQ(morph.LoadSWFFile(f.Tag(0), &f.dict), 0) << c.what;
        EXPECT_EQ(morph.loaded, 0) << c.what;
        EXPECT_EQ(morph.startShape, nullptr) << c.what;
        EXPECT_EQ(morph.endShape, nullptr) << c.what;
        GActor actor;
        actor.character = &morph;
        morph.Rendering(nullptr, &actor, nullptr, &f.dict);  // never drawn
    }
}

TEST(BMorphLoad, EndEdgesMustStartBeforeTheTagEnds) {
    const swf::Bytes good = Morph({swf::MorphFill::Solid({}, {})});
    // The Offset field follows the header, the id and both bounds.
    swf::BitWriter head;
    head.UI16(1);
    swf::WriteRect(head, swf::Rect{0, 200, 0, 100, 0});
    swf::WriteRect(head, swf::Rect{-100, 100, 50, 300, 0});
    const size_t afterOffset = ((good[0] & 0x3F) == 0x3F ? 6 : 2) + head.Size() + 4;
    const uint32_t atEnd = static_cast<uint32_t>(good.size() - afterOffset);
    DictionaryFixture f({{1, Morph({swf::MorphFill::Solid({}, {})}, atEnd)}});
    BMorph morph;
    EXPECT_EQ(morph.LoadSWFFile(f.Tag(0), &f.dict), 0);
    DictionaryFixture last({{1, Morph({swf::MorphFill::Solid({}, {})}, atEnd - 1)}});
    EXPECT_EQ(morph.LoadSWFFile(last.Tag(0), &last.dict), 1);
    EXPECT_EQ(morph.endShape->recordsLength, 1u);
}

TEST(BMorphLoad, AMorphCutByTheMovieEndIsReadOnlyUpToIt) {
    swf::Bytes full = Morph({swf::MorphFill::Solid({1, 2, 3, 4}, {5, 6, 7, 8}), Gradient(0x10, 3)});
    for (size_t keep = 2; keep < full.size(); ++keep) {
        DictionaryFixture f({{1, swf::Bytes(full.begin(), full.begin() + keep)}});
        BMorph morph;
        if (morph.LoadSWFFile(f.Tag(0), &f.dict)) {
            EXPECT_EQ(morph.startShape->limit, f.Tag(0) + keep);
            EXPECT_EQ(morph.endShape->records + morph.endShape->recordsLength, f.Tag(0) + full.size());
        }
    }
}

TEST(BMorphColour, ChannelsMixAsIntegersTruncatedTowardZero) {
    _GSWFSOLIDBRUSH start = Solid({0, 255, 10, 255});
    _GSWFSOLIDBRUSH end = Solid({255, 0, 20, 0});
    struct Case {
        unsigned short ratio;
        _GRGBA expected;
    } cases[] = {
        {0, {0, 255, 10, 255}},
        {65535, {255, 0, 20, 0}},
        {32768, {127, 128, 15, 128}},  // 255 * 32768 / 65535 = 127.5 -> 127; 255 - 127 = 128
        {1, {0, 255, 10, 255}},        // going down: 255 + (-255 / 65535) stays 255
    };
    for (const Case& c : cases) {
        _GSWFSOLIDBRUSH* mixed = BMorph::GenerateSolidBrush(c.ratio, &start, &end);
        ASSERT_NE(mixed, nullptr);
        EXPECT_EQ(mixed->type, 1);
        EXPECT_EQ(mixed->matrix, nullptr);
        EXPECT_EQ(Rgba(mixed->color), Rgba(c.expected)) << c.ratio;
        tovFree(mixed);
    }
}

TEST(BMorphGradient, EntriesMixAsIntegersAndTheMatrixAsDoubles) {
    GradientBlock s(2, 3), e(2, 3);
    s.g->Entries()[0] = {0, {0, 0, 0, 255}};
    s.g->Entries()[1] = {255, {200, 0, 0, 255}};
    e.g->Entries()[0] = {100, {255, 255, 255, 255}};
    e.g->Entries()[1] = {0, {0, 0, 0, 0}};
    for (int k = 0; k < 6; ++k) {
        s.g->gradientMatrix[k] = k;
        e.g->gradientMatrix[k] = 10.0 + k;
    }
    _GSWFGRADIENTBRUSH* mixed = BMorph::GenerateGradientBrush(32768, s.g, e.g);
    ASSERT_NE(mixed, nullptr);
    EXPECT_EQ(mixed->type, 3);
    ASSERT_EQ(mixed->count, 2);
    EXPECT_EQ(mixed->Entries()[0].ratio, 50u);   // 100 * 32768 / 65535 = 50.0008
    EXPECT_EQ(mixed->Entries()[1].ratio, 128u);  // 255 - 127.5 truncated toward zero
    EXPECT_EQ(mixed->Entries()[0].color.red, 127);
    EXPECT_EQ(mixed->Entries()[1].color.red, 100);
    EXPECT_EQ(mixed->Entries()[1].color.alpha, 128);
    const double t = 32768 / 65535.0;
    for (int k = 0; k < 6; ++k) EXPECT_DOUBLE_EQ(mixed->gradientMatrix[k], k + 10.0 * t) << k;
    EXPECT_EQ(mixed->matrix, nullptr);
    tovFree(mixed);

    GradientBlock empty(0);
    EXPECT_EQ(BMorph::GenerateGradientBrush(100, s.g, empty.g), nullptr);
}

// One GeneratePoint call: the start edge (control, anchor) is replaced by
// the mixed edge; the result says whether it is a curve.
struct PointCase {
    const char* what;
    unsigned short ratio;
    _GPOINT start[2], end[2], prev[2];
    int startCurve, endCurve, curve;
    _GPOINT out[2];  // only out[0] is compared for straight results
};

TEST(BMorphPoints, StraightEdgesStayStraightAndAStraightEdgeAgainstACurveBecomesACurve) {
    PointCase cases[] = {
        {"straight at 0", 0, {{0, 0}, {0, 0}}, {{100, -40}, {0, 0}}, {{0, 0}, {0, 0}}, 0, 0, 0, {{0, 0}, {}}},
        {"straight at 1", 65535, {{0, 0}, {0, 0}}, {{100, -40}, {0, 0}}, {{0, 0}, {0, 0}}, 0, 0, 0, {{100, -40}, {}}},
        {"straight at 1/4", 16384, {{0, 0}, {0, 0}}, {{100, -40}, {0, 0}}, {{0, 0}, {0, 0}}, 0, 0, 0,
         {{100 * (16384 / 65535.0), -40 * (16384 / 65535.0)}, {}}},
        // Start straight from (0, 0) to (100, 0), end a curve via (50, 80):
        // the straight edge's midpoint becomes its control point.
        {"straight vs curve at 0", 0, {{100, 0}, {0, 0}}, {{50, 80}, {100, 0}}, {{0, 0}, {0, 0}}, 0, 1, 1,
         {{50, 0}, {100, 0}}},
        {"straight vs curve at 1", 65535, {{100, 0}, {0, 0}}, {{50, 80}, {100, 0}}, {{0, 0}, {0, 0}}, 0, 1, 1,
         {{50, 80}, {100, 0}}},
        // The end edge straight, measured from its own previous anchor.
        {"curve vs straight at 1", 65535, {{10, 10}, {20, 0}}, {{40, 40}, {0, 0}}, {{0, 0}, {20, 20}}, 1, 0, 1,
         {{30, 30}, {40, 40}}},
    };
    for (PointCase& c : cases) {
        EXPECT_EQ(BMorph::GeneratePoint(c.ratio, c.start, c.end, c.prev, c.startCurve, c.endCurve), c.curve)
            << c.what;
        for (int i = 0; i <= c.curve; ++i) {
            EXPECT_DOUBLE_EQ(c.start[i].x, c.out[i].x) << c.what << " " << i;
            EXPECT_DOUBLE_EQ(c.start[i].y, c.out[i].y) << c.what << " " << i;
        }
    }
}

TEST(BMorphStyles, PensAndBrushesAreRebuiltForTheRatio) {
    GDataArray<_GSWFPEN> startPens{10}, endPens{10}, outPens{10};
    GPointPoolArray<void> startBrushes{10}, endBrushes{10}, outBrushes{10};
    startPens.Add(_GSWFPEN{});
    endPens.Add(_GSWFPEN{});
    startPens.Add(_GSWFPEN{1.0, {0, 0, 0, 255}});
    endPens.Add(_GSWFPEN{3.0, {255, 255, 255, 0}});
    startBrushes.Add(nullptr);
    endBrushes.Add(nullptr);
    auto add = [](GPointPoolArray<void>& a, size_t size, int type) {
        auto* head = static_cast<_GSWFBRUSHHEAD*>(tovMalloc(size));
        std::memset(static_cast<void*>(head), 0, size);
        head->type = type;
        a.Add(head);
    };
    add(startBrushes, sizeof(_GSWFSOLIDBRUSH), 1);
    add(endBrushes, sizeof(_GSWFSOLIDBRUSH), 1);
    static_cast<_GSWFSOLIDBRUSH*>(endBrushes[1])->color = {255, 255, 255, 255};
    add(startBrushes, 96, 4);
    add(endBrushes, 96, 4);
    add(startBrushes, _GSWFGRADIENTBRUSH::SizeFor(1), 2);
    add(endBrushes, _GSWFGRADIENTBRUSH::SizeFor(1), 2);
    static_cast<_GSWFGRADIENTBRUSH*>(startBrushes[3])->count = 1;
    static_cast<_GSWFGRADIENTBRUSH*>(endBrushes[3])->count = 1;
    outBrushes.Add(tovMalloc(8));  // the previous draw's record is freed

    ASSERT_EQ(BMorph::GeneratePenBrush(32768, outPens, outBrushes, startPens, endPens, startBrushes, endBrushes), 1);
    ASSERT_EQ(outPens.GetCount(), 2);
    EXPECT_EQ(outPens[0].width, 0.0);
    EXPECT_DOUBLE_EQ(outPens[1].width, 1.0 + 2.0 * (32768 / 65535.0));
    EXPECT_EQ(outPens[1].color.red, 127);
    EXPECT_EQ(outPens[1].color.alpha, 128);
    ASSERT_EQ(outBrushes.GetCount(), 4);
    EXPECT_EQ(outBrushes[0], nullptr);
    ASSERT_NE(outBrushes[1], nullptr);
    EXPECT_EQ(static_cast<_GSWFSOLIDBRUSH*>(outBrushes[1])->color.green, 127);
    EXPECT_EQ(outBrushes[2], nullptr);  // bitmap morph fills are not drawn
    ASSERT_NE(outBrushes[3], nullptr);
    EXPECT_EQ(static_cast<_GSWFGRADIENTBRUSH*>(outBrushes[3])->count, 1);

    static_cast<_GSWFBRUSHHEAD*>(startBrushes[2])->type = 9;
    static_cast<_GSWFBRUSHHEAD*>(endBrushes[2])->type = 9;
    EXPECT_EQ(BMorph::GeneratePenBrush(0, outPens, outBrushes, startPens, endPens, startBrushes, endBrushes), 0);

    GDataArray<_GSWFPEN> none{10};
    EXPECT_EQ(BMorph::GeneratePenBrush(0, outPens, outBrushes, none, endPens, startBrushes, endBrushes), 0);
}
