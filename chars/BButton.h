// BButton: a DefineButton or DefineButton2 character: button records placing
// characters at layers for the four states. Without pointer or focus input
// the state stays "up"; button actions are not read.
#ifndef ZEL_CHARS_BBUTTON_H
#define ZEL_CHARS_BBUTTON_H

#include <cstdint>

#include "base/GArray.h"
#include "display/BChar.h"

class GError;
class GParser;

class BButton : public BComplexChar {
public:
    struct ButtonRecord {
        uint8_t flags = 0;  // 0x01 up, 0x02 over, 0x04 down, 0x08 hit test; other bits as read
        uint16_t characterId = 0;
        uint16_t layer = 0;
        GMatrix matrix;
        GCxform cxform;
        BChar* character = nullptr;  // one reference, never given back
    };

    GArray<ButtonRecord*, GPointObjectDestroy<ButtonRecord>> records{10};
    // 0 up, 1 over, 2 down, 3 hit test. The host's pointer and focus calls do
    // nothing in this engine, so nothing changes it and buttons show "up".
    int state = 0;
    GDictionary* dict = nullptr;

    using BComplexChar::GetBoundingBox;

    BButton() = default;
    ~BButton() override;

    int LoadSWFFile(void* tag, GDictionary* dict) override;
    void Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) override;
    void Insert(GClipBox* clip, GMatrix* m) override;
    void Remove(GClipBox* clip, GMatrix* m) override;
    int PrepareData(GClipBox* clip, GMatrix* m, int flag) override;
    void EndScanFrame() override;
    _GRECT GetBoundingBox(GMatrix* m, GActor* actor, GCTRL_INFO* ctx) override;

    int LoadButtonSWFFile(void* tag, GDictionary* dict, GParser* p);
    int LoadButton2SWFFile(void* tag, GDictionary* dict, GParser* p);
    ButtonRecord* LoadButtonRecord(GParser* p, unsigned char flags, GError* error);
    // The first record in tag order at `layer` whose flags share a bit with
    // the mask, or null.
    ButtonRecord* GetButtonRecords(int layer, unsigned char stateMask);
    // The greatest layer among the records of the current state; 0 if none.
    int GetMaxLayer();
    unsigned char GetSWFButtonState();

private:
    // Reads button records up to the end flag; 0 on a reader error.
    int LoadRecords(GDictionary* dict, GParser* p);
    // The records drawn in the current state, one per layer from layer 1 up:
    // what walking the layers with GetButtonRecords visits, built once per
    // state instead of searching the records for every layer number.
    const GDataArray<ButtonRecord*>& Layers();

    GDataArray<ButtonRecord*> layers_{10};
    unsigned char layersMask_ = 0;  // the state mask layers_ was built for; 0 = not built
    int busy_ = 0;                  // PrepareData is running on this button
};

#endif
