// BFont: loading of DefineFont (with the DefineFontInfo that directly follows
// it) and DefineFont2, and the by-code lookups that edit text uses. Glyph
// shapes point into the movie buffer; every length is bounded by the tag.
#include "chars/BFont.h"

#include <algorithm>
#include <new>

#include "base/Memory.h"
#include "display/GDictionary.h"
#include "parse/GParser.h"

namespace {

constexpr unsigned kTagDefineFont = 10;
constexpr unsigned kTagDefineFontInfo = 13;
constexpr unsigned kTagDefineFont2 = 48;
// A glyph measured by scanning is never taken as longer than this.
constexpr unsigned kGlyphScanLimit = 65535;

void PushError(GDictionary* dict, unsigned code) {
    if (dict && dict->error) dict->error->PushError(code);
}

// The next whole byte of the parser: a partly read byte counts as read.
unsigned char* NextByte(const GParser* p) { return p->cur + (p->bitPos != 0 ? 1 : 0); }

// Bytes from `at` to the end of the parser's range (0 when at or past it).
uint32_t BytesLeft(const GParser* p, const unsigned char* at) {
    uintptr_t a = reinterpret_cast<uintptr_t>(at);
    uintptr_t e = reinterpret_cast<uintptr_t>(p->end);
    return e > a ? static_cast<uint32_t>(e - a) : 0;
}

// Moves the reader to `position` bytes from the start of the tag; a position
// outside the tag sets the error flag instead.
void SeekTo(GParser* p, uint64_t position) {
    uintptr_t span = reinterpret_cast<uintptr_t>(p->end) - reinterpret_cast<uintptr_t>(p->start);
    if (position > span) {
        p->error = 1;
        return;
    }
    p->cur = p->start + position;
    p->bitPos = 0;
}

template <class T> T* AllocArray(uint32_t count) {
    return static_cast<T*>(tovMalloc(sizeof(T) * (count ? count : 1)));
}

}  // namespace

BFont::~BFont() {
    FreeGlyphs();
    FreeFontInfo();
    tovFree(advances);
    tovFree(kerning);
    tovFree(kerningIndex);
}

void BFont::FreeGlyphs() {
    if (glyphs) {
        for (uint32_t i = 0; i < glyphCount; ++i) DeleteShapes(glyphs[i], 1);
        tovFree(glyphs);
    }
    glyphs = nullptr;
    glyphCount = 0;
}

void BFont::FreeFontInfo() {
    tovFree(codes);
    tovFree(name);
    codes = nullptr;
    name = nullptr;
    nameLength = 0;
}

int BFont::LoadSWFFile(void* tag, GDictionary* dict) {
    if (!tag || !dict) return 0;
    GParser p;
    unsigned total = 0;
    unsigned code = p.InitTagHead(tag, &total, dict->movieEnd);
    if (code == kTagDefineFont) return LoadFontSWFFile(&p, dict, total);
    return LoadFont2SWFFile(&p, dict, total);
}

// A glyph shape over the next `length` bytes (cut to what the tag holds),
// which the parser then skips. Glyphs carry no styles of their own.
_GSHAPE* BFont::NewGlyph(GParser* p, uint32_t length, uint32_t version, GDictionary* dict) {
    _GSHAPE* glyph = new (std::nothrow) _GSHAPE;
    if (!glyph) return nullptr;
    glyph->records = NextByte(p);
    uint32_t left = BytesLeft(p, glyph->records);
    glyph->recordsLength = length < left ? length : left;
    glyph->version = version;
    glyph->limit = dict->movieEnd;
    p->Skip(length);
    return glyph;
}

unsigned char* BFont::MeasureGlyph(const unsigned char* glyph, const unsigned char* end, GDictionary* dict) {
    uintptr_t room = reinterpret_cast<uintptr_t>(end) - reinterpret_cast<uintptr_t>(glyph);
    unsigned length = room < kGlyphScanLimit ? static_cast<unsigned>(room) : kGlyphScanLimit;
    GParser p;
    p.Init(glyph, length, dict ? dict->movieEnd : nullptr);
    _GSHAPESTATUS status = {};
    status.fillBits = static_cast<int>(p.ParseUI32(4));
    status.lineBits = static_cast<int>(p.ParseUI32(4));
    _GSWFSHAPEVERSIONINFO info = GShapeParser::GetVersionInfo(kTagDefineFont);
    GDataArray<_GSWFPEN> pens(10);
    GPointPoolArray<void> brushes(10);
    _GPOINT point = {0, 0};
    _TWIPPOINT position = {0, 0};
    _GPOINT out[2];
    int isCurve = 0;
    unsigned flags = GShapeParser::ScanFlag(&p);
    for (;;) {
        int next = GShapeParser::ScanStyles(&p, flags, status, dict, pens, brushes, info);
        if (next <= 0) break;
        flags = GShapeParser::ScanLine(&p, static_cast<unsigned>(next), point, position, out, isCurve);
    }
    return NextByte(&p);
}

unsigned char* BFont::GetGlyphLenth(void* glyph, GDictionary* dict) {
    const unsigned char* start = static_cast<const unsigned char*>(glyph);
    if (!start) return nullptr;
    // The scan is bounded by the host buffer when it is known, else by the
    // fixed glyph limit.
    const unsigned char* end = dict && dict->movieEnd ? dict->movieEnd : nullptr;
    if (!end || reinterpret_cast<uintptr_t>(end) < reinterpret_cast<uintptr_t>(start))
        end = reinterpret_cast<const unsigned char*>(reinterpret_cast<uintptr_t>(start) + kGlyphScanLimit);
    return MeasureGlyph(start, end, dict);
}

int BFont::LoadFontSWFFile(GParser* p, GDictionary* dict, unsigned tagEnd) {
    p->ScanUI16();
    int32_t position = p->GetPosition();
    uint32_t tableSize = tagEnd > static_cast<uint32_t>(position) ? tagEnd - static_cast<uint32_t>(position) : 0;

    unsigned first = p->ScanUI16();
    if (first == 0) {
        PushError(dict, kErrFont);
        return 0;
    }
    uint32_t count = first / 2;
    uint32_t* offsets = AllocArray<uint32_t>(count + 1);
    glyphs = AllocArray<_GSHAPE*>(count);
    if (!offsets || !glyphs) {
        tovFree(offsets);
        tovFree(glyphs);
        glyphs = nullptr;
        PushError(dict, kErrFont);
        return 0;
    }
    tovMemSet(glyphs, 0, sizeof(_GSHAPE*) * (count ? count : 1));
    glyphCount = count;

    // Offsets must not go down. From the first one that does, the lengths
    // cannot be trusted and those glyphs are measured by scanning instead.
    offsets[0] = first;
    uint32_t trusted = count;
    for (uint32_t i = 1; i < count; ++i) {
        offsets[i] = p->ScanUI16();
        if (offsets[i] < offsets[i - 1]) {
            p->Skip(2 * (count - 1 - i));
            trusted = i - 1;
            break;
        }
    }
    offsets[count] = tableSize;

    for (uint32_t i = 0; i < count; ++i) {
        uint32_t length;
        if (i < trusted) {
            length = offsets[i + 1] > offsets[i] ? offsets[i + 1] - offsets[i] : 0;
        } else {
            unsigned char* records = NextByte(p);
            length = BytesLeft(p, records) ? static_cast<uint32_t>(MeasureGlyph(records, p->end, dict) - records) : 0;
        }
        glyphs[i] = NewGlyph(p, length, kTagDefineFont, dict);
        if (!glyphs[i]) {
            tovFree(offsets);
            FreeGlyphs();
            PushError(dict, kErrFont);
            return 0;
        }
    }
    tovFree(offsets);

    // The only way a DefineFont gets its code table: a DefineFontInfo tag
    // placed directly after it in the movie. One anywhere else is ignored.
    const unsigned char* next = p->end;
    if (dict->movieEnd && reinterpret_cast<uintptr_t>(next) < reinterpret_cast<uintptr_t>(dict->movieEnd)) {
        GParser info;
        unsigned infoTotal = 0;
        if (info.InitTagHead(const_cast<unsigned char*>(next), &infoTotal, dict->movieEnd) == kTagDefineFontInfo)
            LoadFontInfoSWFFile(&info, dict, infoTotal);
    }
    return 1;
}

int BFont::LoadFont2SWFFile(GParser* p, GDictionary* dict, unsigned) {
    p->ScanUI16();
    unsigned flags = p->ScanUI8();
    p->ScanUI8();  // language code
    bold = (flags & 0x01) ? 1 : 0;
    italic = (flags & 0x02) ? 1 : 0;
    const bool wideOffsets = (flags & 0x08) != 0;
    const bool wideCodeTable = (flags & 0x04) != 0;
    const bool hasLayout = (flags & 0x80) != 0;

    nameLength = static_cast<uint16_t>(p->ScanUI8());
    name = static_cast<char*>(tovMalloc(nameLength + 1u));
    if (!name) {
        PushError(dict, kErrFont2);
        return 0;
    }
    tovMemSet(name, 0, nameLength + 1u);
    if (nameLength) p->ScanBlock(name, nameLength);

    uint32_t count = p->ScanUI16();
    if (p->error) {
        PushError(dict, kErrFont2);
        return 0;
    }
    if (count == 0) return 1;

    const uint64_t tableStart = static_cast<uint64_t>(p->GetPosition());
    uint32_t* offsets = AllocArray<uint32_t>(count + 1);
    glyphs = AllocArray<_GSHAPE*>(count);
    codes = AllocArray<uint16_t>(count);
    if (hasLayout) advances = AllocArray<int16_t>(count);
    bool ok = offsets && glyphs && codes && (!hasLayout || advances);
    if (glyphs) {
        tovMemSet(glyphs, 0, sizeof(_GSHAPE*) * count);
        glyphCount = count;
    }

    for (uint32_t i = 0; ok && i <= count; ++i) {
        offsets[i] = wideOffsets ? p->ScanUI32() : p->ScanUI16();
        if (i > 0 && offsets[i] <= offsets[i - 1]) ok = false;
    }
    ok = ok && !p->error;
    if (ok) {
        SeekTo(p, tableStart + offsets[0]);
        for (uint32_t i = 0; i < count; ++i) {
            glyphs[i] = NewGlyph(p, offsets[i + 1] - offsets[i], kTagDefineFont2, dict);
            if (!glyphs[i]) {
                ok = false;
                break;
            }
        }
    }
    if (ok) {
        wideCodes = wideCodeTable ? 1 : 0;
        for (uint32_t i = 0; i < count; ++i)
            codes[i] = static_cast<uint16_t>(wideCodeTable ? p->ScanUI16() : p->ScanUI8());
    }
    if (ok && hasLayout) {
        p->ScanUI16();  // ascent
        p->ScanUI16();  // descent
        p->ScanUI16();  // leading
        for (uint32_t i = 0; i < count; ++i) advances[i] = static_cast<int16_t>(p->ScanUI16());
        // Glyph bounds are read only to reach the kerning table. One that
        // cannot be read ends the load as a success without kerning.
        GError boundsErrors;
        for (uint32_t i = 0; i < count; ++i) {
            _GRECT bounds;
            if (!p->ScanSWFRect(bounds, &boundsErrors)) {
                tovFree(offsets);
                return 1;
            }
        }
        kerningCount = static_cast<uint16_t>(p->ScanUI16());
        if (kerningCount) {
            kerning = AllocArray<_GKERNINGRECORD>(kerningCount);
            ok = kerning != nullptr;
            for (uint32_t i = 0; ok && i < kerningCount && !p->error; ++i) {
                kerning[i].code1 = static_cast<uint16_t>(wideCodeTable ? p->ScanUI16() : p->ScanUI8());
                kerning[i].code2 = static_cast<uint16_t>(wideCodeTable ? p->ScanUI16() : p->ScanUI8());
                kerning[i].adjustment = static_cast<int16_t>(p->ScanUI16());
            }
        }
    }
    tovFree(offsets);
    if (ok && !p->error) return 1;

    // The kerning table is cleared with its pointer so that the destructor
    // does not free it twice; codes, advances and name stay until then.
    PushError(dict, kErrFont2);
    tovFree(kerning);
    kerning = nullptr;
    kerningCount = 0;
    FreeGlyphs();
    return 0;
}

int BFont::LoadFontInfoSWFFile(GParser* p, GDictionary* dict, unsigned) {
    p->ScanUI16();
    FreeFontInfo();
    nameLength = static_cast<uint16_t>(p->ScanUI8());
    name = static_cast<char*>(tovMalloc(nameLength + 1u));
    if (name) {
        tovMemSet(name, 0, nameLength + 1u);
        if (nameLength) p->ScanBlock(name, nameLength);
    }
    unsigned flags = p->ScanUI8();
    // The byte after the flags is always skipped: the code table starts
    // after it in every DefineFontInfo this engine reads.
    p->ScanUI8();
    bold = (flags & 0x02) ? 1 : 0;
    italic = (flags & 0x04) ? 1 : 0;
    wideCodes = (flags & 0x01) ? 1 : 0;
    codes = AllocArray<uint16_t>(glyphCount);
    if (name && codes) {
        for (uint32_t i = 0; i < glyphCount && !p->error; ++i)
            codes[i] = static_cast<uint16_t>(wideCodes ? p->ScanUI16() : p->ScanUI8());
        if (!p->error) return 1;
    }
    PushError(dict, kErrFont2);
    FreeFontInfo();
    return 0;
}

void BFont::IndexCodes() {
    if (indexed && indexedCodes == codes && indexedKerning == kerning) return;
    indexed = true;
    indexedCodes = codes;
    indexedKerning = kerning;
    for (int32_t& g : firstGlyph) g = -1;
    for (uint32_t i = glyphCount; codes && i-- > 0;)
        if (codes[i] < 128) firstGlyph[codes[i]] = static_cast<int32_t>(i);
    tovFree(kerningIndex);
    kerningIndexCount = 0;
    kerningIndex = kerning && kerningCount ? static_cast<uint32_t*>(tovMalloc(sizeof(uint32_t) * kerningCount)) : nullptr;
    for (uint32_t i = 0; kerningIndex && i < kerningCount; ++i)
        if (kerning[i].code1 < 128 && kerning[i].code2 < 128)
            kerningIndex[kerningIndexCount++] = (uint32_t(kerning[i].code1) << 7 | kerning[i].code2) << 16 | i;
    // Sorted by pair, then by position, so the first pair in the table wins.
    std::sort(kerningIndex, kerningIndex + kerningIndexCount);
}

_GSHAPE* BFont::GetShapeByCode(int code) {
    if (!codes || !glyphs) return nullptr;
    if (code >= 0 && code < 128) {
        IndexCodes();
        return firstGlyph[code] >= 0 ? glyphs[firstGlyph[code]] : nullptr;
    }
    for (uint32_t i = 0; i < glyphCount; ++i)
        if (codes[i] == code) return glyphs[i];
    return nullptr;
}

int BFont::GetAdvanceByCode(int code) {
    if (!advances || !codes) return 0;
    if (code >= 0 && code < 128) {
        IndexCodes();
        return firstGlyph[code] >= 0 ? advances[firstGlyph[code]] : 0;
    }
    for (uint32_t i = 0; i < glyphCount; ++i)
        if (codes[i] == code) return advances[i];
    return 0;
}

int BFont::GetKerningByCode(int code1, int code2) {
    if (!kerning) return 0;
    if (code1 >= 0 && code1 < 128 && code2 >= 0 && code2 < 128) {
        IndexCodes();
        uint32_t key = (uint32_t(code1) << 7 | uint32_t(code2)) << 16;
        const uint32_t* at = std::lower_bound(kerningIndex, kerningIndex + kerningIndexCount, key);
        return at < kerningIndex + kerningIndexCount && (*at >> 16) == (key >> 16) ? kerning[*at & 0xFFFF].adjustment : 0;
    }
    for (uint32_t i = 0; i < kerningCount; ++i)
        if (kerning[i].code1 == code1 && kerning[i].code2 == code2) return kerning[i].adjustment;
    return 0;
}

int BFont::HasGlyph(const char* text) {
    if (glyphCount == 0 || !codes) return 0;
    if (!text) return 1;
    // Each byte is compared as a signed char, so bytes 0x80..0xFF never
    // match a code. Only codes 0..127 can therefore answer; one pass over the
    // code table keeps the text walk linear.
    bool present[128] = {};
    for (uint32_t i = 0; i < glyphCount; ++i)
        if (codes[i] < 128) present[codes[i]] = true;
    for (const char* t = text; *t; ++t) {
        signed char c = static_cast<signed char>(*t);
        if (c < 0 || !present[static_cast<int>(c)]) return 0;
    }
    return 1;
}

BFont* BFont::Lookup(GDictionary* dict, unsigned short id) {
    if (!dict) return nullptr;
    // Only a font id may be used as one: any other character would be taken
    // for a font, and a sprite id would build a new instance at every call.
    int type = dict->GetType(id);
    if (type != static_cast<int>(kTagDefineFont) && type != static_cast<int>(kTagDefineFont2)) return nullptr;
    return static_cast<BFont*>(dict->NewChar(id));
}
