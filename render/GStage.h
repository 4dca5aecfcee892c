// GStage: the root display of a movie. It holds the main timeline's actors,
// the dirty-rectangle set, the view matrices, the background colour and the
// rasterizer canvas over the host's buffer; it runs the raster pass and turns
// shapes into rasterizer calls (the pass and the renderer live in their own
// source files).
#ifndef ZEL_RENDER_GSTAGE_H
#define ZEL_RENDER_GSTAGE_H

#include <cstdint>

#include "base/GArray.h"
#include "base/GError.h"
#include "math/GCxform.h"
#include "math/GMatrix.h"
#include "parse/Records.h"
#include "render/GClipBox.h"
#include "tov/tov.h"
#include "zelengine.h"

class GDictionary;
struct GActor;
struct _GSHAPE;

class GStage {
public:
    _GRGBA bgColor = {255, 255, 255, 0};  // painted only when alpha is 255
    tovCanvas* canvas = nullptr;
    _GOFFSCR* offscreen = nullptr;        // the last descriptor the raster pass saw
    GActor* actors = nullptr;
    GMatrix* baseMatrix = nullptr;        // origin and zoom
    GMatrix userMatrix;                   // the host's transform, translations in twips
    GMatrix viewMatrix;                   // baseMatrix, then userMatrix
    int32_t width = 0, height = 0;        // output size in pixels
    GClipBox clipBoxes;
    _GRECT* updateBoxes = nullptr;
    _GRECT curClipBox = {1e30, 1e30, -1e30, -1e30};
    int32_t multiFrame = 0;
    int32_t* cacheDepths = nullptr;
    int32_t cacheDepthCount = 0;
    GError* errors = nullptr;
    GDictionary* dictionary = nullptr;    // gives back the references the root actors hold

    // Scratch arrays of the shape renderer, kept so that drawing a shape does
    // not allocate once they have grown to the largest shape seen.
    GDataArray<_GSWFPEN> workPens{10};
    GPointPoolArray<void> workBrushes{10};  // borrowed records, plus the new styles read while drawing
    GDataArray<void*> penHandles{10};
    GDataArray<void*> brushHandles{10};
    GArray<_GRECT, GObjectDestroy<_GRECT>> actorBounds{64};  // each root actor's screen box, one pass
    GDataArray<_GSWFPEN> morphPens{10};
    GPointPoolArray<void> morphBrushes{10};

    GStage();
    ~GStage();
    GStage(const GStage&) = delete;
    GStage& operator=(const GStage&) = delete;

    int SetTransform(const GMatrix* m);
    _GRECT* GetUpdateBoxes(int& count, int full);
    void BeginScanFrame();
    void EndScanFrame(int arg);
    void SetClipBox(const _GRECT& r);
    void SetClipBox(GRect* box, _GRECT& r);
    void ScaleRect(_GRECT& r, GMatrix* m);
    void EraseBackground();
    void ReleaseActorList();
    void Reset(int keepBoxes);

    // Raster pass.
    void Raster(_GOFFSCR* off, int x, int y, int w, int h, int mode, GDictionary* dict);
    void DrawShape(GCTRL_INFO* info, _GSHAPE* shape, _GSHAPE* morphEnd, GDictionary* dict);

    // Shape renderer.
    void RenderShape(_GOFFSCR* off, _GSHAPE* shape, double m[2][3], GCxform* cx, int flag, GDictionary* dict);
    void RenderMorphShape(_GOFFSCR* off, _GSHAPE* start, double m[2][3], GCxform* cx, _GSHAPE* end, int flag,
                          GDictionary* dict, unsigned short ratio);
    void SetPens(_GSWFPEN* pens, int count, GDataArray<void*>& out);
    void SetBrushes(void** brushes, int count, GDataArray<void*>& out);
    void DestroyPens(GDataArray<void*>& handles);
    void DestroyBrushes(GDataArray<void*>& handles);
};

// Bytes per pixel of a buffer's format; 0 for an unknown code.
int GetCBPixel(const _GOFFSCR* off);

#endif
