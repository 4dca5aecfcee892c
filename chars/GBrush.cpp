// GBrush: dispatch of one FILLSTYLE to the reader of its kind, the mapping of
// SWF fill type bytes, and the lending of a draw's matrix and colour transform
// to the fill records of a shape.
#include "chars/GBrush.h"

#include "chars/GGradientBrush.h"
#include "chars/GSolidBrush.h"
#include "display/GDictionary.h"
#include "parse/GParser.h"

int GBrush::ScanSWFFile(GParser*, GDictionary*, int) {
    record = nullptr;
    return 0;
}

void* GBrush::ScanSWFBrush(GParser* p, GDictionary* dict, int hasAlpha) {
    unsigned swfType = p->ScanUI8();
    switch (swfType) {
    case 0x00: {
        GSolidBrush solid;
        solid.ScanSWFFile(p, dict, hasAlpha);
        return solid.record;
    }
    case 0x10:
    case 0x12: {
        GGradientBrush gradient;
        gradient.type = swfType == 0x10 ? kBrushLinear : kBrushRadial;
        gradient.ScanSWFFile(p, dict, hasAlpha);
        return gradient.record;
    }
    case 0x40:
    case 0x41: {
        // Bitmaps are not drawn: the body is consumed so the next style is
        // read from the right place, and the entry stays empty.
        GMatrix unused;
        p->ScanUI16();
        p->ScanSWFMatrix(&unused, dict ? dict->error : nullptr);
        return nullptr;
    }
    default:
        // An unknown type has no known body length, so nothing more is read;
        // the rest of the array is then read from the wrong place. That is the
        // format's own outcome for such data and it is kept.
        return nullptr;
    }
}

int GBrush::GetSWFType(unsigned char swfType) {
    switch (swfType) {
    case 0x00: return kBrushSolid;
    case 0x10: return kBrushLinear;
    case 0x12: return kBrushRadial;
    case 0x40: return kBrushBitmap;
    case 0x41: return kBrushBitmapClipped;
    default: return 0;
    }
}

void GBrush::SetMatrixToArray(GPointPoolArray<void>& brushes, int from, int to, double (*matrix)[3],
                              GCxform* cxform) {
    // Identity transforms are lent as null so the rasterizer can skip them.
    if (matrix) {
        GMatrix probe;
        tovMemCpy(probe.m, matrix, sizeof(probe.m));
        if (probe.IsIdentify()) matrix = nullptr;
    }
    if (cxform && cxform->IsIdentify()) cxform = nullptr;
    if (from < 0) from = 0;
    if (to > brushes.GetCount()) to = brushes.GetCount();
    for (int i = from; i < to; ++i) {
        _GSWFBRUSHHEAD* head = static_cast<_GSWFBRUSHHEAD*>(brushes[i]);
        if (!head) continue;
        head->matrix = matrix;
        head->cxform = cxform;
    }
}
