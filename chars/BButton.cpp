// BButton: reading the button records, and the frame protocol, bounds, dirty
// areas and drawing of the current state's records layer by layer; walks
// into the records' characters are bounded like the sprites' (BSprite::Nesting).
#include "chars/BButton.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include "chars/BSprite.h"
#include "display/GActor.h"
#include "display/GDictionary.h"
#include "parse/GParser.h"
#include "render/GClipBox.h"
#include "render/GStage.h"

namespace {

constexpr unsigned kTagDefineButton = 7;
constexpr unsigned kTagDefineButton2 = 34;

// Ids of the buttons being loaded on this thread, outermost first. A record
// that names one of them would build that button again inside its own load,
// for ever; such a record is dropped like one whose character cannot be built.
struct Loading {
    uint16_t ids[BSprite::Nesting::kMaxNesting];
    int count = 0;
};
thread_local Loading tLoading;

bool IsLoading(uint16_t id) {
    for (int i = 0; i < tLoading.count; ++i)
        if (tLoading.ids[i] == id) return true;
    return false;
}

// The drawing context of one placed button: depth, ratio and clip depth of
// the actor, with its matrix (and colour transform) combined with ctx.
void ButtonContext(GCTRL_INFO& record, GMatrix& m, GCxform& cx, GActor* actor, GCTRL_INFO* ctx) {
    record = GCTRL_INFO{};
    record.depth = actor->depth;
    record.ratio = actor->ratio;
    record.clipDepth = actor->clipDepth;
    BChar::GetCtrlMatrix(record, m, cx, actor, ctx);
}

}  // namespace

// The records' character references are not given back: the characters stay
// built until the dictionary is reset.
BButton::~BButton() { records.RemoveAll(); }

int BButton::LoadSWFFile(void* tag, GDictionary* d) {
    int ok = 0;
    BSprite::Nesting level(d);
    if (level.Entered()) {
        GParser p;
        p.Init(tag, 0, d ? d->movieEnd : nullptr);
        unsigned length = 0;
        unsigned code = GetTypeLen(&p, length);
        tLoading.ids[tLoading.count++] = id;
        if (code == kTagDefineButton) {
            ok = LoadButtonSWFFile(tag, d, &p);
        } else if (code == kTagDefineButton2) {
            ok = LoadButton2SWFFile(tag, d, &p);
        }
        --tLoading.count;
    }
    dict = d;
    layersMask_ = 0;
    return ok;
}

int BButton::LoadButtonSWFFile(void*, GDictionary* d, GParser* p) {
    p->ScanUI16();  // button id
    return LoadRecords(d, p);
}

// The flag byte and the action offset are not needed: actions are not run.
int BButton::LoadButton2SWFFile(void*, GDictionary* d, GParser* p) {
    p->ScanUI16();  // button id
    p->ScanUI8();
    p->ScanUI16();
    return LoadRecords(d, p);
}

int BButton::LoadRecords(GDictionary* d, GParser* p) {
    for (;;) {
        unsigned flags = p->ScanUI8();
        // Checked before the end flag: a read past the tag gives 0, which would
        // otherwise pass for the end of the list.
        if (p->error) return 0;
        if (flags == 0) return 1;
        ButtonRecord* record = LoadButtonRecord(p, static_cast<unsigned char>(flags), d ? d->error : nullptr);
        if (!record) return 0;
        if (d && !IsLoading(record->characterId)) record->character = d->NewChar(record->characterId);
        if (!record->character || !records.Add(record)) delete record;
    }
}

// Every record is read with a colour transform with alpha, DefineButton's
// too: that is how this reader is laid out.
BButton::ButtonRecord* BButton::LoadButtonRecord(GParser* p, unsigned char flags, GError* error) {
    auto* record = new (std::nothrow) ButtonRecord;
    if (!record) return nullptr;
    record->flags = flags;
    record->characterId = static_cast<uint16_t>(p->ScanUI16());
    record->layer = static_cast<uint16_t>(p->ScanUI16());
    p->ScanSWFMatrix(&record->matrix, error);
    p->ScanColorMatrix(record->cxform, 1, error);
    return record;
}

unsigned char BButton::GetSWFButtonState() {
    switch (state) {
        case 1: return 0x02;
        case 2: return 0x04;
        case 3: return 0x08;
        default: return 0x01;
    }
}

BButton::ButtonRecord* BButton::GetButtonRecords(int layer, unsigned char stateMask) {
    for (int i = 0; i < records.count; ++i) {
        ButtonRecord* r = records[i];
        if ((r->flags & stateMask) && r->layer == layer) return r;
    }
    return nullptr;
}

int BButton::GetMaxLayer() {
    unsigned char mask = GetSWFButtonState();
    int maxLayer = 0;
    for (int i = 0; i < records.count; ++i)
        if ((records[i]->flags & mask) && records[i]->layer > maxLayer) maxLayer = records[i]->layer;
    return maxLayer;
}

// Layer 0 is never visited, and only the first record of a layer counts.
const GDataArray<BButton::ButtonRecord*>& BButton::Layers() {
    unsigned char mask = GetSWFButtonState();
    if (layersMask_ == mask) return layers_;
    layers_.RemoveAll();
    layersMask_ = mask;
    if (records.count == 0) return layers_;
    // Layer in the high half, tag order in the low half: sorting the keys puts
    // the records in layer order with the first of each layer leading.
    auto* keys = static_cast<uint64_t*>(tovMalloc(static_cast<size_t>(records.count) * sizeof(uint64_t)));
    if (!keys) {
        layersMask_ = 0;
        return layers_;
    }
    int n = 0;
    for (int i = 0; i < records.count; ++i)
        if ((records[i]->flags & mask) && records[i]->layer != 0)
            keys[n++] = (static_cast<uint64_t>(records[i]->layer) << 32) | static_cast<uint32_t>(i);
    std::sort(keys, keys + n);
    for (int k = 0; k < n; ++k) {
        if (k > 0 && (keys[k] >> 32) == (keys[k - 1] >> 32)) continue;
        if (!layers_.Add(records[static_cast<int>(keys[k] & 0xFFFFFFFFu)])) {
            // Out of memory: draw nothing rather than a wrong subset, and try again later.
            layers_.RemoveAll();
            layersMask_ = 0;
            break;
        }
    }
    tovFree(keys);
    return layers_;
}

int BButton::PrepareData(GClipBox* clip, GMatrix* m, int flag) {
    if (prepared) return multiFrame;
    // Reached again through a sprite that this button shows.
    if (busy_) return 0;
    BSprite::Nesting level(dict);
    if (!level.Entered()) return 0;
    busy_ = 1;
    multiFrame = 0;
    int changed = 0;
    const GDataArray<ButtonRecord*>& shown = Layers();
    for (int i = 0; i < shown.count; ++i) {
        ButtonRecord* r = shown[i];
        if (!r->character->IsComplex()) continue;
        auto* child = static_cast<BComplexChar*>(r->character);
        GMatrix childMatrix = GMatrix::Combine(&r->matrix, m);
        if (child->PrepareData(clip, &childMatrix, flag)) changed = 1;
        if (child->IsMultyFrame()) multiFrame = 1;
    }
    prepared = 1;
    busy_ = 0;
    return changed;
}

void BButton::EndScanFrame() {
    // Not prepared this frame: nothing below was prepared through it, and a
    // button shown inside its own sprites is not walked again.
    if (!prepared) return;
    prepared = 0;
    BSprite::Nesting level(dict);
    if (!level.Entered()) return;
    const GDataArray<ButtonRecord*>& shown = Layers();
    for (int i = 0; i < shown.count; ++i)
        if (shown[i]->character->IsComplex()) static_cast<BComplexChar*>(shown[i]->character)->EndScanFrame();
}

void BButton::Insert(GClipBox* clip, GMatrix* m) { Remove(clip, m); }

void BButton::Remove(GClipBox* clip, GMatrix* m) {
    BSprite::Nesting level(dict);
    if (!level.Entered()) return;
    const GDataArray<ButtonRecord*>& shown = Layers();
    for (int i = 0; i < shown.count; ++i) {
        GMatrix childMatrix = GMatrix::Combine(&shown[i]->matrix, m);
        shown[i]->character->Remove(clip, &childMatrix);
    }
}

_GRECT BButton::GetBoundingBox(GMatrix* m, GActor* actor, GCTRL_INFO* ctx) {
    _GRECT result = kEmptyBounds;
    BSprite::Nesting level(dict);
    if (!actor || !level.Entered()) return result;
    GCTRL_INFO record;
    GMatrix matrix;
    GCxform cxform;
    ButtonContext(record, matrix, cxform, actor, ctx);
    GMatrix w = *record.matrix;
    if (m && !m->IsIdentify()) w = w * *m;
    const GDataArray<ButtonRecord*>& shown = Layers();
    for (int i = 0; i < shown.count; ++i) {
        // The record's own matrix is not applied to its box here.
        GMatrix identity;
        _GRECT b = shown[i]->character->GetBoundingBox(&identity);
        // An empty box adds nothing (widened, it would become a box at the origin).
        if (IsEmptyRect(b)) continue;
        BSprite::Widen(result, w.Transform(_GRECT{b.left - 20, b.top - 20, b.right + 20, b.bottom + 20}));
    }
    return result;
}

// Buttons open no masks and make no alpha test of their own.
void BButton::Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* d) {
    if (!stage || !actor) return;
    BSprite::Nesting level(d);
    if (!level.Entered()) return;
    GCTRL_INFO record;
    GMatrix matrix;
    GCxform cxform;
    ButtonContext(record, matrix, cxform, actor, ctx);
    GMatrix w = *record.matrix;
    if (stage->baseMatrix) w = w * stage->viewMatrix;
    _GRECT r = stage->curClipBox;
    const GDataArray<ButtonRecord*>& shown = Layers();
    for (int i = 0; i < shown.count; ++i) {
        ButtonRecord* rec = shown[i];
        // A stand-in actor that places the record's character with the
        // record's transform; it borrows them and gives them back below.
        GActor temp;
        temp.depth = actor->depth;
        temp.ratio = actor->ratio;
        temp.clipDepth = actor->clipDepth;
        temp.matrix = &rec->matrix;
        temp.cxform = &rec->cxform;
        temp.character = rec->character;
        if (rec->character->IsComplex()) {
            rec->character->Rendering(stage, &temp, &record, d);
        } else {
            GMatrix boxMatrix = GMatrix::Combine(&rec->matrix, &w);
            _GRECT b = rec->character->GetBoundingBox(&boxMatrix);
            if (!IsEmptyRect(b) && !IsEmptyRect(r) && BSprite::BoxesMeet(r, b)) {
                stage->SetClipBox(&r, b);
                rec->character->Rendering(stage, &temp, &record, d);
                stage->SetClipBox(r);
            }
        }
        temp.matrix = nullptr;
        temp.cxform = nullptr;
    }
}
