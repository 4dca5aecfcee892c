// Character base behaviour: the failing base load, empty bounds, the bounds
// helper, the drawing context of a placed instance, tag-header reading and
// the defaults of complex characters.
#include <gtest/gtest.h>

#include <array>

#include "display/BChar.h"
#include "display/GActor.h"
#include "fixture/SwfBuilder.h"
#include "parse/GParser.h"
#include "render/GClipBox.h"

TEST(BCharBase, LoadsNothingDrawsNothingAndHasTheEmptyAccumulatorAsBounds) {
    BChar ch;
    unsigned char tag[2] = {0, 0};
    EXPECT_EQ(ch.LoadSWFFile(tag, nullptr), 0);
    EXPECT_EQ(ch.Init(tag, nullptr), 0);
    EXPECT_EQ(ch.IsComplex(), 0);
    EXPECT_EQ(ch.refCount, 0);
    _GRECT r = ch.GetBoundingBox(nullptr);
    EXPECT_EQ((std::array<double, 4>{r.left, r.top, r.right, r.bottom}),
              (std::array<double, 4>{1e30, 1e30, -1e30, -1e30}));
    GClipBox clip;
    ch.Insert(&clip, nullptr);
    ch.Remove(&clip, nullptr);
    EXPECT_EQ(clip.boxes.GetCount(), 0);  // an empty area dirties nothing
}

TEST(BCharBase, BoundsHelperZeroesEmptyBoxesAndTransformsOthers) {
    GMatrix shift;
    shift.m[0][2] = 100;
    shift.m[1][2] = -40;
    GMatrix identity;
    struct Case {
        GMatrix* m;
        _GRECT in, out;
    };
    Case cases[] = {{&shift, {5, 5, 5, 9}, {0, 0, 0, 0}},
                    {nullptr, {0, 0, 20, 10}, {0, 0, 20, 10}},
                    {&identity, {0, 0, 20, 10}, {0, 0, 20, 10}},
                    {&shift, {0, 0, 20, 10}, {100, -40, 120, -30}}};
    for (Case& c : cases) {
        const _GRECT r = BChar::GetBoundingBox(c.m, c.in);
        EXPECT_EQ((std::array<double, 4>{r.left, r.top, r.right, r.bottom}),
                  (std::array<double, 4>{c.out.left, c.out.top, c.out.right, c.out.bottom}));
    }
}

TEST(BCharContext, WithoutContextAnActorWithoutMatrixGetsTheCallersIdentity) {
    GActor actor;
    GCTRL_INFO out = {};
    GCxform keep;
    out.cxform = &keep;
    GMatrix m;
    GCxform cx;
    BChar::GetCtrlMatrix(out, m, cx, &actor, nullptr);
    EXPECT_EQ(out.matrix, &m);
    EXPECT_TRUE(m.IsIdentify());
    EXPECT_EQ(out.cxform, &keep);

    actor.matrix = new GMatrix();
    actor.matrix->m[0][2] = 33;
    BChar::GetCtrlMatrix(out, m, cx, &actor, nullptr);
    EXPECT_EQ(m.m[0][2], 33);
    EXPECT_EQ(out.cxform, &keep);
}

TEST(BCharContext, WithContextTheActorsTransformIsFollowedByTheContexts) {
    GActor actor;
    actor.matrix = new GMatrix();
    actor.matrix->m[0][2] = 10;
    actor.cxform = new GCxform();
    actor.cxform->redAdd = 5;
    GMatrix outer;
    outer.m[0][0] = 3;
    GCxform outerCx;
    outerCx.redAdd = 7;
    GCTRL_INFO ctx = {};
    ctx.matrix = &outer;
    ctx.cxform = &outerCx;
    GCTRL_INFO out = {};
    GMatrix m;
    GCxform cx;
    BChar::GetCtrlMatrix(out, m, cx, &actor, &ctx);
    EXPECT_EQ(out.matrix, &m);
    EXPECT_EQ(out.cxform, &cx);
    EXPECT_EQ(m.m[0][2], 30);  // translated, then scaled by the context
    EXPECT_EQ(m.m[0][0], 3);
    EXPECT_EQ(cx.redAdd, 12);
}

TEST(BCharTagHeader, OpensTheSpanOverAShortOrLongHeaderAndWidensItToTheTag) {
    struct Case {
        bool longHeader;
        unsigned headerSize;
    } cases[] = {{false, 2}, {true, 6}};
    for (const Case& c : cases) {
        swf::Bytes tag = swf::Tag(22, swf::Bytes(10, 0xAB), c.longHeader);
        tag.push_back(0x11);  // the next tag's first byte
        GParser p;
        p.Init(tag.data(), 0, tag.data() + tag.size());
        unsigned len = 0;
        EXPECT_EQ(BChar::GetTypeLen(&p, len), 22u);
        EXPECT_EQ(len, c.headerSize + 10);
        EXPECT_EQ(p.end, tag.data() + len);
        EXPECT_EQ(p.GetPosition(), static_cast<int>(c.headerSize));
        EXPECT_EQ(p.ScanUI8(), 0xABu);
    }
}

TEST(BCharTagHeader, AnOpenSpanReadsTheNextHeaderAndGivesItsBodyLengthReadingZerosPastTheBuffer) {
    swf::Bytes tags = swf::Tag(1, {});
    swf::Bytes second = swf::Tag(9, {1, 2, 3});
    tags.insert(tags.end(), second.begin(), second.end());
    GParser p;
    p.Init(tags.data(), static_cast<unsigned>(tags.size()), tags.data() + tags.size());
    unsigned len = 99;
    EXPECT_EQ(BChar::GetTypeLen(&p, len), 1u);
    EXPECT_EQ(len, 0u);
    EXPECT_EQ(BChar::GetTypeLen(&p, len), 9u);
    EXPECT_EQ(len, 3u);

    unsigned char lone[1] = {0x85};  // half a header at the very end
    p.Init(lone, 0, lone + 1);
    len = 7;
    EXPECT_EQ(BChar::GetTypeLen(&p, len), 2u);  // 0x0085: code 2, length 5
    EXPECT_EQ(len, 7u);
}

TEST(BComplexCharBase, DefaultsOfTheFrameProtocol) {
    BComplexChar c;
    EXPECT_EQ(c.IsComplex(), 1);
    EXPECT_EQ(c.IsMultyFrame(), 0);
    EXPECT_EQ(c.prepared, 0);
    EXPECT_EQ(c.parent, nullptr);
    EXPECT_EQ(c.PrepareData(nullptr, nullptr, 0), 0);
    c.EndScanFrame();
    GActor actor;
    _GRECT r = c.GetBoundingBox(nullptr, &actor, nullptr);
    EXPECT_EQ(r.left, 1e30);
    EXPECT_EQ(r.right, -1e30);
    EXPECT_EQ(c.SetBgCache(nullptr, 0, 0, 0, 0, nullptr), 0);
    c.SetCurClipBoxID(1, 2);
    EXPECT_EQ(c.NeedCache(r), 0);
    c.multiFrame = 1;
    EXPECT_EQ(c.IsMultyFrame(), 1);
}
