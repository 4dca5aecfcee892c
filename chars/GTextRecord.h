// The text records of a DefineText or DefineText2: style changes (font,
// colour, position, height) and runs of glyph entries, loaded once by BText
// and walked in file order at every draw.
#ifndef ZEL_CHARS_GTEXTRECORD_H
#define ZEL_CHARS_GTEXTRECORD_H

#include <cstdint>

#include "math/GCxform.h"

class GDictionary;
class GParser;

// For glyph records: GlyphBits in the highest byte, AdvanceBits in the next.
// Style-change readers get a plain truth value in its place: 1 when colours
// carry alpha (DefineText2).
typedef uint32_t GTextRecordInfo;

inline GTextRecordInfo MakeTextRecordInfo(unsigned glyphBits, unsigned advanceBits) {
    return ((glyphBits & 0xFFu) << 24) | ((advanceBits & 0xFFu) << 16);
}

struct GlyphEntry {
    uint16_t glyphIndex = 0;  // index into the font's glyph array
    int16_t advance = 0;      // twips

    GlyphEntry() = default;
    GlyphEntry(unsigned short index, short adv) : glyphIndex(index), advance(adv) {}
    void SetGlyph(unsigned short index, short adv) {
        glyphIndex = index;
        advance = adv;
    }
};

class GTextRecord {
public:
    GTextRecord() = default;
    virtual ~GTextRecord() = default;
    GTextRecord(const GTextRecord&) = delete;
    GTextRecord& operator=(const GTextRecord&) = delete;

    virtual int GetType() const { return 0; }
    // Reads the record's body; the base reads nothing and fails.
    virtual int LoadSWFFile(GParser* p, unsigned char flags, GDictionary* dict, GTextRecordInfo info);
};

class GTextStyleChange : public GTextRecord {
public:
    // -1 marks a value the record does not give, so an explicit offset of -1
    // twip in the file reads as absent; an alpha of 0 marks no colour.
    uint16_t fontId = 0;
    _GRGBA color = {0, 0, 0, 0};
    int32_t xOffset = -1;
    int32_t yOffset = -1;
    int32_t height = -1;

    int GetType() const override { return 0; }
    int LoadSWFFile(GParser* p, unsigned char flags, GDictionary* dict, GTextRecordInfo hasAlpha) override;
};

class GGlyphRecord : public GTextRecord {
public:
    int glyphCount = 0;
    GlyphEntry* entries = nullptr;

    ~GGlyphRecord() override;
    int GetType() const override { return 1; }
    // `count` is the record's glyph count (the byte that introduced it).
    int LoadSWFFile(GParser* p, unsigned char count, GDictionary* dict, GTextRecordInfo info) override;
    int InitRecords(int count);
    void AddGlyph(int index, int advance, int position);
};

#endif
