// The raster pass: for every dirty box, clip the canvas to it, clear it to
// the background and draw the root actors that meet it in depth order, with
// clip layers turned into masks; DrawShape is the common entry through which
// every shape-like character reaches the shape renderer with its final matrix.
#include <cstdint>

#include "display/BChar.h"
#include "display/GActor.h"
#include "render/GStage.h"

namespace {

// Slot 0 is never used, so at most 29 clip layers are open at once; further
// clip layers are drawn as ordinary content (the stack refuses them).
constexpr int kClipStackSize = 30;

bool Touch(const _GRECT& a, const _GRECT& b) {
    return a.left <= b.right && a.right >= b.left && a.top <= b.bottom && a.bottom >= b.top;
}

bool SameDescriptor(const _GOFFSCR& a, const _GOFFSCR& b) {
    // x and y are deliberately not compared.
    return a.width == b.width && a.height == b.height && a.format == b.format && a.param5 == b.param5 &&
           a.param6 == b.param6;
}

bool IsCachedDepth(const int32_t* depths, int count, uint16_t depth) {
    for (int i = 0; i < count; ++i)
        if (depths[i] == depth) return true;
    return false;
}

}  // namespace

void GStage::Raster(_GOFFSCR* off, int, int, int, int, int mode, GDictionary* dict) {
    if (!off || !offscreen) return;
    const bool scaleBounds = baseMatrix && !viewMatrix.IsIdentify();

    if (mode == 1 && canvas) {
        tovDestroy(canvas);
        canvas = nullptr;
    }
    if (!canvas) {
        static_assert(sizeof(_GOFFSCR) == sizeof(tovBuffer), "buffer descriptors must match");
        canvas = tovCreate(reinterpret_cast<const tovBuffer*>(off));
        if (!canvas) return;
        *offscreen = *off;
    } else if (!SameDescriptor(*offscreen, *off)) {
        *offscreen = *off;
    }

    if (mode == 1) EraseBackground();
    if (mode != 0) {
        clipBoxes.boxes.RemoveAll();
        // Left and top stay in the descriptor's units while right and bottom
        // are converted to twips; with the usual x = y = 0 this is exact.
        _GRECT all = {static_cast<double>(off->x), static_cast<double>(off->y),
                      (static_cast<double>(off->x) + off->width) * 20,
                      (static_cast<double>(off->y) + off->height) * 20};
        clipBoxes.InsertClipBox(all);
    }

    // The actors' screen bounds do not change during the pass: compute them
    // once rather than once per dirty box.
    actorBounds.Forget(0);
    for (GActor* a = actors; a; a = a->next) {
        _GRECT r = kEmptyBounds;
        if (a->character && !a->character->IsComplex()) {
            r = a->character->GetBoundingBox(a->matrix);
            if (scaleBounds && cacheDepthCount == 0) r = viewMatrix.Transform(r);
        }
        if (!actorBounds.Add(r)) return;
    }

    const tovColor background = {bgColor.red, bgColor.green, bgColor.blue, bgColor.alpha};
    for (int b = 0; b < clipBoxes.boxes.count; ++b) {
        GRect box = clipBoxes.boxes[b];
        curClipBox = box;
        SetClipBox(box);
        if (mode != -1 && bgColor.alpha == 255) tovClear(canvas, &background);

        uint16_t clipStack[kClipStackSize] = {};
        int top = 0;
        int index = 0;
        for (GActor* a = actors; a; a = a->next, ++index) {
            while (top > 0 && a->depth > clipStack[top]) {
                tovDestroyMask(canvas);
                --top;
            }
            int kind = 1;
            if (a->clipDepth != 0 && cacheDepthCount == 0 && top < kClipStackSize - 1) {
                clipStack[++top] = a->clipDepth;
                kind = 2;
            }
            tovBeginCanvas(canvas, kind);
            BChar* ch = a->character;
            bool draw = ch && (cacheDepthCount == 0 || IsCachedDepth(cacheDepths, cacheDepthCount, a->depth));
            if (draw && ch->IsComplex()) {
                ch->Rendering(this, a, nullptr, dict);
            } else if (draw) {
                _GRECT r = actorBounds[index];
                bool visible = true;
                if (cacheDepthCount != 0) {
                    tovSetClipBox(canvas, 0, 0, width, height);
                } else {
                    visible = !IsEmptyRect(r) && !IsEmptyRect(box) && Touch(r, box);
                    if (visible) SetClipBox(&box, r);
                }
                if (visible) {
                    ch->Rendering(this, a, nullptr, dict);
                    SetClipBox(box);
                }
            }
            tovEndCanvas(canvas, kind);
        }
        while (top > 0) {
            tovDestroyMask(canvas);
            --top;
        }
    }
}

void GStage::DrawShape(GCTRL_INFO* info, _GSHAPE* shape, _GSHAPE* morphEnd, GDictionary* dict) {
    if (!shape || !info) return;
    // A transform that zeroes alpha leaves nothing to see.
    if (info->cxform && info->cxform->alphaMult == 0 && info->cxform->alphaAdd == 0) return;
    GMatrix m = viewMatrix;
    if (info->matrix && !info->matrix->IsIdentify()) m = *info->matrix * viewMatrix;
    int flag = info->placeFlags != 0 ? 1 : 0;
    if (morphEnd) {
        RenderMorphShape(offscreen, shape, m.m, info->cxform, morphEnd, flag, dict, info->ratio);
    } else {
        RenderShape(offscreen, shape, m.m, info->cxform, flag, dict);
    }
}
