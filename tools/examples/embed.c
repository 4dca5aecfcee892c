/* embed.c: the smallest complete zelEngine host, as shown in the README.
 * It reads an uncompressed movie, plays every frame into a 32-bit buffer and
 * prints the rectangles a real host would copy to the screen.
 * Build: cc embed.c $(pkg-config --cflags --libs zelengine) */
#include <stdio.h>
#include <stdlib.h>
#include <zelengine.h>

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s movie.swf\n", argv[0]);
        return 2;
    }
    /* The engine reads the movie in place: keep the buffer until Close. */
    FILE *f = fopen(argv[1], "rb");
    if (!f) { perror(argv[1]); return 1; }
    fseek(f, 0, SEEK_END);
    long size = ftell(f);
    rewind(f);
    unsigned char *movie = malloc(size > 0 ? (size_t)size : 1);
    if (!movie || fread(movie, 1, (size_t)size, f) != (size_t)size) { fclose(f); return 1; }
    fclose(f);

    void *engine = zelEngineOpen(movie, (unsigned)size);
    if (!engine) { fprintf(stderr, "%s: not an uncompressed SWF movie\n", argv[1]); return 1; }

    int width = zelEngineGetInt(engine, 3), height = zelEngineGetInt(engine, 4);
    int frames = zelEngineGetInt(engine, 1);
    uint32_t *pixels = calloc((size_t)width * height, 4); /* premultiplied 0xAARRGGBB */
    _GOFFSCR screen = {0, 0, width, height, ZEL_FORMAT_ARGB32, (intptr_t)pixels, 0};

    for (int frame = 1; frame <= frames; ++frame) {
        zelEngineForward(engine, 1, width, height, 1);           /* run the frame's tags */
        int delay = zelEnginePlay(engine, &screen, 0, 0, width, height, 0); /* draw changes */
        int count = 0;
        const _GRECT *boxes = zelEngineGetUpdateBoxes(engine, &count, 0);
        printf("frame %d: %d update box(es), next frame in %d ms\n", frame, count, delay);
        for (int i = 0; i < count; ++i)
            printf("  copy %g,%g to %g,%g\n", boxes[i].left, boxes[i].top, boxes[i].right,
                   boxes[i].bottom);
    }
    unsigned code;
    while (zelEnginePopError(engine, &code)) printf("engine error 0x%04x\n", code);

    zelEngineClose(engine);
    free(pixels);
    free(movie);
    return 0;
}
