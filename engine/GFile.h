// GFile: the movie object and the engine handle. It reads the header, owns
// the dictionary, the stage and the error stack, and drives the main
// timeline: each frame it reads tags up to the next ShowFrame and hands each
// to the handler a 49-entry table names by tag code.
#ifndef ZEL_ENGINE_GFILE_H
#define ZEL_ENGINE_GFILE_H

#include <cstdint>

#include "base/GError.h"
#include "display/GDictionary.h"
#include "parse/GParser.h"
#include "render/GStage.h"
#include "zelengine.h"

class GFile;
typedef unsigned (*GTagHandler)(GFile* file, unsigned char* tag, unsigned length);

constexpr int kTagHandlerCount = 49;

class GFile : public GParser {
public:
    GTagHandler tagHandlers[kTagHandlerCount];
    _GRECT frameRect = {0, 0, 0, 0};
    int32_t frameCount = 0;
    uint32_t fileLength = 0;
    int32_t frameRate = 0;
    int32_t frameDelay = 100;
    int32_t version = 0;  // 0: no usable movie
    int32_t currentFrame = 0;
    GDictionary dictionary;
    GStage stage;
    _GRGBA bgColor = {0, 0, 0, 0};
    uint32_t orientation = 0;
    GError errors;
    uint32_t audioCallBack = 0;
    int32_t stopped = 0;        // nothing sets it; a stopped movie neither advances nor ends
    int32_t scanFrameMode = 0;  // handed to every EndScanFrame, never changed
    int32_t forceRedraw = 1;    // the next drawing Play repaints everything
    uint32_t resetMark = 0;

    GFile(const void* buffer, unsigned int length);
    ~GFile();
    GFile(const GFile&) = delete;
    GFile& operator=(const GFile&) = delete;

    int Reset(int);
    int GetInt(int selector);
    void SetFrameDelay(int rate);
    int SetOrg(int x, int y);
    int Forward(int frames, int width, int height, int multiplier);
    void ForwardAFrame();
    int PopError(unsigned& code) { return errors.PopError(code); }
    int SetTextDraw(ZelTextDrawProc proc, unsigned user);
    void FlipCanvas(unsigned o) { orientation = o; }
    int SetBgCache(void*, int, int) { return 0; }
    void SetBackground(_GRGBA color);

    unsigned DefineObject(unsigned char* tag, unsigned length);
    unsigned PlaceObject(unsigned char* tag, unsigned length);
    unsigned PlaceObject2(unsigned char* tag, unsigned length);
    unsigned RemoveObject(unsigned char* tag, unsigned length);
    unsigned RemoveObject2(unsigned char* tag, unsigned length);

private:
    GMatrix* ViewMatrix() { return stage.baseMatrix ? &stage.viewMatrix : nullptr; }
    void Place(GCTRL_INFO& info);
    void RemoveAt(uint16_t depth);
};

#endif
