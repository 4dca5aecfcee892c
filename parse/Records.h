// Plain records read from SWF data and shared across the engine: gradient
// control points, line styles and the placement record GCTRL_INFO (which
// also carries the accumulated transform down the drawing calls).
#ifndef ZEL_PARSE_RECORDS_H
#define ZEL_PARSE_RECORDS_H

#include <cstdint>

#include "math/GCxform.h"
#include "math/GMatrix.h"

// One gradient control point: ratio 0..255, then its colour.
struct _GGRADIENT {
    uint32_t ratio;
    _GRGBA color;
};

// One line style. width is in pixels (the file's twips times 0.05), so the
// renderer hands it to the rasterizer after scaling only by the zoom.
struct _GSWFPEN {
    double width;
    _GRGBA color;
};

// PlaceObject2 flag bits as read.
enum : uint8_t {
    kPlaceMove = 0x01,
    kPlaceHasCharacter = 0x02,
    kPlaceHasMatrix = 0x04,
    kPlaceHasCxform = 0x08,
    kPlaceHasRatio = 0x10,
    kPlaceHasName = 0x20,
    kPlaceHasClipDepth = 0x40,
};

// A placement record. matrix, cxform and name are owned by the record until
// an actor takes them over; the reader zeroes the record first.
struct GCTRL_INFO {
    uint16_t depth;
    uint16_t characterId;
    uint16_t ratio;
    uint16_t clipDepth;
    GMatrix* matrix;
    GCxform* cxform;
    char* name;
    uint8_t placeFlags;
};

#endif
