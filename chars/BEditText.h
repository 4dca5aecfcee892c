// BEditText: a DefineEditText character, shown with its initial text only.
// With an embedded font that has every character the glyphs are drawn as
// shapes; otherwise, and for the field's border, the host's text callback
// gets a _GDEVICETEXT record. HTML text is reduced to plain lines first.
#ifndef ZEL_CHARS_BEDITTEXT_H
#define ZEL_CHARS_BEDITTEXT_H

#include <cstdint>

#include "display/BChar.h"

class BFont;

class BEditText : public BChar {
public:
    char* text = nullptr;  // owned, zero-terminated; null when the tag has none
    _GRECT bounds = {0, 0, 0, 0};
    _GRGBA textColor = {0, 0, 0, 0};
    uint16_t textLength = 0;
    uint16_t maxLength = 0;
    uint16_t fontId = 0;
    uint16_t fontHeight = 0;
    int password = 0;
    int hasText = 0;
    int wordWrap = 0;
    int border = 0;
    uint16_t leftMargin = 0;
    uint16_t rightMargin = 0;
    uint16_t indent = 0;
    uint16_t leading = 0;
    uint8_t align = 0;

    using BChar::GetBoundingBox;

    ~BEditText() override;
    int LoadSWFFile(void* tag, GDictionary* dict) override;
    void Rendering(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict) override;
    _GRECT GetBoundingBox(GMatrix* m) override;

    // Turns &lt; &gt; &amp; &apos; &quot; into their characters, in place, in
    // one pass.
    static void ConvertESC(char* text);
    // 1 when every character of `entity` equals `text` at the same place.
    static int Comp(const char* text, const char* entity);
    // Words 8 to 15: the field's box under `matrix` and the view, and its
    // part inside the stage's current clip box, in output pixels.
    void SetTextBox(_GDEVICETEXT*& record, GMatrix& matrix, GStage* stage);
    void DrawBorder(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict);
    void DrawDeviceText(GStage* stage, GActor* actor, GCTRL_INFO* ctx, GDictionary* dict, BFont* font);

    // The HTML reduction: each run of text that a "<" closes becomes one line;
    // mark-up and a final run that no tag closes are dropped. Returns a new
    // zero-terminated block (null when nothing was kept) and the bytes
    // written, terminator included, in `written`; `ok` is false when memory
    // ran out.
    static char* ReduceHtml(const char* html, uint32_t& written, bool& ok);

private:
    void DrawGlyphs(GStage* stage, const GCTRL_INFO& info, GMatrix& matrix, GDictionary* dict, BFont* font);
    // The record for the host, all words zero; null when memory ran out.
    static _GDEVICETEXT* NewRecord();
    static void SendRecord(_GDEVICETEXT* record, GDictionary* dict);
};

#endif
