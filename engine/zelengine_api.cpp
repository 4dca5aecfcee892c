// The 23 exported zelEngine functions: each forwards to the movie object,
// its stage or its error stack. A null handle returns 0 or does nothing.
#include <new>

#include "engine/GFile.h"
#include "zelengine.h"

namespace {

GFile* Movie(void* handle) { return static_cast<GFile*>(handle); }

}  // namespace

extern "C" {

void* zelEngineOpen(const void* movie, unsigned int length) {
    GFile* file = new (std::nothrow) GFile(movie, length);
    if (!file) return nullptr;
    if (!file->Reset(1)) {
        delete file;
        return nullptr;
    }
    return file;
}

void zelEngineClose(void* handle) { delete Movie(handle); }

int zelEngineGetInt(void* handle, int selector) { return handle ? Movie(handle)->GetInt(selector) : 0; }

const _GRECT* zelEngineGetUpdateBoxes(void* handle, int* count, int full) {
    int scratch = 0;
    int& n = count ? *count : scratch;
    if (!handle) {
        n = 0;
        return nullptr;
    }
    return Movie(handle)->stage.GetUpdateBoxes(n, full);
}

int zelEngineForward(void* handle, int frames, int viewWidth, int viewHeight, int multiplier) {
    return handle ? Movie(handle)->Forward(frames, viewWidth, viewHeight, multiplier) : 0;
}

int zelEnginePlay(void* handle, _GOFFSCR* buffer, int x, int y, int w, int h, int mode) {
    if (!handle) return 0;
    GFile* file = Movie(handle);
    const _GRECT& frame = file->frameRect;
    if (frame.right > frame.left && frame.bottom > frame.top && buffer && buffer->width > 0 && buffer->height > 0) {
        // The first drawing Play after open or reset rebuilds the canvas and
        // repaints everything, whatever mode the host asks for.
        if (file->forceRedraw) {
            mode = 1;
            file->forceRedraw = 0;
        }
        file->stage.Raster(buffer, x, y, w, h, mode, &file->dictionary);
    }
    return file->frameDelay;
}

int zelEngineReset(void* handle) { return handle ? Movie(handle)->Reset(0) : 0; }

int zelEngineSetOrg(void* handle, int x, int y) { return handle ? Movie(handle)->SetOrg(x, y) : 0; }

void zelEngineFlipCanvas(void* handle, unsigned int orientation) {
    if (handle) Movie(handle)->FlipCanvas(orientation);
}

int zelEnginePopError(void* handle, unsigned int* code) {
    if (!handle) return 0;
    unsigned popped = 0;
    if (!Movie(handle)->PopError(popped)) return 0;
    if (code) *code = popped;
    return 1;
}

int zelEngineSetBgCache(void* handle, void* cache, int a, int b) {
    return handle ? Movie(handle)->SetBgCache(cache, a, b) : 0;
}

int zelEngineSetBgColor(void* handle, int r, int g, int b, int a) {
    if (!handle) return 0;
    Movie(handle)->SetBackground(
        {static_cast<uint8_t>(r), static_cast<uint8_t>(g), static_cast<uint8_t>(b), static_cast<uint8_t>(a)});
    return 1;
}

int zelEngineSetTransform(void* handle, const double* matrix) {
    if (!handle) return 0;
    if (!matrix) return Movie(handle)->stage.SetTransform(nullptr);
    GMatrix m;
    for (int i = 0; i < 6; ++i) m.m[i / 3][i % 3] = matrix[i];
    return Movie(handle)->stage.SetTransform(&m);
}

int zelEngineSetTextDraw(void* handle, ZelTextDrawProc proc, unsigned int user) {
    return handle ? Movie(handle)->SetTextDraw(proc, user) : 0;
}

int zelEngineSetAudioCallBack(void* handle, unsigned int value) {
    if (!handle) return 0;
    Movie(handle)->audioCallBack = value;
    return 1;
}

void zelEngineMouseChange(void*, int, int, int) {}
void zelEngineSwitchFocus(void*, int) {}
void zelEngineClickFocusButton(void*) {}
int zelEngineGetNewAudio(void*) { return 0; }
int zelEngineGetAudioData(void*, void*, int) { return 0; }
void zelEngineChangeAudioState(void*, int, int) {}
int zelEngineGetAudioState(void*, int) { return 0; }
void zelEngineForwardAudio(void*, int) {}

}  // extern "C"
