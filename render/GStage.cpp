// The stage's bookkeeping: construction, the host's transform, update boxes,
// the per-frame protocol of complex characters, clip helpers, background
// erasing and the release of the root display list.
#include "render/GStage.h"

#include <cmath>
#include <new>

#include "display/BChar.h"
#include "display/GActor.h"
#include "display/GDictionary.h"

namespace {

// Twips to whole pixels, rounded up, saturating instead of overflowing.
int CeilPixels(double twips) {
    double v = std::ceil(twips * 0.05);
    if (!(v > -2147483648.0)) return v != v ? 0 : INT32_MIN;
    if (!(v < 2147483647.0)) return INT32_MAX;
    return static_cast<int>(v);
}

double TruncTowardZero(double v) { return std::trunc(v); }

}  // namespace

GStage::GStage() {
    offscreen = static_cast<_GOFFSCR*>(tovMalloc(sizeof(_GOFFSCR)));
    if (offscreen) tovMemSet(offscreen, 0, sizeof(_GOFFSCR));
    baseMatrix = new (std::nothrow) GMatrix();
}

GStage::~GStage() {
    delete baseMatrix;
    baseMatrix = nullptr;
    tovFree(offscreen);
    offscreen = nullptr;
    if (canvas) tovDestroy(canvas);
    canvas = nullptr;
    Reset(1);
    clipBoxes.boxes.RemoveAll();
}

int GStage::SetTransform(const GMatrix* m) {
    if (m) {
        userMatrix = *m;
        userMatrix.m[0][2] *= 20;
        userMatrix.m[1][2] *= 20;
    } else {
        userMatrix = GMatrix();
    }
    viewMatrix = baseMatrix ? *baseMatrix * userMatrix : userMatrix;
    return 1;
}

_GRECT* GStage::GetUpdateBoxes(int& count, int full) {
    tovFree(updateBoxes);
    updateBoxes = nullptr;
    count = 0;
    if (full) {
        updateBoxes = static_cast<_GRECT*>(tovMalloc(sizeof(_GRECT)));
        if (!updateBoxes) return nullptr;
        *updateBoxes = {0, 0, static_cast<double>(width), static_cast<double>(height)};
        count = 1;
        return updateBoxes;
    }
    int n = clipBoxes.boxes.count;
    if (n == 0) return nullptr;
    updateBoxes = static_cast<_GRECT*>(tovMalloc(sizeof(_GRECT) * static_cast<size_t>(n)));
    if (!updateBoxes) return nullptr;
    for (int i = 0; i < n; ++i) {
        const GRect& b = clipBoxes.boxes[i];
        updateBoxes[i] = {TruncTowardZero(b.left / 20), TruncTowardZero(b.top / 20),
                          TruncTowardZero(b.right / 20), TruncTowardZero(b.bottom / 20)};
    }
    count = n;
    return updateBoxes;
}

void GStage::BeginScanFrame() {
    for (GActor* a = actors; a; a = a->next)
        if (a->character && a->character->IsComplex()) static_cast<BComplexChar*>(a->character)->EndScanFrame();
}

void GStage::EndScanFrame(int arg) {
    multiFrame = 0;
    for (GActor* a = actors; a; a = a->next) {
        if (!a->character || !a->character->IsComplex()) continue;
        auto* complex = static_cast<BComplexChar*>(a->character);
        GMatrix work;
        GMatrix* m = a->matrix;
        if (baseMatrix) {
            work = a->matrix ? *a->matrix * viewMatrix : viewMatrix;
            m = &work;
        }
        complex->PrepareData(&clipBoxes, m, arg);
        if (multiFrame || complex->IsMultyFrame()) multiFrame = 1;
    }
}

void GStage::SetClipBox(const _GRECT& r) {
    tovSetClipBox(canvas, CeilPixels(r.left), CeilPixels(r.top), CeilPixels(r.right), CeilPixels(r.bottom));
}

void GStage::SetClipBox(GRect* box, _GRECT& r) {
    bool inside = IsEmptyRect(r) || (r.left >= box->left && r.right <= box->right && r.top >= box->top &&
                                     r.bottom <= box->bottom);
    tovSetClipFlag(canvas, inside ? 0 : 1);
    // One pixel of margin around the actor, never outside the box.
    _GRECT clip = {r.left - 20 > box->left ? r.left - 20 : box->left,
                   r.top - 20 > box->top ? r.top - 20 : box->top,
                   r.right + 20 < box->right ? r.right + 20 : box->right,
                   r.bottom + 20 < box->bottom ? r.bottom + 20 : box->bottom};
    SetClipBox(clip);
}

void GStage::ScaleRect(_GRECT& r, GMatrix* m) { r = m->Transform(r); }

void GStage::EraseBackground() {
    tovSetClipBox(canvas, 0, 0, offscreen->width, offscreen->height);
    if (bgColor.alpha == 255) {
        tovColor c = {bgColor.red, bgColor.green, bgColor.blue, bgColor.alpha};
        tovClear(canvas, &c);
    }
    tovSetClipBox(canvas, 0, 0, width, height);
}

// Root actors go through the dictionary so that the references they hold are
// given back and sprite instances placed here are destroyed with them.
void GStage::ReleaseActorList() {
    GActor* a = actors;
    actors = nullptr;
    while (a) {
        GActor* next = a->next;
        if (dictionary) {
            dictionary->DeleteActor(a);
        } else {
            delete a;
        }
        a = next;
    }
}

void GStage::Reset(int keepBoxes) {
    ReleaseActorList();
    tovFree(updateBoxes);
    updateBoxes = nullptr;
    if (!keepBoxes) clipBoxes.boxes.RemoveAll();
}

int GetCBPixel(const _GOFFSCR* off) {
    switch (off ? off->format : 0) {
        case 12: case 15: case 16: case 268: return 2;
        case 24: case 271: case 272: return 3;
        case 280: return 4;
        default: return 0;
    }
}
