// BFont: the glyph outlines of a DefineFont or DefineFont2, with the character
// code of each glyph and, for DefineFont2, advances and kerning pairs. Static
// text draws its glyphs by index, edit text looks them up by character code;
// a font never draws by itself.
#ifndef ZEL_CHARS_BFONT_H
#define ZEL_CHARS_BFONT_H

#include <cstdint>

#include "chars/GShapeParser.h"
#include "display/BChar.h"

// One kerning pair: the adjustment (twips) applies between code1 and code2,
// in that order only.
struct _GKERNINGRECORD {
    uint16_t code1;
    uint16_t code2;
    int16_t adjustment;
};

class BFont : public BChar {
public:
    _GSHAPE** glyphs = nullptr;
    uint32_t glyphCount = 0;
    char* name = nullptr;
    uint16_t* codes = nullptr;
    int16_t* advances = nullptr;
    _GKERNINGRECORD* kerning = nullptr;
    uint16_t nameLength = 0;
    uint16_t kerningCount = 0;
    int italic = 0;
    int bold = 0;
    int wideCodes = 0;

    ~BFont() override;
    int LoadSWFFile(void* tag, GDictionary* dict) override;

    // The three tag readers; `tagEnd` is the tag's total length, measured
    // from the first byte of its header like the parser's positions.
    int LoadFontSWFFile(GParser* p, GDictionary* dict, unsigned tagEnd);
    int LoadFont2SWFFile(GParser* p, GDictionary* dict, unsigned tagEnd);
    int LoadFontInfoSWFFile(GParser* p, GDictionary* dict, unsigned tagEnd);
    // Pointer just past one glyph's shape records (name spelled so on purpose).
    static unsigned char* GetGlyphLenth(void* glyph, GDictionary* dict);

    _GSHAPE* GetShapeByCode(int code);
    int GetAdvanceByCode(int code);
    int GetKerningByCode(int code1, int code2);
    // 1 when every byte of the zero-terminated text has a glyph.
    int HasGlyph(const char* text);

    // The font defined under `id`, taking a reference like GDictionary::NewChar;
    // null when the id is undefined, fails to load or is not a font.
    static BFont* Lookup(GDictionary* dict, unsigned short id);

private:
    // Lookups of the codes 0..127, the only ones edit text asks for, built
    // at the first lookup after a load: a few hundred characters against a
    // font of thousands of glyphs or kerning pairs would otherwise scan the
    // font once per character, at every drawing.
    int32_t firstGlyph[128] = {};        // index of the first glyph with the code, -1 none
    uint32_t* kerningIndex = nullptr;    // (code1 << 7 | code2) << 16 | pair index, sorted
    uint32_t kerningIndexCount = 0;
    const uint16_t* indexedCodes = nullptr;
    const _GKERNINGRECORD* indexedKerning = nullptr;
    bool indexed = false;
    void IndexCodes();

    // Scans one glyph's records, never past `end` nor 65535 bytes.
    static unsigned char* MeasureGlyph(const unsigned char* glyph, const unsigned char* end,
                                       GDictionary* dict);
    _GSHAPE* NewGlyph(GParser* p, uint32_t length, uint32_t version, GDictionary* dict);
    void FreeGlyphs();
    // Frees the code table and the name, what a DefineFontInfo provides.
    void FreeFontInfo();
};

#endif
