// BMorph: loads a DefineMorphShape into a start and an end shape with parallel
// styles, and builds the in-between points, pens and fill records for a ratio
// (coordinates mix as doubles, colours as integers truncated toward zero).
#include "chars/BMorph.h"

#include <new>

#include "display/GDictionary.h"
#include "parse/GParser.h"

namespace {

// The morph's own version code, which selects the plain record variants.
constexpr unsigned kMorphVersion = 46;
// Bitmap morph fills are carried only as their type, in a zeroed block of
// this size.
constexpr size_t kBitmapRecordSize = 96;
static_assert(kBitmapRecordSize >= sizeof(_GSWFBRUSHHEAD), "bitmap record holds the common head");
constexpr double kFullRatio = 65535.0;

int MixInt(int s, int e, unsigned short ratio) { return s + ((e - s) * static_cast<int>(ratio)) / 65535; }

double MixDouble(double s, double e, double t) { return s + (e - s) * t; }

_GRGBA MixColor(const _GRGBA& s, const _GRGBA& e, unsigned short ratio) {
    _GRGBA c;
    c.red = static_cast<uint8_t>(MixInt(s.red, e.red, ratio));
    c.green = static_cast<uint8_t>(MixInt(s.green, e.green, ratio));
    c.blue = static_cast<uint8_t>(MixInt(s.blue, e.blue, ratio));
    c.alpha = static_cast<uint8_t>(MixInt(s.alpha, e.alpha, ratio));
    return c;
}

void MixPoint(_GPOINT& s, const _GPOINT& e, double t) {
    s.x = MixDouble(s.x, e.x, t);
    s.y = MixDouble(s.y, e.y, t);
}

// A straight edge becomes a curve whose control point is halfway along it.
void StraightToCurve(_GPOINT* edge, const _GPOINT& previous) {
    edge[1] = edge[0];
    edge[0].x = (previous.x + edge[1].x) / 2;
    edge[0].y = (previous.y + edge[1].y) / 2;
}

// Two blocks of `size` bytes, the first `zeroed` bytes of each cleared; on
// failure neither is kept.
template <class T> bool AllocPair(size_t size, size_t zeroed, T*& start, T*& end) {
    start = static_cast<T*>(tovMalloc(size));
    end = static_cast<T*>(tovMalloc(size));
    if (start && end) {
        tovMemSet(start, 0, zeroed);
        tovMemSet(end, 0, zeroed);
        return true;
    }
    tovFree(start);
    tovFree(end);
    start = end = nullptr;
    return false;
}

// A style count: one byte, or 0xFF followed by a 16-bit count.
unsigned ScanCount(GParser* p) {
    unsigned count = p->ScanUI8();
    return count == 0xFF ? p->ScanUI16() : count;
}

_GSHAPE* NewMorphShape(GDictionary* dict) {
    _GSHAPE* shape = new (std::nothrow) _GSHAPE;
    if (shape) {
        shape->version = kMorphVersion;
        shape->limit = dict->movieEnd;
    }
    return shape;
}

}  // namespace

BMorph::~BMorph() {
    DeleteShapes(startShape, loaded);
    DeleteShapes(endShape, loaded);
}

int BMorph::LoadSWFFile(void* tag, GDictionary* dict) {
    if (!tag || !dict) return 0;
    // Every read is bounded by the host's buffer, whatever length the tag
    // declares.
    GParser p;
    p.Init(tag, 0, dict->movieEnd);
    unsigned tagLength = 0;
    GetTypeLen(&p, tagLength);
    p.ScanUI16();
    // Unlike a plain shape, empty bounds are accepted.
    p.ScanSWFRect(startBounds, dict->error);
    p.ScanSWFRect(endBounds, dict->error);
    bounds.left = startBounds.left < endBounds.left ? startBounds.left : endBounds.left;
    bounds.top = startBounds.top < endBounds.top ? startBounds.top : endBounds.top;
    bounds.right = startBounds.right > endBounds.right ? startBounds.right : endBounds.right;
    bounds.bottom = startBounds.bottom > endBounds.bottom ? startBounds.bottom : endBounds.bottom;
    uint32_t offset = p.ScanUI32();
    uint64_t endEdges = static_cast<uint64_t>(p.GetPosition()) + offset;
    startShape = NewMorphShape(dict);
    endShape = NewMorphShape(dict);
    if (!startShape || !endShape) return NotSucceedLoaded();
    if (!LoadFillStyles(&p, dict) || !LoadLineStyles(&p, dict)) return NotSucceedLoaded();
    uint64_t position = static_cast<uint64_t>(p.GetPosition());
    if (p.error || position >= endEdges || endEdges >= tagLength) return NotSucceedLoaded();
    startShape->records = p.cur + (p.bitPos != 0 ? 1 : 0);
    startShape->recordsLength = static_cast<uint32_t>(endEdges - position);
    endShape->records = static_cast<unsigned char*>(tag) + endEdges;
    endShape->recordsLength = static_cast<uint32_t>(tagLength - endEdges);
    loaded = 1;
    return 1;
}

int BMorph::LoadFillStyles(GParser* p, GDictionary* dict) {
    unsigned count = ScanCount(p);
    if (!startShape->brushes.Add(nullptr) || !endShape->brushes.Add(nullptr)) return 0;
    p->ReserveEntries(startShape->brushes, count, 1);
    p->ReserveEntries(endShape->brushes, count, 1);
    for (unsigned i = 0; i < count; ++i) {
        int type = GBrush::GetSWFType(static_cast<unsigned char>(p->ScanUI8()));
        void* start = nullptr;
        void* end = nullptr;
        int read = 0;
        switch (type) {
        case kBrushSolid: read = LoadSolidBrush(p, type, start, end, dict); break;
        case kBrushLinear:
        case kBrushRadial: read = LoadGradientBrush(p, type, start, end, dict); break;
        case kBrushBitmap:
        case kBrushBitmapClipped: read = LoadBitmapBrush(p, type, start, end, dict); break;
        default: return 0;  // an unknown fill type fails the whole morph
        }
        if (!read) return 0;
        if (!startShape->brushes.Add(start)) {
            tovFree(start);
            tovFree(end);
            return 0;
        }
        if (!endShape->brushes.Add(end)) {
            tovFree(end);
            return 0;
        }
    }
    return 1;
}

int BMorph::LoadLineStyles(GParser* p, GDictionary* dict) {
    unsigned count = ScanCount(p);
    const _GSWFPEN none = {};
    if (!startShape->pens.Add(none) || !endShape->pens.Add(none)) return 0;
    p->ReserveEntries(startShape->pens, count, 12); // two widths and two colours
    p->ReserveEntries(endShape->pens, count, 12);
    for (unsigned i = 0; i < count; ++i) {
        _GSWFPEN start = {};
        _GSWFPEN end = {};
        start.width = p->ScanUI16() * 0.05;
        end.width = p->ScanUI16() * 0.05;
        p->ScanRGBAColor(start.color, 1, dict->error);
        p->ScanRGBAColor(end.color, 1, dict->error);
        if (p->error || !startShape->pens.Add(start) || !endShape->pens.Add(end)) return 0;
    }
    return 1;
}

int BMorph::LoadSolidBrush(GParser* p, int type, void*& start, void*& end, GDictionary* dict) {
    _GSWFSOLIDBRUSH* s;
    _GSWFSOLIDBRUSH* e;
    if (!AllocPair(sizeof(_GSWFSOLIDBRUSH), sizeof(_GSWFSOLIDBRUSH), s, e)) return 0;
    p->ScanRGBAColor(s->color, 1, dict->error);
    p->ScanRGBAColor(e->color, 1, dict->error);
    if (p->error) {
        tovFree(s);
        tovFree(e);
        return 0;
    }
    s->type = e->type = type;
    start = s;
    end = e;
    return 1;
}

int BMorph::LoadGradientBrush(GParser* p, int type, void*& start, void*& end, GDictionary* dict) {
    GMatrix startMatrix;
    GMatrix endMatrix;
    p->ScanSWFMatrix(&startMatrix, dict->error);
    p->ScanSWFMatrix(&endMatrix, dict->error);
    // The whole byte is the count; a gradient without entries fails the load.
    int count = static_cast<int>(p->ScanUI8());
    if (p->error || count == 0) return 0;
    _GSWFGRADIENTBRUSH* s;
    _GSWFGRADIENTBRUSH* e;
    if (!AllocPair(_GSWFGRADIENTBRUSH::SizeFor(count), sizeof(_GSWFGRADIENTBRUSH), s, e)) return 0;
    s->SetGradientMatrix(startMatrix);
    e->SetGradientMatrix(endMatrix);
    s->type = e->type = type;
    s->count = e->count = count;
    // Entries come interleaved: start, then end, for each control point.
    for (int i = 0; i < count && !p->error; ++i) {
        p->ScanGradient(s->Entries()[i], 1, dict->error);
        p->ScanGradient(e->Entries()[i], 1, dict->error);
    }
    if (p->error) {
        tovFree(s);
        tovFree(e);
        return 0;
    }
    start = s;
    end = e;
    return 1;
}

int BMorph::LoadBitmapBrush(GParser* p, int type, void*& start, void*& end, GDictionary* dict) {
    GMatrix dropped;
    p->ScanUI16();
    p->ScanSWFMatrix(&dropped, dict->error);
    p->ScanSWFMatrix(&dropped, dict->error);
    _GSWFBRUSHHEAD* s;
    _GSWFBRUSHHEAD* e;
    if (p->error || !AllocPair(kBitmapRecordSize, kBitmapRecordSize, s, e)) return 0;
    s->type = e->type = type;
    start = s;
    end = e;
    return 1;
}

// The shapes are freed and forgotten, so a morph whose load failed is never
// drawn and its destructor frees nothing twice.
int BMorph::NotSucceedLoaded() {
    DeleteShapes(startShape, 1);
    DeleteShapes(endShape, 1);
    startShape = nullptr;
    endShape = nullptr;
    loaded = 0;
    return 0;
}

void BMorph::Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) {
    if (!startShape || !endShape) return;
    RenderShapes(stage, actor, ctx, dict, startShape, endShape);
}

_GRECT BMorph::GetBoundingBox(GMatrix* m) { return BChar::GetBoundingBox(m, bounds); }

int BMorph::GeneratePoint(unsigned short ratio, _GPOINT* start, _GPOINT* end, _GPOINT* previous, int startIsCurve,
                          int endIsCurve) {
    double t = ratio / kFullRatio;
    if (!startIsCurve && !endIsCurve) {
        MixPoint(start[0], end[0], t);
        return 0;
    }
    if (!startIsCurve) StraightToCurve(start, previous[0]);
    if (!endIsCurve) StraightToCurve(end, previous[1]);
    MixPoint(start[0], end[0], t);
    MixPoint(start[1], end[1], t);
    return 1;
}

_GSWFSOLIDBRUSH* BMorph::GenerateSolidBrush(unsigned short ratio, _GSWFSOLIDBRUSH* start, _GSWFSOLIDBRUSH* end) {
    if (!start || !end) return nullptr;
    _GSWFSOLIDBRUSH* mixed = static_cast<_GSWFSOLIDBRUSH*>(tovMalloc(sizeof(_GSWFSOLIDBRUSH)));
    if (!mixed) return nullptr;
    tovMemSet(mixed, 0, sizeof(_GSWFSOLIDBRUSH));
    mixed->type = kBrushSolid;
    mixed->color = MixColor(start->color, end->color, ratio);
    return mixed;
}

_GSWFGRADIENTBRUSH* BMorph::GenerateGradientBrush(unsigned short ratio, _GSWFGRADIENTBRUSH* start,
                                                  _GSWFGRADIENTBRUSH* end) {
    if (!start || !end || end->count == 0) return nullptr;
    // Loaded morphs give both halves the same count; the smaller one keeps
    // every read inside both records whatever they hold.
    int count = start->count < end->count ? start->count : end->count;
    if (count < 0) return nullptr;
    _GSWFGRADIENTBRUSH* mixed = static_cast<_GSWFGRADIENTBRUSH*>(tovMalloc(_GSWFGRADIENTBRUSH::SizeFor(count)));
    if (!mixed) return nullptr;
    tovMemSet(mixed, 0, sizeof(_GSWFGRADIENTBRUSH));
    mixed->type = start->type;
    mixed->count = count;
    _GGRADIENT* s = start->Entries();
    _GGRADIENT* e = end->Entries();
    _GGRADIENT* out = mixed->Entries();
    for (int i = 0; i < count; ++i) {
        out[i].ratio = static_cast<uint32_t>(MixInt(static_cast<int>(s[i].ratio), static_cast<int>(e[i].ratio), ratio));
        out[i].color = MixColor(s[i].color, e[i].color, ratio);
    }
    double t = ratio / kFullRatio;
    for (int k = 0; k < 6; ++k) mixed->gradientMatrix[k] = MixDouble(start->gradientMatrix[k], end->gradientMatrix[k], t);
    return mixed;
}

int BMorph::GeneratePenBrush(unsigned short ratio, GDataArray<_GSWFPEN>& outPens, GPointPoolArray<void>& outBrushes,
                             GDataArray<_GSWFPEN>& startPens, GDataArray<_GSWFPEN>& endPens,
                             GPointPoolArray<void>& startBrushes, GPointPoolArray<void>& endBrushes) {
    if (startPens.GetCount() == 0 || startBrushes.GetCount() == 0) return 0;
    double t = ratio / kFullRatio;
    // Loaded morphs have parallel arrays of equal length; the shorter one
    // bounds the walk so nothing is read past either.
    int pens = startPens.GetCount() < endPens.GetCount() ? startPens.GetCount() : endPens.GetCount();
    outPens.RemoveAll();
    const _GSWFPEN none = {};
    if (!outPens.Add(none)) return 0;
    for (int i = 1; i < pens; ++i) {
        _GSWFPEN pen;
        pen.width = MixDouble(startPens[i].width, endPens[i].width, t);
        pen.color = MixColor(startPens[i].color, endPens[i].color, ratio);
        if (!outPens.Add(pen)) return 0;
    }
    int brushes = startBrushes.GetCount() < endBrushes.GetCount() ? startBrushes.GetCount() : endBrushes.GetCount();
    outBrushes.RemoveAll();
    if (!outBrushes.Add(nullptr)) return 0;
    for (int i = 1; i < brushes; ++i) {
        _GSWFBRUSHHEAD* s = static_cast<_GSWFBRUSHHEAD*>(startBrushes[i]);
        _GSWFBRUSHHEAD* e = static_cast<_GSWFBRUSHHEAD*>(endBrushes[i]);
        void* mixed = nullptr;
        // A missing half, or halves of different kinds, draw nothing.
        if (s && e && s->type == e->type) {
            switch (s->type) {
            case kBrushSolid:
                mixed = GenerateSolidBrush(ratio, reinterpret_cast<_GSWFSOLIDBRUSH*>(s),
                                           reinterpret_cast<_GSWFSOLIDBRUSH*>(e));
                break;
            case kBrushLinear:
            case kBrushRadial:
                mixed = GenerateGradientBrush(ratio, reinterpret_cast<_GSWFGRADIENTBRUSH*>(s),
                                              reinterpret_cast<_GSWFGRADIENTBRUSH*>(e));
                break;
            case kBrushBitmap:
            case kBrushBitmapClipped: break;  // bitmap morph fills are not drawn
            default: return 0;
            }
        }
        if (!outBrushes.Add(mixed)) {
            tovFree(mixed);
            return 0;
        }
    }
    return 1;
}
