// Edit fields from damaged or hostile tags, loaded and drawn inside a whole
// movie on both paths (glyphs and host records), and very long text: the
// glyph walk is bounded, device text stays terminated, nothing hangs.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "chars/TextMovie.h"

namespace {

// Glyph 'c' reaches 100 units below the baseline; 'a' and 'b' stay above it.
swf::Bytes Font(std::vector<int16_t> advances = {1024, 512, 800}) {
    swf::Font2 f;
    f.id = 1;
    f.flags = 0x80 | 0x02;
    f.name = "Edit";
    f.glyphs = {swf::SquareGlyph(), swf::HalfGlyph(), swf::GlyphBox(-100, -900, 700, 100)};
    f.codes = {'a', 'b', 'c'};
    f.advances = std::move(advances);
    f.bounds.assign(3, swf::Rect{});
    f.kerning = {{'a', 'b', 10}};
    return swf::DefineFont2(f);
}

swf::Bytes Field(const std::string& text, uint16_t flags = swf::kEditBorder | swf::kEditWordWrap,
                 uint16_t height = 400) {
    swf::EditText e;
    e.id = 2;
    e.bounds = swf::Rect{0, 4000, -1000, 2000, 0};
    e.flags = flags;
    e.font = std::make_pair(uint16_t{1}, height);
    e.color = swf::Rgba{0, 0, 0, 255};
    e.layout = swf::EditLayout{1, 2, 3, 4, 5};
    e.variableName = "v";
    e.text = text;
    return swf::DefineEditText(e);
}

// Reads every string a record points at, so that a missing terminator or a
// freed block shows up under the sanitizers.
size_t g_bytes = 0;
void Read(_GDEVICETEXT* record, unsigned) {
    if (record->text) g_bytes += std::strlen(record->text);
    if (record->fontName) g_bytes += std::strlen(record->fontName);
}

TEST(EditTextHostile, DamagedFieldsLoadAndDrawSafely) {
    const swf::Bytes fields[] = {
        Field("abcab"),                                         // glyphs
        Field("abz", swf::kEditBorder | swf::kEditPassword),    // host records
        Field("<p>a&amp;b</p><i>c&lt;</i>", swf::kEditHtml),    // HTML, glyphs
    };
    for (const swf::Bytes& field : fields)
        for (const swf::Bytes& damaged : textmovie::BodyMutations(field))
            textmovie::Play(textmovie::Movie({Font(), damaged}, 2), Read);
}

TEST(EditTextHostile, DamagedFontsUnderIntactFieldsDrawSafely) {
    for (const swf::Bytes& font : textmovie::BodyMutations(Font())) {
        textmovie::Play(textmovie::Movie({font, Field("abcab")}, 2), Read);
        textmovie::Play(textmovie::Movie({font, Field("abz")}, 2), Read);
    }
}

TEST(EditTextHostile, VeryLongTextIsBoundedOnBothPaths) {
    const std::string glyphs(200000, 'a');
    const std::string device = glyphs + "z";
    for (const std::string* text : {&glyphs, &device}) {
        g_bytes = 0;
        textmovie::Play(textmovie::Movie({Font(), Field(*text, swf::kEditWordWrap, 20)}, 2), Read);
        // The host receives the whole text; the glyph path sends nothing.
        EXPECT_EQ(g_bytes, text == &device ? device.size() + 4 : 0u);
    }
}

// The glyph walk counts with an 8-bit index and stops before it would wrap:
// the byte at index 255 is drawn, the one at 256 is not.
TEST(EditTextHostile, GlyphWalkStopsAfter256Bytes) {
    for (size_t before : {255u, 256u}) {
        SCOPED_TRACE(before);
        // A 1024-twip em: one unit is one twip. Each 'a' advances 4 twips, so
        // 'c' starts near x = 4 * before twips and reaches 100 twips below
        // the baseline at 704 + 400 twips (55 pixels).
        const std::string text = std::string(before, 'a') + "c";
        const auto pixels =
            textmovie::Play(textmovie::Movie({Font({4, 4, 4}), Field(text, 0, 1024)}, 2));
        const uint32_t below = pixels[57 * 200 + 70];
        EXPECT_EQ(below != 0, before == 255u);
        EXPECT_NE(pixels[40 * 200 + 30], 0u);
    }
}

}  // namespace
