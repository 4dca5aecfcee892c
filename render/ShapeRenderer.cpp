// The shape renderer: walks a shape's records (or a morph's two record
// streams in step) and turns them into tov path sets, with pens and brushes
// created for this drawing's matrix and colour transform.
#include <cstdint>

#include "chars/BMorph.h"
#include "chars/GBrush.h"
#include "chars/GShapeParser.h"
#include "parse/GParser.h"
#include "render/GStage.h"

namespace {

constexpr double kOriginUnset = 2147483647.0;
constexpr unsigned kReadFailed = 0xFFFFFFFFu;

tovColor ToTov(_GRGBA c) { return {c.red, c.green, c.blue, c.alpha}; }

tovColorTransform ToTov(const GCxform& cx) {
    return {cx.alphaMult, cx.alphaAdd, cx.redMult, cx.redAdd, cx.greenMult, cx.greenAdd, cx.blueMult, cx.blueAdd};
}

bool IsEdge(unsigned flags) { return flags != kReadFailed && (flags & 0x20); }

// Maps record points (twips) to output pixels. The first point becomes an
// origin so that the products stay small: every point p maps to
// m(O) * 0.05 + linear(m)((p - O) * 0.05), which equals m(p) * 0.05 up to
// rounding.
class PointMapper {
public:
    explicit PointMapper(double (*m)[3]) : m_(m), identity_(IsIdentity(m)) {}

    _GPOINT Map(_GPOINT p) {
        if (identity_) return {p.x * 0.05, p.y * 0.05};
        if (origin_.x == kOriginUnset && origin_.y == kOriginUnset) {
            origin_ = p;
            originOut_ = {(m_[0][0] * p.x + m_[0][1] * p.y + m_[0][2]) * 0.05,
                          (m_[1][0] * p.x + m_[1][1] * p.y + m_[1][2]) * 0.05};
        }
        double dx = (p.x - origin_.x) * 0.05, dy = (p.y - origin_.y) * 0.05;
        return {originOut_.x + m_[0][0] * dx + m_[0][1] * dy, originOut_.y + m_[1][0] * dx + m_[1][1] * dy};
    }

    // One edge: a line to pts[0], or a curve through control pts[0] to pts[1].
    void Edge(tovCanvas* canvas, const _GPOINT* pts, bool curve) {
        _GPOINT a = Map(pts[0]);
        if (!curve) {
            tovLineTo(canvas, a.x, a.y);
            return;
        }
        _GPOINT b = Map(pts[1]);
        tovCurveTo(canvas, a.x, a.y, b.x, b.y);
    }

private:
    static bool IsIdentity(double (*m)[3]) {
        return m[0][0] == 1.0 && m[0][1] == 0.0 && m[0][2] == 0.0 && m[1][0] == 0.0 && m[1][1] == 1.0 &&
               m[1][2] == 0.0;
    }

    double (*m_)[3];
    bool identity_;
    _GPOINT origin_ = {kOriginUnset, kOriginUnset};
    _GPOINT originOut_ = {0, 0};
};

// The matrix handed to brushes (translations in pixels) and the pen scale:
// the mean of the unit square's transformed width and height, 0 when exactly 1.
struct DrawScale {
    GMatrix brushMatrix;
    double lineScale;

    explicit DrawScale(double (*m)[3]) {
        brushMatrix.m[0][0] = m[0][0];
        brushMatrix.m[0][1] = m[0][1];
        brushMatrix.m[0][2] = m[0][2] * 0.05;
        brushMatrix.m[1][0] = m[1][0];
        brushMatrix.m[1][1] = m[1][1];
        brushMatrix.m[1][2] = m[1][2] * 0.05;
        _GRECT unit = brushMatrix.Transform(_GRECT{0, 0, 1, 1});
        lineScale = ((unit.right - unit.left) + (unit.bottom - unit.top)) / 2;
        if (lineScale == 1.0) lineScale = 0;
    }
};

// Pens [from, count) of a working array take this drawing's colour
// transform and line scale; pen 0 (no line) is left alone.
void AdjustPens(GDataArray<_GSWFPEN>& pens, int from, const GCxform* cx, double lineScale) {
    if (from < 1) from = 1;
    for (int i = from; i < pens.count; ++i) {
        if (cx) pens[i].color = cx->Transform(pens[i].color);
        if (lineScale != 0) pens[i].width *= lineScale;
    }
}

// The scanner over one shape's records, positioned after the fill- and
// line-bit counts; false when the shape has no records.
bool OpenRecords(GParser& p, _GSHAPE* shape, _GSHAPESTATUS& status) {
    status = _GSHAPESTATUS();
    if (!shape->records || !p.Init(shape->records, shape->recordsLength, shape->limit)) return false;
    status.fillBits = static_cast<int>(p.ParseUI32(4));
    status.lineBits = static_cast<int>(p.ParseUI32(4));
    return !p.error;
}

// The end shape's record stream, read alongside the start's. Its style
// changes carry only its own moves and are read wherever they stand, so that
// the edges of the two shapes stay paired one to one.
struct MorphEnd {
    GParser& p;
    _GSHAPESTATUS& status;
    unsigned flags;  // flags of the next unread record; 0 once the stream ended
    _GPOINT point = {0, 0};
    _TWIPPOINT position = {0, 0};

    void SkipStyles(GDictionary* dict, GDataArray<_GSWFPEN>& pens, GPointPoolArray<void>& brushes,
                    _GSWFSHAPEVERSIONINFO& info) {
        if (flags == 0 || flags == kReadFailed || (flags & 0x20)) return;
        int next = GShapeParser::ScanStyles(&p, flags, status, dict, pens, brushes, info);
        flags = next > 0 ? static_cast<unsigned>(next) : 0;
        if (status.moved) {
            point = status.movePoint;
            position = status.moveTwips;
        }
    }

    bool ReadEdge(_GPOINT* out, int& isCurve) {
        if (!IsEdge(flags)) return false;
        flags = GShapeParser::ScanLine(&p, flags, point, position, out, isCurve);
        if (!p.error) return true;
        flags = 0;
        return false;
    }
};

}  // namespace

void GStage::SetPens(_GSWFPEN* pens, int count, GDataArray<void*>& out) {
    DestroyPens(out);
    out.Add(nullptr);
    for (int i = 1; i < count; ++i) {
        // A visible line is never thinner than one pixel; width 0 is a hairline.
        tovPenSpec spec = {pens[i].width <= 0 ? 0.0 : (pens[i].width < 1.0 ? 1.0 : pens[i].width),
                           ToTov(pens[i].color)};
        out.Add(tovCreatePen(canvas, &spec));
    }
    tovSetPens(canvas, reinterpret_cast<tovObject* const*>(out.data), out.count);
}

void GStage::SetBrushes(void** brushes, int count, GDataArray<void*>& out) {
    DestroyBrushes(out);
    out.Add(nullptr);
    for (int i = 1; i < count; ++i) {
        auto* head = static_cast<_GSWFBRUSHHEAD*>(brushes[i]);
        tovObject* handle = nullptr;
        if (head) {
            tovColorTransform cx = head->cxform ? ToTov(*head->cxform) : tovColorTransform{256, 0, 256, 0, 256, 0, 256, 0};
            const tovColorTransform* cxp = head->cxform ? &cx : nullptr;
            if (head->type == kBrushSolid) {
                _GRGBA c = static_cast<_GSWFSOLIDBRUSH*>(brushes[i])->color;
                if (head->cxform) c = head->cxform->Transform(c);
                handle = tovCreateSolidBrush(canvas, ToTov(c), cxp);
            } else if (head->type == kBrushLinear || head->type == kBrushRadial) {
                auto* g = static_cast<_GSWFGRADIENTBRUSH*>(brushes[i]);
                GMatrix fill;
                for (int k = 0; k < 6; ++k) fill.m[k / 3][k % 3] = g->gradientMatrix[k];
                GMatrix render;
                if (head->matrix)
                    for (int k = 0; k < 6; ++k) render.m[k / 3][k % 3] = head->matrix[k / 3][k % 3];
                GMatrix M = head->matrix ? fill * render : fill;
                static_assert(sizeof(_GGRADIENT) == sizeof(tovGradientStop), "gradient stops must match");
                handle = tovCreateGradientBrush(canvas, head->type, g->count,
                                                reinterpret_cast<const tovGradientStop*>(g->Entries()), 1,
                                                M.m[0][2], M.m[1][2], M.m, cxp);
            } else if (head->type == kBrushBitmap || head->type == kBrushBitmapClipped) {
                handle = tovCreateBmpBrush(canvas, head->type, head, 0, 0, head->matrix, cxp);
            }
        }
        out.Add(handle);
    }
    tovSetBrushes(canvas, reinterpret_cast<tovObject* const*>(out.data), out.count);
}

void GStage::DestroyPens(GDataArray<void*>& handles) {
    for (int i = 0; i < handles.count; ++i)
        if (handles[i]) tovDeleteObject(canvas, static_cast<tovObject*>(handles[i]));
    handles.Forget(0);
}

void GStage::DestroyBrushes(GDataArray<void*>& handles) { DestroyPens(handles); }

void GStage::RenderShape(_GOFFSCR*, _GSHAPE* shape, double m[2][3], GCxform* cx, int, GDictionary* dict) {
    if (!shape || !canvas) return;
    DrawScale scale(m);
    GBrush::SetMatrixToArray(shape->brushes, 0, shape->brushes.count, scale.brushMatrix.m, cx);

    // Working copies: new styles met while drawing are appended to them, never
    // to the shape's own arrays. The first `owned` brushes are the shape's.
    workPens.Forget(0);
    workBrushes.Forget(0);
    for (int i = 0; i < shape->pens.count; ++i) workPens.Add(shape->pens[i]);
    for (int i = 0; i < shape->brushes.count; ++i) workBrushes.Add(shape->brushes[i]);
    const int owned = workBrushes.count;

    _GSWFSHAPEVERSIONINFO info = GShapeParser::GetVersionInfo(shape->version);
    _GSHAPESTATUS status;
    GParser p;
    if (OpenRecords(p, shape, status)) {
        int flags = GShapeParser::ScanStyles(&p, GShapeParser::ScanFlag(&p), status, dict, workPens, workBrushes, info);
        if (flags > 0) {
            tovBeginShape(canvas, 1, 2, 0);
            int penBase = 0, brushBase = 0;
            if (!status.newStyles) {
                AdjustPens(workPens, 1, cx, scale.lineScale);
                SetBrushes(workBrushes.data, workBrushes.count, brushHandles);
                SetPens(workPens.data, workPens.count, penHandles);
            }
            PointMapper map(m);
            _GPOINT point = {0, 0};
            _TWIPPOINT position = {0, 0};
            bool first = true;
            while (flags > 0) {
                if (status.newStyles) {
                    SetPens(workPens.data + penBase, workPens.count - penBase, penHandles);
                    tovEndShape(canvas);
                    tovBeginShape(canvas, 1, 2, 0);
                    brushBase = status.brushBase;
                    penBase = status.penBase;
                    GBrush::SetMatrixToArray(workBrushes, brushBase + 1, workBrushes.count, scale.brushMatrix.m, cx);
                    AdjustPens(workPens, penBase + 1, cx, scale.lineScale);
                    SetBrushes(workBrushes.data + brushBase, workBrushes.count - brushBase, brushHandles);
                    SetPens(workPens.data + penBase, workPens.count - penBase, penHandles);
                }
                if (status.moved || first) {
                    if (status.moved) {
                        point = status.movePoint;
                        position = status.moveTwips;
                    }
                    _GPOINT P = map.Map(point);
                    tovMoveTo(canvas, P.x, P.y);
                    first = false;
                }
                tovUseBrush(canvas, status.fillStyle0, status.fillStyle1);
                tovUsePen(canvas, status.lineStyle);

                unsigned edge = static_cast<unsigned>(flags);
                while (IsEdge(edge)) {
                    _GPOINT out[2];
                    int isCurve = 0;
                    edge = GShapeParser::ScanLine(&p, edge, point, position, out, isCurve);
                    if (p.error) break;  // an edge cut off by the tag's end is not drawn
                    map.Edge(canvas, out, isCurve != 0);
                }
                if (p.error) break;
                flags = GShapeParser::ScanStyles(&p, edge, status, dict, workPens, workBrushes, info);
            }
            SetPens(workPens.data + penBase, workPens.count - penBase, penHandles);
            tovEndShape(canvas);
        }
    }
    DestroyBrushes(brushHandles);
    DestroyPens(penHandles);
    for (int i = owned; i < workBrushes.count; ++i) tovFree(workBrushes[i]);
    workBrushes.Forget(0);
    workPens.Forget(0);
}

void GStage::RenderMorphShape(_GOFFSCR* off, _GSHAPE* start, double m[2][3], GCxform* cx, _GSHAPE* end, int flag,
                              GDictionary* dict, unsigned short ratio) {
    if (!end) {
        RenderShape(off, start, m, cx, flag, dict);
        return;
    }
    if (!start || !canvas) return;
    if (!BMorph::GeneratePenBrush(ratio, morphPens, morphBrushes, start->pens, end->pens, start->brushes,
                                  end->brushes))
        return;
    DrawScale scale(m);
    GBrush::SetMatrixToArray(morphBrushes, 0, morphBrushes.count, scale.brushMatrix.m, cx);
    AdjustPens(morphPens, 1, cx, scale.lineScale);

    // Morph records never bring new styles, so the scans leave the arrays alone.
    _GSWFSHAPEVERSIONINFO info = GShapeParser::GetVersionInfo(start->version);
    _GSHAPESTATUS sStatus, eStatus;
    GParser sp, ep;
    if (OpenRecords(sp, start, sStatus)) {
        MorphEnd endStream{ep, eStatus, OpenRecords(ep, end, eStatus) ? GShapeParser::ScanFlag(&ep) : 0u};
        int flags = GShapeParser::ScanStyles(&sp, GShapeParser::ScanFlag(&sp), sStatus, dict, morphPens, morphBrushes, info);
        if (flags > 0) {
            tovBeginShape(canvas, 1, 2, 0);
            SetBrushes(morphBrushes.data, morphBrushes.count, brushHandles);
            SetPens(morphPens.data, morphPens.count, penHandles);
            PointMapper map(m);
            _GPOINT point = {0, 0};
            _TWIPPOINT position = {0, 0};
            bool first = true;
            while (flags > 0) {
                endStream.SkipStyles(dict, morphPens, morphBrushes, info);
                if (sStatus.moved || first) {
                    if (sStatus.moved) {
                        point = sStatus.movePoint;
                        position = sStatus.moveTwips;
                    }
                    _GPOINT s[2] = {point, point}, e[2] = {endStream.point, endStream.point};
                    _GPOINT prev[2] = {point, endStream.point};
                    BMorph::GeneratePoint(ratio, s, e, prev, 0, 0);
                    _GPOINT P = map.Map(s[0]);
                    tovMoveTo(canvas, P.x, P.y);
                    first = false;
                }
                tovUseBrush(canvas, sStatus.fillStyle0, sStatus.fillStyle1);
                tovUsePen(canvas, sStatus.lineStyle);

                unsigned edge = static_cast<unsigned>(flags);
                while (IsEdge(edge)) {
                    endStream.SkipStyles(dict, morphPens, morphBrushes, info);
                    _GPOINT prev[2] = {point, endStream.point};
                    _GPOINT s[2], e[2];
                    int sCurve = 0, eCurve = 0;
                    edge = GShapeParser::ScanLine(&sp, edge, point, position, s, sCurve);
                    if (sp.error) break;
                    if (!endStream.ReadEdge(e, eCurve)) {
                        // The end shape has no edge to pair: keep the start geometry.
                        e[0] = s[0];
                        e[1] = s[1];
                        eCurve = sCurve;
                    }
                    map.Edge(canvas, s, BMorph::GeneratePoint(ratio, s, e, prev, sCurve, eCurve) != 0);
                }
                if (sp.error) break;
                flags = GShapeParser::ScanStyles(&sp, edge, sStatus, dict, morphPens, morphBrushes, info);
            }
            SetPens(morphPens.data, morphPens.count, penHandles);
            tovEndShape(canvas);
        }
    }
    DestroyBrushes(brushHandles);
    DestroyPens(penHandles);
}
