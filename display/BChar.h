// BChar and BComplexChar: the base of every character a movie defines. The
// dictionary builds characters from their definition tags, display lists
// place them as actors, and the stage asks them to draw and to report the
// screen area they cover. Complex characters (sprites, buttons) add a
// per-frame protocol that the stage drives.
#ifndef ZEL_DISPLAY_BCHAR_H
#define ZEL_DISPLAY_BCHAR_H

#include <cstdint>

#include "math/GCxform.h"
#include "math/GMatrix.h"
#include "parse/Records.h"
#include "zelengine.h"

class GClipBox;
class GDictionary;
class GParser;
class GStage;
struct GActor;
struct _GSHAPE;

// The bounding-box accumulator that nothing has widened yet.
constexpr _GRECT kEmptyBounds = {1e30, 1e30, -1e30, -1e30};

inline bool IsEmptyRect(const _GRECT& r) { return !(r.left < r.right) || !(r.top < r.bottom); }

class BChar {
public:
    uint16_t id = 0;
    void* defTag = nullptr;
    int32_t refCount = 0;

    BChar() = default;
    virtual ~BChar() = default;
    BChar(const BChar&) = delete;
    BChar& operator=(const BChar&) = delete;

    // Parses the definition tag; nonzero on success. The base fails.
    virtual int LoadSWFFile(void* tag, GDictionary* dict);
    // A new actor for a placement; it takes over the record's matrix,
    // colour transform and name (the record's name is set to null).
    virtual GActor* NewActor(BChar* ch, GCTRL_INFO* info);
    // Draws one placed instance; ctx carries the enclosing accumulated
    // transform, or is null on the root display list.
    virtual void Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict);
    // Bounds under m (twips); the base gives the empty accumulator.
    virtual _GRECT GetBoundingBox(GMatrix* m);
    // Reports the area covered under m as dirty. Removing dirties the same
    // area as placing.
    virtual void Insert(GClipBox* clip, GMatrix* m);
    virtual void Remove(GClipBox* clip, GMatrix* m);
    virtual int IsComplex();

    int Init(void* tag, GDictionary* dict) { return LoadSWFFile(tag, dict); }

    // r under m: all zeros when r is empty, r itself when m is null or the
    // identity, else the box of the transformed corners.
    static _GRECT GetBoundingBox(GMatrix* m, _GRECT& r);
    // Builds the drawing context of one placed instance into out.
    static void GetCtrlMatrix(GCTRL_INFO& out, GMatrix& m, GCxform& cx, GActor* actor, GCTRL_INFO* ctx);
    // Reads the next tag header; opens the parser's span over the tag first
    // when it is still unopened (len is then the whole tag's length).
    static unsigned GetTypeLen(GParser* p, unsigned int& len);
    // Frees a parsed shape with its style records when own is nonzero.
    static void DeleteShapes(_GSHAPE* shape, int own);
    // The drawing context of one placed instance: the actor's placement
    // fields, then GetCtrlMatrix's combined transform.
    static void GetPlacement(GCTRL_INFO& out, GMatrix& m, GCxform& cx, GActor* actor, GCTRL_INFO* ctx);
    // Draws one placed instance of a parsed shape (morphEnd null) or of a
    // morph (morphEnd its end shape) through the stage, under the context of
    // the actor (matrix, colour transform, ratio) combined with ctx.
    static void RenderShapes(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict,
                             _GSHAPE* shape, _GSHAPE* morphEnd);
};

class BComplexChar : public BChar {
public:
    int prepared = 0;
    int multiFrame = 0;
    BChar* parent = nullptr;  // the sprite that placed it last, null on the root list

    using BChar::GetBoundingBox;

    int IsComplex() override { return 1; }
    // Advances the instance for the frame being built; nonzero when it changed.
    virtual int PrepareData(GClipBox* clip, GMatrix* m, int flag);
    virtual void EndScanFrame();
    // Bounds of one placed instance (its content depends on its state).
    virtual _GRECT GetBoundingBox(GMatrix* m, GActor* actor, GCTRL_INFO* ctx);
    // Background-cache hooks, kept inactive.
    virtual int SetBgCache(_GOFFSCR* screen, int x, int y, int w, int h, unsigned int* bits);
    virtual void SetCurClipBoxID(int a, int b);
    virtual int NeedCache(_GRECT& r);

    int IsMultyFrame() const { return multiFrame; }
};

#endif
