// Readers of the two kinds of text record. Each reads its body from the tag's
// parser and reports failure through the parser's sticky error flag.
#include "chars/GTextRecord.h"

#include "base/Memory.h"
#include "parse/GParser.h"

int GTextRecord::LoadSWFFile(GParser*, unsigned char, GDictionary*, GTextRecordInfo) { return 0; }

int GTextStyleChange::LoadSWFFile(GParser* p, unsigned char flags, GDictionary*, GTextRecordInfo hasAlpha) {
    if (flags & 0x08) fontId = static_cast<uint16_t>(p->ScanUI16());
    if (flags & 0x04) {
        color.red = static_cast<uint8_t>(p->ScanUI8());
        color.green = static_cast<uint8_t>(p->ScanUI8());
        color.blue = static_cast<uint8_t>(p->ScanUI8());
        color.alpha = hasAlpha ? static_cast<uint8_t>(p->ScanUI8()) : 0xFF;
    }
    if (flags & 0x01) xOffset = static_cast<int16_t>(p->ScanUI16());
    if (flags & 0x02) yOffset = static_cast<int16_t>(p->ScanUI16());
    if (flags & 0x08) height = static_cast<int32_t>(p->ScanUI16());
    return p->error ? 0 : 1;
}

GGlyphRecord::~GGlyphRecord() { tovFree(entries); }

int GGlyphRecord::InitRecords(int count) {
    tovFree(entries);
    glyphCount = 0;
    entries = static_cast<GlyphEntry*>(tovMalloc(sizeof(GlyphEntry) * static_cast<size_t>(count > 0 ? count : 1)));
    if (!entries) return 0;
    glyphCount = count;
    return 1;
}

void GGlyphRecord::AddGlyph(int index, int advance, int position) {
    if (position < 0 || position >= glyphCount) return;
    entries[position].SetGlyph(static_cast<unsigned short>(index), static_cast<short>(advance));
}

int GGlyphRecord::LoadSWFFile(GParser* p, unsigned char count, GDictionary*, GTextRecordInfo info) {
    if (!InitRecords(count)) return 0;
    const int glyphBits = static_cast<int>(info >> 24);
    const int advanceBits = static_cast<int>((info >> 16) & 0xFF);
    p->Align();
    for (int i = 0; i < glyphCount; ++i) {
        int index = static_cast<int>(p->ParseUI32(glyphBits));
        int advance = p->ParseSI32(advanceBits);
        AddGlyph(index, advance, i);
    }
    return p->error ? 0 : 1;
}
