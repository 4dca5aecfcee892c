// GClipBox: the set of screen areas (twips) changed since the last forward
// step. Each area is snapped outward to whole pixels with a margin and grown
// into the first stored box it touches, which then swallows every box it
// touches; the raster pass repaints only inside these boxes.
#ifndef ZEL_RENDER_GCLIPBOX_H
#define ZEL_RENDER_GCLIPBOX_H

#include "base/GArray.h"
#include "zelengine.h"

typedef _GRECT GRect;

class GClipBox {
public:
    GArray<GRect, GObjectDestroy<GRect>> boxes{10};
    int width = 0;
    int height = 0;

    // Empties the set and stores the stage size (defaults 2048 x 1024).
    void Create(int w, int h);
    void InsertClipBox(const _GRECT& r);
    // 1 when r is already covered by a stored box (or empty, on a non-empty set).
    int IsContain(const _GRECT& r) const;
};

#endif
