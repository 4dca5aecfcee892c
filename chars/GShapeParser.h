// The shape-record reader shared by shapes, morph shapes, font glyphs and
// text: the parsed-shape record _GSHAPE (style arrays plus a pointer to the
// records left in the movie buffer), the run state _GSHAPESTATUS, and the
// static readers of style-change and edge records.
#ifndef ZEL_CHARS_GSHAPEPARSER_H
#define ZEL_CHARS_GSHAPEPARSER_H

#include <cstdint>

#include "base/GArray.h"
#include "math/GPoint.h"
#include "parse/Records.h"

class GDictionary;
class GParser;

struct _GSHAPE {
    unsigned char* records = nullptr;     // NumFillBits/NumLineBits byte, then the records
    uint32_t recordsLength = 0;           // bytes from records to the end of the tag
    GPointPoolArray<void> brushes{10};    // fill records; 0 is a null placeholder
    GDataArray<_GSWFPEN> pens{10};        // line styles; 0 is a zero placeholder
    uint32_t version = 0;                 // defining tag code
    const unsigned char* limit = nullptr; // end of the host's buffer, bounds every re-read
};

struct _GSWFSHAPEVERSIONINFO {
    int hasAlpha;
    int hasExtendedCount;
    int hasNewStyles;
};

struct _GSHAPESTATUS {
    int changed;
    int newStyles;
    int moved;
    int fillBits;
    int lineBits;
    int brushBase;
    int penBase;
    _GPOINT movePoint;
    _TWIPPOINT moveTwips;
    uint16_t fillStyle0;
    uint16_t fillStyle1;
    uint16_t lineStyle;
};

class GShapeParser {
public:
    static unsigned ScanFlag(GParser* p);
    static int IsBrushLine(_GSHAPESTATUS status);
    // Reads a run of style-change records starting with `flags`: -1 on a
    // reader error, 0 at the end of the shape, else the flags of the edge
    // record that ends the run. New styles are appended to pens and brushes.
    static int ScanStyles(GParser* p, unsigned flags, _GSHAPESTATUS& status, GDictionary* dict,
                          GDataArray<_GSWFPEN>& pens, GPointPoolArray<void>& brushes,
                          _GSWFSHAPEVERSIONINFO& info);
    // Reads one edge record; out receives one point (straight) or control and
    // anchor (curve). Returns the next record's flags.
    static unsigned ScanLine(GParser* p, unsigned flags, _GPOINT& point, _TWIPPOINT& position,
                             _GPOINT* out, int& isCurve);
    static _GSWFSHAPEVERSIONINFO GetVersionInfo(unsigned tag);
};

#endif
