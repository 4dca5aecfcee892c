// BChar and BComplexChar: the base behaviour every character inherits, and
// the helpers the character classes share (tag header, drawing context of a
// placed instance, freeing parsed shapes).
#include "display/BChar.h"

#include <new>

#include "chars/GShapeParser.h"
#include "display/GActor.h"
#include "parse/GParser.h"
#include "render/GClipBox.h"
#include "render/GStage.h"

namespace {
// The longest tag header: a 16-bit code and length word, then a 32-bit length.
constexpr unsigned kLongTagHeader = 6;
}  // namespace

int BChar::LoadSWFFile(void*, GDictionary*) { return 0; }

GActor* BChar::NewActor(BChar* ch, GCTRL_INFO* info) {
    GActor* actor = new (std::nothrow) GActor;
    if (!actor) return nullptr;
    actor->character = ch;
    actor->depth = info->depth;
    actor->matrix = info->matrix;
    actor->cxform = info->cxform;
    actor->ratio = info->ratio;
    actor->clipDepth = info->clipDepth;
    actor->name = info->name;
    // Only the name is cleared in the record: the record's holder frees a name
    // left there, and never the matrix or colour transform once placed.
    info->name = nullptr;
    return actor;
}

void BChar::Rendering(GStage*, GActor*, GCTRL_INFO*, GDictionary*) {}

_GRECT BChar::GetBoundingBox(GMatrix*) { return kEmptyBounds; }

void BChar::Insert(GClipBox* clip, GMatrix* m) {
    if (!clip) return;
    _GRECT r = GetBoundingBox(m);
    clip->InsertClipBox(r);
}

// Taking a character off the screen dirties exactly the area it covered.
void BChar::Remove(GClipBox* clip, GMatrix* m) { BChar::Insert(clip, m); }

int BChar::IsComplex() { return 0; }

_GRECT BChar::GetBoundingBox(GMatrix* m, _GRECT& r) {
    if (IsEmptyRect(r)) return _GRECT{0, 0, 0, 0};
    if (m && !m->IsIdentify()) return m->Transform(r);
    return r;
}

void BChar::GetCtrlMatrix(GCTRL_INFO& out, GMatrix& m, GCxform& cx, GActor* actor, GCTRL_INFO* ctx) {
    if (ctx) {
        m = GMatrix::Combine(actor->matrix, ctx->matrix);
        out.matrix = &m;
        cx = GCxform::Combine(actor->cxform, ctx->cxform);
        out.cxform = &cx;
        return;
    }
    if (actor->matrix) m = *actor->matrix;
    out.matrix = &m;
}

unsigned BChar::GetTypeLen(GParser* p, unsigned int& len) {
    if (!p->cur) return 0;
    unsigned char* tag = p->cur;
    // An unopened span (position at its end) is opened over the longest header
    // first, then widened to the whole tag once its length is known.
    bool opening = p->cur == p->end;
    if (opening) p->end = p->cur + kLongTagHeader;
    unsigned body = 0;
    unsigned code = p->ScanTag(body);
    if (p->error) {
        len = 0;
        return code;
    }
    if (opening) {
        unsigned header = static_cast<unsigned>(p->cur - tag);
        // A declared length that would wrap is cut to the largest one; the
        // reads past the host's buffer give 0 either way.
        len = body > ~0u - header ? ~0u : header + body;
        p->end = tag + len;
    } else {
        len = body;
    }
    return code;
}

void BChar::DeleteShapes(_GSHAPE* shape, int own) {
    if (!shape || !own) return;
    shape->brushes.RemoveAll();
    shape->pens.RemoveAll();
    delete shape;
}

void BChar::GetPlacement(GCTRL_INFO& out, GMatrix& m, GCxform& cx, GActor* actor, GCTRL_INFO* ctx) {
    tovMemSet(&out, 0, sizeof(out));
    out.depth = actor->depth;
    out.characterId = actor->character ? actor->character->id : 0;
    out.ratio = actor->ratio;
    out.clipDepth = actor->clipDepth;
    out.matrix = actor->matrix;
    out.cxform = actor->cxform;
    GetCtrlMatrix(out, m, cx, actor, ctx);
}

void BChar::RenderShapes(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict, _GSHAPE* shape,
                         _GSHAPE* morphEnd) {
    if (!stage || !actor) return;
    GCTRL_INFO local;
    GMatrix m;
    GCxform cx;
    GetPlacement(local, m, cx, actor, ctx);
    stage->DrawShape(&local, shape, morphEnd, dict);
}

int BComplexChar::PrepareData(GClipBox*, GMatrix*, int) { return 0; }

void BComplexChar::EndScanFrame() {}

_GRECT BComplexChar::GetBoundingBox(GMatrix*, GActor*, GCTRL_INFO*) { return kEmptyBounds; }

int BComplexChar::SetBgCache(_GOFFSCR*, int, int, int, int, unsigned int*) { return 0; }

void BComplexChar::SetCurClipBoxID(int, int) {}

int BComplexChar::NeedCache(_GRECT&) { return 0; }
