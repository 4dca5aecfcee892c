// BMorph: a DefineMorphShape character, a start and an end shape with
// parallel styles and edges, drawn in between by the placement's ratio
// (0 start, 65535 end). The static Generate helpers build the in-between
// points, pens and fill records for the morph renderer.
#ifndef ZEL_CHARS_BMORPH_H
#define ZEL_CHARS_BMORPH_H

#include "chars/GBrush.h"
#include "chars/GShapeParser.h"
#include "display/BChar.h"

class BMorph : public BChar {
public:
    _GSHAPE* startShape = nullptr;
    _GSHAPE* endShape = nullptr;
    int loaded = 0;
    _GRECT startBounds = {0, 0, 0, 0};
    _GRECT endBounds = {0, 0, 0, 0};
    _GRECT bounds = {0, 0, 0, 0};

    using BChar::GetBoundingBox;

    ~BMorph() override;
    int LoadSWFFile(void* tag, GDictionary* dict) override;
    void Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) override;
    _GRECT GetBoundingBox(GMatrix* m) override;
    int NotSucceedLoaded();
    // One morph fill style of record type `type`, read into a start and an end
    // record (both zeroed beyond what is read); 1, or 0 with nothing kept.
    int LoadSolidBrush(GParser* p, int type, void*& start, void*& end, GDictionary* dict);
    int LoadGradientBrush(GParser* p, int type, void*& start, void*& end, GDictionary* dict);
    int LoadBitmapBrush(GParser* p, int type, void*& start, void*& end, GDictionary* dict);

    // 0: straight, result in start[0]; 1: curve, control in start[0] and
    // anchor in start[1]. previous holds the start's and end's last anchors.
    static int GeneratePoint(unsigned short ratio, _GPOINT* start, _GPOINT* end, _GPOINT* previous,
                             int startIsCurve, int endIsCurve);
    static _GSWFSOLIDBRUSH* GenerateSolidBrush(unsigned short ratio, _GSWFSOLIDBRUSH* start,
                                               _GSWFSOLIDBRUSH* end);
    static _GSWFGRADIENTBRUSH* GenerateGradientBrush(unsigned short ratio, _GSWFGRADIENTBRUSH* start,
                                                     _GSWFGRADIENTBRUSH* end);
    static int GeneratePenBrush(unsigned short ratio, GDataArray<_GSWFPEN>& outPens,
                                GPointPoolArray<void>& outBrushes, GDataArray<_GSWFPEN>& startPens,
                                GDataArray<_GSWFPEN>& endPens, GPointPoolArray<void>& startBrushes,
                                GPointPoolArray<void>& endBrushes);

private:
    int LoadFillStyles(GParser* p, GDictionary* dict);
    int LoadLineStyles(GParser* p, GDictionary* dict);
};

#endif
