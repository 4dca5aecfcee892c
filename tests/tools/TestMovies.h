// Movies for the zelplay tests, authored with the fixture builder: a frame
// of 100 x 80 pixels with one rectangle, optionally moving, plus variants
// that carry tags the engine does not play.
#ifndef ZEL_TESTS_TOOLS_TESTMOVIES_H
#define ZEL_TESTS_TOOLS_TESTMOVIES_H

#include <zlib.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "fixture/SwfBuilder.h"

namespace movies {

constexpr int kWidth = 100, kHeight = 80;  // pixels
constexpr swf::Rgba kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255};

struct RectMovie {
    int frames = 1;
    int left = 20, top = 10, right = 60, bottom = 50;  // pixels, frame 1
    int stepX = 0;                                     // pixels moved per frame
    swf::Rgba fill = kRed;
    bool background = true;  // SetBackgroundColor blue
    int originX = 0, originY = 0;  // pixels: the frame rectangle's top-left corner
    std::vector<swf::Bytes> extraTags;

    swf::Bytes Build() const {
        swf::Movie m;
        m.frame = {originX * 20, (originX + kWidth) * 20, originY * 20, (originY + kHeight) * 20, 0};
        if (background) m.tags.Add(swf::SetBackgroundColor(kBlue));
        swf::Shape s({swf::Fill::Solid(fill)});
        s.Fill1(1).MoveTo(0, 0).LineTo((right - left) * 20, 0).LineTo((right - left) * 20, (bottom - top) * 20)
            .LineTo(0, (bottom - top) * 20).LineTo(0, 0);
        m.tags.Add(swf::DefineShape(1, {0, (right - left) * 20, 0, (bottom - top) * 20}, s, 3));
        for (const swf::Bytes& t : extraTags) m.tags.Add(t);
        for (int f = 0; f < frames; ++f) {
            swf::Place2 p;
            p.depth = 1;
            p.matrix = swf::Matrix::Translate((originX + left + f * stepX) * 20, (originY + top) * 20);
            if (f == 0) {
                p.characterId = 1;
            } else {
                p.move = true;
            }
            m.tags.Add(swf::PlaceObject2(p)).Add(swf::ShowFrame());
        }
        return m.Build();
    }
};

// The same movie as CWS: the body after the 8-byte header deflated.
inline swf::Bytes Compress(const swf::Bytes& fws) {
    uLongf size = compressBound(uLong(fws.size()));
    swf::Bytes out(8 + size);
    if (compress(out.data() + 8, &size, fws.data() + 8, uLong(fws.size() - 8)) != Z_OK) {
        throw std::runtime_error("compress failed");
    }
    std::copy(fws.begin(), fws.begin() + 8, out.begin());
    out[0] = 'C';
    out.resize(8 + size);
    return out;
}

}  // namespace movies

#endif
