/* tov.h: an anti-aliased scanline rasterizer for SWF-style vector shapes.
 * A canvas draws into a pixel buffer that its caller owns; shapes are edge
 * soups whose every edge names the fill on its left and on its right and a
 * pen, filled with exact area coverage and stroked with round caps and joins.
 * It knows nothing of SWF files; all coordinates are output pixels (doubles). */
#ifndef TOV_TOV_H
#define TOV_TOV_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct tovCanvas tovCanvas; /* one drawing target and its scratch buffers */
typedef struct tovObject tovObject; /* a pen or a brush, owned by its canvas */

/* Bytes red, green, blue, alpha (straight, not premultiplied). */
typedef struct tovColor {
    uint8_t red, green, blue, alpha;
} tovColor;

/* Colour transform in 8.8 fixed point: channel' = clamp((c * mult >> 8) + add). */
typedef struct tovColorTransform {
    int16_t alphaMult, alphaAdd, redMult, redAdd, greenMult, greenAdd, blueMult, blueAdd;
} tovColorTransform;

/* One gradient stop: ratio 0..255 along the gradient, and its colour. */
typedef struct tovGradientStop {
    uint32_t ratio;
    tovColor color;
} tovGradientStop;

/* A pen: width in output pixels (0 = one-pixel hairline) and colour. */
typedef struct tovPenSpec {
    double   width;
    tovColor color;
} tovPenSpec;

/* The caller's pixel buffer. Buffer pixel (0, 0) at address `pixels` shows
 * output pixel (x, y); `stride` is bytes per row (0: width x bytes per pixel).
 * format: 280 premultiplied ARGB32 native word, 24 bytes RGB, 272 and 271
 * bytes BGR, 16 RGB565, 15 RGB555, 12 RGB444, 268 BGR565 (16-bit native words).
 * The layout matches the engine's _GOFFSCR. */
typedef struct tovBuffer {
    int32_t  x, y;
    int32_t  width, height;
    int32_t  format;
    intptr_t pixels;
    intptr_t stride;
} tovBuffer;

/* A canvas over the buffer (the descriptor is copied; the pixels stay the
 * caller's). Returns null for an unknown format, null pixels, a non-positive
 * size or a stride smaller than a row. */
tovCanvas *tovCreate(const tovBuffer *buffer);
/* Frees the canvas with its pens, brushes, masks and scratch buffers. */
void tovDestroy(tovCanvas *canvas);

/* Clip rectangle in output pixels, right and bottom exclusive, always
 * intersected with the buffer. */
void tovSetClipBox(tovCanvas *canvas, int left, int top, int right, int bottom);
/* 0 promises that what follows lies inside the clip box, so per-pixel clip
 * tests may be skipped. tov never makes cells outside the clip box and never
 * tests pixels, so the flag changes nothing. Whatever the clip box, every
 * pixel inside it gets exactly the value a drawing with a larger box gives. */
void tovSetClipFlag(tovCanvas *canvas, int on);
/* Fills the clip rectangle with the colour, premultiplied, replacing what
 * was there and ignoring masks (formats without alpha drop the alpha). */
void tovClear(tovCanvas *canvas, const tovColor *color);

/* Bracket one group of drawing: kind 1 draws into the buffer through the
 * current mask; kind 2 turns the coverage of what is drawn (colours are
 * ignored) into a new 8-bit mask, intersected with the masks already open,
 * that multiplies all later drawing until tovDestroyMask. Groups nest: while
 * a kind-2 group is open, everything drawn (in nested groups too) goes into
 * its mask. The mask covers the clip box current at tovBeginCanvas; outside
 * it nothing is drawn. tovEndCanvas ends the innermost group whatever kind
 * it is given; unmatched calls are ignored. Up to 64 masks may exist at
 * once; a mask beyond that hides all drawing until it is dropped. */
void tovBeginCanvas(tovCanvas *canvas, int kind);
void tovEndCanvas(tovCanvas *canvas, int kind);
/* Drops the most recent mask. */
void tovDestroyMask(tovCanvas *canvas);

/* A path set: moves, lines and quadratic curves with the current fills and
 * pen, filled (non-zero per fill) and then stroked at tovEndShape. The three
 * integers are reserved and ignored. tovBeginShape forgets the style lists
 * of the previous path set. Points with a NaN coordinate drop the edges
 * that touch them; coordinates are clamped to +-4194304 pixels. */
void tovBeginShape(tovCanvas *canvas, int a, int b, int c);
void tovMoveTo(tovCanvas *canvas, double x, double y);
void tovLineTo(tovCanvas *canvas, double x, double y);
void tovCurveTo(tovCanvas *canvas, double cx, double cy, double x, double y);
/* Fill indices (into the brush list) left (fill0) and right (fill1) of the
 * following edges as seen on screen with y down; 0 means no fill. */
void tovUseBrush(tovCanvas *canvas, int fill0, int fill1);
/* Pen index (into the pen list) of the following edges; 0 means no line.
 * Consecutive edges of one pen form a polyline with round joins; a move or
 * a change of pen ends it (with round caps). */
void tovUsePen(tovCanvas *canvas, int pen);
/* Fills every style, then strokes each pen in index order. Where fills
 * meet along a shared edge their colours are mixed by exact coverage, so
 * opaque regions sharing an edge leave no seam; fills that overlap add up. */
void tovEndShape(tovCanvas *canvas);

/* Style lists for the current path set: arrays of handles (null entries draw
 * nothing); tov copies the arrays. Out-of-range indices draw nothing. */
void tovSetPens(tovCanvas *canvas, tovObject *const *pens, int count);
void tovSetBrushes(tovCanvas *canvas, tovObject *const *brushes, int count);

/* Pens and brushes belong to the canvas and are recycled by it. */
tovObject *tovCreatePen(tovCanvas *canvas, const tovPenSpec *pen);
/* The colour is used as given: a colour transform is never applied to it. */
tovObject *tovCreateSolidBrush(tovCanvas *canvas, tovColor color,
                               const tovColorTransform *cx);
/* type 2 linear, 3 radial; stops in ascending ratio (up to 255 used); the
 * gradient square spans -819.2..819.2 in both axes before `matrix` (a b tx /
 * c d ty) maps it to output pixels; tx, ty repeat the matrix translation;
 * spread is reserved (pass 1); cx (may be null) applies to the stop colours.
 * Linear: t = (u.x + 819.2) / 1638.4; radial: t = |u| / 819.2, u being the
 * point in the gradient square; both padded at the ends. A matrix that
 * cannot be inverted gives a brush that paints nothing. */
tovObject *tovCreateGradientBrush(tovCanvas *canvas, int type, int count,
                                  const tovGradientStop *stops, int spread,
                                  double tx, double ty, const double matrix[2][3],
                                  const tovColorTransform *cx);
/* Bitmap fills are not drawn: returns a brush that paints nothing. */
tovObject *tovCreateBmpBrush(tovCanvas *canvas, int type, const void *bitmap,
                             int word1, int word2, const double matrix[2][3],
                             const tovColorTransform *cx);
/* Returns a pen or brush to the canvas. */
void tovDeleteObject(tovCanvas *canvas, tovObject *object);

#ifdef __cplusplus
}
#endif

#endif /* TOV_TOV_H */
