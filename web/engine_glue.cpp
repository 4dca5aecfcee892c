// What the web page needs beside the engine's own functions: drawing into a
// pixel buffer without building the host structure in JavaScript, turning
// the engine's premultiplied words into the canvas's straight RGBA bytes
// (only where a frame changed), and the text callback that hands device-text
// records to the page, which draws them with the canvas text API.
#include <emscripten.h>

#include <cstdint>

#include "zelengine.h"

namespace {

// The page reads the record's 32-bit words from memory during the call.
EM_JS(void, PageDrawText, (const _GDEVICETEXT* record), {
    if (Module.drawText) Module.drawText(record);
});

void DrawText(_GDEVICETEXT* record, unsigned int) { PageDrawText(record); }

}  // namespace

extern "C" {

// Draws the current frame into width x height premultiplied ARGB words.
EMSCRIPTEN_KEEPALIVE int zelWebPlay(void* engine, uint32_t* pixels, int width, int height, int mode) {
    _GOFFSCR buffer{};
    buffer.width = width;
    buffer.height = height;
    buffer.format = ZEL_FORMAT_ARGB32;
    buffer.param5 = reinterpret_cast<intptr_t>(pixels);
    buffer.param6 = intptr_t(width) * 4;
    return zelEnginePlay(engine, &buffer, 0, 0, width, height, mode);
}

// Converts the rectangle [left, right) x [top, bottom), already inside the
// image, from premultiplied ARGB words to straight-alpha RGBA bytes.
EMSCRIPTEN_KEEPALIVE void zelWebToRGBA(const uint32_t* argb, uint8_t* rgba, int width, int left, int top,
                                       int right, int bottom) {
    for (int y = top; y < bottom; ++y) {
        const uint32_t* src = argb + y * width;
        uint8_t* dst = rgba + (y * width + left) * 4;
        for (int x = left; x < right; ++x, dst += 4) {
            const uint32_t w = src[x];
            const unsigned a = w >> 24;
            unsigned c[3] = {(w >> 16) & 0xFF, (w >> 8) & 0xFF, w & 0xFF};
            if (a != 255) {
                for (unsigned& v : c) {
                    v = a ? (v * 255 + a / 2) / a : 0;
                    if (v > 255) v = 255;
                }
            }
            dst[0] = uint8_t(c[0]), dst[1] = uint8_t(c[1]), dst[2] = uint8_t(c[2]), dst[3] = uint8_t(a);
        }
    }
}

EMSCRIPTEN_KEEPALIVE int zelWebSetTextDraw(void* engine) { return zelEngineSetTextDraw(engine, DrawText, 0); }

}  // extern "C"
