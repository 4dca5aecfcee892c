// Device text for the engine's text callback. Fonts: fontconfig picks the
// closest installed face for the field's font name, weight and slant, with
// DejaVu Sans as the last resort. Layout: lines split at line breaks, greedy
// word wrap when the field asks for it, left/right/centre alignment inside a
// 2-pixel gutter, everything clipped to the record's visible box.
#include "text_draw.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr int kGutter = 2;  // pixels between the field's box and its text
constexpr int kMaxTextSize = 2048;
constexpr char kFallbackFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

enum Align { kAlignLeft = 0, kAlignRight = 1, kAlignCenter = 2 };

// Drawers are found from the callback's 32-bit user value, which cannot hold
// a pointer on 64-bit hosts, so it holds an index into this table.
std::vector<TextDrawer*>& Registry() {
    static std::vector<TextDrawer*> drawers;
    return drawers;
}

// Flash's generic device-font names, mapped to fontconfig's generic families.
const char* GenericFamily(const char* name) {
    if (!name || !*name || std::strcmp(name, "_sans") == 0) return "sans-serif";
    if (std::strcmp(name, "_serif") == 0) return "serif";
    if (std::strcmp(name, "_typewriter") == 0) return "monospace";
    return name;
}

// Decodes UTF-8; a byte that does not start a valid sequence is taken as
// Latin-1, so text written by older tools in a single-byte encoding still shows.
std::vector<char32_t> Decode(const char* text) {
    std::vector<char32_t> out;
    const auto* s = reinterpret_cast<const unsigned char*>(text);
    while (*s) {
        const unsigned c = *s;
        int extra = c >= 0xF0 && c < 0xF5 ? 3 : c >= 0xE0 ? 2 : c >= 0xC2 && c < 0xE0 ? 1 : 0;
        if (c >= 0xF5) extra = 0;
        char32_t cp = extra == 3 ? c & 0x07 : extra == 2 ? c & 0x0F : c & 0x1F;
        int i = 1;
        for (; extra && i <= extra; ++i) {
            if ((s[i] & 0xC0) != 0x80) break;
            cp = (cp << 6) | (s[i] & 0x3F);
        }
        if (extra && i == extra + 1) {
            out.push_back(cp);
            s += extra + 1;
        } else {
            out.push_back(c);
            ++s;
        }
    }
    return out;
}

}  // namespace

struct TextDrawer::Face {
    FT_Face face = nullptr;
    ~Face() {
        if (face) FT_Done_Face(face);
    }
};

struct TextDrawer::Line {
    size_t begin, end;  // code points [begin, end)
    long width;         // 26.6 pixels
};

TextDrawer::TextDrawer() {
    if (FT_Init_FreeType(&library_) != 0) library_ = nullptr;
    Registry().push_back(this);
    slot_ = unsigned(Registry().size() - 1);
}

TextDrawer::~TextDrawer() {
    faces_.clear();
    if (library_) FT_Done_FreeType(library_);
    if (fontConfig_) FcConfigDestroy(fontConfig_);
    Registry()[slot_] = nullptr;
}

void TextDrawer::Attach(void* engine, const PixelFormat& format, uint8_t* pixels, int width,
                        int height, size_t stride) {
    format_ = &format;
    pixels_ = pixels;
    width_ = width;
    height_ = height;
    stride_ = stride;
    zelEngineSetTextDraw(engine, &TextDrawer::Callback, slot_);
}

void TextDrawer::Callback(_GDEVICETEXT* record, unsigned int user) {
    if (record && user < Registry().size() && Registry()[user]) Registry()[user]->Draw(*record);
}

TextDrawer::Face* TextDrawer::FindFace(const char* family, bool bold, bool italic) {
    const std::string key = std::string(family) + (bold ? "|b" : "|") + (italic ? "i" : "");
    auto found = faces_.find(key);
    if (found != faces_.end()) return found->second->face ? found->second.get() : nullptr;

    auto face = std::make_unique<Face>();
    FT_Library lib = library_;
    // The drawer owns its fontconfig configuration, so that everything
    // fontconfig allocates is released with the drawer.
    if (!fontConfig_) fontConfig_ = FcInitLoadConfigAndFonts();
    FcPattern* pattern = FcPatternCreate();
    if (lib && pattern && fontConfig_) {
        FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family));
        FcPatternAddInteger(pattern, FC_WEIGHT, bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
        FcPatternAddInteger(pattern, FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
        FcConfigSubstitute(fontConfig_, pattern, FcMatchPattern);
        FcDefaultSubstitute(pattern);
        FcResult result;
        FcPattern* match = FcFontMatch(fontConfig_, pattern, &result);
        FcChar8* file = nullptr;
        int index = 0;
        if (match && FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch) {
            FcPatternGetInteger(match, FC_INDEX, 0, &index);
            if (FT_New_Face(lib, reinterpret_cast<const char*>(file), index, &face->face) != 0) {
                face->face = nullptr;
            }
        }
        if (match) FcPatternDestroy(match);
    }
    if (pattern) FcPatternDestroy(pattern);
    if (lib && !face->face && FT_New_Face(lib, kFallbackFont, 0, &face->face) != 0) {
        face->face = nullptr;
        std::fprintf(stderr, "zelplay: no font found for device text \"%s\"; text not drawn\n",
                     family);
    }
    Face* result = face->face ? face.get() : nullptr;
    faces_[key] = std::move(face);
    return result;
}

void TextDrawer::Draw(const _GDEVICETEXT& record) {
    if (!pixels_) return;
    // The visible box is the part of the field on the output that is being
    // repainted; drawing stays inside it and inside the buffer.
    clip_[0] = std::max(record.visible[0], 0);
    clip_[1] = std::max(record.visible[1], 0);
    clip_[2] = std::min(record.visible[2], width_);
    clip_[3] = std::min(record.visible[3], height_);
    if (clip_[0] >= clip_[2] || clip_[1] >= clip_[3]) return;
    if (record.kind == 1) {
        DrawBorder(record);
    } else if (record.kind == 0) {
        DrawText(record);
    }
}

void TextDrawer::FillRect(int left, int top, int right, int bottom, const uint8_t rgb[3]) {
    left = std::max(left, clip_[0]);
    top = std::max(top, clip_[1]);
    right = std::min(right, clip_[2]);
    bottom = std::min(bottom, clip_[3]);
    for (int y = top; y < bottom; ++y) {
        uint8_t* row = pixels_ + size_t(y) * stride_;
        for (int x = left; x < right; ++x) BlendPixel(*format_, row + x * format_->bytes, rgb, 255);
    }
}

// A bordered field is drawn the way authoring tools show it: a white field
// with a one-pixel black frame (the record carries no colours of its own).
void TextDrawer::DrawBorder(const _GDEVICETEXT& r) {
    static const uint8_t kWhite[3] = {255, 255, 255}, kBlack[3] = {0, 0, 0};
    const int l = r.box[0], t = r.box[1], rt = r.box[2], b = r.box[3];
    if (l >= rt || t >= b) return;
    FillRect(l, t, rt, b, kWhite);
    FillRect(l, t, rt, t + 1, kBlack);
    FillRect(l, b - 1, rt, b, kBlack);
    FillRect(l, t, l + 1, b, kBlack);
    FillRect(rt - 1, t, rt, b, kBlack);
}

void TextDrawer::DrawText(const _GDEVICETEXT& r) {
    if (!r.text || r.size <= 0 || r.size > kMaxTextSize) return;
    Face* face = FindFace(GenericFamily(r.fontName), r.bold != 0, r.italic != 0);
    if (!face) return;
    FT_Face f = face->face;
    if (FT_Set_Pixel_Sizes(f, 0, FT_UInt(r.size)) != 0) return;

    uint8_t color[4];
    std::memcpy(color, &r.color, 4);
    // Fields without a text colour arrive as an all-zero word; they are
    // shown black, as authoring tools do, instead of fully transparent.
    if (color[0] == 0 && color[1] == 0 && color[2] == 0 && color[3] == 0) color[3] = 255;

    const std::vector<char32_t> text = Decode(r.text);
    std::vector<FT_UInt> glyphs(text.size());
    std::vector<long> advance(text.size());  // 26.6 pixels
    std::vector<long> kerning(text.size());  // 26.6, before glyph i, after glyph i - 1
    for (size_t i = 0; i < text.size(); ++i) {
        glyphs[i] = FT_Get_Char_Index(f, FT_ULong(text[i]));
        advance[i] = FT_Load_Glyph(f, glyphs[i], FT_LOAD_DEFAULT) == 0 ? f->glyph->advance.x : 0;
        FT_Vector kern;
        if (i > 0 && FT_HAS_KERNING(f) &&
            FT_Get_Kerning(f, glyphs[i - 1], glyphs[i], FT_KERNING_DEFAULT, &kern) == 0) {
            kerning[i] = kern.x;
        }
    }

    // Lines: break at CR, LF or CRLF; with word wrap also at the last space
    // that keeps the line inside the box (or mid-word when a word is wider).
    const long avail = (long(r.box[2]) - r.box[0] - 2 * kGutter) * 64;
    auto span = [&](size_t from, size_t to) {
        long w = 0;
        for (size_t j = from; j < to; ++j) w += advance[j] + (j > from ? kerning[j] : 0);
        return w;
    };
    std::vector<Line> lines;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = start;
        while (end < text.size() && text[end] != '\n' && text[end] != '\r') ++end;
        size_t lineStart = start, lastSpace = SIZE_MAX;
        long width = 0;  // of [lineStart, i)
        for (size_t i = start; r.wordWrap && i < end; ++i) {
            if (text[i] == ' ') lastSpace = i;
            if (i > lineStart && width + kerning[i] + advance[i] > avail) {
                const bool atSpace = lastSpace != SIZE_MAX && lastSpace > lineStart;
                const size_t cut = atSpace ? lastSpace : i;
                lines.push_back({lineStart, cut, span(lineStart, cut)});
                lineStart = atSpace ? cut + 1 : cut;
                lastSpace = SIZE_MAX;
                width = span(lineStart, i);
            }
            if (i >= lineStart) width += advance[i] + (i > lineStart ? kerning[i] : 0);
        }
        lines.push_back({lineStart, end, span(lineStart, end)});
        if (end + 1 < text.size() && text[end] == '\r' && text[end + 1] == '\n') ++end;
        start = end + 1;
    }

    const long ascent = f->size->metrics.ascender;
    const long lineHeight = f->size->metrics.height;
    long baseline = (long(r.box[1]) + kGutter) * 64 + ascent;
    for (const Line& line : lines) {
        if (((baseline - ascent) >> 6) >= clip_[3]) break;
        long x;
        if (r.align == kAlignRight) {
            x = (long(r.box[2]) - kGutter) * 64 - line.width;
        } else if (r.align == kAlignCenter) {
            x = (long(r.box[0]) + r.box[2]) * 32 - line.width / 2;
        } else {
            x = (long(r.box[0]) + kGutter) * 64;
        }
        for (size_t i = line.begin; i < line.end; x += advance[i], ++i) {
            if (i > line.begin) x += kerning[i];
            if (FT_Load_Glyph(f, glyphs[i], FT_LOAD_RENDER) != 0) continue;
            DrawGlyph(f->glyph->bitmap, ((x + 32) >> 6) + f->glyph->bitmap_left,
                      ((baseline + 32) >> 6) - f->glyph->bitmap_top, color);
        }
        baseline += lineHeight;
    }
}

void TextDrawer::DrawGlyph(const FT_Bitmap& bm, long left, long top, const uint8_t color[4]) {
    for (unsigned row = 0; row < bm.rows; ++row) {
        const long py = top + long(row);
        if (py < clip_[1] || py >= clip_[3]) continue;
        const unsigned char* src = bm.buffer + long(row) * bm.pitch;
        uint8_t* dst = pixels_ + size_t(py) * stride_;
        for (unsigned col = 0; col < bm.width; ++col) {
            const long px = left + long(col);
            if (px < clip_[0] || px >= clip_[2]) continue;
            const unsigned coverage = bm.pixel_mode == FT_PIXEL_MODE_MONO
                                          ? ((src[col / 8] >> (7 - col % 8)) & 1u) * 255
                                          : src[col];
            BlendPixel(*format_, dst + px * format_->bytes, color, coverage * color[3] / 255);
        }
    }
}
