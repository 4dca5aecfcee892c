// Fuzz target: opens arbitrary bytes as a movie and drives it like a host
// over a few frames (Forward, Play into a small buffer in every mode, update
// boxes, a turned and transformed view, Reset), then closes it.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "zelengine.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The first byte picks the view; the rest is the movie.
    if (size < 1) return 0;
    const uint8_t knobs = data[0];
    std::vector<uint8_t> movie(data + 1, data + size);  // exact size, so ASan sees overruns
    void* h = zelEngineOpen(movie.data(), static_cast<unsigned>(movie.size()));
    if (!h) return 0;

    const int w = 8 + (knobs & 0x0F) * 3, hgt = 8 + ((knobs >> 4) & 0x07) * 3;
    std::vector<uint32_t> pixels(static_cast<size_t>(w) * hgt);
    _GOFFSCR buffer = {0, 0, w, hgt, ZEL_FORMAT_ARGB32, reinterpret_cast<intptr_t>(pixels.data()), 0};
    zelEngineFlipCanvas(h, (knobs >> 2) & 3);
    if (knobs & 0x80) {
        const double m[6] = {0.5, 0.25, 3, -0.25, 1.5, -2};
        zelEngineSetTransform(h, m);
    }
    zelEngineSetOrg(h, (knobs & 3) * 5, (knobs >> 6) * 5);
    zelEngineSetBgColor(h, 10, 20, 30, 255);

    const int modes[] = {0, 1, 0, -1, 2, 0};
    for (int round = 0; round < 2; ++round) {
        for (int mode : modes) {
            zelEngineForward(h, 1, w, hgt, 1);
            zelEnginePlay(h, &buffer, 0, 0, w, hgt, mode);
            int count = 0;
            const _GRECT* boxes = zelEngineGetUpdateBoxes(h, &count, 0);
            for (int i = 0; boxes && i < count; ++i) (void)boxes[i].left;
            zelEngineGetUpdateBoxes(h, nullptr, 1);
        }
        unsigned code;
        while (zelEnginePopError(h, &code)) {
        }
        for (int s = 0; s <= 6; ++s) zelEngineGetInt(h, s);
        zelEngineReset(h);
    }
    zelEngineClose(h);
    return 0;
}
