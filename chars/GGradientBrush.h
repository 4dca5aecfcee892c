// GGradientBrush: reads a linear or radial gradient FILLSTYLE (matrix, entry
// count, entries) into a gradient fill record. The caller sets `type` (2
// linear, 3 radial) before scanning.
#ifndef ZEL_CHARS_GGRADIENTBRUSH_H
#define ZEL_CHARS_GGRADIENTBRUSH_H

#include "chars/GBrush.h"

class GGradientBrush : public GBrush {
public:
    int ScanSWFFile(GParser* p, GDictionary* dict, int hasAlpha) override;
};

#endif
