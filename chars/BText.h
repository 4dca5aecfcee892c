// BText: a DefineText or DefineText2 character, a bounds rectangle, a text
// matrix and the text records. Drawing walks the records with a pen position
// and draws each glyph of the current font as a shape filled with the
// current colour. Also holds the glyph-drawing helpers edit text shares.
#ifndef ZEL_CHARS_BTEXT_H
#define ZEL_CHARS_BTEXT_H

#include "base/GArray.h"
#include "chars/GBrush.h"
#include "chars/GShapeParser.h"
#include "chars/GTextRecord.h"
#include "display/BChar.h"

class BText : public BChar {
public:
    // Glyph outlines are laid out on a 1024-unit em square: a glyph drawn at
    // a height of h twips is scaled by h x this (h x 0.05 x 20 / 1024).
    static constexpr double kGlyphScale = 0.05 * 0.01953125;

    _GRECT bounds = {0, 0, 0, 0};
    GMatrix textMatrix;
    GArray<GTextRecord*, GPointObjectDestroy<GTextRecord>> records{10};

    using BChar::GetBoundingBox;

    int LoadSWFFile(void* tag, GDictionary* dict) override;
    void Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) override;
    // The bounds under m only: the text matrix is not applied.
    _GRECT GetBoundingBox(GMatrix* m) override;

    // Two zero pens and a null fill then one solid fill record (alpha 0),
    // handed back in `brush`: index 1 of a glyph resolves to the text's fill.
    static void InitPenAndBrush(GPointPoolArray<void>& brushes, GDataArray<_GSWFPEN>& pens,
                                _GSWFSOLIDBRUSH*& brush);
    // Lends the first two entries of the text's arrays to the glyph.
    static void InitShape(_GSHAPE*& glyph, GPointPoolArray<void>& brushes, GDataArray<_GSWFPEN>& pens);
    // Draws one glyph with the text's styles under `matrix` (glyph space to
    // stage space), with the rest of the drawing context from `placement`.
    static void DrawGlyph(GStage* stage, const GCTRL_INFO& placement, GMatrix& matrix, _GSHAPE* glyph,
                          GPointPoolArray<void>& brushes, GDataArray<_GSWFPEN>& pens, GDictionary* dict);

private:
    // Gives the borrowed style storage back, leaving the glyph with none.
    static void ReleaseShape(_GSHAPE* glyph);
};

#endif
