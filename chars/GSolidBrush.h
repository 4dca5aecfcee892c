// GSolidBrush: reads a solid FILLSTYLE (one RGB or RGBA colour) into a solid
// fill record. Like every brush reader it lives on the stack for one fill
// style and hands its record over through `record`.
#ifndef ZEL_CHARS_GSOLIDBRUSH_H
#define ZEL_CHARS_GSOLIDBRUSH_H

#include "chars/GBrush.h"

class GSolidBrush : public GBrush {
public:
    GSolidBrush() { type = kBrushSolid; }
    int ScanSWFFile(GParser* p, GDictionary* dict, int hasAlpha) override;
};

#endif
