// Test support for fonts and text inside whole movies, driven through the
// movie object itself (so the sanitizers see the engine's reads): a movie
// of definition tags with one character placed at depth 1, played for one
// frame into an ARGB buffer, with an optional host text callback.
#ifndef ZEL_TESTS_CHARS_TEXTMOVIE_H
#define ZEL_TESTS_CHARS_TEXTMOVIE_H

#include <cstdint>
#include <memory>
#include <vector>

#include "engine/GFile.h"
#include "fixture/SwfText.h"

namespace textmovie {

// The definitions, a placement of `id` at depth 1 and one frame, in a
// 200 x 100 pixel movie.
inline swf::Bytes Movie(const std::vector<swf::Bytes>& defs, uint16_t id) {
    swf::Movie m;
    m.frame = swf::Rect{0, 4000, 0, 2000, 0};
    for (const swf::Bytes& d : defs) m.tags.Add(d);
    swf::Place2 p;
    p.depth = 1;
    p.characterId = id;
    p.matrix = swf::Matrix::Translate(0, 400);
    m.tags.Add(swf::PlaceObject2(p));
    m.tags.Add(swf::ShowFrame());
    return m.Build();
}

// Plays one frame of `movie` (copied into an exact-size block, so a read
// past its end is seen) into a 200 x 100 buffer; returns the pixels.
inline std::vector<uint32_t> Play(const swf::Bytes& movie, ZelTextDrawProc proc = nullptr, unsigned user = 0) {
    std::unique_ptr<unsigned char[]> bytes(new unsigned char[movie.size()]);
    std::copy(movie.begin(), movie.end(), bytes.get());
    std::vector<uint32_t> pixels(200 * 100, 0);
    GFile file(bytes.get(), static_cast<unsigned>(movie.size()));
    file.SetTextDraw(proc, user);
    file.Forward(1, 200, 100, 1);
    _GOFFSCR off = {0, 0, 200, 100, 280, reinterpret_cast<intptr_t>(pixels.data()), 0};
    file.stage.Raster(&off, 0, 0, 200, 100, 1, &file.dictionary);
    return pixels;
}

// Damaged copies of a tag whose headers match their bodies, so that the
// rest of the movie still parses: the body cut after every byte, then each
// body byte replaced as swf::Mutations does.
inline std::vector<swf::Bytes> BodyMutations(const swf::Bytes& tag) {
    const uint16_t code = static_cast<uint16_t>((tag[0] | (tag[1] << 8)) >> 6);
    const swf::Bytes body = swf::TagBody(tag);
    std::vector<swf::Bytes> out;
    for (const swf::Bytes& b : swf::Mutations(body)) out.push_back(swf::Tag(code, b));
    return out;
}

}  // namespace textmovie

#endif
