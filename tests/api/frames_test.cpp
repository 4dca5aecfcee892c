// Everything a host can observe, frame after frame, for the corpus movies
// (every character type, clip layers, morphs, texts, buttons) and the
// bundled sample: the pixels in every format, the update boxes, the frame
// delay and frames left, the device-text records and the error codes, in
// views that turn, move, zoom and transform the movie, and again after a
// rewind with zelEngineReset. Each view's frames
// are hashed and compared with golden_frames.txt, so any change to what a
// movie shows is seen here; ZEL_WRITE_GOLDEN=1 rewrites the file after a
// change that is meant (look at the pictures first).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "api/EngineHost.h"
#include "fixture/Corpus.h"

namespace {

struct View {
    int width, height, format, bytesPerPixel;
    unsigned orientation;
    int originX, originY, multiplier, mode;
    bool transform;
    int bufferX, bufferY;  // output pixel shown at buffer pixel (0, 0)
    uint32_t background;   // 0xAARRGGBB set with zelEngineSetBgColor; 0: the movie's own
};

// Every format once, every orientation, both play modes that repaint only
// the changed parts and the two that repaint everything.
const View kViews[] = {
    {160, 120, ZEL_FORMAT_ARGB32, 4, 0, 0, 0, 1, 0, false, 0, 0, 0},
    {97, 61, ZEL_FORMAT_RGB565, 2, 1, 7, 5, 1, 2, false, 0, 0, 0},
    {120, 160, ZEL_FORMAT_RGB24, 3, 2, 0, 0, 1, 0, true, 0, 0, 0},
    {64, 64, ZEL_FORMAT_BGR24, 3, 3, -3, 4, 2, -1, false, 0, 0, 0},
    {80, 60, ZEL_FORMAT_RGB555, 2, 0, 0, 0, 1, 0, true, 0, 0, 0xFF20C040},
    {70, 50, ZEL_FORMAT_RGB444, 2, 1, 0, 0, 1, 1, false, 0, 0, 0},
    {90, 70, ZEL_FORMAT_BGR565, 2, 2, 0, 0, 1, 0, false, 12, 9, 0x80FF0000},
    {50, 40, ZEL_FORMAT_BGR24B, 3, 0, 0, 0, 3, 0, false, 20, 10, 0},
};

class Hash {
public:
    void Add(const void* data, size_t size) {
        const auto* p = static_cast<const uint8_t*>(data);
        for (size_t i = 0; i < size; ++i) value_ = (value_ ^ p[i]) * 16777619u;
    }
    void Add(int v) { Add(&v, sizeof v); }
    void Add(double v) { Add(&v, sizeof v); }
    uint32_t value() const { return value_; }

private:
    uint32_t value_ = 2166136261u;
};

Hash* textHash = nullptr;

void HashText(_GDEVICETEXT* r, unsigned) {
    textHash->Add(r->kind);
    for (int v : r->box) textHash->Add(v);
    for (int v : r->visible) textHash->Add(v);
    if (r->kind != 0) return;
    textHash->Add(r->text, std::strlen(r->text));
    textHash->Add(r->fontName, std::strlen(r->fontName));
    for (int v : {r->size, int(r->color), r->italic, r->bold, r->wordWrap, r->align}) textHash->Add(v);
}

// One hash per frame of the movie in the view.
std::vector<uint32_t> FrameHashes(const swf::Bytes& movie, const View& v) {
    host::Engine e(movie);
    if (!e) return {};
    const double turn[6] = {0.7, 0.3, 5, -0.3, 0.7, 9};
    if (v.transform) zelEngineSetTransform(e.get(), turn);
    zelEngineFlipCanvas(e.get(), v.orientation);
    zelEngineSetOrg(e.get(), v.originX, v.originY);
    zelEngineSetTextDraw(e.get(), HashText, 0);
    if (v.background) {
        const uint32_t c = v.background;
        zelEngineSetBgColor(e.get(), int(c >> 16 & 255), int(c >> 8 & 255), int(c & 255), int(c >> 24));
    }
    const int stride = v.width * v.bytesPerPixel + 5;
    std::vector<uint8_t> pixels(size_t(stride) * v.height, 0x5A);
    _GOFFSCR buffer{v.bufferX, v.bufferY, v.width, v.height, v.format, reinterpret_cast<intptr_t>(pixels.data()),
                    stride};
    std::vector<uint32_t> hashes;
    // Damage can declare up to 65535 frames; a dozen show what it does.
    const int frames = std::min(zelEngineGetInt(e.get(), 1), 12);
    // Every frame and one past the end, then zelEngineReset and the first
    // two frames again.
    for (int f = 0; f <= frames + std::min(frames, 2); ++f) {
        if (f == frames + 1) zelEngineReset(e.get());
        Hash h;
        textHash = &h;
        h.Add(zelEngineForward(e.get(), 1, v.width, v.height, v.multiplier));
        for (int full : {0, 1}) {
            for (const _GRECT& r : e.Boxes(full)) h.Add(r.left), h.Add(r.top), h.Add(r.right), h.Add(r.bottom);
        }
        if (f == 0) {
            // A buffer of no width gets nothing, and the first drawing
            // stays a full repaint.
            _GOFFSCR none = buffer;
            none.width = 0;
            zelEnginePlay(e.get(), &none, 0, 0, v.width, v.height, v.mode);
        }
        h.Add(zelEnginePlay(e.get(), &buffer, 0, 0, v.width, v.height, v.mode));
        h.Add(pixels.data(), pixels.size());
        for (unsigned code : e.Errors()) h.Add(int(code));
        hashes.push_back(h.value());
    }
    textHash = nullptr;
    return hashes;
}

std::vector<corpus::Entry> Movies() {
    std::vector<corpus::Entry> movies = corpus::All();
    std::ifstream sample(SAMPLE_PATH, std::ios::binary);
    movies.push_back({"sample", 0, swf::Bytes(std::istreambuf_iterator<char>(sample), {})});
    return movies;
}

// Damaged copies of a movie: cut short at evenly spread lengths, and with
// one byte set to 0x00, 0xFF or 0x80 at spread positions. What the engine
// makes of them (pictures, boxes, error codes) is pinned like the rest, one
// hash per copy.
std::vector<swf::Bytes> Damaged(const swf::Bytes& movie) {
    std::vector<swf::Bytes> out;
    const size_t n = movie.size();
    for (size_t k = 1; k <= 6; ++k) out.emplace_back(movie.begin(), movie.begin() + long(n * k / 7));
    uint32_t state = 12345;
    for (int k = 0; k < 24; ++k) {
        state = state * 1103515245u + 12345u;
        out.push_back(movie);
        out.back()[8 + (state >> 8) % (n - 8)] = k % 3 == 0 ? 0x00 : k % 3 == 1 ? 0xFF : 0x80;
    }
    return out;
}

std::string Line(const std::string& name, size_t view, const std::vector<uint32_t>& hashes) {
    std::string line = name + " " + std::to_string(view);
    char hex[12];
    for (uint32_t h : hashes) std::snprintf(hex, sizeof hex, " %08x", h), line += hex;
    return line;
}

TEST(Frames, EveryViewOfEveryMovieShowsWhatItShowedBefore) {
    std::map<std::string, std::string> golden;
    {
        std::ifstream in(GOLDEN_FRAMES);
        for (std::string line; std::getline(in, line);) golden[line.substr(0, line.find(' ', line.find(' ') + 1))] = line;
    }
    const bool write = std::getenv("ZEL_WRITE_GOLDEN") != nullptr;
    std::ostringstream out;
    auto check = [&](const std::string& name, size_t v, const std::vector<uint32_t>& hashes) {
        const std::string line = Line(name, v, hashes);
        out << line << "\n";
        if (!write) {
            EXPECT_EQ(line, golden[name + " " + std::to_string(v)]);
        }
    };
    for (const corpus::Entry& m : Movies()) {
        for (size_t v = 0; v < std::size(kViews); ++v) check(m.name, v, FrameHashes(m.movie, kViews[v]));
        std::vector<uint32_t> damaged;
        for (const swf::Bytes& d : Damaged(m.movie)) {
            Hash h;
            for (uint32_t frame : FrameHashes(d, kViews[0])) h.Add(int(frame));
            damaged.push_back(h.value());
        }
        check(m.name + "~damaged", 0, damaged);
    }
    if (write) std::ofstream(GOLDEN_FRAMES) << out.str();
}

}  // namespace
