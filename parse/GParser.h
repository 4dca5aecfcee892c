// GParser: the readers of the SWF records that many tags share (tag header,
// RECT, MATRIX, CXFORM, colours, gradients, points, strings, style arrays and
// the two placement records). Each reader tests the sticky error flag once at
// the end of its record, pushes its own code on failure and returns 0.
#ifndef ZEL_PARSE_GPARSER_H
#define ZEL_PARSE_GPARSER_H

#include "base/GArray.h"
#include "base/GError.h"
#include "math/GPoint.h"
#include "parse/GScanner.h"
#include "parse/Records.h"
#include "zelengine.h"

class GDictionary;

class GParser : public GScanner {
public:
    GParser() = default;
    GParser(const GParser& other) = default;

    // Sets this parser over the tag at `tag` (bounded by its declared length,
    // reads past `bufferLimit` give 0); returns the code and the total length
    // (header included), or 0 with the length 0.
    unsigned InitTagHead(void* tag, unsigned* totalLength, const void* bufferLimit);
    // Reads a tag header here: the code, with the body length in `length`.
    unsigned ScanTag(unsigned& length);

    // Reserves room in `array` for `count` more entries of at least
    // `bytesEach` bytes each, but no more than the bytes left can hold: a
    // count read from the movie reserves once, and a huge count over a short
    // tag reserves only what could really follow.
    template <class Array> void ReserveEntries(Array& array, unsigned count, unsigned bytesEach) {
        unsigned most = Remaining() / bytesEach;
        array.Reserve(array.GetCount() + static_cast<int>(count < most ? count : most));
    }

    int ScanSWFRect(_GRECT& r, GError* errors);
    int ScanSWFMatrix(GMatrix* m, GError* errors);
    int ScanColorMatrix(GCxform& cx, int withAlpha, GError* errors);
    int ScanRGBAColor(_GRGBA& c, int withAlpha, GError* errors);
    int ScanGradient(_GGRADIENT& g, int withAlpha, GError* errors);
    int ScanTwipPoint(_TWIPPOINT& p, GError* errors);
    int ScanBrushArray(GPointPoolArray<void>& brushes, GDictionary* dictionary, int shapeKind, int unused);
    int ScanPenArray(GDataArray<_GSWFPEN>& pens, int withAlpha, GError* errors, int unused);
    int LoadCtrlPlace(unsigned totalLength, GCTRL_INFO* info, GError* errors);
    // 1 place, 2 modify, 3 replace, 0 bad record.
    int LoadCtrlPlace2(unsigned totalLength, GCTRL_INFO* info, GError* errors);

    int ReadString(char** out);
    static void ReleaseReadString(char** p);
    void ParseFrameLabel();
    // Frame index of the FrameLabel `label` in the tags [first, end], or -1.
    int GetLableFrame(void* first, void* end, char* label);
    static int EquString(const char* a, const char* b);
};

#endif
