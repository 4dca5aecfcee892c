// Incremental drawing is exact: for random generated movies (shapes moving,
// scaling, turning, changing colour, appearing, disappearing, being replaced,
// morphing and overlapping), repainting only the update boxes into one
// buffer gives, frame after frame, the same pixels bit for bit as repainting
// the whole frame from scratch.
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "api/EngineHost.h"

namespace {

using host::Color;

class MovieGenerator {
public:
    explicit MovieGenerator(unsigned seed) : rng_(seed) {}

    swf::Bytes Generate(int frames) {
        swf::Movie m = host::MovieOf(kWidth, kHeight);
        m.tags.Add(swf::SetBackgroundColor(Color(Byte(), Byte(), Byte())));
        for (uint16_t id = 1; id <= kShapes; ++id) m.tags.Add(RandomShape(id));
        m.tags.Add(RandomMorph(kShapes + 1));
        for (int f = 0; f < frames; ++f) {
            for (int ops = Int(1, 4); ops > 0; --ops) m.tags.Add(RandomOp());
            m.tags.Add(swf::ShowFrame());
        }
        return m.Build();
    }

private:
    static constexpr int kWidth = 64, kHeight = 48;
    static constexpr uint16_t kShapes = 6;

    int Int(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    uint8_t Byte() { return static_cast<uint8_t>(Int(0, 255)); }
    double Real(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng_); }
    swf::Rgba RandomColor() { return Color(Byte(), Byte(), Byte(), static_cast<uint8_t>(Int(0, 1) ? 255 : Int(40, 220))); }

    swf::Fill RandomFill() {
        if (Int(0, 3) > 0) return swf::Fill::Solid(RandomColor());
        const double s = Real(0.01, 0.05);
        std::vector<swf::GradStop> stops = {{0, RandomColor()}, {static_cast<uint8_t>(Int(1, 254)), RandomColor()}, {255, RandomColor()}};
        swf::Matrix m = swf::Matrix::Scale(s, s, Int(0, 600), Int(0, 600));
        return Int(0, 1) ? swf::Fill::Linear(m, stops) : swf::Fill::Radial(m, stops);
    }

    // A closed outline of straight and curved edges inside (0..w, 0..h)
    // twips, possibly stroked; the bounds include half the pen width.
    swf::Bytes RandomShape(uint16_t id) {
        const int w = Int(100, 700), h = Int(100, 700);
        const bool stroked = Int(0, 2) == 0;
        const uint16_t pen = static_cast<uint16_t>(Int(0, 3) == 0 ? 0 : Int(10, 90));
        std::vector<swf::Line> lines;
        if (stroked) lines.push_back({pen, RandomColor()});
        swf::Shape s({RandomFill(), RandomFill()}, lines);
        s.MoveTo(0, 0).Fill1(1).LineStyle(stroked ? 1 : 0).LineTo(w, 0);
        if (Int(0, 1)) {
            s.CurveTo(w, h / 2, w / 2, h / 2).Fill0(2).LineTo(w / 2, h).Fill0(0);
        } else {
            s.LineTo(w, h);
        }
        s.CurveTo(Int(0, w), h, 0, h).LineTo(0, 0);
        const int half = stroked ? (pen == 0 ? 20 : pen / 2 + 1) : 0;
        return swf::DefineShape(id, swf::Rect{-half, w + half, -half, h + half, 0}, s, 3);
    }

    swf::Bytes RandomMorph(uint16_t id) {
        swf::Shape start, end;
        const int a = Int(100, 500), b = Int(100, 500);
        start.MoveTo(0, 0).Fill1(1).LineTo(a, 0).LineTo(a, a).CurveTo(a / 2, a + 100, 0, a).LineTo(0, 0);
        end.MoveTo(50, 0).LineTo(b, 80).CurveTo(b, b / 2, b, b).LineTo(0, b).LineTo(50, 0);
        return swf::DefineMorphShape(id, swf::Rect{0, a, 0, a + 100, 0}, swf::Rect{0, b, 0, b, 0},
                                     {swf::MorphFill::Solid(RandomColor(), RandomColor())}, {}, start, end);
    }

    swf::Matrix RandomMatrix() {
        swf::Matrix m = swf::Matrix::Translate(Int(-300, kWidth * 20), Int(-300, kHeight * 20));
        if (Int(0, 1)) m.scale = std::make_pair(Real(0.4, 2.0), Real(0.4, 2.0));
        if (Int(0, 2) == 0) m.rotate = std::make_pair(Real(-0.8, 0.8), Real(-0.8, 0.8));
        return m;
    }

    swf::Cxform RandomCxform() {
        swf::Cxform c;
        c.mult = std::array<int16_t, 4>{static_cast<int16_t>(Int(0, 300)), static_cast<int16_t>(Int(0, 300)),
                                        static_cast<int16_t>(Int(0, 300)), static_cast<int16_t>(Int(60, 256))};
        if (Int(0, 1)) c.add = std::array<int16_t, 4>{static_cast<int16_t>(Int(-80, 80)), static_cast<int16_t>(Int(-80, 80)),
                                                      static_cast<int16_t>(Int(-80, 80)), 0};
        return c;
    }

    swf::Bytes RandomOp() {
        const int kind = used_.empty() ? 0 : Int(0, 5);
        swf::Place2 p;
        if (kind == 0) {  // place a new character
            uint16_t depth = static_cast<uint16_t>(Int(1, 12));
            p.depth = depth;
            p.characterId = static_cast<uint16_t>(Int(1, kShapes + 1));
            p.matrix = RandomMatrix();
            if (Int(0, 1)) p.cxform = RandomCxform();
            if (*p.characterId == kShapes + 1) p.ratio = static_cast<uint16_t>(Int(0, 65535));
            used_.insert(depth);
            return swf::PlaceObject2(p);
        }
        const uint16_t depth = *std::next(used_.begin(), Int(0, static_cast<int>(used_.size()) - 1));
        p.depth = depth;
        p.move = true;
        switch (kind) {
            case 1: p.matrix = RandomMatrix(); break;
            case 2: p.cxform = RandomCxform(); break;
            case 3: p.ratio = static_cast<uint16_t>(Int(0, 65535)); break;
            case 4: p.characterId = static_cast<uint16_t>(Int(1, kShapes + 1)); break;
            default:
                used_.erase(depth);
                return swf::RemoveObject2(depth);
        }
        return swf::PlaceObject2(p);
    }

    std::mt19937 rng_;
    std::set<uint16_t> used_;
};

TEST(IncrementalDrawing, MatchesAFullRedrawOnEveryFrame) {
    constexpr int kW = 64 * 2, kH = 48 * 2;  // a zoom of 2
    for (unsigned seed = 1; seed <= 40; ++seed) {
        const swf::Bytes movie = MovieGenerator(seed).Generate(14);
        host::Engine incremental(movie), full(movie);
        ASSERT_TRUE(incremental) << seed;
        host::Pixels a(kW, kH), b(kW, kH);
        for (int frame = 0; frame < 14; ++frame) {
            zelEngineForward(incremental.get(), 1, kW, kH, 1);
            zelEngineForward(full.get(), 1, kW, kH, 1);
            zelEnginePlay(incremental.get(), a.get(), 0, 0, kW, kH, 0);
            zelEnginePlay(full.get(), b.get(), 0, 0, kW, kH, 1);
            for (int i = 0; i < kW * kH; ++i) {
                ASSERT_EQ(a.data[static_cast<size_t>(i)], b.data[static_cast<size_t>(i)])
                    << "seed " << seed << " frame " << frame << " pixel (" << i % kW << ", " << i / kW << ")";
            }
        }
    }
}

}  // namespace
