/* A minimal host that opens a one-frame movie with the installed library,
 * draws it and checks the result; exit status 0 means everything worked. */
#include <stdint.h>
#include <stdio.h>
#include <zelengine.h>

/* "FWS", version 6, length 27, frame 20 x 20 pixels (RECT of 400 twips with
 * 10-bit fields), 12 fps, 1 frame; SetBackgroundColor (0x11, 0x22, 0x33);
 * ShowFrame; End. */
static const unsigned char movie[] = {
    'F', 'W', 'S', 6, 27, 0, 0, 0,
    0x50, 0x00, 0xC8, 0x00, 0x0C, 0x80,       /* RECT: 10-bit fields, 0..400, 0..400 */
    0x00, 0x0C, 0x01, 0x00,                   /* rate 12.0, 1 frame */
    0x43, 0x02, 0x11, 0x22, 0x33,             /* SetBackgroundColor */
    0x40, 0x00,                               /* ShowFrame */
    0x00, 0x00                                /* End */
};

int main(void) {
    uint32_t pixels[20 * 20] = {0};
    _GOFFSCR buffer = {0, 0, 20, 20, ZEL_FORMAT_ARGB32, (intptr_t)pixels, 0};
    int count = 0;
    void *handle = zelEngineOpen(movie, sizeof movie);
    if (!handle) { fprintf(stderr, "open failed\n"); return 1; }
    if (zelEngineGetInt(handle, 3) != 20 || zelEngineGetInt(handle, 4) != 20) return 2;
    zelEngineForward(handle, 1, 20, 20, 1);
    if (zelEnginePlay(handle, &buffer, 0, 0, 20, 20, 0) != 83) return 3;
    if (zelEngineGetInt(handle, 5) != 0x332211) return 4;
    if (!zelEngineGetUpdateBoxes(handle, &count, 0) || count < 1) return 5;
    if (pixels[10 * 20 + 10] != 0xFF112233u) { fprintf(stderr, "pixel %08x\n", (unsigned)pixels[210]); return 6; }
    zelEngineClose(handle);
    return 0;
}
