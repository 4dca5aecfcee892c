// bounded_work.cpp: no small movie makes the engine allocate or copy far more
// than its own size. This program links the engine statically with malloc,
// realloc, calloc, memcpy and memmove wrapped (and operator new replaced), so
// every byte the engine allocates or copies is counted while a movie is
// opened, played through and drawn. Each row is a movie whose records declare
// or hold many entries of one kind: huge counts over few bytes, and many real
// entries. (Not a *_test.cpp file: it needs its own link options.)
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "fixture/SwfBuilder.h"
#include "zelengine.h"

namespace {
size_t g_bytes = 0; // allocated plus copied
}

extern "C" {
void *__real_malloc(size_t);
void *__real_calloc(size_t, size_t);
void *__real_realloc(void *, size_t);
void *__real_memcpy(void *, const void *, size_t);
void *__real_memmove(void *, const void *, size_t);
void *__wrap_malloc(size_t n) { return g_bytes += n, __real_malloc(n); }
void *__wrap_calloc(size_t n, size_t k) { return g_bytes += n * k, __real_calloc(n, k); }
void *__wrap_realloc(void *p, size_t n) { return g_bytes += n, __real_realloc(p, n); }
void *__wrap_memcpy(void *d, const void *s, size_t n) { return g_bytes += n, __real_memcpy(d, s, n); }
void *__wrap_memmove(void *d, const void *s, size_t n) { return g_bytes += n, __real_memmove(d, s, n); }
}

void *operator new(size_t n)
{
    g_bytes += n;
    void *p = __real_malloc(n ? n : 1);
    if (!p)
        throw std::bad_alloc();
    return p;
}
void *operator new[](size_t n) { return operator new(n); }
void *operator new(size_t n, const std::nothrow_t &) noexcept { return g_bytes += n, __real_malloc(n ? n : 1); }
void *operator new[](size_t n, const std::nothrow_t &) noexcept { return g_bytes += n, __real_malloc(n ? n : 1); }
void operator delete(void *p) noexcept { std::free(p); }
void operator delete[](void *p) noexcept { std::free(p); }
void operator delete(void *p, size_t) noexcept { std::free(p); }
void operator delete[](void *p, size_t) noexcept { std::free(p); }

namespace {

using namespace swf;

constexpr int kSize = 64; // pixels drawn per side
constexpr int kMany = 20000;

// A movie of the given definitions, each placed (the first at depth 1, as a
// clip layer over the rest when `clip`), played for `frames` frames.
Bytes MovieOf(const std::vector<Bytes> &definitions, int places, int frames = 2)
{
    Movie m;
    m.frame = Rect{0, kSize * 20, 0, kSize * 20, 0};
    for (const Bytes &d : definitions)
        m.tags.Add(d);
    for (int i = 1; i <= places; ++i)
        m.tags.Add(PlaceObject(uint16_t(i), uint16_t(i), Matrix::Translate(0, 0)));
    for (int f = 0; f < frames; ++f)
        m.tags.Add(ShowFrame());
    return m.Build();
}

// A glyph that fills the em above the baseline.
Shape SquareGlyph()
{
    Shape s;
    s.MoveTo(0, -1024).Fill1(1).LineTo(1024, -1024).LineTo(1024, 0).LineTo(0, 0).LineTo(0, -1024);
    return s;
}

// A tag whose body is cut after `keep` bytes, its header saying so.
Bytes Cut(const Bytes &tag, size_t keep)
{
    Bytes body(tag.begin() + ((tag[0] & 0x3F) == 0x3F ? 6 : 2), tag.end());
    body.resize(keep < body.size() ? keep : body.size());
    return Tag(uint16_t((tag[0] | tag[1] << 8) >> 6), body, true);
}

Bytes ManyFills()
{
    std::vector<Fill> fills(kMany, Fill::Solid({1, 2, 3, 255}));
    Shape s(fills, {});
    s.MoveTo(0, 0).Fill1(kMany).LineTo(400, 0).LineTo(400, 400).LineTo(0, 0);
    return DefineShape(1, Rect{0, 400, 0, 400, 0}, s, 3);
}

Bytes ManyLines()
{
    std::vector<Line> lines(kMany, Line{20, {1, 2, 3, 255}});
    Shape s({}, lines);
    s.MoveTo(0, 0).LineStyle(kMany).LineTo(400, 0).LineTo(400, 400);
    return DefineShape(1, Rect{0, 400, 0, 400, 0}, s, 3);
}

Bytes ManyMorphStyles(bool fills)
{
    std::vector<MorphFill> f(fills ? kMany : 1, MorphFill::Solid({1, 2, 3, 255}, {4, 5, 6, 255}));
    std::vector<MorphLine> l(fills ? 1 : kMany, MorphLine{20, 40, {1, 2, 3, 255}, {4, 5, 6, 255}});
    Shape start, end;
    start.MoveTo(0, 0).Fill1(1).LineTo(400, 0).LineTo(400, 400).LineTo(0, 0);
    end.MoveTo(0, 0).LineTo(300, 0).LineTo(300, 300).LineTo(0, 0);
    return DefineMorphShape(1, Rect{0, 400, 0, 400, 0}, Rect{0, 400, 0, 400, 0}, f, l, start, end);
}

Bytes ManyGlyphs()
{
    std::vector<Shape> glyphs(kMany / 4, SquareGlyph());
    return DefineFont(1, glyphs);
}

Bytes ManyFont2Glyphs()
{
    Font2 f;
    f.name = "Many";
    f.glyphs.assign(kMany / 4, SquareGlyph());
    for (size_t i = 0; i < f.glyphs.size(); ++i)
        f.codes.push_back(uint16_t(i));
    f.flags = 0x04 | 0x08; // wide codes and offsets
    return DefineFont2(f);
}

Bytes ManyTextRecords()
{
    std::vector<TextRecord> records;
    for (int i = 0; i < kMany / 4; ++i)
        records.push_back(TextRecord{uint16_t(1), 200, Rgba{0, 0, 0, 255}, int16_t(i % 500), int16_t(300), {{0, 100}}});
    return DefineText(2, Rect{0, 1000, 0, 1000, 0}, Matrix(), records);
}

Bytes ManyButtonRecords()
{
    std::vector<ButtonRecord> records(kMany / 4, ButtonRecord{0x01, 1, 1, Matrix(), Cxform()});
    return DefineButton2(2, records);
}

Bytes SmallSquare(uint16_t id)
{
    Shape s({Fill::Solid({200, 0, 0, 255})}, {});
    s.MoveTo(0, 0).Fill1(1).LineTo(200, 0).LineTo(200, 200).LineTo(0, 200).LineTo(0, 0);
    return DefineShape(id, Rect{0, 200, 0, 200, 0}, s, 3);
}

struct Row {
    const char *name;
    std::function<Bytes()> movie;
};

const Row kRows[] = {
    {"shape: many fill styles", [] { return MovieOf({ManyFills()}, 1); }},
    {"shape: fill count over a cut tag", [] { return MovieOf({Cut(ManyFills(), 40)}, 1); }},
    {"shape: many line styles", [] { return MovieOf({ManyLines()}, 1); }},
    {"shape: line count over a cut tag", [] { return MovieOf({Cut(ManyLines(), 40)}, 1); }},
    {"morph: many fill styles", [] { return MovieOf({ManyMorphStyles(true)}, 1); }},
    {"morph: many line styles", [] { return MovieOf({ManyMorphStyles(false)}, 1); }},
    {"morph: line count over a cut tag, in a sprite placed often", [] {
         Tags sprite;
         Place2 p;
         p.characterId = 1, p.ratio = 100;
         sprite.Add(PlaceObject2(p)).Add(ShowFrame());
         Movie m;
         m.frame = Rect{0, kSize * 20, 0, kSize * 20, 0};
         m.tags.Add(Cut(ManyMorphStyles(false), 60)).Add(DefineSprite(2, sprite));
         for (int f = 0; f < 30; ++f) {
             Place2 q;
             q.depth = uint16_t(f % 3 + 1), q.characterId = 2;
             m.tags.Add(PlaceObject2(q)).Add(ShowFrame());
         }
         return m.Build();
     }},
    {"font: many glyphs", [] { return MovieOf({ManyGlyphs()}, 0); }},
    {"font: glyph table over a cut tag", [] { return MovieOf({Cut(ManyGlyphs(), 12)}, 0); }},
    {"font 2: many glyphs", [] { return MovieOf({ManyFont2Glyphs()}, 0); }},
    {"font 2: glyph count over a cut tag", [] { return MovieOf({Cut(ManyFont2Glyphs(), 30)}, 0); }},
    {"text: many records", [] { return MovieOf({DefineFont(1, {SquareGlyph()}), ManyTextRecords()}, 2); }},
    {"button: many records", [] { return MovieOf({SmallSquare(1), ManyButtonRecords()}, 2); }},
    {"edit text: a long string wrapped", [] {
         EditText e;
         e.id = 1;
         e.bounds = Rect{0, 1000, 0, 1000, 0};
         e.flags = kEditMultiline | kEditWordWrap | kEditReadOnly;
         e.font = std::make_pair(uint16_t(2), uint16_t(240));
         std::string text(60000, 'w');
         for (size_t i = 7; i < text.size(); i += 9)
             text[i] = ' ';
         e.text = text;
         return MovieOf({DefineFont(2, {SquareGlyph()}), DefineEditText(e)}, 1);
     }},
    {"placements: many shapes moving over many frames", [] {
         Movie m;
         m.frame = Rect{0, kSize * 20, 0, kSize * 20, 0};
         m.tags.Add(SmallSquare(1));
         for (int f = 0; f < 200; ++f) {
             for (int d = 1; d <= 50; ++d) {
                 Place2 p;
                 p.depth = uint16_t(d), p.move = f > 0;
                 if (f == 0)
                     p.characterId = 1;
                 p.matrix = Matrix::Translate((d * 37 + f * 11) % 1200, (d * 53 + f * 7) % 1200);
                 m.tags.Add(PlaceObject2(p));
             }
             m.tags.Add(ShowFrame());
         }
         return m.Build();
     }},
};

// Opens the movie, plays every frame drawing each, and closes it; returns
// the bytes the engine allocated and copied.
size_t Work(const Bytes &movie)
{
    std::vector<uint32_t> pixels(size_t(kSize) * kSize);
    _GOFFSCR screen{0, 0, kSize, kSize, ZEL_FORMAT_ARGB32, reinterpret_cast<intptr_t>(pixels.data()), 0};
    size_t before = g_bytes;
    void *h = zelEngineOpen(movie.data(), unsigned(movie.size()));
    for (int i = 0; h && i < 1000 && zelEngineForward(h, 1, kSize, kSize, 1) > 0; ++i)
        zelEnginePlay(h, &screen, 0, 0, kSize, kSize, 0);
    zelEngineClose(h);
    return g_bytes - before;
}

TEST(BoundedWork, BytesAllocatedAndCopiedStayWithinAMultipleOfTheMovie)
{
    // What any movie costs: the canvas and its scratch rows, the stage.
    const size_t base = Work(MovieOf({SmallSquare(1)}, 1));
    for (const Row &row : kRows) {
        const Bytes movie = row.movie();
        const size_t work = Work(movie);
        EXPECT_LE(work, base + 64 * movie.size()) << row.name << ": " << work << " bytes for a movie of "
                                                 << movie.size();
    }
}

} // namespace
