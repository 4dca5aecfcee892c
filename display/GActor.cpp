// GActor: the depth-ordered display list. Each change links or unlinks one
// actor, hands over the placement's transform and reports the screen areas it
// touches to the dirty set, so that only changed areas are repainted.
#include "display/GActor.h"

#include "display/BChar.h"
#include "parse/GParser.h"

namespace {

// Frees what a placement record still owns when nothing takes it over.
void DropPlacement(GCTRL_INFO* info) {
    delete info->matrix;
    delete info->cxform;
    tovFree(info->name);
    info->matrix = nullptr;
    info->cxform = nullptr;
    info->name = nullptr;
}

// The first actor whose depth is not below `depth`, or null; `before` gets
// the actor preceding it (the tail when none is found).
GActor* FindDepth(GActor* head, uint16_t depth, GActor*& before) {
    before = nullptr;
    GActor* node = head;
    while (node && node->depth < depth) {
        before = node;
        node = node->next;
    }
    return node;
}

// The actor's own matrix followed by the enclosing one; null means identity.
GMatrix* ScreenMatrix(GMatrix* own, GMatrix* outer, GMatrix& work) {
    if (!outer) return own;
    work = own ? *own * *outer : *outer;
    return &work;
}

}  // namespace

GActor::~GActor() {
    delete matrix;
    matrix = nullptr;
    delete cxform;
    cxform = nullptr;
    GParser::ReleaseReadString(&name);
}

void GActor::InsertOpt(GClipBox* clip, GMatrix* outer) {
    if (!character) return;
    GMatrix work;
    character->Insert(clip, ScreenMatrix(matrix, outer, work));
}

void GActor::RemoveOpt(GClipBox* clip, GMatrix* outer) {
    if (!character) return;
    GMatrix work;
    character->Remove(clip, ScreenMatrix(matrix, outer, work));
}

GActor* GActor::Insert(GActor* actor, GClipBox* clip, GActor* head, GMatrix* outer) {
    if (!actor) return head;
    actor->InsertOpt(clip, outer);
    if (!head) return actor;
    GActor* before = nullptr;
    GActor* node = FindDepth(head, actor->depth, before);
    if (!node) {
        before->next = actor;
        actor->prev = before;
        return head;
    }
    if (node->depth == actor->depth) {
        // The depth is taken: the actor already there stays. The newcomer is
        // destroyed as it is, keeping the character reference it took and the
        // area it has already reported; that is how a taken depth behaves.
        delete actor;
        return head;
    }
    actor->next = node;
    node->prev = actor;
    actor->prev = before;
    if (!before) return actor;
    before->next = actor;
    return head;
}

GActor* GActor::Modify(GActor* head, GClipBox* clip, GMatrix* outer, GCTRL_INFO* info) {
    GActor* before = nullptr;
    GActor* actor = FindDepth(head, info->depth, before);
    if (!actor || actor->depth != info->depth) {
        DropPlacement(info);
        return head;
    }
    if (info->placeFlags & kPlaceHasMatrix) {
        actor->RemoveOpt(clip, outer);
        delete actor->matrix;
        actor->matrix = info->matrix;
        info->matrix = nullptr;
    }
    if (info->placeFlags & kPlaceHasCxform) {
        delete actor->cxform;
        actor->cxform = info->cxform;
        info->cxform = nullptr;
    }
    if (info->placeFlags & kPlaceHasRatio) actor->ratio = info->ratio;
    if (info->placeFlags & kPlaceHasClipDepth) actor->clipDepth = info->clipDepth;
    // A move never renames: the record keeps its name for the caller to free.
    actor->InsertOpt(clip, outer);
    return head;
}

GActor* GActor::Replace(GActor* head, GClipBox* clip, GCTRL_INFO* info, GActor* newActor, GActor*& replaced,
                        GMatrix* outer) {
    replaced = nullptr;
    if (!head) return Insert(newActor, clip, nullptr, outer);
    GActor* before = nullptr;
    GActor* old = FindDepth(head, info->depth, before);
    if (!old || old->depth != info->depth) return Insert(newActor, clip, head, outer);
    replaced = old;
    old->RemoveOpt(clip, outer);
    if (!newActor) return head;
    // What the record does not set is carried over from the replaced actor.
    if (!(info->placeFlags & kPlaceHasMatrix)) {
        delete newActor->matrix;
        newActor->matrix = old->matrix;
        old->matrix = nullptr;
    }
    if (!(info->placeFlags & kPlaceHasCxform)) {
        delete newActor->cxform;
        newActor->cxform = old->cxform;
        old->cxform = nullptr;
    }
    if (!(info->placeFlags & kPlaceHasRatio)) newActor->ratio = old->ratio;
    if (!(info->placeFlags & kPlaceHasClipDepth)) newActor->clipDepth = old->clipDepth;
    newActor->InsertOpt(clip, outer);
    newActor->next = old->next;
    if (old->next) old->next->prev = newActor;
    newActor->prev = old->prev;
    if (!old->prev) return newActor;
    old->prev->next = newActor;
    return head;
}

GActor* GActor::Remove(GActor* head, GClipBox* clip, uint16_t depth, GActor*& removed, GMatrix* outer) {
    removed = nullptr;
    if (!head) return nullptr;
    GActor* before = nullptr;
    GActor* actor = FindDepth(head, depth, before);
    if (!actor || actor->depth != depth) return head;
    removed = actor;
    actor->RemoveOpt(clip, outer);
    if (actor->next) actor->next->prev = actor->prev;
    if (!actor->prev) {
        GActor* newHead = actor->next;
        if (newHead) newHead->prev = nullptr;
        return newHead;
    }
    actor->prev->next = actor->next;
    return head;
}
