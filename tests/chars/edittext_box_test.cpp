// The field box and visible box of the records sent to the host: the
// field's bounds under its matrix and the view, their overlap with the box
// being painted, in whole pixels truncated toward zero.
#include <gtest/gtest.h>

#include <climits>

#include "chars/BEditText.h"
#include "display/GActor.h"
#include "display/GDictionary.h"
#include "render/GStage.h"

namespace {

struct Boxes {
    std::array<int, 4> box, visible;
};

Boxes BoxesOf(const _GRECT& bounds, const _GRECT& clip, const GMatrix& m = GMatrix(), const GMatrix* view = nullptr) {
    BEditText edit;
    edit.bounds = bounds;
    GStage stage;
    stage.curClipBox = clip;
    if (view) stage.viewMatrix = *view;
    _GDEVICETEXT record = {};
    _GDEVICETEXT* r = &record;
    GMatrix matrix = m;
    edit.SetTextBox(r, matrix, &stage);
    return {{record.box[0], record.box[1], record.box[2], record.box[3]},
            {record.visible[0], record.visible[1], record.visible[2], record.visible[3]}};
}

const std::array<int, 4> kEmpty = {INT_MAX, INT_MAX, INT_MIN, INT_MIN};

TEST(EditTextBox, VisibleBoxIsTheOverlapWithThePaintedBox) {
    struct Case {
        const char* what;
        _GRECT bounds, clip;
        Boxes expected;
    } cases[] = {
        {"inside", {200, 400, 600, 800}, {0, 0, 2000, 2000}, {{10, 20, 30, 40}, {10, 20, 30, 40}}},
        {"overlapping", {200, 400, 600, 800}, {300, 0, 2000, 500}, {{10, 20, 30, 40}, {15, 20, 30, 25}}},
        {"touching only", {200, 400, 600, 800}, {600, 800, 900, 900}, {{10, 20, 30, 40}, {30, 40, 30, 40}}},
        // The empty box's 1e30 sentinels do not fit in 32 bits: they reach
        // the host clamped, still with left above right.
        {"apart", {200, 400, 600, 800}, {700, 0, 900, 900}, {{10, 20, 30, 40}, kEmpty}},
        {"nothing being painted", {200, 400, 600, 800}, {1e30, 1e30, -1e30, -1e30}, {{10, 20, 30, 40}, kEmpty}},
        {"an empty field", {200, 400, 200, 800}, {0, 0, 2000, 2000}, {{10, 20, 10, 40}, kEmpty}},
        {"truncated toward zero", {-30, -39, 39, 30}, {-1000, -1000, 1000, 1000}, {{-1, -1, 1, 1}, {-1, -1, 1, 1}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Boxes b = BoxesOf(c.bounds, c.clip);
        EXPECT_EQ(b.box, c.expected.box);
        EXPECT_EQ(b.visible, c.expected.visible);
    }
}

TEST(EditTextBox, BoundsGoThroughTheFieldMatrixThenTheView) {
    GMatrix m;
    m.m[0][2] = 100;  // 5 pixels right
    GMatrix view;
    view.m[0][0] = 0;
    view.m[0][1] = 2;
    view.m[1][0] = -2;
    view.m[1][1] = 0;
    view.m[1][2] = 4000;  // a quarter turn at zoom 2, 200 pixels down
    const Boxes b = BoxesOf({0, 0, 400, 200}, {-1e9, -1e9, 1e9, 1e9}, m, &view);
    // x' = 2y, y' = 4000 - 2x with x in 100..500, y in 0..200.
    EXPECT_EQ(b.box, (std::array<int, 4>{0, 150, 20, 190}));
    EXPECT_EQ(b.visible, b.box);
}

TEST(EditTextBox, HugeMatricesClampInsteadOfOverflowing) {
    GMatrix m;
    m.m[0][0] = m.m[1][1] = 1e15;
    const Boxes b = BoxesOf({-400, -400, 400, 400}, {-1e30, -1e30, 1e30, 1e30}, m);
    EXPECT_EQ(b.box, (std::array<int, 4>{INT_MIN, INT_MIN, INT_MAX, INT_MAX}));
}

unsigned g_calls = 0;
void Count(_GDEVICETEXT* record, unsigned user) {
    EXPECT_EQ(record->kind, 1);
    EXPECT_EQ(user, 77u);
    ++g_calls;
}

TEST(EditTextBox, BorderReachesTheHostOnlyThroughItsCallback) {
    BEditText edit;
    edit.bounds = {0, 0, 400, 200};
    GStage stage;
    stage.curClipBox = {0, 0, 2000, 2000};
    GActor actor;
    GDictionary dict;
    g_calls = 0;
    edit.DrawBorder(&stage, &actor, nullptr, &dict);
    EXPECT_EQ(g_calls, 0u);
    dict.textDraw = Count;
    dict.textDrawUser = 77;
    edit.DrawBorder(&stage, &actor, nullptr, &dict);
    EXPECT_EQ(g_calls, 1u);
}

}  // namespace
