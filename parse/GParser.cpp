// The readers of the SWF records shared by many tags. Each one reads its
// whole record, then tests the scanner's sticky error flag once and, on
// failure, pushes its own code on the movie's error stack and returns 0.
#include "parse/GParser.h"

#include <climits>
#include <new>

#include "chars/GBrush.h"

namespace {

void Push(GError* errors, unsigned code) {
    if (errors) errors->PushError(code);
}

// 16.16 fixed point to double.
double Fixed16(int32_t v) { return static_cast<double>(v) * 0.5 * (1.0 / 32768.0); }

// Compares the zero-terminated `a` with the bytes byteAt(0), byteAt(1), ...
// An empty `a` matches only an empty second string: the comparison stops at
// a's terminator and never reads past it.
template <class ByteAt> int EqualToTerminator(const char* a, ByteAt byteAt) {
    for (size_t i = 0;; ++i) {
        unsigned ca = static_cast<unsigned char>(a[i]);
        if (ca != byteAt(i)) return 0;
        if (ca == 0) return 1;
    }
}

}  // namespace

unsigned GParser::InitTagHead(void* tag, unsigned* totalLength, const void* bufferLimit) {
    *totalLength = 0;
    // Room for a long header; the real end is set once the length is known.
    if (!Init(tag, 6, bufferLimit)) return 0;
    unsigned length = 0;
    unsigned code = ScanTag(length);
    if (error) return 0;
    unsigned header = static_cast<unsigned>(cur - start);
    // A declared length near 4 GiB saturates instead of wrapping into a
    // short tag, so a tag's end never lies before its own header.
    *totalLength = length > UINT_MAX - header ? UINT_MAX : length + header;
    end = start + *totalLength;
    // Without a host bound the tag's own declared end limits the reads.
    if (!bufferLimit) limit = end;
    return code;
}

unsigned GParser::ScanTag(unsigned& length) {
    // The header is sign-extended from 16 bits before the shift, so codes
    // of 512 and above come out as the code plus 0x03FFFC00 and match no
    // handler; kept as the movie loop expects it.
    const uint32_t header = static_cast<uint32_t>(static_cast<int32_t>(static_cast<int16_t>(ScanUI16())));
    uint32_t bodyLength = header & 0x3F;
    if (bodyLength == 0x3F) bodyLength = ScanUI32();
    if (error) return 0;
    length = bodyLength;
    return header >> 6;
}

int GParser::ScanSWFRect(_GRECT& r, GError* errors) {
    Align();
    const int n = static_cast<int>(ParseUI32(5));
    const int32_t xMin = ParseSI32(n);
    const int32_t xMax = ParseSI32(n);
    const int32_t yMin = ParseSI32(n);
    const int32_t yMax = ParseSI32(n);
    if (error) {
        Push(errors, kErrRect);
        return 0;
    }
    r.left = xMin;
    r.right = xMax;
    r.top = yMin;
    r.bottom = yMax;
    return 1;
}

int GParser::ScanSWFMatrix(GMatrix* m, GError* errors) {
    if (!m) return 0;
    Align();
    m->m[0][0] = m->m[1][1] = 1.0;
    m->m[0][1] = m->m[1][0] = 0.0;
    if (ParseUI32(1) == 1) {
        const int n = static_cast<int>(ParseUI32(5));
        m->m[0][0] = Fixed16(ParseSI32(n));
        m->m[1][1] = Fixed16(ParseSI32(n));
    }
    if (ParseUI32(1) == 1) {
        const int n = static_cast<int>(ParseUI32(5));
        m->m[1][0] = Fixed16(ParseSI32(n));
        m->m[0][1] = Fixed16(ParseSI32(n));
    }
    const int n = static_cast<int>(ParseUI32(5));
    m->m[0][2] = ParseSI32(n);
    m->m[1][2] = ParseSI32(n);
    if (error) {
        Push(errors, kErrMatrix);
        return 0;
    }
    return 1;
}

int GParser::ScanColorMatrix(GCxform& cx, int withAlpha, GError* errors) {
    Align();
    const uint32_t head = ParseUI32(6);
    const int n = static_cast<int>(head & 0x0F);
    GCxform read;
    if (head & 0x10) {
        read.redMult = static_cast<int16_t>(ParseSI32(n));
        read.greenMult = static_cast<int16_t>(ParseSI32(n));
        read.blueMult = static_cast<int16_t>(ParseSI32(n));
        if (withAlpha) read.alphaMult = static_cast<int16_t>(ParseSI32(n));
    }
    if (head & 0x20) {
        read.redAdd = static_cast<int16_t>(ParseSI32(n));
        read.greenAdd = static_cast<int16_t>(ParseSI32(n));
        read.blueAdd = static_cast<int16_t>(ParseSI32(n));
        if (withAlpha) read.alphaAdd = static_cast<int16_t>(ParseSI32(n));
    }
    if (error) {
        Push(errors, kErrCxform);
        return 0;
    }
    cx = read;
    return 1;
}

int GParser::ScanRGBAColor(_GRGBA& c, int withAlpha, GError* errors) {
    _GRGBA read;
    read.red = static_cast<uint8_t>(ScanUI8());
    read.green = static_cast<uint8_t>(ScanUI8());
    read.blue = static_cast<uint8_t>(ScanUI8());
    read.alpha = withAlpha ? static_cast<uint8_t>(ScanUI8()) : 0xFF;
    if (error) {
        Push(errors, kErrColor);
        return 0;
    }
    c = read;
    return 1;
}

int GParser::ScanGradient(_GGRADIENT& g, int withAlpha, GError* errors) {
    g.ratio = ScanUI8();
    if (!ScanRGBAColor(g.color, withAlpha, errors)) {
        Push(errors, kErrGradient);
        return 0;
    }
    return 1;
}

int GParser::ScanTwipPoint(_TWIPPOINT& p, GError* errors) {
    const int n = static_cast<int>(ParseUI32(5));
    p.x = ParseSI32(n);
    p.y = ParseSI32(n);
    if (error) {
        Push(errors, kErrTwipPoint);
        return 0;
    }
    return 1;
}

// Both style-array readers start an empty array with a placeholder at
// position 0, so that SWF's 1-based style indices index the array directly
// and index 0 means "no style".
int GParser::ScanBrushArray(GPointPoolArray<void>& brushes, GDictionary* dictionary, int shapeKind, int) {
    if (!dictionary) return 0;
    if (brushes.GetCount() == 0 && !brushes.Add(nullptr)) return 0;
    unsigned count = ScanUI8();
    if (count == 0xFF) count = ScanUI16();
    if (error) return 0;
    ReserveEntries(brushes, count, 1);
    for (unsigned i = 0; i < count; ++i) {
        // Once the data has run out every further style would be a null
        // entry read from nothing; stop rather than grow the array with them
        // (the caller sees the error flag at its next check).
        if (error) break;
        void* brush = GBrush::ScanSWFBrush(this, dictionary, shapeKind);
        if (!brushes.Add(brush)) {
            tovFree(brush);
            return 0;
        }
    }
    return 1;
}

int GParser::ScanPenArray(GDataArray<_GSWFPEN>& pens, int withAlpha, GError* errors, int) {
    if (pens.GetCount() == 0) {
        const _GSWFPEN none = {0.0, {0, 0, 0, 0}};
        if (!pens.Add(none)) {
            Push(errors, kErrPenArray);
            return 0;
        }
    }
    unsigned count = ScanUI8();
    if (count == 0xFF) count = ScanUI16();
    // An unreadable count fails the array like an unreadable style does.
    if (error) {
        Push(errors, kErrPenArray);
        return 0;
    }
    ReserveEntries(pens, count, 5); // a width and a colour
    for (unsigned i = 0; i < count; ++i) {
        _GSWFPEN pen;
        pen.width = ScanUI16() * 0.05;
        if (!ScanRGBAColor(pen.color, withAlpha, errors) || !pens.Add(pen)) {
            Push(errors, kErrPenArray);
            return 0;
        }
    }
    return 1;
}

int GParser::LoadCtrlPlace(unsigned totalLength, GCTRL_INFO* info, GError* errors) {
    info->characterId = static_cast<uint16_t>(ScanUI16());
    info->depth = static_cast<uint16_t>(ScanUI16());
    info->matrix = new (std::nothrow) GMatrix;
    if (!ScanSWFMatrix(info->matrix, errors)) {
        Push(errors, kErrPlaceObject);
        return 0;
    }
    // The colour transform is optional: present only when bytes remain.
    if (static_cast<unsigned>(GetPosition()) >= totalLength) return 1;
    info->cxform = new (std::nothrow) GCxform;
    if (!info->cxform || !ScanColorMatrix(*info->cxform, 0, errors)) {
        Push(errors, kErrPlaceObject);
        return 0;
    }
    return 1;
}

int GParser::LoadCtrlPlace2(unsigned, GCTRL_INFO* info, GError* errors) {
    const uint8_t flags = static_cast<uint8_t>(ScanUI8());
    info->placeFlags = flags;
    info->depth = static_cast<uint16_t>(ScanUI16());
    if (flags & kPlaceHasCharacter) info->characterId = static_cast<uint16_t>(ScanUI16());
    if (flags & kPlaceHasMatrix) {
        info->matrix = new (std::nothrow) GMatrix;
        if (!info->matrix) {
            Push(errors, kErrPlaceObject2);
            return 0;
        }
        ScanSWFMatrix(info->matrix, errors);
    }
    if (flags & kPlaceHasCxform) {
        info->cxform = new (std::nothrow) GCxform;
        if (!info->cxform) {
            Push(errors, kErrPlaceObject2);
            return 0;
        }
        ScanColorMatrix(*info->cxform, 1, errors);
    }
    if (flags & kPlaceHasRatio) info->ratio = static_cast<uint16_t>(ScanUI16());
    // The clip depth is read before the name, the reverse of the published
    // record layout; movies are read this way on purpose.
    if (flags & kPlaceHasClipDepth) info->clipDepth = static_cast<uint16_t>(ScanUI16());
    if (flags & kPlaceHasName) ReadString(&info->name);
    // The clip-actions flag (0x80) is ignored.
    if (!error) {
        switch (flags & (kPlaceMove | kPlaceHasCharacter)) {
            case kPlaceHasCharacter: return 1;
            case kPlaceMove: return 2;
            case kPlaceMove | kPlaceHasCharacter: return 3;
            default: break;
        }
    }
    Push(errors, kErrPlaceObject2);
    return 0;
}

int GParser::ReadString(char** out) {
    Align();
    if (!Room(0)) {
        error = 1;
        return -1;
    }
    // Count up to the terminator or to `end`; the byte at `end` itself is
    // taken only when it is the terminator.
    const unsigned char* p = cur;
    while (p < end && Byte(p) != 0) ++p;
    unsigned count = static_cast<unsigned>(p - cur) + (Byte(p) == 0 ? 1 : 0);
    if (count == 0) {
        error = 1;
        return -1;
    }
    char* block = static_cast<char*>(tovMalloc(count));
    if (!block) {
        error = 1;
        return -1;
    }
    for (unsigned i = 0; i < count; ++i) block[i] = static_cast<char>(Byte(cur + i));
    // An unterminated string loses its last byte to the terminator.
    block[count - 1] = 0;
    *out = block;
    cur += count;
    return static_cast<int>(count);
}

void GParser::ReleaseReadString(char** p) {
    if (p && *p) {
        tovFree(*p);
        *p = nullptr;
    }
}

void GParser::ParseFrameLabel() { ScanString(nullptr); }

int GParser::GetLableFrame(void* first, void* last, char* label) {
    if (!label || label[0] == 0 || !first || !last || last < first) return -1;
    GParser tags;
    const unsigned char* from = static_cast<unsigned char*>(first);
    tags.Init(first, static_cast<unsigned>(static_cast<unsigned char*>(last) - from), limit);
    int frame = 0;
    for (;;) {
        unsigned length = 0;
        const unsigned code = tags.ScanTag(length);
        if (tags.error) return -1;
        if (code == 0) return -1;
        if (code == 1) ++frame;
        if (code == 43) {
            const unsigned char* text = tags.cur;
            if (EqualToTerminator(label, [&](size_t i) { return tags.Byte(text + i); })) return frame;
        }
        tags.Skip(length);
        if (tags.error) return -1;
    }
}

int GParser::EquString(const char* a, const char* b) {
    if (!a || !b) return 0;
    return EqualToTerminator(a, [b](size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(b[i])); });
}
