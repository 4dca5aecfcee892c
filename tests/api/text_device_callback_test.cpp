// Edit fields handed to the host's text callback: device-text records for
// text the font cannot draw and border records, every filled word checked
// under zoom, origin, host transform and each quarter turn of the canvas.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "api/TextScenes.h"

namespace {

using namespace textscene;

// A copy of one record: its pointers are valid only during the call.
struct Captured {
    _GDEVICETEXT record;
    bool hasText, hasName;
    std::string text, fontName;
    unsigned user;
};

std::vector<Captured>* g_sink = nullptr;

void Capture(_GDEVICETEXT* record, unsigned int user) {
    Captured c;
    std::memcpy(&c.record, record, sizeof(c.record));
    c.hasText = record->text != nullptr;
    c.hasName = record->fontName != nullptr;
    if (c.hasText) c.text = record->text;
    if (c.hasName) c.fontName = record->fontName;
    c.user = user;
    g_sink->push_back(c);
}

constexpr unsigned kUser = 0x5EED;

// Font 1 draws only 'A'; the field's "AB" therefore goes to the host.
swf::Bytes HostFont() { return Font2(1, {swf::SquareGlyph()}, {'A'}, {}, {}, "Host Sans", 0x01 | 0x02); }

swf::EditText HostField(const std::string& text = "AB") {
    swf::EditText e;
    e.id = 2;
    e.bounds = swf::Rect{100, 2100, 200, 1200, 0};
    e.flags = swf::kEditBorder | swf::kEditWordWrap;
    e.font = std::make_pair(uint16_t{1}, uint16_t{240});
    e.color = swf::Rgba{10, 20, 30, 255};
    e.layout = swf::EditLayout{2, 0, 0, 0, 0};
    e.text = text;
    return e;
}

swf::Place2 At(int32_t x, int32_t y) {
    swf::Place2 p;
    p.matrix = swf::Matrix::Translate(x, y);
    return p;
}

struct View {
    unsigned orientation = 0;
    bool setOrg = false;
    int orgX = 0, orgY = 0;
    const double* transform = nullptr;
    int width = 200, height = 100;
};

// Plays one frame of a 200 x 100 pixel movie under `view`, twice, and
// returns what the host was sent.
std::vector<Captured> Play(const swf::Bytes& movie, const View& view, int plays = 1) {
    std::vector<Captured> sink;
    g_sink = &sink;
    host::Engine e(movie);
    EXPECT_TRUE(e);
    if (!e) return sink;
    zelEngineSetTextDraw(e.get(), Capture, kUser);
    zelEngineFlipCanvas(e.get(), view.orientation);
    if (view.setOrg) zelEngineSetOrg(e.get(), view.orgX, view.orgY);
    if (view.transform) zelEngineSetTransform(e.get(), view.transform);
    zelEngineForward(e.get(), 1, view.width, view.height, 1);
    host::Pixels p(view.width, view.height);
    for (int i = 0; i < plays; ++i) zelEnginePlay(e.get(), p.get(), 0, 0, view.width, view.height, 1);
    g_sink = nullptr;
    return sink;
}

void ExpectBoxes(const _GDEVICETEXT& r, const std::array<int, 4>& box, const std::array<int, 4>& visible) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(r.box[i], box[i]) << "box word " << i;
        EXPECT_EQ(r.visible[i], visible[i]) << "visible word " << i;
    }
}

void ExpectBorder(const Captured& c, const std::array<int, 4>& box, const std::array<int, 4>& visible) {
    const _GDEVICETEXT& r = c.record;
    EXPECT_EQ(c.user, kUser);
    EXPECT_EQ(r.kind, 1);
    ExpectBoxes(r, box, visible);
    // A border fills only its kind and the two boxes.
    EXPECT_FALSE(c.hasText);
    EXPECT_FALSE(c.hasName);
    EXPECT_EQ(r.size, 0);
    EXPECT_EQ(r.color, 0u);
    EXPECT_EQ(r.italic + r.bold + r.wordWrap + r.align + r.reserved[0] + r.reserved[1], 0);
}

void ExpectText(const Captured& c, const std::string& text, int size, const std::array<int, 4>& box,
                const std::array<int, 4>& visible) {
    const _GDEVICETEXT& r = c.record;
    EXPECT_EQ(c.user, kUser);
    EXPECT_EQ(r.kind, 0);
    EXPECT_EQ(c.text, text);
    EXPECT_EQ(r.size, size);
    EXPECT_EQ(c.fontName, "Host Sans");
    const uint8_t rgba[4] = {10, 20, 30, 255};
    EXPECT_EQ(std::memcmp(&r.color, rgba, 4), 0);
    EXPECT_EQ(r.italic, 1);
    EXPECT_EQ(r.bold, 1);
    EXPECT_EQ(r.wordWrap, 1);
    EXPECT_EQ(r.align, 2);
    EXPECT_EQ(r.reserved[0] + r.reserved[1], 0);
    ExpectBoxes(r, box, visible);
}

// The field lies at x 500..2500, y 400..1400 twips on the stage.
TEST(TextDeviceCallback, RecordsUnderEveryView) {
    static const double kHalfAndShift[6] = {0.5, 0, 10, 0, 0.5, 5};
    struct Case {
        const char* what;
        View view;
        std::array<int, 4> box;
        int size;
    } cases[] = {
        {"upright", {}, {25, 20, 125, 70}, 12},
        {"zoom 2", {0, false, 0, 0, nullptr, 400, 200}, {50, 40, 250, 140}, 24},
        {"origin moved", {0, true, 30, 10}, {55, 30, 155, 80}, 12},
        {"host transform", {0, false, 0, 0, kHalfAndShift}, {22, 15, 72, 40}, 6},
        // The size reads the diagonal of the matrix only: 0 under a quarter
        // turn, negative under a half turn.
        {"quarter turn", {1, true, 0, 200, nullptr, 100, 200}, {20, 75, 70, 175}, 0},
        {"half turn", {2, true, 200, 100}, {75, 30, 175, 80}, -12},
        {"three quarter turn", {3, true, 100, 0, nullptr, 100, 200}, {30, 25, 80, 125}, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const swf::Bytes movie = Scene(200, 100, {HostFont(), swf::DefineEditText(HostField())}, 2, At(400, 200));
        const auto sent = Play(movie, c.view);
        ASSERT_EQ(sent.size(), 2u);
        ExpectBorder(sent[0], c.box, c.box);
        ExpectText(sent[1], "AB", c.size, c.box, c.box);
    }
}

// The visible box is the part inside the box being painted: the whole
// stage, one pixel of margin before and two after.
TEST(TextDeviceCallback, VisibleBoxIsClippedToThePaintedArea) {
    struct Case {
        const char* what;
        int32_t x, y;
        std::array<int, 4> box, visible;
    } cases[] = {
        {"past the right edge", 3000, 200, {155, 20, 255, 70}, {155, 20, 202, 70}},
        {"past the left and top edges", -1000, -400, {-45, -10, 55, 40}, {-1, -1, 55, 40}},
        {"past the bottom edge", 400, 1600, {25, 90, 125, 140}, {25, 90, 125, 102}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto sent = Play(Scene(200, 100, {HostFont(), swf::DefineEditText(HostField())}, 2, At(c.x, c.y)), {});
        ASSERT_EQ(sent.size(), 2u);
        ExpectBorder(sent[0], c.box, c.visible);
        ExpectText(sent[1], "AB", 12, c.box, c.visible);
    }
}

TEST(TextDeviceCallback, BorderIsSentEvenWhenGlyphsDrawTheText) {
    const auto sent = Play(Scene(200, 100, {HostFont(), swf::DefineEditText(HostField("AAA"))}, 2, At(400, 200)), {});
    ASSERT_EQ(sent.size(), 1u);
    ExpectBorder(sent[0], {25, 20, 125, 70}, {25, 20, 125, 70});
}

TEST(TextDeviceCallback, FieldWithoutBorderSendsOnlyItsText) {
    swf::EditText field = HostField();
    field.flags = swf::kEditWordWrap;
    const auto sent = Play(Scene(200, 100, {HostFont(), swf::DefineEditText(field)}, 2, At(400, 200)), {});
    ASSERT_EQ(sent.size(), 1u);
    ExpectText(sent[0], "AB", 12, {25, 20, 125, 70}, {25, 20, 125, 70});
}

// The stored text itself turns into stars, so later frames send stars too.
TEST(TextDeviceCallback, PasswordFieldSendsOneStarPerByte) {
    swf::EditText field = HostField("AB\xC3\xA9");
    field.flags |= swf::kEditPassword;
    const auto sent = Play(Scene(200, 100, {HostFont(), swf::DefineEditText(field)}, 2, At(400, 200)), {}, 2);
    ASSERT_EQ(sent.size(), 4u);
    EXPECT_EQ(sent[1].text, "****");
    EXPECT_EQ(sent[3].text, "****");
}

TEST(TextDeviceCallback, HtmlFieldSendsItsReducedText) {
    swf::EditText field = HostField("<p>Tom &amp; Jerry</p><p>&lt;3</p>");
    field.flags |= swf::kEditHtml;
    const auto sent = Play(Scene(200, 100, {HostFont(), swf::DefineEditText(field)}, 2, At(400, 200)), {});
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1].text, "Tom & Jerry\n<3");
}

TEST(TextDeviceCallback, FontWithoutNameOrCodesSendsAnEmptyName) {
    const auto sent = Play(Scene(200, 100, {swf::DefineFont(1, {swf::SquareGlyph()}), swf::DefineEditText(HostField())},
                                 2, At(400, 200)),
                           {});
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_TRUE(sent[1].hasName);
    EXPECT_EQ(sent[1].fontName, "");
    EXPECT_EQ(sent[1].record.bold + sent[1].record.italic, 0);
}

TEST(TextDeviceCallback, FieldsThatSendNothingOrOnlyTheirBorder) {
    swf::Place2 invisible = At(400, 200);
    invisible.cxform = swf::Cxform{std::array<int16_t, 4>{256, 256, 256, 0}, std::array<int16_t, 4>{0, 0, 0, 0}, 0};
    swf::EditText noFont = HostField();
    noFont.font = std::make_pair(uint16_t{0}, uint16_t{240});
    swf::EditText shapeAsFont = HostField();
    shapeAsFont.font = std::make_pair(uint16_t{3}, uint16_t{240});
    swf::EditText noText = HostField();
    noText.text.reset();
    const swf::Bytes shape = host::BoxShape(3, 0, 0, 200, 200, swf::Rgba{0, 0, 0, 255});
    struct Case {
        const char* what;
        swf::EditText field;
        swf::Place2 place;
        size_t records;
    } cases[] = {
        {"invisible by its colour transform", HostField(), invisible, 0},
        {"font id 0", noFont, At(400, 200), 0},
        {"no text", noText, At(400, 200), 0},
        {"a font id that names a shape", shapeAsFont, At(400, 200), 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto sent = Play(Scene(200, 100, {HostFont(), shape, swf::DefineEditText(c.field)}, 2, c.place), {});
        ASSERT_EQ(sent.size(), c.records);
        if (c.records) {
            EXPECT_EQ(sent[0].record.kind, 1);
        }
    }
}

}  // namespace
