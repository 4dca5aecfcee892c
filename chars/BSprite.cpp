// BSprite: the sprite's header, one frame of control tags per prepared movie
// frame, the child-sprite cache, and drawing, bounds and dirty areas of the
// children; every walk down nested characters is bounded by Nesting.
#include "chars/BSprite.h"

#include <algorithm>
#include <climits>
#include <new>

#include "display/GActor.h"
#include "display/GDictionary.h"
#include "parse/GParser.h"
#include "render/GClipBox.h"
#include "render/GStage.h"
#include "tov/tov.h"

namespace {

constexpr unsigned kTagEnd = 0;
constexpr unsigned kTagShowFrame = 1;
constexpr unsigned kTagPlaceObject = 4;
constexpr unsigned kTagRemoveObject = 5;
constexpr unsigned kTagPlaceObject2 = 26;
constexpr unsigned kTagRemoveObject2 = 28;
constexpr int kTagDefineSprite = 39;
constexpr unsigned kTagFrameLabel = 43;

// Slot 0 is never used, so at most 29 clip layers of one sprite are open at
// once. A further clip layer is refused a mask and drawn as ordinary content,
// as the stage's own raster pass does.
constexpr int kClipStackSize = 30;

// Depth and budget of the walk under way on this thread. Both are back at
// rest when the outermost call returns, so engine handles never see each
// other's walks (a handle is used by one thread at a time).
struct Walk {
    int depth = 0;
    long budget = 0;
};
thread_local Walk tWalk;

// A character is a sprite when its definition tag is a DefineSprite: the
// dictionary builds a BSprite for exactly those.
bool IsSpriteChar(const BChar* ch) {
    if (!ch || !ch->defTag) return false;
    const unsigned char* b = static_cast<const unsigned char*>(ch->defTag);
    return ((b[0] | (b[1] << 8)) >> 6) == kTagDefineSprite;
}

unsigned char* BytePosition(const GScanner& s) { return s.cur + (s.bitPos != 0 && s.cur ? 1 : 0); }

// What a placement record still owns when nothing takes it over.
void FreePlacement(GCTRL_INFO& info) {
    delete info.matrix;
    delete info.cxform;
    tovFree(info.name);
    info.matrix = nullptr;
    info.cxform = nullptr;
    info.name = nullptr;
}

// Twips to whole pixels, truncated, held inside the range of int.
int TruncPixels(double twips) {
    double p = twips / 20;
    if (!(p > INT_MIN)) return INT_MIN;
    if (!(p < INT_MAX)) return INT_MAX;
    return static_cast<int>(p);
}

// The drawing context of one placed instance: its depth, ratio, clip depth,
// matrix and colour transform, combined with the enclosing context.
void InstanceContext(GCTRL_INFO& record, GMatrix& m, GCxform& cx, GActor* actor, GCTRL_INFO* ctx) {
    record = GCTRL_INFO{};
    record.depth = actor->depth;
    record.ratio = actor->ratio;
    record.clipDepth = actor->clipDepth;
    record.matrix = actor->matrix;
    record.cxform = actor->cxform;
    BChar::GetCtrlMatrix(record, m, cx, actor, ctx);
}

}  // namespace

BSprite::Nesting::Nesting(const GDictionary* dict) : entered_(false) {
    if (tWalk.depth == 0) {
        tWalk.budget = dict ? std::clamp(kLevelsPerByte * long(dict->movieBytes), kMinWalkBudget, kWalkBudget)
                            : kWalkBudget;
    }
    if (tWalk.depth >= kMaxNesting || tWalk.budget <= 0) return;
    ++tWalk.depth;
    --tWalk.budget;
    entered_ = true;
}

BSprite::Nesting::~Nesting() {
    if (entered_) --tWalk.depth;
}

int BSprite::Nesting::Depth() { return tWalk.depth; }

bool BSprite::BoxesMeet(const _GRECT& a, const _GRECT& b) {
    return a.left <= b.right && b.left <= a.right && a.top <= b.bottom && b.top <= a.bottom;
}

void BSprite::Widen(_GRECT& acc, const _GRECT& b) {
    if (b.left < acc.left) acc.left = b.left;
    if (b.top < acc.top) acc.top = b.top;
    if (b.right > acc.right) acc.right = b.right;
    if (b.bottom > acc.bottom) acc.bottom = b.bottom;
}

BSprite::~BSprite() {
    ReleaseActorList(1, nullptr, nullptr);
    childCache = nullptr;
}

int BSprite::ReadHeader(void* tag) {
    GParser p;
    unsigned total = 0;
    p.InitTagHead(tag, &total, dict ? dict->movieEnd : nullptr);
    p.ScanUI16();  // the sprite's id; the dictionary already knows it
    frameCount = static_cast<uint16_t>(p.ScanUI16());
    nextTag = BytePosition(p);
    streamEnd = p.end;
    return p.error ? 0 : 1;
}

int BSprite::LoadSWFFile(void* tag, GDictionary* d) {
    dict = d;
    // Reset reads the header again from the definition tag.
    if (!defTag) defTag = tag;
    int ok = ReadHeader(tag);
    multiFrame = (stopped == 0 && frameCount > 1) ? 1 : 0;
    return ok;
}

int BSprite::Reset() {
    if (defTag) ReadHeader(defTag);
    curFrame = 0;
    frameLabel = nullptr;
    return frameCount;
}

int BSprite::TreeInstances() const {
    const BSprite* top = this;
    while (top->owner) top = top->owner;
    return top->treeInstances;
}

BSprite* BSprite::TreeTop() {
    BSprite* top = this;
    while (top->owner) top = top->owner;
    return top;
}

int BSprite::PrepareData(GClipBox* clip, GMatrix* m, int flag) {
    if (frameCount == 0) return 0;
    if (prepared) return multiFrame;
    // Reached again through a button that this sprite shows: the frame is
    // already being prepared further up.
    if (busy) return 0;
    Nesting level(dict);
    if (!level.Entered()) return 0;
    busy = 1;
    int changed = 0;
    if (stopped == 0 && curFrame < frameCount) {
        changed = 1;
        // A header read may stop one byte past the declared end (the reader's
        // end is inclusive); the span is then empty rather than negative.
        unsigned span = nextTag < streamEnd ? static_cast<unsigned>(streamEnd - nextTag) : 0;
        GParser reader;
        reader.Init(nextTag, span, dict ? dict->movieEnd : nullptr);
        if (curFrame == 0) ReleaseActorList(0, clip, m);
        SpriteParseTags(clip, m, &reader, dict);
        nextTag = BytePosition(reader);
        curFrame = static_cast<uint16_t>(curFrame + 1);
        if (frameCount > 1) {
            curFrame = static_cast<uint16_t>(curFrame % frameCount);
            // Back at the first frame: the next call clears the list first.
            if (curFrame == 0) Reset();
        }
    }
    for (GActor* a = actors; a; a = a->next) {
        if (!a->character || !a->character->IsComplex()) continue;
        auto* child = static_cast<BComplexChar*>(a->character);
        GMatrix work;
        GMatrix* childMatrix = a->matrix ? a->matrix : m;
        if (a->matrix && m) {
            work = *a->matrix * *m;
            childMatrix = &work;
        }
        if (child->PrepareData(clip, childMatrix, flag)) changed = 1;
        if (child->IsMultyFrame()) multiFrame = 1;
    }
    prepared = 1;
    busy = 0;
    return changed;
}

void BSprite::EndScanFrame() {
    // An instance that was not prepared this frame prepared nothing below it;
    // stopping here also keeps shared buttons from being walked again.
    if (!prepared) return;
    prepared = 0;
    Nesting level(dict);
    if (!level.Entered()) return;
    for (GActor* a = actors; a; a = a->next)
        if (a->character && a->character->IsComplex()) static_cast<BComplexChar*>(a->character)->EndScanFrame();
}

void BSprite::SpriteParseTags(GClipBox* clip, GMatrix* m, GParser* p, GDictionary* d) {
    GError* errors = d ? d->error : nullptr;
    for (;;) {
        unsigned char* tagStart = BytePosition(*p);
        unsigned length = 0;
        unsigned code = p->ScanTag(length);
        // A stream that runs out ends the frame as End would.
        if (p->error) return;
        unsigned header = static_cast<unsigned>(p->cur - tagStart);
        // Each tag's record is read by a parser over the tag alone, as the
        // main timeline does, so a record never reads into the next tag.
        GParser tag;
        unsigned total = 0;
        tag.InitTagHead(tagStart, &total, p->limit);
        bool skipRest = true;
        switch (code) {
            case kTagPlaceObject: {
                GCTRL_INFO info = {};
                tag.LoadCtrlPlace(total, &info, errors);
                GActor* actor = GetActor(info);
                if (actor) PlaceNew(clip, m, actor);
                break;
            }
            case kTagPlaceObject2:
                skipRest = PlaceObject2(clip, m, tag, total);
                break;
            case kTagRemoveObject:
            case kTagRemoveObject2: {
                if (code == kTagRemoveObject) tag.ScanUI16();  // character id, not needed
                uint16_t depth = static_cast<uint16_t>(tag.ScanUI16());
                if (tag.error && errors)
                    errors->PushError(code == kTagRemoveObject ? kErrRemoveObject : kErrRemoveObject2);
                RemoveAt(clip, m, depth);
                break;
            }
            case kTagFrameLabel:
                frameLabel = length != 0 ? reinterpret_cast<const char*>(tagStart + header) : nullptr;
                break;
            default:
                break;
        }
        if (skipRest) {
            p->Skip(length);
        } else {
            // Reading goes on right after the record, inside the tag.
            unsigned consumed = static_cast<unsigned>(tag.GetPosition());
            p->Skip(consumed > header ? consumed - header : 0);
        }
        if (code == kTagEnd || code == kTagShowFrame) return;
    }
}

void BSprite::PlaceNew(GClipBox* clip, GMatrix* m, GActor* actor) {
    if (actor->character && actor->character->IsComplex()) static_cast<BComplexChar*>(actor->character)->parent = this;
    // A child sprite's actor at a depth that is taken stays with the cache
    // that owns it (the display list would destroy it); its area is still
    // reported, as for any placement at a taken depth.
    if (IsCached(actor) && DepthTaken(actor->depth)) {
        actor->InsertOpt(clip, m);
        return;
    }
    actors = GActor::Insert(actor, clip, actors, m);
}

bool BSprite::PlaceObject2(GClipBox* clip, GMatrix* m, GParser& tag, unsigned totalLength) {
    GCTRL_INFO info = {};
    int mode = tag.LoadCtrlPlace2(totalLength, &info, dict ? dict->error : nullptr);
    if (mode == 2) {
        actors = GActor::Modify(actors, clip, m, &info);
    } else if (mode == 1) {
        GActor* actor = GetActor(info);
        if (actor) PlaceNew(clip, m, actor);
    } else if (mode == 3) {
        GActor* actor = GetActor(info);
        GActor* replaced = nullptr;
        if (actor) actors = GActor::Replace(actors, clip, &info, actor, replaced, m);
        // Nothing replaced (no actor, or none at that depth, in which case the
        // new one was inserted): reading resumes right after the record, and
        // the rest of the tag is read as tags. That asymmetry is intended.
        if (!replaced) return false;
        // Removed or replaced actors inside a sprite are destroyed directly:
        // their characters keep the reference and stay built. A sprite actor
        // stays unlinked in the child cache.
        if (IsCached(replaced)) {
            replaced->next = replaced->prev = nullptr;
        } else {
            delete replaced;
        }
    } else {
        // A bad record may have left a transform behind.
        FreePlacement(info);
    }
    GParser::ReleaseReadString(&info.name);
    return true;
}

void BSprite::RemoveAt(GClipBox* clip, GMatrix* m, uint16_t depth) {
    GActor* removed = nullptr;
    actors = GActor::Remove(actors, clip, depth, removed, m);
    if (!removed) return;
    // Destroyed directly, keeping the character reference (see PlaceObject2).
    if (IsCached(removed)) {
        removed->next = removed->prev = nullptr;
    } else {
        delete removed;
    }
}

GActor* BSprite::GetActor(GCTRL_INFO& info) {
    if (!dict) {
        FreePlacement(info);
        return nullptr;
    }
    if (dict->GetType(info.characterId) != kTagDefineSprite) return dict->NewActor(&info);
    // An actor that is on the display list right now is never handed out a
    // second time (the same id placed twice at one depth in one frame).
    for (ChildCacheEntry* e = childCache; e; e = e->next) {
        if (e->characterId != info.characterId || e->depth != info.depth || e->frame != curFrame) continue;
        if (IsLinked(e->actor)) continue;
        GActor* a = e->actor;
        a->next = a->prev = nullptr;
        delete a->matrix;
        delete a->cxform;
        a->matrix = info.matrix;
        a->cxform = info.cxform;
        info.matrix = nullptr;
        info.cxform = nullptr;
        tovFree(info.name);
        info.name = nullptr;
        return a;
    }
    BSprite* top = TreeTop();
    if (top->treeInstances >= kMaxTreeInstances) {
        FreePlacement(info);
        return nullptr;
    }
    GActor* actor = dict->NewActor(&info);
    if (!actor) return nullptr;
    if (!IsSpriteChar(actor->character)) return actor;
    auto* entry = new (std::nothrow) ChildCacheEntry;
    if (!entry) {
        dict->DeleteActor(actor);
        return nullptr;
    }
    auto* child = static_cast<BSprite*>(actor->character);
    child->owner = this;
    top->treeInstances += 1;
    *entry = ChildCacheEntry{actor, info.characterId, info.depth, curFrame, childCache};
    childCache = entry;
    return actor;
}

bool BSprite::IsCached(const GActor* actor) const {
    for (const ChildCacheEntry* e = childCache; e; e = e->next)
        if (e->actor == actor) return true;
    return false;
}

bool BSprite::IsLinked(const GActor* actor) const {
    for (const GActor* a = actors; a; a = a->next)
        if (a == actor) return true;
    return false;
}

bool BSprite::DepthTaken(uint16_t depth) const {
    for (const GActor* a = actors; a && a->depth <= depth; a = a->next)
        if (a->depth == depth) return true;
    return false;
}

void BSprite::ReleaseActorList(int full, GClipBox* clip, GMatrix* m) {
    GActor* a = actors;
    actors = nullptr;
    if (!full) {
        while (a) {
            GActor* next = a->next;
            if (clip) a->RemoveOpt(clip, m);
            if (IsCached(a)) {
                a->next = a->prev = nullptr;
            } else if (dict) {
                dict->DeleteActor(a);
            } else {
                delete a;
            }
            a = next;
        }
        return;
    }
    // Destruction: the characters may be gone already (the dictionary frees
    // built characters before the sprite instances it still lists), so they
    // are not looked at. Cached actors are marked by clearing their character
    // first, which tells them from the others on the list in one pass each.
    for (ChildCacheEntry* e = childCache; e; e = e->next) e->actor->character = nullptr;
    while (a) {
        GActor* next = a->next;
        if (a->character) delete a;
        a = next;
    }
    while (childCache) {
        ChildCacheEntry* next = childCache->next;
        delete childCache->actor;
        delete childCache;
        childCache = next;
    }
}

void BSprite::Insert(GClipBox* clip, GMatrix* m) { Remove(clip, m); }

void BSprite::Remove(GClipBox* clip, GMatrix* m) {
    Nesting level(dict);
    if (!level.Entered()) return;
    for (GActor* a = actors; a; a = a->next) a->RemoveOpt(clip, m);
}

_GRECT BSprite::GetBoundingBox(GMatrix* m, GActor* actor, GCTRL_INFO* ctx) {
    _GRECT result = kEmptyBounds;
    Nesting level(dict);
    if (!actor || !level.Entered()) return result;
    GCTRL_INFO record;
    GMatrix matrix;
    GCxform cxform;
    InstanceContext(record, matrix, cxform, actor, ctx);
    GMatrix w = *record.matrix;
    if (m && !m->IsIdentify()) w = w * *m;
    for (GActor* c = actors; c; c = c->next) {
        if (!c->character) continue;
        _GRECT b;
        if (c->character->IsComplex()) {
            b = static_cast<BComplexChar*>(c->character)->GetBoundingBox(m, c, &record);
        } else {
            b = c->character->GetBoundingBox(c->matrix);
            // An empty box adds nothing: widening it would make a small box
            // around the origin out of nothing.
            if (IsEmptyRect(b)) continue;
            b = _GRECT{b.left - 20, b.top - 20, b.right + 20, b.bottom + 20};
            b = w.Transform(b);
        }
        Widen(result, b);
    }
    return result;
}

void BSprite::Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* d) {
    if (!stage || !actor || frameCount == 0 || !actors) return;
    Nesting level(dict);
    if (!level.Entered()) return;
    GCTRL_INFO record;
    GMatrix matrix;
    GCxform cxform;
    InstanceContext(record, matrix, cxform, actor, ctx);
    GMatrix w = *record.matrix;
    if (stage->baseMatrix && !stage->viewMatrix.IsIdentify()) w = w * stage->viewMatrix;
    _GRECT r = stage->curClipBox;
    tovCanvas* canvas = stage->canvas;
    // A fully transparent instance draws none of its plain children; nested
    // sprites and buttons still draw (they may bring their own colour).
    const bool transparent = record.cxform && record.cxform->alphaMult == 0 && record.cxform->alphaAdd == 0;

    uint16_t clipStack[kClipStackSize] = {};
    int n = 0;
    for (GActor* c = actors; c; c = c->next) {
        // A mask covers the depths up to and including its clip depth.
        while (n > 0 && clipStack[n] < c->depth) {
            tovDestroyMask(canvas);
            --n;
        }
        int mode = 1;
        if (c->clipDepth != 0 && n < kClipStackSize - 1) {
            clipStack[++n] = c->clipDepth;
            mode = 2;
        }
        tovBeginCanvas(canvas, mode);
        BChar* ch = c->character;
        if (ch && ch->IsComplex()) {
            ch->Rendering(stage, c, &record, d);
        } else if (ch) {
            _GRECT b = ch->GetBoundingBox(c->matrix);
            if (!IsEmptyRect(b)) b = w.Transform(b);
            if (!IsEmptyRect(b) && !IsEmptyRect(r) && BoxesMeet(r, b)) {
                stage->SetClipBox(&r, b);
                if (!transparent) ch->Rendering(stage, c, &record, d);
                tovSetClipBox(canvas, TruncPixels(r.left), TruncPixels(r.top), TruncPixels(r.right),
                              TruncPixels(r.bottom));
            }
        }
        tovEndCanvas(canvas, mode);
    }
    for (; n > 0; --n) tovDestroyMask(canvas);
}
