// Test support for text through the public interface: movies that define a
// font and one text or edit field placed at depth 1, rendered into an ARGB
// buffer, and the colours the probes expect.
#ifndef ZEL_TESTS_API_TEXTSCENES_H
#define ZEL_TESTS_API_TEXTSCENES_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "api/EngineHost.h"
#include "fixture/SwfText.h"

namespace textscene {

using host::kBlue;
using host::kGreen;
using host::kRed;
using host::kWhite;

// A movie of w x h pixels on a white background: the definition tags, then
// a PlaceObject2 of character `id` at depth 1, then one frame.
inline swf::Bytes Scene(int w, int h, const std::vector<swf::Bytes>& defs, uint16_t id,
                        const swf::Place2& extra = swf::Place2{}) {
    swf::Movie m = host::MovieOf(w, h);
    m.tags.Add(swf::SetBackgroundColor(swf::Rgba{255, 255, 255, 255}));
    for (const swf::Bytes& d : defs) m.tags.Add(d);
    swf::Place2 p = extra;
    p.depth = 1;
    p.characterId = id;
    m.tags.Add(swf::PlaceObject2(p));
    m.tags.Add(swf::ShowFrame());
    return m.Build();
}

// Runs one frame into a w x h buffer (view w x h, so one twip is 1/20 pixel
// unless the host changes the view) and returns the pixels.
inline host::Pixels Render(const swf::Bytes& movie, int w, int h) {
    host::Engine e(movie);
    host::Pixels p(w, h);
    EXPECT_TRUE(e);
    if (!e) return p;
    zelEngineForward(e.get(), 1, w, h, 1);
    zelEnginePlay(e.get(), p.get(), 0, 0, w, h, 1);
    return p;
}

struct Probe {
    int x, y;
    uint32_t color;
};

inline void ExpectProbes(const host::Pixels& p, const std::vector<Probe>& probes) {
    for (const Probe& pr : probes)
        EXPECT_EQ(p.at(pr.x, pr.y), pr.color) << "at (" << pr.x << ", " << pr.y << ")";
}

// A DefineFont2 whose glyph i has code codes[i], with layout when advances
// are given (bounds then all empty).
inline swf::Bytes Font2(uint16_t id, const std::vector<swf::Shape>& glyphs, const std::vector<uint16_t>& codes,
                        const std::vector<int16_t>& advances = {}, const std::vector<swf::Kerning>& kerning = {},
                        const std::string& name = "Test", uint8_t flags = 0) {
    swf::Font2 f;
    f.id = id;
    f.flags = flags | (advances.empty() ? 0 : 0x80);
    f.name = name;
    f.glyphs = glyphs;
    f.codes = codes;
    f.advances = advances;
    f.bounds.assign(advances.empty() ? 0 : glyphs.size(), swf::Rect{});
    f.kerning = kerning;
    return swf::DefineFont2(f);
}

}  // namespace textscene

#endif
