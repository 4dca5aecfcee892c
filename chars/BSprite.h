// BSprite: a DefineSprite character, a nested timeline with its own display
// list; each placement is an instance of its own that reads one frame of
// control tags per movie frame, loops, and draws its children with masks.
#ifndef ZEL_CHARS_BSPRITE_H
#define ZEL_CHARS_BSPRITE_H

#include <cstdint>

#include "display/BChar.h"

class GParser;

class BSprite : public BComplexChar {
public:
    // A child sprite's actor kept across loops of this timeline, so that a
    // child placed again at the same frame, depth and id is the same instance
    // and keeps its own timeline. The cache owns the actor.
    struct ChildCacheEntry {
        GActor* actor;
        uint16_t characterId;
        uint16_t depth;
        uint16_t frame;  // curFrame when the placement was read
        ChildCacheEntry* next;
    };

    // One level of a walk down nested sprites and buttons (preparing, ending a
    // frame, drawing, bounds, dirty areas, button loading). A level is refused
    // when the walk is already kMaxNesting levels deep, or when the walk that
    // started at the outermost call has entered kWalkBudget levels in all: a
    // movie whose sprites or buttons contain themselves, or are nested
    // thousands deep, can then neither overflow the stack nor run for ever.
    // A walk over a movie of n bytes may enter kLevelsPerByte * n levels
    // (at least kMinWalkBudget, at most kWalkBudget): a small file that nests
    // buttons and sprites into each other cannot cost more than its size
    // justifies. Without a dictionary the full budget applies.
    class Nesting {
    public:
        static constexpr int kMaxNesting = 64;
        static constexpr long kWalkBudget = 1L << 18;
        static constexpr long kMinWalkBudget = 1L << 14;
        static constexpr long kLevelsPerByte = 64;

        explicit Nesting(const GDictionary* dict = nullptr);
        ~Nesting();
        Nesting(const Nesting&) = delete;
        Nesting& operator=(const Nesting&) = delete;

        bool Entered() const { return entered_; }
        // Levels entered on this thread right now (0 outside every walk).
        static int Depth();

    private:
        bool entered_;
    };

    // Sprite instances one outermost instance may create below it, at every
    // level together; further placements of sprites place nothing. This
    // bounds what a sprite that places itself can grow to.
    static constexpr int kMaxTreeInstances = 4096;

    GActor* actors = nullptr;
    uint16_t frameCount = 0;
    uint16_t curFrame = 0;  // 0-based index of the next frame to build
    unsigned char* nextTag = nullptr;
    unsigned char* streamEnd = nullptr;
    GDictionary* dict = nullptr;
    // While nonzero the timeline does not advance. Nothing in this engine sets
    // it (there are no scripts to stop a timeline); it stays 0.
    int stopped = 0;
    // The text of the last FrameLabel read on this timeline (a pointer into
    // the movie buffer), or null. It is only recorded: nothing looks frames
    // up by label without scripts.
    const char* frameLabel = nullptr;
    BSprite* prevInstance = nullptr;
    BSprite* nextInstance = nullptr;
    ChildCacheEntry* childCache = nullptr;

    using BComplexChar::GetBoundingBox;

    BSprite() = default;
    ~BSprite() override;

    int LoadSWFFile(void* tag, GDictionary* dict) override;
    void Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) override;
    void Insert(GClipBox* clip, GMatrix* m) override;
    void Remove(GClipBox* clip, GMatrix* m) override;
    int PrepareData(GClipBox* clip, GMatrix* m, int flag) override;
    void EndScanFrame() override;
    _GRECT GetBoundingBox(GMatrix* m, GActor* actor, GCTRL_INFO* ctx) override;

    // Runs the control tags of one frame, up to ShowFrame or End.
    void SpriteParseTags(GClipBox* clip, GMatrix* m, GParser* p, GDictionary* dict);
    // full 0: the display list is cleared for a loop restart; nonzero: every
    // actor and the child cache are destroyed.
    void ReleaseActorList(int full, GClipBox* clip, GMatrix* m);
    GActor* GetActor(GCTRL_INFO& info);
    // Rewinds to the first control tag; returns the frame count.
    int Reset();

    // Sprite instances created below the outermost instance of this tree.
    int TreeInstances() const;

    // Box helpers shared with buttons. Boxes meet when their closed intervals
    // do (sharing an edge is enough); Widen grows acc to include b.
    static bool BoxesMeet(const _GRECT& a, const _GRECT& b);
    static void Widen(_GRECT& acc, const _GRECT& b);

private:
    // Reads the tag header and frame count at `tag`; 0 on a reader error.
    int ReadHeader(void* tag);
    void PlaceNew(GClipBox* clip, GMatrix* m, GActor* actor);
    // PlaceObject2 read by `tag`; false when the rest of the tag is not to be
    // skipped (a replace that replaced nothing).
    bool PlaceObject2(GClipBox* clip, GMatrix* m, GParser& tag, unsigned totalLength);
    void RemoveAt(GClipBox* clip, GMatrix* m, uint16_t depth);
    bool IsCached(const GActor* actor) const;
    bool IsLinked(const GActor* actor) const;
    bool DepthTaken(uint16_t depth) const;
    BSprite* TreeTop();

    BSprite* owner = nullptr;  // the instance whose child cache holds this one
    int treeInstances = 0;     // counted on the outermost instance only
    int busy = 0;              // PrepareData is running on this instance
};

#endif
