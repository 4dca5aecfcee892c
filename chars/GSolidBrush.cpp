// GSolidBrush: a solid FILLSTYLE becomes a solid fill record holding the
// colour (alpha 255 unless the shape version carries alpha).
#include "chars/GSolidBrush.h"

#include "display/GDictionary.h"
#include "parse/GParser.h"

int GSolidBrush::ScanSWFFile(GParser* p, GDictionary* dict, int hasAlpha) {
    record = nullptr;
    _GSWFSOLIDBRUSH* solid = static_cast<_GSWFSOLIDBRUSH*>(tovMalloc(sizeof(_GSWFSOLIDBRUSH)));
    if (solid) {
        tovMemSet(solid, 0, sizeof(_GSWFSOLIDBRUSH));
        if (p->ScanRGBAColor(solid->color, hasAlpha, dict ? dict->error : nullptr)) {
            solid->type = kBrushSolid;
            record = solid;
            return 1;
        }
        tovFree(solid);
    }
    if (dict) dict->PushError(kErrSolidBrush);
    return 0;
}
