// GDictionary: character ids to definitions, and the factory of actors. A
// definition is only recorded where its tag lies; the character is built on
// first use, shared by reference count and destroyed with its last actor, the
// slot then holding the raw tag again. Each use of a sprite builds a fresh
// instance, kept on a list of its own.
#ifndef ZEL_DISPLAY_GDICTIONARY_H
#define ZEL_DISPLAY_GDICTIONARY_H

#include <cstdint>

#include "base/GError.h"
#include "parse/Records.h"
#include "zelengine.h"

class BChar;
class BSprite;
struct GActor;

// What a slot holds once its character is built. Its first 16 bits are 0,
// which no definition tag header can be (tag code 0 defines nothing).
struct GCharacter {
    uint16_t marker = 0;
    BChar* character = nullptr;

    int Init(unsigned short id, void* tag, class GDictionary* dict);
};

class GDictionary {
public:
    ZelTextDrawProc textDraw = nullptr;
    unsigned textDrawUser = 0;
    void** slots = nullptr;
    void* assist = nullptr;
    unsigned capacity = 32;
    BSprite* spriteInstances = nullptr;
    GError* error = nullptr;
    // One past the last byte of the host's movie buffer: every parser made
    // over a definition tag is bounded by it.
    const unsigned char* movieEnd = nullptr;
    // The movie's length in bytes: what a walk down nested sprites may cost
    // is bounded by it.
    unsigned movieBytes = 0;

    GDictionary();
    ~GDictionary();
    GDictionary(const GDictionary&) = delete;
    GDictionary& operator=(const GDictionary&) = delete;

    void Insert(unsigned short id, void* tag);
    void InsertAssist(unsigned int type, void* obj);
    void* GetAssist(unsigned int type, unsigned int id);
    GActor* NewActor(GCTRL_INFO* info);
    BChar* NewChar(unsigned short id);
    BChar* GetChar(unsigned short id);
    int GetType(unsigned short id);
    void Reset(int full);
    void DeleteActor(GActor* actor);
    // Pushes code on the movie's error stack (nothing when none is attached).
    void PushError(unsigned code);

private:
    // Gives back one reference on ch; the last one destroys it and, for a
    // non-sprite, puts its definition tag back in its slot.
    void ReleaseChar(BChar* ch);
};

#endif
