// Formats the movie facts (header, tag and definition counts, tags the engine
// skips, content it does not play) as aligned text or as one JSON object.
#include "info.h"

#include <string>

namespace {

std::string JsonString(const std::string& s) {
    std::string out = "\"";
    for (unsigned char c : s) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += char(c);
        } else if (c < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", c);
            out += buf;
        } else {
            out += char(c);
        }
    }
    return out + "\"";
}

std::string JsonCounts(const std::map<std::string, unsigned>& counts) {
    std::string out = "{";
    for (const auto& [name, count] : counts) {
        if (out.size() > 1) out += ", ";
        out += JsonString(name) + ": " + std::to_string(count);
    }
    return out + "}";
}

std::string Hex(const uint8_t rgb[3]) {
    char buf[8];
    std::snprintf(buf, sizeof buf, "#%02x%02x%02x", rgb[0], rgb[1], rgb[2]);
    return buf;
}

// Whole pixels the way the engine reports them (truncated toward zero).
int Pixels(int32_t twips) { return int(twips * 0.05); }

const char* YesNo(bool b) { return b ? "yes" : "no"; }
const char* Bool(bool b) { return b ? "true" : "false"; }

void PrintJson(const MovieFile& m, const TagSummary& t, FILE* out) {
    const TwipRect& f = m.frame;
    std::fprintf(out, "{\n");
    std::fprintf(out, "  \"file\": %s,\n", JsonString(m.path).c_str());
    std::fprintf(out, "  \"signature\": \"%s\",\n", m.compressed ? "CWS" : "FWS");
    std::fprintf(out, "  \"compressed\": %s,\n", Bool(m.compressed));
    std::fprintf(out, "  \"version\": %u,\n", m.version);
    std::fprintf(out, "  \"fileSize\": %llu,\n", static_cast<unsigned long long>(m.fileSize));
    std::fprintf(out, "  \"declaredLength\": %u,\n", m.declaredLength);
    std::fprintf(out, "  \"frameTwips\": [%d, %d, %d, %d],\n", f.left, f.top, f.right, f.bottom);
    std::fprintf(out, "  \"width\": %d,\n  \"height\": %d,\n", Pixels(f.right - f.left),
                 Pixels(f.bottom - f.top));
    std::fprintf(out, "  \"frameRate\": %.4g,\n", m.frameRate / 256.0);
    std::fprintf(out, "  \"frameCount\": %u,\n", m.frameCount);
    std::fprintf(out, "  \"showFrames\": %u,\n", t.showFrames);
    std::fprintf(out, "  \"background\": %s,\n",
                 t.hasBackground ? JsonString(Hex(t.background)).c_str() : "null");
    std::fprintf(out, "  \"tags\": %s,\n", JsonCounts(t.tags).c_str());
    std::fprintf(out, "  \"definitions\": %s,\n", JsonCounts(t.definitions).c_str());
    std::fprintf(out, "  \"skippedByEngine\": %s,\n", JsonCounts(t.skipped).c_str());
    std::fprintf(out, "  \"notPlayed\": {\"scripts\": %s, \"sounds\": %s, \"bitmaps\": %s, "
                      "\"video\": %s},\n",
                 Bool(t.hasScripts), Bool(t.hasSounds), Bool(t.hasBitmaps), Bool(t.hasVideo));
    std::fprintf(out, "  \"endTag\": %s\n}\n", Bool(t.endTag));
}

void PrintCounts(const char* title, const std::map<std::string, unsigned>& counts, FILE* out) {
    std::fprintf(out, "%s:%s\n", title, counts.empty() ? " none" : "");
    for (const auto& [name, count] : counts) std::fprintf(out, "  %-28s %u\n", name.c_str(), count);
}

void PrintText(const MovieFile& m, const TagSummary& t, FILE* out) {
    const TwipRect& f = m.frame;
    std::fprintf(out, "file:         %s\n", m.path.c_str());
    std::fprintf(out, "signature:    %s (%s), version %u\n", m.compressed ? "CWS" : "FWS",
                 m.compressed ? "zlib-compressed" : "uncompressed", m.version);
    std::fprintf(out, "size:         %llu bytes on disk, %u bytes declared\n",
                 static_cast<unsigned long long>(m.fileSize), m.declaredLength);
    std::fprintf(out, "frame:        %d x %d pixels (twips %d, %d to %d, %d)\n",
                 Pixels(f.right - f.left), Pixels(f.bottom - f.top), f.left, f.top, f.right,
                 f.bottom);
    std::fprintf(out, "frame rate:   %.4g fps\n", m.frameRate / 256.0);
    std::fprintf(out, "frames:       %u (%u ShowFrame tags)\n", m.frameCount, t.showFrames);
    std::fprintf(out, "background:   %s\n", t.hasBackground ? Hex(t.background).c_str() : "not set");
    PrintCounts("tags (sprite timelines included)", t.tags, out);
    PrintCounts("definitions", t.definitions, out);
    PrintCounts("skipped by the engine", t.skipped, out);
    std::fprintf(out, "not played:   scripts %s, sounds %s, bitmaps %s, video %s\n",
                 YesNo(t.hasScripts), YesNo(t.hasSounds), YesNo(t.hasBitmaps), YesNo(t.hasVideo));
    if (!t.endTag) std::fprintf(out, "note:         the main timeline has no End tag\n");
}

}  // namespace

void PrintInfo(const MovieFile& movie, const TagSummary& tags, bool json, FILE* out) {
    if (json) {
        PrintJson(movie, tags, out);
    } else {
        PrintText(movie, tags, out);
    }
}
