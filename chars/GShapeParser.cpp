// GShapeParser: the readers of SWF shape records (style changes and edges)
// that every shape-like character re-runs at draw time over the records it
// left in the movie buffer.
#include "chars/GShapeParser.h"

#include "display/GDictionary.h"
#include "parse/GParser.h"

namespace {
enum : unsigned {
    kRecordEdge = 0x20,
    kEdgeStraight = 0x10,
    kStyleNewStyles = 0x10,
    kStyleLine = 0x08,
    kStyleFill1 = 0x04,
    kStyleFill0 = 0x02,
    kStyleMoveTo = 0x01,
};

// Adds a delta of `bits` bits to the running position.
void AddDelta(GParser* p, int bits, int32_t& coordinate) {
    coordinate = static_cast<int32_t>(static_cast<uint32_t>(coordinate) +
                                      static_cast<uint32_t>(p->ParseSI32(bits)));
}

void SetPoint(_GPOINT& point, const _TWIPPOINT& position) {
    point.x = position.x;
    point.y = position.y;
}
}  // namespace

unsigned GShapeParser::ScanFlag(GParser* p) { return p->ParseUI32(6); }

int GShapeParser::IsBrushLine(_GSHAPESTATUS status) {
    if (!status.newStyles) return 0;
    // The line-bit width here is the previous segment's: the test runs before
    // the new widths are read, and is meant to.
    int sum = status.lineBits + status.penBase;
    return (sum == 0 || sum > 2) ? 1 : 0;
}

int GShapeParser::ScanStyles(GParser* p, unsigned flags, _GSHAPESTATUS& status, GDictionary* dict,
                             GDataArray<_GSWFPEN>& pens, GPointPoolArray<void>& brushes,
                             _GSWFSHAPEVERSIONINFO& info) {
    status.changed = 0;
    status.newStyles = 0;
    status.moved = 0;
    if (flags == 0 || flags == 0xFFFFFFFFu || (flags & kRecordEdge)) return static_cast<int>(flags);
    status.changed = 1;
    GError* errors = dict ? dict->error : nullptr;
    for (;;) {
        if (flags & kStyleMoveTo) {
            status.moved = 1;
            p->ScanTwipPoint(status.moveTwips, errors);
            SetPoint(status.movePoint, status.moveTwips);
        }
        if (flags & kStyleFill0) status.fillStyle0 = static_cast<uint16_t>(p->ParseUI32(status.fillBits));
        if (flags & kStyleFill1) status.fillStyle1 = static_cast<uint16_t>(p->ParseUI32(status.fillBits));
        if (flags & kStyleLine) status.lineStyle = static_cast<uint16_t>(p->ParseUI32(status.lineBits));
        if (info.hasNewStyles && (flags & kStyleNewStyles)) {
            status.newStyles = 1;
            status.moved = 1;
            int penCount = pens.GetCount();
            int brushCount = brushes.GetCount();
            status.penBase = penCount > 0 ? penCount - 1 : 0;
            status.brushBase = brushCount > 0 ? brushCount - 1 : 0;
            // The array readers' failures show in the parser's error flag,
            // which is tested right after this record.
            p->ScanBrushArray(brushes, dict, info.hasAlpha, info.hasExtendedCount);
            p->ScanPenArray(pens, info.hasAlpha, errors, IsBrushLine(status));
            status.fillBits = static_cast<int>(p->ParseUI32(4));
            status.lineBits = static_cast<int>(p->ParseUI32(4));
        }
        flags = ScanFlag(p);
        if (p->error) return -1;
        if (flags == 0) return 0;
        if (flags & kRecordEdge) return static_cast<int>(flags);
    }
}

unsigned GShapeParser::ScanLine(GParser* p, unsigned flags, _GPOINT& point, _TWIPPOINT& position, _GPOINT* out,
                                int& isCurve) {
    int bits = static_cast<int>(flags & 15) + 2;
    if (flags & kEdgeStraight) {
        isCurve = 0;
        if (p->ParseUI32(1)) {
            AddDelta(p, bits, position.x);
            AddDelta(p, bits, position.y);
            SetPoint(point, position);
        } else if (p->ParseUI32(1)) {
            AddDelta(p, bits, position.y);
            point.y = position.y;
        } else {
            AddDelta(p, bits, position.x);
            point.x = position.x;
        }
        out[0] = point;
    } else {
        isCurve = 1;
        AddDelta(p, bits, position.x);
        AddDelta(p, bits, position.y);
        SetPoint(point, position);
        out[0] = point;
        AddDelta(p, bits, position.x);
        AddDelta(p, bits, position.y);
        SetPoint(point, position);
        out[1] = point;
    }
    return ScanFlag(p);
}

_GSWFSHAPEVERSIONINFO GShapeParser::GetVersionInfo(unsigned tag) {
    _GSWFSHAPEVERSIONINFO info;
    info.hasAlpha = tag == 32;
    info.hasExtendedCount = tag == 22 || tag == 32;
    info.hasNewStyles = tag == 22 || tag == 32;
    return info;
}
