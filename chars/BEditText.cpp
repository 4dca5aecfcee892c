// BEditText: loading of DefineEditText (with the HTML reduction and entity
// conversion of its initial text) and its drawing, as glyph shapes when the
// font has every character, else as records for the host's text callback.
#include "chars/BEditText.h"

#include <cstdint>
#include <cstring>

#include "base/Memory.h"
#include "chars/BFont.h"
#include "chars/BText.h"
#include "display/GActor.h"
#include "display/GDictionary.h"
#include "parse/GParser.h"
#include "render/GStage.h"

namespace {

enum : unsigned {
    kHasFont = 0x0001,
    kHasMaxLength = 0x0002,
    kHasTextColor = 0x0004,
    kPassword = 0x0010,
    kWordWrap = 0x0040,
    kHasText = 0x0080,
    kHtml = 0x0200,
    kBorder = 0x0800,
    kHasLayout = 0x2000,
};

// The glyph walk counts with an 8-bit index; it stops where that index would
// wrap, so a field draws at most this many glyphs and never loops.
constexpr int kMaxGlyphWalk = 256;

// Twips to whole output pixels, truncated toward zero. Values beyond 32 bits
// (the empty box's 1e30 sentinels, huge matrices) are clamped, NaN gives 0.
int32_t ToPixel(double twips) {
    double v = twips / 20.0;
    if (v != v) return 0;
    if (v >= 2147483647.0) return INT32_MAX;
    if (v <= -2147483648.0) return INT32_MIN;
    return static_cast<int32_t>(v);
}

// The field's matrix followed by the view, as the host's pixels need it.
GMatrix ToOutput(const GMatrix& m, const GStage* stage) {
    return stage->baseMatrix ? m * stage->viewMatrix : m;
}

}  // namespace

BEditText::~BEditText() { tovFree(text); }

_GRECT BEditText::GetBoundingBox(GMatrix* m) { return BChar::GetBoundingBox(m, bounds); }

int BEditText::LoadSWFFile(void* tag, GDictionary* dict) {
    if (!tag || !dict) return 0;
    GParser p;
    unsigned total = 0;
    p.InitTagHead(tag, &total, dict->movieEnd);
    p.ScanUI16();
    if (!p.ScanSWFRect(bounds, dict->error)) return 0;

    const unsigned flags = p.ScanUI16();
    password = (flags & kPassword) ? 1 : 0;
    wordWrap = (flags & kWordWrap) ? 1 : 0;
    border = (flags & kBorder) ? 1 : 0;
    if (flags & kHasFont) {
        fontId = static_cast<uint16_t>(p.ScanUI16());
        fontHeight = static_cast<uint16_t>(p.ScanUI16());
    }
    if (flags & kHasTextColor) {
        textColor.red = static_cast<uint8_t>(p.ScanUI8());
        textColor.green = static_cast<uint8_t>(p.ScanUI8());
        textColor.blue = static_cast<uint8_t>(p.ScanUI8());
        textColor.alpha = static_cast<uint8_t>(p.ScanUI8());
    }
    if (flags & kHasMaxLength) maxLength = static_cast<uint16_t>(p.ScanUI16());
    if (flags & kHasLayout) {
        align = static_cast<uint8_t>(p.ScanUI8());
        leftMargin = static_cast<uint16_t>(p.ScanUI16());
        rightMargin = static_cast<uint16_t>(p.ScanUI16());
        indent = static_cast<uint16_t>(p.ScanUI16());
        leading = static_cast<uint16_t>(p.ScanUI16());
    }
    char* variableName = nullptr;
    p.ReadString(&variableName);
    GParser::ReleaseReadString(&variableName);
    if (!(flags & kHasText)) return p.error ? 0 : 1;

    hasText = 1;
    char* initial = nullptr;
    const int count = p.ReadString(&initial);
    if (count <= 0) return 0;
    if (!(flags & kHtml)) {
        // The string block is ours already: keep it rather than copy it.
        text = initial;
        initial = nullptr;
        textLength = static_cast<uint16_t>(count - 1);
    } else {
        uint32_t written = 0;
        bool ok = true;
        text = ReduceHtml(initial, written, ok);
        if (!ok) {
            GParser::ReleaseReadString(&initial);
            return 0;
        }
        if (text) {
            textLength = static_cast<uint16_t>(written);
            ConvertESC(text);
        }
    }
    GParser::ReleaseReadString(&initial);
    return p.error ? 0 : 1;
}

char* BEditText::ReduceHtml(const char* html, uint32_t& written, bool& ok) {
    written = 0;
    ok = true;
    if (!html) return nullptr;
    // Each kept run ends before the "<" that closes it, so the output never
    // outgrows the input and one block of the input's size is enough.
    const size_t capacity = std::strlen(html) + 1;
    char* out = nullptr;
    bool insideTag = false;
    const char* run = nullptr;
    size_t runLength = 0;
    for (const char* c = html; *c; ++c) {
        if (*c == '<') {
            insideTag = true;
            if (!run) continue;
            if (!out) {
                out = static_cast<char*>(tovMalloc(capacity));
                if (!out) {
                    ok = false;
                    return nullptr;
                }
            }
            tovMemCpy(out + written, run, runLength);
            written += static_cast<uint32_t>(runLength);
            out[written++] = '\n';
            run = nullptr;
            runLength = 0;
        } else if (*c == '>') {
            insideTag = false;
        } else if (!insideTag) {
            // A run is a start and a length: the bytes copied are the ones
            // from its start on, whatever lies between.
            if (!run) run = c;
            ++runLength;
        }
    }
    // The last line feed becomes the terminator. A run that no "<" closes is
    // never copied, so text after the last tag is dropped on purpose: <p>Hi</p>
    // gives "Hi", A<br>B gives "A", and text with no tag gives nothing.
    if (out) out[written - 1] = '\0';
    return out;
}

int BEditText::Comp(const char* text, const char* entity) {
    for (; *entity; ++entity, ++text)
        if (*text != *entity) return 0;
    return 1;
}

void BEditText::ConvertESC(char* text) {
    if (!text) return;
    static const struct {
        const char* name;
        size_t length;
        char character;
    } kEntities[] = {{"&lt;", 4, '<'}, {"&gt;", 4, '>'}, {"&amp;", 5, '&'}, {"&apos;", 6, '\''}, {"&quot;", 6, '"'}};
    char* write = text;
    const char* read = text;
    while (*read) {
        bool matched = false;
        if (*read == '&') {
            for (const auto& entity : kEntities) {
                if (Comp(read, entity.name)) {
                    *write++ = entity.character;
                    read += entity.length;
                    matched = true;
                    break;
                }
            }
        }
        if (!matched) *write++ = *read++;
    }
    *write = '\0';
}

_GDEVICETEXT* BEditText::NewRecord() {
    // Words the record does not fill reach the host as zeros.
    _GDEVICETEXT* record = static_cast<_GDEVICETEXT*>(tovMalloc(sizeof(_GDEVICETEXT)));
    if (record) tovMemSet(record, 0, sizeof(_GDEVICETEXT));
    return record;
}

// The record lives only for the call: the host copies what it keeps.
void BEditText::SendRecord(_GDEVICETEXT* record, GDictionary* dict) {
    if (dict && dict->textDraw) dict->textDraw(record, dict->textDrawUser);
    tovFree(record);
}

void BEditText::SetTextBox(_GDEVICETEXT*& record, GMatrix& matrix, GStage* stage) {
    const _GRECT box = ToOutput(matrix, stage).Transform(bounds);
    const _GRECT& clip = stage->curClipBox;
    _GRECT visible = kEmptyBounds;
    if (!IsEmptyRect(box) && !IsEmptyRect(clip)) {
        _GRECT overlap = {box.left > clip.left ? box.left : clip.left, box.top > clip.top ? box.top : clip.top,
                          box.right < clip.right ? box.right : clip.right,
                          box.bottom < clip.bottom ? box.bottom : clip.bottom};
        // Boxes that only touch still overlap.
        if (overlap.left <= overlap.right && overlap.top <= overlap.bottom) visible = overlap;
    }
    const double edges[8] = {box.left,     box.top,     box.right,     box.bottom,
                             visible.left, visible.top, visible.right, visible.bottom};
    for (int i = 0; i < 4; ++i) {
        record->box[i] = ToPixel(edges[i]);
        record->visible[i] = ToPixel(edges[4 + i]);
    }
}

void BEditText::DrawBorder(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) {
    if (!stage || !actor || !dict || !dict->textDraw) return;
    _GDEVICETEXT* record = NewRecord();
    if (!record) return;
    GCTRL_INFO info;
    GMatrix m;
    GCxform cx;
    BChar::GetPlacement(info, m, cx, actor, ctx);
    SetTextBox(record, *info.matrix, stage);
    record->kind = 1;
    SendRecord(record, dict);
}

void BEditText::DrawDeviceText(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict, BFont* font) {
    if (!stage || !actor || !font || !dict || !dict->textDraw) return;
    _GDEVICETEXT* record = NewRecord();
    if (!record) return;
    GCTRL_INFO info;
    GMatrix m;
    GCxform cx;
    BChar::GetPlacement(info, m, cx, actor, ctx);
    const GMatrix output = ToOutput(*info.matrix, stage);
    record->text = text;
    record->size = ToPixel(fontHeight * ((output.m[0][0] + output.m[1][1]) / 2));
    // A DefineFont without a DefineFontInfo has no name: the host gets "".
    record->fontName = font->name ? font->name : "";
    tovMemCpy(&record->color, &textColor, sizeof(record->color));
    record->italic = font->italic;
    record->bold = font->bold;
    record->kind = 0;
    record->wordWrap = wordWrap;
    record->align = align;
    SetTextBox(record, *info.matrix, stage);
    SendRecord(record, dict);
}

void BEditText::DrawGlyphs(GStage* stage, const GCTRL_INFO& info, GMatrix& matrix, GDictionary* dict, BFont* font) {
    GPointPoolArray<void> brushes(10);
    GDataArray<_GSWFPEN> pens(10);
    _GSWFSOLIDBRUSH* brush = nullptr;
    BText::InitPenAndBrush(brushes, pens, brush);
    if (!brush) return;
    brush->color = textColor;

    const int h = fontHeight;
    const double scale = h * BText::kGlyphScale;
    const double lineWidth = bounds.right - bounds.left;
    const int lineStep = (h + h / 8) / 20;
    double x = 0;
    double y = h / 2 + h / 8 + h / 16;
    int previous = 0;
    for (int i = 0; i < kMaxGlyphWalk && text[i]; ++i) {
        // Bytes are character codes as signed chars: 0x80..0xFF find nothing.
        const int code = static_cast<signed char>(text[i]);
        _GSHAPE* shape = font->GetShapeByCode(code);
        if (i > 0) x += font->GetKerningByCode(previous, code);
        previous = code;
        if (shape) {
            GMatrix glyph;
            glyph.m[0][0] = glyph.m[1][1] = scale;
            glyph.m[0][2] = x;
            glyph.m[1][2] = y;
            GMatrix full = glyph * matrix;
            BText::DrawGlyph(stage, info, full, shape, brushes, pens, dict);
            const int advance = font->GetAdvanceByCode(code);
            x += advance > 0 ? advance * scale : h / 2;
            if (wordWrap && lineWidth < x) {
                x = 0;
                y += lineStep;
            }
        } else if (code == '\n') {
            x = 0;
            y += lineStep;
        }
    }
}

void BEditText::Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) {
    if (!text || fontId == 0 || !stage || !actor) return;
    // The stored text itself becomes stars and stays so for later frames.
    if (password)
        for (char* c = text; *c; ++c) *c = '*';
    GCTRL_INFO info;
    GMatrix m;
    GCxform cx;
    BChar::GetPlacement(info, m, cx, actor, ctx);
    if (info.cxform && info.cxform->alphaMult == 0 && info.cxform->alphaAdd == 0) return;
    if (border) DrawBorder(stage, actor, ctx, dict);
    BFont* font = BFont::Lookup(dict, fontId);
    if (!font) return;
    if (!font->HasGlyph(text)) {
        DrawDeviceText(stage, actor, ctx, dict, font);
        return;
    }
    DrawGlyphs(stage, info, *info.matrix, dict, font);
}
