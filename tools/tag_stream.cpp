// Tag stream walker: names every tag code, counts tags and definitions, and
// notes the content the engine does not play (scripts, sounds, bitmaps,
// video). Sprite bodies are walked too, at most kMaxNesting levels deep.
#include "tag_stream.h"

#include <cstring>

namespace {

struct TagRow {
    unsigned code;
    TagKind kind;
};

// Columns: name, definition type, engine reads it, script, sound, bitmap,
// video. The engine reads the codes of its frame loop's table, the tags that
// end frames, and DefineFontInfo (read by the font it follows).
constexpr bool Y = true, N = false;
const TagRow kTags[] = {
    {0, {"End", nullptr, Y, N, N, N, N}},
    {1, {"ShowFrame", nullptr, Y, N, N, N, N}},
    {2, {"DefineShape", "shape", Y, N, N, N, N}},
    {4, {"PlaceObject", nullptr, Y, N, N, N, N}},
    {5, {"RemoveObject", nullptr, Y, N, N, N, N}},
    {6, {"DefineBits", "bitmap", N, N, N, Y, N}},
    {7, {"DefineButton", "button", Y, N, N, N, N}},
    {8, {"JPEGTables", nullptr, N, N, N, Y, N}},
    {9, {"SetBackgroundColor", nullptr, Y, N, N, N, N}},
    {10, {"DefineFont", "font", Y, N, N, N, N}},
    {11, {"DefineText", "text", Y, N, N, N, N}},
    {12, {"DoAction", nullptr, N, Y, N, N, N}},
    {13, {"DefineFontInfo", nullptr, Y, N, N, N, N}},
    {14, {"DefineSound", "sound", N, N, Y, N, N}},
    {15, {"StartSound", nullptr, N, N, Y, N, N}},
    {17, {"DefineButtonSound", nullptr, N, N, Y, N, N}},
    {18, {"SoundStreamHead", nullptr, N, N, Y, N, N}},
    {19, {"SoundStreamBlock", nullptr, N, N, Y, N, N}},
    {20, {"DefineBitsLossless", "bitmap", N, N, N, Y, N}},
    {21, {"DefineBitsJPEG2", "bitmap", N, N, N, Y, N}},
    {22, {"DefineShape2", "shape", Y, N, N, N, N}},
    {23, {"DefineButtonCxform", nullptr, N, N, N, N, N}},
    {24, {"Protect", nullptr, N, N, N, N, N}},
    {26, {"PlaceObject2", nullptr, Y, N, N, N, N}},
    {28, {"RemoveObject2", nullptr, Y, N, N, N, N}},
    {32, {"DefineShape3", "shape", Y, N, N, N, N}},
    {33, {"DefineText2", "text", Y, N, N, N, N}},
    {34, {"DefineButton2", "button", Y, N, N, N, N}},
    {35, {"DefineBitsJPEG3", "bitmap", N, N, N, Y, N}},
    {36, {"DefineBitsLossless2", "bitmap", N, N, N, Y, N}},
    {37, {"DefineEditText", "edit text", Y, N, N, N, N}},
    {39, {"DefineSprite", "sprite", Y, N, N, N, N}},
    {41, {"ProductInfo", nullptr, N, N, N, N, N}},
    {43, {"FrameLabel", nullptr, Y, N, N, N, N}},
    {45, {"SoundStreamHead2", nullptr, N, N, Y, N, N}},
    {46, {"DefineMorphShape", "morph shape", Y, N, N, N, N}},
    {48, {"DefineFont2", "font", Y, N, N, N, N}},
    {56, {"ExportAssets", nullptr, N, N, N, N, N}},
    {57, {"ImportAssets", nullptr, N, N, N, N, N}},
    {58, {"EnableDebugger", nullptr, N, N, N, N, N}},
    {59, {"DoInitAction", nullptr, N, Y, N, N, N}},
    {60, {"DefineVideoStream", "video", N, N, N, N, Y}},
    {61, {"VideoFrame", nullptr, N, N, N, N, Y}},
    {62, {"DefineFontInfo2", nullptr, N, N, N, N, N}},
    {64, {"EnableDebugger2", nullptr, N, N, N, N, N}},
    {65, {"ScriptLimits", nullptr, N, N, N, N, N}},
    {66, {"SetTabIndex", nullptr, N, N, N, N, N}},
    {69, {"FileAttributes", nullptr, N, N, N, N, N}},
    {70, {"PlaceObject3", nullptr, N, N, N, N, N}},
    {71, {"ImportAssets2", nullptr, N, N, N, N, N}},
    {72, {"DoABC", nullptr, N, Y, N, N, N}},
    {73, {"DefineFontAlignZones", nullptr, N, N, N, N, N}},
    {74, {"CSMTextSettings", nullptr, N, N, N, N, N}},
    {75, {"DefineFont3", "font", N, N, N, N, N}},
    {76, {"SymbolClass", nullptr, N, N, N, N, N}},
    {77, {"Metadata", nullptr, N, N, N, N, N}},
    {78, {"DefineScalingGrid", nullptr, N, N, N, N, N}},
    {82, {"DoABC2", nullptr, N, Y, N, N, N}},
    {83, {"DefineShape4", "shape", N, N, N, N, N}},
    {84, {"DefineMorphShape2", "morph shape", N, N, N, N, N}},
    {86, {"DefineSceneAndFrameLabelData", nullptr, N, N, N, N, N}},
    {87, {"DefineBinaryData", "binary data", N, N, N, N, N}},
    {88, {"DefineFontName", nullptr, N, N, N, N, N}},
    {89, {"StartSound2", nullptr, N, N, Y, N, N}},
    {90, {"DefineBitsJPEG4", "bitmap", N, N, N, Y, N}},
    {91, {"DefineFont4", "font", N, N, N, N, N}},
};

constexpr int kMaxNesting = 4;
constexpr unsigned kPlaceObject2 = 26, kPlaceObject3 = 70, kDefineButton2 = 34;
constexpr unsigned kDefineSprite = 39, kSetBackgroundColor = 9;

class Walker {
public:
    Walker(const MovieFile& movie, TagSummary& summary) : d_(movie.data), s_(summary) {}

    // Walks the tags in [pos, end) up to an End tag or the end of the range.
    void Walk(size_t pos, size_t end, int nesting) {
        while (pos < end) {
            if (end - pos < 2) return Truncated(pos);
            const unsigned header = unsigned(d_[pos]) | unsigned(d_[pos + 1]) << 8;
            const unsigned code = header >> 6;
            uint64_t length = header & 0x3F;
            size_t body = pos + 2;
            if (length == 0x3F) {
                if (end - body < 4) return Truncated(pos);
                length = U32(body);
                body += 4;
            }
            if (length > end - body) return Truncated(pos);
            Count(code, body, size_t(length), nesting);
            pos = body + size_t(length);
            if (code == kDefineSprite && length >= 4 && nesting < kMaxNesting) {
                Walk(body + 4, pos, nesting + 1);
            }
            if (code == 0) {
                if (nesting == 0) s_.endTag = true;
                return;
            }
            if (code == 1 && nesting == 0) ++s_.showFrames;
        }
    }

private:
    uint32_t U32(size_t p) const {
        return uint32_t(d_[p]) | uint32_t(d_[p + 1]) << 8 | uint32_t(d_[p + 2]) << 16 |
               uint32_t(d_[p + 3]) << 24;
    }

    void Truncated(size_t pos) {
        if (!s_.truncated) {
            s_.truncated = true;
            s_.truncatedAt = pos;
        }
    }

    void Count(unsigned code, size_t body, size_t length, int nesting) {
        const TagKind kind = DescribeTag(code);
        const std::string name = TagName(code);
        ++s_.tags[name];
        if (kind.definition) ++s_.definitions[kind.definition];
        if (!kind.engineReads) ++s_.skipped[name];
        s_.hasScripts |= kind.script || CarriesActions(code, body, length);
        s_.hasSounds |= kind.sound;
        s_.hasBitmaps |= kind.bitmap;
        s_.hasVideo |= kind.video;
        if (code == kSetBackgroundColor && nesting == 0 && !s_.hasBackground && length >= 3) {
            s_.hasBackground = true;
            std::memcpy(s_.background, &d_[body], 3);
        }
    }

    // Scripts hidden inside otherwise drawable tags: clip actions on a
    // placement, and a DefineButton2 whose action offset is set.
    bool CarriesActions(unsigned code, size_t body, size_t length) const {
        if ((code == kPlaceObject2 || code == kPlaceObject3) && length >= 1) {
            return (d_[body] & 0x80) != 0;
        }
        if (code == kDefineButton2 && length >= 5) {
            return (d_[body + 3] | d_[body + 4]) != 0;
        }
        return false;
    }

    const std::vector<uint8_t>& d_;
    TagSummary& s_;
};

}  // namespace

TagKind DescribeTag(unsigned code) {
    for (const TagRow& row : kTags) {
        if (row.code == code) return row.kind;
    }
    return {nullptr, nullptr, false, false, false, false, false};
}

std::string TagName(unsigned code) {
    const TagKind kind = DescribeTag(code);
    return kind.name ? kind.name : "Tag" + std::to_string(code);
}

TagSummary ScanTags(const MovieFile& movie) {
    TagSummary summary;
    Walker(movie, summary).Walk(movie.firstTag, movie.data.size(), 0);
    return summary;
}
