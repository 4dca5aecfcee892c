// GDictionary: the id-indexed slots (null, raw definition tag, or the wrapper
// of a built character), lazy building with reference counts, the list of
// sprite instances, and the actor factory used by every placement.
#include "display/GDictionary.h"

#include <new>

#include "base/Memory.h"
#include "chars/BSprite.h"
#include "display/BChar.h"
#include "display/GActor.h"
#include "display/GCharacterFactory.h"

namespace {

constexpr unsigned kInitialSlots = 32;
// The table grows to the largest id seen plus this many slots.
constexpr unsigned kSlotHeadroom = 32;
constexpr unsigned kTagDefineSprite = 39;

// The first 16 bits of what a slot points at, read as a tag header word. A
// tag header may stand on the movie's very last byte: its second byte then
// reads as 0 rather than past the host's buffer (`limit`); a wrapper's two
// marker bytes are 0 either way. Without a known limit (no movie) both
// bytes are read.
unsigned HeaderWord(const void* p, const unsigned char* limit) {
    const unsigned char* b = static_cast<const unsigned char*>(p);
    return b[0] | ((!limit || b + 1 < limit ? b[1] : 0u) << 8);
}

unsigned TagCode(const void* tag, const unsigned char* limit) { return HeaderWord(tag, limit) >> 6; }

// Two tests tell a built character from a raw tag: the lookups go by the tag
// code being 0, the table walk and GetType by both header bytes being 0. A
// define tag never has code 0, so both agree on every slot Insert can fill.
bool IsWrapperByCode(const void* slot, const unsigned char* limit) { return TagCode(slot, limit) == 0; }
bool IsWrapperByWord(const void* slot, const unsigned char* limit) { return HeaderWord(slot, limit) == 0; }

// What each definition tag code builds, and the code pushed when its load
// fails. Bitmap and sound definitions build nothing and report nothing.
struct CharacterKind {
    unsigned code;
    BChar* (*make)();
    unsigned loadError;
};

constexpr CharacterKind kKinds[] = {
    {2, NewShapeChar, kErrLoadShape},       {22, NewShapeChar, kErrLoadShape2},
    {32, NewShapeChar, kErrLoadShape3},     {10, NewFontChar, kErrLoadFont},
    {48, NewFontChar, kErrLoadFont2},       {11, NewTextChar, kErrLoadText},
    {33, NewTextChar, kErrLoadText2},       {37, NewEditTextChar, kErrLoadEditText},
    {7, NewButtonChar, kErrLoadButton},     {34, NewButtonChar, kErrLoadButton2},
    {46, NewMorphChar, kErrLoadMorph},      {39, NewSpriteChar, kErrLoadSprite},
    {6, nullptr, 0},  {14, nullptr, 0},  {20, nullptr, 0},
    {21, nullptr, 0}, {35, nullptr, 0},  {36, nullptr, 0},
};

const CharacterKind* FindKind(unsigned code) {
    for (const CharacterKind& kind : kKinds)
        if (kind.code == code) return &kind;
    return nullptr;
}

}  // namespace

int GCharacter::Init(unsigned short id, void* tag, GDictionary* dict) {
    if (!tag || !dict) return 0;
    unsigned code = TagCode(tag, dict->movieEnd);
    const CharacterKind* kind = (code >= 2 && code <= 48) ? FindKind(code) : nullptr;
    if (!kind) {
        dict->PushError(kErrNotCharacter);
        return 0;
    }
    character = kind->make ? kind->make() : nullptr;
    if (!character) return 0;
    character->refCount += 1;
    character->id = id;
    character->defTag = tag;
    marker = 0;
    if (character->Init(tag, dict)) return 1;
    dict->PushError(kind->loadError);
    return 0;
}

GDictionary::GDictionary() {
    slots = static_cast<void**>(tovMalloc(kInitialSlots * sizeof(void*)));
    if (slots) tovMemSet(slots, 0, kInitialSlots * sizeof(void*));
}

GDictionary::~GDictionary() { Reset(1); }

void GDictionary::PushError(unsigned code) {
    if (error) error->PushError(code);
}

void GDictionary::Insert(unsigned short id, void* tag) {
    if (slots && id < capacity) {
        // The first definition of an id stays in force.
        if (slots[id]) {
            PushError(kErrDuplicateId);
            return;
        }
        slots[id] = tag;
        return;
    }
    // An id inside the capacity lands here only when the first table could not
    // be allocated; the table is then made at its planned size.
    unsigned oldCount = slots ? capacity : 0;
    unsigned newCapacity = id < capacity ? capacity : id + kSlotHeadroom;
    void** grown = static_cast<void**>(tovMalloc(newCapacity * sizeof(void*)));
    if (!grown) {
        PushError(kErrTableGrow);
        return;
    }
    tovMemSet(grown + oldCount, 0, (newCapacity - oldCount) * sizeof(void*));
    if (oldCount) tovMemCpy(grown, slots, oldCount * sizeof(void*));
    tovFree(slots);
    slots = grown;
    capacity = newCapacity;
    slots[id] = tag;
}

// Nothing in this build registers an assist object; the entry point is kept
// so that a DefineAssistObject handler has a target.
void GDictionary::InsertAssist(unsigned int, void*) {}

void* GDictionary::GetAssist(unsigned int type, unsigned int) { return type == 8 ? assist : nullptr; }

GActor* GDictionary::NewActor(GCTRL_INFO* info) {
    if (!info) {
        PushError(kErrNoPlacement);
        return nullptr;
    }
    BChar* ch = NewChar(info->characterId);
    if (ch) {
        GActor* actor = ch->NewActor(ch, info);
        if (actor) return actor;
        ReleaseChar(ch);
    }
    // Nothing is placed (unknown id, a bitmap or sound, or a failed build):
    // the record's transform and name are freed here so nothing leaks.
    delete info->matrix;
    delete info->cxform;
    tovFree(info->name);
    info->matrix = nullptr;
    info->cxform = nullptr;
    info->name = nullptr;
    return nullptr;
}

BChar* GDictionary::NewChar(unsigned short id) {
    void* slot = (slots && id < capacity) ? slots[id] : nullptr;
    if (!slot) {
        PushError(kErrUnknownId);
        return nullptr;
    }
    if (IsWrapperByCode(slot, movieEnd) || TagCode(slot, movieEnd) != kTagDefineSprite) return GetChar(id);
    // Every use of a sprite is an instance of its own (it carries its own
    // timeline); the slot keeps the raw tag so the next use builds another.
    BSprite* sprite = new (std::nothrow) BSprite;
    if (!sprite) return nullptr;
    if (!sprite->Init(slot, this)) {
        delete sprite;
        PushError(kErrLoadSprite);
        return nullptr;
    }
    sprite->id = id;
    sprite->defTag = slot;
    sprite->refCount += 1;
    sprite->prevInstance = nullptr;
    sprite->nextInstance = spriteInstances;
    if (spriteInstances) spriteInstances->prevInstance = sprite;
    spriteInstances = sprite;
    return sprite;
}

BChar* GDictionary::GetChar(unsigned short id) {
    void* slot = (slots && id < capacity) ? slots[id] : nullptr;
    if (!slot) {
        PushError(kErrUnknownId);
        return nullptr;
    }
    if (IsWrapperByCode(slot, movieEnd)) {
        BChar* ch = static_cast<GCharacter*>(slot)->character;
        if (ch) ch->refCount += 1;
        return ch;
    }
    GCharacter* wrapper = new (std::nothrow) GCharacter;
    if (!wrapper) return nullptr;
    if (!wrapper->Init(id, slot, this)) {
        delete wrapper->character;
        delete wrapper;
        return nullptr;
    }
    slots[id] = wrapper;
    return wrapper->character;
}

int GDictionary::GetType(unsigned short id) {
    void* slot = (slots && id < capacity) ? slots[id] : nullptr;
    if (!slot) {
        PushError(kErrUnknownId);
        return 0;
    }
    if (IsWrapperByWord(slot, movieEnd)) {
        BChar* ch = static_cast<GCharacter*>(slot)->character;
        return (ch && ch->defTag) ? static_cast<int>(TagCode(ch->defTag, movieEnd)) : 0;
    }
    return static_cast<int>(TagCode(slot, movieEnd));
}

void GDictionary::ReleaseChar(BChar* ch) {
    if (!ch || --ch->refCount != 0) return;
    // The character a slot's wrapper holds goes back to its raw tag, so the
    // next use parses the definition again.
    void* slot = (slots && ch->id < capacity) ? slots[ch->id] : nullptr;
    if (slot && IsWrapperByCode(slot, movieEnd) && static_cast<GCharacter*>(slot)->character == ch) {
        slots[ch->id] = ch->defTag;
        delete static_cast<GCharacter*>(slot);
        delete ch;
        return;
    }
    if (ch->defTag && TagCode(ch->defTag, movieEnd) == kTagDefineSprite) {
        BSprite* sprite = static_cast<BSprite*>(ch);
        if (spriteInstances == sprite) {
            spriteInstances = sprite->nextInstance;
            if (spriteInstances) spriteInstances->prevInstance = nullptr;
        } else if (sprite->prevInstance) {
            sprite->prevInstance->nextInstance = sprite->nextInstance;
            if (sprite->nextInstance) sprite->nextInstance->prevInstance = sprite->prevInstance;
        }
    }
    delete ch;
}

void GDictionary::DeleteActor(GActor* actor) {
    if (!actor) return;
    ReleaseChar(actor->character);
    delete actor;
}

void GDictionary::Reset(int full) {
    // The index is as wide as capacity, so the walk ends for any table size
    // (a 16-bit index would wrap forever on a table of more than 65536 slots).
    for (unsigned i = 0; slots && i < capacity; ++i) {
        void* slot = slots[i];
        if (!slot || !IsWrapperByWord(slot, movieEnd)) continue;
        GCharacter* wrapper = static_cast<GCharacter*>(slot);
        delete wrapper->character;
        delete wrapper;
    }
    if (full) {
        tovFree(slots);
        slots = nullptr;
        capacity = 0;
    } else if (slots) {
        tovMemSet(slots, 0, capacity * sizeof(void*));
    }
    // Nothing in this build sets an assist object, so there is nothing to free.
    assist = nullptr;
    if (full) {
        while (spriteInstances) {
            BSprite* next = spriteInstances->nextInstance;
            delete spriteInstances;
            spriteInstances = next;
        }
        return;
    }
    // Instances survive a partial reset; the list is rebuilt in reverse.
    BSprite* reversed = nullptr;
    for (BSprite* s = spriteInstances; s;) {
        BSprite* next = s->nextInstance;
        s->prevInstance = nullptr;
        s->nextInstance = reversed;
        if (reversed) reversed->prevInstance = s;
        reversed = s;
        s = next;
    }
    spriteInstances = reversed;
}
