// GActor: one placed instance of a character on a display list, a chain
// sorted by ascending depth whose owner keeps only the head. The list
// operations take the head (or the new actor) first, report the touched
// screen areas to the dirty set and return the new head.
#ifndef ZEL_DISPLAY_GACTOR_H
#define ZEL_DISPLAY_GACTOR_H

#include <cstdint>

#include "math/GCxform.h"
#include "math/GMatrix.h"
#include "parse/Records.h"

class BChar;
class GClipBox;

struct GActor {
    GActor* next = nullptr;
    GActor* prev = nullptr;
    uint16_t depth = 0;
    GMatrix* matrix = nullptr;  // owned; null means identity
    GCxform* cxform = nullptr;  // owned; null means no colour change
    uint16_t ratio = 0;
    uint16_t clipDepth = 0;     // 0: not a clipping layer
    BChar* character = nullptr; // one reference held, given back by GDictionary::DeleteActor
    char* name = nullptr;       // owned

    GActor() = default;
    ~GActor();
    GActor(const GActor&) = delete;
    GActor& operator=(const GActor&) = delete;

    static GActor* Insert(GActor* actor, GClipBox* clip, GActor* head, GMatrix* outer);
    static GActor* Modify(GActor* head, GClipBox* clip, GMatrix* outer, GCTRL_INFO* info);
    static GActor* Replace(GActor* head, GClipBox* clip, GCTRL_INFO* info, GActor* newActor,
                           GActor*& replaced, GMatrix* outer);
    static GActor* Remove(GActor* head, GClipBox* clip, uint16_t depth, GActor*& removed, GMatrix* outer);
    void InsertOpt(GClipBox* clip, GMatrix* outer);
    void RemoveOpt(GClipBox* clip, GMatrix* outer);
};

#endif
