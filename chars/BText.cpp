// BText: loading of DefineText and DefineText2 records and their drawing, a
// walk over the records with a pen position that draws each glyph through
// the stage as a shape filled with the text's current colour.
#include "chars/BText.h"

#include <new>

#include "base/Memory.h"
#include "chars/BFont.h"
#include "display/GActor.h"
#include "display/GDictionary.h"
#include "parse/GParser.h"
#include "render/GStage.h"

namespace {

constexpr unsigned kTagDefineText2 = 33;

}  // namespace

int BText::LoadSWFFile(void* tag, GDictionary* dict) {
    if (!tag || !dict) return 0;
    GParser p;
    unsigned total = 0;
    const unsigned code = p.InitTagHead(tag, &total, dict->movieEnd);
    p.ScanUI16();
    if (!p.ScanSWFRect(bounds, dict->error) || !p.ScanSWFMatrix(&textMatrix, dict->error)) return 0;

    const unsigned glyphBits = p.ScanUI8();
    const unsigned advanceBits = p.ScanUI8();
    const GTextRecordInfo info = MakeTextRecordInfo(glyphBits, advanceBits);
    const GTextRecordInfo hasAlpha = code == kTagDefineText2 ? 1 : 0;

    while (!p.error) {
        // A read past the tag gives 0 as well, so text without a terminator
        // ends there as if it had one.
        const unsigned flags = p.ScanUI8();
        if (flags == 0) return 1;
        const bool styleChange = (flags & 0x80) != 0;
        GTextRecord* record = styleChange ? static_cast<GTextRecord*>(new (std::nothrow) GTextStyleChange)
                                          : static_cast<GTextRecord*>(new (std::nothrow) GGlyphRecord);
        if (!record) break;
        if (!record->LoadSWFFile(&p, static_cast<unsigned char>(flags), dict, styleChange ? hasAlpha : info)) {
            delete record;
            break;
        }
        // The array grows by a fixed step; widening the step as it fills
        // keeps loading a text of many short records linear.
        if (records.count == records.capacity && records.capacity > records.growBy) records.growBy = records.capacity;
        if (!records.Add(record)) {
            delete record;
            break;
        }
    }
    records.RemoveAll();
    return 0;
}

_GRECT BText::GetBoundingBox(GMatrix* m) { return BChar::GetBoundingBox(m, bounds); }

void BText::InitPenAndBrush(GPointPoolArray<void>& brushes, GDataArray<_GSWFPEN>& pens, _GSWFSOLIDBRUSH*& brush) {
    const _GSWFPEN zeroPen = {0.0, {0, 0, 0, 0}};
    brush = nullptr;
    if (!pens.Add(zeroPen) || !pens.Add(zeroPen) || !brushes.Add(nullptr)) return;
    _GSWFSOLIDBRUSH* solid = static_cast<_GSWFSOLIDBRUSH*>(tovMalloc(sizeof(_GSWFSOLIDBRUSH)));
    if (!solid) return;
    tovMemSet(solid, 0, sizeof(_GSWFSOLIDBRUSH));
    solid->type = kBrushSolid;
    if (!brushes.Add(solid)) {
        tovFree(solid);
        return;
    }
    brush = solid;
}

// The glyph's arrays share the text's storage for one draw instead of
// copying it: glyph shapes have no styles of their own, and glyph versions
// never append new styles while drawing.
void BText::InitShape(_GSHAPE*& glyph, GPointPoolArray<void>& brushes, GDataArray<_GSWFPEN>& pens) {
    glyph->brushes.RemoveAll();
    glyph->pens.RemoveAll();
    glyph->brushes.data = brushes.data;
    glyph->brushes.count = glyph->brushes.capacity = 2;
    glyph->pens.data = pens.data;
    glyph->pens.count = glyph->pens.capacity = 2;
}

void BText::ReleaseShape(_GSHAPE* glyph) {
    glyph->brushes.data = nullptr;
    glyph->brushes.count = glyph->brushes.capacity = 0;
    glyph->pens.data = nullptr;
    glyph->pens.count = glyph->pens.capacity = 0;
}

void BText::DrawGlyph(GStage* stage, const GCTRL_INFO& placement, GMatrix& matrix, _GSHAPE* glyph,
                      GPointPoolArray<void>& brushes, GDataArray<_GSWFPEN>& pens, GDictionary* dict) {
    if (!glyph || brushes.count < 2 || pens.count < 2) return;
    GCTRL_INFO info = placement;
    info.matrix = &matrix;
    InitShape(glyph, brushes, pens);
    stage->DrawShape(&info, glyph, nullptr, dict);
    ReleaseShape(glyph);
}

void BText::Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) {
    if (!stage || !actor) return;
    GCTRL_INFO info;
    GMatrix placement;
    GCxform cx;
    BChar::GetPlacement(info, placement, cx, actor, ctx);
    // The text matrix maps first, then the placement.
    const GMatrix combined = textMatrix * *info.matrix;

    GPointPoolArray<void> brushes(10);
    GDataArray<_GSWFPEN> pens(10);
    _GSWFSOLIDBRUSH* brush = nullptr;
    InitPenAndBrush(brushes, pens, brush);
    if (!brush) return;

    BFont* font = nullptr;
    bool lookupFailed = false;
    double x = 0, y = 0, height = 0;
    for (int r = 0; r < records.count; ++r) {
        GTextRecord* record = records[r];
        if (record->GetType() == 1) {
            const GGlyphRecord* run = static_cast<const GGlyphRecord*>(record);
            const bool drawable = font && height != 0;
            const double scale = height * kGlyphScale;
            for (int i = 0; i < run->glyphCount; ++i) {
                const GlyphEntry& entry = run->entries[i];
                if (drawable && entry.glyphIndex < font->glyphCount) {
                    GMatrix glyph;
                    glyph.m[0][0] = glyph.m[1][1] = scale;
                    glyph.m[0][2] = x;
                    glyph.m[1][2] = y;
                    GMatrix full = glyph * combined;
                    DrawGlyph(stage, info, full, font->glyphs[entry.glyphIndex], brushes, pens, dict);
                }
                x += entry.advance;
            }
            continue;
        }
        const GTextStyleChange* style = static_cast<const GTextStyleChange*>(record);
        // Once a font lookup has failed while a font is current, the style
        // changes that follow are ignored: the text keeps its last state.
        if (lookupFailed && font) continue;
        if (style->fontId != 0) {
            BFont* next = BFont::Lookup(dict, style->fontId);
            if (!next) {
                lookupFailed = true;
                continue;
            }
            font = next;
        }
        // Offsets are absolute positions, not moves.
        if (style->xOffset != -1) x = style->xOffset;
        if (style->yOffset != -1) y = style->yOffset;
        if (style->height != -1) height = style->height;
        // An alpha of 0 means no colour was given, so a DefineText2 colour
        // that is fully transparent leaves the earlier colour in force.
        if (style->color.alpha != 0) brush->color = style->color;
    }
}
