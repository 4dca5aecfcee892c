// Fill records (one plain heap block per fill style, freed with tovFree) and
// GBrush, the base of the readers that turn one SWF FILLSTYLE into a record
// (GSolidBrush, GGradientBrush); bitmap and unknown fills give null.
#ifndef ZEL_CHARS_GBRUSH_H
#define ZEL_CHARS_GBRUSH_H

#include "base/GArray.h"
#include "math/GCxform.h"
#include "math/GMatrix.h"
#include "parse/Records.h"

class GDictionary;
class GParser;

enum GBrushType { kBrushSolid = 1, kBrushLinear = 2, kBrushRadial = 3, kBrushBitmap = 4, kBrushBitmapClipped = 5 };

// The three fields every fill record begins with. matrix and cxform are
// borrowed for one draw (set by GBrush::SetMatrixToArray); null means identity.
struct _GSWFBRUSHHEAD {
    int type;
    double (*matrix)[3];
    GCxform* cxform;
};

struct _GSWFSOLIDBRUSH {
    int type;
    double (*matrix)[3];
    GCxform* cxform;
    _GRGBA color;
};

// Followed in the same block by `count` _GGRADIENT entries (Entries()).
struct _GSWFGRADIENTBRUSH {
    int type;
    double (*matrix)[3];
    GCxform* cxform;
    double gradientMatrix[6];  // a b tx c d ty, translations in pixels
    int count;

    _GGRADIENT* Entries() { return reinterpret_cast<_GGRADIENT*>(this + 1); }
    // Stores a gradient matrix as read (twips), its translations in pixels.
    void SetGradientMatrix(const GMatrix& gm) {
        const double pixels[6] = {gm.m[0][0], gm.m[0][1], gm.m[0][2] * 0.05,
                                  gm.m[1][0], gm.m[1][1], gm.m[1][2] * 0.05};
        for (int i = 0; i < 6; ++i) gradientMatrix[i] = pixels[i];
    }
    static size_t SizeFor(int count) { return sizeof(_GSWFGRADIENTBRUSH) + sizeof(_GGRADIENT) * static_cast<size_t>(count); }
};

class GBrush {
public:
    int type = 0;
    void* record = nullptr;

    virtual ~GBrush() = default;
    virtual int ScanSWFFile(GParser* p, GDictionary* dict, int hasAlpha);

    // One fill style: a new record, or null (bitmap, unknown or unreadable).
    static void* ScanSWFBrush(GParser* p, GDictionary* dict, int hasAlpha);
    // SWF fill type byte to record type: 0x00 1, 0x10 2, 0x12 3, 0x40 4, 0x41 5, else 0.
    static int GetSWFType(unsigned char swfType);
    // Lends matrix and cxform (null when identity) to the records in [from, to).
    static void SetMatrixToArray(GPointPoolArray<void>& brushes, int from, int to, double (*matrix)[3],
                                 GCxform* cxform);
};

#endif
