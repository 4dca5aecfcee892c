// The movie object: header reading, rewinding, the movie's facts, the view
// fit done at each forward step, the main tag loop and the handlers of the
// tags that define, place and remove characters.
#include "engine/GFile.h"

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <new>

#include "display/BChar.h"
#include "display/GActor.h"
#include "math/GTransform.h"

namespace {

unsigned Dummy(GFile*, unsigned char*, unsigned length) { return length; }
unsigned DefineLabel(GFile*, unsigned char*, unsigned length) { return length; }
unsigned DefineObject(GFile* f, unsigned char* tag, unsigned length) { return f->DefineObject(tag, length); }
unsigned PlaceObject(GFile* f, unsigned char* tag, unsigned length) { return f->PlaceObject(tag, length); }
unsigned PlaceObject2(GFile* f, unsigned char* tag, unsigned length) { return f->PlaceObject2(tag, length); }
unsigned RemoveObject(GFile* f, unsigned char* tag, unsigned length) { return f->RemoveObject(tag, length); }
unsigned RemoveObject2(GFile* f, unsigned char* tag, unsigned length) { return f->RemoveObject2(tag, length); }

// SetBackgroundColor takes its colour at tag + 2, as if the header were
// always the short form: a long-header tag is read from the wrong bytes, on
// purpose. Bytes beyond the host's buffer read as 0.
unsigned SetBkColor(GFile* f, unsigned char* tag, unsigned length) {
    _GRGBA c = {static_cast<uint8_t>(f->Byte(tag + 2)), static_cast<uint8_t>(f->Byte(tag + 3)),
                static_cast<uint8_t>(f->Byte(tag + 4)), 0xFF};
    f->SetBackground(c);
    return length;
}

// Tag code to handler; every code not listed does nothing.
struct HandlerTable {
    GTagHandler h[kTagHandlerCount];
    HandlerTable() {
        for (GTagHandler& e : h) e = Dummy;
        for (int code : {2, 22, 32, 7, 34, 10, 48, 11, 33, 37, 39, 46}) h[code] = DefineObject;
        h[4] = PlaceObject;
        h[5] = RemoveObject;
        h[9] = SetBkColor;
        h[26] = PlaceObject2;
        h[28] = RemoveObject2;
        h[43] = DefineLabel;
    }
};

const HandlerTable kHandlers;

// Double to int toward zero, saturating instead of overflowing.
int SaturateInt(double v) {
    if (!(v > -2147483648.0)) return v != v ? 0 : INT32_MIN;
    if (!(v < 2147483647.0)) return INT32_MAX;
    return static_cast<int>(v);
}

}  // namespace

GFile::GFile(const void* buffer, unsigned int length) {
    tovMemCpy(tagHandlers, kHandlers.h, sizeof(tagHandlers));
    errors.Create();
    dictionary.error = &errors;
    stage.errors = &errors;
    stage.dictionary = &dictionary;

    Init(buffer, length);
    if (buffer) {
        dictionary.movieEnd = static_cast<const unsigned char*>(buffer) + length;
        dictionary.movieBytes = length;
    }
    unsigned f = ScanUI8(), w = ScanUI8(), s = ScanUI8();
    if (f == 'F' && w == 'W' && s == 'S' && !error) {
        version = static_cast<int32_t>(ScanUI8());
        fileLength = ScanUI32();
        ScanSWFRect(frameRect, &errors);
        frameRate = static_cast<int32_t>(ScanUI16());
        frameCount = static_cast<int32_t>(ScanUI16());
        currentFrame = 0;
        SetFrameDelay(frameRate);
        if (!error) return;
    }
    version = 0;
    Deinit();
}

// Members go in reverse order: the error stack, then the stage (whose root
// actors give their references back to the dictionary), then the dictionary.
GFile::~GFile() = default;

int GFile::Reset(int) {
    if (!stage.baseMatrix || !dictionary.slots || version == 0) return 0;
    forceRedraw = 1;
    bitPos = 0;
    error = 0;
    cur = start;
    Skip(8);
    ScanSWFRect(frameRect, &errors);
    frameRate = static_cast<int32_t>(ScanUI16());
    frameCount = static_cast<int32_t>(ScanUI16());
    currentFrame = 0;
    SetFrameDelay(frameRate);
    resetMark = 0;
    stage.Reset(0);
    dictionary.Reset(0);
    return error ? 0 : 1;
}

int GFile::GetInt(int selector) {
    if (error) return 0;
    switch (selector) {
        case 1: return frameCount;
        case 2: return frameRate;
        case 3: return SaturateInt((frameRect.right - frameRect.left) * 0.05);
        case 4: return SaturateInt((frameRect.bottom - frameRect.top) * 0.05);
        // 0x00BBGGRR: the reverse of the stored byte order, as hosts expect it.
        case 5: return (bgColor.blue << 16) | (bgColor.green << 8) | bgColor.red;
        default:
            errors.PushError(kErrBadSelector);
            return 0;
    }
}

void GFile::SetFrameDelay(int rate) {
    frameDelay = rate == 0 ? 100 : SaturateInt(std::floor(32768.0 / (rate * 128.0) * 1000.0));
}

int GFile::SetOrg(int x, int y) {
    if (!stage.baseMatrix) return 0;
    stage.baseMatrix->m[0][2] = x * 20.0;
    stage.baseMatrix->m[1][2] = y * 20.0;
    stage.viewMatrix = *stage.baseMatrix * stage.userMatrix;
    return 1;
}

void GFile::SetBackground(_GRGBA color) {
    stage.bgColor = color;
    bgColor = color;
}

int GFile::SetTextDraw(ZelTextDrawProc proc, unsigned user) {
    dictionary.textDraw = proc;
    dictionary.textDrawUser = user;
    return 1;
}

int GFile::Forward(int frames, int width, int height, int multiplier) {
    if (width <= 0 || height <= 0) return 0;
    // An inverted frame rectangle rounds away from zero, on purpose.
    int w = GetInt(3);
    if (w < 0) w = GetInt(3) - 1;
    int h = GetInt(4);
    if (h < 0) h = GetInt(4) - 1;
    double zoom = GTransform::GetZoomScale(w, h, width, height, orientation);
    bool turned = orientation == 1 || orientation == 3;
    double W = turned ? h : w, H = turned ? w : h;
    stage.width = SaturateInt(std::floor(W * zoom + 0.5));
    stage.height = SaturateInt(std::floor(H * zoom + 0.5));
    stage.clipBoxes.Create(stage.width, stage.height);
    if (stage.baseMatrix) {
        _GPOINT origin = {stage.baseMatrix->m[0][2], stage.baseMatrix->m[1][2]};
        *stage.baseMatrix = GTransform::GetTransForm(zoom * multiplier, orientation, origin);
        stage.viewMatrix = *stage.baseMatrix * stage.userMatrix;
    }
    errors.ClearError();
    stage.clipBoxes.boxes.RemoveAll();
    // The check comes after each frame: at the end of the movie a Forward still
    // runs one empty frame, so sprites keep advancing their own timelines.
    for (int i = 0; i < frames; ++i) {
        ForwardAFrame();
        // Once the stream is frozen, further frames change nothing: stop, so
        // that a huge frame count does not spin.
        if (currentFrame >= frameCount || error) break;
    }
    if (currentFrame >= frameCount && stopped) return 1;
    if (frameCount == 1) return 1;
    return frameCount - currentFrame;
}

void GFile::ForwardAFrame() {
    stage.BeginScanFrame();
    if (currentFrame >= frameCount || stopped) {
        stage.EndScanFrame(scanFrameMode);
        return;
    }
    if (error) return;
    unsigned code;
    do {
        unsigned char* tagStart = cur + ((bitPos != 0 && cur) ? 1 : 0);
        unsigned length = 0;
        code = ScanTag(length);
        if (error) break;
        if (code < static_cast<unsigned>(kTagHandlerCount)) tagHandlers[code](this, tagStart, length);
        Skip(length);
    } while (code > 1);
    currentFrame += 1;
    stage.EndScanFrame(scanFrameMode);
}

unsigned GFile::DefineObject(unsigned char* tag, unsigned) {
    GParser p;
    unsigned total = 0;
    p.InitTagHead(tag, &total, limit);
    dictionary.Insert(static_cast<unsigned short>(p.ScanUI16()), tag);
    return total;
}

void GFile::Place(GCTRL_INFO& info) {
    GActor* actor = dictionary.NewActor(&info);
    if (!actor) return;
    if (actor->character && actor->character->IsComplex())
        static_cast<BComplexChar*>(actor->character)->parent = nullptr;
    stage.actors = GActor::Insert(actor, &stage.clipBoxes, stage.actors, ViewMatrix());
}

unsigned GFile::PlaceObject(unsigned char* tag, unsigned) {
    GParser p;
    unsigned total = 0;
    p.InitTagHead(tag, &total, limit);
    GCTRL_INFO info = {};
    p.LoadCtrlPlace(total, &info, &errors);
    Place(info);
    return total;
}

unsigned GFile::PlaceObject2(unsigned char* tag, unsigned) {
    GParser p;
    unsigned total = 0;
    p.InitTagHead(tag, &total, limit);
    GCTRL_INFO info = {};
    int mode = p.LoadCtrlPlace2(total, &info, &errors);
    if (mode == 1) {
        Place(info);
    } else if (mode == 2 && stage.actors) {
        stage.actors = GActor::Modify(stage.actors, &stage.clipBoxes, ViewMatrix(), &info);
    } else if (mode == 3) {
        GActor* actor = dictionary.NewActor(&info);
        if (actor && stage.actors) {
            GActor* old = nullptr;
            stage.actors = GActor::Replace(stage.actors, &stage.clipBoxes, &info, actor, old, ViewMatrix());
            dictionary.DeleteActor(old);
        } else if (actor) {
            // A replace on an empty display list shows nothing.
            dictionary.DeleteActor(actor);
        }
    } else {
        // A bad record, or a move on an empty list: nobody took over what the
        // reader allocated.
        delete info.matrix;
        delete info.cxform;
    }
    if (info.name) tovFree(info.name);
    return total;
}

void GFile::RemoveAt(uint16_t depth) {
    if (!stage.actors) return;
    GActor* removed = nullptr;
    stage.actors = GActor::Remove(stage.actors, &stage.clipBoxes, depth, removed, ViewMatrix());
    dictionary.DeleteActor(removed);
}

unsigned GFile::RemoveObject(unsigned char* tag, unsigned) {
    GParser p;
    unsigned total = 0;
    p.InitTagHead(tag, &total, limit);
    p.ScanUI16();
    uint16_t depth = static_cast<uint16_t>(p.ScanUI16());
    if (p.error) errors.PushError(kErrRemoveObject);  // the removal still uses what was read
    RemoveAt(depth);
    return total;
}

unsigned GFile::RemoveObject2(unsigned char* tag, unsigned) {
    GParser p;
    unsigned total = 0;
    p.InitTagHead(tag, &total, limit);
    uint16_t depth = static_cast<uint16_t>(p.ScanUI16());
    if (p.error) errors.PushError(kErrRemoveObject2);
    RemoveAt(depth);
    return total;
}
