// Fill-style reading: solid colours, linear and radial gradients, bitmap and
// unknown fills, the failure codes, the type table, and the lending of a
// draw's matrix and colour transform to the records.
#include <gtest/gtest.h>

#include "chars/GBrush.h"
#include "display/GDictionary.h"
#include "fixture/SwfBuilder.h"
#include "parse/GParser.h"

namespace {

// A parser over bytes, with a dictionary for the error codes.
struct FillReader {
    swf::Bytes bytes;
    GError errors;
    GDictionary dict;
    GParser p;

    explicit FillReader(swf::Bytes data) : bytes(std::move(data)) {
        dict.error = &errors;
        dict.movieEnd = bytes.data() + bytes.size();
        p.Init(bytes.data(), static_cast<unsigned>(bytes.size()), dict.movieEnd);
    }
    static FillReader Of(const std::vector<swf::Fill>& fills, bool alpha) {
        swf::BitWriter w;
        for (const swf::Fill& f : fills) {
            std::vector<swf::Fill> one{f};
            swf::BitWriter single;
            swf::WriteFillStyles(single, one, alpha);
            w.Raw(single.Data().data() + 1, single.Data().size() - 1);  // without the count
        }
        return FillReader(w.Data());
    }
    void* Next(int alpha) { return GBrush::ScanSWFBrush(&p, &dict, alpha); }
    unsigned LastError() {
        unsigned code = 0;
        return errors.PopError(code) > 0 ? code : 0;
    }
};

_GSWFGRADIENTBRUSH* AsGradient(void* r) { return static_cast<_GSWFGRADIENTBRUSH*>(r); }
_GSWFSOLIDBRUSH* AsSolid(void* r) { return static_cast<_GSWFSOLIDBRUSH*>(r); }

}  // namespace

TEST(GBrushTypes, SwfFillTypeBytesMapToRecordTypes) {
    const std::pair<unsigned char, int> table[] = {{0x00, 1}, {0x10, 2}, {0x12, 3}, {0x40, 4}, {0x41, 5},
                                                   {0x13, 0}, {0x42, 0}, {0x43, 0}, {0xFF, 0}};
    for (const auto& [swfType, type] : table) EXPECT_EQ(GBrush::GetSWFType(swfType), type) << int(swfType);
}

TEST(GBrushSolid, AlphaIsKeptOnlyWhenTheShapeCarriesIt) {
    for (int alpha : {0, 1}) {
        FillReader r = FillReader::Of({swf::Fill::Solid({10, 20, 30, 40})}, alpha);
        void* rec = r.Next(alpha);
        ASSERT_NE(rec, nullptr);
        EXPECT_EQ(AsSolid(rec)->type, 1);
        EXPECT_EQ(AsSolid(rec)->color.blue, 30);
        EXPECT_EQ(AsSolid(rec)->color.alpha, alpha ? 40 : 255);
        EXPECT_EQ(AsSolid(rec)->matrix, nullptr);
        EXPECT_EQ(AsSolid(rec)->cxform, nullptr);
        tovFree(rec);
    }
}

TEST(GBrushRecords, CutRecordsGiveNullAndTheirCode) {
    swf::BitWriter cutGradient;
    cutGradient.UI8(0x12);
    swf::WriteMatrix(cutGradient, swf::Matrix());
    cutGradient.UI8(4).UI8(0).UI8(1).UI8(2).UI8(3).UI8(255).UI8(1);  // four entries announced, 1.5 given
    struct Case {
        swf::Bytes bytes;
        int alpha;
        unsigned code;
    };
    for (const Case& c : {Case{{0x00, 0x01}, 1, kErrSolidBrush}, Case{cutGradient.Data(), 0, kErrGradientBrush}}) {
        FillReader r(c.bytes);
        EXPECT_EQ(r.Next(c.alpha), nullptr) << c.code;
        EXPECT_EQ(r.LastError(), c.code);
    }
}

TEST(GBrushGradient, LinearAndRadialRecordsHoldTheEntriesAndTheMatrixInPixels) {
    const swf::Matrix m = swf::Matrix::Scale(0.5, 2.0, 200, -60);
    const std::vector<swf::GradStop> stops = {{0, {255, 0, 0, 255}}, {128, {0, 255, 0, 128}}, {255, {0, 0, 255, 255}}};
    FillReader r = FillReader::Of({swf::Fill::Linear(m, stops), swf::Fill::Radial(m, stops)}, true);
    for (int expectedType : {2, 3}) {
        void* rec = r.Next(1);
        ASSERT_NE(rec, nullptr);
        _GSWFGRADIENTBRUSH* g = AsGradient(rec);
        EXPECT_EQ(g->type, expectedType);
        EXPECT_EQ(g->matrix, nullptr);
        ASSERT_EQ(g->count, 3);
        // Translations in pixels: 200 twips is 10.
        EXPECT_EQ((std::vector<double>(g->gradientMatrix, g->gradientMatrix + 6)),
                  (std::vector<double>{0.5, 0, 10, 0, 2, -3}));
        EXPECT_EQ(g->Entries()[1].ratio, 128u);
        EXPECT_EQ(g->Entries()[1].color.green, 255);
        EXPECT_EQ(g->Entries()[1].color.alpha, 128);
        EXPECT_EQ(g->Entries()[2].color.blue, 255);
        tovFree(rec);
    }
}

TEST(GBrushGradient, TheWholeCountByteIsTheEntryCountEvenZero) {
    swf::BitWriter w;
    w.UI8(0x10);
    swf::WriteMatrix(w, swf::Matrix());
    w.UI8(0x13);  // 19 entries: no bits are masked off
    for (int i = 0; i < 19; ++i) w.UI8(static_cast<uint32_t>(i * 10)).UI8(1).UI8(2).UI8(3);
    w.UI8(0x00).UI8(9).UI8(8).UI8(7);  // the next style
    FillReader r(w.Data());
    void* rec = r.Next(0);
    ASSERT_NE(rec, nullptr);
    ASSERT_EQ(AsGradient(rec)->count, 19);
    EXPECT_EQ(AsGradient(rec)->Entries()[18].ratio, 180u);
    tovFree(rec);
    void* next = r.Next(0);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(AsSolid(next)->color.red, 9);
    tovFree(next);
    // Zero entries give a valid, empty record.
    FillReader none = FillReader::Of({swf::Fill::Linear(swf::Matrix(), {})}, false);
    void* empty = none.Next(0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(AsGradient(empty)->count, 0);
    EXPECT_EQ(AsGradient(empty)->gradientMatrix[0], 1.0);
    tovFree(empty);
}

TEST(GBrushBitmap, ABitmapFillIsConsumedAndGivesNull) {
    FillReader r = FillReader::Of({swf::Fill::Bitmap(7, swf::Matrix::Scale(20, 20, 100, 100), true),
                                   swf::Fill::Bitmap(8, swf::Matrix()), swf::Fill::Solid({1, 2, 3, 255})},
                                  false);
    EXPECT_EQ(r.Next(0), nullptr);
    EXPECT_EQ(r.Next(0), nullptr);
    void* solid = r.Next(0);
    ASSERT_NE(solid, nullptr);
    EXPECT_EQ(AsSolid(solid)->color.green, 2);
    tovFree(solid);
    EXPECT_EQ(r.LastError(), 0u);
}

TEST(GBrushUnknown, AnUnknownTypeGivesNullAndReadsNothingMore) {
    FillReader r(swf::Bytes{0x42, 0x00, 0x05, 0x06, 0x07});
    EXPECT_EQ(r.Next(0), nullptr);
    EXPECT_EQ(r.p.GetPosition(), 1);
    // What follows is then taken as the next style: here a solid fill.
    void* misread = r.Next(0);
    ASSERT_NE(misread, nullptr);
    EXPECT_EQ(AsSolid(misread)->color.red, 5);
    tovFree(misread);
}

TEST(GBrushLending, TheRangeIsClampedNullEntriesSkippedAndIdentitiesLentAsNull) {
    GPointPoolArray<void> brushes{10};
    std::vector<_GSWFSOLIDBRUSH*> records;
    for (int i = 0; i < 4; ++i) {
        if (i == 2) {
            brushes.Add(nullptr);
            records.push_back(nullptr);
            continue;
        }
        _GSWFSOLIDBRUSH* s = static_cast<_GSWFSOLIDBRUSH*>(tovMalloc(sizeof(_GSWFSOLIDBRUSH)));
        *s = {};
        brushes.Add(s);
        records.push_back(s);
    }
    GMatrix m;
    m.m[0][0] = 2;
    GCxform cx;
    cx.redAdd = 3;
    GBrush::SetMatrixToArray(brushes, -5, 100, m.m, &cx);
    for (int i : {0, 1, 3}) {
        EXPECT_EQ(records[i]->matrix, m.m) << i;
        EXPECT_EQ(records[i]->cxform, &cx) << i;
    }
    GBrush::SetMatrixToArray(brushes, 1, 2, nullptr, nullptr);
    EXPECT_EQ(records[0]->matrix, m.m);
    EXPECT_EQ(records[1]->matrix, nullptr);
    EXPECT_EQ(records[3]->cxform, &cx);
    // Identity transforms are lent as null, replacing an earlier draw's.
    GMatrix identity;
    GCxform plain;
    GBrush::SetMatrixToArray(brushes, 0, 1, identity.m, &plain);
    EXPECT_EQ(records[0]->matrix, nullptr);
    EXPECT_EQ(records[0]->cxform, nullptr);
}

TEST(GBrushBase, TheBaseReaderReadsNothingAndFails) {
    FillReader r(swf::Bytes{1, 2, 3});
    GBrush base;
    EXPECT_EQ(base.ScanSWFFile(&r.p, &r.dict, 0), 0);
    EXPECT_EQ(base.record, nullptr);
    EXPECT_EQ(r.p.GetPosition(), 0);
}
