/* zelengine.h: the whole interface of the zelEngine SWF movie player.
 * A host hands the engine an uncompressed ("FWS") movie in memory, advances
 * it with zelEngineForward, rasterises frames into its own pixel buffer with
 * zelEnginePlay and copies the rectangles zelEngineGetUpdateBoxes reports.
 *
 * Ownership: the movie buffer stays the host's and must stay valid and
 * unchanged until zelEngineClose. Pixel buffers are the host's; the engine
 * writes them only inside zelEnginePlay. Arrays and records the engine hands
 * out stay the engine's. One handle is used from one thread at a time;
 * different handles share nothing. Failures return 0 or null and leave a
 * numeric code for zelEnginePopError. */
#ifndef ZELENGINE_H
#define ZELENGINE_H

#include <stdint.h>

#if defined(ZEL_BUILDING_LIBRARY)
#define ZEL_API __attribute__((visibility("default")))
#else
#define ZEL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A rectangle: left, top, right, bottom (x min, y min, x max, y max). */
typedef struct _GRECT {
    double left, top, right, bottom;
} _GRECT;

/* The host's pixel buffer. Buffer pixel (0, 0) shows output pixel (x, y).
 * format is one of ZEL_FORMAT_*; param5 is the address of pixel (0, 0);
 * param6 is the number of bytes per row, 0 meaning width x bytes per pixel. */
typedef struct _GOFFSCR {
    int32_t  x, y;
    int32_t  width, height;
    int32_t  format;
    intptr_t param5;
    intptr_t param6;
} _GOFFSCR;

/* Pixel formats for _GOFFSCR.format. */
#define ZEL_FORMAT_ARGB32   280 /* premultiplied 0xAARRGGBB native word (cairo ARGB32) */
#define ZEL_FORMAT_RGB24     24 /* bytes R, G, B */
#define ZEL_FORMAT_BGR24    272 /* bytes B, G, R */
#define ZEL_FORMAT_BGR24B   271 /* bytes B, G, R (same as 272) */
#define ZEL_FORMAT_RGB565    16 /* native 16-bit word, red in the top 5 bits */
#define ZEL_FORMAT_RGB555    15 /* native 16-bit word, top bit unused */
#define ZEL_FORMAT_RGB444    12 /* native 16-bit word, top 4 bits unused */
#define ZEL_FORMAT_BGR565   268 /* native 16-bit word, blue in the top 5 bits */

/* What the text callback is asked to draw: an edit field's text (kind 0)
 * or its border (kind 1). Sizes and boxes are output pixels; color holds the
 * bytes red, green, blue, alpha in memory order. Valid only during the call. */
typedef struct _GDEVICETEXT {
    const char *text;
    int32_t     size;
    const char *fontName;
    uint32_t    color;
    int32_t     italic, bold;
    int32_t     kind;
    int32_t     wordWrap;
    int32_t     box[4];      /* left, top, right, bottom */
    int32_t     visible[4];  /* the part of box that lies on the output */
    int32_t     reserved[2]; /* not filled */
    int32_t     align;
} _GDEVICETEXT;

typedef void (*ZelTextDrawProc)(_GDEVICETEXT *record, unsigned int user);

/* Opens a movie held in memory. Returns a handle, or null when the buffer is
 * not an uncompressed SWF movie with a readable header. The buffer must stay
 * valid and unchanged until zelEngineClose. */
ZEL_API void *zelEngineOpen(const void *movie, unsigned int length);

/* Frees the handle and everything the engine made. Null does nothing. */
ZEL_API void zelEngineClose(void *handle);

/* Movie facts: 1 frame count, 2 frame rate (8.8 fixed point), 3 width in
 * pixels, 4 height in pixels, 5 background colour as 0x00BBGGRR. Any other
 * selector returns 0 and leaves error 0x2005. */
ZEL_API int zelEngineGetInt(void *handle, int selector);

/* The rectangles (output pixels) changed since the last zelEngineForward;
 * full nonzero gives one rectangle covering the whole output. count may be
 * null. The array stays the engine's and is valid until the next call. */
ZEL_API const _GRECT *zelEngineGetUpdateBoxes(void *handle, int *count, int full);

/* Fits the movie into a viewWidth x viewHeight view (times multiplier) and
 * advances up to frames frames. Returns 0 for a non-positive view size, else
 * the frames left before the end (1 for a one-frame movie). */
ZEL_API int zelEngineForward(void *handle, int frames, int viewWidth,
                             int viewHeight, int multiplier);

/* Draws the current frame into buffer. mode 0 repaints the changed
 * rectangles, 1 rebuilds the canvas and repaints everything, -1 repaints
 * everything without clearing, other values repaint everything. The first
 * Play after open or reset always runs as mode 1. x, y, w, h are unused.
 * Returns the frame delay in milliseconds. */
ZEL_API int zelEnginePlay(void *handle, _GOFFSCR *buffer, int x, int y, int w,
                          int h, int mode);

/* Rewinds to frame 0 with an empty display list. Returns 1, or 0. */
ZEL_API int zelEngineReset(void *handle);

/* Places the movie's origin at (x, y) output pixels. */
ZEL_API int zelEngineSetOrg(void *handle, int x, int y);

/* Turns the output by quarter turns (0..3) from the next zelEngineForward. */
ZEL_API void zelEngineFlipCanvas(void *handle, unsigned int orientation);

/* Takes the most recent error code: 1 and *code set, or 0 when none. */
ZEL_API int zelEnginePopError(void *handle, unsigned int *code);

/* Background caching is not supported: returns 0. */
ZEL_API int zelEngineSetBgCache(void *handle, void *cache, int a, int b);

/* Sets the background colour (each value's low 8 bits); the background is
 * painted only when alpha is 255. Returns 1. */
ZEL_API int zelEngineSetBgColor(void *handle, int r, int g, int b, int a);

/* Sets the host's transform applied after the fit-to-view zoom: six doubles
 * a, b, tx, c, d, ty (x' = a x + b y + tx, y' = c x + d y + ty; translations
 * in pixels). Null restores the identity. Returns 1. */
ZEL_API int zelEngineSetTransform(void *handle, const double *matrix);

/* Sets the callback that draws edit-field text and borders. Returns 1. */
ZEL_API int zelEngineSetTextDraw(void *handle, ZelTextDrawProc proc,
                                 unsigned int user);

/* Stores a value for an audio callback; sound is not played. Returns 1. */
ZEL_API int zelEngineSetAudioCallBack(void *handle, unsigned int value);

/* Mouse, focus and audio entry points: they exist so that hosts written for
 * the full interface link; they do nothing and return 0. */
ZEL_API void zelEngineMouseChange(void *handle, int x, int y, int buttons);
ZEL_API void zelEngineSwitchFocus(void *handle, int direction);
ZEL_API void zelEngineClickFocusButton(void *handle);
ZEL_API int  zelEngineGetNewAudio(void *handle);
ZEL_API int  zelEngineGetAudioData(void *handle, void *data, int length);
ZEL_API void zelEngineChangeAudioState(void *handle, int id, int state);
ZEL_API int  zelEngineGetAudioState(void *handle, int id);
ZEL_API void zelEngineForwardAudio(void *handle, int milliseconds);

#ifdef __cplusplus
}
#endif

#endif /* ZELENGINE_H */
